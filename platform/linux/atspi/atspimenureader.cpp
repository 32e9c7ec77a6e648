#include "platform/linux/atspi/atspimenureader.h"

#include "platform/clock.h"
#include "platform/linux/keybinding/keybinding.h"

#include <algorithm>

namespace {

// Bounds that keep a misbehaving application from making the reading endless.
constexpr int kMaxContainerDepth = 8;
// Toggle buttons looked into for a popover of commands.
constexpr int kMaxMenuButtons = 8;
// A window's own panels looked into as popovers.
constexpr int kMaxPopovers = 16;
// Windows of one application searched for a menu bar.
constexpr int kMaxWindows = 64;
constexpr int kMaxNodes = AtspiMenuBuilder::kMaxNodes;
constexpr int kMaxDepth = AtspiMenuBuilder::kMaxDepth;

enum Want { wantChildren = 1, wantInfo = 2, wantKeyBinding = 4, wantParent = 8 };

// Windows hold the menu bar inside layout containers; nothing else is searched.
bool isContainerRole(uint role)
{
    switch (role) {
    case AtspiRole::frame:
    case AtspiRole::window:
    case AtspiRole::dialog:
    case AtspiRole::filler:
    case AtspiRole::panel:
    case AtspiRole::scrollPane:
    case AtspiRole::viewport:
    case AtspiRole::rootPane:
    case AtspiRole::layeredPane:
    case AtspiRole::glassPane:
    case AtspiRole::splitPane:
    case AtspiRole::internalFrame:
    case AtspiRole::optionPane:
        return true;
    default:
        return false;
    }
}

} // namespace

AtspiMenuReader::AtspiMenuReader(AtspiObjects& objects, const Clock& clock) : objects_(objects), clock_(clock) {}

std::optional<MenuTree> AtspiMenuReader::readMenuBar(const AtspiRef& application, const QString& toolkit,
                                                     const QString& windowTitle)
{
    builder_.clear();
    toggleButtons_.clear();
    popovers_.clear();
    foundMenuBar_ = false;
    complete_ = true;
    stopped_ = false;
    asked_ = 0;
    startedAt_ = clock_.seconds();
    builder_.setWindowTitle(windowTitle);
    if (application.isNull())
        return std::nullopt;

    // Qt marks every item of a closed menu invisible, so visibility means nothing there.
    builder_.setHonourVisible(!toolkit.startsWith(QLatin1String("Qt")));

    // An application that does not answer its first call is not asked again.
    if (!fetchFromCache(application) && !complete_)
        return std::nullopt;
    const std::optional<AtspiRef> menuBar = findMenuBar(application);
    if (!menuBar) {
        // A closed popover's buttons are not on screen, yet they are its commands.
        builder_.setHonourVisible(false);
        auto button = builder_.findMenuButtonInCache(builder_.nodes().value(application).children);
        if (!button)
            button = pickMenuButton();
        if (!button)
            return std::nullopt;
        for (const AtspiRef& holder : builder_.commandHolders(*button)) {
            if (!prefetchFromCache(holder) || !fetchSubtree(holder))
                complete_ = false;
        }
        builder_.stamp(complete_, clock_.seconds());
        return builder_.makeButtonMenu(*button);
    }
    foundMenuBar_ = true;
    // LibreOffice asked by any client while it starts never marks its menu
    // items visible afterwards; hiding them all would leave nothing to list.
    settleVisibility(*menuBar);
    if (!prefetchFromCache(*menuBar) || !fetchSubtree(*menuBar))
        complete_ = false;
    builder_.stamp(complete_, clock_.seconds());
    return builder_.makeMenuBar(*menuBar);
}

bool AtspiMenuReader::fetchFromCache(const AtspiRef& application)
{
    bool timedOut = false;
    ++asked_;
    const std::optional<QList<AtspiCacheItem>> items = objects_.cache(application, timedOut);
    if (timedOut) {
        complete_ = false;
        stopped_ = true;
    }
    if (!items)
        return false;
    builder_.takeCacheItems(*items);
    return true;
}

