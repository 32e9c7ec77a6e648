#include "hotkey/hotkeyservice.h"
#include "platform/fake/fakeclock.h"
#include "platform/fake/fakehotkeyplatform.h"
#include "support/eventually.h"
#include "support/tempsettings.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace {

using namespace ModifierFlag;
constexpr quint64 Fn = Function;

// One step of typing: wait (in whole milliseconds, so that a boundary is
// exactly where the table says), then the modifier flags change, or a key goes down.
constexpr int kPointer = -2; // a mouse button pressed or a wheel turned

struct Step {
    int afterMs;
    quint64 flags;
    int keyCode = -1; // ≥ 0: a key-down with these flags; kPointer: a click or a wheel turn
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
            if (s.keyCode >= 0)
                platform.keyDown(quint16(s.keyCode), s.flags);
            else if (s.keyCode == kPointer)
                platform.pointer(s.flags);
            else
                platform.flags(s.flags);
        }
    }
};

class DetectorSequences : public Detector, public testing::WithParamInterface<Sequence> {};

TEST_P(DetectorSequences, ActivatesExactlyAsOften)
{
    saveHotkeyMode(GetParam().mode, settings.store());
    CustomShortcut{40, Control | Option}.save(settings.store());
    create();
    ASSERT_TRUE(service->start());
    type(GetParam().steps);
    EXPECT_EQ(activations(), GetParam().activations);
}

const auto cmd = HotkeyMode::doubleTapCommand;
const auto opt = HotkeyMode::doubleTapOption;
const auto custom = HotkeyMode::customShortcut;

