#include "BankTool.h"

#include "ToolBook.h"
#include "bank/Reconciliation.h"
#include "bank/ReconciliationReport.h"
#include "bank/StatementMatcher.h"
#include "bank/StatementReader.h"
#include "bank/StatementStore.h"
#include "ledger/Book.h"
#include "output/DailyReport.h"
#include "output/DailyReportWriter.h"
#include "output/FileOutput.h"

#include <QFileInfo>
#include <QSaveFile>
#include <QStringEncoder>
#include <QSet>
#include <cstdio>

namespace {

int failWith(const QString &code, const QString &why)
{
    QString line = why;
    line.replace(QLatin1Char('\n'), QLatin1Char(' ')).remove(QLatin1Char('\r'));
    std::fprintf(stderr, "kxjournal: %s: %s\n", qPrintable(code), qPrintable(line));
    return 1;
}

// The layout asked for: one given as stored, or the book's remembered one by its name.
kx::Result<std::optional<kx::ColumnMapping>> layoutNamed(kx::StatementStore &store, int docId, const QString &name)
{
    if (name.isEmpty())
        return std::optional<kx::ColumnMapping>();
    if (const std::optional<kx::ColumnMapping> given = kx::ColumnMapping::fromString(name))
        return given;
    const kx::Result<std::optional<kx::ColumnMapping>> kept = store.mapping(docId);
    if (!kept.ok())
        return kx::Error(kept.error());
    if (kept.value() && kept.value()->name == name)
        return kept.value();
    return kx::Error(QStringLiteral("这本账没有名为“%1”的对账单格式。").arg(name));
}

} // namespace

