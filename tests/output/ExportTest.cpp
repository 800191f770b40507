// Exporting the book: delimited text read back field by field, a
// spreadsheet opened back, and what the host and the user are told.
#include "editing/EditingBook.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using kxtest::EditingBook;

namespace {

// Fields of RFC 4180 text: quoted fields may hold separators, doubled
// quotes and line breaks; records end with CR LF.
QList<QStringList> parseDelimited(const QString &text, QChar sep)
{
    QList<QStringList> records;
    QStringList record;
    QString field;
    bool quoted = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (quoted) {
            if (c == u'"' && i + 1 < text.size() && text[i + 1] == u'"') {
                field += c;
                ++i;
            } else if (c == u'"') {
                quoted = false;
            } else {
                field += c;
            }
        } else if (c == u'"' && field.isEmpty()) {
            quoted = true;
        } else if (c == sep) {
            record << field;
            field.clear();
        } else if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') {
            record << field;
            records << record;
            record.clear();
            field.clear();
            ++i;
        } else {
            field += c;
        }
    }
    if (!field.isEmpty() || !record.isEmpty())
        records << (record << field);
    return records;
}

// The small bank book, with a February record and one of the next year
// added, so that month and year totals fall in three places.
struct ExportingBook : EditingBook {
    ExportingBook()
    {
        const kx::Database conn = db->open();
        kxtest::BookBuilder more(conn);
        more.record(book, 5, {{QStringLiteral("JnlDate"), QStringLiteral("2025-02-03")},
                              {QStringLiteral("Explain"), QStringLiteral("二月收款")}, {QStringLiteral("Debit"), 300}});
        more.record(book, 6, {{QStringLiteral("JnlDate"), QStringLiteral("2026-01-04")},
                              {QStringLiteral("Explain"), QStringLiteral("新年收款")}, {QStringLiteral("Debit"), 100.125}});
        journal->Load(book);
        QObject::connect(journal.get(), &kx::Journal::AfterExport, [this](const QString &p) { exported << p; });
    }
    QString path(const QString &name) const { return folder.filePath(name); }
    QList<QStringList> readBack(const QString &file, QChar sep) const
    {
        QFile f(file);
        EXPECT_TRUE(f.open(QIODevice::ReadOnly));
        const QByteArray bytes = f.readAll();
        EXPECT_TRUE(bytes.startsWith("\xEF\xBB\xBF")) << "UTF-8 with a byte-order mark";
        return parseDelimited(QString::fromUtf8(bytes.mid(3)), sep);
    }
    // The columns a person sees, as the export must list them.
    QList<int> shownColumns() const
    {
        QList<int> cols;
        for (int c = grid->fixedCols(); c < grid->cols(); ++c)
            if (!grid->isColHidden(c) && grid->colWidth(c) != 0)
                cols << c;
        return cols;
    }
    // A grid row as a sheet shows it: figures with two decimals, a record's
    // date label as its date.
    QStringList expectedRow(int r) const
    {
        QStringList fields;
        for (int c : shownColumns()) {
            const QString key = grid->colKey(c);
            QString t = grid->text(r, c);
            if ((key == u"Debit" || key == u"Credit" || key == u"Balance") && !t.isEmpty())
                t = grid->amount(r, c).format(QStringLiteral("0.00"));
            if (key == u"ShowName" && r > 1)
                t = grid->text(r, col("JnlDate"));
            fields << t;
        }
        return fields;
    }
    // A totals line: \a label in the explanation, the figures, the balance of \a balanceRow.
    QStringList totalRow(const QString &name, const QString &label, const char *debit, const char *credit, int balanceRow) const
    {
        QStringList fields;
        for (int c : shownColumns()) {
            const QString key = grid->colKey(c);
            fields << (key == u"ShowName"  ? name
                       : key == u"Explain" ? label
                       : key == u"Debit"   ? QString::fromLatin1(debit)
                       : key == u"Credit"  ? QString::fromLatin1(credit)
                       : key == u"Dir" || key == u"Balance" ? expectedRow(balanceRow).at(int(shownColumns().indexOf(c)))
                                                             : QString());
        }
        return fields;
    }
    QStringList headers() const
    {
        QStringList h;
        for (int c : shownColumns())
            h << grid->text(0, c);
        return h;
    }
    QTemporaryDir folder;
    QStringList exported;
};

} // namespace

