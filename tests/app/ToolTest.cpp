// The command-line tool against the control: for the same book it writes
// the same files and tells the same findings, and exporting text, checking
// and making a voucher run with no GUI at all.
#include "QtPrinters.h"
#include "support/TestDatabase.h"

#include "data/SqlAccess.h"
#include "output/SpreadsheetWriter.h"

#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

struct Ran {
    int rc = -1;
    QString out;
    QString err;
};

enum class Platform {
    None,      ///< a platform no QGuiApplication can start on: only a QCoreApplication runs
    Offscreen  ///< no platform and no display named: the tool picks its own
};

Ran tool(const QStringList &args, Platform platform)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("DISPLAY"));
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    if (platform == Platform::None)
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("no-such-platform"));
    else
        env.remove(QStringLiteral("QT_QPA_PLATFORM"));
    QProcess p;
    p.setProcessEnvironment(env);
    p.start(QStringLiteral(KX_TOOL), args);
    EXPECT_TRUE(p.waitForFinished(120000));
    Ran ran;
    ran.rc = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    ran.out = QString::fromUtf8(p.readAllStandardOutput());
    ran.err = QString::fromUtf8(p.readAllStandardError());
    return ran;
}

QByteArray fileBytes(const QString &path)
{
    QFile f(path);
    EXPECT_TRUE(f.open(QIODevice::ReadOnly)) << qPrintable(path);
    return f.readAll();
}

QByteArray output(const QString &program, const QStringList &args)
{
    QProcess p;
    p.start(program, args);
    EXPECT_TRUE(p.waitForFinished(60000)) << qPrintable(program);
    return p.readAllStandardOutput();
}

// A sample book in a SQLite file, open in a control, with a text too long
// for a spreadsheet cell and a figure wider than its column.
class ToolAndControl : public ::testing::Test
{
protected:
    void SetUp() override
    {
        kx::Database conn = db.open();
        book = kxtest::fillSampleBooks(conn, 300, 1);
        ASSERT_GT(book, 0);
        ASSERT_TRUE(kx::sqlRun(conn, {QStringLiteral("Update kxJournalRecs Set Explain=? Where RecID=(Select max(RecID) From "
                                                     "kxJournalRecs Where DocID=%1)").arg(book),
                                      {QString(kx::SpreadsheetWriter::MaxCellText + 1, QChar(u'长'))}})
                        .ok());
        ASSERT_TRUE(kx::sqlRun(conn, {QStringLiteral("Update kxJournalRecs Set Debit=? Where RecID=(Select min(RecID) From "
                                                     "kxJournalRecs Where DocID=%1 And Debit<>0)").arg(book),
                                      {QStringLiteral("98765432109.87")}})
                        .ok());
        acc = std::make_unique<kx::SqlAccContext>(db.open());
        journal.setAcc(acc.get());
        QObject::connect(&journal, &kx::Journal::Notify, [this](const QString &m, bool box) {
            if (box)
                boxes << m;
        });
    }
    QStringList bookArgs(const QString &command) const
    {
        return {command, QStringLiteral("--db"), db.url(), QStringLiteral("--book"), QStringLiteral("020101")};
    }
    QString path(const QString &name) const { return QDir(folder.path()).filePath(name); }

    kxtest::TestDatabase db{kxtest::Engine::Sqlite};
    std::unique_ptr<kx::SqlAccContext> acc;
    kx::Journal journal;
    QStringList boxes;
    QTemporaryDir folder;
    int book = 0;
};

} // namespace

