#pragma once

#include "editing/AccountChart.h"

#include <QLineEdit>
#include <QTreeWidget>

namespace kx {

class AccountPicker;

/// AccountPicker's state: the chart it lists and its two parts.
class AccountPickerPrivate
{
public:
    /// The state of \a picker.
    static AccountPickerPrivate &get(AccountPicker *picker);
    /// Lists \a accounts (the chart of the book's database) from now on.
    void setChart(const AccountChart &accounts);

    AccountChart chart;
    QLineEdit *search = nullptr;
    QTreeWidget *tree = nullptr;

    QTreeWidgetItem *makeItem(const AccountChart::Account &a) const
    {
        auto *item = new QTreeWidgetItem({a.code, a.name});
        item->setData(0, Qt::UserRole, a.id);
        return item;
    }
    void fill(const QString &text);
};

} // namespace kx
