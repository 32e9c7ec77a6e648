#include "search/menuranker.h"

#include <gtest/gtest.h>

namespace {

// A text editor's menus as Mousepad on Debian shows them, in menu order.
const QStringList kEditorMenus{
    "File|New", "File|New Window", "File|Open…", "File|Reload", "File|Save", "File|Save As…", "File|Save All",
    "File|Print…", "File|Close Tab", "File|Close Window", "File|Quit",
    "Edit|Undo", "Edit|Redo", "Edit|Cut", "Edit|Copy", "Edit|Paste", "Edit|Paste Special|Paste from History",
    "Edit|Paste Special|Paste as Column", "Edit|Delete Selection", "Edit|Delete Line", "Edit|Select All",
    "Edit|Convert|To Lowercase", "Edit|Convert|To Uppercase", "Edit|Convert|To Title Case",
    "Edit|Move|Line Up", "Edit|Move|Line Down", "Edit|Increase Indent", "Edit|Decrease Indent", "Edit|Preferences…",
    "Search|Find", "Search|Find Next", "Search|Find Previous", "Search|Find and Replace…", "Search|Go to…",
    "View|Select Font…", "View|Zoom|Increase", "View|Zoom|Decrease", "View|Zoom|Reset", "View|Line Numbers",
    "View|Toolbar", "View|Statusbar", "View|Fullscreen",
    "Document|Word Wrap", "Document|Auto Indent", "Document|Previous Tab", "Document|Next Tab",
    "Help|Contents", "Help|About",
};

QList<MenuItem> itemsOf(const QStringList& paths)
{
    QList<MenuItem> items;
    for (const QString& path : paths) {
        const QStringList entries = path.split(u'|');
        items.append(MenuItem{QUuid::createUuid(), entries.last(), entries, std::nullopt, true, "Mousepad",
                              "org.xfce.mousepad", nullptr});
    }
    return items;
}

class Ranking : public testing::Test {
protected:
    MenuRanker ranker;

    Ranking() { ranker.setItems(itemsOf(kEditorMenus)); }

    QStringList titles(const QString& query, int first = 100) const
    {
        QStringList out;
        for (const RankedItem& r : ranker.rank(query)) {
            if (out.size() == first)
                break;
            out << r.item->title;
        }
        return out;
    }

    void use(const QString& pathKey, qint64 times)
    {
        counts[pathKey] += times;
        ranker.setUsageCounts(counts);
    }

    QHash<QString, qint64> counts;
};

TEST_F(Ranking, WhatATypistMeansComesFirst)
{
    const struct {
        const char* query;
        QStringList expected; // the first results, in order
    } cases[] = {
        {"save as", {"Save As…"}},
        {"save", {"Save", "Save As…", "Save All"}}, // equal scores keep menu order
        {"find", {"Find", "Find Next", "Find Previous", "Find and Replace…"}},
        {"fr", {"Find and Replace…"}},              // initials beat letters inside a word
        {"undo", {"Undo"}},
        {"zoom in", {"Increase"}},                  // through its menu path alone
        {"upper", {"To Uppercase"}},
        {"pref", {"Preferences…"}},
        {"line d", {"Line Down"}},
        {"cl", {"Close Tab", "Close Window"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(titles(c.query, int(c.expected.size())), c.expected) << c.query;
}

TEST_F(Ranking, WhatDoesNotMatchDropsOut)
{
    EXPECT_EQ(titles("zoom in"), QStringList{"Increase"});
    EXPECT_EQ(titles("xyzzy"), QStringList{});
    EXPECT_EQ(titles("odnu"), QStringList{}); // Undo's letters out of order
}

TEST_F(Ranking, AnEmptyQueryListsEverythingMostUsedFirst)
{
    EXPECT_EQ(titles("", 3), (QStringList{"New", "New Window", "Open…"}));
    use("Edit → Paste", 2);
    use("Help → About", 1);
    EXPECT_EQ(titles("", 3), (QStringList{"Paste", "About", "New"}));
    EXPECT_EQ(ranker.rank("").size(), size_t(kEditorMenus.size()));
}

TEST_F(Ranking, UsesLiftTiesAndCloseCallsButNotAPoorMatch)
{
    use("Search → Find Previous", 1);
    EXPECT_EQ(titles("find", 2), (QStringList{"Find Previous", "Find"}));
    // "fr": Find and Replace… scores 58, Fullscreen 42; one use adds 5.
    use("View → Fullscreen", 1);
    EXPECT_EQ(titles("fr", 1), QStringList{"Find and Replace…"});
    use("View → Fullscreen", 3);
    EXPECT_EQ(titles("fr", 1), QStringList{"Fullscreen"});
}

TEST_F(Ranking, NewItemsForgetTheOldUses)
{
    use("Edit → Paste", 4);
    ranker.setItems(itemsOf(kEditorMenus));
    EXPECT_EQ(titles("", 1), QStringList{"New"});
}

TEST(RankingScores, TitleDoublesPathCountsOnceAndEachUseAddsFive)
{
    const struct {
        const char* query;
        const char* path;
        qint64 uses;
        qint64 score;
    } cases[] = {
        {"sa", "File|Save", 0, 2 * 29},      // s: 1 + 10 start + 9 position; a: 1 + 2 streak + 6 position
        {"sa", "File|Save", 2, 2 * 29 + 10},
        {"fo", "File|Open", 0, 29},          // "file → open" only through the path
        {"fo", "File|Open", 1, 29 + 5},
        {"", "File|Open", 3, 3},             // no query: the count alone
        {"", "File|Open", 0, 0},
    };
    for (const auto& c : cases) {
        MenuRanker ranker;
        ranker.setItems(itemsOf({c.path}));
        ranker.setUsageCounts({{QString(c.path).replace(u'|', QStringLiteral(" → ")), c.uses}});
        const auto ranked = ranker.rank(c.query);
        ASSERT_EQ(ranked.size(), 1u) << c.query << " " << c.path;
        EXPECT_EQ(ranked[0].score, c.score) << c.query << " " << c.path << " " << c.uses;
    }
}

TEST(RankingLongMenus, SlicesRankedInParallelKeepMenuOrder)
{
    // Long enough to be ranked in slices; equal scores must still come in menu order.
    QStringList paths;
    for (int i = 0; i < 50000; ++i)
        paths << QStringLiteral("Items|Item %1").arg(i);
    MenuRanker ranker;
    ranker.setItems(itemsOf(paths));
    ranker.setUsageCounts({{"Items → Item 49999", 1}});
    const auto ranked = ranker.rank("item");
    ASSERT_EQ(ranked.size(), 50000u);
    EXPECT_EQ(ranked[0].item->title, "Item 49999");
    for (size_t i = 1; i < ranked.size(); ++i)
        ASSERT_EQ(ranked[i].item, &ranker.items()[qsizetype(i - 1)]) << i;
}

} // namespace