namespace BankTool {

int importStatement(const QString &url, const QString &code, const QString &file, const QString &mapping)
{
    ToolBook book;
    if (!book.open(url, code))
        return 1;
    kx::Database &db = book.context().Connection();
    kx::StatementStore store(db);
    const kx::Result<std::optional<kx::ColumnMapping>> asked = layoutNamed(store, book.bookId(), mapping);
    if (!asked.ok())
        return failWith(code, asked.error());
    kx::Result<kx::Statement> read = kx::StatementReader::read(file, asked.value());
    if (!read.ok() && !asked.value()) {
        // A header not recognised: the layout confirmed for this book before.
        const kx::Result<std::optional<kx::ColumnMapping>> kept = store.mapping(book.bookId());
        if (kept.ok() && kept.value()) {
            kx::Result<kx::Statement> again = kx::StatementReader::read(file, kept.value());
            if (again.ok())
                read = again;
        }
    }
    if (!read.ok())
        return failWith(code, QFileInfo(file).fileName() + QStringLiteral("：") + read.error());
    const kx::Statement &statement = read.value();
    // The layout given, or the one the first file's header told, is the book's from now on.
    std::optional<kx::ColumnMapping> keep = asked.value();
    if (!keep && statement.mapping) {
        const kx::Result<std::optional<kx::ColumnMapping>> kept = store.mapping(book.bookId());
        if (kept.ok() && !kept.value())
            keep = statement.mapping;
    }
    if (keep)
        if (const kx::Result<void> kept = store.rememberMapping(book.bookId(), *keep); !kept.ok())
            return failWith(code, kept.error());
    const kx::Result<kx::ImportOutcome> done =
        store.import(book.bookId(), statement, QFileInfo(file).fileName(), book.context().UserName());
    if (!done.ok())
        return failWith(code, done.error());
    const kx::ImportOutcome &o = done.value();
    if (o.again) {
        std::printf("kxjournal: %s: 读入 %d 行，导入 0 行：这个文件已经在 %s 导入过了，没有再导入。\n", qPrintable(code), o.read,
                    qPrintable(o.before));
        return 0;
    }
    std::printf("kxjournal: %s: 读入 %d 行，导入 %d 行，跳过 %d 行（已经导入过）。\n", qPrintable(code), o.read, o.added,
                o.skipped);
    if (!statement.mappingUsed.isEmpty())
        std::printf("kxjournal: %s: 取用的列：%s\n", qPrintable(code), qPrintable(statement.mappingUsed));
    if (!statement.balanceBreaks.isEmpty()) {
        QStringList at;
        for (int line : statement.balanceBreaks)
            at << QString::number(line);
        std::printf("kxjournal: %s: 余额接不上的行：第 %s 行，请核对对账单。\n", qPrintable(code),
                    qPrintable(at.join(QStringLiteral("、"))));
    }
    return 0;
}

int sampleStatement(const QString &url, const QString &code, const QDate &to, const QString &out)
{
    return ToolBook::run(url, code, [&](ToolBook &book) {
        QList<kx::BankRecord> records = kx::BankRecord::of(book.session().book());
        std::stable_sort(records.begin(), records.end(),
                         [](const kx::BankRecord &a, const kx::BankRecord &b) { return a.date < b.date; });
        QList<kx::StatementLine> lines;
        int kept = 0;
        for (const kx::BankRecord &r : records) {
            const QDate day = r.date.addDays(1);
            if (r.date < QDate(to.year(), 1, 1) || day > to.addDays(-3) || ++kept % 17 == 0)
                continue;  // before the year, not yet at the bank, or the odd one the bank has not booked
            kx::StatementLine l;
            l.date = day;
            l.side = r.side;
            l.amount = r.amount;
            l.reference = QStringLiteral("2%1%2").arg(day.toString(QStringLiteral("MMdd"))).arg(r.recId, 6, 10, QLatin1Char('0'));
            l.memo = r.explain;
            lines << l;
        }
        for (int m = 3; m <= to.month(); m += 3) {
            kx::StatementLine interest;
            interest.date = QDate(to.year(), m, 21);
            interest.side = kx::StatementSide::Receipt;
            interest.amount = kx::Currency::fromText(QStringLiteral("%1.%2").arg(100 + m * 7).arg(m * 3 % 100, 2, 10, QLatin1Char('0'))).valueOr(kx::Currency());
            interest.reference = QStringLiteral("JX%1").arg(m, 2, 10, QLatin1Char('0'));
            interest.memo = QStringLiteral("结息");
            lines << interest;
        }
        kx::StatementLine fee;
        fee.date = to.addDays(-4);
        fee.side = kx::StatementSide::Payment;
        fee.amount = kx::Currency::fromText(QStringLiteral("12.50")).valueOr(kx::Currency());
        fee.reference = QStringLiteral("SXF01");
        fee.memo = QStringLiteral("账户管理费");
        lines << fee;
        std::stable_sort(lines.begin(), lines.end(),
                         [](const kx::StatementLine &a, const kx::StatementLine &b) { return a.date < b.date; });
        kx::Currency balance = kx::Reconciliation::balanceOf(book.session().book(), QDate(to.year() - 1, 12, 31));
        QStringList text{QStringLiteral("账号：6222020200012345678"), QStringLiteral("户名：%1").arg(book.session().state().book.journalName),
                         QStringLiteral("起止日期：%1至%2").arg(QDate(to.year(), 1, 1).toString(Qt::ISODate), to.toString(Qt::ISODate)),
                         QStringLiteral("交易日期,摘要,收入金额,支出金额,余额,对方户名,对方账号,交易流水号")};
        for (const kx::StatementLine &l : lines) {
            const bool in = l.side == kx::StatementSide::Receipt;
            balance = in ? balance + l.amount : balance - l.amount;
            QString memo = l.memo;
            memo.replace(QLatin1Char('"'), QStringLiteral("\"\""));
            text << QStringLiteral("%1,\"%2\",%3,%4,%5,,,%6")
                        .arg(l.date.toString(QStringLiteral("yyyyMMdd")), memo, in ? l.amount.toString() : QString(),
                             in ? QString() : l.amount.toString(), balance.toString(), l.reference);
        }
        text << QStringLiteral("合计,,,,,,,");
        QSaveFile file(out);
        QStringEncoder gbk("GBK");
        const QByteArray bytes = gbk.encode(text.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n"));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
            return failWith(code, QStringLiteral("不能写出文件“%1”。").arg(out));
        std::printf("kxjournal: %s: 对账单 %d 行已写入 %s\n", qPrintable(code), int(lines.size()), qPrintable(out));
        return 0;
    });
}

int reconcile(const QString &url, const QString &code, const QDate &to, bool autoMatch, const QString &out,
              const QString &user)
{
    return ToolBook::run(url, code, [&](ToolBook &book) {
        kx::Database &db = book.context().Connection();
        kx::Book &loaded = book.session().book();
        kx::StatementStore store(db);
        if (autoMatch) {
            const kx::Result<QList<kx::StoredLine>> lines = store.lines(book.bookId());
            const kx::Result<QMultiHash<int, int>> matches = store.matches(book.bookId());
            if (!lines.ok() || !matches.ok())
                return failWith(code, lines.ok() ? matches.error() : lines.error());
            QSet<int> doneLines, doneRecords;
            for (auto it = matches.value().cbegin(); it != matches.value().cend(); ++it) {
                doneLines.insert(it.key());
                doneRecords.insert(it.value());
            }
            const kx::StatementMatcher::Outcome found =
                kx::StatementMatcher::match(lines.value(), kx::BankRecord::of(loaded), doneLines, doneRecords);
            if (const kx::Result<void> kept = store.match(found.pairs, user, true); !kept.ok())
                return failWith(code, kept.error());
            std::printf("kxjournal: %s: 自动勾对 %d 笔", qPrintable(code), int(found.pairs.size()));
            if (found.ambiguous > 0)
                std::printf("，%d 笔对账单有不止一种勾法，留待人工勾对", found.ambiguous);
            std::printf("。\n");
        }
        const kx::Result<kx::Reconciliation> made = kx::Reconciliation::of(loaded, db, to);
        if (!made.ok())
            return failWith(code, made.error());
        const kx::Reconciliation &r = made.value();
        const kx::Result<void> written = kx::ReconciliationReport(r, user).write(out, book.session().databaseFiles());
        if (!written.ok())
            return failWith(code, written.error());
        const QString adjusted = r.adjustedBook().format(QStringLiteral("#,##0.00"));
        if (r.difference().isZero())
            std::printf("kxjournal: %s: 截至 %s，调节后余额 %s，两边相符；余额调节表已写入 %s\n", qPrintable(code),
                        qPrintable(to.toString(Qt::ISODate)), qPrintable(adjusted), qPrintable(out));
        else
            std::printf("kxjournal: %s: 截至 %s，调节后余额日记账 %s、银行 %s，相差 %s；余额调节表已写入 %s\n",
                        qPrintable(code), qPrintable(to.toString(Qt::ISODate)), qPrintable(adjusted),
                        qPrintable(r.adjustedBank().format(QStringLiteral("#,##0.00"))),
                        qPrintable(r.difference().format(QStringLiteral("#,##0.00"))), qPrintable(out));
        return 0;
    });
}

int daily(const QString &url, const QString &code, const QDate &from, const QDate &to, const QString &out, bool rows,
          const QString &preparer)
{
    const QString who = code.isEmpty() ? QStringLiteral("daily") : code;
    if (!kx::DailyReportWriter::knowsExtension(out))
        return failWith(who, QStringLiteral("资金日报表只能写成 .pdf、.xlsx 或 .csv 文件：%1").arg(out));
    ToolBook book;
    int root = 0;
    if (!code.isEmpty()) {
        if (!book.open(url, code))
            return 1;
        root = book.bookId();
    } else if (url.startsWith(QLatin1String("sqlite:")) && !QFileInfo::exists(url.mid(7))) {
        return failWith(who, QStringLiteral("没有数据库文件 %1").arg(url.mid(7)));
    }
    const kx::Database db = kx::Database::open(url);
    if (!db.isOpen())
        return failWith(who, db.lastError());
    const kx::Result<QList<kx::DailyReport::Line>> lines = kx::DailyReport::make(db, root, from, to);
    if (!lines.ok())
        return failWith(who, lines.error());
    kx::DailyReportWriter report(lines.value(), from, to, preparer);
    if (rows) {
        QList<int> bottoms;
        for (const kx::DailyReport::Line &l : lines.value())
            if (!l.book.hasChildren)
                bottoms << l.book.id;
        const kx::Result<QHash<int, QList<kx::DailyReport::Entry>>> entries = kx::DailyReport::entries(db, bottoms, from, to);
        if (!entries.ok())
            return failWith(who, entries.error());
        report.setEntries(entries.value());
    }
    const QStringList keep =
        url.startsWith(QLatin1String("sqlite:")) ? kx::FileOutput::databaseFiles(url.mid(7)) : QStringList();
    if (const kx::Result<void> written = report.write(out, keep); !written.ok())
        return failWith(who, written.error());
    std::printf("kxjournal: 资金日报表（%s，%d 本日记账）已写入 %s\n", qPrintable(kx::DailyReport::span(from, to)),
                int(lines.value().size()), qPrintable(out));
    return 0;
}

} // namespace BankTool
