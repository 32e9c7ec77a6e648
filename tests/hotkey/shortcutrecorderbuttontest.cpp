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

using namespace ModifierFlag;

// X keycodes (evdev + 8) of the keys these tests press.
enum Scan : quint32 { scanA = 38, scanK = 45, scanSpace = 65, scanEscape = 9, scanBackSpace = 22, scanShift = 50 };

class Recorder : public testing::Test {
protected:
    FakeKeyboardLayout layout;
    std::optional<CustomShortcut> shortcut;
    bool recording = false;
    QWidget window;
    QLineEdit* field = new QLineEdit(&window);
    ShortcutRecorderButton* button;
    ShortcutRecorderButton* hostButton = nullptr;

    Recorder()
    {
        layout.characters = {{0, "a"}, {40, "k"}};
        layout.scanCodes = {{scanA, 0}, {scanK, 40}, {scanSpace, 49}, {scanEscape, 53}, {scanBackSpace, 51}, {scanShift, 56}};
        button = new ShortcutRecorderButton({[this] { return shortcut; }, [this](const auto& s) { shortcut = s; }},
                                            {[this] { return recording; }, [this](const bool& r) { recording = r; }},
                                            layout, &window);
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
    shortcut = CustomShortcut{40, Control | Option};
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
        CustomShortcut expected;
        const char* label;
    };
    const Case cases[] = {
        {"Shift+A", Qt::Key_A, Qt::ShiftModifier, scanA, 0x1, {0, Shift}, "Shift+A"},
        {"all four+Space", Qt::Key_Space, Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier,
         scanSpace, 0x4d, {49, Shift | Control | Option | Command}, "Super+Ctrl+Alt+Shift+Space"},
        // Caps Lock (X's Lock bit) and the keypad flag never reach the shortcut.
        {"Caps Lock+Super+K", Qt::Key_K, Qt::MetaModifier | Qt::KeypadModifier, scanK, 0x42, {40, Control}, "Super+K"},
        {"Ctrl+K", Qt::Key_K, Qt::ControlModifier, scanK, 0x4, {40, Command}, "Ctrl+K"},
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
    shortcut = CustomShortcut{40, Command};
    button->refresh();
    arm();
    ASSERT_EQ(QApplication::focusWidget(), button);
    press(Qt::Key_Escape, Qt::NoModifier, scanEscape);
    press(Qt::Key_Backspace, Qt::NoModifier, scanBackSpace);
    press(Qt::Key_Space, Qt::NoModifier, scanSpace, " "); // would click the button
    press(Qt::Key_Shift, Qt::ShiftModifier, scanShift); // a modifier alone records nothing
    EXPECT_TRUE(recording);
    EXPECT_EQ(button->text(), "Press shortcut…");
    EXPECT_EQ(shortcut, (CustomShortcut{40, Command}));

    // Typing elsewhere (a search panel opened meanwhile) is not the recorder's.
    field->setFocus();
    press(Qt::Key_A, Qt::NoModifier, scanA, "a");
    EXPECT_EQ(field->text(), "a");
    EXPECT_TRUE(recording);
    // What would make a shortcut is the recorder's, wherever it was aimed.
    press(Qt::Key_A, Qt::ControlModifier, scanA);
    EXPECT_FALSE(recording);
    EXPECT_EQ(shortcut, (CustomShortcut{0, Command}));
    EXPECT_EQ(field->text(), "a");
}

// Right Alt counts as Option for the recorder as for the detector, also where
// the layout makes it AltGr (Qt's group switch).
TEST_F(Recorder, RightAltRecordsAsOption)
{
    arm();
    press(Qt::Key_K, Qt::GroupSwitchModifier, scanK, QString::fromUtf8("ĸ"));
    EXPECT_EQ(shortcut, (CustomShortcut{40, Option}));
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
                                            layout, &window);
    hostButton = host;
    window.layout()->addWidget(host);
    host->show();
    host->installEventFilter(&count);
    QTest::mouseClick(host, Qt::LeftButton);
    ASSERT_TRUE(recording);
    ASSERT_EQ(QApplication::focusWidget(), host);
    QKeyEvent down(QEvent::KeyPress, Qt::Key_K, Qt::ControlModifier, scanK, 0, 0x4);
    QApplication::sendEvent(host, &down);
    ASSERT_EQ(shortcut, (CustomShortcut{40, Command}));
    QKeyEvent up(QEvent::KeyRelease, Qt::Key_K, Qt::ControlModifier, scanK, 0, 0x4);
    QApplication::sendEvent(host, &up);
    EXPECT_EQ(count.releases, 0);
    QKeyEvent later(QEvent::KeyRelease, Qt::Key_K, Qt::ControlModifier, scanK, 0, 0x4);
    QApplication::sendEvent(host, &later);
    EXPECT_EQ(count.releases, 1); // only that one release
}

TEST_F(Recorder, ASecondClickCancelsWithoutChangingTheShortcut)
{
    shortcut = CustomShortcut{0, Shift};
    button->refresh();
    arm();
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_FALSE(recording);
    EXPECT_FALSE(button->capture().isRecordingEnabled());
    EXPECT_EQ(button->text(), "Shift+A");
    press(Qt::Key_K, Qt::MetaModifier, scanK);
    EXPECT_EQ(shortcut, (CustomShortcut{0, Shift}));
}

TEST_F(Recorder, NoShortcutOfTheApplicationFiresWhileArmed)
{
    int fired = 0;
    auto* quit = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_K), &window);
    QObject::connect(quit, &QShortcut::activated, [&] { ++fired; });
    arm();
    press(Qt::Key_K, Qt::ControlModifier, scanK);
    EXPECT_EQ(fired, 0);
    EXPECT_EQ(shortcut, (CustomShortcut{40, Command}));
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

TEST(ShortcutKeyCapture, ModifierFlagsOfQtModifiers)
{
    EXPECT_EQ(ShortcutKeyCapture::modifierFlags(Qt::NoModifier), 0u);
    EXPECT_EQ(ShortcutKeyCapture::modifierFlags(Qt::MetaModifier), Control);
    EXPECT_EQ(ShortcutKeyCapture::modifierFlags(Qt::ControlModifier), Command);
    EXPECT_EQ(ShortcutKeyCapture::modifierFlags(Qt::AltModifier | Qt::KeypadModifier | Qt::GroupSwitchModifier), Option);
}

} // namespace