TEST(Export, CommaSeparatedTextReadsBackAsTheGridWithMonthAndYearTotals)
{
    ExportingBook b;
    // Separators, quotes and a line break inside a field are quoted.
    b.grid->setText(2, b.col("Explain"), QStringLiteral("收到\"华南\",货款\n第二行"));
    QSignalSpy progress(b.journal.get(), &kx::Journal::Process);
    const QString file = b.path(QStringLiteral("book.csv"));
    ASSERT_TRUE(b.journal->ExportToFile(file));
    EXPECT_EQ(b.exported, QStringList{file});
    ASSERT_GE(progress.size(), 2);
    EXPECT_EQ(progress.first().at(0).toInt(), 0);
    EXPECT_EQ(progress.last().at(0).toInt(), -1);

    const QList<QStringList> rows = b.readBack(file, u',');
    QList<QStringList> expected{b.headers()};
    for (int r = 1; r <= 4; ++r)
        expected << b.expectedRow(r);
    // The opening row is written with the day it holds, not its "2024年期初" label.
    expected[1][0] = QStringLiteral("2024-12-31");
    // The opening balance is brought in, not turned over: it counts in no total.
    expected << b.totalRow(QStringLiteral("2025年01月"), QStringLiteral("本月合计"), "500.00", "250.00", 4)
             << b.totalRow(QString(), QStringLiteral("本年累计"), "500.00", "250.00", 4) << b.expectedRow(5)
             << b.totalRow(QStringLiteral("2025年02月"), QStringLiteral("本月合计"), "300.00", "0.00", 5)
             << b.totalRow(QString(), QStringLiteral("本年累计"), "800.00", "250.00", 5) << b.expectedRow(6)
             << b.totalRow(QStringLiteral("2026年01月"), QStringLiteral("本月合计"), "100.13", "0.00", 6)
             << b.totalRow(QString(), QStringLiteral("本年累计"), "100.13", "0.00", 6);
    ASSERT_EQ(rows.size(), expected.size());
    for (int i = 0; i < rows.size(); ++i)
        EXPECT_EQ(rows[i], expected[i]) << "line " << i;
    EXPECT_EQ(rows[2][b.headers().indexOf(QStringLiteral("摘要"))], QStringLiteral("收到\"华南\",货款\n第二行"));
    EXPECT_EQ(rows[2][0], QStringLiteral("2025-01-05")) << "dates as yyyy-MM-dd";
    EXPECT_EQ(b.text(1, "ShowName"), QStringLiteral("2024年期初")) << "the grid keeps its label";
}

