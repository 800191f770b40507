#include "bank/CamtStatement.h"

#include <QHash>
#include <QXmlStreamReader>

namespace kx {

namespace {

// The texts of one element's descendants by their path below it
// ("NtryDtls/TxDtls/RltdPties/Dbtr/Nm"); repeated paths keep every text.
struct Fields
{
    QHash<QString, QStringList> texts;
    QHash<QString, QString> currency; // Ccy attribute by path

    QString first(const QString &path) const
    {
        const auto it = texts.constFind(path);
        return it == texts.constEnd() || it->isEmpty() ? QString() : it->first();
    }
    QString firstOf(std::initializer_list<const char *> paths) const
    {
        for (const char *p : paths) {
            const QString v = first(QLatin1String(p));
            if (!v.isEmpty())
                return v;
        }
        return QString();
    }
};

// Reads the element the reader stands on (a start element) to its end.
Fields collect(QXmlStreamReader &x)
{
    Fields f;
    QStringList path;
    bool inText = false; // an entity splits one text into several pieces
    while (!x.atEnd()) {
        const auto t = x.readNext();
        const bool wasText = inText;
        inText = t == QXmlStreamReader::Characters || t == QXmlStreamReader::EntityReference;
        if (t == QXmlStreamReader::StartElement) {
            path << x.name().toString();
            const QString here = path.join(QLatin1Char('/'));
            const QStringView ccy = x.attributes().value(QLatin1String("Ccy"));
            if (!ccy.isEmpty())
                f.currency.insert(here, ccy.toString());
        } else if (t == QXmlStreamReader::Characters && !x.isWhitespace() && !path.isEmpty()) {
            QStringList &list = f.texts[path.join(QLatin1Char('/'))];
            if (wasText && !list.isEmpty())
                list.last() = (list.last() + x.text().toString()).trimmed();
            else
                list << x.text().toString().trimmed();
        } else if (t == QXmlStreamReader::EndElement) {
            if (path.isEmpty())
                break;
            path.removeLast();
        }
    }
    return f;
}

QDate isoDate(const QString &text)
{
    return QDate::fromString(text.left(10), Qt::ISODate);
}

} // namespace

bool CamtStatement::recognise(const QByteArray &bytes)
{
    const QByteArray head = bytes.left(4096);
    return head.contains("camt.053") || head.contains("BkToCstmrStmt");
}

Result<Statement> CamtStatement::read(const QByteArray &bytes)
{
    Statement st;
    QXmlStreamReader x(bytes);
    bool sawStatement = false;
    int ordinal = 0;
    while (!x.atEnd()) {
        if (x.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QStringView name = x.name();
        if (name == QLatin1String("Stmt")) {
            sawStatement = true;
        } else if (name == QLatin1String("Acct") && sawStatement && st.account.isEmpty()) {
            const Fields f = collect(x);
            st.account = f.firstOf({"Id/IBAN", "Id/Othr/Id"});
        } else if (name == QLatin1String("Bal") && sawStatement) {
            const int at = int(x.lineNumber());
            const Fields f = collect(x);
            if (f.firstOf({"Tp/CdOrPrtry/Cd", "Tp/CdOrPrtry/Prtry"}) != QLatin1String("CLBD"))
                continue;
            Result<Currency> amount = Currency::fromText(f.first(QStringLiteral("Amt")));
            if (!amount || f.first(QStringLiteral("Amt")).isEmpty())
                return Error(QStringLiteral("第 %1 行：期末余额“%2”不是数目。").arg(at).arg(f.first(QStringLiteral("Amt"))));
            const QString ind = f.first(QStringLiteral("CdtDbtInd"));
            st.closingBalance = ind == QLatin1String("DBIT") ? -amount.value() : amount.value();
            st.closingDate = isoDate(f.firstOf({"Dt/Dt", "Dt/DtTm"}));
        } else if (name == QLatin1String("Ntry") && sawStatement) {
            ++ordinal;
            const int at = int(x.lineNumber());
            const Fields f = collect(x);
            auto fail = [&](const QString &why) {
                return Error(QStringLiteral("第 %1 笔交易（第 %2 行）：%3").arg(ordinal).arg(at).arg(why));
            };
            StatementLine line;
            line.sourceLine = ordinal;
            const QString amountText = f.first(QStringLiteral("Amt"));
            Result<Currency> amount = Currency::fromText(amountText);
            if (amountText.isEmpty() || !amount || amount.value().sign() <= 0)
                return fail(QStringLiteral("金额“%1”不是大于零的数目。").arg(amountText));
            line.amount = amount.value();
            const QString ind = f.first(QStringLiteral("CdtDbtInd"));
            if (ind == QLatin1String("CRDT"))
                line.side = StatementSide::Receipt;
            else if (ind == QLatin1String("DBIT"))
                line.side = StatementSide::Payment;
            else
                return fail(QStringLiteral("借贷标记“%1”不是 CRDT 或 DBIT。").arg(ind));
            const QString dateText = f.firstOf({"BookgDt/Dt", "BookgDt/DtTm", "ValDt/Dt", "ValDt/DtTm"});
            line.date = isoDate(dateText);
            if (!line.date.isValid())
                return fail(QStringLiteral("记账日期“%1”不是有效的日期。").arg(dateText));
            line.reference = f.firstOf({"AcctSvcrRef", "NtryRef", "NtryDtls/TxDtls/Refs/AcctSvcrRef",
                                        "NtryDtls/TxDtls/Refs/EndToEndId"});
            // The other party: who paid us on a receipt, whom we paid on a payment.
            const bool in = line.side == StatementSide::Receipt;
            const QString party = in ? QStringLiteral("NtryDtls/TxDtls/RltdPties/Dbtr")
                                     : QStringLiteral("NtryDtls/TxDtls/RltdPties/Cdtr");
            line.counterparty = f.first(party + QStringLiteral("/Nm"));
            if (line.counterparty.isEmpty())
                line.counterparty = f.first(party + QStringLiteral("/Pty/Nm"));
            const QString acct = party + QStringLiteral("Acct/Id");
            line.counterpartyAccount = f.first(acct + QStringLiteral("/IBAN"));
            if (line.counterpartyAccount.isEmpty())
                line.counterpartyAccount = f.first(acct + QStringLiteral("/Othr/Id"));
            QStringList memo = f.texts.value(QStringLiteral("NtryDtls/TxDtls/RmtInf/Ustrd"));
            if (memo.isEmpty())
                memo = f.texts.value(QStringLiteral("NtryDtls/TxDtls/AddtlTxInf"));
            if (memo.isEmpty())
                memo = f.texts.value(QStringLiteral("AddtlNtryInf"));
            line.memo = memo.join(QStringLiteral("；"));
            st.lines.append(std::move(line));
        }
    }
    if (x.hasError())
        return Error(QStringLiteral("第 %1 行：XML 有错（%2）。").arg(x.lineNumber()).arg(x.errorString()));
    if (!sawStatement)
        return Error(QStringLiteral("文件里没有 camt.053 对账单（Stmt）。"));
    return st;
}

} // namespace kx
