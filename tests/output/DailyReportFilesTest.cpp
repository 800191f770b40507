// The daily fund report written out: the figures read back from the PDF's
// text, the spreadsheet's cells and the comma-separated text, against sums
// of the records worked out here from each book as the control loads it;
// each book above equal to its books below, the 合计 line to the top books;
// the records listed under a book exactly that book's records of the days;
// and the tool writing each kind of file, refusing any other.
#include "support/TestDatabase.h"

#include "grid/Sheet.h"
#include "ledger/Book.h"
#include "ledger/BookRow.h"
#include "ledger/JournalColumns.h"
#include "ledger/LedgerHost.h"
#include "output/BookSession.h"
#include "output/BookSheet.h"
#include "output/DailyReport.h"
#include "output/DailyReportWriter.h"

#include <kxjournal/SqlAccContext.h>

#include <QFile>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

using kxtest::Engine;

namespace {

QByteArray run(const QString &program, const QStringList &args)
{
    QProcess p;
    p.start(program, args);
    p.waitForFinished(60000);
    return p.readAllStandardOutput();
}

// A book's records as the control loads them: the opening row and summary
// rows left out.
struct Record {
    QDate date;
    QString number, explain, account;
    kx::Currency debit, credit;
    bool operator==(const Record &o) const
    {
        return date == o.date && number == o.number && explain == o.explain && account == o.account &&
               debit == o.debit && credit == o.credit;
    }
};

QList<Record> loadedRecords(kx::AccContext &acc, int bookId)
{
    kx::BookSession session(&acc, bookId, kx::LedgerHost::none());
    EXPECT_TRUE(session.load());
    const kx::Sheet &g = session.sheet();
    const kx::JournalColumns columns(g);
    QList<Record> out;
    using C = kx::JournalColumns;
    for (int r = g.fixedRows(); r < g.rows(); ++r) {
        const kx::BookRow row = kx::BookRow::of(g, columns, r);
        if (!g.isDataRow(r) || row.isOpening() || row.isSummary() || !row.isDated())
            continue;
        out << Record{row.date(), row.text(C::JnlNo), row.text(C::Explain), row.text(C::AccName),
                      row.amount(C::Debit), row.amount(C::Credit)};
    }
    return out;
}

// The spreadsheet's cells by row and column (0-based), shared strings resolved.
QMap<int, QMap<int, QString>> sheetCells(const QString &xlsx)
{
    QStringList strings;
    QXmlStreamReader s(run(QStringLiteral("unzip"), {QStringLiteral("-p"), xlsx, QStringLiteral("xl/sharedStrings.xml")}));
    while (!s.atEnd())
        if (s.readNext() == QXmlStreamReader::StartElement && s.name() == QLatin1String("t"))
            strings << s.readElementText();
    QMap<int, QMap<int, QString>> cells;
    QXmlStreamReader x(run(QStringLiteral("unzip"), {QStringLiteral("-p"), xlsx, QStringLiteral("xl/worksheets/sheet1.xml")}));
    QString ref, type;
    while (!x.atEnd()) {
        if (x.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (x.name() == QLatin1String("c")) {
            ref = x.attributes().value(QLatin1String("r")).toString();
            type = x.attributes().value(QLatin1String("t")).toString();
        } else if (x.name() == QLatin1String("v")) {
            const QString v = x.readElementText();
            int col = 0, at = 0;
            while (at < ref.size() && ref.at(at).isLetter())
                col = col * 26 + (ref.at(at++).unicode() - 'A' + 1);
            cells[ref.mid(at).toInt() - 1][col - 1] = type == QLatin1String("s") ? strings.value(v.toInt()) : v;
        }
    }
    return cells;
}

kx::Currency exact(const QString &text)
{
    const kx::Result<kx::Currency> c = kx::Currency::fromText(text);
    EXPECT_TRUE(c.ok()) << qPrintable(text);
    return c.valueOr(kx::Currency::invalid());
}

struct Figures {
    kx::Currency opening, receipts, payments, closing;
    int in = 0, out = 0;
    bool operator==(const Figures &o) const
    {
        return opening == o.opening && receipts == o.receipts && payments == o.payments && closing == o.closing &&
               in == o.in && out == o.out;
    }
    Figures &operator+=(const Figures &o)
    {
        opening = opening + o.opening;
        receipts = receipts + o.receipts;
        payments = payments + o.payments;
        closing = closing + o.closing;
        in += o.in;
        out += o.out;
        return *this;
    }
};

void PrintTo(const Figures &f, std::ostream *os)
{
    *os << qPrintable(f.opening.toString()) << " +" << f.in << ":" << qPrintable(f.receipts.toString()) << " -" << f.out
        << ":" << qPrintable(f.payments.toString()) << " = " << qPrintable(f.closing.toString());
}

} // namespace

class DailyReportFiles : public ::testing::TestWithParam<Engine>
{
};

// A month of five books on three levels: each bottom book's figures worked
// out from its loaded records, every figure read back from the spreadsheet,
// the PDF and the text; the records under each book are its month's records.
TEST_P(DailyReportFiles, TheFiguresInEachFileAreTheRecordsSumsLevelByLevel)
{
    kxtest::TestDatabase testDb(GetParam());
    {
        kx::Database conn = testDb.open();
        ASSERT_GT(kxtest::fillSampleBooks(conn, 400, 5), 0);
    }
    kx::SqlAccContext acc(testDb.open());
    kx::Database &db = acc.Connection();
    const QDate from(2025, 4, 1), to(2025, 4, 30);
    const kx::BookDirectory books = kx::BookDirectory::read(db).value();

    // Each bottom book from its records, each book above from its books.
    QHash<int, Figures> expected;
    QHash<int, QList<Record>> inSpan;
    const std::function<Figures(const kx::BookDirectory::Book &)> work = [&](const kx::BookDirectory::Book &b) {
        Figures f;
        if (b.hasChildren) {
            for (const kx::BookDirectory::Book &c : books.children(b.id))
                f += work(c);
        } else {
            kx::BookSession session(&acc, b.id, kx::LedgerHost::none());
            EXPECT_TRUE(session.load());
            // The opening row's balance and everything dated before the span.
            kx::Currency before;
            const kx::Sheet &g = session.sheet();
            const kx::JournalColumns columns(g);
            for (int r = g.fixedRows(); r < g.rows(); ++r) {
                const kx::BookRow row = kx::BookRow::of(g, columns, r);
                if (!g.isDataRow(r) || row.isSummary())
                    continue;
                const kx::Currency net = row.amount(kx::JournalColumns::Debit) - row.amount(kx::JournalColumns::Credit);
                if (row.isOpening() || row.date() < from)
                    before = before + net;
            }
            f.opening = before;
            for (const Record &r : loadedRecords(acc, b.id)) {
                if (r.date < from || r.date > to)
                    continue;
                inSpan[b.id] << r;
                f.receipts = f.receipts + r.debit;
                f.payments = f.payments + r.credit;
                f.in += r.debit.sign() > 0 ? 1 : 0;
                f.out += r.credit.sign() > 0 ? 1 : 0;
            }
            f.closing = f.opening + f.receipts - f.payments;
        }
        expected.insert(b.id, f);
        return f;
    };
    Figures all;
    for (const kx::BookDirectory::Book &top : books.children(0))
        all += work(top);
    ASSERT_GE(inSpan.size(), 4) << "bottom books with records in the month";

    const QList<kx::DailyReport::Line> lines = kx::DailyReport::make(db, 0, from, to).value();
    ASSERT_EQ(lines.size(), books.count());
    QList<int> bottoms;
    for (const kx::DailyReport::Line &l : lines)
        if (!l.book.hasChildren)
            bottoms << l.book.id;
    const kx::Result<QHash<int, QList<kx::DailyReport::Entry>>> entries = kx::DailyReport::entries(db, bottoms, from, to);
    ASSERT_TRUE(entries.ok()) << qPrintable(entries.error());
    for (const int id : bottoms) {
        SCOPED_TRACE(books.byId(id)->code.toStdString());
        QList<Record> listed;
        for (const kx::DailyReport::Entry &e : entries.value().value(id))
            listed << Record{e.date, e.number, e.explain, e.account, e.debit, e.credit};
        EXPECT_TRUE(listed == inSpan.value(id)) << listed.size() << " listed, " << inSpan.value(id).size() << " in the month";
    }

    // The last day with a record, by the engine, against the records.
    QDate lastInSpan;
    for (const QList<Record> &list : std::as_const(inSpan))
        for (const Record &r : list)
            lastInSpan = std::max(lastInSpan, r.date);
    EXPECT_EQ(kx::DailyReport::lastDay(db, 0, to).value(), lastInSpan);

    kx::DailyReportWriter report(lines, from, to, QStringLiteral("王出纳"));
    report.setMadeOn(QDate(2025, 5, 2));
    report.setEntries(entries.value());
    QTemporaryDir dir;
    const QString xlsx = dir.filePath(QStringLiteral("日报.xlsx")), pdf = dir.filePath(QStringLiteral("日报.pdf")),
                  csv = dir.filePath(QStringLiteral("日报.csv"));
    for (const QString &file : {xlsx, pdf, csv}) {
        const kx::Result<void> written = report.write(file);
        ASSERT_TRUE(written.ok()) << qPrintable(written.error());
    }
    EXPECT_FALSE(report.write(dir.filePath(QStringLiteral("日报.txt"))).ok());
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("日报.txt"))));

    // The spreadsheet: a line per book in tree order, each figure a number.
    const QMap<int, QMap<int, QString>> cells = sheetCells(xlsx);
    EXPECT_EQ(cells.value(0).value(0), QStringLiteral("资金日报表"));
    EXPECT_EQ(cells.value(1).value(0), QStringLiteral("日期：2025-04-01 至 2025-04-30　编制人：王出纳　编制日期：2025-05-02"));
    const auto figuresAt = [&](int row) {
        const QMap<int, QString> &c = cells.value(row);
        Figures f{exact(c.value(2)), exact(c.value(4)), exact(c.value(6)), exact(c.value(7)), c.value(3).toInt(),
                  c.value(5).toInt()};
        return f;
    };
    QHash<int, Figures> read;
    int row = 3;
    for (const kx::DailyReport::Line &l : lines) {
        SCOPED_TRACE(l.book.code.toStdString());
        ASSERT_EQ(cells.value(row).value(0), l.book.code);
        EXPECT_EQ(cells.value(row).value(1), l.book.name);
        read.insert(l.book.id, figuresAt(row));
        EXPECT_EQ(read.value(l.book.id), expected.value(l.book.id));
        ++row;
        if (l.book.hasChildren || inSpan.value(l.book.id).isEmpty())
            continue;
        EXPECT_EQ(cells.value(row).value(2), QStringLiteral("对方科目"));
        ++row;
        // Each record: its day as a date serial, its texts and amounts.
        for (const Record &r : inSpan.value(l.book.id)) {
            const QMap<int, QString> &c = cells.value(row++);
            EXPECT_EQ(QDate(1899, 12, 30).addDays(c.value(0).toInt()), r.date);
            EXPECT_EQ(c.value(1), r.explain);
            EXPECT_EQ(c.value(2), r.account);
            EXPECT_EQ(c.value(3), r.number);
            EXPECT_EQ(c.contains(4) ? exact(c.value(4)) : kx::Currency(), r.debit);
            EXPECT_EQ(c.contains(6) ? exact(c.value(6)) : kx::Currency(), r.credit);
        }
    }
    EXPECT_EQ(cells.value(row).value(1), QStringLiteral("合计"));
    EXPECT_EQ(figuresAt(row), all);
    // Level by level, from the file alone: a book above holds its books' sums.
    for (const kx::DailyReport::Line &l : lines) {
        if (!l.book.hasChildren)
            continue;
        Figures sum;
        for (const kx::BookDirectory::Book &c : books.children(l.book.id))
            sum += read.value(c.id);
        EXPECT_EQ(read.value(l.book.id), sum) << qPrintable(l.book.code);
    }

    // The text: the same lines, the records under their books, the 合计 last.
    QFile text(csv);
    ASSERT_TRUE(text.open(QIODevice::ReadOnly));
    const QStringList rows = QString::fromUtf8(text.readAll()).remove(QChar(0xFEFF)).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
    EXPECT_EQ(rows.size(), 2 + row - 3 + 1) << "the heads, then the lines of the spreadsheet";
    const auto textFigures = [](const QString &line) {
        const QStringList f = line.split(QLatin1Char(','));
        EXPECT_EQ(f.size(), 8) << qPrintable(line);
        return f.size() != 8 ? Figures{} : Figures{exact(f.at(2)), exact(f.at(4)), exact(f.at(6)), exact(f.at(7)), f.at(3).toInt(), f.at(5).toInt()};
    };
    for (const kx::DailyReport::Line &l : lines) {
        const auto at = std::find_if(rows.cbegin(), rows.cend(), [&](const QString &r) { return r.startsWith(l.book.code + QLatin1Char(',')); });
        ASSERT_NE(at, rows.cend()) << qPrintable(l.book.code);
        EXPECT_EQ(at->section(QLatin1Char(','), 1, 1).trimmed(), l.book.name);
        EXPECT_EQ(textFigures(*at), expected.value(l.book.id)) << qPrintable(l.book.code);
    }
    ASSERT_TRUE(rows.last().startsWith(QStringLiteral(",合计,"))) << qPrintable(rows.last());
    EXPECT_EQ(textFigures(rows.last()), all);
    EXPECT_GE(int(rows.filter(QRegularExpression(QStringLiteral("^日期, +摘要,对方科目,单据号,借方,,贷方,$"))).size()),
              int(inSpan.size()));

    // The PDF's text: caption, days, preparer, every book's closing, the
    // records' amounts and numbers.
    const QString printed = QString::fromUtf8(run(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), pdf, QStringLiteral("-")}));
    QStringList want{QStringLiteral("资金日报表"), QStringLiteral("日期：2025-04-01 至 2025-04-30"),
                     QStringLiteral("编制人：王出纳"), QStringLiteral("合计"), QStringLiteral("对方科目"),
                     all.closing.format(QStringLiteral("#,##0.00"))};
    for (const kx::DailyReport::Line &l : lines)
        want << l.book.name << l.closing().format(QStringLiteral("#,##0.00"));
    const Record &some = inSpan.begin().value().first();
    want << (some.debit.isZero() ? some.credit : some.debit).format(QStringLiteral("#,##0.00"));
    for (const QString &w : want)
        EXPECT_TRUE(printed.contains(w)) << qPrintable(w);
}

