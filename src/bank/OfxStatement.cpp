#include "bank/OfxStatement.h"

#include <QHash>
#include <QStringDecoder>

namespace kx {

namespace {

// The text of a file: UTF-8 when it is, else the code page its header names.
QString decoded(const QByteArray &bytes)
{
    QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = utf8.decode(bytes);
    if (!utf8.hasError())
        return text;
    const QByteArray head = bytes.left(1024).toUpper();
    const char *codec = head.contains("CHARSET:936") || head.contains("GB2312") || head.contains("GBK")
                            ? "GB18030"
                            : "windows-1252";
    QStringDecoder d(codec);
    if (!d.isValid())
        return QString::fromLatin1(bytes);
    return d.decode(bytes);
}

QString unescaped(QString s)
{
    if (!s.contains(QLatin1Char('&')))
        return s;
    s.replace(QLatin1String("&lt;"), QLatin1String("<"))
        .replace(QLatin1String("&gt;"), QLatin1String(">"))
        .replace(QLatin1String("&quot;"), QLatin1String("\""))
        .replace(QLatin1String("&apos;"), QLatin1String("'"))
        .replace(QLatin1String("&nbsp;"), QLatin1String(" "));
    qsizetype at = 0;
    while ((at = s.indexOf(QLatin1String("&#"), at)) >= 0) {
        const qsizetype end = s.indexOf(QLatin1Char(';'), at);
        if (end < 0 || end - at > 10)
            break;
        const QStringView digits = QStringView(s).mid(at + 2, end - at - 2);
        bool ok = false;
        const uint code = digits.startsWith(u'x') || digits.startsWith(u'X') ? digits.mid(1).toUInt(&ok, 16)
                                                                              : digits.toUInt(&ok);
        if (ok && code > 0 && code < 0x110000 && (code < 0xD800 || code > 0xDFFF)) {
            const char32_t c = code;
            s.replace(at, end - at + 1, QString::fromUcs4(&c, 1));
        }
        ++at;
    }
    return s.replace(QLatin1String("&amp;"), QLatin1String("&"));
}

QDate ofxDate(const QString &text)
{
    if (text.size() < 8)
        return QDate();
    return QDate::fromString(text.left(8), QStringLiteral("yyyyMMdd"));
}

Result<Currency> ofxAmount(QString text)
{
    // Some banks write a decimal comma.
    if (text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('.')))
        text.replace(QLatin1Char(','), QLatin1Char('.'));
    if (text.isEmpty())
        return Error(QStringLiteral("没有金额。"));
    Result<Currency> v = Currency::fromText(text);
    if (!v || !v.value().isValid())
        return Error(QStringLiteral("金额“%1”不是数目。").arg(text));
    return v;
}

// The leaves of one aggregate, by their path below it ("PAYEE/NAME").
using Leaves = QHash<QString, QString>;

} // namespace

bool OfxStatement::recognise(const QByteArray &bytes)
{
    const QByteArray head = bytes.left(4096).toUpper();
    return head.contains("OFXHEADER") || head.contains("<OFX>");
}

