#include "ledger/BookSaver.h"

#include "data/BookState.h"
#include "data/RecordWriter.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "kxjournal/GridModel.h"
#include "kxjournal/Transaction.h"
#include "ledger/RowLook.h"

#include <QCoreApplication>
#include <QDate>
#include <cmath>

namespace kx {

namespace {

// yyyy-MM-dd naming a real day, checked without the cost of a date parser.
bool isIsoDate(const QString &t)
{
    if (t.size() != 10 || t.at(4) != QLatin1Char('-') || t.at(7) != QLatin1Char('-'))
        return false;
    int parts[3] = {0, 0, 0};
    int part = 0;
    for (int i = 0; i < 10; ++i) {
        if (i == 4 || i == 7) {
            ++part;
            continue;
        }
        const char16_t c = t.at(i).unicode();
        if (c < u'0' || c > u'9')
            return false;
        parts[part] = parts[part] * 10 + (c - u'0');
    }
    return QDate::isValid(parts[0], parts[1], parts[2]);
}

} // namespace

BookSaver::BookSaver(GridModel &grid, BookState &book) : m_grid(grid), m_book(book) {}

bool BookSaver::save(const QString &caption, int instance)
{
    if (m_book.isConsolidated()) {
        m_book.prompt(QStringLiteral("合并日记账是不能被存储的。"), true);
        return false;
    }
    if (m_book.cancelledByHost && m_book.cancelledByHost(QStringLiteral("Save")))
        return false;
    QCoreApplication::processEvents();
    if (m_book.dirty) {
        const Status written = writeRecords();
        if (!written.ok()) {
            m_book.process(-1);
            m_book.prompt(written.error(), false);
            return false;
        }
    }
    m_book.dirty = false;
    if (m_book.acc)
        m_book.acc->SaveNotice(QStringLiteral("%1|All|JournalRec|%2||").arg(instance).arg(m_book.docId));
    m_book.prompt(QStringLiteral("已存储“") + caption + QStringLiteral("”的记录;"), false);
    if (m_book.afterSaved)
        m_book.afterSaved();
    return true;
}

Status BookSaver::writeRecords()
{
    if (!m_book.acc)
        return Status::failure(QStringLiteral("没有连接到账套。"));
    m_book.process(0);
    Database &db = m_book.acc->Connection();
    if (!db.ensureConnected())
        return Status::failure(db.lastError());

    const int first = m_grid.fixedRows();
    const int last = m_grid.rows() - 1;
    const int rows = m_grid.rows();
    // A book whose first row was never stored is written out whole.
    if (last >= first && m_grid.value(first, QStringLiteral("Row")) == m_grid.value(first, QStringLiteral("RecID")))
        for (int r = first; r <= last; ++r)
            m_grid.setRowData(r, 2);

    // Columns are found once; the loop below runs for every row of the book.
    const auto col = [this](const char *key) { return m_grid.colIndex(QLatin1String(key)); };
    const int cRecId = col("RecID"), cDate = col("JnlDate"), cTag = col("Tag"), cNo = col("JnlNo"),
              cAcc = col("AccID"), cExplain = col("Explain"), cDebit = col("Debit"), cCredit = col("Credit"),
              cRate = col("Rate"), cForex = col("Forex"), cBalance = col("Balance"), cFxBalance = col("fxBalance"),
              cField1 = col("Field1"), cField2 = col("Field2"), cField3 = col("Field3"), cField4 = col("Field4"),
              cFlag = col("Flag"), cRemark = col("Remark"), cDirId = col("DirID");
    const auto amount = [this](int r, int c) { return FieldValue::of(m_grid.amount(r, c)); };
    const auto text = [this](int r, int c) { return FieldValue::of(m_grid.textRef(r, c)); };
    const auto number = [this](int r, int c) {
        // Integer cells are plain digits; anything else is read the long way.
        bool ok = false;
        const int v = m_grid.textRef(r, c).toInt(&ok);
        return ok ? v : int(m_grid.value(r, c));
    };

    std::vector<RecordValues> records;
    records.reserve(std::size_t(std::max(0, last - first + 1)));
    int reported = -1;
    for (int r = first; r <= last; ++r) {
        const int percent = int(std::round(double(r) / rows * 100.0));
        if (percent != reported) {
            reported = percent;
            m_book.process(percent);
        }
        const QString &date = m_grid.textRef(r, cDate);
        // Rows without a date are never stored: blank rows and the empty row at the bottom.
        if (!isIsoDate(date))
            continue;
        RecordValues rec;
        rec.gridRow = r;
        rec.recId = number(r, cRecId);
        // A summary row's amount cells hold two-line totals; the opening row always writes its amounts.
        rec.withAmounts = !(number(r, cTag) < 0 && r != first);
        if (rec.withAmounts)
            rec.values = {FieldValue::of(date), text(r, cNo), FieldValue::of(number(r, cAcc)), text(r, cExplain),
                          amount(r, cDebit), amount(r, cCredit), amount(r, cRate), amount(r, cForex),
                          amount(r, cBalance), amount(r, cFxBalance), text(r, cField1), text(r, cField2),
                          text(r, cField3), text(r, cField4), FieldValue::of(number(r, cFlag)), text(r, cRemark),
                          FieldValue::of(number(r, cTag)), FieldValue::of(number(r, cDirId)), FieldValue::of(r),
                          FieldValue::of(m_book.docId)};
        else
            rec.values = {FieldValue::of(date), text(r, cNo), FieldValue::of(number(r, cAcc)), text(r, cExplain),
                          amount(r, cBalance), amount(r, cFxBalance), text(r, cField1), text(r, cField2),
                          text(r, cField3), text(r, cField4), FieldValue::of(number(r, cFlag)), text(r, cRemark),
                          FieldValue::of(number(r, cTag)), FieldValue::of(number(r, cDirId)), FieldValue::of(r),
                          FieldValue::of(m_book.docId)};
        records.push_back(std::move(rec));
    }

    Transaction tx(db);
    if (!tx.ok())
        return Status::failure(tx.error());
    const auto writer = RecordWriter::create(db);
    for (int key : m_book.removedRecords) {
        if (key <= 0)
            continue;
        const Status removed = writer->remove(key);
        if (!removed.ok())
            return removed;
    }
    const Result<QHash<int, int>> written = writer->write(records);
    if (!written.ok())
        return Status::failure(written.error());

    // A book that holds nothing but an empty opening row keeps no records at all.
    bool emptied = false;
    if (records.size() == 1 && m_grid.amount(records.front().gridRow, QStringLiteral("Balance")).isZero()) {
        const Result<QVariant> stored = db.scalar(db.dialect().countRecords(m_book.docId));
        if (!stored.ok())
            return Status::failure(stored.error());
        // Records other users added since stay: then only this row goes.
        if (stored.value().toInt() <= 1) {
            const Status cleared = db.run(db.dialect().deleteBook(m_book.docId));
            if (!cleared.ok())
                return cleared;
            emptied = true;
        }
    }
    const Status committed = tx.commit();
    if (!committed.ok())
        return committed;

    // Only now, with everything stored, does the grid learn the new keys.
    const QHash<int, int> &keys = written.value();
    for (auto it = keys.constBegin(); it != keys.constEnd(); ++it)
        m_grid.setText(it.key(), cRecId, QString::number(it.value()));
    const bool anyLocked = m_book.lastSumRow != first;
    for (const RecordValues &rec : records) {
        m_grid.setRowData(rec.gridRow, 1);
        const bool locked = anyLocked && rec.gridRow <= m_book.lastSumRow;
        m_grid.setRowForeColor(rec.gridRow, locked ? m_book.lockedForeColor : QColor());
    }
    if (emptied)
        m_grid.setText(records.front().gridRow, cRecId, QStringLiteral("0"));
    m_book.removedRecords.clear();
    m_book.process(-1);
    return true;
}

} // namespace kx
