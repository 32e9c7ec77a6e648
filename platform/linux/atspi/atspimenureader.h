#pragma once

#include "platform/clock.h"
#include "platform/linux/atspi/atspimenubuilder.h"
#include "platform/linux/atspi/atspiobjects.h"
#include "platform/menutree.h"

// Reads an application's menu bar in a few rounds of questions asked all at
// once (plus the toolkit's bulk cache where it has one) and returns it as a
// menu tree whose items carry their objects, to be pressed later. The asking
// is here; what the answers make is AtspiMenuBuilder's.
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

private:
    using Node = AtspiMenuBuilder::Node;

    bool fetchFromCache(const AtspiRef& application);
    std::optional<AtspiRef> findMenuBar(const AtspiRef& application);
    bool prefetchFromCache(const AtspiRef& menuBar);
    // Of the toggle buttons the walk met, the one with the most command
    // buttons below it, once their subtrees are fetched.
    std::optional<AtspiRef> pickMenuButton();
    bool fetchSubtree(const AtspiRef& top);
    // One round of questions, all asked at once, for what is not yet known of
    // `refs`; false when the application stopped answering or the budget ran out.
    bool fetch(const QList<AtspiRef>& refs, int want);
    void take(Node& node, AtspiObjects::Question question, const AtspiObjects::Value& value);

    // Fetches the bar's menus and their items, then lets the builder decide
    // whether their visible marks tell anything.
    void settleVisibility(const AtspiRef& menuBar);

    AtspiObjects& objects_;
    const Clock& clock_;
    AtspiMenuBuilder builder_;
    QList<AtspiRef> toggleButtons_; // met while looking for a menu bar, in window order
    QList<AtspiRef> popovers_;      // panels among a window's own children, in window order
    bool complete_ = true;
    bool stopped_ = false; // the application stopped answering, or the budget ran out
    bool foundMenuBar_ = false;
    int asked_ = 0;
    double startedAt_ = 0;
};
