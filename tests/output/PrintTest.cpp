// Printing the book: pages as paper journals keep them, read back from the
// PDF's text, and the print grid the pages were laid out in.
#include "output/BookSheet.h"
#include "output/PageLayout.h"
#include "support/SampleJournal.h"
#include "support/TestDatabase.h"

#include "grid/Sheet.h"
#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QDialog>
#include <QDir>
#include <QMenu>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <gtest/gtest.h>

using kx::Currency;

namespace {

QString run(const QString &program, const QStringList &args)
{
    QProcess p;
    p.start(program, args);
    EXPECT_TRUE(p.waitForFinished(60000)) << qPrintable(program);
    return QString::fromUtf8(p.readAllStandardOutput());
}

// The PDF's text, page by page, as a reader of the file gets it.
QStringList pdfPages(const QString &file)
{
    const QString text = run(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), file, QStringLiteral("-")});
    QStringList pages = text.split(QLatin1Char('\f'));
    if (!pages.isEmpty() && pages.last().trimmed().isEmpty())
        pages.removeLast();
    return pages;
}

// The figures of the first line of \a page holding \a label: debit, credit, balance.
QList<Currency> figuresOf(const QString &page, const QString &label)
{
    static const QRegularExpression figure(QStringLiteral("-?[0-9][0-9,]*\\.[0-9]{2}"));
    QList<Currency> values;
    for (const QString &line : page.split(QLatin1Char('\n'))) {
        if (!line.contains(label))
            continue;
        for (auto m = figure.globalMatch(line); m.hasNext();)
            values << Currency::fromText(m.next().captured()).valueOr(Currency::invalid());
        break;
    }
    return values;
}

// The foot of page \a page of \a pages, "第 n 页 共 m 页", its blanks optional.
QRegularExpression pageWords(int page, int pages)
{
    return QRegularExpression(QStringLiteral("第 ?%1 ?页 ?共 ?%2 ?页").arg(page).arg(pages));
}

// A year's sample bank book of 200 records with its monthly sub-totals, open in a control.
struct PrintingBook : kxtest::SampleJournal {
    PrintingBook() : SampleJournal(200) {}
    QString pdf(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }
    // The print grid's text of the line \a r in the column keyed \a key.
    QString printed(int r, const char *key) const
    {
        const kx::Sheet *g = kx::Sheet::of(journal.PrintGrid());
        return g->text(r, g->colIndex(QString::fromLatin1(key)));
    }
};

} // namespace

