#pragma once

#include "search/searchviewmodel.h"

#include <QAbstractListModel>
#include <QHash>

// The ranked results as a list for the view. It resets only when the ranked
// list really changed, and keeps each row's texts so that painting a row
// builds no strings.
class ResultListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role { TitleRole = Qt::UserRole + 1, BreadcrumbRole, ShortcutRole, SelectedRole };

    explicit ResultListModel(QObject* parent = nullptr);

    void setResults(std::vector<RankedItem> results);
    void setSelectedRow(int row);
    // The items changed: texts kept for the old ones are no longer valid.
    void forgetItems();

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    const MenuItem* item(int row) const;

private:
    std::vector<RankedItem> results_;
    int selectedRow_ = 0;
    mutable QHash<const MenuItem*, QString> breadcrumbs_;
};
