// Journal: looks, key lists, formats and the persisted properties.
#include "kxjournal/Journal.h"

#include "control/JournalFrame.h"
#include "data/BookState.h"
#include "kxjournal/GridView.h"

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

QColor Journal::BorderColor() const { return m_frame->borderColor(); }
void Journal::setBorderColor(const QColor &value) { m_frame->setBorderColor(value); announce(QStringLiteral("BorderColor")); }
QColor Journal::BackColor() const { return m_view->backColor(); }
void Journal::setBackColor(const QColor &value) { m_view->setBackColor(value); announce(QStringLiteral("BackColor")); }
QColor Journal::BackColorFixed() const { return m_view->backColorFixed(); }
void Journal::setBackColorFixed(const QColor &value) { m_view->setBackColorFixed(value); announce(QStringLiteral("BackColorFixed")); }
QColor Journal::BackColorBkg() const { return m_view->backColorBkg(); }
void Journal::setBackColorBkg(const QColor &value) { m_view->setBackColorBkg(value); announce(QStringLiteral("BackColorBkg")); }
QColor Journal::GridColor() const { return m_view->gridColor(); }
void Journal::setGridColor(const QColor &value) { m_view->setGridColor(value); announce(QStringLiteral("GridColor")); }
QColor Journal::GridColorFixed() const { return m_view->gridColorFixed(); }
void Journal::setGridColorFixed(const QColor &value) { m_view->setGridColorFixed(value); announce(QStringLiteral("GridColorFixed")); }
QColor Journal::HotBackColor() const { return m_book->hotBackColor; }
void Journal::setHotBackColor(const QColor &value) { m_book->hotBackColor = value; announce(QStringLiteral("HotBackColor")); }
QColor Journal::WarnBackColor() const { return m_book->warnBackColor; }
void Journal::setWarnBackColor(const QColor &value) { m_book->warnBackColor = value; announce(QStringLiteral("WarnBackColor")); }
QColor Journal::LockedForeColor() const { return m_book->lockedForeColor; }
void Journal::setLockedForeColor(const QColor &value) { m_book->lockedForeColor = value; announce(QStringLiteral("LockedForeColor")); }
QColor Journal::ModifiedForeColor() const { return m_book->modifiedForeColor; }
void Journal::setModifiedForeColor(const QColor &value) { m_book->modifiedForeColor = value; announce(QStringLiteral("ModifiedForeColor")); }
int Journal::RowHeightMax() const { return m_grid->rowHeightMax(); }
void Journal::setRowHeightMax(int value) { m_grid->setRowHeightMax(value); announce(QStringLiteral("RowHeightMax")); }
int Journal::RowHeightMin() const { return m_grid->rowHeightMin(); }
void Journal::setRowHeightMin(int value) { m_grid->setRowHeightMin(value); announce(QStringLiteral("RowHeightMin")); }

QFont Journal::Font() const
{
    return m_grid->font();
}

void Journal::setFont(const QFont &value)
{
    m_grid->setRedraw(false);
    m_grid->setFont(value);
    m_view->setFont(value);
    m_grid->setCellFontName(0, 0, m_grid->rows() - 1, m_grid->cols() - 1, value.family());
    m_grid->setRedraw(true);
}

QString Journal::ColsFilter() const { return m_book->colsFilter; }
void Journal::setColsFilter(const QString &value) { m_book->colsFilter = value; }
QString Journal::OutlineKey() const { return m_book->outlineKey; }
void Journal::setOutlineKey(const QString &value) { m_book->outlineKey = value; }
QString Journal::ListFields() const { return m_book->listFields; }
void Journal::setListFields(const QString &value) { m_book->listFields = value; }
QString Journal::NumericFields() const { return m_book->numericFields; }
void Journal::setNumericFields(const QString &value) { m_book->numericFields = value; }
QString Journal::EditFields() const { return m_book->editFields; }
void Journal::setEditFields(const QString &value) { m_book->editFields = value; }
QString Journal::DateFields() const { return m_book->dateFields; }
void Journal::setDateFields(const QString &value) { m_book->dateFields = value; }

QString Journal::PriceFormat() const { return m_book->priceFormat; }
void Journal::setPriceFormat(const QString &value) { m_book->priceFormat = value; announce(QStringLiteral("PriceFormat")); }
QString Journal::RateFormat() const { return m_book->rateFormat; }
void Journal::setRateFormat(const QString &value) { m_book->rateFormat = value; announce(QStringLiteral("RateFormat")); }
QString Journal::QuantityFormat() const { return m_book->quantityFormat; }
void Journal::setQuantityFormat(const QString &value) { m_book->quantityFormat = value; announce(QStringLiteral("QuantityFormat")); }
QString Journal::AccountFormat() const { return m_book->accountFormat; }
void Journal::setAccountFormat(const QString &value) { m_book->accountFormat = value; announce(QStringLiteral("AccountFormat")); }
QString Journal::DateFormat() const { return m_book->dateFormat; }
void Journal::setDateFormat(const QString &value) { m_book->dateFormat = value; announce(QStringLiteral("DateFormat")); }

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
    m_frame->setBorderColor(color("BorderColor", BorderColor()));
    m_grid->setRowHeightMax(number("RowHeightMax", RowHeightMax()));
    m_grid->setRowHeightMin(number("RowHeightMin", RowHeightMin()));
    m_view->setBackColor(color("BackColor", BackColor()));
    m_view->setBackColorFixed(color("BackColorFixed", BackColorFixed()));
    m_book->hotBackColor = color("HotBackColor", HotBackColor());
    m_book->warnBackColor = color("WarnBackColor", WarnBackColor());
    m_view->setBackColorBkg(color("BackColorBkg", BackColorBkg()));
    m_view->setGridColor(color("GridColor", GridColor()));
    m_view->setGridColorFixed(color("GridColorFixed", GridColorFixed()));
    m_book->lockedForeColor = color("LockedForeColor", LockedForeColor());
}

} // namespace kx
