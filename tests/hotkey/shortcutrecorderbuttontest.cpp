#include "base/platformwords.h"
#include "hotkey/hotkeymode.h"
#include "hotkey/shortcutkeycapture.h"
#include "hotkey/shortcutrecorderbutton.h"
#include "platform/fake/fakekeyboardlayout.h"

#include <QApplication>
#include <QBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QShortcut>
#include <QTest>

#include <gtest/gtest.h>

namespace {

// Positions (Linux input codes) of the keys, and the modifiers.
constexpr quint16 kA = 30, kK = 37, kSpace = 57, kEscape = 1, kBackSpace = 14, kShift = 42;
constexpr Modifiers ctrl{Modifier::ctrl}, alt{Modifier::alt}, shift{Modifier::shift}, super{Modifier::super};

KeyChord chord(Modifiers modifiers, quint16 position)
{
    return KeyChord{modifiers, Key::at(position)};
}

// X keycodes (evdev + 8) of the keys these tests press.
enum Scan : quint32 { scanA = 38, scanK = 45, scanSpace = 65, scanEscape = 9, scanBackSpace = 22, scanShift = 50 };

class Recorder : public testing::Test {
protected:
    FakeKeyboardLayout layout;
    std::optional<KeyChord> shortcut;
    bool recording = false;
    QWidget window;
    QLineEdit* field = new QLineEdit(&window);
    ShortcutRecorderButton* button;
    ShortcutRecorderButton* hostButton = nullptr;

    Recorder()
    {
        layout.characters = {{kA, "a"}, {kK, "k"}};
        layout.scanCodes = {{scanA, kA}, {scanK, kK}, {scanSpace, kSpace}, {scanEscape, kEscape}, {scanBackSpace, kBackSpace}, {scanShift, kShift}};
        button = new ShortcutRecorderButton({[this] { return shortcut; }, [this](const auto& s) { shortcut = s; }},
                                            {[this] { return recording; }, [this](const bool& r) { recording = r; }},
                                            layout, PlatformWords::linuxDesktop().keys, &window);
        auto* column = new QVBoxLayout(&window);
        column->addWidget(field);
        column->addWidget(button);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        field->setFocus();
    }

    // A key pressed and released as the window system delivers it: the
    // shortcut check first, then the press, to whatever has the focus.
    void press(int key, Qt::KeyboardModifiers modifiers, quint32 scanCode, const QString& text = {},
               quint32 nativeModifiers = 0)
    {
        ASSERT_TRUE(QApplication::focusWidget());
        QKeyEvent override(QEvent::ShortcutOverride, key, modifiers, scanCode, 0, nativeModifiers, text);
        QApplication::sendEvent(QApplication::focusWidget(), &override);
        QKeyEvent down(QEvent::KeyPress, key, modifiers, scanCode, 0, nativeModifiers, text);
        QApplication::sendEvent(QApplication::focusWidget(), &down);
        QKeyEvent up(QEvent::KeyRelease, key, modifiers, scanCode, 0, nativeModifiers, text);
        QApplication::sendEvent(QApplication::focusWidget(), &up);
    }

