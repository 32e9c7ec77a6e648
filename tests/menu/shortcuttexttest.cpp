#include "menu/shortcuttext.h"

#include <QKeySequence>

#include <gtest/gtest.h>

namespace {

const KeyWords& macKeys = PlatformWords::macOS().keys;
const KeyWords& linuxKeys = PlatformWords::linuxDesktop().keys;

KeyChord typing(Modifiers modifiers, const QString& character)
{
    return KeyChord{modifiers, Key{0, std::nullopt, character}};
}

KeyChord named(Modifiers modifiers, NamedKey key)
{
    return KeyChord{modifiers, Key{0, key, {}}};
}

// The macOS words, glyph by glyph: the fixed order ⌃ ⌥ ⇧ ⌘ whatever was pressed first.
TEST(ShortcutText, MacOSGlyphs)
{
    const Modifiers all = Modifier::ctrl | Modifier::alt | Modifier::shift | Modifier::super;
    EXPECT_EQ(shortcutText(typing(Modifier::ctrl, "s"), macKeys), "⌘S");
    EXPECT_EQ(shortcutText(typing(Modifier::ctrl | Modifier::shift, "s"), macKeys), "⇧⌘S");
    EXPECT_EQ(shortcutText(typing(Modifier::shift | Modifier::ctrl | Modifier::super, "z"), macKeys), "⌃⇧⌘Z");
    EXPECT_EQ(shortcutText(typing(all, "s"), macKeys), "⌃⌥⇧⌘S");
    EXPECT_EQ(shortcutText(named(Modifier::alt, *functionKey(1)), macKeys), "⌥F1");
    EXPECT_EQ(shortcutText(named({}, NamedKey::escape), macKeys), "⎋");
    EXPECT_EQ(shortcutText(named(Modifier::ctrl, NamedKey::deleteForward), macKeys), "⌘⌦");
    EXPECT_EQ(shortcutText(named(Modifier::shift | Modifier::ctrl, NamedKey::backspace), macKeys), "⇧⌘⌫");
}

TEST(ShortcutText, WhatAKeyTypesIsUpperCasedInFull)
{
    EXPECT_EQ(shortcutText(typing(Modifier::ctrl, "ä"), linuxKeys), "Ctrl+Ä");
    EXPECT_EQ(shortcutText(typing(Modifier::ctrl, "e\u0301"), linuxKeys), "Ctrl+E\u0301"); // the pair as a whole
    EXPECT_EQ(shortcutText(typing(Modifier::ctrl, "ß"), linuxKeys), "Ctrl+SS");            // full case mapping
    EXPECT_EQ(shortcutText(typing(Modifier::ctrl, "+"), linuxKeys), "Ctrl++");
    EXPECT_EQ(shortcutText(typing(Modifier::ctrl, ""), linuxKeys), "Ctrl+?");
    EXPECT_EQ(shortcutText(typing(Modifier::ctrl, ""), linuxKeys, "k"), "Ctrl+K"); // what it types on the layout
}

// On Linux a shortcut reads as the applications themselves write it: Qt's
// native text, with Super for Meta and arrows for the arrow keys' names.
QString qtNativeText(QKeyCombination combination)
{
    return QKeySequence(combination)
        .toString(QKeySequence::NativeText)
        .replace(QStringLiteral("Meta"), QStringLiteral("Super"));
}

Qt::KeyboardModifiers qtModifiers(Modifiers modifiers)
{
    Qt::KeyboardModifiers qt;
    qt.setFlag(Qt::ShiftModifier, modifiers.testFlag(Modifier::shift));
    qt.setFlag(Qt::AltModifier, modifiers.testFlag(Modifier::alt));
    qt.setFlag(Qt::MetaModifier, modifiers.testFlag(Modifier::super));
    qt.setFlag(Qt::ControlModifier, modifiers.testFlag(Modifier::ctrl));
    return qt;
}

TEST(LinuxShortcutText, EveryModifierCombinationReadsAsQtWritesIt)
{
    for (int bits = 0; bits < 16; ++bits) {
        const Modifiers modifiers = Modifiers::fromInt(bits);
        EXPECT_EQ(shortcutText(typing(modifiers, "s"), linuxKeys), qtNativeText(QKeyCombination(qtModifiers(modifiers), Qt::Key_S)))
            << bits;
    }
}

TEST(LinuxShortcutText, NamedKeysReadAsQtWritesThem)
{
    const std::vector<std::pair<NamedKey, Qt::Key>> keys{
        {NamedKey::returnKey, Qt::Key_Return}, {NamedKey::enter, Qt::Key_Enter},     {NamedKey::tab, Qt::Key_Tab},
        {NamedKey::space, Qt::Key_Space},      {NamedKey::backspace, Qt::Key_Backspace}, {NamedKey::escape, Qt::Key_Escape},
        {NamedKey::help, Qt::Key_Help},        {NamedKey::home, Qt::Key_Home},       {NamedKey::pageUp, Qt::Key_PageUp},
        {NamedKey::deleteForward, Qt::Key_Delete}, {NamedKey::end, Qt::Key_End},     {NamedKey::pageDown, Qt::Key_PageDown},
    };
    for (const auto& [key, qtKey] : keys)
        EXPECT_EQ(shortcutText(named(Modifier::ctrl, key), linuxKeys), qtNativeText(Qt::CTRL | qtKey)) << int(key);
    for (int n = 1; n <= kFunctionKeys; ++n)
        EXPECT_EQ(shortcutText(named({}, *functionKey(n)), linuxKeys), QStringLiteral("F%1").arg(n));
    EXPECT_EQ(shortcutText(named(Modifier::alt, NamedKey::up), linuxKeys), "Alt+↑");
    EXPECT_EQ(shortcutText(named(Modifier::super, NamedKey::space), linuxKeys), "Super+Space");
    // Every named key has a word on both platforms.
    for (int k = 0; k < int(NamedKey::f1); ++k) {
        EXPECT_TRUE(linuxKeys.keyNames.contains(NamedKey(k))) << k;
        EXPECT_TRUE(macKeys.keyNames.contains(NamedKey(k))) << k;
    }
}

} // namespace
