#include "platform/keys.h"

std::optional<NamedKey> functionKey(int number)
{
    if (number < 1 || number > kFunctionKeys)
        return std::nullopt;
    return NamedKey(int(NamedKey::f1) + number - 1);
}

std::optional<int> functionNumber(NamedKey key)
{
    const int number = int(key) - int(NamedKey::f1) + 1;
    return number >= 1 && number <= kFunctionKeys ? std::optional(number) : std::nullopt;
}

std::optional<NamedKey> namedKeyAt(quint16 position)
{
    switch (position) {
    case 28: return NamedKey::returnKey;
    case 96: return NamedKey::enter;
    case 15: return NamedKey::tab;
    case 57: return NamedKey::space;
    case 14: return NamedKey::backspace;
    case 111: return NamedKey::deleteForward;
    case 1: return NamedKey::escape;
    case 102: return NamedKey::home;
    case 107: return NamedKey::end;
    case 104: return NamedKey::pageUp;
    case 109: return NamedKey::pageDown;
    case 105: return NamedKey::left;
    case 106: return NamedKey::right;
    case 103: return NamedKey::up;
    case 108: return NamedKey::down;
    case 138: return NamedKey::help;
    case 87: return functionKey(11);
    case 88: return functionKey(12);
    default: break;
    }
    if (position >= 59 && position <= 68) // F1 … F10
        return functionKey(position - 58);
    if (position >= 183 && position <= 194) // F13 … F24
        return functionKey(position - 170);
    return std::nullopt;
}

Key Key::at(quint16 position)
{
    return Key{position, namedKeyAt(position), {}};
}

size_t qHash(const KeyChord& chord, size_t seed)
{
    return qHashMulti(seed, int(chord.modifiers), chord.key.position, chord.key.named ? int(*chord.key.named) : -1,
                      chord.key.character);
}
