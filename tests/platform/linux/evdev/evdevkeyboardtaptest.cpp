#include "platform/linux/evdev/evdevkeyboardtap.h"
#include "support/eventually.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <linux/input.h>
#include <unistd.h>

namespace {

constexpr Modifiers none{}, ctrl{Modifier::ctrl}, alt{Modifier::alt};

QByteArray record(quint16 type, quint16 code, qint32 value)
{
    input_event event{};
    event.type = type;
    event.code = code;
    event.value = value;
    return QByteArray(reinterpret_cast<const char*>(&event), sizeof event);
}

// A key change and the end of its report, as the kernel sends them.
QByteArray key(quint16 code, qint32 value)
{
    return record(EV_KEY, code, value) + record(EV_SYN, SYN_REPORT, 0);
}

using Seen = KeyEvent;

constexpr KeyEvent::Kind modifiersChanged = KeyEvent::Kind::modifiersChanged, keyDown = KeyEvent::Kind::keyDown,
                         pointer = KeyEvent::Kind::pointer;

// Keyboards made of pipes: the test writes the kernel's records into them.
class EvdevKeyboardTapTest : public testing::Test {
protected:
    EvdevKeyboardTapTest() : tap_(empty_.path())
    {
        tap_.setCallback([this](const KeyEvent& e) { seen_.push_back(e); });
        tap_.setEnabled(true);
    }
    ~EvdevKeyboardTapTest() override
    {
        for (int fd : writers_)
            if (fd >= 0)
                ::close(fd);
    }

    int plugIn()
    {
        int fds[2];
        EXPECT_EQ(pipe(fds), 0);
        tap_.addDevice(fds[0], QStringLiteral("pipe %1").arg(writers_.size()));
        writers_.push_back(fds[1]);
        return int(writers_.size()) - 1;
    }
    void send(int keyboard, const QByteArray& bytes)
    {
        ASSERT_EQ(::write(writers_[keyboard], bytes.constData(), size_t(bytes.size())), bytes.size());
        // The bytes are in the pipe already: one pass of the loop reads them,
        // so keyboards' events arrive in the order they were sent.
        QCoreApplication::processEvents();
    }
    void unplug(int keyboard)
    {
        ::close(writers_[keyboard]);
        writers_[keyboard] = -1;
    }
    // Waits until `count` events were seen, then lets stray ones arrive.
    std::vector<Seen> seen(size_t count)
    {
        eventually([&] { return seen_.size() >= count; });
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        return seen_;
    }

