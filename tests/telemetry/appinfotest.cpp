#include "platform/fake/fakesysteminfo.h"
#include "telemetry/appinfo.h"
#include "telemetry/sentrydsn.h"

#include <gtest/gtest.h>

namespace {

TEST(AppInfo, VersionsFallBackWhenMissing)
{
    EXPECT_EQ(versionOr("1.4.2", "0.0.0"), "1.4.2");
    EXPECT_EQ(versionOr("", "0.0.0"), "0.0.0");
    EXPECT_EQ(versionOr("  ", "0"), "0");
    EXPECT_FALSE(appVersion().isEmpty());
    EXPECT_FALSE(appBuild().isEmpty());
}

TEST(AppInfo, OsVersionIsAlwaysThreeNumbers)
{
    const std::vector<std::pair<QString, QString>> table{
        {"6.1.0-27-amd64", "6.1.0"}, {"6.1", "6.1.0"}, {"6", "6.0.0"},     {"14.2.1", "14.2.1"},
        {"5.15.0.1-x", "5.15.0"},    {"", "0.0.0"},    {"rolling", "0.0.0"}, {"6.10.12-arch1-1", "6.10.12"},
    };
    FakeSystemInfo system;
    for (const auto& [release, expected] : table) {
        system.version = release;
        EXPECT_EQ(osVersionString(system), expected) << release.toStdString();
    }
}

TEST(AppInfo, DeviceModelIsUtf8UpToTheFirstNul)
{
    FakeSystemInfo system;
    system.model = QByteArray("ThinkPad X1\0junk", 16);
    EXPECT_EQ(deviceModel(system), "ThinkPad X1");
    system.model = "Caf\xc3\xa9 \xff";
    EXPECT_EQ(deviceModel(system), QString::fromUtf8("Café \xef\xbf\xbd"));
    system.model.clear();
    EXPECT_EQ(deviceModel(system), "");
}

TEST(SentryDsn, ParsesKeyHostAndProject)
{
    const auto dsn = SentryDsn::parse("https://0123456789abcdef0123456789abcdef@o1.ingest.example.com/4506");
    ASSERT_TRUE(dsn);
    EXPECT_EQ(dsn->publicKey, "0123456789abcdef0123456789abcdef");
    EXPECT_EQ(dsn->projectId, "4506");
    EXPECT_EQ(dsn->envelopeUrl, QUrl("https://o1.ingest.example.com/api/4506/envelope/"));
    EXPECT_EQ(SentryDsn::parse("http://key@127.0.0.1:8123/7")->envelopeUrl, QUrl("http://127.0.0.1:8123/api/7/envelope/"));
    EXPECT_FALSE(SentryDsn::parse(""));
    EXPECT_FALSE(SentryDsn::parse("https://example.com/1"));      // no key
    EXPECT_FALSE(SentryDsn::parse("https://key@example.com/abc")); // no project number
}

} // namespace
