#include "ledger/BookLoader.h"

#include "data/BankSchema.h"

#include "data/JournalDefinition.h"
#include "data/RecordFetcher.h"
#include "data/RecordWriter.h"
#include "grid/GridBusy.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "grid/Sheet.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookRow.h"
#include "ledger/ColumnModel.h"
#include "ledger/ReconciledRows.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "ledger/RowLook.h"
#include "ledger/StoredForms.h"
#include "ledger/StoredRecords.h"
#include "ledger/SummaryRows.h"

#include "data/SqlAccess.h"
#include "grid/CellArrayData.h"

#include <QDate>
#include <climits>
#include <QHash>
#include <QSqlRecord>

namespace kx {

namespace {

// True when the cell holds exactly the text "0".
bool isZero(const Sheet &grid, int row, int col)
{
    return !grid.isEmpty(row, col) && grid.amount(row, col).isZero() && grid.text(row, col) == QLatin1String("0");
}

} // namespace

const QStringList &BookLoader::amountFields()
{
    using C = JournalColumns;
    static const QStringList fields{C::key(C::Debit), C::key(C::Credit), C::key(C::Rate),
                                    C::key(C::Forex), C::key(C::Balance), C::key(C::fxBalance)};
    return fields;
}

BookLoader::BookLoader(Book &book)
    : m_book(book), m_grid(book.sheet()), m_state(book.state()), m_host(book.host()), m_acc(book.context())
{
}

QString BookLoader::oversizedKey(FetchedRows &rows)
{
    const qsizetype at = rows.fieldNames.indexOf(JournalColumns::key(JournalColumns::RecID), 0);
    int col = int(at);
    for (int i = 0; col < 0 && i < rows.fieldNames.size(); ++i)
        if (rows.fieldNames.at(i).compare(JournalColumns::key(JournalColumns::RecID), Qt::CaseInsensitive) == 0)
            col = i;
    if (col < 0)
        return {};
    col += rows.cells.cols() - int(rows.fieldNames.size());
    CellArrayData &block = rows.cells.data();
    for (int r = 0; r < rows.cells.rows(); ++r) {
        const Cell cell = block.at(r, col);
        // Keys live in int columns of the grid; a bigger one would be cut.
        if ((cell.kind() == Cell::Number && (cell.payload() > INT_MAX || cell.payload() < INT_MIN)) ||
            cell.kind() == Cell::Text)
            return rows.cells.text(r, col);
    }
    return {};
}

BookLoader::Outcome BookLoader::load(int docId)
{
    if (m_host.cancels(QStringLiteral("Load")))
        return Cancelled;
    if (!m_acc) {
        m_host.failure(QStringLiteral("没有连接到账套。"), false);
        return Failed;
    }
    Database &db = m_acc->Connection();
    GridBusy busy(m_grid, QStringLiteral("Loading"));

    // Until the new book's rows are in, the control stays on the book it
    // shows: a save must still write that book's rows to that book.
    const BookDefinition previous = m_state.book;
    const auto fail = [&](const QString &why) {
        m_state.book = previous;
        m_host.failure(why, false);
        m_host.progress(-1);
        return Failed;
    };
    BookDefinition &book = m_state.book;
    JournalDefinition definition(db, book);
    // A connection dropped since the last statement (a server restart) is
    // opened again, as a save does.
    if (const Result<void> connected = ensureConnected(db); !connected.ok())
        return fail(connected.error());
    if (docId != 0)
        definition.read(docId);
    if (definition.subordinateIds().isEmpty())
        return fail(QStringLiteral("没有这本日记账（编号 %1）。").arg(book.docId));
    const bool consolidated = m_state.isConsolidated();
    const QString suffix = consolidated ? QStringLiteral("及其所有下级日记账") : QString();
    m_host.note(QStringLiteral("读入：") + book.journalName + QStringLiteral("”") + suffix +
                      QStringLiteral("的记录..."));
    m_host.progress(0);
    m_host.progress(10);
    // The handlers above may have deleted the control or the context (and
    // with it the connection): nothing is read, and the grid stays as it is.
    if (m_host.stopped() || !m_acc)
        return fail(QStringLiteral("没有连接到账套。"));

    const SqlStatement query = consolidated ? sqlDialect(db).loadConsolidated(definition.subordinateIds())
                                            : sqlDialect(db).loadBook(book.docId);
    // Rows are held by pointer, so the array grows cheaply without a count first.
    // Rows read while the database's change stamp held still are what it
    // held at that stamp: a first save need not read them back to find
    // other users' changes unless the stamp has moved since.
    const auto stamps = RecordWriter::create(db);
    ChangeStamp stamp, stampAfter;
    const bool stampedBefore = stamps->changeStamp(stamp);
    Result<FetchedRows> fetched = RecordFetcher::fetch(db, query, amountFields(), 0, m_grid.fixedCols());
    if (!fetched.ok())
        return fail(fetched.error());
    // Rows read inside a transaction someone else opened on this connection
    // may never be committed.
    const bool readUnderStamp =
        stampedBefore && !stamp.inTransaction && stamps->changeStamp(stampAfter) && stampAfter == stamp;
    FetchedRows rows = fetched.takeValue();
    if (const QString key = oversizedKey(rows); !key.isEmpty())
        return fail(QStringLiteral("记录编号 %1 超出了能处理的范围，不能读入这本日记账（存储时会重复这条记录）。").arg(key));
    m_host.captionChanged(definition.caption(consolidated));
    m_host.progress(20);
    // The reports below come before the grid changes and after it is done:
    // a handler that writes into the grid never meets a book half laid down,
    // nor a write of its own taken for what is stored.
    if (!m_host.stopped() && m_acc)
        m_host.progress(30);
    if (m_host.stopped() || !m_acc)
        return fail(QStringLiteral("没有连接到账套。"));
    m_state.removedRecords.clear();
    m_state.loadedDocId = book.docId;
    m_state.loadedConsolidated = consolidated;

    m_grid.setRows(m_grid.fixedRows());
    m_state.lastSumRow = 0;
    m_state.stored.clear();
    m_state.unwritable.clear();
    Outcome outcome = Loaded;
    std::vector<int> unstored;
    QString unreadable;  // said once the book is in
    if (rows.cells.rows() == 0) {
        fillEmptyBook();
        outcome = Empty;
    } else {
        const QStringList names = rows.fieldNames;
        m_grid.loadArray(std::move(rows.cells), m_grid.fixedRows(), 0);
        for (int i = 0; i < names.size(); ++i)
            m_grid.setColKey(m_grid.fixedCols() + i, names.at(i));
        if (consolidated)
            mergeMonths();
        // A book's own records are remembered as stored in the same pass,
        // each just before dressing changes its looks.
        unreadable = dressRows(consolidated ? nullptr : &unstored);
        if (!consolidated && readUnderStamp)
            m_state.stored.setStamp(stamp);
        if (!consolidated)
            labelRows();
        m_host.layoutChanged(consolidated);
        ColumnModel::define(m_book);
    }
    ColumnModel::applyFormats(m_book);
    // A book kept in a foreign currency shows its rate and foreign figures.
    if (!consolidated) {
        const Result<QVariant> currency =
            sqlScalar(db, {QStringLiteral("SELECT Currency FROM kxAccClass WHERE AccID = %1").arg(book.accId), {}});
        if (currency.ok() && ColumnModel::isForeignCurrency(currency.value().toString()))
            ColumnModel::showForeignColumns(m_book);
    }
    if (!consolidated)
        markReconciled(db);
    // What each record held as read, for a save to tell its changes from
    // other users' (balances are worked out again, never compared).
    m_grid.setCleanTextCols(StoredRecords::enteredColumns(JournalColumns(m_grid)));
    // Dressing wrote labels and locks; from here on a touched row is one whose
    // values differ from the stored ones (or that was never stored, or is not
    // stored at its place in the grid).
    m_grid.markRowsClean();
    if (consolidated || outcome == Empty) {
        markUnstoredRows();
    } else {
        for (int r : unstored)
            m_grid.markRowTouched(r);
    }
    // The grid shows what is stored: nothing is left to save.
    m_state.dirty = false;
    if (outcome == Loaded) {
        m_host.progress(100);
        if (!unreadable.isEmpty())
            m_host.prompt(unreadable, true);
        m_host.prompt(QStringLiteral("已读入“") + book.journalName + QStringLiteral("”") + suffix +
                          QStringLiteral("的记录。"),
                      false);
    }
    m_host.progress(-1);
    return outcome;
}

void BookLoader::markReconciled(const Database &db)
{
    ReconciledRows::reset(m_grid);
    if (!BankSchema::exists(db))
        return;
    Result<QSqlQuery> q = sqlExec(db, {QStringLiteral("SELECT m.RecID FROM kxBankMatch m INNER JOIN kxBankStmt s ON "
                                                      "s.StmtID = m.StmtID WHERE s.DocID = %1")
                                           .arg(m_state.book.docId),
                                       {}});
    if (!q.ok())
        return;
    QSet<qint64> matched;
    QSqlQuery query = q.takeValue();
    while (query.next())
        matched.insert(query.value(0).toLongLong());
    if (!matched.isEmpty())
        ReconciledRows::mark(m_grid, matched);
}

void BookLoader::fillEmptyBook()
{
    m_grid.setRows(10);
    ColumnModel::define(m_book);
    const int first = m_grid.fixedRows();
    const JournalColumns columns(m_grid);
    const BookRow opening(m_grid, columns, first);
    const QDate begin = m_acc->BeginDate();
    opening.setText(JournalColumns::JnlDate, begin.toString(Qt::ISODate));
    opening.setText(JournalColumns::Explain, QStringLiteral("期初余额"));
    opening.setText(JournalColumns::Dir, QStringLiteral("平"));
    m_grid.setSubtotal(first, true);
    m_grid.setCellBold(first, m_grid.fixedCols(), first, m_grid.cols() - 1, true);
    opening.setText(JournalColumns::ShowName, BookRow::dateLabel(begin, BookRow::Label::Opening));
}

void BookLoader::rememberStored(const BookRow &row, std::vector<int> &unstored)
{
    const int r = row.index();
    const int recId = row.recId();
    const int storedRow = int(row.number(JournalColumns::Row));
    if (recId <= 0 || storedRow != r)
        unstored.push_back(r);
    if (recId > 0) {
        // With the print without balances, a save finds a record whose
        // balances alone moved without reading it back.
        quint64 rest = 0;
        const quint64 print = StoredRecords::fingerprint(row, int(row.number(JournalColumns::DocID)), storedRow,
                                                         r == m_grid.fixedRows(), &rest);
        m_state.stored.remember(recId, print, rest);
    }
}

void BookLoader::markUnstoredRows()
{
    const JournalColumns columns(m_grid);
    for (int r = m_grid.fixedRows(); r < m_grid.rows(); ++r) {
        const BookRow row(m_grid, columns, r);
        if (row.recId() <= 0 || row.number(JournalColumns::Row) != r)
            m_grid.markRowTouched(r);
    }
}

void BookLoader::mergeMonths()
{
    // Each book's first record, to know which row opens a book.
    QHash<int, QString> firstRecord;
    const Database &db = m_acc->Connection();
    QDate previous;
    SummaryRows summaries(m_book, LedgerHost::none());
    const JournalColumns columns(m_grid);
    for (int r = m_grid.fixedRows(); r < m_grid.rows(); ++r) {
        const BookRow row(m_grid, columns, r);
        const int doc = int(row.number(JournalColumns::DocID));
        if (!firstRecord.contains(doc)) {
            QString key;
            Result<QSqlQuery> q = sqlExec(db, sqlDialect(db).firstRecordOfBook(doc));
            if (q.ok()) {
                QSqlQuery first = q.takeValue();
                if (first.next())
                    key = first.record().value(JournalColumns::key(JournalColumns::RecID)).toString();
            }
            firstRecord.insert(doc, key);
        }
        const QDate date = row.date();
        if (row.text(JournalColumns::RecID) == firstRecord.value(doc)) {
            row.setText(JournalColumns::Tag, QStringLiteral("0"));
            previous = date;
            continue;
        }
        if (row.isSummary()) {
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
    BalanceCalculator(m_book).calculate(m_grid.fixedRows());
}

QString BookLoader::dressRows(std::vector<int> *unstored)
{
    const int first = m_grid.fixedRows();
    const int last = m_grid.rows() - 1;
    const JournalColumns columns(m_grid);
    const int dirId = columns[JournalColumns::DirID];
    const int accDoc = columns[JournalColumns::AccDoc];
    const int debit = columns[JournalColumns::Debit];
    const int credit = columns[JournalColumns::Credit];
    const int balance = columns[JournalColumns::Balance];
    const int dir = columns[JournalColumns::Dir];
    // Cells hold the fetched values typed: signs and zeros are read without
    // making a text.
    int lastSum = m_state.lastSumRow;
    // The last summary row is near the end of a book closed month by month.
    for (int r = last; r >= first; --r) {
        if (BookRow::of(m_grid, columns, r).isSummary()) {
            lastSum = r;
            break;
        }
    }
    m_state.lastSumRow = lastSum;
    if (unstored)
        m_state.stored.reserve(last - first + 1);

    const QString debitSide = QStringLiteral("借");
    const QString creditSide = QStringLiteral("贷");
    const QString even = QStringLiteral("平");
    const QString broken = QStringLiteral("#错误的凭证链接#");
    QStringList odd;
    for (int r = first; r <= last; ++r) {
        const BookRow row(m_grid, columns, r);
        StoredForms::readDate(m_grid, columns, r);
        if (unstored)
            rememberStored(row, *unstored);
        // A value another program stored that this control cannot hold: the
        // row is shown, closed to editing, and never written back.
        const bool unreadable = StoredForms::unreadable(m_grid, columns, r);
        if (unreadable) {
            m_state.unwritable.insert(row.recId());
            if (odd.size() < 10)
                odd << QStringLiteral("第%1行（编号 %2）").arg(r).arg(row.recId());
        }
        const bool summary = row.isSummary();
        if (summary)
            RowLook::markSummary(m_grid, m_state.looks, r);
        if (!m_grid.isEmpty(r, dirId) && !isZero(m_grid, r, dirId) && m_grid.isEmpty(r, accDoc))
            m_grid.setText(r, accDoc, broken);
        if (isZero(m_grid, r, debit))
            m_grid.setText(r, debit, QString());
        if (isZero(m_grid, r, credit))
            m_grid.setText(r, credit, QString());
        if (m_grid.isEmpty(r, balance) || isZero(m_grid, r, balance)) {
            m_grid.setText(r, dir, even);
        } else {
            const int sign = m_grid.amount(r, balance).sign();
            const bool negative = sign < 0 || (sign == 0 && m_grid.text(r, balance).startsWith(QLatin1Char('-')));
            m_grid.setText(r, dir, negative ? creditSide : debitSide);
        }
        // Summary rows, the opening row and everything above the last summary row are closed.
        const bool locked = summary || r == first || r <= lastSum || unreadable;
        if (locked)
            RowLook::setLocked(m_grid, columns, m_state.looks, r, true);
    }
    if (odd.isEmpty())
        return {};
    return QStringLiteral("以下 %1 条记录含有不能识别的日期或金额，已设为只读，存储时不会改写它们：\n")
               .arg(m_state.unwritable.size()) +
           odd.join(QLatin1Char('\n'));
}

void BookLoader::labelRows()
{
    const int first = m_grid.fixedRows();
    const JournalColumns columns(m_grid);
    const BookRow opening(m_grid, columns, first);
    opening.setText(JournalColumns::ShowName, BookRow::dateLabel(opening.date(), BookRow::Label::Opening));
    for (int r = first + 1; r < m_grid.rows(); ++r) {
        if (!m_grid.isSubtotal(r))
            continue;
        const BookRow row(m_grid, columns, r);
        const QDate d = row.date();
        if (d.isValid())
            row.setText(JournalColumns::ShowName, BookRow::dateLabel(d, BookRow::Label::Summary));
    }
}

} // namespace kx