    QTemporaryDir empty_;
    EvdevKeyboardTap tap_;
    std::vector<int> writers_;
    std::vector<Seen> seen_;
};

TEST_F(EvdevKeyboardTapTest, ADoubleTapAndAHeldKeyAsTheDetectorSeesThem)
{
    const int keyboard = plugIn();
    // Left Ctrl twice; then Ctrl+S held long enough to repeat; bytes cut mid-record.
    const QByteArray stream = key(KEY_LEFTCTRL, 1) + key(KEY_LEFTCTRL, 0) + key(KEY_LEFTCTRL, 1) + key(KEY_LEFTCTRL, 0)
        + key(KEY_LEFTCTRL, 1) + key(KEY_S, 1) + key(KEY_S, 2) + key(KEY_S, 2) + key(KEY_S, 0) + key(KEY_LEFTCTRL, 0);
    send(keyboard, stream.left(37));
    send(keyboard, stream.mid(37));
    EXPECT_EQ(seen(7), (std::vector<Seen>{{modifiersChanged, ctrl}, {modifiersChanged, none}, {modifiersChanged, ctrl},
                                          {modifiersChanged, none}, {modifiersChanged, ctrl}, {keyDown, ctrl, KEY_S},
                                          {modifiersChanged, none}}))
        << "its repeats and release are no events";
}

// A mouse beside the keyboard: its clicks and wheel turns reach the detector
// with the modifiers held on the keyboard; its releases and motion do not.
TEST_F(EvdevKeyboardTapTest, ClicksAndWheelTurnsCarryTheKeyboardsModifiers)
{
    const int keyboard = plugIn();
    const int mouse = plugIn();
    send(keyboard, key(KEY_LEFTCTRL, 1));
    send(mouse, record(EV_REL, REL_X, 5) + record(EV_SYN, SYN_REPORT, 0)); // moved: nothing
    send(mouse, key(BTN_LEFT, 1));
    send(mouse, key(BTN_LEFT, 0));
    send(mouse, record(EV_REL, REL_WHEEL, -1) + record(EV_SYN, SYN_REPORT, 0));
    send(keyboard, key(KEY_LEFTCTRL, 0));
    send(mouse, key(BTN_RIGHT, 1));
    EXPECT_EQ(seen(5), (std::vector<Seen>{{modifiersChanged, ctrl}, {pointer, ctrl}, {pointer, ctrl},
                                          {modifiersChanged, none}, {pointer, none}}));
}

TEST_F(EvdevKeyboardTapTest, TwoKeyboardsHoldingOneKeyCountOnce)
{
    const int laptop = plugIn(), external = plugIn();
    send(laptop, key(KEY_LEFTCTRL, 1));
    send(external, key(KEY_LEFTCTRL, 1));
    send(laptop, key(KEY_LEFTCTRL, 0)); // still held on the other keyboard
    send(external, key(KEY_LEFTALT, 1));
    send(external, key(KEY_LEFTCTRL, 0));
    EXPECT_EQ(seen(3), (std::vector<Seen>{{modifiersChanged, ctrl}, {modifiersChanged, ctrl | alt}, {modifiersChanged, alt}}));
}

TEST_F(EvdevKeyboardTapTest, AKeyboardThatGoesAwayLetsGoOfItsKeys)
{
    const int keyboard = plugIn(), other = plugIn();
    send(keyboard, key(KEY_LEFTCTRL, 1) + key(KEY_LEFTSHIFT, 1));
    ASSERT_EQ(seen(2).size(), 2u);
    unplug(keyboard); // the reader sees the end of the stream, as with ENODEV
    ASSERT_TRUE(eventually([&] { return tap_.deviceCount() == 1; }));
    const std::vector<Seen> events = seen(4);
    EXPECT_EQ(events.back(), (Seen{modifiersChanged, none})) << "no modifier stays stuck";
    // The other keyboard goes on.
    send(other, key(KEY_RIGHTCTRL, 1));
    EXPECT_EQ(seen(5).back(), (Seen{modifiersChanged, ctrl}));
}

TEST_F(EvdevKeyboardTapTest, LostEventsAndRecordsNoKeyboardSendsChangeNothingHeld)
{
    const int keyboard = plugIn();
    send(keyboard, key(KEY_LEFTCTRL, 1));
    // Events the kernel dropped: whatever was held is let go.
    send(keyboard, record(EV_SYN, SYN_DROPPED, 0));
    // Not keys, or keys out of range or with values no key has.
    send(keyboard, record(EV_REL, REL_X, 5) + record(EV_KEY, KEY_MAX + 1, 1) + record(EV_KEY, KEY_A, 7)
                       + record(EV_KEY, KEY_A, -1) + record(EV_MSC, MSC_SCAN, 30));
    send(keyboard, key(KEY_A, 1));
    EXPECT_EQ(seen(3), (std::vector<Seen>{{modifiersChanged, ctrl}, {modifiersChanged, none}, {keyDown, none, KEY_A}}));
}

TEST_F(EvdevKeyboardTapTest, NothingReachesTheDetectorWhileDisabled)
{
    const int keyboard = plugIn();
    tap_.setEnabled(false);
    send(keyboard, key(KEY_LEFTCTRL, 1));
    QCoreApplication::processEvents(QEventLoop::AllEvents, 100);
    EXPECT_TRUE(seen_.empty());
}

TEST(EvdevKeyboardTap, AFolderWithoutReadableKeyboardsOffersNone)
{
    QTemporaryDir folder;
    EXPECT_FALSE(EvdevKeyboardTap::canReadKeyboards(folder.path()));
    QFile notADevice(folder.filePath("event0"));
    ASSERT_TRUE(notADevice.open(QIODevice::WriteOnly));
    notADevice.write("keys");
    notADevice.close();
    EXPECT_FALSE(EvdevKeyboardTap::canReadKeyboards(folder.path()));
    EvdevKeyboardTap tap(folder.path());
    EXPECT_FALSE(tap.create([](const KeyEvent&) {}));
    EXPECT_EQ(tap.deviceCount(), 0);
}

} // namespace
