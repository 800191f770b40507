#include "bank/ColumnMapping.h"

#include <QUrl>

namespace kx {

namespace {

enum class Field { Date, Receipt, Payment, BankCredit, BankDebit, Amount, Side, Balance, Reference,
                   Counterparty, CounterpartyAccount, Memo, None };

struct Known
{
    Field field;
    const char16_t *names[8];
};

// Every name a bank is known to give each column.
const Known KnownNames[] = {
    {Field::Date, {u"交易日期", u"记账日期", u"日期", u"交易时间", u"入账日期", u"记账时间", u"交易日", nullptr}},
    {Field::Receipt, {u"收入金额", u"收入", u"存入金额", u"存入", u"收入额", nullptr}},
    {Field::Payment, {u"支出金额", u"支出", u"取出金额", u"取出", u"支出额", nullptr}},
    {Field::BankCredit, {u"贷方发生额", u"贷方金额", u"贷方", nullptr}},
    {Field::BankDebit, {u"借方发生额", u"借方金额", u"借方", nullptr}},
    {Field::Amount, {u"交易金额", u"金额", u"发生额", nullptr}},
    {Field::Side, {u"借贷标志", u"收支标志", u"借贷方向", u"收支方向", u"借贷", nullptr}},
    {Field::Balance, {u"余额", u"账户余额", u"当前余额", u"交易后余额", u"联机余额", nullptr}},
    {Field::Reference, {u"交易流水号", u"流水号", u"凭证号", u"交易参考号", u"交易序号", nullptr}},
    {Field::Counterparty, {u"对方户名", u"对方名称", u"对方账户名", u"收(付)款人名称", u"收付款人名称", u"对方账户名称", nullptr}},
    {Field::CounterpartyAccount, {u"对方账号", u"对方账户", u"收(付)款人账号", u"收付款人账号", nullptr}},
    {Field::Memo, {u"摘要", u"用途", u"附言", u"备注", u"交易摘要", nullptr}},
};

// A header cell without blanks, full-width brackets or a trailing unit
// ("收入金额（元）", "余额 [CNY]").
QString normalised(const QString &cell)
{
    QString s = cell;
    s.replace(QChar(0xFF08), QLatin1Char('(')).replace(QChar(0xFF09), QLatin1Char(')'));
    s.remove(QLatin1Char(' ')).remove(QChar(0x3000)).remove(QLatin1Char('\t'));
    for (const char16_t *unit : {u"(元)", u"(人民币)", u"(RMB)", u"(CNY)", u"[CNY]", u"[RMB]"})
        if (s.endsWith(QStringView(unit)))
            s.chop(qsizetype(std::char_traits<char16_t>::length(unit)));
    return s;
}

Field fieldOf(const QString &cell)
{
    const QString s = normalised(cell);
    if (s.isEmpty())
        return Field::None;
    for (const Known &k : KnownNames)
        for (const char16_t *const *n = k.names; *n; ++n)
            if (s == QStringView(*n))
                return k.field;
    return Field::None;
}

struct Key
{
    const char *key;
    int ColumnMapping::*member;
    const char16_t *label;
};

const Key Keys[] = {
    {"date", &ColumnMapping::date, u"日期"},
    {"receipt", &ColumnMapping::receipt, u"收入"},
    {"payment", &ColumnMapping::payment, u"支出"},
    {"amount", &ColumnMapping::amount, u"金额"},
    {"side", &ColumnMapping::side, u"方向"},
    {"balance", &ColumnMapping::balance, u"余额"},
    {"reference", &ColumnMapping::reference, u"流水号"},
    {"counterparty", &ColumnMapping::counterparty, u"对方户名"},
    {"counterpartyAccount", &ColumnMapping::counterpartyAccount, u"对方账号"},
    {"memo", &ColumnMapping::memo, u"摘要"},
};

} // namespace

bool ColumnMapping::isComplete() const
{
    return date >= 0 && ((receipt >= 0 && payment >= 0) || amount >= 0);
}

QString ColumnMapping::toString() const
{
    QStringList parts;
    for (const Key &k : Keys)
        if (this->*k.member >= 0)
            parts << QLatin1String(k.key) + QLatin1Char('=') + QString::number(this->*k.member);
    QStringList more;
    for (int c : memoMore)
        more << QString::number(c);
    if (!more.isEmpty())
        parts << QStringLiteral("memoMore=") + more.join(QLatin1Char(','));
    if (bankSide)
        parts << QStringLiteral("bankSide=1");
    if (!name.isEmpty())
        parts << QStringLiteral("name=") + QString::fromLatin1(QUrl::toPercentEncoding(name));
    return parts.join(QLatin1Char('&'));
}

std::optional<ColumnMapping> ColumnMapping::fromString(const QString &text)
{
    ColumnMapping m;
    const QStringList parts = text.split(QLatin1Char('&'), Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return std::nullopt;
    for (const QString &part : parts) {
        const qsizetype eq = part.indexOf(QLatin1Char('='));
        if (eq <= 0)
            return std::nullopt;
        const QString key = part.left(eq);
        const QString value = part.mid(eq + 1);
        bool known = false;
        for (const Key &k : Keys) {
            if (key == QLatin1String(k.key)) {
                bool ok = false;
                const int column = value.toInt(&ok);
                if (!ok || column < 0)
                    return std::nullopt;
                m.*k.member = column;
                known = true;
            }
        }
        if (known)
            continue;
        if (key == QLatin1String("memoMore")) {
            for (const QString &c : value.split(QLatin1Char(','))) {
                bool ok = false;
                const int column = c.toInt(&ok);
                if (!ok || column < 0)
                    return std::nullopt;
                m.memoMore << column;
            }
        } else if (key == QLatin1String("bankSide")) {
            m.bankSide = value == QLatin1String("1");
        } else if (key == QLatin1String("name")) {
            m.name = QUrl::fromPercentEncoding(value.toLatin1());
        } else {
            return std::nullopt;
        }
    }
    return m;
}

ColumnMapping ColumnMapping::guess(const QStringList &header)
{
    ColumnMapping m;
    int bankCredit = -1;
    int bankDebit = -1;
    auto take = [](int &slot, int column) {
        if (slot < 0)
            slot = column;
    };
    for (int c = 0; c < header.size(); ++c) {
        switch (fieldOf(header.at(c))) {
        case Field::Date: take(m.date, c); break;
        case Field::Receipt: take(m.receipt, c); break;
        case Field::Payment: take(m.payment, c); break;
        case Field::BankCredit: take(bankCredit, c); break;
        case Field::BankDebit: take(bankDebit, c); break;
        case Field::Amount: take(m.amount, c); break;
        case Field::Side: take(m.side, c); break;
        case Field::Balance: take(m.balance, c); break;
        case Field::Reference: take(m.reference, c); break;
        case Field::Counterparty: take(m.counterparty, c); break;
        case Field::CounterpartyAccount: take(m.counterpartyAccount, c); break;
        case Field::Memo:
            if (m.memo < 0)
                m.memo = c;
            else
                m.memoMore << c;
            break;
        case Field::None: break;
        }
    }
    // The bank's columns stand for ours only where the table has no
    // depositor's columns: its 贷方 is our receipt, its 借方 our payment.
    if ((m.receipt < 0 || m.payment < 0) && bankCredit >= 0 && bankDebit >= 0) {
        m.receipt = bankCredit;
        m.payment = bankDebit;
        m.bankSide = true;
    }
    if (m.receipt >= 0 && m.payment >= 0)
        m.amount = -1;
    if (m.amount < 0)
        m.side = -1;
    return m;
}

int ColumnMapping::knownNames(const QStringList &header)
{
    int n = 0;
    for (const QString &cell : header)
        if (fieldOf(cell) != Field::None)
            ++n;
    return n;
}

QString ColumnMapping::expectedNames()
{
    auto names = [](Field f) {
        for (const Known &k : KnownNames)
            if (k.field == f) {
                QStringList out;
                for (const char16_t *const *n = k.names; *n; ++n)
                    out << QString::fromUtf16(*n);
                return out.join(QLatin1Char('/'));
            }
        return QString();
    };
    return QStringLiteral("日期列（%1）和金额列：收入（%2）与支出（%3），或贷方（%4）与借方（%5），或一个金额列（%6）")
        .arg(names(Field::Date), names(Field::Receipt), names(Field::Payment), names(Field::BankCredit),
             names(Field::BankDebit), names(Field::Amount));
}

QString ColumnMapping::describe(const QStringList &header) const
{
    auto columnName = [&](int c) {
        const QString h = c < header.size() ? header.at(c).trimmed() : QString();
        return h.isEmpty() ? QStringLiteral("第%1列").arg(c + 1) : h;
    };
    QStringList parts;
    for (const Key &k : Keys) {
        const int c = this->*k.member;
        if (c < 0)
            continue;
        QString taken = columnName(c);
        if (k.member == &ColumnMapping::memo)
            for (int more : memoMore)
                taken += QStringLiteral("+") + columnName(more);
        parts << QString::fromUtf16(k.label) + QLatin1Char('=') + taken;
    }
    if (bankSide)
        parts << QStringLiteral("按银行记账方向（贷方为收入，借方为支出）");
    return parts.join(QStringLiteral(", "));
}

bool operator==(const ColumnMapping &a, const ColumnMapping &b)
{
    for (const Key &k : Keys)
        if (a.*k.member != b.*k.member)
            return false;
    return a.memoMore == b.memoMore && a.bankSide == b.bankSide && a.name == b.name;
}

} // namespace kx
