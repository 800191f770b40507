#include "ledger/BookSaver.h"

#include "data/BookState.h"
#include "data/RecordWriter.h"
#include "data/SqlValue.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "kxjournal/GridModel.h"
#include "kxjournal/Transaction.h"
#include "ledger/RowLook.h"

#include <QCoreApplication>
#include <QDate>
#include <cmath>

namespace kx {

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

    const int cRecId = m_grid.colIndex(QStringLiteral("RecID"));
    const int cDate = m_grid.colIndex(QStringLiteral("JnlDate"));
    const int cTag = m_grid.colIndex(QStringLiteral("Tag"));
    const auto text = [this](int r, const char *key) { return m_grid.text(r, QLatin1String(key)); };
    const auto amount = [this](int r, const char *key) {
        return SqlValue::bindAmount(m_grid.amount(r, QLatin1String(key)));
    };
    const auto number = [this](int r, const char *key) { return int(m_grid.value(r, QLatin1String(key))); };

    std::vector<RecordValues> records;
    records.reserve(std::size_t(std::max(0, last - first + 1)));
    int reported = -1;
    for (int r = first; r <= last; ++r) {
        const int percent = int(std::round(double(r) / rows * 100.0));
        if (percent != reported) {
            reported = percent;
            m_book.process(percent);
        }
        const QString date = m_grid.textRef(r, cDate);
        // Rows without a date are never stored: blank rows and the empty row at the bottom.
        if (!QDate::fromString(date, Qt::ISODate).isValid())
            continue;
        RecordValues rec;
        rec.gridRow = r;
        rec.recId = int(m_grid.value(r, cRecId));
        // A summary row's amount cells hold two-line totals; the opening row always writes its amounts.
        rec.withAmounts = !(m_grid.value(r, cTag) < 0 && r != first);
        rec.values << date << text(r, "JnlNo") << number(r, "AccID") << text(r, "Explain");
        if (rec.withAmounts)
            rec.values << amount(r, "Debit") << amount(r, "Credit") << amount(r, "Rate") << amount(r, "Forex");
        rec.values << amount(r, "Balance") << amount(r, "fxBalance") << text(r, "Field1") << text(r, "Field2")
                   << text(r, "Field3") << text(r, "Field4") << number(r, "Flag") << text(r, "Remark")
                   << number(r, "Tag") << number(r, "DirID") << r << m_book.docId;
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
