#include "hotkey/hotkeyservice.h"
#include "platform/fake/fakeclock.h"
#include "platform/fake/fakehotkeyplatform.h"
#include "support/eventually.h"
#include "support/tempsettings.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace {

constexpr Modifiers none{}, ctrl{Modifier::ctrl}, alt{Modifier::alt}, shift{Modifier::shift}, super{Modifier::super};
// Positions of the keys typed (Linux input codes).
constexpr int kK = 37, kSemicolon = 39, kC = 46, kA = 30, kSpace = 57;

// One step of typing: wait (in whole milliseconds, so that a boundary is
// exactly where the table says), then the modifiers held change (a modifier
// key, Caps Lock among them, went down or up), or a key goes down.
constexpr int kPointer = -2; // a mouse button pressed or a wheel turned

struct Step {
    int afterMs;
    Modifiers held;
    int position = -1; // ≥ 0: a key-down with these modifiers held; kPointer: a click or a wheel turn
};

struct Sequence {
    const char* name;
    HotkeyMode mode;
    std::vector<Step> steps;
    int activations;
};

class Detector : public testing::Test {
protected:
    TempSettings settings;
    FakeHotkeyPlatform platform;
    FakeClock clock;
    std::unique_ptr<HotkeyService> service;
    int activated = 0;

    void create()
    {
        service = std::make_unique<HotkeyService>(platform, settings.store(), clock);
        service->onActivate = [this] { ++activated; };
    }

    int activations()
    {
        QCoreApplication::processEvents();
        return activated;
    }

    void type(const std::vector<Step>& steps)
    {
        for (const Step& s : steps) {
            clock.advance(s.afterMs / 1000.0);
            if (s.position >= 0)
                platform.keyDown(quint16(s.position), s.held);
            else if (s.position == kPointer)
                platform.pointer(s.held);
            else
                platform.modifiers(s.held);
        }
    }
};

class DetectorSequences : public Detector, public testing::WithParamInterface<Sequence> {};

TEST_P(DetectorSequences, ActivatesExactlyAsOften)
{
    saveHotkeyMode(GetParam().mode, settings.store());
    saveCustomShortcut(KeyChord{super | alt, Key::at(kK)}, settings.store());
    create();
    ASSERT_TRUE(service->start());
    type(GetParam().steps);
    EXPECT_EQ(activations(), GetParam().activations);
}

const auto ctrlTap = HotkeyMode::doubleTapCtrl;
const auto altTap = HotkeyMode::doubleTapAlt;
const auto custom = HotkeyMode::customShortcut;