TEST_F(ToolAndControl, ExportAndPrintWriteWhatTheControlWrites)
{
    ASSERT_TRUE(journal.Load(book));
    // Text needs no GUI: a tool that started one would stop on the unknown platform.
    for (const QString type : {QStringLiteral("csv"), QStringLiteral("tsv")}) {
        const QString mine = path(QStringLiteral("tool.") + type);
        const Ran ran = tool(bookArgs(QStringLiteral("export")) << QStringLiteral("--out") << mine, Platform::None);
        EXPECT_EQ(ran.rc, 0) << qPrintable(ran.err);
        EXPECT_EQ(ran.out, mine + QLatin1Char('\n'));
        ASSERT_TRUE(journal.ExportToFile(path(QStringLiteral("control.") + type), 0));
        const QByteArray written = fileBytes(mine);
        EXPECT_GT(written.size(), 5000);
        EXPECT_EQ(written, fileBytes(path(QStringLiteral("control.") + type))) << qPrintable(type);
    }

    // The spreadsheet's widths are measured in fonts, as the control's are;
    // the cut text is said on stderr as the control says it in a box.
    const Ran xlsx = tool(bookArgs(QStringLiteral("export")) << QStringLiteral("--out") << path(QStringLiteral("tool.xlsx")),
                          Platform::Offscreen);
    EXPECT_EQ(xlsx.rc, 0) << qPrintable(xlsx.err);
    boxes.clear();
    ASSERT_TRUE(journal.ExportToFile(path(QStringLiteral("control.xlsx")), 0));
    ASSERT_EQ(boxes.size(), 1);
    EXPECT_TRUE(xlsx.err.endsWith(QStringLiteral("kxjournal: ") + boxes.first() + QLatin1Char('\n'))) << qPrintable(xlsx.err);
    const QStringList parts = QString::fromUtf8(output(QStringLiteral("unzip"), {QStringLiteral("-Z1"), path(QStringLiteral("control.xlsx"))}))
                                  .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    EXPECT_EQ(QString::fromUtf8(output(QStringLiteral("unzip"), {QStringLiteral("-Z1"), path(QStringLiteral("tool.xlsx"))}))
                  .split(QLatin1Char('\n'), Qt::SkipEmptyParts),
              parts);
    EXPECT_TRUE(parts.contains(QStringLiteral("xl/worksheets/sheet1.xml")));
    for (const QString &part : parts) {
        // The file's own properties say when it was made.
        if (part == u"docProps/core.xml")
            continue;
        // unzip reads a name as a pattern: "[" is meant literally.
        const QString name = QString(part).replace(QLatin1Char('['), QStringLiteral("\\["));
        EXPECT_EQ(output(QStringLiteral("unzip"), {QStringLiteral("-p"), path(QStringLiteral("tool.xlsx")), name}),
                  output(QStringLiteral("unzip"), {QStringLiteral("-p"), path(QStringLiteral("control.xlsx")), name}))
            << qPrintable(part);
    }

    const Ran pdf = tool(bookArgs(QStringLiteral("print")) << QStringLiteral("--out") << path(QStringLiteral("tool.pdf")),
                         Platform::Offscreen);
    EXPECT_EQ(pdf.rc, 0) << qPrintable(pdf.err);
    ASSERT_TRUE(journal.printToPdf(path(QStringLiteral("control.pdf"))));
    const auto text = [this](const QString &name) {
        return output(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), path(name), QStringLiteral("-")});
    };
    EXPECT_TRUE(text(QStringLiteral("tool.pdf")).contains(QStringLiteral("本月合计").toUtf8()));
    EXPECT_EQ(text(QStringLiteral("tool.pdf")), text(QStringLiteral("control.pdf")));
    EXPECT_EQ(fileBytes(path(QStringLiteral("tool.pdf"))).size(), fileBytes(path(QStringLiteral("control.pdf"))).size());
}