TEST(Print, PagesCarryTheirFiguresForwardAsPaperJournalsDo)
{
    PrintingBook b;
    kx::Sheet *grid = kx::Sheet::of(b.journal.Grid());
    // One explanation long enough to wrap inside its column.
    const QString longText = QStringLiteral("收到华南公司货款，").repeated(12) + QStringLiteral("尾声");
    grid->setText(5, grid->colIndex(QStringLiteral("Explain")), longText);
    const QString file = b.pdf("book.pdf");
    ASSERT_TRUE(b.journal.printToPdf(file)) << qPrintable(b.said.join(QLatin1Char('\n')));

    const kx::Sheet *fg1 = kx::Sheet::of(b.journal.PrintGrid());
    const int pages = int(fg1->number(fg1->rows() - 1, 0));
    ASSERT_GT(pages, 3);
    EXPECT_TRUE(run(QStringLiteral("pdfinfo"), {file}).contains(QStringLiteral("Pages:           %1").arg(pages)));
    EXPECT_TRUE(run(QStringLiteral("pdfinfo"), {file}).contains(QStringLiteral("842 x 595 pts"))) << "A4 on its side";
    const QStringList text = pdfPages(file);
    ASSERT_EQ(text.size(), pages);

    // Every record is on paper once; every page has the caption, the period and the headers.
    int records = 0, dataRows = 0;
    for (int r = 1; r < fg1->rows(); ++r)
        records += !fg1->isSubtotal(r);
    for (int r = grid->fixedRows(); r < grid->rows(); ++r)
        dataRows += !grid->text(r, grid->colIndex(QStringLiteral("ShowName"))).isEmpty() &&
                    grid->number(r, grid->colIndex(QStringLiteral("Tag"))) >= 0;
    EXPECT_EQ(records, dataRows);
    for (int p = 0; p < pages; ++p) {
        EXPECT_TRUE(text[p].contains(b.journal.Caption().trimmed().section(QLatin1Char('\\'), -1))) << "page " << p + 1;
        EXPECT_TRUE(text[p].contains(QStringLiteral("期间："))) << "page " << p + 1;
        EXPECT_TRUE(text[p].contains(QStringLiteral("借方金额"))) << "page " << p + 1;
        // "第 n 页 共 m 页" as printed; the text tool may drop its blanks, nothing else.
        EXPECT_TRUE(text[p].contains(pageWords(p + 1, pages))) << "page " << p + 1;
        EXPECT_EQ(text[p].contains(QStringLiteral("过次页")), p + 1 < pages) << "page " << p + 1;
        EXPECT_EQ(text[p].contains(QStringLiteral("承前页")), p > 0) << "page " << p + 1;
    }
    // The text layer holds the characters a person reads: 页, 日, 月, never
    // the radicals that share their glyphs; and the face is a Simplified Chinese one.
    const QString all = text.join(QLatin1Char('\f'));
    const auto radical = std::find_if(all.begin(), all.end(), [](QChar c) { return c.unicode() >= 0x2E80 && c.unicode() <= 0x2FDF; });
    EXPECT_EQ(radical, all.end()) << "a radical U+" << QString::number(radical == all.end() ? 0 : radical->unicode(), 16).toStdString()
                                  << " near: " << all.mid(std::max<qsizetype>(0, radical - all.begin() - 10), 20).toStdString();
    for (const char *word : {"过次页", "承前页", "日期", "本月合计", "本年累计"})
        EXPECT_TRUE(all.contains(QString::fromUtf8(word))) << word;
    EXPECT_TRUE(run(QStringLiteral("pdffonts"), {file}).contains(QStringLiteral("CJKsc"))) << qPrintable(run(QStringLiteral("pdffonts"), {file}));

    // What a page carries over is what the next one brings forward.
    for (int p = 0; p + 1 < pages; ++p) {
        const QList<Currency> out = figuresOf(text[p], QStringLiteral("过次页"));
        ASSERT_EQ(out.size(), 3) << "page " << p + 1;
        EXPECT_EQ(figuresOf(text[p + 1], QStringLiteral("承前页")), out) << "page " << p + 2;
    }
    // And what it carries is what it brought in plus its own records, up to
    // the month's totals; the balance is the last record's.
    int r = 1;
    Currency debit, credit;
    QString balance;
    for (; r < fg1->rows(); ++r) {
        const QString label = b.printed(r, "Explain");
        const Currency d = Currency::fromText(b.printed(r, "Debit")).valueOr(Currency());
        const Currency c = Currency::fromText(b.printed(r, "Credit")).valueOr(Currency());
        if (label == QLatin1String("过次页")) {
            EXPECT_EQ(d, debit) << "line " << r;
            EXPECT_EQ(c, credit) << "line " << r;
            EXPECT_EQ(b.printed(r, "Balance"), balance) << "line " << r;
        } else if (label == QLatin1String("本月合计")) {
            EXPECT_EQ(d, debit) << "a month total is the sum of its lines, line " << r;
            EXPECT_EQ(c, credit);
        } else if (label == QLatin1String("本年累计")) {
            debit = credit = Currency();
        } else if (label != QLatin1String("承前页")) {
            debit += d;
            credit += c;
            balance = b.printed(r, "Balance");
        }
    }
    // The long explanation wraps: its line is taller, and all of it is printed.
    int tall = 0;
    for (r = 1; r < fg1->rows(); ++r)
        if (b.printed(r, "Explain") == longText)
            tall = fg1->rowHeight(r);
    EXPECT_GE(tall, 2 * fg1->rowHeight(0));
    EXPECT_TRUE(text.join(QString()).contains(QStringLiteral("尾声")));
    EXPECT_TRUE(fg1->colAlignment(fg1->colIndex(QStringLiteral("Debit"))) & Qt::AlignRight);
}