INSTANTIATE_TEST_SUITE_P(Engines, DailyReportFiles, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });

namespace {

// A SQLite book of 1,500 sample records and a context on it.
struct SampleYear {
    SampleYear() : testDb(Engine::Sqlite)
    {
        kx::Database conn = testDb.open();
        bookId = kxtest::fillSampleBooks(conn, 1500, 1);
        acc = std::make_unique<kx::SqlAccContext>(testDb.open());
    }
    kxtest::TestDatabase testDb;
    int bookId = 0;
    std::unique_ptr<kx::SqlAccContext> acc;
};

} // namespace

// One day: the heading names the day alone, the records are that day's and
// no other, the books without records that day list nothing.
TEST(DailyReportFiles, OneDaysRecordsAreExactlyThatDays)
{
    const SampleYear sample;
    const int bookId = sample.bookId;
    ASSERT_GT(bookId, 0);
    kx::SqlAccContext &acc = *sample.acc;
    const QList<Record> all = loadedRecords(acc, bookId);
    // The busiest day of the book.
    QMap<QDate, int> perDay;
    for (const Record &r : all)
        ++perDay[r.date];
    QDate day;
    for (auto it = perDay.cbegin(); it != perDay.cend(); ++it)
        if (!day.isValid() || it.value() > perDay.value(day))
            day = it.key();
    ASSERT_GE(perDay.value(day), 2);
    QList<Record> thatDay;
    for (const Record &r : all)
        if (r.date == day)
            thatDay << r;

    const kx::Result<QHash<int, QList<kx::DailyReport::Entry>>> listed =
        kx::DailyReport::entries(acc.Connection(), {bookId}, day, day);
    ASSERT_TRUE(listed.ok());
    QList<Record> got;
    for (const kx::DailyReport::Entry &e : listed.value().value(bookId))
        got << Record{e.date, e.number, e.explain, e.account, e.debit, e.credit};
    EXPECT_TRUE(got == thatDay) << got.size() << " listed, " << thatDay.size() << " that day";
    EXPECT_EQ(kx::DailyReport::lastDay(acc.Connection(), bookId, day).value(), day);
    EXPECT_EQ(kx::DailyReport::lastDay(acc.Connection(), bookId).value(), perDay.lastKey());
    EXPECT_FALSE(kx::DailyReport::entries(acc.Connection(), {bookId}, day, day.addDays(-1)).ok());

    const QList<kx::DailyReport::Line> lines = kx::DailyReport::make(acc.Connection(), bookId, day, day).value();
    kx::DailyReportWriter report(lines, day, day);
    report.setEntries(listed.value());
    EXPECT_TRUE(report.subtitle().startsWith(QStringLiteral("日期：") + day.toString(Qt::ISODate) + QStringLiteral("　编制日期：")))
        << qPrintable(report.subtitle());
    QTemporaryDir dir;
    const QString xlsx = dir.filePath(QStringLiteral("一天.xlsx"));
    ASSERT_TRUE(report.write(xlsx).ok());
    const QMap<int, QMap<int, QString>> cells = sheetCells(xlsx);
    int dated = 0;
    for (auto it = cells.cbegin(); it != cells.cend(); ++it)
        if (it.key() >= 3 && !it.value().contains(7) && it.value().value(0) != QStringLiteral("日期")) {
            EXPECT_EQ(QDate(1899, 12, 30).addDays(it.value().value(0).toInt()), day);
            ++dated;
        }
    EXPECT_EQ(dated, thatDay.size());
}

