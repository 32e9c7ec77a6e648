#include "platform/linux/sway/swayipc.h"
#include "platform/linux/sway/swaytree.h"

#include <gtest/gtest.h>

namespace {

TEST(SwayIpc, MessagesArriveWholeHoweverTheBytesAreCut)
{
    const QByteArray stream = SwayIpc::encode(SwayIpc::getTree, R"({"id":1})")
        + SwayIpc::encode(SwayIpc::windowEvent, R"({"change":"focus"})") + SwayIpc::encode(SwayIpc::runCommand, {});
    for (int cut = 1; cut <= 7; ++cut) {
        SwayIpc::Decoder decoder;
        QList<SwayIpc::Message> messages;
        for (qsizetype at = 0; at < stream.size(); at += cut) {
            decoder.append(stream.mid(at, cut));
            while (auto message = decoder.next())
                messages.append(*message);
        }
        ASSERT_EQ(messages.size(), 3) << "pieces of " << cut;
        EXPECT_EQ(messages[0].type, quint32(SwayIpc::getTree));
        EXPECT_EQ(messages[0].payload, R"({"id":1})");
        EXPECT_EQ(messages[1].type, quint32(SwayIpc::windowEvent));
        EXPECT_EQ(messages[2].payload, QByteArray());
        EXPECT_FALSE(decoder.failed());
    }
}

TEST(SwayIpc, AStreamThatIsNotSwaysStopsDecoding)
{
    SwayIpc::Decoder wrongMagic;
    wrongMagic.append("HTTP/1.1 200 OK\r\n\r\n");
    EXPECT_FALSE(wrongMagic.next());
    EXPECT_TRUE(wrongMagic.failed());
    wrongMagic.append(SwayIpc::encode(SwayIpc::getTree, "{}"));
    EXPECT_FALSE(wrongMagic.next()); // nothing after the garbage is trusted

    // A length beyond any real tree is refused before anything is buffered for it.
    SwayIpc::Decoder huge;
    QByteArray header("i3-ipc");
    const quint32 length = SwayIpc::kMaxPayload + 1, type = SwayIpc::getTree;
    header.append(reinterpret_cast<const char*>(&length), 4).append(reinterpret_cast<const char*>(&type), 4);
    huge.append(header);
    EXPECT_FALSE(huge.next());
    EXPECT_TRUE(huge.failed());
}

// Shaped like `swaymsg -t get_tree` in a session with a tiled GTK window, a
// floating dialog and an X11 window, the dialog focused.
constexpr const char* kTree = R"({
  "id": 1, "type": "root", "name": "root", "focused": false, "rect": {"x":0,"y":0,"width":1280,"height":1024},
  "nodes": [{
    "id": 3, "type": "output", "name": "HEADLESS-1", "nodes": [{
      "id": 4, "type": "workspace", "name": "1", "focused": false,
      "nodes": [
        {"id": 5, "type": "con", "name": "Untitled 1 - Mousepad", "app_id": "mousepad", "pid": 4242, "focused": false,
         "rect": {"x":0,"y":0,"width":640,"height":1024}, "nodes": []},
        {"id": 8, "type": "con", "name": "xterm", "app_id": null, "pid": 4300, "focused": false,
         "window_properties": {"class": "XTerm", "instance": "xterm"},
         "rect": {"x":640,"y":0,"width":640,"height":1024}, "nodes": []},
        {"id": 9, "type": "con", "name": null, "layout": "splitv", "focused": false, "nodes": []}
      ],
      "floating_nodes": [
        {"id": 7, "type": "floating_con", "name": "Save As", "app_id": "mousepad", "pid": 4242, "focused": true,
         "rect": {"x":340,"y":312,"width":600,"height":400}, "nodes": []}
      ]
    }]
  }]
})";

TEST(SwayTree, WindowsAndTheFocusedOneFromTheTree)
{
    const SwayTree tree = SwayTree::parse(kTree);
    ASSERT_EQ(tree.windows.size(), 3); // the split container is no window
    EXPECT_EQ(tree.focused, 7u);
    const DesktopWindow dialog = tree.windows.value(7);
    EXPECT_EQ(dialog.pid, 4242);
    EXPECT_EQ(dialog.applicationId, "mousepad");
    EXPECT_EQ(dialog.title, "Save As");
    EXPECT_EQ(dialog.frame, QRect(340, 312, 600, 400));
    const DesktopWindow xterm = tree.windows.value(8);
    EXPECT_EQ(xterm.applicationId, QString());
    EXPECT_EQ(xterm.windowClass, "XTerm");
}

TEST(SwayTree, WhatIsNotATreeReadsAsNoWindows)
{
    const QList<QByteArray> hostile{
        "",
        "not json",
        "[1, 2, 3]",
        R"({"type":"con","id":5,"pid":"4242"})",                         // pid as text
        R"({"type":"con","id":5,"pid":-1})",                             // no such process
        R"({"type":"con","id":-5,"pid":10})",                            // no such container
        R"({"type":"con","id":5,"pid":1e300})",                          // beyond any pid
        R"({"type":"workspace","id":4,"pid":10,"focused":true})",        // not a window
        R"({"type":"root","nodes":"everything"})",                       // children of the wrong type
    };
    for (const QByteArray& json : hostile) {
        const SwayTree tree = SwayTree::parse(json);
        EXPECT_TRUE(tree.windows.isEmpty()) << json.constData();
        EXPECT_FALSE(tree.focused) << json.constData();
    }

    // Nesting far beyond any layout stops being read rather than recursing on.
    QByteArray deep = R"({"type":"con","id":1,"pid":10,"nodes":[)";
    QByteArray close = "]}";
    for (int i = 0; i < 500; ++i) {
        deep += R"({"type":"con","nodes":[)";
        close += "]}";
    }
    EXPECT_EQ(SwayTree::parse(deep + close).windows.size(), 1);
}

} // namespace
