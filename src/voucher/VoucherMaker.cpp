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
#include "voucher/VoucherLink.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>

namespace kx {

namespace {

const QString NothingToMake = QStringLiteral("未找到生成凭证的记录，未能生成记账凭证。");

// A new file in \a folder with a lower-case name no other file has.
Result<QString> createUniqueFile(const QString &folder, const QByteArray &bytes)
{
    if (!QDir().mkpath(folder))
        return Error(QStringLiteral("不能建立凭证文件夹“%1”。").arg(folder));
    static const char letters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    for (int attempt = 0; attempt < 100; ++attempt) {
        QString name = QStringLiteral("kx");
        for (int i = 0; i < 8; ++i)
            name += QLatin1Char(letters[QRandomGenerator::global()->bounded(int(sizeof letters) - 1)]);
        const QString path = QDir(folder).filePath(name + QStringLiteral(".kxe"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            if (file.exists())
                continue;
            return Error(QStringLiteral("不能写凭证文件“%1”：%2").arg(path, file.errorString()));
        }
        if (file.write(bytes) != bytes.size() || !file.flush()) {
            const QString why = file.errorString();
            file.close();
            file.remove();
            return Error(QStringLiteral("不能写凭证文件“%1”：%2").arg(path, why));
        }
        return path;
    }
    return Error(QStringLiteral("不能在“%1”里建立凭证文件。").arg(folder));
}

} // namespace

bool VoucherMaker::isCreditBook() const
{
    BookDefinition book = m_state.book;
    return JournalDefinition(m_acc->Connection(), book).fieldOf(QStringLiteral("ZipCode"), book.docId) ==
           QStringLiteral("贷");
}

Result<Voucher> VoucherMaker::build(int first, int last) const
{
    if (!m_acc)
        return Error(QStringLiteral("没有连接到账套。"));
    AccContext &acc = *m_acc;
    if (!acc.PeriodStart().isValid() || !acc.PeriodEnd().isValid() || acc.PeriodEnd() < acc.PeriodStart())
        return Error(QStringLiteral("没有设定当前会计期间，未能生成记账凭证。"));
    if (m_state.book.accId <= 0)
        return Error(QStringLiteral("本账簿没有指定会计科目，未能生成记账凭证。"));
    const VoucherDirectory directory(acc.Connection());
    Voucher v;
    const Result<QDate> date = directory.nextDate(acc.CurPeriod(), acc.PeriodEnd());
    if (!date.ok())
        return Error(date.error());
    v.docDate = date.value();
    v.docType = VoucherDirectory::defaultType(acc.DocTypes());
    const Result<int> number = directory.nextNumber(v.docType, acc.PeriodStart(), acc.PeriodEnd());
    if (!number.ok())
        return Error(number.error());
    v.docNo = number.value();
    v.addQty = last - first + 1;
    v.inputor = acc.UserName();
    v.director = acc.DirectorName();

    const bool credit = isCreditBook();
    const int relative = m_state.book.relativeAccId;
    const JournalColumns columns(m_grid);
    Currency debits, credits, net;
    for (int r = std::max(first, m_grid.fixedRows()); r <= last && r < m_grid.rows(); ++r) {
        const BookRow row(m_grid, columns, r);
        if (!VoucherLink::isCandidate(row, relative))
            continue;
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
        return Error(QStringLiteral("所选记录的金额合计超出了能表示的范围，未能生成记账凭证。"));
    if (v.lines.isEmpty())
        return v;

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
        return Error(QStringLiteral("所选记录的金额合计超出了能表示的范围，未能生成记账凭证。"));
    if (creditsExceed == credit)
        own.debit = gap;
    else
        own.credit = gap;
    v.lines << own;
    return v;
}

QString VoucherMaker::unencodable(const Voucher &v, int first, const QString &codec) const
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
    const JournalColumns columns(m_grid);
    int r = std::max(first, m_grid.fixedRows());
    for (const Voucher::Line &line : v.lines) {
        while (r < m_grid.rows() && !VoucherLink::isCandidate(BookRow(m_grid, columns, r), m_state.book.relativeAccId))
            ++r;
        const bool own = &line == &v.lines.last();
        const QString where = own ? QStringLiteral("本账户科目") : QStringLiteral("第%1行记录的").arg(r);
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
        ++r;
    }
    return {};
}

Result<QString> VoucherMaker::make(const QString &folder, const QString &codec) const
{
    if (m_state.isConsolidated())
        return QString();
    if (m_host.cancels(QStringLiteral("MakeAccDoc")))
        return QString();
    const GridBusy busy(m_grid, QStringLiteral("MakeDoc"));
    int r1 = 0, c1 = 0, r2 = 0, c2 = 0;
    m_grid.selection(r1, c1, r2, c2);
    const Result<Voucher> v = build(r1, r2);
    if (!v.ok())
        return Error(v.error());
    if (v.value().lines.isEmpty()) {
        m_host.prompt(NothingToMake, false);
        return QString();
    }
    if (const QString bad = unencodable(v.value(), r1, codec); !bad.isEmpty())
        return Error(bad);
    const Result<QByteArray> bytes = VoucherFile::encode(v.value(), codec);
    if (!bytes.ok())
        return Error(bytes.error());
    return createUniqueFile(folder, bytes.value());
}

} // namespace kx
