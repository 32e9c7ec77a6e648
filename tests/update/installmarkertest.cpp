#include "support/testrelease.h"
#include "update/installmarker.h"

#include <gtest/gtest.h>

namespace {

TEST(InstallMarker, ListsEveryFileAndReadsBackTheSame)
{
    QTemporaryDir folder;
    writeTestFile(folder.filePath("bin/kestrio"), "#!/bin/sh\n", true);
    writeTestFile(folder.filePath("share/doc/kestrio/README"), "read me\n");
    ASSERT_TRUE(QFile::link("kestrio", folder.filePath("bin/kestrio-link")));
    const auto described = InstallMarker::describe(folder.path(), "1.4.2");
    ASSERT_TRUE(std::holds_alternative<InstallMarker>(described));
    const InstallMarker& marker = std::get<InstallMarker>(described);
    EXPECT_EQ(marker.files, (QStringList{"bin/kestrio", "bin/kestrio-link", "share/doc/kestrio/README"}));
    ASSERT_FALSE(marker.write(folder.path()));
    EXPECT_EQ(InstallMarker::read(folder.path()), (std::variant<InstallMarker, QString>(marker)));
    EXPECT_FALSE(marker.foreignEntry(folder.path())); // the marker itself is no stranger
    EXPECT_FALSE(marker.missingFile(folder.path()));
}

TEST(InstallMarker, AnythingTheReleaseDidNotPutThereIsForeign)
{
    const InstallMarker marker{"Kestrio", "1.0", {"bin/kestrio", "share/kestrio/notes.txt"}};
    struct Case {
        const char* added;
        bool folder;
        const char* foreign; // the first entry that is not Kestrio's
    };
    for (const Case& c : {Case{"bin/other-tool", false, "bin/other-tool"},
                          Case{"share/other-program/data.db", false, "share/other-program"},
                          Case{"share/empty-folder", true, "share/empty-folder"}, Case{".hidden", false, ".hidden"}}) {
        SCOPED_TRACE(c.added);
        QTemporaryDir folder;
        writeTestFile(folder.filePath("bin/kestrio"), "#!/bin/sh\n", true);
        writeTestFile(folder.filePath("share/kestrio/notes.txt"), "notes\n");
        if (c.folder)
            QDir().mkpath(folder.filePath(c.added));
        else
            writeTestFile(folder.filePath(c.added), "not Kestrio's\n");
        EXPECT_EQ(marker.foreignEntry(folder.path()), QString(c.foreign));
    }
}

TEST(InstallMarker, MarkersThatCannotBeTrustedAreRefused)
{
    const std::vector<std::pair<const char*, QByteArray>> table{
        {"not JSON", "kestrio"},
        {"another product", R"({"product": "Other", "version": "1", "files": []})"},
        {"no version", R"({"product": "Kestrio", "files": []})"},
        {"no file list", R"({"product": "Kestrio", "version": "1"})"},
        {"a path out of the folder", R"({"product": "Kestrio", "version": "1", "files": ["../.bashrc"]})"},
        {"an absolute path", R"({"product": "Kestrio", "version": "1", "files": ["/etc/passwd"]})"},
        {"a path that is not clean", R"({"product": "Kestrio", "version": "1", "files": ["bin//kestrio"]})"},
        {"a number for a path", R"({"product": "Kestrio", "version": "1", "files": [7]})"},
    };
    for (const auto& [name, json] : table)
        EXPECT_TRUE(std::holds_alternative<QString>(InstallMarker::fromJson(json))) << name;
}

} // namespace
