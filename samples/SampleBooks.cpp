#include "SampleBooks.h"

#include "data/SqlAccess.h"
#include "data/SqlValue.h"
#include "data/Transaction.h"
#include "kxjournal/Currency.h"
#include "kxjournal/Database.h"
#include "kxjournal/Schema.h"

#include <QDate>
#include <QHash>
#include <QSqlError>
#include <QSqlQuery>
#include <random>

namespace kx {

namespace {

struct Account { const char *code; const char *name; const char *enter; const char *dir; const char *currency; };
const Account Chart[] = {
    {"1001", "库存现金", "kcxj", "借", ""},        {"1002", "银行存款", "yhck", "借", ""},
    {"100201", "工商银行", "gsyh", "借", ""},       {"100202", "建设银行", "jsyh", "借", ""},
    {"100203", "中国银行美元户", "zhmy", "借", "USD"}, {"1122", "应收账款", "yszk", "借", ""},
    {"112201", "华北公司", "hbgs", "借", ""},       {"112202", "华南公司", "hngs", "借", ""},
    {"1221", "其他应收款", "qtysk", "借", ""},      {"2202", "应付账款", "yfzk", "贷", ""},
    {"220201", "东方材料厂", "dfclc", "贷", ""},    {"220202", "南方电器公司", "nfdq", "贷", ""},
    {"2211", "应付职工薪酬", "yfzgxc", "贷", ""},   {"6001", "主营业务收入", "zyywsr", "贷", ""},
    {"6602", "管理费用", "glfy", "借", ""},         {"660201", "办公费", "bgf", "借", ""},
    {"660202", "差旅费", "clf", "借", ""},          {"660203", "业务招待费", "ywzdf", "借", ""},
    {"6603", "财务费用", "cwfy", "借", ""},         {"660301", "利息收入", "lxsr", "借", ""},
    {"660302", "银行手续费", "yhsxf", "借", ""},
};

struct Book { const char *code; const char *name; const char *account; };
const Book Books[] = {
    {"01", "现金日记账", "1001"},      {"02", "银行日记账", "1002"},  {"0201", "工商银行", "100201"},
    {"020101", "基本户", "100201"},    {"020102", "一般户", "100201"}, {"0202", "建设银行", "100202"},
    {"0203", "中国银行美元户", "100203"},
};
// Bottom books, in the order they get records.
const char *const Leaves[] = {"020101", "01", "020102", "0202", "0203"};

// What happens in a book: explanation, counter-account, which side, typical size.
struct Movement { const char *explain; const char *account; bool debit; int minYuan; int maxYuan; };
const Movement CashMoves[] = {
    {"提取备用金", "100201", true, 1000, 5000},   {"报销差旅费", "660202", false, 200, 3000},
    {"购买办公用品", "660201", false, 50, 800},   {"业务招待费", "660203", false, 300, 2000},
    {"收回职工借款", "1221", true, 500, 3000},    {"零星销售收入", "6001", true, 100, 1500},
};
const Movement BankMoves[] = {
    {"收到华北公司货款", "112201", true, 20000, 300000}, {"收到华南公司货款", "112202", true, 10000, 200000},
    {"支付东方材料厂货款", "220201", false, 5000, 150000}, {"支付南方电器公司货款", "220202", false, 3000, 90000},
    {"发放工资", "2211", false, 50000, 120000},       {"提取备用金", "1001", false, 1000, 5000},
    {"银行手续费", "660302", false, 5, 200},          {"利息收入", "660301", true, 10, 900},
    {"销售收入", "6001", true, 8000, 160000},
};

int runInsert(const Database &db, const QString &sql, const QVariantList &binds, QString &error)
{
    QSqlQuery q(db.handle());
    q.prepare(sql);
    for (const QVariant &v : binds)
        q.addBindValue(v);
    if (!q.exec()) {
        error = q.lastError().text();
        return 0;
    }
    return 1;
}

QString textOf(const char *s) { return QString::fromUtf8(s); }

} // namespace

Result<void> SampleBooks::create(Database &db, const SampleOptions &options)
{
    const Result<void> made = Schema::create(db);
    if (!made.ok())
        return made;
    const QDate today = QDate::currentDate();
    const int year = options.year > 0 ? options.year : today.year();
    const int lastMonth = options.lastMonth > 0 ? std::min(options.lastMonth, 12) : (year == today.year() ? today.month() : 12);
    const int bookCount = std::clamp(options.books, 1, 5);
    std::mt19937 rng(options.seed);
    auto between = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };

    Transaction tx(db);
    if (!tx.ok())
        return Error(tx.error());
    QString error;
    auto fail = [&error] { return Error(QStringLiteral("生成示例账簿失败：%1").arg(error)); };

    QHash<QString, int> accId;
    const QString accSql = QStringLiteral("INSERT INTO kxAccClass (AccCode, AccName, EnterCode, AccDir, Currency) VALUES (?,?,?,?,?)");
    for (const Account &a : Chart) {
        if (!runInsert(db, accSql, {textOf(a.code), textOf(a.name), textOf(a.enter), textOf(a.dir), textOf(a.currency)}, error))
            return fail();
        accId.insert(textOf(a.code),
                     sqlScalar(db, {QStringLiteral("Select AccID From kxAccClass Where AccCode=?"), {textOf(a.code)}})
                         .value()
                         .toInt());
    }
    QHash<QString, int> bookId;
    const QString bookSql = QStringLiteral("INSERT INTO kxJournal (AssistCode, AssistName, ZipCode, Address, Header) VALUES (?,?,?,?,?)");
    for (const Book &b : Books) {
        const QString address = QStringLiteral("科目|%1").arg(accId.value(textOf(b.account)));
        if (!runInsert(db, bookSql, {textOf(b.code), textOf(b.name), QStringLiteral("借"), address, QString()}, error))
            return fail();
        bookId.insert(textOf(b.code), sqlScalar(db, {QStringLiteral("Select asID From kxJournal Where AssistCode=?"), {textOf(b.code)}}).value().toInt());
    }

