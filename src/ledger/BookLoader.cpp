#include "ledger/BookLoader.h"

#include "data/BookState.h"
#include "data/JournalDefinition.h"
#include "data/RecordFetcher.h"
#include "grid/GridBusy.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "kxjournal/GridModel.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/ColumnModel.h"
#include "ledger/RowLook.h"
#include "ledger/SummaryRows.h"

#include <QCoreApplication>
#include <QDate>
#include <QHash>
#include <QSqlRecord>

namespace kx {

namespace {

const QStringList AmountFields{QStringLiteral("Debit"), QStringLiteral("Credit"), QStringLiteral("Rate"),
                               QStringLiteral("Forex"), QStringLiteral("Balance"), QStringLiteral("fxBalance")};

QDate dateOf(const GridModel &grid, int row)
{
    return QDate::fromString(grid.text(row, QStringLiteral("JnlDate")), Qt::ISODate);
}

} // namespace

BookLoader::BookLoader(GridModel &grid, BookState &book) : m_grid(grid), m_book(book) {}

BookLoader::Outcome BookLoader::load(int docId)
{
    if (m_book.cancelledByHost && m_book.cancelledByHost(QStringLiteral("Load")))
        return Cancelled;
    if (!m_book.acc)
        return Failed;
    const Database &db = m_book.acc->Connection();
    GridBusy busy(m_grid, QStringLiteral("Loading"));

    JournalDefinition definition(db, m_book);
    if (docId != 0)
        definition.read(docId);
    if (m_book.caption)
        m_book.caption(definition.caption());
    const bool consolidated = m_book.isConsolidated();
    const QString suffix = consolidated ? QStringLiteral("及其所有下级日记账") : QString();
    m_book.prompt(QStringLiteral("读入：") + m_book.journalName + QStringLiteral("”") + suffix +
                      QStringLiteral("的记录..."),
                  false);
    m_book.removedRecords.clear();
    m_book.process(0);
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    m_book.process(10);

    const SqlStatement query =
        consolidated ? db.dialect().loadConsolidated(definition.subordinateIds()) : db.dialect().loadBook(m_book.docId);
    // The key index counts a book's records at once; the array is then sized once.
    const int expected = consolidated ? 0 : db.scalar(db.dialect().countRecords(m_book.docId)).valueOr(0).toInt();
    Result<FetchedRows> fetched = RecordFetcher::fetch(db, query, AmountFields, expected);
    if (!fetched.ok()) {
        m_book.prompt(fetched.error(), false);
        m_book.process(-1);
        return Failed;
    }
    m_book.process(20);

    m_grid.setRows(m_grid.fixedRows());
    m_book.lastSumRow = 0;
    Outcome outcome = Loaded;
    FetchedRows rows = fetched.takeValue();
    if (rows.cells.rows() == 0) {
        fillEmptyBook();
        outcome = Empty;
    } else {
        const QStringList names = rows.fieldNames;
        m_grid.loadArray(std::move(rows.cells), m_grid.fixedRows(), m_grid.fixedCols());
        for (int i = 0; i < names.size(); ++i)
            m_grid.setColKey(m_grid.fixedCols() + i, names.at(i));
        if (consolidated)
            mergeMonths();
        m_book.process(30);
        dressRows();
        if (!consolidated)
            labelRows();
        m_book.process(100);
        if (m_book.optionIcon)
            m_book.optionIcon(consolidated ? QStringLiteral("Jnl1") : QStringLiteral("Jnl"));
        m_book.prompt(QStringLiteral("已读入“") + m_book.journalName + QStringLiteral("”") + suffix +
                          QStringLiteral("的记录。"),
                      false);
        ColumnModel::define(m_grid, m_book);
    }
    ColumnModel::applyFormats(m_grid, m_book);
    m_book.process(-1);
    m_book.explainList.clear();
    return outcome;
}

void BookLoader::fillEmptyBook()
{
    m_grid.setRows(10);
    ColumnModel::define(m_grid, m_book);
    const int first = m_grid.fixedRows();
    const QDate begin = m_book.acc->BeginDate();
    m_grid.setText(first, QStringLiteral("JnlDate"), begin.toString(Qt::ISODate));
    m_grid.setText(first, QStringLiteral("Explain"), QStringLiteral("期初余额"));
    m_grid.setText(first, QStringLiteral("Dir"), QStringLiteral("平"));
    m_grid.setSubtotal(first, true);
    m_grid.setCellBold(first, m_grid.fixedCols(), first, m_grid.cols() - 1, true);
    m_grid.setText(first, QStringLiteral("ShowName"), begin.toString(QStringLiteral("yyyy年期初")));
}

void BookLoader::mergeMonths()
{
    // Each book's first record, to know which row opens a book.
    QHash<int, QString> firstRecord;
    const Database &db = m_book.acc->Connection();
    QDate previous;
    SummaryRows summaries(m_grid, m_book);
    for (int r = m_grid.fixedRows(); r < m_grid.rows(); ++r) {
        const int doc = int(m_grid.value(r, QStringLiteral("DocID")));
        if (!firstRecord.contains(doc)) {
            QString key;
            Result<QSqlQuery> q = db.exec(db.dialect().firstRecordOfBook(doc));
            if (q.ok()) {
                QSqlQuery first = q.takeValue();
                if (first.next())
                    key = first.record().value(QStringLiteral("RecID")).toString();
            }
            firstRecord.insert(doc, key);
        }
        const QDate date = dateOf(m_grid, r);
        if (m_grid.text(r, QStringLiteral("RecID")) == firstRecord.value(doc)) {
            m_grid.setText(r, QStringLiteral("Tag"), QStringLiteral("0"));
            previous = date;
            continue;
        }
        if (RowLook::isSummary(m_grid, r)) {
            m_grid.removeRowAt(r--);
            continue;
        }
        if (previous.isValid() && date.isValid() &&
            date.year() * 12 + date.month() > previous.year() * 12 + previous.month()) {
            summaries.insertBelow(r - 1);
            ++r;
        }
        previous = date;
    }
    BalanceCalculator(m_grid, m_book).calculate(m_grid.fixedRows());
}

void BookLoader::dressRows()
{
    const int first = m_grid.fixedRows();
    const int last = m_grid.rows() - 1;
    const int tag = m_grid.colIndex(QStringLiteral("Tag"));
    const int dirId = m_grid.colIndex(QStringLiteral("DirID"));
    const int accDoc = m_grid.colIndex(QStringLiteral("AccDoc"));
    const int debit = m_grid.colIndex(QStringLiteral("Debit"));
    const int credit = m_grid.colIndex(QStringLiteral("Credit"));
    const int balance = m_grid.colIndex(QStringLiteral("Balance"));
    const int dir = m_grid.colIndex(QStringLiteral("Dir"));
    const QString zero = QStringLiteral("0");

    // Cells hold the fetched forms: integers and amounts in plain text, so
    // signs and zeros are read off the text without parsing every row.
    auto isNegative = [&](int r, int c) {
        const QString &t = m_grid.textRef(r, c);
        return !t.isEmpty() && t.front() == QLatin1Char('-') && m_grid.value(r, c) < 0;
    };
    int lastSum = m_book.lastSumRow;
    for (int r = first; r <= last; ++r)
        if (isNegative(r, tag))
            lastSum = r;
    m_book.lastSumRow = lastSum;

    const QString debitSide = QStringLiteral("借");
    const QString creditSide = QStringLiteral("贷");
    const QString even = QStringLiteral("平");
    const QString broken = QStringLiteral("#错误的凭证链接#");
    int reported = 30;
    for (int r = first; r <= last; ++r) {
        const bool summary = isNegative(r, tag);
        if (summary)
            RowLook::markSummary(m_grid, m_book, r);
        const QString &link = m_grid.textRef(r, dirId);
        if (!link.isEmpty() && link != zero && m_grid.textRef(r, accDoc).isEmpty())
            m_grid.setText(r, accDoc, broken);
        if (m_grid.textRef(r, debit) == zero)
            m_grid.setText(r, debit, QString());
        if (m_grid.textRef(r, credit) == zero)
            m_grid.setText(r, credit, QString());
        const QString &b = m_grid.textRef(r, balance);
        m_grid.setText(r, dir, b.startsWith(QLatin1Char('-')) ? creditSide : (b.isEmpty() || b == zero) ? even : debitSide);
        // Summary rows, the opening row and everything above the last summary row are closed.
        const bool locked = summary || r == first || r <= lastSum;
        if (locked)
            RowLook::setLocked(m_grid, m_book, r, true);
        const int percent = 30 + int(70LL * (r - first + 1) / (last - first + 1));
        if (percent > reported) {
            reported = percent;
            m_book.process(percent);
        }
    }
}

void BookLoader::labelRows()
{
    const int first = m_grid.fixedRows();
    const int showName = m_grid.colIndex(QStringLiteral("ShowName"));
    m_grid.setText(first, showName, dateOf(m_grid, first).toString(QStringLiteral("yyyy年期初")));
    for (int r = first + 1; r < m_grid.rows(); ++r) {
        if (!m_grid.isSubtotal(r))
            continue;
        const QDate d = dateOf(m_grid, r);
        if (d.isValid())
            m_grid.setText(r, showName, d.toString(QStringLiteral("yyyy年MM月")));
    }
}

} // namespace kx
