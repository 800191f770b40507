#pragma once

#include "kxjournal/kxjournal_export.h"

#include <QDate>
#include <QFrame>
#include <QList>
#include <memory>

namespace kx {

class AccContext;

/// The control's voucher picker: the vouchers of the current period,
/// newest first, with a search box above them. What is typed narrows the
/// list: each word must match the date (yyyy-MM-dd or MM-dd), the type, the
/// number's leading digits, or type and number together ("记12").
/// Works from the keyboard alone: type, ↑/↓, Enter picks, Esc closes. The
/// journal places it next to the voucher cell.
class KXJOURNAL_EXPORT VoucherPicker : public QFrame
{
    Q_OBJECT
public:
    /// One voucher of the list.
    struct Entry {
        int id = 0;       ///< DocID in the voucher directory
        QDate date;       ///< voucher date
        QString type;     ///< voucher type word
        int number = 0;   ///< voucher number
    };

    /// An empty picker.
    explicit VoucherPicker(QWidget *parent = nullptr);
    ~VoucherPicker() override;

    /// The context whose period and database the list comes from (not owned).
    AccContext *context() const;
    /// Sets the context the list is read from.
    void setContext(AccContext *acc);
    /// Reads the vouchers of the context's current period; false, with
    /// nothing changed, when there is no context or the read failed.
    bool load();
    /// Shows \a entries (in their order).
    void setEntries(const QList<Entry> &entries);
    /// How many vouchers the list holds (before any search).
    int count() const;
    /// The text in the search box.
    QString searchText() const;
    /// Puts \a text into the search box (and narrows the list).
    void setSearchText(const QString &text);
    /// The ids of the vouchers listed, in their order.
    QList<int> listedVouchers() const;
    /// The id of the voucher highlighted (0: none).
    int currentVoucher() const;
    /// Picks voucher \a id as the user's Enter would: closes and emits voucherChosen().
    void choose(int id);

Q_SIGNALS:
    /// The user picked voucher \a id.
    void voucherChosen(int id);
    /// The picker closed without a pick.
    void dismissed();

protected:
    /// Keys in the search line move through the list, pick (Enter) or close (Escape).
    bool eventFilter(QObject *watched, QEvent *event) override;
    /// Comes to the front with the search line focused and selected.
    void showEvent(QShowEvent *event) override;

private:
    class Private;
    std::unique_ptr<Private> const d;
};

} // namespace kx