TEST_F(ToolAndControl, CheckAndMakeRunWithoutAGuiAndMatchTheControl)
{
    {
        const kx::Database conn = db.open();
        ASSERT_TRUE(kx::sqlRun(conn, {QStringLiteral("Update kxJournalRecs Set JnlDate=? Where RecID=(Select max(RecID) "
                                                     "From kxJournalRecs Where DocID=%1)").arg(book),
                                      {QStringLiteral("2025-01-02")}})
                        .ok());
    }
    ASSERT_TRUE(journal.Load(book));
    boxes.clear();
    EXPECT_FALSE(journal.CheckBook());
    ASSERT_EQ(boxes.size(), 1);
    const kx::GridModel &g = *journal.Grid();
    const int row = g.row();
    const Ran check = tool(bookArgs(QStringLiteral("check")), Platform::None);
    EXPECT_EQ(check.rc, 1);
    EXPECT_EQ(check.out, QString());
    EXPECT_EQ(check.err, QStringLiteral("kxjournal: 020101: 第%1行（%2 %3 %4）%5\n")
                             .arg(row - g.fixedRows() + 1)
                             .arg(g.text(row, QStringLiteral("JnlDate")), g.text(row, QStringLiteral("JnlNo")),
                                  g.text(row, QStringLiteral("Explain")), boxes.first()));

    // A voucher of January's records, as the tool selects them.
    acc->setUserName(QStringLiteral("张三"));
    acc->setDirectorName(QStringLiteral("王会计"));
    acc->setDocTypes(QStringLiteral("收|付"));
    acc->setCurPeriod(QStringLiteral("202501"));
    acc->setPeriodStart(QDate(2025, 1, 1));
    acc->setPeriodEnd(QDate(2025, 1, 31));
    ASSERT_TRUE(journal.Load(book));
    const int dateCol = g.colIndex(QStringLiteral("JnlDate"));
    int first = -1, last = -1;
    for (int r = g.fixedRows(); r < g.rows(); ++r) {
        const QDate day = QDate::fromString(g.text(r, dateCol), Qt::ISODate);
        if (day.isValid() && day >= QDate(2025, 1, 1) && day <= QDate(2025, 1, 31)) {
            first = first < 0 ? r : first;
            last = r;
        }
    }
    ASSERT_GT(last, first);
    journal.Grid()->select(first, g.fixedCols(), last, g.cols() - 1);
    journal.setVoucherFolder(path(QStringLiteral("control")));
    QString made;
    QObject::connect(&journal, &kx::Journal::AfterMaked, [&](const QString &p) { made = p; });
    ASSERT_TRUE(journal.Make());
    const Ran make = tool(bookArgs(QStringLiteral("make"))
                              << QStringLiteral("--from") << QStringLiteral("2025-01-01") << QStringLiteral("--to")
                              << QStringLiteral("2025-01-31") << QStringLiteral("--types") << QStringLiteral("收|付")
                              << QStringLiteral("--user") << QStringLiteral("张三") << QStringLiteral("--director")
                              << QStringLiteral("王会计") << QStringLiteral("--out") << path(QStringLiteral("tool")),
                          Platform::None);
    EXPECT_EQ(make.rc, 0) << qPrintable(make.err);
    ASSERT_TRUE(make.out.endsWith(QStringLiteral(".kxe\n"))) << qPrintable(make.out);
    const QByteArray voucher = fileBytes(make.out.trimmed());
    EXPECT_TRUE(voucher.contains("<Voucher>"));
    EXPECT_EQ(voucher, fileBytes(made));

    // A code page the control does not know: its words, and the exit code 2.
    const Ran codec = tool(bookArgs(QStringLiteral("make"))
                               << QStringLiteral("--from") << QStringLiteral("2025-01-01") << QStringLiteral("--to")
                               << QStringLiteral("2025-01-31") << QStringLiteral("--codec") << QStringLiteral("KLINGON")
                               << QStringLiteral("--out") << path(QStringLiteral("tool")),
                           Platform::None);
    boxes.clear();
    QString said;
    QObject::connect(&journal, &kx::Journal::message, [&](const QString &m) { said = m; });
    journal.setVoucherCodec(QStringLiteral("KLINGON"));
    EXPECT_EQ(codec.rc, 2);
    EXPECT_EQ(codec.err, QStringLiteral("kxjournal: ") + said + QLatin1Char('\n'));
    EXPECT_EQ(QDir(path(QStringLiteral("tool"))).entryList(QDir::Files).size(), 1);
}

