#include "base/updatecheckresult.h"
#include "update/versionmanifest.h"

#include <gtest/gtest.h>

namespace {

using DecodeError = VersionManifest::DecodeError;

std::optional<VersionManifest> decoded(const QByteArray& body)
{
    auto result = VersionManifest::decode(body);
    if (auto* manifest = std::get_if<VersionManifest>(&result))
        return *manifest;
    return std::nullopt;
}

QString errorOf(const QByteArray& body)
{
    auto result = VersionManifest::decode(body);
    if (auto* error = std::get_if<DecodeError>(&result))
        return error->description;
    return {};
}

TEST(VersionManifest, DecodesEveryKey)
{
    const auto manifest = decoded(R"({"version": "1.4.2", "build": "142", "downloadUrl": "https://example.invalid/k.tar.gz",
        "releaseDate": "soon", "releaseNotes": "Faster.", "minimumSystemVersion": "99.0", "extra": [1]})");
    ASSERT_TRUE(manifest);
    EXPECT_EQ(*manifest, (VersionManifest{"1.4.2", "142", "https://example.invalid/k.tar.gz", "soon", "Faster.", "99.0"}));
}

TEST(VersionManifest, OptionalKeysMayBeMissingOrNull)
{
    const auto manifest = decoded(R"({"version": "2", "downloadUrl": "u", "build": null, "releaseNotes": null})");
    ASSERT_TRUE(manifest);
    EXPECT_EQ(*manifest, (VersionManifest{"2", std::nullopt, "u", std::nullopt, std::nullopt, std::nullopt}));
}

struct FailureCase {
    const char* name;
    QByteArray body;
    QString mentions; // the key (or problem) the error names
};

class VersionManifestFailure : public testing::TestWithParam<FailureCase> {};

TEST_P(VersionManifestFailure, ReportsTheFirstFailure)
{
    const FailureCase& c = GetParam();
    const QString error = errorOf(c.body);
    ASSERT_FALSE(error.isEmpty()) << "decoded";
    EXPECT_TRUE(error.contains(c.mentions)) << error.toStdString();
}

INSTANTIATE_TEST_SUITE_P(Bodies, VersionManifestFailure, testing::Values(
    FailureCase{"notJson", "<html>", "not valid JSON"},
    FailureCase{"empty", "", "not valid JSON"},
    FailureCase{"array", R"(["version"])", "not a JSON object"},
    FailureCase{"trailingGarbage", R"({"version": "1", "downloadUrl": "u"} x)", "not valid JSON"},
    FailureCase{"downloadUrlMissing", R"({"version": "1"})", "\"downloadUrl\" is missing"},
    FailureCase{"versionNull", R"({"version": null, "downloadUrl": "u"})", "\"version\" is null"},
    FailureCase{"versionIsNumber", R"({"version": 1.2, "downloadUrl": "u"})", "\"version\" should be a string but is a number"},
    FailureCase{"buildIsNumber", R"({"version": "1", "build": 7, "downloadUrl": "u"})", "\"build\""},
    FailureCase{"keyOrderNotDocumentOrder", R"({"minimumSystemVersion": 1, "downloadUrl": 2, "version": "1"})", "\"downloadUrl\""},
    FailureCase{"buildBeforeDownloadUrl", R"({"downloadUrl": false, "build": [], "version": "1"})", "\"build\" should be a string but is an array"},
    FailureCase{"notesIsObject", R"({"version": "1", "downloadUrl": "u", "releaseNotes": {}})", "\"releaseNotes\""},
    FailureCase{"keysAreCaseSensitive", R"({"Version": "1", "downloadUrl": "u"})", "\"version\" is missing"}),
    [](const auto& info) { return std::string(info.param.name); });

VersionManifest manifest(QString version, QString url)
{
    return VersionManifest{version, "9", url, "today", "notes", "99"};
}

TEST(UpdateCheckResult, CarriesTheManifestAndComparesWithTheRunningVersion)
{
    const auto result = checkResultOf(manifest("1.5", "https://example.invalid/k.tar.gz"), "1.4.9");
    ASSERT_TRUE(result);
    EXPECT_EQ(*result, (UpdateCheckResult{"1.5", "today", QUrl("https://example.invalid/k.tar.gz"), "notes", true}));
    EXPECT_FALSE(checkResultOf(manifest("1.5", "https://x.invalid/a"), "1.5.0")->isNewer);
}

TEST(UpdateCheckResult, RejectsTextsThatAreNotUrls)
{
    EXPECT_EQ(checkResultOf(manifest("2", ""), "1"), std::nullopt);
    EXPECT_EQ(checkResultOf(manifest("2", "https://exa mple.invalid/a b"), "1"), std::nullopt);
    EXPECT_EQ(checkResultOf(manifest("2", "http://[::1"), "1"), std::nullopt);
    EXPECT_TRUE(checkResultOf(manifest("2", "release/k.tar.gz"), "1")); // a relative reference parses
}

} // namespace