INSTANTIATE_TEST_SUITE_P(DoubleTap, DetectorSequences, testing::Values(
    // Release to release: 299 ms is a double tap, 300 and 301 are not.
    Sequence{"secondReleaseAfter299ms", ctrlTap, {{0, ctrl}, {50, none}, {100, ctrl}, {199, none}}, 1},
    Sequence{"secondReleaseAfter300ms", ctrlTap, {{0, ctrl}, {50, none}, {100, ctrl}, {200, none}}, 0},
    Sequence{"secondReleaseAfter301ms", ctrlTap, {{0, ctrl}, {50, none}, {100, ctrl}, {201, none}}, 0},
    Sequence{"lateSecondTapBecomesTheFirst", ctrlTap, {{0, ctrl}, {0, none}, {200, ctrl}, {200, none}, {100, ctrl}, {100, none}}, 1},
    Sequence{"threeQuickTaps", ctrlTap, {{0, ctrl}, {0, none}, {100, ctrl}, {0, none}, {100, ctrl}, {0, none}}, 1},
    Sequence{"fourQuickTaps", ctrlTap, {{0, ctrl}, {0, none}, {100, ctrl}, {0, none}, {100, ctrl}, {0, none}, {100, ctrl}, {0, none}}, 2},
    Sequence{"longHoldThenQuickTap", ctrlTap, {{0, ctrl}, {5000, none}, {100, ctrl}, {100, none}}, 1},
    Sequence{"ctrlWithShift", ctrlTap, {{0, ctrl | shift}, {0, none}, {100, ctrl | shift}, {0, none}}, 0},
    Sequence{"shiftTouchedWhileHeldDiscardsThePendingTap", ctrlTap, {{0, ctrl}, {0, none}, {100, ctrl}, {0, ctrl | shift}, {0, ctrl}, {0, none}}, 0},
    Sequence{"afterTheDiscardATapArmsAgain", ctrlTap, {{0, ctrl}, {0, ctrl | shift}, {0, ctrl}, {0, none}, {100, ctrl}, {100, none}}, 1},
    // A tap is the modifier pressed alone: what else happens while it is held
    // makes it a shortcut, a click or a zoom, and cancels the tap before it too.
    Sequence{"aKeyTypedWhileHeldCancelsTheTap", ctrlTap, {{0, ctrl}, {0, none}, {100, ctrl}, {50, ctrl, kC}, {50, none}}, 0},
    Sequence{"ctrlAThenCtrlC", ctrlTap, {{0, ctrl}, {30, ctrl, kA}, {30, none}, {60, ctrl}, {30, ctrl, kC}, {30, none}}, 0},
    Sequence{"aShortcutBeforeTwoTapsLeavesThem", ctrlTap, {{0, ctrl}, {30, ctrl, kC}, {30, none}, {100, ctrl}, {50, none}, {50, ctrl}, {50, none}}, 1},
    Sequence{"clicksWhileHeld", ctrlTap, {{0, ctrl}, {20, ctrl, kPointer}, {20, none}, {100, ctrl}, {20, ctrl, kPointer}, {20, none}}, 0},
    Sequence{"aWheelTurnWhileHeldCancelsTheFirstTap", ctrlTap, {{0, ctrl}, {50, none}, {50, ctrl}, {20, ctrl, kPointer}, {20, none}, {50, ctrl}, {50, none}}, 0},
    Sequence{"theMouseWhileNothingIsHeldDoesNotMatter", ctrlTap, {{0, ctrl}, {50, none}, {20, none, kPointer}, {50, ctrl}, {50, none}}, 1},
    Sequence{"altHeldForAClick", altTap, {{0, alt}, {20, alt, kPointer}, {20, none}, {100, alt}, {50, none}}, 0},
    Sequence{"altTapsInCtrlMode", ctrlTap, {{0, alt}, {0, none}, {100, alt}, {0, none}}, 0},
    Sequence{"altMode", altTap, {{0, alt}, {0, none}, {100, alt}, {0, none}}, 1},
    Sequence{"ctrlTapsInAltMode", altTap, {{0, ctrl}, {0, none}, {100, ctrl}, {0, none}}, 0},
    Sequence{"ctrlResetsAPendingAltTap", altTap, {{0, alt}, {0, none}, {50, ctrl}, {0, none}, {50, alt}, {0, none}}, 0},
    Sequence{"capsLockAndFnBetweenTapsDoNotReset", altTap, {{0, alt}, {0, none}, {50, none}, {50, none}, {0, none}, {50, alt}, {0, none}}, 1},
    Sequence{"releaseWithoutPressDoesNothing", ctrlTap, {{0, none}, {100, none}}, 0}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(CustomShortcut, DetectorSequences, testing::Values(
    Sequence{"exactModifiers", custom, {{0, super | alt, kK}}, 1},
    Sequence{"extraModifierPrevents", custom, {{0, super | alt | shift, kK}}, 0},
    Sequence{"otherKey", custom, {{0, super | alt, kSemicolon}}, 0},
    Sequence{"missingModifier", custom, {{0, super, kK}}, 0},
    Sequence{"eachKeyDownActivates", custom, {{0, super | alt, kK}, {500, super | alt, kK}}, 2},
    Sequence{"doubleTapsDoNothing", custom, {{0, ctrl}, {0, none}, {100, ctrl}, {0, none}}, 0}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(Detector, ShortcutWithoutAnyOfTheFourBitsMatchesTheBareKey)
{
    saveHotkeyMode(HotkeyMode::customShortcut, settings.store());
    settings.store().setInteger(SettingsKey::customHotkeyKeyCode, 40);
    settings.store().setInteger(SettingsKey::customHotkeyModifiers, 0x10000);
    create();
    service->start();
    platform.keyDown(kK, ctrl);
    platform.keyDown(kK, none);
    EXPECT_EQ(activations(), 1);
}

TEST_F(Detector, CustomModeWithoutShortcutIsActiveButNeverFires)
{
    saveHotkeyMode(HotkeyMode::customShortcut, settings.store());
    create();
    EXPECT_FALSE(service->customShortcut);
    EXPECT_TRUE(service->start());
    EXPECT_TRUE(service->isActive());
    platform.keyDown(kK, super | alt);
    EXPECT_EQ(activations(), 0);
}

TEST_F(Detector, CreationReadsSettingsAndInstallsNothing)
{
    settings.store().setString(SettingsKey::hotkeyMode, "DoubleTapOption");
    create();
    EXPECT_EQ(service->mode(), HotkeyMode::doubleTapCtrl);
    EXPECT_FALSE(platform.hasTap());
    EXPECT_FALSE(service->isPolling());
    EXPECT_FALSE(service->isActive());
}

TEST_F(Detector, ActivationIsAQueuedTaskThatNeedsTheService)
{
    create();
    service->start();
    type({{0, ctrl}, {0, none}, {100, ctrl}, {0, none}});
    EXPECT_EQ(activated, 0); // not inside the tap's callback
    service.reset();
    EXPECT_EQ(activations(), 0);
}

TEST_F(Detector, UntrustedWaitsAndPollsUntilTrustArrives)
{
    platform.trusted = false;
    create();
    QList<bool> activeChanges;
    QObject::connect(service.get(), &HotkeyService::isActiveChanged, [&](bool a) { activeChanges << a; });
    EXPECT_FALSE(service->start());
    EXPECT_FALSE(service->isActive());
    EXPECT_TRUE(service->isPolling());
    EXPECT_FALSE(platform.hasTap());

    service->pollTick(); // still untrusted
    EXPECT_FALSE(service->isActive());
    EXPECT_FALSE(platform.hasTap());

    platform.trusted = true;
    service->pollTick();
    EXPECT_TRUE(service->isActive());
    EXPECT_FALSE(service->isPolling()); // double tap and active: no timer
    EXPECT_EQ(activeChanges, QList<bool>{true});
}

TEST_F(Detector, TheTimerItselfRetriesEveryTwoSeconds)
{
    platform.trusted = false;
    create();
    service->start();
    platform.trusted = true;
    EXPECT_TRUE(eventually([&] { return service->isActive(); }));
}

TEST_F(Detector, ARefusedTapIsRetriedByThePoll)
{
    platform.refuseTap = true;
    create();
    EXPECT_FALSE(service->start());
    EXPECT_TRUE(service->isPolling());
    service->pollTick();
    EXPECT_FALSE(service->isActive());
    platform.refuseTap = false;
    service->pollTick();
    EXPECT_TRUE(service->isActive());
    EXPECT_EQ(platform.tapsCreated, 1);
}

TEST_F(Detector, SwitchingModesWhileActiveStoresTheModeAndPollsNothing)
{
    create();
    service->start();
    EXPECT_FALSE(service->isPolling());
    EXPECT_TRUE(service->setMode(HotkeyMode::customShortcut));
    EXPECT_EQ(settings.reopened()->hotkeyModeText(), "customShortcut");
    EXPECT_TRUE(service->isActive());
    EXPECT_FALSE(service->isPolling()); // active: nothing to wait for
    EXPECT_TRUE(service->setMode(HotkeyMode::doubleTapAlt));
    EXPECT_EQ(settings.reopened()->hotkeyModeText(), "doubleTapOption");
    EXPECT_FALSE(service->isPolling());
}

TEST_F(Detector, WhereKeysAreHiddenTheDesktopWatchesTheCustomShortcut)
{
    platform.refuseTap = true; // a Wayland session: no keys for Kestrio
    platform.desktopWatchesShortcuts = true;
    saveCustomShortcut(KeyChord{ctrl | shift, Key::at(kSpace)}, settings.store());
    create();

    // A double tap is nothing a desktop's shortcut list can hold.
    EXPECT_FALSE(service->setMode(HotkeyMode::doubleTapCtrl));
    EXPECT_FALSE(platform.desktopShortcut);

    EXPECT_TRUE(service->setMode(HotkeyMode::customShortcut));
    EXPECT_TRUE(service->isActive());
    EXPECT_EQ(platform.desktopShortcut, (KeyChord{ctrl | shift, Key::at(kSpace)}));
    platform.desktopActivated();
    EXPECT_EQ(activations(), 1);

    service->stop();
    EXPECT_FALSE(platform.desktopShortcut); // released with the detector
    EXPECT_FALSE(platform.desktopActivated);

    platform.desktopWatchesShortcuts = false; // a desktop without the watch
    EXPECT_FALSE(service->setMode(HotkeyMode::customShortcut));
    EXPECT_FALSE(service->isActive());
}

TEST_F(Detector, StopDropsTheTapAndThePendingTapButNotTheFlag)
{
    create();
    service->start();
    type({{0, ctrl}, {0, none}});
    service->stop();
    EXPECT_FALSE(platform.hasTap());
    EXPECT_TRUE(service->isActive());
    service->start();
    type({{100, ctrl}, {0, none}}); // the earlier tap was forgotten
    EXPECT_EQ(activations(), 0);
    EXPECT_EQ(platform.tapsCreated, 2);
}

TEST_F(Detector, ObservablesAnnounceOnlyChanges)
{
    create();
    int changes = 0;
    QObject::connect(service.get(), &HotkeyService::isActiveChanged, [&] { ++changes; });
    service->start();
    service->start();
    service->setMode(HotkeyMode::doubleTapAlt);
    EXPECT_EQ(changes, 1);
}

} // namespace
