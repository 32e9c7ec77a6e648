#include "menu/menuitem.h"

#include <QSet>

#include <gtest/gtest.h>

namespace {

class Handle final : public MenuHandle {};

MenuItem item(QString title, QStringList path, QString appName = "Editor")
{
    return MenuItem{QUuid::createUuid(), title, path, std::nullopt, true, appName, "org.editor",
                    std::make_shared<Handle>()};
}

TEST(MenuItem, PathKeyAndBreadcrumb)
{
    const MenuItem find = item("Find…", {"Edit", "Find", "Find…"});
    EXPECT_EQ(find.pathKey(), "Edit → Find → Find…");
    EXPECT_EQ(find.breadcrumb(), "Edit → Find");
    EXPECT_EQ(item("Save", {"File", "Save"}).breadcrumb(), "File");
}

TEST(MenuItem, EqualityIgnoresIdentityShortcutStateAndElement)
{
    MenuItem a = item("Save", {"File", "Save"});
    MenuItem b = item("Save", {"File", "Save"});
    b.shortcut = "⌘S";
    b.isEnabled = false;
    b.appBundleID = std::nullopt;
    ASSERT_NE(a.id, b.id);
    EXPECT_EQ(a, b);
    EXPECT_EQ(qHash(a), qHash(b));
    EXPECT_EQ(QSet<MenuItem>({a, b}).size(), 1);
}

TEST(MenuItem, DiffersByTitlePathOrApplication)
{
    const MenuItem base = item("Save", {"File", "Save"});
    EXPECT_NE(base, item("Save", {"File", "Save"}, "Other"));
    EXPECT_NE(base, item("Save", {"Document", "Save"}));
    EXPECT_NE(base, item("Save", {"File", "Export", "Save"}));
    EXPECT_NE(base, item("Save…", {"File", "Save"}));
}

TEST(MenuItem, CanonicallyEquivalentTextsAreEqual)
{
    const QString composed = QString::fromUtf8("R\u00e9sum\u00e9");
    const QString decomposed = QString::fromUtf8("Re\u0301sume\u0301");
    ASSERT_NE(composed, decomposed);
    const MenuItem a = item(composed, {"Caf\u00e9", composed}, "App\u00e9");
    const MenuItem b = item(decomposed, {"Cafe\u0301", decomposed}, "Appe\u0301");
    EXPECT_EQ(a, b);
    EXPECT_EQ(qHash(a, 7), qHash(b, 7));
}

} // namespace
