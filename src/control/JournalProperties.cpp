// Journal: looks, key lists, formats and the persisted properties.
#include "kxjournal/Journal.h"

#include "control/JournalFrame.h"
#include "control/JournalPrivate.h"
#include "control/LayoutController.h"
#include "kxjournal/GridView.h"
#include "ledger/ColumnModel.h"
#include "menu/FieldChoice.h"
#include "voucher/VoucherPlan.h"

namespace kx {

namespace {

// Colours come back from a bag as a QColor, a colour name, or a 32-bit OLE
// colour (0x00BBGGRR) written by older hosts.
QColor toColor(const QVariant &v, const QColor &fallback)
{
    if (v.typeId() == QMetaType::QColor)
        return v.value<QColor>();
    bool isNumber = false;
    const uint ole = v.toUInt(&isNumber);
    if (isNumber && v.typeId() != QMetaType::QString)
        return QColor(int(ole & 0xff), int((ole >> 8) & 0xff), int((ole >> 16) & 0xff));
    const QColor named(v.toString());
    return named.isValid() ? named : fallback;
}

} // namespace

QColor Journal::BorderColor() const { return d->frame->borderColor(); }
void Journal::setBorderColor(const QColor &value) { d->frame->setBorderColor(value); announce(QStringLiteral("BorderColor")); }
QColor Journal::BackColor() const { return d->view->backColor(); }
void Journal::setBackColor(const QColor &value) { d->view->setBackColor(value); announce(QStringLiteral("BackColor")); }
QColor Journal::BackColorFixed() const { return d->view->backColorFixed(); }
void Journal::setBackColorFixed(const QColor &value) { d->view->setBackColorFixed(value); announce(QStringLiteral("BackColorFixed")); }
QColor Journal::BackColorBkg() const { return d->view->backColorBkg(); }
void Journal::setBackColorBkg(const QColor &value) { d->view->setBackColorBkg(value); announce(QStringLiteral("BackColorBkg")); }
QColor Journal::GridColor() const { return d->view->gridColor(); }
void Journal::setGridColor(const QColor &value) { d->view->setGridColor(value); announce(QStringLiteral("GridColor")); }
QColor Journal::GridColorFixed() const { return d->view->gridColorFixed(); }
void Journal::setGridColorFixed(const QColor &value) { d->view->setGridColorFixed(value); announce(QStringLiteral("GridColorFixed")); }
QColor Journal::HotBackColor() const { return d->state.looks.hotBackColor; }
void Journal::setHotBackColor(const QColor &value) { d->state.looks.hotBackColor = value; d->layout->applyLooks(); announce(QStringLiteral("HotBackColor")); }
QColor Journal::WarnBackColor() const { return d->state.looks.warnBackColor; }
void Journal::setWarnBackColor(const QColor &value) { d->state.looks.warnBackColor = value; d->layout->applyLooks(); announce(QStringLiteral("WarnBackColor")); }
QColor Journal::LockedForeColor() const { return d->state.looks.lockedForeColor; }
void Journal::setLockedForeColor(const QColor &value) { d->state.looks.lockedForeColor = value; announce(QStringLiteral("LockedForeColor")); }
QColor Journal::ModifiedForeColor() const { return d->state.looks.modifiedForeColor; }
void Journal::setModifiedForeColor(const QColor &value) { d->state.looks.modifiedForeColor = value; announce(QStringLiteral("ModifiedForeColor")); }
int Journal::RowHeightMax() const { return d->grid->rowHeightMax(); }
void Journal::setRowHeightMax(int value) { d->grid->setRowHeightMax(value); announce(QStringLiteral("RowHeightMax")); }
int Journal::RowHeightMin() const { return d->grid->rowHeightMin(); }
void Journal::setRowHeightMin(int value) { d->grid->setRowHeightMin(value); announce(QStringLiteral("RowHeightMin")); }

QFont Journal::Font() const
{
    return d->grid->font();
}

void Journal::setFont(const QFont &value)
{
    // Kept when a load lays the columns down again.
    d->state.chosen.font = value;
    d->grid->setRedraw(false);
    d->grid->setFont(value);
    d->view->setFont(value);
    d->grid->setCellFontName(0, 0, d->grid->rows() - 1, d->grid->cols() - 1, value.family());
    d->grid->setRedraw(true);
}

QString Journal::ColsFilter() const { return d->state.fields.colsFilter; }
void Journal::setColsFilter(const QString &value) { d->state.fields.colsFilter = value; d->state.chosen.colsFilter = value; }
QString Journal::OutlineKey() const { return d->state.fields.outlineKey; }
void Journal::setOutlineKey(const QString &value) { d->state.fields.outlineKey = value; }
QString Journal::ListFields() const { return d->state.fields.listFields; }
void Journal::setListFields(const QString &value) { d->state.fields.listFields = value; d->state.chosen.listFields = value; }
QString Journal::NumericFields() const { return d->state.fields.numericFields; }
void Journal::setNumericFields(const QString &value) { d->state.fields.numericFields = value; d->state.chosen.numericFields = value; }
QString Journal::EditFields() const { return d->state.fields.editFields; }
void Journal::setEditFields(const QString &value) { d->state.fields.editFields = value; d->state.chosen.editFields = value; }
QString Journal::DateFields() const { return d->state.fields.dateFields; }
void Journal::setDateFields(const QString &value) { d->state.fields.dateFields = value; d->state.chosen.dateFields = value; }

QString Journal::PriceFormat() const { return d->state.fields.priceFormat; }
void Journal::setPriceFormat(const QString &value) { d->state.fields.priceFormat = value; announce(QStringLiteral("PriceFormat")); }
QString Journal::RateFormat() const { return d->state.fields.rateFormat; }
void Journal::setRateFormat(const QString &value) { d->state.fields.rateFormat = value; announce(QStringLiteral("RateFormat")); }
QString Journal::QuantityFormat() const { return d->state.fields.quantityFormat; }
void Journal::setQuantityFormat(const QString &value) { d->state.fields.quantityFormat = value; announce(QStringLiteral("QuantityFormat")); }
QString Journal::AccountFormat() const { return d->state.fields.accountFormat; }
void Journal::setAccountFormat(const QString &value) { d->state.fields.accountFormat = value; announce(QStringLiteral("AccountFormat")); }
QString Journal::DateFormat() const { return d->state.fields.dateFormat; }
void Journal::setDateFormat(const QString &value) { d->state.fields.dateFormat = value; announce(QStringLiteral("DateFormat")); }

void Journal::WriteProperties(PropertyBag &bag) const
{
    bag.write(QStringLiteral("BorderColor"), BorderColor());
    bag.write(QStringLiteral("BackColor"), BackColor());
    bag.write(QStringLiteral("BackColorFixed"), BackColorFixed());
    bag.write(QStringLiteral("HotBackColor"), HotBackColor());
    bag.write(QStringLiteral("WarnBackColor"), WarnBackColor());
    bag.write(QStringLiteral("LockedForeColor"), LockedForeColor());
    bag.write(QStringLiteral("BackColorBkg"), BackColorBkg());
    bag.write(QStringLiteral("GridColor"), GridColor());
    bag.write(QStringLiteral("GridColorFixed"), GridColorFixed());
    bag.write(QStringLiteral("RowHeightMax"), RowHeightMax());
    bag.write(QStringLiteral("RowHeightMin"), RowHeightMin());
    // The user's arrangement: columns shown or hidden, widths, split panes.
    bag.write(QStringLiteral("QuickFill"), quickFill());
    bag.write(QStringLiteral("AutoNumber"), autoNumber());
    bag.write(QStringLiteral("VoucherGrouping"), voucherGrouping());
    bag.write(QStringLiteral("FieldShow"), FieldChoice::shownText(d->state.columns));
    bag.write(QStringLiteral("ColumnWidths"), FieldChoice::widthText(d->state.columns));
    bag.write(QStringLiteral("LayoutSizes"), d->frame->sizesText());
}

void Journal::ReadProperties(const PropertyBag &bag)
{
    // Each key defaults to the present value, so a missing key changes nothing.
    auto color = [&bag](const char *key, const QColor &now) {
        return toColor(bag.read(QLatin1String(key), now), now);
    };
    auto number = [&bag](const char *key, int now) {
        bool ok = false;
        const int v = bag.read(QLatin1String(key), now).toInt(&ok);
        return ok ? v : now;
    };
    d->frame->setBorderColor(color("BorderColor", BorderColor()));
    d->grid->setRowHeightMax(number("RowHeightMax", RowHeightMax()));
    d->grid->setRowHeightMin(number("RowHeightMin", RowHeightMin()));
    d->view->setBackColor(color("BackColor", BackColor()));
    d->view->setBackColorFixed(color("BackColorFixed", BackColorFixed()));
    d->state.looks.hotBackColor = color("HotBackColor", HotBackColor());
    d->state.looks.warnBackColor = color("WarnBackColor", WarnBackColor());
    d->view->setBackColorBkg(color("BackColorBkg", BackColorBkg()));
    d->view->setGridColor(color("GridColor", GridColor()));
    d->view->setGridColorFixed(color("GridColorFixed", GridColorFixed()));
    d->state.looks.lockedForeColor = color("LockedForeColor", LockedForeColor());
    if (bag.contains(QStringLiteral("QuickFill")))
        setQuickFill(bag.read(QStringLiteral("QuickFill"), quickFill()).toBool());
    if (bag.contains(QStringLiteral("AutoNumber")))
        setAutoNumber(bag.read(QStringLiteral("AutoNumber"), autoNumber()).toBool());
    // A grouping this version does not know keeps the present one, quietly.
    if (bag.contains(QStringLiteral("VoucherGrouping")))
        if (const auto g = VoucherPlan::grouping(bag.read(QStringLiteral("VoucherGrouping"), voucherGrouping()).toString()))
            setVoucherGrouping(VoucherPlan::nameOf(*g));
    d->layout->applyLooks();
    if (bag.contains(QStringLiteral("FieldShow")) || bag.contains(QStringLiteral("ColumnWidths"))) {
        const QString shown = bag.read(QStringLiteral("FieldShow"), QString()).toString();
        const QString widths = bag.read(QStringLiteral("ColumnWidths"), QString()).toString();
        FieldChoice::read(d->state.columns, shown, widths);
        ColumnModel::applyChoices(d->book);
        // A restored width narrower than today's figures still never cuts one.
        d->layout->fitColumns();
    }
    if (bag.contains(QStringLiteral("LayoutSizes")))
        d->frame->setSizesText(bag.read(QStringLiteral("LayoutSizes"), QString()).toString());
}

bool Journal::quickFill() const
{
    return d->state.quickFill;
}

void Journal::setQuickFill(bool on)
{
    d->state.quickFill = on;
}

bool Journal::autoNumber() const
{
    return d->state.autoNumber;
}

void Journal::setAutoNumber(bool on)
{
    d->state.autoNumber = on;
}

} // namespace kx
