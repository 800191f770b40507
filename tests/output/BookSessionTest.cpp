// A book opened without a control does what the control does: the same
// files, the same findings, the same messages, and no widget made.
#include "QtPrinters.h"
#include "support/TestDatabase.h"

#include "data/SqlAccess.h"
#include "output/BookExporter.h"
#include "output/BookSession.h"
#include "output/SpreadsheetWriter.h"
#include "voucher/VoucherMaker.h"

#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using kxtest::Engine;

namespace {

// Every message a host hears, as the control's message event carries them
// (progress lines apart).
struct Transcript : kx::LedgerHost {
    void prompt(const QString &text, bool box) override { said << (box ? QStringLiteral("[box] ") : QString()) + text; }
    void failure(const QString &text, bool box) override { prompt(text, box); }
    void note(const QString &) override {}
    QStringList said;
};

QByteArray fileBytes(const QString &path)
{
    QFile f(path);
    EXPECT_TRUE(f.open(QIODevice::ReadOnly)) << qPrintable(path);
    return f.readAll();
}

QByteArray run(const QString &program, const QStringList &args)
{
    QProcess p;
    p.start(program, args);
    EXPECT_TRUE(p.waitForFinished(60000)) << qPrintable(program);
    EXPECT_EQ(p.exitCode(), 0) << qPrintable(program + QLatin1Char(' ') + args.join(QLatin1Char(' ')));
    return p.readAllStandardOutput();
}

// The parts of a spreadsheet file and what each holds; the file's own
// properties carry the time it was made and are left out.
QMap<QString, QByteArray> spreadsheetParts(const QString &file)
{
    QMap<QString, QByteArray> parts;
    for (const QByteArray &name : run(QStringLiteral("unzip"), {QStringLiteral("-Z1"), file}).split('\n'))
        if (!name.isEmpty() && name != "docProps/core.xml") {
            // unzip reads a name as a pattern: "[" is meant literally.
            const QString pattern = QString::fromUtf8(name).replace(QLatin1Char('['), QStringLiteral("\\["));
            parts.insert(QString::fromUtf8(name), run(QStringLiteral("unzip"), {QStringLiteral("-p"), file, pattern}));
        }
    return parts;
}

class BookWithoutControl : public ::testing::TestWithParam<Engine>
{
protected:
    void SetUp() override
    {
        testDb = std::make_unique<kxtest::TestDatabase>(GetParam());
        kx::Database db = testDb->open();
        docId = kxtest::fillSampleBooks(db, 400, 1);
        ASSERT_GT(docId, 0);
        // A text longer than a spreadsheet cell holds, and a figure wider than its column.
        ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("Update kxJournalRecs Set Explain=? Where RecID=(Select max(RecID) From "
                                                   "kxJournalRecs Where DocID=%1)").arg(docId),
                                    {QString(kx::SpreadsheetWriter::MaxCellText + 5, QChar(u'长'))}})
                        .ok());
        ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("Update kxJournalRecs Set Debit=? Where RecID=(Select min(RecID) From "
                                                   "kxJournalRecs Where DocID=%1 And Debit<>0)").arg(docId),
                                    {QStringLiteral("98765432109.87")}})
                        .ok());
        controlAcc = std::make_unique<kx::SqlAccContext>(testDb->open());
        sessionAcc = std::make_unique<kx::SqlAccContext>(testDb->open());
        for (kx::SqlAccContext *acc : {controlAcc.get(), sessionAcc.get()}) {
            acc->setCurPeriod(QStringLiteral("202501"));
            acc->setDocTypes(QStringLiteral("记|收|付|转"));
            acc->setUserName(QStringLiteral("张三"));
            acc->setDirectorName(QStringLiteral("王会计"));
        }
        journal.setAcc(controlAcc.get());
        QObject::connect(&journal, &kx::Journal::message, [this](const QString &text, kx::Journal::MessageKind kind) {
            if (kind != kx::Journal::ProgressMessage)
                controlSaid << (kind == kx::Journal::WarningMessage ? QStringLiteral("[box] ") : QString()) + text;
        });
    }

    QString controlFile(const QString &name) const { return QDir(controlDir.path()).filePath(name); }
    QString sessionFile(const QString &name) const { return QDir(sessionDir.path()).filePath(name); }
    // Each side writes to the same paths, so that the messages naming them
    // match; what the session wrote is moved aside first.
    void keepSessionFiles(const QStringList &names) const
    {
        for (const QString &name : names)
            ASSERT_TRUE(QFile::rename(controlFile(name), sessionFile(name))) << qPrintable(name);
    }

    std::unique_ptr<kxtest::TestDatabase> testDb;
    std::unique_ptr<kx::SqlAccContext> controlAcc, sessionAcc;
    int docId = 0;
    kx::Journal journal;
    QStringList controlSaid;
    QTemporaryDir controlDir, sessionDir;
};

} // namespace