Result<Statement> OfxStatement::read(const QByteArray &bytes)
{
    const QString text = decoded(bytes);
    const qsizetype start = text.indexOf(QLatin1String("<OFX>"), 0, Qt::CaseInsensitive);
    if (start < 0)
        return Error(QStringLiteral("文件里没有 <OFX> 内容。"));

    Statement st;
    // Aggregates open by a tag followed by another tag; a tag followed by
    // text is a leaf, closed by its end tag (XML) or by the next tag (SGML).
    QStringList open;
    qsizetype txAt = -1;        // index in open of the STMTTRN being read
    Leaves tx;
    Leaves ledger;
    int txLine = 1;
    int ordinal = 0;
    bool closed = false;
    int line = 1 + int(QStringView(text).left(start).count(QLatin1Char('\n')));
    qsizetype i = start;
    const qsizetype n = text.size();

    QString pendingTag; // the tag before the text being read
    QList<StatementLine> lines;
    while (i < n) {
        const qsizetype lt = text.indexOf(QLatin1Char('<'), i);
        const qsizetype textEnd = lt < 0 ? n : lt;
        const QString between = text.mid(i, textEnd - i);
        line += int(between.count(QLatin1Char('\n')));
        const QString value = unescaped(between.trimmed());
        if (!pendingTag.isEmpty()) {
            if (value.isEmpty()) {
                open << pendingTag; // an aggregate
                if (pendingTag == QLatin1String("STMTTRN")) {
                    if (txAt >= 0)
                        return Error(QStringLiteral("第 %1 行：上一笔交易还没有结束。").arg(line));
                    txAt = open.size() - 1;
                    txLine = line;
                    tx.clear();
                }
            } else {
                // A leaf: keyed by its aggregates below the transaction
                // (or below the statement for the others).
                QStringList where;
                if (txAt >= 0)
                    where = open.mid(txAt + 1);
                else if (!open.isEmpty())
                    where = QStringList{open.last()};
                where << pendingTag;
                const QString key = where.join(QLatin1Char('/'));
                Leaves &into = txAt >= 0 ? tx : ledger;
                if (!into.contains(key))
                    into.insert(key, value);
            }
            pendingTag.clear();
        }
        if (lt < 0)
            break;
        const qsizetype gt = text.indexOf(QLatin1Char('>'), lt);
        if (gt < 0)
            return Error(QStringLiteral("第 %1 行：标记没有结束。").arg(line));
        QString tag = text.mid(lt + 1, gt - lt - 1).trimmed();
        line += int(tag.count(QLatin1Char('\n')));
        i = gt + 1;
        if (tag.startsWith(QLatin1Char('?')) || tag.startsWith(QLatin1Char('!')) || tag.endsWith(QLatin1Char('/')))
            continue; // a processing instruction, a comment or an empty element
        const bool end = tag.startsWith(QLatin1Char('/'));
        if (end)
            tag = tag.mid(1).trimmed();
        tag = tag.section(QLatin1Char(' '), 0, 0).toUpper();
        if (tag.isEmpty())
            return Error(QStringLiteral("第 %1 行：空的标记。").arg(line));
        if (!end) {
            if (closed)
                return Error(QStringLiteral("第 %1 行：</OFX> 之后还有内容。").arg(line));
            pendingTag = tag;
            continue;
        }
        // An end tag closes its aggregate (and any left open inside it);
        // the end tag of a leaf has nothing to close.
        const qsizetype at = open.lastIndexOf(tag);
        if (at < 0)
            continue;
        if (txAt >= 0 && at <= txAt) {
            if (at < txAt)
                return Error(QStringLiteral("第 %1 行：第 %2 笔交易没有结束。").arg(line).arg(ordinal + 1));
            ++ordinal;
            auto fail = [&](const QString &why) {
                return Error(QStringLiteral("第 %1 笔交易（第 %2 行）：%3").arg(ordinal).arg(txLine).arg(why));
            };
            StatementLine l;
            l.sourceLine = ordinal;
            const QString dateText = tx.value(QStringLiteral("DTPOSTED"));
            l.date = ofxDate(dateText);
            if (!l.date.isValid())
                return fail(QStringLiteral("日期“%1”不是有效的日期。").arg(dateText));
            Result<Currency> amount = ofxAmount(tx.value(QStringLiteral("TRNAMT")));
            if (!amount)
                return fail(amount.error());
            if (!amount.value().isZero()) {
                l.side = amount.value().sign() > 0 ? StatementSide::Receipt : StatementSide::Payment;
                l.amount = amount.value().abs();
                l.reference = tx.value(QStringLiteral("FITID"));
                l.counterparty = tx.value(QStringLiteral("NAME"));
                if (l.counterparty.isEmpty())
                    l.counterparty = tx.value(QStringLiteral("PAYEE/NAME"));
                if (l.counterparty.isEmpty())
                    l.counterparty = tx.value(QStringLiteral("PAYEE"));
                for (const char *acct : {"BANKACCTTO/ACCTID", "CCACCTTO/ACCTID"})
                    if (l.counterpartyAccount.isEmpty())
                        l.counterpartyAccount = tx.value(QLatin1String(acct));
                l.memo = tx.value(QStringLiteral("MEMO"));
                lines.append(std::move(l));
            }
            txAt = -1;
            tx.clear();
        }
        open.resize(at);
        if (tag == QLatin1String("OFX"))
            closed = true;
    }
    if (txAt >= 0)
        return Error(QStringLiteral("文件不完整：第 %1 笔交易没有结束。").arg(ordinal + 1));
    if (!closed)
        return Error(QStringLiteral("文件不完整：缺少 </OFX>。"));

    st.lines = lines;
    st.account = ledger.value(QStringLiteral("BANKACCTFROM/ACCTID"));
    if (st.account.isEmpty())
        st.account = ledger.value(QStringLiteral("CCACCTFROM/ACCTID"));
    const QString balance = ledger.value(QStringLiteral("LEDGERBAL/BALAMT"));
    if (!balance.isEmpty()) {
        Result<Currency> b = ofxAmount(balance);
        if (!b)
            return Error(QStringLiteral("期末余额：") + b.error());
        st.closingBalance = b.value();
        st.closingDate = ofxDate(ledger.value(QStringLiteral("LEDGERBAL/DTASOF")));
    }
    return st;
}

} // namespace kx
