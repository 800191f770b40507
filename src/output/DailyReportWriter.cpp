#include "output/DailyReportWriter.h"

#include "grid/Sheet.h"
#include "output/BookSheet.h"
#include "output/FileOutput.h"
#include "output/PageLayout.h"
#include "output/ReportPdf.h"
#include "output/SpreadsheetWriter.h"

#include <QFontMetricsF>
#include <QSaveFile>
#include <QSet>
#include <xlsxwriter.h>

#include <cmath>
#include <functional>

namespace kx {

namespace {

constexpr int Columns = 8;
// Points per column on a landscape page; 0: what is left.
constexpr double Widths[Columns] = {72, 0, 96, 60, 96, 60, 96, 96};
constexpr double LineHeight = 18;
constexpr double HeaderHeight = 20;

QString figure(Currency amount)
{
    return amount.format(QStringLiteral("#,##0.00"));
}

QString indent(int depth)
{
    return QString(2 * depth, QChar(0x3000));
}

// One line of the report as it is written, top to bottom.
struct Printed {
    enum Kind { Book, EntryHead, Entry, Total };
    Kind kind = Book;
    DailyReport::Line line;
    DailyReport::Entry entry;
    int depth = 0;
};

} // namespace

DailyReportWriter::DailyReportWriter(const QList<DailyReport::Line> &lines, const QDate &from, const QDate &to,
                                     const QString &preparer)
    : m_lines(lines), m_from(from), m_to(to), m_madeOn(QDate::currentDate()), m_preparer(preparer)
{
}

QStringList DailyReportWriter::entryHeaders()
{
    return {QStringLiteral("日期"), QStringLiteral("摘要"), QStringLiteral("对方科目"), QStringLiteral("单据号"),
            QStringLiteral("借方"), QString(), QStringLiteral("贷方"), QString()};
}

QString DailyReportWriter::subtitle() const
{
    QString line = QStringLiteral("日期：") + DailyReport::span(m_from, m_to);
    if (!m_preparer.isEmpty())
        line += QStringLiteral("　编制人：") + m_preparer;
    if (m_madeOn.isValid())
        line += QStringLiteral("　编制日期：") + m_madeOn.toString(Qt::ISODate);
    return line;
}

int DailyReportWriter::depth(const BookDirectory::Book &book) const
{
    int top = book.level;
    for (const DailyReport::Line &l : m_lines)
        top = std::min(top, l.book.level);
    return std::max(0, book.level - top);
}

DailyReport::Line DailyReportWriter::total() const
{
    QSet<int> shown;
    for (const DailyReport::Line &l : m_lines)
        shown.insert(l.book.id);
    DailyReport::Line sum;
    for (const DailyReport::Line &l : m_lines) {
        // A book whose book above is in the report is already in that book's figures.
        if (l.book.parentId != 0 && shown.contains(l.book.parentId))
            continue;
        sum.opening = sum.opening + l.opening;
        sum.receipts = sum.receipts + l.receipts;
        sum.payments = sum.payments + l.payments;
        sum.receiptCount += l.receiptCount;
        sum.paymentCount += l.paymentCount;
    }
    return sum;
}

namespace {

QList<Printed> printedLines(const QList<DailyReport::Line> &lines, const QHash<int, QList<DailyReport::Entry>> &entries,
                            const std::function<int(const BookDirectory::Book &)> &depth, const DailyReport::Line &total)
{
    QList<Printed> out;
    for (const DailyReport::Line &l : lines) {
        Printed p;
        p.line = l;
        p.depth = depth(l.book);
        out << p;
        const auto listed = entries.constFind(l.book.id);
        if (l.book.hasChildren || listed == entries.cend() || listed->isEmpty())
            continue;
        Printed head;
        head.kind = Printed::EntryHead;
        head.depth = p.depth + 1;
        out << head;
        for (const DailyReport::Entry &e : *listed) {
            Printed row;
            row.kind = Printed::Entry;
            row.entry = e;
            row.depth = p.depth + 1;
            out << row;
        }
    }
    Printed sum;
    sum.kind = Printed::Total;
    sum.line = total;
    out << sum;
    return out;
}

// The cells of a line as text, in the report's columns; \a money writes a figure.
QStringList cellsOf(const Printed &p, const std::function<QString(Currency)> &money)
{
    switch (p.kind) {
    case Printed::Book:
    case Printed::Total: {
        const DailyReport::Line &l = p.line;
        return {l.book.code,
                p.kind == Printed::Total ? QStringLiteral("合计") : indent(p.depth) + l.book.name,
                money(l.opening),
                QString::number(l.receiptCount),
                money(l.receipts),
                QString::number(l.paymentCount),
                money(l.payments),
                money(l.closing())};
    }
    case Printed::EntryHead: {
        QStringList heads = DailyReportWriter::entryHeaders();
        heads[1] = indent(p.depth) + heads[1];
        return heads;
    }
    case Printed::Entry: {
        const DailyReport::Entry &e = p.entry;
        return {e.date.toString(Qt::ISODate),
                indent(p.depth) + e.explain,
                e.account,
                e.number,
                e.debit.isZero() ? QString() : money(e.debit),
                QString(),
                e.credit.isZero() ? QString() : money(e.credit),
                QString()};
    }
    }
    return {};
}

} // namespace

void DailyReportWriter::layout(Sheet &grid, const QSizeF &area, const QFont &font) const
{
    const QList<Printed> all =
        printedLines(m_lines, m_entries, [this](const BookDirectory::Book &b) { return depth(b); }, total());
    grid.setCols(Columns + 1);
    grid.setRows(1);
    double rest = area.width();
    for (double w : Widths)
        rest -= w;
    const QStringList headers = DailyReport::headers();
    for (int c = 1; c <= Columns; ++c) {
        grid.setText(0, c, headers.at(c - 1));
        grid.setColWidth(c, int(Widths[c - 1] > 0 ? Widths[c - 1] : std::max(100.0, rest)));
        grid.setColAlignment(c, c <= 2 ? Qt::AlignLeft : Qt::AlignRight);
    }
    grid.setRowHeight(0, int(HeaderHeight));
    const double room = area.height() - PageLayout::CaptionHeight - PageLayout::PeriodHeight - HeaderHeight -
                        PageLayout::FooterHeight;
    const QFontMetricsF metrics(font);
    QFont bold = font;
    bold.setBold(true);
    const QFontMetricsF boldMetrics(bold);
    struct Placed {
        int page;
        double height;
        QStringList cells;
        bool strong;
    };
    QList<Placed> placed;
    int page = 1;
    double used = 0;
    const auto place = [&](const Printed &p, bool opensPage) {
        const bool strong = p.kind == Printed::Total || p.kind == Printed::EntryHead || p.line.book.hasChildren;
        QStringList cells = cellsOf(p, figure);
        // Figures and short texts stay on one line, cut with "…" when too long;
        // a name or an explanation wraps and its line grows to hold it.
        const QFontMetricsF &m = strong ? boldMetrics : metrics;
        for (int c = 3; c <= Columns; ++c)
            cells[c - 1] = m.elidedText(cells.at(c - 1), Qt::ElideRight, grid.colWidth(c) - 2 * PageLayout::Padding);
        const double w = grid.colWidth(2) - 2 * PageLayout::Padding;
        const double height = std::max(
            LineHeight,
            m.boundingRect(QRectF(0, 0, w, 1e6), Qt::TextWordWrap | Qt::TextWrapAnywhere, cells.at(1)).height() + 4);
        // A list's heading stays on the page of its first record.
        const double need = p.kind == Printed::EntryHead ? height + LineHeight : height;
        const bool breaks = used + need > room && used > 0;
        if (breaks) {
            ++page;
            used = 0;
        }
        if (breaks && opensPage) {
            // A list going on over a page is headed again there.
            Printed head;
            head.kind = Printed::EntryHead;
            head.depth = p.depth;
            const QStringList heads = cellsOf(head, figure);
            placed << Placed{page, LineHeight, heads, true};
            used += LineHeight;
        }
        used += height;
        placed << Placed{page, height, cells, strong};
    };
    for (const Printed &p : all)
        place(p, p.kind == Printed::Entry);
    grid.setRows(1 + int(placed.size()));
    for (int i = 0; i < int(placed.size()); ++i) {
        const Placed &l = placed.at(i);
        const int r = i + 1;
        grid.setRowHeight(r, int(std::ceil(l.height)));
        grid.setText(r, 0, QString::number(l.page));
        for (int c = 1; c <= Columns; ++c)
            grid.setText(r, c, l.cells.at(c - 1));
        grid.setSubtotal(r, l.strong);
    }
}

Result<void> DailyReportWriter::printToPdf(const QString &path, const QStringList &keep) const
{
    return ReportPdf::write(path, keep, caption(), subtitle(), QPageLayout::Landscape,
                            [this](Sheet &grid, const QSizeF &area, const QFont &font) { layout(grid, area, font); });
}

Result<void> DailyReportWriter::writeXlsx(const QString &path, const QStringList &keep) const
{
    return SpreadsheetWriter::writeReport(path, keep, caption(), [this](lxw_workbook *book, lxw_worksheet *ws) {
        lxw_format *title = SpreadsheetWriter::titleFormat(book);
        lxw_format *header = SpreadsheetWriter::headerFormat(book);
        const auto made = [book](bool strong, const char *number, int indentBy, bool quiet = false) {
            lxw_format *f = workbook_add_format(book);
            if (strong)
                format_set_bold(f);
            if (number)
                format_set_num_format(f, number);
            if (indentBy > 0)
                format_set_indent(f, uint8_t(std::min(indentBy, 15)));
            if (quiet)
                format_set_font_color(f, LXW_COLOR_GRAY);
            return f;
        };
        lxw_format *amount[2] = {made(false, "#,##0.00", 0), made(true, "#,##0.00", 0)};
        lxw_format *count[2] = {made(false, "0", 0), made(true, "0", 0)};
        lxw_format *plain[2] = {nullptr, made(true, nullptr, 0)};
        lxw_format *date = made(false, "yyyy-mm-dd", 0);
        lxw_format *entryHead = made(false, nullptr, 0, true);
        // Indented names, made once per depth and weight.
        QHash<int, lxw_format *> names;
        const auto nameFormat = [&](int depth, bool strong, bool quiet = false) {
            const int key = depth * 4 + (strong ? 1 : 0) + (quiet ? 2 : 0);
            if (!names.contains(key))
                names.insert(key, made(strong, nullptr, 2 * depth, quiet));
            return names.value(key);
        };
        const auto text = [](const QString &t) { return t.left(SpreadsheetWriter::MaxCellText).toUtf8(); };

        lxw_error err = worksheet_write_string(ws, 0, 0, caption().toUtf8().constData(), title);
        if (!err)
            err = worksheet_write_string(ws, 1, 0, subtitle().toUtf8().constData(), nullptr);
        const QStringList headers = DailyReport::headers();
        for (int c = 0; c < Columns && !err; ++c) {
            err = worksheet_write_string(ws, 2, lxw_col_t(c), headers.at(c).toUtf8().constData(), header);
            worksheet_set_column(ws, lxw_col_t(c), lxw_col_t(c), c == 1 ? 32 : c == 3 || c == 5 ? 10 : 16, nullptr);
        }
        if (!err)
            worksheet_freeze_panes(ws, 3, 0);
        lxw_row_col_options listed{};
        listed.level = 1;
        lxw_row_t row = 3;
        const QList<Printed> all =
            printedLines(m_lines, m_entries, [this](const BookDirectory::Book &b) { return depth(b); }, total());
        for (const Printed &p : all) {
            if (err)
                break;
            if (p.kind == Printed::Book || p.kind == Printed::Total) {
                const DailyReport::Line &l = p.line;
                const bool strong = p.kind == Printed::Total || l.book.hasChildren;
                const QString name = p.kind == Printed::Total ? QStringLiteral("合计") : l.book.name;
                if (!l.book.code.isEmpty())
                    err = worksheet_write_string(ws, row, 0, text(l.book.code).constData(), plain[strong]);
                if (!err)
                    err = worksheet_write_string(ws, row, 1, text(name).constData(), nameFormat(p.depth, strong));
                // Figures as the spreadsheet sums them; four decimals at most, exact as doubles.
                const Currency figures[] = {l.opening, l.receipts, l.payments, l.closing()};
                const lxw_col_t at[] = {2, 4, 6, 7};
                for (int i = 0; i < 4 && !err; ++i)
                    err = worksheet_write_number(ws, row, at[i], figures[i].toDouble(), amount[strong]);
                if (!err)
                    err = worksheet_write_number(ws, row, 3, l.receiptCount, count[strong]);
                if (!err)
                    err = worksheet_write_number(ws, row, 5, l.paymentCount, count[strong]);
            } else if (p.kind == Printed::EntryHead) {
                worksheet_set_row_opt(ws, row, LXW_DEF_ROW_HEIGHT, nullptr, &listed);
                const QStringList heads = entryHeaders();
                for (int c = 0; c < Columns && !err; ++c)
                    if (!heads.at(c).isEmpty())
                        err = worksheet_write_string(ws, row, lxw_col_t(c), heads.at(c).toUtf8().constData(),
                                                     c == 1 ? nameFormat(p.depth, false, true) : entryHead);
            } else {
                worksheet_set_row_opt(ws, row, LXW_DEF_ROW_HEIGHT, nullptr, &listed);
                const DailyReport::Entry &e = p.entry;
                if (e.date.isValid()) {
                    lxw_datetime when{e.date.year(), e.date.month(), e.date.day(), 0, 0, 0.0};
                    err = worksheet_write_datetime(ws, row, 0, &when, date);
                }
                if (!err && !e.explain.isEmpty())
                    err = worksheet_write_string(ws, row, 1, text(e.explain).constData(), nameFormat(p.depth, false));
                if (!err && !e.account.isEmpty())
                    err = worksheet_write_string(ws, row, 2, text(e.account).constData(), nullptr);
                if (!err && !e.number.isEmpty())
                    err = worksheet_write_string(ws, row, 3, text(e.number).constData(), nullptr);
                if (!err && !e.debit.isZero())
                    err = worksheet_write_number(ws, row, 4, e.debit.toDouble(), amount[0]);
                if (!err && !e.credit.isZero())
                    err = worksheet_write_number(ws, row, 6, e.credit.toDouble(), amount[0]);
            }
            ++row;
        }
        return int(err);
    });
}

Result<void> DailyReportWriter::writeCsv(const QString &path, const QStringList &keep) const
{
    QSaveFile out(path);
    if (Result<void> opened = FileOutput::open(out, keep); !opened.ok())
        return opened;
    const auto field = [](QString text) {
        if (text.contains(QLatin1Char(',')) || text.contains(QLatin1Char('"')) || text.contains(QLatin1Char('\n')) ||
            text.contains(QLatin1Char('\r')))
            text = QLatin1Char('"') + text.replace(QLatin1Char('"'), QStringLiteral("\"\"")) + QLatin1Char('"');
        return text;
    };
    QString text = QStringLiteral("资金日报表,%1\r\n").arg(DailyReport::span(m_from, m_to));
    text += DailyReport::headers().join(QLatin1Char(',')) + QStringLiteral("\r\n");
    // Levels indented by two blanks each, as a text reader lines them up.
    QList<Printed> all =
        printedLines(m_lines, m_entries, [this](const BookDirectory::Book &b) { return depth(b); }, total());
    for (const Printed &p : all) {
        QStringList cells = cellsOf(p, [](Currency c) { return BookSheet::twoDecimals(c); });
        cells[1] = QString(2 * p.depth, QLatin1Char(' ')) + cells.at(1).mid(2 * p.depth);
        for (QString &cell : cells)
            cell = field(cell);
        text += cells.join(QLatin1Char(',')) + QStringLiteral("\r\n");
    }
    const QByteArray bytes = QByteArray("\xEF\xBB\xBF") + text.toUtf8();
    if (out.write(bytes) != bytes.size())
        return Error(FileOutput::cannotWrite(path, FileOutput::why(out)));
    return FileOutput::commit(out);
}

bool DailyReportWriter::knowsExtension(const QString &path)
{
    for (const char *ext : {".pdf", ".xlsx", ".csv"})
        if (path.endsWith(QLatin1String(ext), Qt::CaseInsensitive))
            return true;
    return false;
}

Result<void> DailyReportWriter::write(const QString &path, const QStringList &keep) const
{
    if (path.endsWith(QLatin1String(".xlsx"), Qt::CaseInsensitive))
        return writeXlsx(path, keep);
    if (path.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive))
        return printToPdf(path, keep);
    if (path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive))
        return writeCsv(path, keep);
    return Error(QStringLiteral("资金日报表只能写成 .pdf、.xlsx 或 .csv 文件：%1").arg(path));
}

} // namespace kx
