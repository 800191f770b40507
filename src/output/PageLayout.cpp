#include "output/PageLayout.h"

#include "grid/Sheet.h"
#include "output/BookSheet.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QTextLayout>
#include <cmath>

namespace kx {

namespace {

const QString DefaultAmountFormat = QStringLiteral("#,##0.00");

struct Line {
    int page;
    BookSheet::Row::Kind kind;
    int height;
    QStringList cells;
};

QString formatted(const BookSheet::Column &col, Currency value)
{
    return value.format(col.format.isEmpty() ? DefaultAmountFormat : col.format);
}

QString shownText(const BookSheet::Column &col, const BookSheet::Cell &cell)
{
    if (cell.amount.isValid())
        return col.kind == BookSheet::Column::Amount ? formatted(col, cell.amount) : cell.amount.toString();
    if (!cell.text.isEmpty())
        return cell.text;
    if (cell.date.isValid())
        return cell.date.toString(Qt::ISODate);
    return {};
}

// How many lines \a text takes in \a width, wrapped between words or, for
// text without breaks (Chinese), between any two characters. A text that
// needs more than \a maxLines is cut to them and ends in "…", so what is cut
// shows on paper.
int wrap(QString &text, double width, const QFont &font, const QFontMetricsF &fm, int maxLines)
{
    if (!text.contains(QLatin1Char('\n')) && fm.horizontalAdvance(text) <= width)
        return 1;
    QString flowing = text;
    flowing.remove(QLatin1Char('\r'));
    flowing.replace(QLatin1Char('\n'), QChar::LineSeparator);
    QTextLayout layout(flowing, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    int n = 0;
    int cut = -1;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        if (++n == maxLines)
            cut = line.textStart() + line.textLength();
    }
    layout.endLayout();
    if (n > maxLines && cut > 1) {
        const QString ellipsis(QChar(0x2026));
        QString shortened = flowing.left(cut).trimmed();
        // Room for the mark on the last line.
        while (shortened.size() > 1 && fm.horizontalAdvance(shortened.section(QChar::LineSeparator, -1) + ellipsis) > width)
            shortened.chop(1);
        text = shortened + ellipsis;
        return maxLines;
    }
    return std::max(1, n);
}

} // namespace

PageLayout::PageLayout(const Sheet &grid, const QFont &font) : m_grid(grid), m_font(font)
{
    m_lineHeight = std::ceil(QFontMetricsF(m_font).height() + 2 * Padding);
}

QSizeF PageLayout::defaultArea()
{
    const QPageLayout page(QPageSize(QPageSize::A4), QPageLayout::Landscape, QMarginsF(10, 10, 10, 10),
                           QPageLayout::Millimeter);
    return page.paintRect(QPageLayout::Point).size();
}

QFont PageLayout::bodyFont(const QFont &gridFont)
{
    QFont font = gridFont;
    // Chinese is set in a Simplified Chinese face whatever the machine's
    // language: left to the system, a Japanese face may be taken (its forms
    // of 直, 骨 differ). The grid's own face follows for what these lack.
    static const QStringList chinese = [] {
        QStringList found;
        const QStringList installed = QFontDatabase::families(QFontDatabase::SimplifiedChinese);
        for (const char *family : {"Noto Sans CJK SC", "Source Han Sans SC", "Source Han Sans CN", "WenQuanYi Micro Hei",
                                   "WenQuanYi Zen Hei", "Microsoft YaHei", "PingFang SC", "SimSun", "Noto Serif CJK SC"})
            if (installed.contains(QLatin1String(family)))
                found << QLatin1String(family);
        return found;
    }();
    if (!chinese.isEmpty())
        font.setFamilies(QStringList(chinese.first()) << gridFont.families() << gridFont.family());
    // Sizes in points are the painter's units on paper.
    font.setPixelSize(9);
    return font;
}

QString PageLayout::period() const
{
    return BookSheet(m_grid).period();
}

int PageLayout::layout(const QSizeF &area, Sheet &out) const
{
    const BookSheet sheet(m_grid);
    const auto &cols = sheet.columns();
    const int n = int(cols.size());
    double total = 0;
    for (const auto &c : cols)
        total += std::max(1, c.width);
    QVector<double> widths(n);
    for (int k = 0; k < n; ++k)
        widths[k] = std::floor(area.width() * std::max(1, cols[k].width) / total);

    const QFontMetricsF fm(m_font);
    QFont boldFont = m_font;
    boldFont.setBold(true);
    const QFontMetricsF boldMetrics(boldFont);
    const int line = int(m_lineHeight);
    const double body = area.height() - CaptionHeight - PeriodHeight - m_lineHeight - FooterHeight;
    const int maxLines = std::max(1, int(body / m_lineHeight) - 2);
    const int labelCol = sheet.labelColumn();
    const int debitCol = sheet.indexOf(JournalColumns::Debit);
    const int creditCol = sheet.indexOf(JournalColumns::Credit);
    const int keep[] = {sheet.indexOf(JournalColumns::Dir), sheet.indexOf(JournalColumns::Balance),
                        sheet.indexOf(JournalColumns::fxBalance)};

    QVector<Line> lines;
    int page = 1;
    double used = 0;
    Currency debit, credit;
    QStringList balance(3);
    const auto carry = [&](BookSheet::Row::Kind kind) {
        Line l{page, kind, line, QStringList()};
        for (int k = 0; k < n; ++k)
            l.cells << QString();
        if (labelCol >= 0)
            l.cells[labelCol] = BookSheet::label(kind);
        if (debitCol >= 0)
            l.cells[debitCol] = formatted(cols[debitCol], debit);
        if (creditCol >= 0)
            l.cells[creditCol] = formatted(cols[creditCol], credit);
        for (int i = 0; i < 3; ++i)
            if (keep[i] >= 0)
                l.cells[keep[i]] = balance[i];
        lines.append(l);
        used += line;
    };

    sheet.forEachRow([&](const BookSheet::Row &row) {
        Line l{page, row.kind, line, QStringList()};
        // Total lines print bold, and bold text is wider.
        const bool bold = row.kind != BookSheet::Row::Record;
        int needed = 1;
        for (int k = 0; k < n; ++k) {
            QString text = shownText(cols[k], row.cells[k]);
            if (cols[k].kind == BookSheet::Column::Text && !text.isEmpty())
                needed = std::max(needed, wrap(text, widths[k] - 2 * Padding, bold ? boldFont : m_font,
                                               bold ? boldMetrics : fm, maxLines));
            l.cells << text;
        }
        l.height = needed * line;
        // Room is kept for the line that carries the page's figures over.
        if (used > 0 && used + l.height + line > body) {
            carry(BookSheet::Row::CarriedForward);
            ++page;
            used = 0;
            carry(BookSheet::Row::BroughtForward);
            l.page = page;
        }
        lines.append(l);
        used += l.height;

        debit = row.carriedDebit;
        credit = row.carriedCredit;
        for (int i = 0; i < 3; ++i)
            if (keep[i] >= 0 && !l.cells[keep[i]].isEmpty())
                balance[i] = l.cells[keep[i]];
    });

    out.setRows(1);
    out.setCols(n + 1);
    out.setRowHeightMin(0);
    out.setRowHeightMax(0);
    out.setRows(int(lines.size()) + 1);
    for (int k = 0; k < n; ++k) {
        out.setColKey(k + 1, m_grid.colKey(cols[k].gridCol));
        out.setText(0, k + 1, cols[k].header);
        out.setColWidth(k + 1, int(widths[k]));
        out.setColAlignment(k + 1, cols[k].align | Qt::AlignVCenter);
    }
    out.setText(0, 0, QStringLiteral("页"));
    out.setRowHeight(0, line);
    for (int i = 0; i < lines.size(); ++i) {
        const Line &l = lines[i];
        const int r = i + 1;
        out.setNumber(r, 0, l.page);
        for (int k = 0; k < n; ++k)
            if (!l.cells[k].isEmpty())
                out.setText(r, k + 1, l.cells[k]);
        out.setRowHeight(r, l.height);
        if (l.kind != BookSheet::Row::Record)
            out.setSubtotal(r, true);
    }
    return lines.isEmpty() ? 0 : page;
}

} // namespace kx