INSTANTIATE_TEST_SUITE_P(DoubleTap, DetectorSequences, testing::Values(
    // Release to release: 299 ms is a double tap, 300 and 301 are not.
    Sequence{"secondReleaseAfter299ms", cmd, {{0, Command}, {50, 0}, {100, Command}, {199, 0}}, 1},
    Sequence{"secondReleaseAfter300ms", cmd, {{0, Command}, {50, 0}, {100, Command}, {200, 0}}, 0},
    Sequence{"secondReleaseAfter301ms", cmd, {{0, Command}, {50, 0}, {100, Command}, {201, 0}}, 0},
    Sequence{"lateSecondTapBecomesTheFirst", cmd, {{0, Command}, {0, 0}, {200, Command}, {200, 0}, {100, Command}, {100, 0}}, 1},
    Sequence{"threeQuickTaps", cmd, {{0, Command}, {0, 0}, {100, Command}, {0, 0}, {100, Command}, {0, 0}}, 1},
    Sequence{"fourQuickTaps", cmd, {{0, Command}, {0, 0}, {100, Command}, {0, 0}, {100, Command}, {0, 0}, {100, Command}, {0, 0}}, 2},
    Sequence{"longHoldThenQuickTap", cmd, {{0, Command}, {5000, 0}, {100, Command}, {100, 0}}, 1},
    Sequence{"commandWithShift", cmd, {{0, Command | Shift}, {0, 0}, {100, Command | Shift}, {0, 0}}, 0},
    Sequence{"shiftTouchedWhileHeldDiscardsThePendingTap", cmd, {{0, Command}, {0, 0}, {100, Command}, {0, Command | Shift}, {0, Command}, {0, 0}}, 0},
    Sequence{"afterTheDiscardATapArmsAgain", cmd, {{0, Command}, {0, Command | Shift}, {0, Command}, {0, 0}, {100, Command}, {100, 0}}, 1},
    // A tap is the modifier pressed alone: what else happens while it is held
    // makes it a shortcut, a click or a zoom, and cancels the tap before it too.
    Sequence{"aKeyTypedWhileHeldCancelsTheTap", cmd, {{0, Command}, {0, 0}, {100, Command}, {50, Command, 8}, {50, 0}}, 0},
    Sequence{"ctrlAThenCtrlC", cmd, {{0, Command}, {30, Command, 0}, {30, 0}, {60, Command}, {30, Command, 8}, {30, 0}}, 0},
    Sequence{"aShortcutBeforeTwoTapsLeavesThem", cmd, {{0, Command}, {30, Command, 8}, {30, 0}, {100, Command}, {50, 0}, {50, Command}, {50, 0}}, 1},
    Sequence{"clicksWhileHeld", cmd, {{0, Command}, {20, Command, kPointer}, {20, 0}, {100, Command}, {20, Command, kPointer}, {20, 0}}, 0},
    Sequence{"aWheelTurnWhileHeldCancelsTheFirstTap", cmd, {{0, Command}, {50, 0}, {50, Command}, {20, Command, kPointer}, {20, 0}, {50, Command}, {50, 0}}, 0},
    Sequence{"theMouseWhileNothingIsHeldDoesNotMatter", cmd, {{0, Command}, {50, 0}, {20, 0, kPointer}, {50, Command}, {50, 0}}, 1},
    Sequence{"optionHeldForAClick", opt, {{0, Option}, {20, Option, kPointer}, {20, 0}, {100, Option}, {50, 0}}, 0},
    Sequence{"optionTapsInCommandMode", cmd, {{0, Option}, {0, 0}, {100, Option}, {0, 0}}, 0},
    Sequence{"optionMode", opt, {{0, Option}, {0, 0}, {100, Option}, {0, 0}}, 1},
    Sequence{"commandTapsInOptionMode", opt, {{0, Command}, {0, 0}, {100, Command}, {0, 0}}, 0},
    Sequence{"commandResetsAPendingOptionTap", opt, {{0, Option}, {0, 0}, {50, Command}, {0, 0}, {50, Option}, {0, 0}}, 0},
    Sequence{"capsLockAndFnBetweenTapsDoNotReset", opt, {{0, Option}, {0, 0}, {50, CapsLock}, {50, Fn}, {0, 0}, {50, Option | CapsLock}, {0, CapsLock}}, 1},
    Sequence{"releaseWithoutPressDoesNothing", cmd, {{0, 0}, {100, 0}}, 0}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(CustomShortcut, DetectorSequences, testing::Values(
    Sequence{"exactModifiers", custom, {{0, Control | Option, 40}}, 1},
    Sequence{"extraModifierPrevents", custom, {{0, Control | Option | Shift, 40}}, 0},
    Sequence{"capsLockIgnored", custom, {{0, Control | Option | CapsLock, 40}}, 1},
    Sequence{"otherKey", custom, {{0, Control | Option, 41}}, 0},
    Sequence{"missingModifier", custom, {{0, Control, 40}}, 0},
    Sequence{"eachKeyDownActivates", custom, {{0, Control | Option, 40}, {500, Control | Option, 40}}, 2},
    Sequence{"doubleTapsDoNothing", custom, {{0, Command}, {0, 0}, {100, Command}, {0, 0}}, 0}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(Detector, ShortcutWithoutAnyOfTheFourBitsMatchesTheBareKey)
{
    saveHotkeyMode(HotkeyMode::customShortcut, settings.store());
    settings.store().setInteger(SettingsKey::customHotkeyKeyCode, 40);
    settings.store().setInteger(SettingsKey::customHotkeyModifiers, 0x10000);
    create();
    service->start();
    platform.keyDown(40, Command);
    platform.keyDown(40, CapsLock);
    EXPECT_EQ(activations(), 1);
}

TEST_F(Detector, CustomModeWithoutShortcutIsActiveButNeverFires)
{
    saveHotkeyMode(HotkeyMode::customShortcut, settings.store());
    create();
    EXPECT_FALSE(service->customShortcut);
    EXPECT_TRUE(service->start());
    EXPECT_TRUE(service->isActive());
    platform.keyDown(40, Control | Option);
    EXPECT_EQ(activations(), 0);
}

TEST_F(Detector, CreationReadsSettingsAndInstallsNothing)
{
    settings.store().setString(SettingsKey::hotkeyMode, "DoubleTapOption");
    create();
    EXPECT_EQ(service->mode(), HotkeyMode::doubleTapCommand);
    EXPECT_FALSE(platform.hasTap());
    EXPECT_FALSE(service->isPolling());
    EXPECT_FALSE(service->isActive());
}

TEST_F(Detector, ActivationIsAQueuedTaskThatNeedsTheService)
{
    create();
    service->start();
    type({{0, Command}, {0, 0}, {100, Command}, {0, 0}});
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
    EXPECT_TRUE(service->setMode(HotkeyMode::doubleTapOption));
    EXPECT_EQ(settings.reopened()->hotkeyModeText(), "doubleTapOption");
    EXPECT_FALSE(service->isPolling());
}

TEST_F(Detector, WhereKeysAreHiddenTheDesktopWatchesTheCustomShortcut)
{
    platform.refuseTap = true; // a Wayland session: no keys for Kestrio
    platform.desktopWatchesShortcuts = true;
    CustomShortcut{49, Command | Shift}.save(settings.store());
    create();

    // A double tap is nothing a desktop's shortcut list can hold.
    EXPECT_FALSE(service->setMode(HotkeyMode::doubleTapCommand));
    EXPECT_TRUE(platform.desktopTrigger.isEmpty());

    EXPECT_TRUE(service->setMode(HotkeyMode::customShortcut));
    EXPECT_TRUE(service->isActive());
    EXPECT_EQ(platform.desktopTrigger, "CTRL+SHIFT+space");
    platform.desktopActivated();
    EXPECT_EQ(activations(), 1);

    service->stop();
    EXPECT_TRUE(platform.desktopTrigger.isEmpty()); // released with the detector
    EXPECT_FALSE(platform.desktopActivated);

    platform.desktopWatchesShortcuts = false; // a desktop without the watch
    EXPECT_FALSE(service->setMode(HotkeyMode::customShortcut));
    EXPECT_FALSE(service->isActive());
}

TEST_F(Detector, StopDropsTheTapAndThePendingTapButNotTheFlag)
{
    create();
    service->start();
    type({{0, Command}, {0, 0}});
    service->stop();
    EXPECT_FALSE(platform.hasTap());
    EXPECT_TRUE(service->isActive());
    service->start();
    type({{100, Command}, {0, 0}}); // the earlier tap was forgotten
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
    service->setMode(HotkeyMode::doubleTapOption);
    EXPECT_EQ(changes, 1);
}

} // namespace
