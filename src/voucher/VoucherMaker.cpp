#include "voucher/VoucherMaker.h"

#include "data/BookDefinition.h"
#include "data/JournalDefinition.h"
#include "grid/GridBusy.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "grid/Sheet.h"
#include "kxjournal/VoucherFile.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "voucher/VoucherDirectory.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QRandomGenerator>

namespace kx {

namespace {

const QString NothingToMake = QStringLiteral("未找到生成凭证的记录，未能生成记账凭证。");

const QString TooLarge = QStringLiteral("所选记录的金额合计超出了能表示的范围，未能生成记账凭证。");
constexpr int LargestNumber = 32767;

// New files in \a folder, one per entry of \a contents, with lower-case
// names no other file has: one random stem, and for several files their
// place after it, so they list in voucher order. All or none: a file that
// cannot be written takes those written before it away.
Result<QStringList> createUniqueFiles(const QString &folder, const QList<QByteArray> &contents)
{
    if (!QDir().mkpath(folder))
        return Error(QStringLiteral("不能建立凭证文件夹“%1”。").arg(folder));
    static const char letters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    const int width = int(QString::number(contents.size()).size());
    QStringList written;
    const auto undo = [&written](const QString &why) {
        for (const QString &path : std::as_const(written))
            QFile::remove(path);
        return Error(why);
    };
    for (int attempt = 0; attempt < 100 && written.size() < contents.size(); ++attempt) {
        QString stem = QStringLiteral("kx");
        for (int i = 0; i < 8; ++i)
            stem += QLatin1Char(letters[QRandomGenerator::global()->bounded(int(sizeof letters) - 1)]);
        for (int n = 0; n < contents.size(); ++n) {
            const QString place = contents.size() > 1 ? QStringLiteral("-%1").arg(n + 1, width, 10, QLatin1Char('0')) : QString();
            const QString path = QDir(folder).filePath(stem + place + QStringLiteral(".kxe"));
            QFile file(path);
            if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
                if (!file.exists())
                    return undo(QStringLiteral("不能写凭证文件“%1”：%2").arg(path, file.errorString()));
                // Another file has this name: start again with another stem.
                for (const QString &p : std::as_const(written))
                    QFile::remove(p);
                written.clear();
                break;
            }
            written << path;
            const QByteArray &bytes = contents.at(n);
            if (file.write(bytes) != bytes.size() || !file.flush()) {
                const QString why = file.errorString();
                file.close();
                return undo(QStringLiteral("不能写凭证文件“%1”：%2").arg(path, why));
            }
        }
    }
    if (written.size() < contents.size())
        return undo(QStringLiteral("不能在“%1”里建立凭证文件。").arg(folder));
    return written;
}

} // namespace

bool VoucherMaker::isCreditBook() const
{
    BookDefinition book = m_state.book;
    return JournalDefinition(m_acc->Connection(), book).fieldOf(QStringLiteral("ZipCode"), book.docId) ==
           QStringLiteral("贷");
}

Result<QList<VoucherMaker::Made>> VoucherMaker::plan(int first, int last, VoucherGrouping grouping) const
{
    if (!m_acc)
        return Error(QStringLiteral("没有连接到账套。"));
    AccContext &acc = *m_acc;
    if (!acc.PeriodStart().isValid() || !acc.PeriodEnd().isValid() || acc.PeriodEnd() < acc.PeriodStart())
        return Error(QStringLiteral("没有设定当前会计期间，未能生成记账凭证。"));
    if (m_state.book.accId <= 0)
        return Error(QStringLiteral("本账簿没有指定会计科目，未能生成记账凭证。"));
    const VoucherDirectory directory(acc.Connection());
    Voucher head;
    const Result<QDate> date = directory.nextDate(acc.CurPeriod(), acc.PeriodEnd());
    if (!date.ok())
        return Error(date.error());
    head.docDate = date.value();
    head.inputor = acc.UserName();
    head.director = acc.DirectorName();

    const bool credit = isCreditBook();
    const QList<VoucherPlan::Part> parts =
        VoucherPlan::parts(m_grid, first, last, m_state.book.relativeAccId, credit, grouping, acc.DocTypes());
    // The directory gives each type's next number once; the vouchers of a
    // type made together count on from it.
    QHash<QString, int> next;
    QList<Made> out;
    for (const VoucherPlan::Part &part : parts) {
        if (!next.contains(part.type)) {
            const Result<int> number = directory.nextNumber(part.type, acc.PeriodStart(), acc.PeriodEnd());
            if (!number.ok())
                return Error(number.error());
            next.insert(part.type, number.value());
        }
        const int number = next.value(part.type);
        if (number > LargestNumber)
            return Error(QStringLiteral("本期%1凭证要编到 %2 号，凭证号不能超过 %3，未能生成记账凭证。")
                             .arg(part.type.isEmpty() ? QString() : QStringLiteral("“%1”字").arg(part.type))
                             .arg(number)
                             .arg(LargestNumber));
        next.insert(part.type, number + 1);
        Made made{head, part.rows};
        made.voucher.docType = part.type;
        made.voucher.docNo = number;
        made.voucher.addQty = part.addQty;
        if (const Result<void> lines = addLines(made.voucher, part.rows, credit); !lines.ok())
            return Error(lines.error());
        out << made;
    }
    return out;
}