TEST(Export, SummaryRowsBecomeAMonthAndAYearLine)
{
    ExportingBook b;
    ASSERT_TRUE(b.journal->InsSumRow(4));  // below the last January record: row 5
    ASSERT_TRUE(b.text(5, "Debit").contains(QLatin1Char('\n')));
    const QString file = b.path(QStringLiteral("book.csv"));
    ASSERT_TRUE(b.journal->ExportToFile(file));
    QList<QStringList> rows = b.readBack(file, u',');
    ASSERT_EQ(rows.size(), 1 + 4 + 2 + 2) << "no totals are made up when the book has its own";
    const int explain = int(b.headers().indexOf(QStringLiteral("摘要")));
    const int debit = int(b.headers().indexOf(QStringLiteral("借方金额")));
    const int credit = int(b.headers().indexOf(QStringLiteral("贷方金额")));
    EXPECT_EQ(rows[5][explain], QStringLiteral("本月合计"));
    EXPECT_EQ(rows[6][explain], QStringLiteral("本年累计"));
    // The grid's own two lines: the period, and everything from the opening row on.
    EXPECT_EQ(rows[5][debit], QStringLiteral("1500.00"));
    EXPECT_EQ(rows[5][credit], QStringLiteral("250.00"));
    EXPECT_EQ(rows[6][debit], QStringLiteral("1500.00"));
    EXPECT_EQ(rows[7][debit], QStringLiteral("300.00"));

    // Totals not worked out since the book was read come out as a
    // recalculation would show them, never blank.
    const QString shown = b.text(5, "Debit");
    b.grid->setText(5, b.col("Debit"), QString());
    b.grid->setText(5, b.col("Credit"), QString());
    ASSERT_TRUE(b.journal->ExportToFile(file));
    rows = b.readBack(file, u',');
    EXPECT_EQ(rows[5][debit], QStringLiteral("1500.00")) << qPrintable(shown);
    EXPECT_EQ(rows[5][credit], QStringLiteral("250.00"));
    EXPECT_EQ(rows[6][debit], QStringLiteral("1500.00"));
}

TEST(Export, TotalsAreLabelledWithoutTheExplanationAndNumbersStayAsTyped)
{
    ExportingBook b;
    b.grid->setColHidden(b.col("Explain"), true);
    const int rate = b.col("Rate");
    b.grid->setColHidden(rate, false);
    b.grid->setColWidth(rate, -1);  // the view's default width
    b.grid->setText(2, rate, QStringLiteral("6.897512"));
    const QString file = b.path(QStringLiteral("book.csv"));
    ASSERT_TRUE(b.journal->ExportToFile(file));
    const QList<QStringList> rows = b.readBack(file, u',');
    const int no = int(b.headers().indexOf(QStringLiteral("单据号")));
    ASSERT_GE(no, 0);
    EXPECT_FALSE(b.headers().contains(QStringLiteral("摘要")));
    EXPECT_EQ(rows[5][no], QStringLiteral("本月合计")) << "a total line says what it is in the first text column";
    EXPECT_EQ(rows[6][no], QStringLiteral("本年累计"));
    const int rateAt = int(b.headers().indexOf(QStringLiteral("汇率")));
    ASSERT_GE(rateAt, 0) << "a column at the default width is shown";
    EXPECT_EQ(rows[2][rateAt], QStringLiteral("6.897512"));
}

TEST(Export, TheKindOfFileFollowsTheTypeOrTheName)
{
    ExportingBook b;
    const auto separatorOf = [&](const QString &name, int type) {
        EXPECT_TRUE(b.journal->ExportToFile(b.path(name), type)) << qPrintable(name);
        QFile f(b.path(name));
        EXPECT_TRUE(f.open(QIODevice::ReadOnly));
        const QByteArray head = f.readLine();
        return head.contains('\t') ? '\t' : head.contains(',') ? ',' : head.startsWith("PK") ? 'z' : '?';
    };
    EXPECT_EQ(separatorOf(QStringLiteral("a.tsv"), 0), '\t');
    EXPECT_EQ(separatorOf(QStringLiteral("a.TXT"), 0), '\t');
    EXPECT_EQ(separatorOf(QStringLiteral("a.dat"), 0), ',');
    EXPECT_EQ(separatorOf(QStringLiteral("b.csv"), 2), '\t') << "a type given wins over the name";
    EXPECT_EQ(separatorOf(QStringLiteral("b.tsv"), 1), ',');
    EXPECT_EQ(separatorOf(QStringLiteral("c.bin"), 3), 'z');
    EXPECT_FALSE(b.journal->ExportToFile(b.path(QStringLiteral("d.csv")), 4));
    EXPECT_TRUE(b.said.last().contains(QStringLiteral("导出类型 4 不对"))) << qPrintable(b.said.last());
    EXPECT_FALSE(QFile::exists(b.path(QStringLiteral("d.csv"))));
}

