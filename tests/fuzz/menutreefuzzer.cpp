// What a hostile or broken application can send as its bulk cache
// (Cache.GetItems), in either of the two layouts toolkits use: objects drawn
// from a small pool, so that they share children, link in cycles and name
// themselves as their own parents, with any roles, states and names. Taking
// the reply, finding the menu bar and making the element tree must stay
// finite and small. (The wire format itself is Qt's to read, against the
// exact signature the reader checks first.)
#include "platform/linux/atspi/atspimenubuilder.h"
#include "tests/fuzz/menutreesize.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr uint kRoles[] = {AtspiRole::menuBar, AtspiRole::menu, AtspiRole::menuItem, AtspiRole::checkMenuItem,
                           AtspiRole::radioMenuItem, AtspiRole::popupMenu, AtspiRole::separator, AtspiRole::frame,
                           AtspiRole::filler, AtspiRole::panel, AtspiRole::tearoffMenuItem, 0, 999};

AtspiRef ref(FuzzedDataProvider& in)
{
    const int id = in.ConsumeIntegralInRange(0, 40);
    if (id == 40)
        return {QString(), QStringLiteral("/org/a11y/atspi/null")};
    return {QStringLiteral(":1.%1").arg(id % 3), QStringLiteral("/o/%1").arg(id)};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    const bool withChildren = in.ConsumeBool();
    QList<AtspiCacheItem> items;
    for (int i = in.ConsumeIntegralInRange(0, 300); i > 0 && in.remaining_bytes() > 0; --i) {
        AtspiCacheItem item;
        item.ref = ref(in);
        item.parent = ref(in);
        if (withChildren) {
            QList<AtspiRef> children;
            for (int c = in.ConsumeIntegralInRange(0, 40); c > 0; --c)
                children.append(ref(in));
            item.children = children;
        } else {
            item.childCount = in.ConsumeIntegral<int>();
        }
        item.name = QString::fromUtf8(QByteArray::fromStdString(in.ConsumeRandomLengthString(24)));
        item.role = in.ConsumeBool() ? kRoles[in.ConsumeIntegralInRange<size_t>(0, std::size(kRoles) - 1)]
                                     : in.ConsumeIntegral<uint>();
        for (int s = in.ConsumeIntegralInRange(0, 3); s > 0; --s)
            item.states.append(in.ConsumeIntegral<uint>());
        items.append(item);
    }

    AtspiMenuBuilder reader;
    reader.takeCacheItems(items);
    if (reader.nodes().size() > items.size())
        std::abort();

    QList<AtspiRef> windows;
    for (int i = in.ConsumeIntegralInRange(0, 4); i > 0; --i)
        windows.append(ref(in));
    const AtspiRef bar = reader.findMenuBarInCache(windows).value_or(ref(in));
    const MenuTree tree = reader.makeMenuBar(bar);
    int deepest = 0;
    const int nodes = countNodes(tree.menus, 0, deepest);
    // Each object once at most, and no deeper than the reader goes.
    if (nodes > reader.nodes().size() || deepest > 2 * 18 + 2)
        std::abort();
    return 0;
}