Result<void> VoucherMaker::addLines(Voucher &v, const QList<int> &rows, bool credit) const
{
    AccContext &acc = *m_acc;
    const int relative = m_state.book.relativeAccId;
    const JournalColumns columns(m_grid);
    Currency debits, credits, net;
    for (const int r : rows) {
        const BookRow row(m_grid, columns, r);
        debits += row.debit();
        credits += row.credit();
        net += row.debit().isZero() ? -row.credit() : row.debit();
        const int account = row.accId() != 0 ? row.accId() : relative;
        Voucher::Line line;
        line.explain = row.text(JournalColumns::Explain);
        line.accName = acc.GetAccName(account, 0);
        line.accCode = acc.GetAccCode(account);
        // The journal sees the bank's side; the counter account takes the other.
        line.debit = credit ? row.debit() : row.credit();
        line.credit = credit ? row.credit() : row.debit();
        line.rate = row.amount(JournalColumns::Rate);
        line.forex = row.forex();
        line.field1 = row.text(JournalColumns::Field1);
        line.field2 = row.text(JournalColumns::Field2);
        line.field3 = row.text(JournalColumns::Field3);
        line.field4 = row.text(JournalColumns::Field4);
        line.accId = row.text(JournalColumns::AccID);
        line.row = int(v.lines.size()) + 1;
        v.lines << line;
    }
    if (!debits.isValid() || !credits.isValid() || !net.isValid())
        return Error(TooLarge);

    Voucher::Line own;
    const int bookAccount = m_state.book.accId;
    own.accName = acc.GetAccName(bookAccount, 0);
    own.accCode = acc.GetAccCode(bookAccount);
    own.accId = QString::number(bookAccount);
    own.forex = net;
    own.row = int(v.lines.size());
    // The own account takes the difference on the side that balances the voucher.
    const bool creditsExceed = credits > debits;
    const Currency gap = creditsExceed ? credits - debits : debits - credits;
    if (!gap.isValid())
        return Error(TooLarge);
    if (creditsExceed == credit)
        own.debit = gap;
    else
        own.credit = gap;
    v.lines << own;
    return {};
}

Result<QList<Voucher>> VoucherMaker::build(int first, int last, VoucherGrouping grouping) const
{
    Result<QList<Made>> planned = plan(first, last, grouping);
    if (!planned.ok())
        return Error(planned.error());
    QList<Voucher> out;
    for (const Made &m : planned.value())
        out << m.voucher;
    return out;
}

QString VoucherMaker::unencodable(const Voucher &v, const QList<int> &rows, const QString &codec) const
{
    const auto check = [&](const QString &what, const QString &text) -> QString {
        const QString bad = VoucherFile::unencodable(text, codec);
        if (bad.isEmpty())
            return {};
        return QStringLiteral("%1“%2”含有 %3 编码不能表示的字符“%4”，未能生成记账凭证。").arg(what, text, codec, bad);
    };
    for (const auto &[what, text] : {std::pair{QStringLiteral("凭证字"), v.docType},
                                     std::pair{QStringLiteral("制单人"), v.inputor},
                                     std::pair{QStringLiteral("主管"), v.director}})
        if (QString m = check(what, text); !m.isEmpty())
            return m;
    // Name the record a bookkeeper would go and correct.
    for (int i = 0; i < v.lines.size(); ++i) {
        const Voucher::Line &line = v.lines.at(i);
        const QString where = i < rows.size() ? QStringLiteral("第%1行记录的").arg(rows.at(i)) : QStringLiteral("本账户科目");
        const std::pair<QString, QString> texts[] = {
            {QStringLiteral("摘要"), line.explain},     {QStringLiteral("科目名称"), line.accName},
            {QStringLiteral("科目编码"), line.accCode}, {QString::fromUtf8(JournalColumns::layout(JournalColumns::Field1).header), line.field1},
            {QString::fromUtf8(JournalColumns::layout(JournalColumns::Field2).header), line.field2},
            {QString::fromUtf8(JournalColumns::layout(JournalColumns::Field3).header), line.field3},
            {QString::fromUtf8(JournalColumns::layout(JournalColumns::Field4).header), line.field4},
        };
        for (const auto &[what, text] : texts)
            if (QString m = check(where + what, text); !m.isEmpty())
                return m;
    }
    return {};
}

Result<QStringList> VoucherMaker::make(const QString &folder, const QString &codec, VoucherGrouping grouping) const
{
    if (m_state.isConsolidated())
        return QStringList();
    if (m_host.cancels(QStringLiteral("MakeAccDoc")))
        return QStringList();
    const GridBusy busy(m_grid, QStringLiteral("MakeDoc"));
    int r1 = 0, c1 = 0, r2 = 0, c2 = 0;
    m_grid.selection(r1, c1, r2, c2);
    const Result<QList<Made>> planned = plan(r1, r2, grouping);
    if (!planned.ok())
        return Error(planned.error());
    if (planned.value().isEmpty()) {
        m_host.prompt(NothingToMake, false);
        return QStringList();
    }
    // Every voucher is checked and encoded before the first file is written.
    QList<QByteArray> contents;
    for (const Made &m : planned.value()) {
        if (const QString bad = unencodable(m.voucher, m.rows, codec); !bad.isEmpty())
            return Error(bad);
        const Result<QByteArray> bytes = VoucherFile::encode(m.voucher, codec);
        if (!bytes.ok())
            return Error(bytes.error());
        contents << bytes.value();
    }
    return createUniqueFiles(folder, contents);
}

Result<QString> VoucherMaker::make(const QString &folder, const QString &codec) const
{
    const Result<QStringList> made = make(folder, codec, VoucherGrouping::All);
    if (!made.ok())
        return Error(made.error());
    return made.value().value(0);
}

} // namespace kx