TEST_P(BookWithoutControl, WritesTheFilesTheControlWritesAndSaysTheSame)
{
    const QStringList names{QStringLiteral("book.csv"), QStringLiteral("book.tsv"), QStringLiteral("book.xlsx")};
    // The book without a control first: not one widget appears meanwhile.
    const QWidgetList widgetsBefore = QApplication::allWidgets();
    Transcript host;
    kx::BookSession session(sessionAcc.get(), docId, host);
    ASSERT_TRUE(session.load());
    for (const QString &name : names)
        ASSERT_EQ(session.exportTo(controlFile(name), kx::BookExporter::ByName), controlFile(name));
    ASSERT_TRUE(session.printToPdf(controlFile(QStringLiteral("book.pdf"))));
    for (QWidget *w : QApplication::allWidgets())
        EXPECT_TRUE(widgetsBefore.contains(w)) << "a widget was made: " << w->metaObject()->className();
    keepSessionFiles(names + QStringList{QStringLiteral("book.pdf")});

    ASSERT_TRUE(journal.Load(docId));
    for (const QString &name : names)
        ASSERT_TRUE(journal.ExportToFile(controlFile(name), kx::BookExporter::ByName));
    ASSERT_TRUE(journal.printToPdf(controlFile(QStringLiteral("book.pdf"))));

    EXPECT_EQ(session.caption(), journal.Caption());
    EXPECT_EQ(session.sheet().rows(), journal.Grid()->rows() - 1) << "the control keeps one blank row for typing";
    for (int c = 0; c < journal.Grid()->cols(); ++c)
        EXPECT_EQ(session.sheet().colWidth(c), journal.Grid()->colWidth(c)) << qPrintable(journal.Grid()->colKey(c));
    for (const QString &name : {names[0], names[1]}) {
        const QByteArray written = fileBytes(sessionFile(name));
        EXPECT_GT(written.size(), 10000);
        EXPECT_EQ(written, fileBytes(controlFile(name))) << qPrintable(name);
    }
    const QMap<QString, QByteArray> parts = spreadsheetParts(sessionFile(names[2]));
    EXPECT_TRUE(parts.contains(QStringLiteral("xl/worksheets/sheet1.xml")));
    EXPECT_EQ(parts, spreadsheetParts(controlFile(names[2])));

    const auto pdfText = [](const QString &file) {
        return run(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), file, QStringLiteral("-")});
    };
    const QByteArray text = pdfText(sessionFile(QStringLiteral("book.pdf")));
    EXPECT_TRUE(text.contains(QStringLiteral("本月合计").toUtf8()));
    EXPECT_EQ(text, pdfText(controlFile(QStringLiteral("book.pdf"))));
    // The files differ only in the moment they were made.
    const QByteArray pdf = fileBytes(sessionFile(QStringLiteral("book.pdf")));
    EXPECT_EQ(pdf.size(), fileBytes(controlFile(QStringLiteral("book.pdf"))).size());

    // Loading said what was read; exporting, where each file went and that
    // the spreadsheet cut a text.
    EXPECT_TRUE(host.said.contains(QStringLiteral("[box] ") + kx::BookExporter::cutNotice(1)));
    EXPECT_EQ(host.said, controlSaid);
}