TEST(Export, TheSpreadsheetHoldsNumbersDatesAndAFrozenHeader)
{
    ExportingBook b;
    const QString file = b.path(QStringLiteral("book.xlsx"));
    ASSERT_TRUE(b.journal->ExportToFile(file));
    const auto part = [&](const char *name) {
        QProcess unzip;
        unzip.start(QStringLiteral("unzip"), {QStringLiteral("-p"), file, QString::fromLatin1(name)});
        EXPECT_TRUE(unzip.waitForFinished(20000));
        return QString::fromUtf8(unzip.readAllStandardOutput());
    };
    const QString sheet = part("xl/worksheets/sheet1.xml");
    const QString styles = part("xl/styles.xml");
    ASSERT_FALSE(sheet.isEmpty());
    EXPECT_TRUE(styles.contains(QStringLiteral("formatCode=\"#,##0.00\"")));
    EXPECT_TRUE(styles.contains(QStringLiteral("formatCode=\"yyyy-mm-dd\"")));
    EXPECT_TRUE(sheet.contains(QStringLiteral("ySplit=\"2\""))) << "caption and headers stay in view";
    EXPECT_TRUE(sheet.contains(QStringLiteral("2025-01-05 至 2026-01-04"))) << "the caption line names the period";
    EXPECT_TRUE(sheet.contains(b.journal->Caption().trimmed()));
    EXPECT_TRUE(sheet.contains(QStringLiteral("<col "))) << "column widths";

    // Amounts are numbers (no t= attribute), not texts; the shown date
    // column holds dates (serial day numbers).
    const QChar debitCol = QChar(u'A' + int(b.headers().indexOf(QStringLiteral("借方金额"))));
    const QRegularExpression debitCell(QStringLiteral("<c r=\"%1(\\d+)\" s=\"\\d+\"><v>([^<]*)</v></c>").arg(debitCol));
    QStringList debits;
    for (auto m = debitCell.globalMatch(sheet); m.hasNext();)
        debits << m.next().captured(2);
    EXPECT_EQ(debits, (QStringList{QStringLiteral("1000"), QStringLiteral("500"), QStringLiteral("500"),
                                   QStringLiteral("500"), QStringLiteral("300"), QStringLiteral("300"),
                                   QStringLiteral("800"), QStringLiteral("100.13"), QStringLiteral("100.13"),
                                   QStringLiteral("100.13")}));
    EXPECT_TRUE(sheet.contains(QStringLiteral("<c r=\"A4\" s=\""))) << "row 4 is the first dated record";
    EXPECT_TRUE(QRegularExpression(QStringLiteral("<c r=\"A4\" s=\"\\d+\"><v>45662</v>")).match(sheet).hasMatch())
        << "2025-01-05 as a spreadsheet day";
}

// A spreadsheet cell holds 32,767 characters: a longer text is cut there,
// whole characters kept, and the user is told; delimited text keeps it all.
TEST(Export, ATextTooLongForASpreadsheetCellIsCutAndSaidSo)
{
    ExportingBook b;
    const QString longText = QStringLiteral("超长摘要😀").repeated(8000);  // 48,000 UTF-16 units
    b.grid->setText(3, b.col("Explain"), longText);
    QStringList boxes;
    QObject::connect(b.journal.get(), &kx::Journal::Notify, [&](const QString &m, bool box) {
        if (box)
            boxes << m;
    });
    const QString file = b.path(QStringLiteral("long.xlsx"));
    ASSERT_TRUE(b.journal->ExportToFile(file));
    ASSERT_EQ(boxes.size(), 1);
    EXPECT_TRUE(boxes.first().contains(QStringLiteral("32767"))) << qPrintable(boxes.first());
    EXPECT_TRUE(boxes.first().contains(QStringLiteral("有 1 段"))) << qPrintable(boxes.first());
    QProcess unzip;
    unzip.start(QStringLiteral("unzip"), {QStringLiteral("-p"), file, QStringLiteral("xl/worksheets/sheet1.xml")});
    ASSERT_TRUE(unzip.waitForFinished(20000));
    const QString strings = QString::fromUtf8(unzip.readAllStandardOutput());
    const QRegularExpression cut(QStringLiteral("<t[^>]*>(超长摘要[^<]*)</t>"));
    const QString kept = cut.match(strings).captured(1);
    EXPECT_TRUE(longText.startsWith(kept));
    EXPECT_LE(kept.size(), 32767);
    EXPECT_GE(kept.size(), 32766) << "at most half a character less";

    boxes.clear();
    const QString csv = b.path(QStringLiteral("long.csv"));
    ASSERT_TRUE(b.journal->ExportToFile(csv));
    EXPECT_TRUE(boxes.isEmpty());
    bool whole = false;
    for (const QStringList &record : b.readBack(csv, QLatin1Char(',')))
        whole = whole || record.contains(longText);
    EXPECT_TRUE(whole);
}

