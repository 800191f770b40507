#include "bank/ReconciliationReport.h"

#include "grid/Sheet.h"
#include "output/FileOutput.h"
#include "output/PageLayout.h"
#include "output/ReportPdf.h"
#include "output/SpreadsheetWriter.h"

#include <QFileInfo>
#include <QFontMetricsF>
#include <xlsxwriter.h>

#include <cmath>

namespace kx {

namespace {

const char *const Headers[] = {"项目", "日期", "单据号", "摘要", "金额"};
constexpr double Widths[] = {110, 62, 70, 0, 90};  // 0: what is left
constexpr double LineHeight = 18;
constexpr double HeaderHeight = 20;

QString figure(Currency amount)
{
    return amount.isValid() ? amount.format(QStringLiteral("#,##0.00")) : QString();
}

} // namespace

ReconciliationReport::ReconciliationReport(const Reconciliation &reconciliation, const QString &preparer)
    : m_r(reconciliation), m_preparer(preparer)
{
}

QString ReconciliationReport::subtitle() const
{
    QString line = QStringLiteral("账户：%1　截止日期：%2").arg(m_r.bookName, m_r.to.toString(Qt::ISODate));
    if (!m_preparer.isEmpty())
        line += QStringLiteral("　编制人：") + m_preparer;
    return line;
}

QList<ReconciliationReport::Line> ReconciliationReport::lines() const
{
    QList<Line> out;
    auto side = [&](const QString &balanceLabel, Currency balance, Reconciliation::Part plus,
                    Reconciliation::Part minus, Currency adjusted) {
        out << Line{Line::Total, balanceLabel, {}, {}, {}, balance};
        for (const auto &[part, sign] : {std::pair{plus, QStringLiteral("加：")}, std::pair{minus, QStringLiteral("减：")}}) {
            out << Line{Line::Heading, sign + Reconciliation::partName(part), {}, {}, {}, m_r.total(part)};
            for (const Reconciliation::Item &item : m_r.items[part])
                out << Line{Line::Item, QString(), item.date, item.reference, item.text, item.amount};
        }
        out << Line{Line::Total, QStringLiteral("调节后的存款余额"), {}, {}, {}, adjusted};
    };
    side(QStringLiteral("企业银行存款日记账余额"), m_r.bookBalance, Reconciliation::BankReceived,
         Reconciliation::BankPaid, m_r.adjustedBook());
    side(QStringLiteral("银行对账单余额"), m_r.bankBalance, Reconciliation::BookReceived, Reconciliation::BookPaid,
         m_r.adjustedBank());
    const Currency diff = m_r.difference();
    out << Line{Line::Difference, diff.isZero() ? QStringLiteral("两者相符，差额") : QStringLiteral("差额"), {}, {}, {},
                diff};
    return out;
}

void ReconciliationReport::layout(Sheet &grid, const QSizeF &area, const QFont &font) const
{
    const QList<Line> all = lines();
    grid.setCols(6);
    grid.setRows(1 + int(all.size()));
    double rest = area.width();
    for (double w : Widths)
        rest -= w;
    for (int c = 1; c < 6; ++c) {
        grid.setText(0, c, QString::fromUtf8(Headers[c - 1]));
        grid.setColWidth(c, int(Widths[c - 1] > 0 ? Widths[c - 1] : std::max(80.0, rest)));
    }
    grid.setColAlignment(5, Qt::AlignRight);
    grid.setRowHeight(0, int(HeaderHeight));
    const double room = area.height() - PageLayout::CaptionHeight - PageLayout::PeriodHeight - HeaderHeight -
                        PageLayout::FooterHeight;
    const QFontMetricsF metrics(font);
    int page = 1;
    double used = 0;
    for (int i = 0; i < int(all.size()); ++i) {
        const Line &l = all.at(i);
        const int r = i + 1;
        // A long text wraps inside its column; its line grows to hold it.
        double height = LineHeight;
        for (const auto &[col, text] : {std::pair{1, l.label}, std::pair{4, l.text}}) {
            const double w = grid.colWidth(col) - 2 * PageLayout::Padding;
            height = std::max(height, metrics.boundingRect(QRectF(0, 0, w, 1e6), Qt::TextWordWrap | Qt::TextWrapAnywhere, text)
                                              .height() + 4);
        }
        if (used + height > room && used > 0) {
            ++page;
            used = 0;
        }
        used += height;
        grid.setRowHeight(r, int(std::ceil(height)));
        grid.setText(r, 0, QString::number(page));
        grid.setText(r, 1, l.kind == Line::Item ? QString() : l.label);
        grid.setText(r, 2, l.date.isValid() ? l.date.toString(Qt::ISODate) : QString());
        grid.setText(r, 3, l.reference);
        grid.setText(r, 4, l.text);
        grid.setText(r, 5, figure(l.amount));
        grid.setSubtotal(r, l.kind != Line::Item);
        if (l.kind == Line::Difference && !l.amount.isZero())
            grid.setCellForeColor(r, 1, r, 5, Qt::red);
    }
}

Result<void> ReconciliationReport::write(const QString &path, const QStringList &keep) const
{
    if (path.endsWith(QLatin1String(".xlsx"), Qt::CaseInsensitive))
        return writeXlsx(path, keep);
    if (path.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive))
        return printToPdf(path, keep);
    return Error(QStringLiteral("余额调节表只能写成 .pdf 或 .xlsx 文件：%1").arg(path));
}

