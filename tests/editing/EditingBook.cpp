#include "editing/EditingBook.h"
#include "data/SqlAccess.h"

#include <kxjournal/EditCycle.h>
#include "grid/Sheet.h"
#include <kxjournal/Schema.h>

#include <QMenu>
#include <QVariantMap>

namespace kxtest {

EditingBook::EditingBook(Engine engine) : db(std::make_unique<TestDatabase>(engine))
{
    kx::Database conn = db->open();
    if (!kx::Schema::create(conn).ok())
        return;
    BookBuilder b(conn);
    bank = b.account(QStringLiteral("1002"), QStringLiteral("银行存款"));
    icbc = b.account(QStringLiteral("100201"), QStringLiteral("工商银行"), QStringLiteral("gs"));
    ccb = b.account(QStringLiteral("100202"), QStringLiteral("建设银行"));
    receivable = b.account(QStringLiteral("1122"), QStringLiteral("应收账款"), QStringLiteral("yszk"));
    codeAsName = b.account(QStringLiteral("9001"), QStringLiteral("1122"));
    payable = b.account(QStringLiteral("2202"), QStringLiteral("应付账款"));
    payableIcbc = b.account(QStringLiteral("220201"), QStringLiteral("工商银行"));
    expenses = b.account(QStringLiteral("6602"), QStringLiteral("管理费用"), QStringLiteral("glfy"));
    book = b.book(QStringLiteral("0201"), QStringLiteral("基本户"));
    auto rec = [&](int row, const char *date, const char *explain, int accId, const char *side, const char *amount) {
        QVariantMap f{{QStringLiteral("JnlDate"), QString::fromUtf8(date)},
                      {QStringLiteral("Explain"), QString::fromUtf8(explain)},
                      {QString::fromUtf8(side), QString::fromUtf8(amount)}};
        if (accId)
            f.insert(QStringLiteral("AccID"), accId);
        b.record(book, row, f);
    };
    rec(1, "2024-12-31", "期初余额", 0, "Debit", "1000");
    rec(2, "2025-01-05", "收到货款", receivable, "Debit", "500");
    rec(3, "2025-01-10", "付材料款", payable, "Credit", "200");
    rec(4, "2025-01-15", "报销差旅费", expenses, "Credit", "50");
    acc = std::make_unique<kx::SqlAccContext>(db->open());
    acc->setBeginDate(QDate(2025, 1, 1));
    acc->setPeriodStart(QDate(2025, 1, 1));
    acc->setPeriodEnd(QDate(2025, 1, 31));
    journal = std::make_unique<kx::Journal>();
    journal->setAcc(acc.get());
    QObject::connect(journal.get(), &kx::Journal::Notify, [this](const QString &m, bool box) {
        said << m;
        if (box)
            boxes << m;
    });
    journal->setAsker([](const QString &, const QString &) { return false; });
    journal->Load(book);
    grid = kx::Sheet::of(journal->Grid());
}

int EditingBook::col(const char *key) const
{
    return grid->colIndex(QString::fromUtf8(key));
}

QString EditingBook::text(int row, const char *key) const
{
    return grid->text(row, col(key));
}

bool EditingBook::type(int row, const char *key, const QString &t) const
{
    grid->setCursor(row, col(key));
    return grid->editCycle()->editCell(row, col(key), t);
}

QString pasteLine(const EditingBook &b, const QMap<QString, QString> &cells)
{
    QStringList out;
    for (int c = b.col("ShowName"); c < b.grid->cols(); ++c)
        if (!b.grid->isColHidden(c))
            out << cells.value(b.grid->colKey(c));
    return out.join(QLatin1Char('\t'));
}

QString pasteLineFrom(const EditingBook &b, const char *first, const QMap<QString, QString> &cells)
{
    QStringList out;
    int last = 0;
    for (int c = b.col(first); c < b.grid->cols(); ++c)
        if (!b.grid->isColHidden(c)) {
            out << cells.value(b.grid->colKey(c));
            if (cells.contains(b.grid->colKey(c)))
                last = int(out.size());
        }
    return out.mid(0, last).join(QLatin1Char('\t'));
}

kx::Currency storedAmount(const EditingBook &b, int row, const char *field)
{
    const kx::Database db = b.db->open();
    const QVariant v = kx::sqlScalar(db, {QStringLiteral("Select %1 From kxJournalRecs Where Row = %2")
                                      .arg(QString::fromLatin1(field))
                                      .arg(row),
                                  {}})
                           .valueOr(QVariant());
    return kx::Currency::fromStoredText(v.toString()).valueOr(kx::Currency::invalid());
}

void runMenuItem(kx::Journal &journal, const char *name)
{
    journal.contextMenu()->popup(QPoint(0, 0));
    journal.menuAction(QString::fromLatin1(name))->trigger();
    journal.contextMenu()->hide();
}

} // namespace kxtest
