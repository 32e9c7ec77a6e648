#include "menu/shortcuttext.h"

#include <QList>

#include <array>
#include <utility>

namespace {

QString menuModifierGlyphs(qint64 mask)
{
    QString text;
    if (mask & MenuModifier::Control)
        text += u"⌃";
    if (mask & MenuModifier::Option)
        text += u"⌥";
    if (mask & MenuModifier::Shift)
        text += u"⇧";
    if (!(mask & MenuModifier::NoCommand))
        text += u"⌘";
    return text;
}

// Function-key characters of menus live in the private-use area.
constexpr char32_t kF1Character = 0xF704;
constexpr char32_t kF12Character = 0xF70F;

} // namespace

std::optional<QString> keyCharacterGlyph(const QString& keyCharacter)
{
    if (keyCharacter.isEmpty())
        return std::nullopt;
    const char32_t scalar = QStringView(keyCharacter).toUcs4().front();
    if (scalar >= kF1Character && scalar <= kF12Character)
        return QStringLiteral("F%1").arg(scalar - (kF1Character - 1));
    switch (scalar) {
    case 0x0003: return QStringLiteral("⏎");
    case 0x0009: return QStringLiteral("⇥");
    case 0x000D: return QStringLiteral("⏎");
    case 0x001B: return QStringLiteral("⎋");
    case 0x0020: return QStringLiteral("Space");
    case 0x007F: return QStringLiteral("⌫");
    case 0xF700: return QStringLiteral("↑");
    case 0xF701: return QStringLiteral("↓");
    case 0xF702: return QStringLiteral("←");
    case 0xF703: return QStringLiteral("→");
    case 0xF728: return QStringLiteral("⌫"); // forward delete shares the backward glyph in menus
    case 0xF729: return QStringLiteral("↖");
    case 0xF72B: return QStringLiteral("↘");
    case 0xF72C: return QStringLiteral("⇞");
    case 0xF72D: return QStringLiteral("⇟");
    default: return std::nullopt;
    }
}

std::optional<QString> virtualKeyName(qint64 keyCode)
{
    static const std::array<std::pair<qint64, const char16_t*>, 30> names{{
        {36, u"⏎"},    {48, u"⇥"},     {49, u"Space"}, {51, u"⌫"},   {53, u"⎋"},   {96, u"F5"},
        {97, u"F6"},   {98, u"F7"},    {99, u"F3"},    {100, u"F8"}, {101, u"F9"}, {103, u"F11"},
        {105, u"F13"}, {107, u"F14"},  {109, u"F10"},  {111, u"F12"}, {113, u"F15"}, {114, u"Help"},
        {115, u"↖"},   {116, u"⇞"},    {117, u"⌦"},    {118, u"F4"}, {119, u"↘"},  {120, u"F2"},
        {121, u"⇟"},   {122, u"F1"},   {123, u"←"},    {124, u"→"},  {125, u"↓"},  {126, u"↑"},
    }};
    for (const auto& [code, name] : names) {
        if (code == keyCode)
            return QString::fromUtf16(name);
    }
    return std::nullopt;
}

QString menuShortcutText(const QString& keyCharacter, qint64 modifierMask)
{
    // toUpper is locale-independent and applies full case mapping (ß → SS).
    return menuModifierGlyphs(modifierMask) + keyCharacterGlyph(keyCharacter).value_or(keyCharacter.toUpper());
}

QString menuShortcutText(qint64 virtualKey, qint64 modifierMask)
{
    return menuModifierGlyphs(modifierMask) + virtualKeyName(virtualKey).value_or(QStringLiteral("?"));
}