TEST(Export, AVetoOrAnUnwritablePlaceWritesNothing)
{
    ExportingBook b;
    bool veto = true;
    QStringList asked;
    QObject::connect(b.journal.get(), &kx::Journal::CommandExecute, [&](const QString &name, bool &cancel) {
        asked << name;
        cancel = veto && name == u"Export";
    });
    EXPECT_FALSE(b.journal->ExportToFile(b.path(QStringLiteral("v.csv"))));
    EXPECT_EQ(asked, QStringList{QStringLiteral("Export")});
    EXPECT_FALSE(QFile::exists(b.path(QStringLiteral("v.csv"))));
    EXPECT_TRUE(b.exported.isEmpty());

    veto = false;
    for (const QString &bad : {b.path(QStringLiteral("missing/folder/x.csv")), b.path(QStringLiteral("missing/x.xlsx")),
                               b.folder.path()}) {
        EXPECT_FALSE(b.journal->ExportToFile(bad)) << qPrintable(bad);
        EXPECT_TRUE(b.said.last().startsWith(QStringLiteral("不能写入文件"))) << qPrintable(b.said.last());
    }
    EXPECT_FALSE(QFileInfo::exists(b.path(QStringLiteral("missing"))));
    EXPECT_TRUE(b.exported.isEmpty());
    // What a failed export leaves in place is what was there before.
    QFile old(b.path(QStringLiteral("keep.csv")));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("older export");
    old.close();
    EXPECT_FALSE(b.journal->ExportToFile(old.fileName(), 9));
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    EXPECT_EQ(old.readAll(), QByteArray("older export"));
    EXPECT_EQ(QDir(b.folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("keep.csv")})
        << "no temporary file is left behind";
}

TEST(Export, ExportAsksForTheNameAndTheMenuItemDoesTheSame)
{
    ExportingBook b;
    QStringList suggested;
    QString answer = b.path(QStringLiteral("chosen"));
    b.journal->setFileNameAsker([&](const QString &s) {
        suggested << s;
        return answer;
    });
    b.journal->Export(3);
    ASSERT_EQ(suggested.size(), 1);
    EXPECT_TRUE(suggested[0].endsWith(QStringLiteral("基本户.xlsx"))) << qPrintable(suggested[0]);
    EXPECT_EQ(b.exported, QStringList{b.path(QStringLiteral("chosen.xlsx"))}) << "the type's extension is added";
    EXPECT_TRUE(QFile::exists(b.path(QStringLiteral("chosen.xlsx"))));

    answer.clear();
    b.journal->Export(0);
    EXPECT_EQ(b.exported.size(), 1) << "an empty answer cancels";

    answer = b.path(QStringLiteral("menu.tsv"));
    kxtest::runMenuItem(*b.journal, "mnuExport");
    EXPECT_EQ(suggested.size(), 3);
    EXPECT_EQ(b.exported.last(), answer);
}
