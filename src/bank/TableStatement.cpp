#include "bank/TableStatement.h"

#include <QRegularExpression>

namespace kx {

namespace {

QString cellAt(const TableRow &row, int column)
{
    return column >= 0 && column < row.cells.size() ? row.cells.at(column) : QString();
}

bool isBlank(const TableRow &row)
{
    for (const QString &c : row.cells)
        if (!c.isEmpty())
            return false;
    return true;
}

bool isTotals(const TableRow &row)
{
    static const char16_t *const Marks[] = {u"合计", u"总计", u"本页小计", u"本页合计", u"小计", u"共计",
                                            u"累计", u"笔数", u"交易笔数", u"总笔数"};
    // The mark stands in one of the first cells of a totals row, perhaps
    // spaced out ("合　计").
    for (int c = 0; c < qMin<int>(3, int(row.cells.size())); ++c) {
        const QString &cell = row.cells.at(c);
        if (cell.isEmpty() || cell.at(0).unicode() < 0x3000)
            continue;
        QString packed = cell;
        packed.remove(QLatin1Char(' ')).remove(QChar(0x3000));
        for (const char16_t *m : Marks)
            if (packed.startsWith(QStringView(m)))
                return true;
    }
    return false;
}

bool hasDigit(const QString &s)
{
    for (QChar c : s)
        if (c.isDigit())
            return true;
    return false;
}

// The account number a header block gives: "账号：6222…", or "账号" with
// the number in the next cell.
QString accountIn(const TableRow &row)
{
    for (int c = 0; c < row.cells.size(); ++c) {
        const QString cell = row.cells.at(c);
        static const QRegularExpression label(QStringLiteral("^(?:账号|账户|帐号|帐户|卡号|账户账号)\\s*(?:[:：]\\s*(.*))?$"));
        const QRegularExpressionMatch m = label.match(cell);
        if (!m.hasMatch())
            continue;
        const QString rest = m.captured(1).trimmed();
        if (!rest.isEmpty())
            return rest;
        for (int d = c + 1; d < row.cells.size(); ++d)
            if (!row.cells.at(d).isEmpty())
                return row.cells.at(d);
    }
    return QString();
}

enum class SideWord { Receipt, Payment, Unknown };

SideWord sideOf(const QString &cell)
{
    static const char16_t *const Receipts[] = {u"贷", u"收", u"入", u"贷方", u"收入", u"存入", u"转入",
                                               u"C", u"CR", u"CRDT", u"+"};
    static const char16_t *const Payments[] = {u"借", u"支", u"出", u"借方", u"支出", u"取出", u"转出",
                                               u"D", u"DR", u"DBIT", u"-"};
    const QString s = cell.trimmed().toUpper();
    for (const char16_t *w : Receipts)
        if (s == QStringView(w))
            return SideWord::Receipt;
    for (const char16_t *w : Payments)
        if (s == QStringView(w))
            return SideWord::Payment;
    return SideWord::Unknown;
}

Error lineError(int line, const QString &what)
{
    return Error(QStringLiteral("第 %1 行：%2").arg(line).arg(what));
}

} // namespace

namespace {

// The usual forms without a regular expression: "2026-03-05", "2026/3/5",
// with a time after a blank or a T. Nothing when it is another form.
std::optional<QDate> quickDate(QStringView s)
{
    auto digit = [&](qsizetype i) { return i < s.size() && s[i] >= u'0' && s[i] <= u'9'; };
    auto number = [&](qsizetype &i, int most) {
        int v = 0;
        const qsizetype from = i;
        while (digit(i) && i - from < most)
            v = v * 10 + (s[i++].unicode() - u'0');
        return i == from ? -1 : v;
    };
    qsizetype i = 0;
    const int year = number(i, 4);
    if (i != 4 || i >= s.size() || (s[i] != u'-' && s[i] != u'/' && s[i] != u'.'))
        return std::nullopt;
    const QChar sep = s[i++];
    const int month = number(i, 2);
    if (month < 0 || i >= s.size() || s[i] != sep)
        return std::nullopt;
    ++i;
    const int day = number(i, 2);
    if (day < 0 || (i < s.size() && s[i] != u' ' && s[i] != u'T'))
        return std::nullopt;
    return QDate(year, month, day);
}

} // namespace

QDate TableStatement::parseDate(const QString &cell, bool serials)
{
    if (const std::optional<QDate> quick = quickDate(cell))
        return *quick;
    const QString s = cell.trimmed();
    static const QRegularExpression separated(
        QStringLiteral("^(\\d{4})\\s*[-/.年]\\s*(\\d{1,2})\\s*[-/.月]\\s*(\\d{1,2})\\s*日?(?:[ T]\\S.*)?$"));
    static const QRegularExpression compact(QStringLiteral("^(\\d{4})(\\d{2})(\\d{2})(?:[ T]?\\d{2}:?\\d{2}(?::?\\d{2})?)?$"));
    QRegularExpressionMatch m = separated.match(s);
    if (!m.hasMatch())
        m = compact.match(s);
    if (m.hasMatch())
        return QDate(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt());
    if (serials) {
        static const QRegularExpression serial(QStringLiteral("^(\\d{1,7})(?:\\.\\d+)?$"));
        m = serial.match(s);
        if (m.hasMatch()) {
            const qint64 day = m.captured(1).toLongLong();
            // Day 60 is the 29 February 1900 the 1900 date system counts.
            if (day >= 1 && day < 60)
                return QDate(1899, 12, 31).addDays(day);
            if (day > 60 && day <= 2958465)
                return QDate(1899, 12, 30).addDays(day);
        }
    }
    return QDate();
}

Result<Currency> TableStatement::parseAmount(const QString &cell)
{
    QString s = cell.trimmed();
    // A dash in the unused column is no amount.
    if (s == QLatin1String("-") || s == QLatin1String("--") || s == QStringLiteral("—") || s == QStringLiteral("－"))
        return Currency();
    for (const char16_t *unit : {u"元", u"CNY", u"RMB"})
        if (s.endsWith(QStringView(unit)))
            s = s.chopped(qsizetype(std::char_traits<char16_t>::length(unit))).trimmed();
    for (const char16_t *unit : {u"CNY", u"RMB"})
        if (s.startsWith(QStringView(unit)))
            s = s.mid(3).trimmed();
    Result<Currency> amount = Currency::fromText(s);
    if (!amount && (s.contains(QLatin1Char('E')) || s.contains(QLatin1Char('e')))) {
        bool ok = false;
        const double d = s.toDouble(&ok);
        if (ok)
            amount = Currency::fromDouble(d);
    }
    if (!amount || !amount.value().isValid())
        return Error(QStringLiteral("金额“%1”不是数目。").arg(cell));
    return amount;
}

Result<Statement> TableStatement::read(const QList<TableRow> &rows, const std::optional<ColumnMapping> &given,
                                       Cells cells)
{
    const bool serials = cells == Cells::Spreadsheet;
    // The header row: the first with two known names.
    qsizetype header = -1;
    for (qsizetype r = 0; r < rows.size() && header < 0; ++r)
        if (ColumnMapping::knownNames(rows.at(r).cells) >= 2)
            header = r;

    ColumnMapping mapping;
    if (given) {
        mapping = *given;
        if (!mapping.isComplete())
            return Error(QStringLiteral("给定的列对应不全：要有日期列和金额列。"));
    } else {
        if (header < 0) {
            if (rows.isEmpty() || std::all_of(rows.begin(), rows.end(), isBlank))
                return Error(QStringLiteral("文件里没有内容。"));
            return Error(QStringLiteral("认不出对账单的表头：应有%1。").arg(ColumnMapping::expectedNames()));
        }
        mapping = ColumnMapping::guess(rows.at(header).cells);
        if (!mapping.isComplete())
            return Error(QStringLiteral("第 %1 行的表头缺少日期列或金额列：应有%2。")
                             .arg(rows.at(header).sourceLine)
                             .arg(ColumnMapping::expectedNames()));
    }
    const QStringList headerCells = header >= 0 ? rows.at(header).cells : QStringList();

    Statement st;
    for (qsizetype r = 0; r < (header >= 0 ? header : rows.size()) && st.account.isEmpty(); ++r)
        st.account = accountIn(rows.at(r));
    st.mappingUsed = mapping.describe(headerCells);
    st.mapping = mapping;

    // Without a header (a given mapping on a headerless table) the table
    // starts at the first row whose date cell holds a date.
    qsizetype first = header + 1;
    if (header < 0) {
        first = rows.size();
        for (qsizetype r = 0; r < rows.size(); ++r)
            if (parseDate(cellAt(rows.at(r), mapping.date), serials).isValid()) {
                first = r;
                break;
            }
    }

    int endedAt = 0; // the line that ended the table, 0 while it runs
    for (qsizetype r = first; r < rows.size(); ++r) {
        const TableRow &row = rows.at(r);
        if (isBlank(row))
            continue;
        if (header >= 0 && row.cells == headerCells) {
            endedAt = 0; // the next page's header
            continue;
        }
        const QString dateText = cellAt(row, mapping.date);
        if (endedAt) {
            // Past the end only footers may follow; a dated line there
            // would be lost without a word.
            if (!isTotals(row) && parseDate(dateText, serials).isValid())
                return lineError(row.sourceLine,
                                 QStringLiteral("表格在第 %1 行已经结束，这一行却还有交易。").arg(endedAt));
            continue;
        }
        StatementLine line;
        line.sourceLine = row.sourceLine;
        line.date = parseDate(dateText, serials);
        // A row without a date ends the table ("第 1 页 共 3 页", "以下空白"),
        // unless it has amounts: then it is a line with a bad date.
        const bool hasAmount = !cellAt(row, mapping.amount).isEmpty() || !cellAt(row, mapping.receipt).isEmpty()
                               || !cellAt(row, mapping.payment).isEmpty();
        if (isTotals(row) || (!line.date.isValid() && (!hasDigit(dateText) || !hasAmount))) {
            endedAt = row.sourceLine;
            continue;
        }
        if (!line.date.isValid())
            return lineError(row.sourceLine, QStringLiteral("日期“%1”不是有效的日期。").arg(dateText));

        // A mapping that points past the row would read every amount as
        // zero and skip every line without a word.
        const int width = int(row.cells.size());
        const bool amountsPastRow = mapping.amount >= 0
                                        ? mapping.amount >= width
                                        : mapping.receipt >= width && mapping.payment >= width;
        if (amountsPastRow)
            return lineError(row.sourceLine, QStringLiteral("只有 %1 列，没有金额所在的列。").arg(width));

        Currency signedAmount;
        if (mapping.receipt >= 0 && mapping.payment >= 0) {
            Result<Currency> in = parseAmount(cellAt(row, mapping.receipt));
            if (!in)
                return lineError(row.sourceLine, in.error());
            Result<Currency> out = parseAmount(cellAt(row, mapping.payment));
            if (!out)
                return lineError(row.sourceLine, out.error());
            // Each column says the side; some banks write a payment as
            // "-12.30" in its own column.
            const Currency receipt = in.value().abs();
            const Currency payment = out.value().abs();
            if (!receipt.isZero() && !payment.isZero())
                return lineError(row.sourceLine, QStringLiteral("收入“%1”和支出“%2”都有金额。")
                                                     .arg(cellAt(row, mapping.receipt), cellAt(row, mapping.payment)));
            signedAmount = receipt.isZero() ? -payment : receipt;
        } else {
            Result<Currency> amount = parseAmount(cellAt(row, mapping.amount));
            if (!amount)
                return lineError(row.sourceLine, amount.error());
            signedAmount = amount.value();
            if (mapping.side >= 0) {
                const QString word = cellAt(row, mapping.side);
                const SideWord side = sideOf(word);
                if (side == SideWord::Unknown && !signedAmount.isZero())
                    return lineError(row.sourceLine,
                                     QStringLiteral("方向“%1”不是 借/贷、收/支 或 入/出。").arg(word));
                // The word decides; banks that also sign the amount sign it
                // the same way ("借", "-12.30").
                if (side != SideWord::Unknown)
                    signedAmount = side == SideWord::Payment ? -signedAmount.abs() : signedAmount.abs();
            }
        }
        if (signedAmount.isZero())
            continue;
        line.side = signedAmount.sign() > 0 ? StatementSide::Receipt : StatementSide::Payment;
        line.amount = signedAmount.abs();

        if (mapping.balance >= 0) {
            const QString text = cellAt(row, mapping.balance);
            if (!text.isEmpty()) {
                Result<Currency> balance = parseAmount(text);
                if (!balance)
                    return lineError(row.sourceLine, QStringLiteral("余额") + balance.error());
                line.balance = balance.value();
            }
        }
        line.reference = cellAt(row, mapping.reference);
        line.counterparty = cellAt(row, mapping.counterparty);
        line.counterpartyAccount = cellAt(row, mapping.counterpartyAccount);
        QStringList memos;
        for (int c : QList<int>{mapping.memo} + mapping.memoMore) {
            const QString text = cellAt(row, c);
            if (!text.isEmpty())
                memos << text;
        }
        line.memo = memos.join(QStringLiteral("；"));
        st.lines.append(std::move(line));
    }
    st.balanceBreaks = findBalanceBreaks(st.lines);
    return st;
}

} // namespace kx
