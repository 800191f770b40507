#include "VoucherTool.h"

#include "ToolBook.h"

#include <kxjournal/Database.h>
#include <kxjournal/GridModel.h>
#include <kxjournal/SqlAccContext.h>
#include <kxjournal/VoucherFile.h>

#include "voucher/VoucherMaker.h"

#include <QDir>
#include <QStringList>
#include <cstdio>

namespace {

// Columns a terminal gives \a text: CJK characters take two.
int displayWidth(const QString &text)
{
    int width = 0;
    for (const uint c : text.toUcs4())
        width += c >= 0x2E80 && !(c >= 0xFF61 && c <= 0xFFDC) ? 2 : 1;
    return width;
}

QString padded(const QString &text, int width, bool right)
{
    const QString fill(std::max(0, width - displayWidth(text)), QLatin1Char(' '));
    return right ? fill + text : text + fill;
}

void printTable(const QList<QStringList> &rows, const QList<bool> &rightAligned)
{
    QList<int> widths(rightAligned.size(), 0);
    for (const QStringList &row : rows)
        for (int c = 0; c < row.size() && c < widths.size(); ++c)
            widths[c] = std::max(widths[c], displayWidth(row.at(c)));
    for (const QStringList &row : rows) {
        QStringList cells;
        for (int c = 0; c < row.size() && c < widths.size(); ++c)
            cells << padded(row.at(c), widths[c], rightAligned[c]);
        std::printf("%s\n", qPrintable(cells.join(QStringLiteral("  ")).trimmed()));
    }
}

} // namespace

int VoucherTool::print(const QString &path, const QString &codec)
{
    const kx::Result<kx::Voucher> read = kx::VoucherFile::read(path, codec);
    if (!read.ok()) {
        std::fprintf(stderr, "kxjournal: %s\n", qPrintable(read.error()));
        return 1;
    }
    const kx::Voucher &v = read.value();
    std::printf("%s\n", qPrintable(QStringLiteral("凭证 %1 %2 号  日期 %3  所选行 %4  制单 %5  主管 %6")
                                       .arg(v.docType, QString::number(v.docNo), v.docDate.toString(Qt::ISODate),
                                            QString::number(v.addQty), v.inputor, v.director)));
    QList<QStringList> rows{{QStringLiteral("行"), QStringLiteral("摘要"), QStringLiteral("科目编码"), QStringLiteral("科目名称"),
                             QStringLiteral("借方"), QStringLiteral("贷方"), QStringLiteral("外币")}};
    for (const kx::Voucher::Line &l : v.lines)
        rows << QStringList{QString::number(l.row), l.explain,           l.accCode,          l.accName,
                            l.debit.toString(),     l.credit.toString(), l.forex.toString()};
    rows << QStringList{QString(), QStringLiteral("合计"), QString(), QString(), v.debitTotal().toString(),
                        v.creditTotal().toString(), QString()};
    printTable(rows, {true, false, false, false, true, true, true});
    return 0;
}

int VoucherTool::make(const MakeOptions &o)
{
    ToolBook book;
    if (!book.open(o.url, o.book))
        return 1;
    kx::SqlAccContext &context = book.context();
    context.setUserName(o.user);
    context.setDirectorName(o.director);
    context.setDocTypes(o.types);
    context.setCurPeriod(o.from.toString(QStringLiteral("yyyyMM")));
    context.setPeriodStart(QDate(o.from.year(), o.from.month(), 1));
    context.setPeriodEnd(QDate(o.to.year(), o.to.month(), o.to.daysInMonth()));
    if (!book.load())
        return 1;
    kx::BookSession &session = book.session();
    // The control keeps its code page when told one it does not know.
    if (!kx::VoucherFile::isKnownCodec(o.codec)) {
        session.host().prompt(QStringLiteral("不认识的编码“%1”，凭证文件仍用 %2 编码。").arg(o.codec, QStringLiteral("GBK")),
                              false);
        book.fail();
        return 2;
    }
    // The records of those days lie together: a book is kept in date order.
    kx::GridModel &grid = session.sheet();
    const int dateCol = grid.colIndex(QStringLiteral("JnlDate"));
    int first = -1, last = -1;
    for (int r = grid.fixedRows(); r < grid.rows(); ++r) {
        const QDate day = QDate::fromString(grid.text(r, dateCol), Qt::ISODate);
        if (day.isValid() && day >= o.from && day <= o.to) {
            first = first < 0 ? r : first;
            last = r;
        }
    }
    if (first < 0) {
        std::fprintf(stderr, "kxjournal: book %s has no records from %s to %s\n", qPrintable(o.book),
                     qPrintable(o.from.toString(Qt::ISODate)), qPrintable(o.to.toString(Qt::ISODate)));
        return 1;
    }
    grid.select(first, grid.fixedCols(), last, grid.cols() - 1);
    // No folder named: the temporary one, as the control's default.
    const QString folder = o.out.isEmpty() ? QDir::tempPath() : o.out;
    const kx::Result<QStringList> made = kx::VoucherMaker(session.book()).make(folder, o.codec, o.grouping);
    if (!made.ok())
        session.host().prompt(made.error(), false);
    if (made.valueOr(QStringList()).isEmpty())
        return book.fail();
    for (const QString &path : made.value())
        std::printf("%s\n", qPrintable(path));
    return 0;
}