// Vouchers per record and per 收/付 type: the tool writes the files the
// control writes, one per voucher, and names each on a line of its own.
TEST_F(ToolAndControl, MakePerRecordOrTypeWritesTheControlsFiles)
{
    acc->setUserName(QStringLiteral("张三"));
    acc->setDocTypes(QStringLiteral("记|收|付"));
    acc->setCurPeriod(QStringLiteral("202501"));
    acc->setPeriodStart(QDate(2025, 1, 1));
    acc->setPeriodEnd(QDate(2025, 1, 31));
    ASSERT_TRUE(journal.Load(book));
    const kx::GridModel &g = *journal.Grid();
    const int dateCol = g.colIndex(QStringLiteral("JnlDate"));
    int first = -1, last = -1;
    for (int r = g.fixedRows(); r < g.rows(); ++r) {
        const QDate day = QDate::fromString(g.text(r, dateCol), Qt::ISODate);
        if (day.isValid() && day >= QDate(2025, 1, 1) && day <= QDate(2025, 1, 31)) {
            first = first < 0 ? r : first;
            last = r;
        }
    }
    ASSERT_GT(last, first);
    QStringList made;
    QObject::connect(&journal, &kx::Journal::AfterMaked, [&](const QString &p) { made << p; });
    for (const QString per : {QStringLiteral("record"), QStringLiteral("type")}) {
        SCOPED_TRACE(per.toStdString());
        made.clear();
        journal.Grid()->select(first, g.fixedCols(), last, g.cols() - 1);
        journal.setVoucherFolder(path(QStringLiteral("control-") + per));
        journal.setVoucherGrouping(per);
        ASSERT_TRUE(journal.Make());
        const Ran ran = tool(bookArgs(QStringLiteral("make"))
                                 << QStringLiteral("--from") << QStringLiteral("2025-01-01") << QStringLiteral("--to")
                                 << QStringLiteral("2025-01-31") << QStringLiteral("--types") << QStringLiteral("记|收|付")
                                 << QStringLiteral("--user") << QStringLiteral("张三") << QStringLiteral("--per") << per
                                 << QStringLiteral("--out") << path(QStringLiteral("tool-") + per),
                             Platform::None);
        EXPECT_EQ(ran.rc, 0) << qPrintable(ran.err);
        const QStringList written = ran.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        EXPECT_EQ(QDir(path(QStringLiteral("tool-") + per)).entryList(QDir::Files).size(), written.size());
        ASSERT_EQ(written.size(), made.size());
        EXPECT_GT(written.size(), 1);
        if (per == QLatin1String("type"))
            EXPECT_EQ(written.size(), 2);
        for (int i = 0; i < written.size(); ++i)
            EXPECT_EQ(fileBytes(written.at(i)), fileBytes(made.at(i))) << i;
    }
}

// A sample of this year has no record in days to come, and the tool says
// nothing on stderr where no desktop session named a runtime folder.
TEST(ToolSample, ThisYearsSampleStopsAtTodayAndTheToolIsQuiet)
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("sample.db"));
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("XDG_RUNTIME_DIR"));
    env.remove(QStringLiteral("DISPLAY"));
    p.setProcessEnvironment(env);
    p.start(QStringLiteral(KX_TOOL), {QStringLiteral("sample"), QStringLiteral("--db"), QStringLiteral("sqlite:") + file,
                                      QStringLiteral("--records"), QStringLiteral("400"), QStringLiteral("--books"),
                                      QStringLiteral("1")});
    ASSERT_TRUE(p.waitForFinished(120000));
    EXPECT_EQ(p.exitCode(), 0);
    EXPECT_EQ(QString::fromUtf8(p.readAllStandardError()), QString());
    const kx::Database db = kx::Database::open(QStringLiteral("sqlite:") + file);
    const QDate last = QDate::fromString(
        kx::sqlScalar(db, {QStringLiteral("SELECT MAX(JnlDate) FROM kxJournalRecs"), {}}).value().toString().left(10),
        Qt::ISODate);
    ASSERT_TRUE(last.isValid());
    EXPECT_LE(last, QDate::currentDate());
    EXPECT_EQ(last.year(), QDate::currentDate().year());
}