bool AtspiMenuReader::fetch(const QList<AtspiRef>& refs, int want)
{
    if (stopped_)
        return false;
    using Question = AtspiObjects::Question;
    QList<AtspiObjects::Ask> questions;
    for (const AtspiRef& ref : refs) {
        if (builder_.nodes().size() >= kMaxNodes && !builder_.nodes().contains(ref))
            break;
        Node& node = builder_.nodes()[ref];
        node.ref = ref;
        if ((want & wantChildren) && !node.childrenRead)
            questions.append({ref, Question::children});
        if ((want & wantInfo) && !node.role) {
            questions.append({ref, Question::role});
            questions.append({ref, Question::state});
            questions.append({ref, Question::name});
        }
        if ((want & wantParent) && node.parent.isNull())
            questions.append({ref, Question::parent});
        if ((want & wantKeyBinding) && !node.keyBindingRead && (!node.role || AtspiMenuBuilder::isItemRole(*node.role)))
            questions.append({ref, Question::keyBinding});
    }
    if (questions.isEmpty())
        return true;
    // Past its budget the reading keeps what it has and says it is incomplete.
    const int room = clock_.seconds() - startedAt_ > kMaxSeconds ? 0 : kMaxQuestions - asked_;
    if (questions.size() > room) {
        questions.resize(std::max(room, 0));
        stopped_ = true;
        complete_ = false;
    }
    asked_ += int(questions.size());
    const QList<AtspiObjects::Answer> answers = objects_.ask(questions);
    for (qsizetype i = 0; i < questions.size() && i < answers.size(); ++i) {
        if (answers[i].timedOut) {
            stopped_ = true;
            complete_ = false;
        }
        take(builder_.nodes()[questions[i].ref], questions[i].question, answers[i].value);
    }
    return !stopped_;
}

void AtspiMenuReader::take(Node& node, AtspiObjects::Question question, const AtspiObjects::Value& value)
{
    using Question = AtspiObjects::Question;
    switch (question) {
    case Question::children:
        if (const auto* children = std::get_if<QList<AtspiRef>>(&value))
            node.children = children->mid(0, AtspiObjects::kMaxChildren);
        node.childrenRead = true;
        break;
    case Question::role:
        if (const auto* role = std::get_if<uint>(&value))
            node.role = *role;
        break;
    case Question::state:
        if (const auto* states = std::get_if<quint64>(&value))
            node.states = *states;
        break;
    case Question::name:
        if (const auto* name = std::get_if<QString>(&value))
            node.name = *name;
        break;
    case Question::keyBinding:
        if (const auto* binding = std::get_if<QString>(&value))
            node.keyBinding = *binding;
        node.keyBindingRead = true;
        break;
    case Question::parent:
        if (const auto* parent = std::get_if<AtspiRef>(&value))
            node.parent = *parent;
        break;
    }
}

std::optional<AtspiRef> AtspiMenuReader::findMenuBar(const AtspiRef& application)
{
    if (!fetch({application}, wantChildren))
        return std::nullopt;
    const QList<AtspiRef> windows = builder_.nodes().value(application).children.mid(0, kMaxWindows);
    if (!fetch(windows, wantInfo))
        return std::nullopt;

    if (auto cached = builder_.findMenuBarInCache(windows))
        return cached;

    for (const AtspiRef& window : builder_.windowsInOrder(windows)) {
        // Breadth first through layout containers, remembering each object's
        // position so that the first menu bar in the window's own order wins
        // (LibreOffice keeps a copy with wrong shortcuts further down). An
        // object met again (linked from two places, or from below) is not
        // looked into twice.
        QList<std::pair<AtspiRef, QList<int>>> level{{window, {}}};
        QSet<AtspiRef> seen{window};
        std::optional<std::pair<QList<int>, AtspiRef>> best;
        for (int depth = 0; depth < kMaxContainerDepth && !level.isEmpty(); ++depth) {
            QList<AtspiRef> containers;
            for (const auto& entry : level)
                containers.append(entry.first);
            if (!fetch(containers, wantChildren))
                return std::nullopt;
            QList<std::pair<AtspiRef, QList<int>>> next;
            QList<AtspiRef> kids;
            for (const auto& [ref, position] : level) {
                const QList<AtspiRef> children = builder_.nodes().value(ref).children;
                for (int i = 0; i < children.size() && seen.size() < kMaxNodes; ++i) {
                    if (seen.contains(children[i]))
                        continue;
                    seen.insert(children[i]);
                    next.append({children[i], position + QList<int>{i}});
                    kids.append(children[i]);
                }
            }
            if (!fetch(kids, wantInfo))
                return std::nullopt;
            level.clear();
            for (const auto& [ref, position] : next) {
                const uint role = builder_.nodes().value(ref).role.value_or(0);
                if (role == AtspiRole::menuBar) {
                    if (!best || position < best->first)
                        best = std::pair{position, ref};
                } else if (role == AtspiRole::toggleButton) {
                    if (toggleButtons_.size() < kMaxMenuButtons)
                        toggleButtons_.append(ref);
                } else if (isContainerRole(role)) {
                    // GTK lists a window's popovers among its own children.
                    if (depth == 0 && role == AtspiRole::panel && popovers_.size() < kMaxPopovers)
                        popovers_.append(ref);
                    level.append({ref, position});
                }
            }
        }
        if (best)
            return best->second;
    }
    return std::nullopt;
}

