// A whole menu reading of a hostile or broken application, asked object by
// object: objects drawn from a small pool, so that they hold themselves,
// share children, name any parent, and carry any roles, states, names and
// key bindings; sometimes with a bulk cache saying something else, sometimes
// falling silent half-way. Every walk of the reading (finding the menu bar,
// fetching below it, looking for a menu button and counting its commands,
// making the tree) must end within its budget of questions.
#include "platform/linux/atspi/atspimenureader.h"
#include "tests/fuzz/menutreesize.h"
#include "tests/support/atspiobjecttable.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int kPool = 48;
constexpr uint kRoles[] = {AtspiRole::application, AtspiRole::frame, AtspiRole::filler, AtspiRole::panel,
                           AtspiRole::menuBar, AtspiRole::menu, AtspiRole::menuItem, AtspiRole::checkMenuItem,
                           AtspiRole::popupMenu, AtspiRole::separator, AtspiRole::toggleButton,
                           AtspiRole::pushButton, AtspiRole::label, 0, 999};
const char* const kBindings[] = {"", "s;<Alt>f:s;<Primary>s", "Ctrl+N", "Alt+F", ";;", "x;y;z;w", "<Primary>"};

AtspiRef ref(int id)
{
    return {QStringLiteral(":1.9"), QStringLiteral("/o/%1").arg(id)};
}

AtspiRef anyRef(FuzzedDataProvider& in)
{
    return ref(in.ConsumeIntegralInRange(0, kPool - 1));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    AtspiObjectTable table;
    FakeClock clock;
    table.clock = &clock;
    table.secondsPerRound = in.ConsumeIntegralInRange(0, 4) * 0.5;
    table.silentFromRound = in.ConsumeIntegralInRange(-1, 12);
    for (int id = 0; id < kPool && in.remaining_bytes() > 0; ++id) {
        AtspiObjectTable::Object object;
        object.role = in.PickValueInArray(kRoles);
        object.name = QString::fromUtf8(QByteArray::fromStdString(in.ConsumeRandomLengthString(16)));
        object.states = in.ConsumeIntegral<quint64>();
        for (int c = in.ConsumeIntegralInRange(0, 24); c > 0; --c)
            object.children.append(anyRef(in));
        object.keyBinding = QString::fromLatin1(in.PickValueInArray(kBindings));
        object.parent = anyRef(in);
        table.objects.insert(ref(id), object);
    }
    if (in.ConsumeBool()) {
        // What the toolkit's bulk cache says of the same objects, which need not agree.
        QList<AtspiCacheItem> items;
        for (auto it = table.objects.cbegin(); it != table.objects.cend(); ++it) {
            AtspiCacheItem item;
            item.ref = it.key();
            item.parent = in.ConsumeBool() ? it->parent : anyRef(in);
            if (in.ConsumeBool())
                item.children = it->children;
            else
                item.childCount = in.ConsumeIntegralInRange(-1, 3);
            item.name = it->name;
            item.role = in.ConsumeBool() ? it->role : in.PickValueInArray(kRoles);
            item.states = {uint(it->states), uint(it->states >> 32)};
            items.append(item);
        }
        table.bulkCache = items;
    }

    AtspiMenuReader reader(table, clock);
    const QString title = QString::fromUtf8(QByteArray::fromStdString(in.ConsumeRandomLengthString(16)));
    const std::optional<MenuTree> tree = reader.readMenuBar(ref(0), QStringLiteral("GTK"), title);
    // The bulk cache is one question; the rest keep to the budget.
    if (table.questions > AtspiMenuReader::kMaxQuestions)
        std::abort();
    if (tree) {
        int deepest = 0;
        const int nodes = countNodes(tree->menus, 0, deepest);
        // Each object once at most, and no deeper than the reader goes.
        if (nodes > kPool + 1 || deepest > 2 * 18 + 2)
            std::abort();
    }
    return 0;
}
