#include "BankTool.h"

#include "ToolBook.h"
#include "bank/Reconciliation.h"
#include "bank/ReconciliationReport.h"
#include "bank/StatementMatcher.h"
#include "bank/StatementReader.h"
#include "bank/StatementStore.h"
#include "ledger/Book.h"

#include <QFileInfo>
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
    if (asked.value())
        if (const kx::Result<void> kept = store.rememberMapping(book.bookId(), *asked.value()); !kept.ok())
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

} // namespace BankTool