std::optional<AtspiRef> AtspiMenuReader::pickMenuButton()
{
    // A popover the walk met among a window's children belongs to the
    // button it names as its parent.
    QList<AtspiRef> buttons = toggleButtons_;
    if (!popovers_.isEmpty()) {
        if (!fetch(popovers_, wantParent)) {
            complete_ = false;
            return std::nullopt;
        }
        QList<AtspiRef> parents;
        for (const AtspiRef& popover : std::as_const(popovers_)) {
            const AtspiRef parent = builder_.nodes().value(popover).parent;
            if (!parent.isNull() && !parents.contains(parent))
                parents.append(parent);
        }
        if (!fetch(parents, wantInfo)) {
            complete_ = false;
            return std::nullopt;
        }
        for (const AtspiRef& parent : std::as_const(parents)) {
            if (builder_.nodes().value(parent).role == AtspiRole::toggleButton && !buttons.contains(parent))
                buttons.append(parent);
        }
    }
    std::optional<AtspiRef> best;
    int most = 0;
    for (const AtspiRef& button : std::as_const(buttons)) {
        int commands = 0;
        for (const AtspiRef& holder : builder_.commandHolders(button)) {
            if (!fetchSubtree(holder)) {
                complete_ = false;
                return best;
            }
            commands += builder_.commandButtonsBelow(holder);
        }
        if (commands > most) {
            most = commands;
            best = button;
        }
    }
    return best;
}

bool AtspiMenuReader::prefetchFromCache(const AtspiRef& menuBar)
{
    // Everything below the menu bar that the cache knows, in one round: the
    // order of each menu's children and every item's key binding.
    QList<AtspiRef> below;
    for (auto it = builder_.nodes().cbegin(); it != builder_.nodes().cend(); ++it) {
        if (!it->parent.isNull() && builder_.descendsFrom(it.key(), menuBar) && !builder_.hidden(*it))
            below.append(it.key());
    }
    return below.isEmpty() || fetch(below, wantChildren | wantKeyBinding);
}

bool AtspiMenuReader::fetchSubtree(const AtspiRef& top)
{
    QSet<AtspiRef> seen{top};
    QList<AtspiRef> level{top};
    for (int depth = 0; depth < kMaxDepth && !level.isEmpty(); ++depth) {
        if (!fetch(level, wantChildren | wantInfo | wantKeyBinding))
            return false;
        QList<AtspiRef> next;
        for (const AtspiRef& child : builder_.unseenChildren(level, seen)) {
            const auto known = builder_.nodes().constFind(child);
            if (known != builder_.nodes().cend()) {
                // Separators and hidden items need no further calls.
                if (known->role && (*known->role == AtspiRole::separator || *known->role == AtspiRole::tearoffMenuItem))
                    continue;
                if (known->states && builder_.hidden(*known))
                    continue;
            }
            next.append(child);
        }
        level = next;
    }
    return true;
}

void AtspiMenuReader::settleVisibility(const AtspiRef& menuBar)
{
    if (!builder_.honoursVisible())
        return;
    // The bar's menus and the items of each: two rounds that the subtree
    // fetch would make anyway.
    if (!fetch({menuBar}, wantChildren | wantInfo))
        return;
    QSet<AtspiRef> seen{menuBar};
    const QList<AtspiRef> entries = builder_.unseenChildren({menuBar}, seen);
    if (!fetch(entries, wantChildren | wantInfo))
        return;
    if (!fetch(builder_.unseenChildren(entries, seen), wantInfo))
        return;
    builder_.settleVisibility(menuBar);
}