    const QString docSql = QStringLiteral("INSERT INTO kxDocDir (DocDate, DocType, DocNo, AccPeriod) VALUES (?,?,?,?)");
    const QString recSql = QStringLiteral(
        "INSERT INTO kxJournalRecs (DocID, Row, JnlDate, JnlNo, AccID, Explain, Debit, Credit, Rate, Forex, Dir, "
        "Balance, fxBalance, DirID, Flag, Tag) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
    QSqlQuery rec(db.handle());
    rec.prepare(recSql);
    QHash<int, int> voucherNo; // per month
    bool brokenLinkMade = false;

    const int perBook = std::max(1, options.records / bookCount);
    for (int b = 0; b < bookCount; ++b) {
        const QString code = textOf(Leaves[b]);
        const bool cash = code == QLatin1String("01");
        const bool forex = code == QLatin1String("0203");
        const int doc = bookId.value(code);
        const int count = b == bookCount - 1 ? options.records - perBook * (bookCount - 1) : perBook;
        Currency balance = Currency::fromUnits(cash ? between(2, 9) * 1000 : between(100, 900) * 1000);
        Currency fxBalance = forex ? Currency::fromUnits(between(10, 90) * 1000) : Currency();
        const double rate = 7.1;
        int row = 1;
        auto write = [&](const QDate &date, const QString &no, int acc, const QString &explain, Currency debit,
                         Currency credit, Currency fx, int dirId, int tag) {
            const QVariantList values{doc, row++, date.toString(Qt::ISODate), no, acc, explain,
                                      tag < 0 ? QVariant() : SqlValue::bindAmount(debit),
                                      tag < 0 ? QVariant() : SqlValue::bindAmount(credit),
                                      forex && tag >= 0 ? QVariant(QStringLiteral("7.1")) : QVariant(),
                                      tag < 0 ? QVariant() : SqlValue::bindAmount(fx),
                                      balance.sign() > 0 ? QStringLiteral("借") : balance.sign() < 0 ? QStringLiteral("贷") : QStringLiteral("平"),
                                      SqlValue::bindAmount(balance), SqlValue::bindAmount(fxBalance), dirId, 0, tag};
            for (int i = 0; i < values.size(); ++i)
                rec.bindValue(i, values.at(i));
            if (!rec.exec()) {
                error = rec.lastError().text();
                return false;
            }
            return true;
        };
        // The opening row holds the balance brought forward.
        if (!write(QDate(year, 1, 1), QString(), 0, QStringLiteral("期初余额"), balance, Currency(), fxBalance, 0, 0))
            return fail();
        const int records = std::max(0, count - 1);
        // The records stop at today: a book of this year has none in days to come.
        const QDate lastDay = std::min(QDate(year, lastMonth, 1).addMonths(1).addDays(-1), std::max(today, QDate(year, 1, 1)));
        const int days = QDate(year, 1, 1).daysTo(lastDay) + 1;
        int month = 1;
        for (int i = 0; i < records; ++i) {
            const QDate date = QDate(year, 1, 1).addDays(qint64(i) * days / std::max(records, 1));
            while (date.month() > month) {
                const QDate monthEnd = QDate(year, month, 1).addMonths(1).addDays(-1);
                if (!write(monthEnd, QString(), 0, monthEnd.toString(QStringLiteral("yyyy年MM月")) + QStringLiteral("小结"),
                           Currency(), Currency(), Currency(), 0, -1))
                    return fail();
                ++month;
            }
            const Movement &m = cash ? CashMoves[between(0, 5)] : BankMoves[between(0, 8)];
            const Currency amount = Currency::fromRaw(qint64(between(m.minYuan, m.maxYuan)) * Currency::Scale +
                                                      between(0, 99) * 100);
            const Currency debit = m.debit ? amount : Currency();
            const Currency credit = m.debit ? Currency() : amount;
            Currency fx;
            if (forex) {
                fx = Currency::fromDouble((m.debit ? 1 : -1) * amount.toDouble() / rate).valueOr(Currency()).rounded(2);
                fxBalance += fx;
            }
            balance += debit - credit;
            int dirId = 0;
            if (between(0, 4) == 0) {
                const int key = date.month();
                const int no = ++voucherNo[key];
                if (!runInsert(db, docSql, {date.toString(Qt::ISODate), QStringLiteral("记"), no, date.toString(QStringLiteral("yyyyMM"))}, error))
                    return fail();
                // The newest voucher has the highest key (the key index answers at once).
                dirId = sqlScalar(db, {QStringLiteral("Select max(DocID) From kxDocDir"), {}}).value().toInt();
                if (!brokenLinkMade && i > 3) {
                    dirId += 1000000; // points at a voucher that is not there
                    brokenLinkMade = true;
                }
            }
            if (!write(date, QString::number(i + 1), accId.value(textOf(m.account)), textOf(m.explain), debit, credit,
                       fx, dirId, 0))
                return fail();
        }
    }
    return tx.commit();
}

} // namespace kx