// The tool: a PDF, a spreadsheet and a text by the extension, the records
// listed with --rows; another extension is one line and exit 1, and no file.
TEST(DailyReportTool, WritesEachKindOfFileByItsExtension)
{
    kxtest::TestDatabase testDb(Engine::Sqlite);
    {
        kx::Database conn = testDb.open();
        ASSERT_GT(kxtest::fillSampleBooks(conn, 300, 3), 0);
    }
    QTemporaryDir dir;
    const auto tool = [&](const QString &file, bool rows) {
        QProcess p;
        QStringList args{QStringLiteral("daily"),      QStringLiteral("--db"),   testDb.url(),
                         QStringLiteral("--book"),     QStringLiteral("02"),     QStringLiteral("--from"),
                         QStringLiteral("2025-06-01"), QStringLiteral("--to"),   QStringLiteral("2025-06-30"),
                         QStringLiteral("--out"),      dir.filePath(file)};
        if (rows)
            args << QStringLiteral("--rows");
        p.start(QStringLiteral(KX_TOOL), args);
        EXPECT_TRUE(p.waitForFinished(60000));
        return std::pair{p.exitCode(), QString::fromUtf8(p.readAllStandardError())};
    };
    kx::SqlAccContext acc(testDb.open());
    const int bank = kx::BookDirectory::read(acc.Connection()).value().byCode(QStringLiteral("02"))->id;
    const QList<kx::DailyReport::Line> lines = kx::DailyReport::make(acc.Connection(), bank, QDate(2025, 6, 1), QDate(2025, 6, 30)).value();
    const QString closing = lines.first().closing().format(QStringLiteral("#,##0.00"));

    auto [code, err] = tool(QStringLiteral("日报.pdf"), true);
    EXPECT_EQ(code, 0) << qPrintable(err);
    const QString printed = QString::fromUtf8(run(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), dir.filePath(QStringLiteral("日报.pdf")), QStringLiteral("-")}));
    EXPECT_TRUE(printed.contains(QStringLiteral("资金日报表"))) << qPrintable(printed);
    EXPECT_TRUE(printed.contains(closing)) << qPrintable(closing);
    EXPECT_TRUE(printed.contains(QStringLiteral("对方科目"))) << "the records listed";

    std::tie(code, err) = tool(QStringLiteral("日报.xlsx"), false);
    EXPECT_EQ(code, 0) << qPrintable(err);
    const QMap<int, QMap<int, QString>> cells = sheetCells(dir.filePath(QStringLiteral("日报.xlsx")));
    EXPECT_EQ(cells.value(3).value(1), QStringLiteral("银行日记账"));
    EXPECT_EQ(exact(cells.value(3).value(7)), lines.first().closing());
    EXPECT_EQ(cells.size(), 3 + lines.size() + 1) << "no records without --rows";

    std::tie(code, err) = tool(QStringLiteral("日报.CSV"), true);
    EXPECT_EQ(code, 0) << qPrintable(err);
    QFile csv(dir.filePath(QStringLiteral("日报.CSV")));
    ASSERT_TRUE(csv.open(QIODevice::ReadOnly));
    EXPECT_TRUE(QString::fromUtf8(csv.readAll()).contains(QRegularExpression(QStringLiteral("\r\n日期, +摘要,对方科目,单据号,借方,,贷方,\r\n"))));

    std::tie(code, err) = tool(QStringLiteral("日报.txt"), false);
    EXPECT_EQ(code, 1);
    EXPECT_EQ(err.count(QLatin1Char('\n')), 1) << qPrintable(err);
    EXPECT_TRUE(err.contains(QStringLiteral(".pdf"))) << qPrintable(err);
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("日报.txt"))));
}

