#include "platform/linux/evdev/evdevkeymap.h"

#include <array>
#include <utility>

namespace {

// evdev code → virtual key code.
constexpr std::array<std::pair<int, quint16>, 111> kTable{{
    {30, 0},    {31, 1},    {32, 2},    {33, 3},    {35, 4},    {34, 5},    {44, 6},    {45, 7},   {46, 8},
    {47, 9},    {86, 10},   {48, 11},   {16, 12},   {17, 13},   {18, 14},   {19, 15},   {21, 16},  {20, 17},
    {2, 18},    {3, 19},    {4, 20},    {5, 21},    {7, 22},    {6, 23},    {13, 24},   {10, 25},  {8, 26},
    {12, 27},   {9, 28},    {11, 29},   {27, 30},   {24, 31},   {22, 32},   {26, 33},   {23, 34},  {25, 35},
    {28, 36},   {38, 37},   {36, 38},   {40, 39},   {37, 40},   {39, 41},   {43, 42},   {51, 43},  {53, 44},
    {49, 45},   {50, 46},   {52, 47},   {15, 48},   {57, 49},   {41, 50},   {14, 51},   {1, 53},
    // modifiers
    {125, 55},  {42, 56},   {58, 57},   {56, 58},   {29, 59},   {54, 60},   {100, 61},  {97, 62},  {126, 54},
    // keypad
    {83, 65},   {55, 67},   {78, 69},   {69, 71},   {98, 75},   {96, 76},   {74, 78},   {117, 81}, {82, 82},
    {79, 83},   {80, 84},   {81, 85},   {75, 86},   {76, 87},   {77, 88},   {71, 89},   {72, 91},  {73, 92},
    // function and navigation keys
    {63, 96},   {64, 97},   {65, 98},   {61, 99},   {66, 100},  {67, 101},  {87, 103},  {183, 105}, {184, 107},
    {68, 109},  {88, 111},  {185, 113}, {110, 114}, {102, 115}, {104, 116}, {111, 117}, {62, 118}, {107, 119},
    {60, 120},  {109, 121}, {59, 122},  {105, 123}, {106, 124}, {108, 125}, {103, 126}, {186, 106}, {187, 64},
    {188, 79},  {189, 80},  {190, 90},  {138, 114},
}};

} // namespace

namespace EvdevKeyMap {

quint16 virtualKeyCode(int evdevCode)
{
    for (const auto& [evdev, virtualKey] : kTable) {
        if (evdev == evdevCode)
            return virtualKey;
    }
    return quint16(kUnmappedBase + evdevCode);
}

std::optional<int> evdevCode(quint16 virtualKeyCode)
{
    if (virtualKeyCode >= kUnmappedBase)
        return int(virtualKeyCode - kUnmappedBase);
    for (const auto& [evdev, virtualKey] : kTable) {
        if (virtualKey == virtualKeyCode)
            return evdev;
    }
    return std::nullopt;
}

std::optional<quint16> virtualKeyCodeOfXkbKeycode(quint32 xkbKeycode)
{
    if (xkbKeycode < quint32(kXkbKeycodeOffset) || xkbKeycode > 255)
        return std::nullopt;
    return virtualKeyCode(int(xkbKeycode) - kXkbKeycodeOffset);
}

QString printableKeyText(const char* utf8)
{
    const QString text = QString::fromUtf8(utf8);
    return text.isEmpty() || !text[0].isPrint() ? QString() : text;
}

} // namespace EvdevKeyMap
