#include "platform/linux/atspi/atspibus.h"

#include <gtest/gtest.h>

namespace {

quint64 bits(std::initializer_list<int> states)
{
    quint64 set = 0;
    for (int state : states)
        set |= quint64(1) << state;
    return set;
}

TEST(AtspiState, WhatAStateSetSaysAboutAnElement)
{
    using namespace AtspiState;
    struct Case {
        const char* name;
        quint64 states;
        Reading expected;
    };
    const std::vector<Case> table{
        {"GTK 3 item, enabled and on screen", bits({enabled, sensitive, visible, showing}), {false, true, true}},
        {"GTK 4 item: SENSITIVE alone", bits({sensitive, visible}), {false, true, false}},
        {"greyed out", bits({visible, showing}), {false, false, true}},
        {"in a closed menu", bits({enabled, sensitive, visible}), {false, true, false}},
        {"an editable entry is not a vanished one", bits({editable, enabled, sensitive}), {false, true, false}},
        {"vanished: DEFUNCT", bits({defunct}), {true, false, false}},
        {"vanished: DEFUNCT beside others", bits({defunct, enabled, sensitive}), {true, false, false}},
        {"vanished: no state at all", 0, {true, false, false}},
        {"high word: a state above 31", bits({sensitive}) | (quint64(1) << 40), {false, true, false}},
    };
    EXPECT_EQ(defunct, 6);
    EXPECT_EQ(editable, 7);
    for (const Case& c : table) {
        const Reading r = read(c.states);
        EXPECT_EQ(r, c.expected) << c.name << ": gone " << r.gone << " enabled " << r.enabled << " shown " << r.shown;
    }
}

} // namespace