TEST_P(BookWithoutControl, ChecksAndMakesAVoucherAsTheControlDoes)
{
    {
        // The last record dated before the others: the check stops there.
        kx::Database db = testDb->open();
        ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("Update kxJournalRecs Set JnlDate=? Where RecID=(Select max(RecID) "
                                                   "From kxJournalRecs Where DocID=%1)").arg(docId),
                                    {QStringLiteral("2025-01-02")}})
                        .ok());
    }
    ASSERT_TRUE(journal.Load(docId));
    Transcript host;
    kx::BookSession session(sessionAcc.get(), docId, host);
    ASSERT_TRUE(session.load());
    EXPECT_FALSE(journal.CheckBook());
    EXPECT_FALSE(session.check());
    EXPECT_GT(session.sheet().row(), session.sheet().fixedRows());
    EXPECT_EQ(session.sheet().row(), journal.Grid()->row());
    EXPECT_TRUE(host.said.contains(QStringLiteral("[box] 记录中有日期顺序错误。")));

    // A voucher of the January records, through the control and without it.
    const kx::GridModel &g = *journal.Grid();
    const int dateCol = g.colIndex(QStringLiteral("JnlDate"));
    int first = -1, last = -1;
    for (int r = g.fixedRows(); r < g.rows(); ++r)
        if (g.text(r, dateCol).startsWith(QLatin1String("2025-01-"))) {
            first = first < 0 ? r : first;
            last = r;
        }
    ASSERT_GT(last, first);
    journal.Grid()->select(first, g.fixedCols(), last, g.cols() - 1);
    session.sheet().select(first, g.fixedCols(), last, g.cols() - 1);
    journal.setVoucherFolder(controlDir.path());
    QString controlMade;
    QObject::connect(&journal, &kx::Journal::AfterMaked, [&](const QString &path) { controlMade = path; });
    ASSERT_TRUE(journal.Make()) << qPrintable(controlSaid.join(QLatin1Char('\n')));
    const kx::Result<QString> made =
        kx::VoucherMaker(session.book()).make(sessionDir.path(), QStringLiteral("GBK"));
    ASSERT_TRUE(made.ok()) << qPrintable(made.error());
    const QByteArray voucher = fileBytes(made.value());
    EXPECT_TRUE(voucher.contains("<Voucher>"));
    EXPECT_EQ(voucher, fileBytes(controlMade));
    EXPECT_EQ(host.said, controlSaid);
}

TEST_P(BookWithoutControl, ABookThatCannotBeReadOrWrittenSaysWhyAsTheControlDoes)
{
    Transcript host;
    // No such book: the load fails with the control's words.
    EXPECT_FALSE(journal.Load(docId + 1000));
    kx::BookSession missing(sessionAcc.get(), docId + 1000, host);
    EXPECT_FALSE(missing.load());
    EXPECT_FALSE(host.said.isEmpty());
    EXPECT_EQ(host.said, controlSaid);

    // A folder that is not there, an unknown kind, the database itself.
    ASSERT_TRUE(journal.Load(docId));
    kx::BookSession session(sessionAcc.get(), docId, host);
    ASSERT_TRUE(session.load());
    const QString nowhere = QDir(controlDir.path()).filePath(QStringLiteral("none/book.csv"));
    EXPECT_FALSE(journal.ExportToFile(nowhere, 1));
    EXPECT_TRUE(session.exportTo(nowhere, 1).isEmpty());
    EXPECT_FALSE(journal.ExportToFile(controlFile(QStringLiteral("book.csv")), 7));
    EXPECT_TRUE(session.exportTo(controlFile(QStringLiteral("book.csv")), 7).isEmpty());
    if (GetParam() == Engine::Sqlite) {
        const QString database = session.databaseFiles().value(0);
        ASSERT_FALSE(database.isEmpty());
        EXPECT_FALSE(journal.printToPdf(database));
        EXPECT_FALSE(session.printToPdf(database));
    }
    EXPECT_FALSE(QFile::exists(nowhere));
    EXPECT_EQ(host.said, controlSaid);
}

INSTANTIATE_TEST_SUITE_P(Engines, BookWithoutControl, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });
