// What a hostile or broken GTK application can export as its menu model:
// menus in any groups, sections and submenus linking anywhere (themselves,
// each other, nowhere), any labels, actions, accelerators and hidden-when
// values, and any set of described actions. Assembling the tree must stay
// finite and bounded.
#include "platform/linux/exported/gtkmenumodel.h"
#include "tests/support/exportedmenus.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>

namespace {

std::pair<uint, uint> target(FuzzedDataProvider& in)
{
    return {in.ConsumeIntegralInRange<uint>(0, 6), in.ConsumeIntegralInRange<uint>(0, 3)};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    const char* actions[] = {"app.quit", "win.save", "win.wrap", "doc.find", "nodot", ".x", "app.", ""};
    const char* hiddenWhen[] = {"", "action-missing", "action-disabled", "macos-menubar"};
    GtkMenuModel model;
    for (int m = in.ConsumeIntegralInRange(0, 40); m > 0 && in.remaining_bytes() > 0; --m) {
        const auto [group, menu] = target(in);
        QList<GtkMenuModel::Item> items;
        for (int i = in.ConsumeIntegralInRange(0, 30); i > 0 && in.remaining_bytes() > 0; --i) {
            GtkMenuModel::Item item;
            item.label = QString::fromStdString(in.ConsumeRandomLengthString(12));
            item.action = QString::fromLatin1(in.PickValueInArray(actions));
            item.accel = QString::fromStdString(in.ConsumeRandomLengthString(12));
            item.hiddenWhen = QString::fromLatin1(in.PickValueInArray(hiddenWhen));
            if (in.ConsumeBool())
                item.target = QVariant(QString::fromStdString(in.ConsumeRandomLengthString(4)));
            switch (in.ConsumeIntegralInRange(0, 2)) {
            case 1: item.section = target(in); break;
            case 2: item.submenu = target(in); break;
            default: break;
            }
            items.append(item);
        }
        model.take(group, menu, items);
    }
    QHash<QString, GtkMenuModel::ActionState> described;
    for (const char* action : actions) {
        if (in.ConsumeBool())
            described.insert(QString::fromLatin1(action), {in.ConsumeBool()});
    }
    const QHash<QString, std::pair<QString, QString>> addresses{{"app", {":1.1", "/a"}}, {"win", {":1.1", "/a/window/1"}}};
    model.missingGroups();
    int deepest = 0;
    if (countNodes(model.tree(described, addresses), 0, deepest) > 20001 || deepest > 18)
        std::abort();
    return 0;
}
