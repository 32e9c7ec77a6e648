#include "search/resultlistmodel.h"

ResultListModel::ResultListModel(QObject* parent) : QAbstractListModel(parent) {}

void ResultListModel::setResults(std::vector<RankedItem> results)
{
    const bool same = results.size() == results_.size()
        && std::equal(results.begin(), results.end(), results_.begin(),
                      [](const RankedItem& a, const RankedItem& b) { return a.item == b.item; });
    if (same)
        return;
    beginResetModel();
    results_ = std::move(results);
    endResetModel();
}

void ResultListModel::forgetItems()
{
    beginResetModel();
    results_.clear();
    breadcrumbs_.clear();
    endResetModel();
}

void ResultListModel::setSelectedRow(int row)
{
    if (row == selectedRow_)
        return;
    const int old = selectedRow_;
    selectedRow_ = row;
    for (int r : {old, row}) {
        if (r >= 0 && r < rowCount())
            emit dataChanged(index(r), index(r), {SelectedRole});
    }
}

int ResultListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(results_.size());
}

const MenuItem* ResultListModel::item(int row) const
{
    return row >= 0 && size_t(row) < results_.size() ? results_[size_t(row)].item : nullptr;
}

QVariant ResultListModel::data(const QModelIndex& index, int role) const
{
    const MenuItem* menuItem = item(index.row());
    if (!menuItem)
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case TitleRole:
        return menuItem->title;
    case BreadcrumbRole: {
        auto it = breadcrumbs_.constFind(menuItem);
        if (it == breadcrumbs_.constEnd())
            it = breadcrumbs_.insert(menuItem, menuItem->breadcrumb());
        return *it;
    }
    case ShortcutRole:
        return menuItem->shortcut.value_or(QString());
    case SelectedRole:
        return index.row() == selectedRow_;
    default:
        return {};
    }
}
