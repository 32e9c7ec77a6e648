#pragma once

#include "platform/clock.h"
#include "platform/linux/atspi/atspiobjects.h"
#include "platform/linux/keybinding/keybinding.h"
#include "platform/menutree.h"

#include <QHash>
#include <QSet>

// Reads an application's menu bar in a few rounds of questions asked all at
// once (plus the toolkit's bulk cache where it has one) and returns it as a
// menu tree whose items carry their objects, to be pressed later.
//
// The application decides everything the reader learns, so every walk visits
// each object once, takes a bounded number of children from each, and the
// whole reading has a budget of questions and of time: an application whose
// objects hold themselves, or that answers slowly, gets a reading that is
// marked incomplete rather than one that never ends.
class AtspiMenuReader {
public:
    // Per reading: questions asked, and seconds from its start.
    static constexpr int kMaxQuestions = 25000;
    static constexpr double kMaxSeconds = 10.0;

    explicit AtspiMenuReader(AtspiObjects& objects, const Clock& clock = Clock::monotonic());

    // The menu bar of the application's frame titled `windowTitle` (else its
    // active frame, else its first frame with one), or nothing. Stops at the
    // first call the application leaves unanswered, or at the budget; the
    // menu bar says whether the reading is complete.
    std::optional<MenuTree> readMenuBar(const AtspiRef& application, const QString& toolkit,
                                        const QString& windowTitle = {});

    // Whether the last reading found a real menu bar, not a menu button standing in.
    bool foundMenuBar() const { return foundMenuBar_; }
    // Whether it got all it asked for, within its budget.
    bool complete() const { return complete_; }
    // Questions the last reading asked.
    int questionsAsked() const { return asked_; }

    // Raw facts about one object, as fetched.
    struct Node {
        AtspiRef ref;
        AtspiRef parent; // known from the bulk cache, else asked for where needed
        std::optional<uint> role;
        QString name;
        std::optional<quint64> states;
        QString keyBinding;
        QList<AtspiRef> children;
        bool childrenRead = false;
        bool keyBindingRead = false;
    };

    // The steps that work only on what was fetched, open to tests and fuzzing.
    void takeCacheItems(const QList<AtspiCacheItem>& items);
    // The window's menu bar as far as the bulk cache tells.
    std::optional<AtspiRef> findMenuBarInCache(const QList<AtspiRef>& windows) const;
    // Where a window has no menu bar: the menu button whose popover holds its
    // commands (GTK 3 header bars' "Menu"), as far as the bulk cache tells.
    std::optional<AtspiRef> findMenuButtonInCache(const QList<AtspiRef>& windows) const;
    // The tree for a menu button: one menu named after the button, holding
    // the buttons, check boxes and radio buttons of its popover.
    MenuTree makeButtonMenu(const AtspiRef& button) const;
    // The tree for the fetched menu bar. Every object appears in it at most
    // once, however the application links its objects.
    MenuTree makeMenuBar(const AtspiRef& menuBar) const;
    QHash<AtspiRef, Node>& nodes() { return nodes_; }
    // Stops leaving out invisible items when the bar's menus hold items and
    // not one of them is marked visible: then the mark tells nothing.
    void settleVisibility(const AtspiRef& menuBar);

private:
    bool fetchFromCache(const AtspiRef& application);
    std::optional<AtspiRef> findMenuBar(const AtspiRef& application);
    // The windows in the order they are searched: the one the user was in first.
    QList<AtspiRef> windowsInOrder(const QList<AtspiRef>& windows) const;
    bool prefetchFromCache(const AtspiRef& menuBar);
    bool descendsFrom(const AtspiRef& ref, const AtspiRef& ancestor) const;
    // The objects above `ref` (its parent first), each once.
    QList<AtspiRef> ancestorsOf(const AtspiRef& ref) const;
    // Of the toggle buttons the walk met, the one with the most command
    // buttons below it, once their subtrees are fetched.
    std::optional<AtspiRef> pickMenuButton();
    int commandButtonsBelow(const AtspiRef& ref) const;
    // Where a menu button's commands are: below it, and in the popovers linked to it.
    QList<AtspiRef> commandHolders(const AtspiRef& button) const;
    bool fetchSubtree(const AtspiRef& top);
    // The children of `refs` that `seen` does not hold yet, in order; adds them to it.
    QList<AtspiRef> unseenChildren(const QList<AtspiRef>& refs, QSet<AtspiRef>& seen) const;
    // One round of questions, all asked at once, for what is not yet known of
    // `refs`; false when the application stopped answering or the budget ran out.
    bool fetch(const QList<AtspiRef>& refs, int want);
    void take(Node& node, AtspiObjects::Question question, const AtspiObjects::Value& value);

    QList<MenuNode> makeMenuChildren(const QList<AtspiRef>& children, int depth) const;
    void collectButtons(const QList<AtspiRef>& children, int depth, QList<MenuNode>& out) const;
    // A command of the tree, pressed through `ref`.
    MenuNode itemNode(const AtspiRef& ref, const Node& node, const QString& title) const;
    // Claims an object for the tree being made; false when it is already in it.
    bool claim(const AtspiRef& ref) const;
    bool hidden(const Node& node) const;
    // A shortcut the item draws rather than reports in its key binding: in
    // its name after a tab (`named`, as split), else in a label among its children.
    std::optional<KeyChord> drawnShortcut(const Node& item, const NameAndShortcut& named) const;

    AtspiObjects& objects_;
    const Clock& clock_;
    QHash<AtspiRef, Node> nodes_;
    bool honourVisible_ = true;
    QString windowTitle_;
    QList<AtspiRef> toggleButtons_; // met while looking for a menu bar, in window order
    QList<AtspiRef> popovers_;      // panels among a window's own children, in window order
    bool complete_ = true;
    bool stopped_ = false; // the application stopped answering, or the budget ran out
    bool foundMenuBar_ = false;
    int asked_ = 0;
    double startedAt_ = 0;
    double readAt_ = 0;
    mutable QSet<AtspiRef> inTree_;
};