    void arm()
    {
        QTest::mouseClick(button, Qt::LeftButton);
        ASSERT_TRUE(recording);
        ASSERT_EQ(button->text(), "Press shortcut…");
    }
};

TEST_F(Recorder, LabelsFollowTheBoundState)
{
    EXPECT_EQ(button->text(), "Click to record");
    EXPECT_GE(button->minimumWidth(), 120);
    shortcut = chord(super | alt, kK);
    button->refresh();
    EXPECT_EQ(button->text(), "Super+Alt+K");
    recording = true;
    button->refresh();
    EXPECT_EQ(button->text(), "Press shortcut…");
    EXPECT_EQ(button->palette().color(QPalette::ButtonText), QColor(0xE0, 0x7B, 0x00));
}

TEST_F(Recorder, RecordsTheKeyCodeAndOnlyTheFourModifierBits)
{
    struct Case {
        const char* name;
        int key;
        Qt::KeyboardModifiers modifiers;
        quint32 scan;
        quint32 nativeModifiers;
        KeyChord expected;
        const char* label;
    };
    const Case cases[] = {
        {"Shift+A", Qt::Key_A, Qt::ShiftModifier, scanA, 0x1, chord(shift, kA), "Shift+A"},
        {"all four+Space", Qt::Key_Space, Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier,
         scanSpace, 0x4d, chord(shift | super | alt | ctrl, kSpace), "Super+Ctrl+Alt+Shift+Space"},
        // Caps Lock (X's Lock bit) and the keypad flag never reach the shortcut.
        {"Caps Lock+Super+K", Qt::Key_K, Qt::MetaModifier | Qt::KeypadModifier, scanK, 0x42, chord(super, kK), "Super+K"},
        {"Ctrl+K", Qt::Key_K, Qt::ControlModifier, scanK, 0x4, chord(ctrl, kK), "Ctrl+K"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        shortcut.reset();
        arm();
        press(c.key, c.modifiers, c.scan, {}, c.nativeModifiers);
        EXPECT_FALSE(recording);
        EXPECT_EQ(shortcut, c.expected);
        EXPECT_EQ(button->text(), QString::fromUtf8(c.label));
        EXPECT_TRUE(field->text().isEmpty());
    }
}

TEST_F(Recorder, KeysWithoutAModifierAreSwallowedAtTheRecorderAndGoOnElsewhere)
{
    shortcut = chord(ctrl, kK);
    button->refresh();
    arm();
    ASSERT_EQ(QApplication::focusWidget(), button);
    press(Qt::Key_Escape, Qt::NoModifier, scanEscape);
    press(Qt::Key_Backspace, Qt::NoModifier, scanBackSpace);
    press(Qt::Key_Space, Qt::NoModifier, scanSpace, " "); // would click the button
    press(Qt::Key_Shift, Qt::ShiftModifier, scanShift); // a modifier alone records nothing
    EXPECT_TRUE(recording);
    EXPECT_EQ(button->text(), "Press shortcut…");
    EXPECT_EQ(shortcut, (chord(ctrl, kK)));

    // Typing elsewhere (a search panel opened meanwhile) is not the recorder's.
    field->setFocus();
    press(Qt::Key_A, Qt::NoModifier, scanA, "a");
    EXPECT_EQ(field->text(), "a");
    EXPECT_TRUE(recording);
    // What would make a shortcut is the recorder's, wherever it was aimed.
    press(Qt::Key_A, Qt::ControlModifier, scanA);
    EXPECT_FALSE(recording);
    EXPECT_EQ(shortcut, (chord(ctrl, kA)));
    EXPECT_EQ(field->text(), "a");
}

// Right Alt counts as Alt for the recorder as for the detector, also where
// the layout makes it AltGr (Qt's group switch).
TEST_F(Recorder, RightAltRecordsAsAlt)
{
    arm();
    press(Qt::Key_K, Qt::GroupSwitchModifier, scanK, QString::fromUtf8("ĸ"));
    EXPECT_EQ(shortcut, (chord(alt, kK)));
}

// The host stores the shortcut and renders again before recording is turned
// off (as the settings window does): the recorded key's release must still
// reach nobody.
TEST_F(Recorder, TheRecordedKeysReleaseReachesNobody)
{
    struct ReleaseCount : QObject {
        int releases = 0;
        bool eventFilter(QObject*, QEvent* event) override
        {
            releases += event->type() == QEvent::KeyRelease;
            return false;
        }
    } count;
    auto* host = new ShortcutRecorderButton({[this] { return shortcut; },
                                             [this](const auto& s) {
                                                 shortcut = s;
                                                 hostButton->refresh(); // re-rendered while still armed
                                             }},
                                            {[this] { return recording; }, [this](const bool& r) { recording = r; }},
                                            layout, PlatformWords::linuxDesktop().keys, &window);
    hostButton = host;
    window.layout()->addWidget(host);
    host->show();
    host->installEventFilter(&count);
    QTest::mouseClick(host, Qt::LeftButton);
    ASSERT_TRUE(recording);
    ASSERT_EQ(QApplication::focusWidget(), host);
    QKeyEvent down(QEvent::KeyPress, Qt::Key_K, Qt::ControlModifier, scanK, 0, 0x4);
    QApplication::sendEvent(host, &down);
    ASSERT_EQ(shortcut, (chord(ctrl, kK)));
    QKeyEvent up(QEvent::KeyRelease, Qt::Key_K, Qt::ControlModifier, scanK, 0, 0x4);
    QApplication::sendEvent(host, &up);
    EXPECT_EQ(count.releases, 0);
    QKeyEvent later(QEvent::KeyRelease, Qt::Key_K, Qt::ControlModifier, scanK, 0, 0x4);
    QApplication::sendEvent(host, &later);
    EXPECT_EQ(count.releases, 1); // only that one release
}

TEST_F(Recorder, ASecondClickCancelsWithoutChangingTheShortcut)
{
    shortcut = chord(shift, kA);
    button->refresh();
    arm();
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_FALSE(recording);
    EXPECT_FALSE(button->capture().isRecordingEnabled());
    EXPECT_EQ(button->text(), "Shift+A");
    press(Qt::Key_K, Qt::MetaModifier, scanK);
    EXPECT_EQ(shortcut, (chord(shift, kA)));
}

TEST_F(Recorder, NoShortcutOfTheApplicationFiresWhileArmed)
{
    int fired = 0;
    auto* quit = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_K), &window);
    QObject::connect(quit, &QShortcut::activated, [&] { ++fired; });
    arm();
    press(Qt::Key_K, Qt::ControlModifier, scanK);
    EXPECT_EQ(fired, 0);
    EXPECT_EQ(shortcut, (chord(ctrl, kK)));
    QTest::keyClick(&window, Qt::Key_K, Qt::ControlModifier);
    EXPECT_EQ(fired, 1); // not armed any more
}

TEST_F(Recorder, ClosingTheWindowStopsRecording)
{
    arm();
    window.close();
    EXPECT_FALSE(recording);
    EXPECT_FALSE(button->capture().isRecordingEnabled());
    QLineEdit other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    other.setFocus();
    press(Qt::Key_A, Qt::NoModifier, scanA, "a");
    EXPECT_EQ(other.text(), "a"); // other windows have their keys again
}

TEST(ShortcutKeyCapture, ModifiersOfQtModifiers)
{
    EXPECT_EQ(ShortcutKeyCapture::modifiersOf(Qt::NoModifier), Modifiers());
    EXPECT_EQ(ShortcutKeyCapture::modifiersOf(Qt::MetaModifier), super);
    EXPECT_EQ(ShortcutKeyCapture::modifiersOf(Qt::ControlModifier), ctrl);
    EXPECT_EQ(ShortcutKeyCapture::modifiersOf(Qt::AltModifier | Qt::KeypadModifier | Qt::GroupSwitchModifier), alt);
}

} // namespace