TEST(Print, AfterTheYearLineNothingIsCarriedAndLongTextsShowTheyAreCut)
{
    PrintingBook b;
    kx::Sheet *grid = kx::Sheet::of(b.journal.Grid());
    // A page that ends on the year line carries nothing of the month before.
    QList<QPair<QString, Currency>> carried;
    kx::BookSheet(*grid).forEachRow([&](const kx::BookSheet::Row &row) {
        if (row.kind == kx::BookSheet::Row::YearTotal)
            carried << qMakePair(QStringLiteral("year"), row.carriedDebit + row.carriedCredit);
    });
    ASSERT_FALSE(carried.isEmpty());
    for (const auto &c : carried)
        EXPECT_TRUE(c.second.isZero());

    // An explanation longer than a page is cut to the page and ends in "…".
    const QString endless = QStringLiteral("很长的摘要").repeated(2000) + QStringLiteral("结尾");
    grid->setText(5, grid->colIndex(QStringLiteral("Explain")), endless);
    ASSERT_TRUE(b.journal.printToPdf(b.pdf("long.pdf")));
    const kx::Sheet *fg1 = kx::Sheet::of(b.journal.PrintGrid());
    bool found = false;
    for (int r = 1; r < fg1->rows(); ++r) {
        const QString shown = b.printed(r, "Explain");
        if (!shown.startsWith(QStringLiteral("很长的摘要")))
            continue;
        found = true;
        EXPECT_TRUE(shown.endsWith(QChar(0x2026)));
        EXPECT_LT(shown.size(), endless.size());
        EXPECT_LT(fg1->rowHeight(r), int(kx::PageLayout::defaultArea().height()));
    }
    EXPECT_TRUE(found);
}

TEST(Print, AVetoOrAnUnwritablePlacePrintsNothing)
{
    PrintingBook b;
    bool veto = true;
    QObject::connect(&b.journal, &kx::Journal::CommandExecute,
                     [&](const QString &name, bool &cancel) { cancel = veto && name == u"Print"; });
    EXPECT_FALSE(b.journal.printToPdf(b.pdf("v.pdf")));
    EXPECT_FALSE(QFile::exists(b.pdf("v.pdf")));
    veto = false;
    EXPECT_FALSE(b.journal.printToPdf(b.pdf("no/such/folder/x.pdf")));
    EXPECT_TRUE(b.said.last().startsWith(QStringLiteral("不能写入文件"))) << qPrintable(b.said.last());
    EXPECT_TRUE(QDir(b.folder.path()).isEmpty());
}

TEST(Print, AnEmptyBookPrintsOnePageOfHeads)
{
    PrintingBook b;
    kx::Sheet *grid = kx::Sheet::of(b.journal.Grid());
    grid->setRows(grid->fixedRows());
    ASSERT_TRUE(b.journal.printToPdf(b.pdf("empty.pdf")));
    EXPECT_EQ(pdfPages(b.pdf("empty.pdf")).size(), 1);
    EXPECT_TRUE(pdfPages(b.pdf("empty.pdf")).value(0).contains(pageWords(1, 1)));
}

TEST(Print, TheMenuOpensAPreviewOfThePages)
{
    PrintingBook b;
    b.journal.resize(900, 500);
    b.journal.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&b.journal));
    b.journal.contextMenu()->popup(QPoint(0, 0));
    b.journal.menuAction(QStringLiteral("mnuPrint"))->trigger();
    b.journal.contextMenu()->hide();
    auto *preview = b.journal.findChild<QDialog *>(QStringLiteral("printPreview"));
    ASSERT_NE(preview, nullptr);
    QTRY_VERIFY(preview->isVisible());
    QTRY_VERIFY(b.journal.PrintGrid()->rows() > 1);  // laid out for the preview's pages
    preview->close();
    QTRY_VERIFY(b.journal.findChild<QDialog *>(QStringLiteral("printPreview")) == nullptr);
}