Result<void> ReconciliationReport::printToPdf(const QString &path, const QStringList &keep) const
{
    return ReportPdf::write(path, keep, caption(), subtitle(), QPageLayout::Portrait,
                            [this](Sheet &grid, const QSizeF &area, const QFont &font) { layout(grid, area, font); });
}

Result<void> ReconciliationReport::writeXlsx(const QString &path, const QStringList &keep) const
{
    return SpreadsheetWriter::writeReport(path, keep, caption(), [this](lxw_workbook *book, lxw_worksheet *ws) {
        lxw_format *title = SpreadsheetWriter::titleFormat(book);
        lxw_format *header = SpreadsheetWriter::headerFormat(book);
        lxw_format *amount = workbook_add_format(book);
        format_set_num_format(amount, "#,##0.00");
        lxw_format *boldAmount = workbook_add_format(book);
        format_set_num_format(boldAmount, "#,##0.00");
        format_set_bold(boldAmount);
        lxw_format *red = workbook_add_format(book);
        format_set_num_format(red, "#,##0.00");
        format_set_bold(red);
        format_set_font_color(red, LXW_COLOR_RED);
        lxw_format *bold = workbook_add_format(book);
        format_set_bold(bold);
        lxw_format *date = workbook_add_format(book);
        format_set_num_format(date, "yyyy-mm-dd");

        lxw_error err = worksheet_write_string(ws, 0, 0, caption().toUtf8().constData(), title);
        if (!err)
            err = worksheet_write_string(ws, 1, 0, subtitle().toUtf8().constData(), nullptr);
        for (int c = 0; c < 5 && !err; ++c) {
            err = worksheet_write_string(ws, 2, lxw_col_t(c), Headers[c], header);
            worksheet_set_column(ws, lxw_col_t(c), lxw_col_t(c), c == 3 ? 40 : c == 0 ? 24 : 16, nullptr);
        }
        lxw_row_t row = 3;
        for (const Line &l : lines()) {
            if (err)
                break;
            const bool strong = l.kind != Line::Item;
            if (!l.label.isEmpty())
                err = worksheet_write_string(ws, row, 0, l.label.toUtf8().constData(), strong ? bold : nullptr);
            if (!err && l.date.isValid()) {
                lxw_datetime when{l.date.year(), l.date.month(), l.date.day(), 0, 0, 0.0};
                err = worksheet_write_datetime(ws, row, 1, &when, date);
            }
            if (!err && !l.reference.isEmpty())
                err = worksheet_write_string(ws, row, 2, l.reference.toUtf8().constData(), nullptr);
            if (!err && !l.text.isEmpty())
                err = worksheet_write_string(ws, row, 3, l.text.toUtf8().constData(), nullptr);
            if (!err && l.amount.isValid()) {
                lxw_format *f = l.kind == Line::Difference && !l.amount.isZero() ? red : strong ? boldAmount : amount;
                // The figure as the spreadsheet sums it; four decimals at most, exact as a double.
                err = worksheet_write_number(ws, row, 4, l.amount.toDouble(), f);
            }
            ++row;
        }
        return int(err);
    });
}

} // namespace kx