// On paper a book's records going on over a page are headed again there,
// and no line is lost to the break.
TEST(DailyReportFiles, AListGoingOverAPageIsHeadedAgain)
{
    const SampleYear sample;
    const int bookId = sample.bookId;
    ASSERT_GT(bookId, 0);
    kx::SqlAccContext &acc = *sample.acc;
    const QDate from(2025, 8, 1), to(2025, 8, 31);
    const QList<kx::DailyReport::Line> lines = kx::DailyReport::make(acc.Connection(), bookId, from, to).value();
    const QList<kx::DailyReport::Entry> month = kx::DailyReport::entries(acc.Connection(), {bookId}, from, to).value().value(bookId);
    ASSERT_GE(month.size(), 40);
    kx::DailyReportWriter report(lines, from, to);
    report.setEntries({{bookId, month}});
    kx::Sheet grid;
    QFont font(QStringLiteral("Noto Sans CJK SC"));
    font.setPixelSize(11);
    report.layout(grid, QSizeF(770, 400), font);
    int pages = 1, heads = 0, listed = 0;
    QSet<QString> pagesListing;
    for (int r = 1; r < grid.rows(); ++r) {
        const bool head = grid.text(r, 3) == QStringLiteral("对方科目");
        heads += head ? 1 : 0;
        if (QDate::fromString(grid.text(r, 1), Qt::ISODate).isValid()) {
            ++listed;
            pagesListing.insert(grid.text(r, 0));
        }
        if (r > 1 && grid.text(r, 0) != grid.text(r - 1, 0)) {
            ++pages;
            EXPECT_FALSE(QDate::fromString(grid.text(r, 1), Qt::ISODate).isValid()) << "page " << pages << " opens on a record";
        }
    }
    EXPECT_GE(pages, 3);
    EXPECT_EQ(heads, int(pagesListing.size())) << "the list's heading on each page it runs over";
    EXPECT_EQ(listed, month.size());
    EXPECT_EQ(grid.text(grid.rows() - 1, 2), QStringLiteral("合计"));
}
