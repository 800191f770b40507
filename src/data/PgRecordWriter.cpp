#include "data/PgRecordWriter.h"

#include "kxjournal/Database.h"

#include <QSet>

namespace kx {

namespace {

// The type each field is cast to when it arrives through a VALUES list.
QString castOf(const QString &field)
{
    static const QStringList integers{QStringLiteral("AccID"), QStringLiteral("Flag"), QStringLiteral("Tag"),
                                      QStringLiteral("DirID"), QStringLiteral("Row"), QStringLiteral("DocID"),
                                      QStringLiteral("RecID")};
    static const QStringList numbers{QStringLiteral("Debit"), QStringLiteral("Credit"), QStringLiteral("Rate"),
                                     QStringLiteral("Forex"), QStringLiteral("balance"), QStringLiteral("fxBalance")};
    if (field == QLatin1String("JnlDate"))
        return QStringLiteral("::date");
    if (integers.contains(field))
        return QStringLiteral("::integer");
    if (numbers.contains(field))
        return QStringLiteral("::numeric");
    return QStringLiteral("::text");
}

QString valueRows(int rows, int columns)
{
    QStringList marks;
    for (int c = 0; c < columns; ++c)
        marks << QStringLiteral("?");
    const QString one = QLatin1Char('(') + marks.join(QLatin1Char(',')) + QLatin1Char(')');
    QStringList all;
    all.reserve(rows);
    for (int r = 0; r < rows; ++r)
        all << one;
    return all.join(QLatin1Char(','));
}

} // namespace

PgRecordWriter::PgRecordWriter(const Database &db) : m_db(db) {}

Result<void> PgRecordWriter::remove(int recId)
{
    return m_db.run(m_db.dialect().deleteRecord(recId));
}

Result<QList<int>> PgRecordWriter::updateBatch(const std::vector<const RecordValues *> &batch, bool withAmounts)
{
    const QStringList &names = fieldNames(withAmounts);
    QStringList sets;
    QStringList columns{QStringLiteral("RecID")};
    for (const QString &f : names) {
        sets << f + QStringLiteral("=v.") + f + castOf(f);
        columns << f;
    }
    SqlStatement st;
    st.text = QStringLiteral("Update kxJournalRecs AS t Set %1 From (Values %2) AS v(%3) Where t.RecID=v.RecID::integer "
                             "Returning t.RecID")
                  .arg(sets.join(QLatin1Char(',')), valueRows(int(batch.size()), int(columns.size())),
                       columns.join(QLatin1Char(',')));
    for (const RecordValues *row : batch) {
        st.binds << row->recId;
        st.binds << bindable(*row);
    }
    Result<QSqlQuery> r = m_db.exec(st);
    if (!r.ok())
        return Error(r.error());
    QSqlQuery q = r.takeValue();
    QList<int> updated;
    while (q.next())
        updated << q.value(0).toInt();
    return updated;
}

Result<void> PgRecordWriter::insertBatch(const std::vector<const RecordValues *> &batch, bool withAmounts,
                                   QHash<int, int> &added)
{
    const QStringList &names = fieldNames(withAmounts);
    SqlStatement st;
    st.text = QStringLiteral("Insert Into kxJournalRecs (%1) Values %2 Returning RecID, Row")
                  .arg(names.join(QLatin1Char(',')), valueRows(int(batch.size()), int(names.size())));
    for (const RecordValues *row : batch)
        st.binds << bindable(*row);
    Result<QSqlQuery> r = m_db.exec(st);
    if (!r.ok())
        return Error(r.error());
    // Row is the grid row, unique within a pass: it tells which key is whose.
    QSqlQuery q = r.takeValue();
    while (q.next())
        added.insert(q.value(1).toInt(), q.value(0).toInt());
    return {};
}

Result<QHash<int, int>> PgRecordWriter::write(const std::vector<RecordValues> &rows)
{
    using Keys = Result<QHash<int, int>>;
    QHash<int, int> added;
    for (bool withAmounts : {true, false}) {
        std::vector<const RecordValues *> updates;
        std::vector<const RecordValues *> inserts;
        for (const RecordValues &row : rows) {
            if (row.withAmounts == withAmounts)
                (row.recId > 0 ? updates : inserts).push_back(&row);
        }
        for (std::size_t i = 0; i < updates.size(); i += BatchRows) {
            const std::vector<const RecordValues *> batch(updates.begin() + std::ptrdiff_t(i),
                                                          updates.begin() + std::ptrdiff_t(std::min(updates.size(), i + BatchRows)));
            const Result<QList<int>> done = updateBatch(batch, withAmounts);
            if (!done.ok())
                return Error(done.error());
            if (done.value().size() == int(batch.size()))
                continue;
            // Records deleted by someone else are added again.
            const QList<int> doneKeys = done.value();
            const QSet<int> found(doneKeys.begin(), doneKeys.end());
            for (const RecordValues *row : batch)
                if (!found.contains(row->recId))
                    inserts.push_back(row);
        }
        for (std::size_t i = 0; i < inserts.size(); i += BatchRows) {
            const std::vector<const RecordValues *> batch(inserts.begin() + std::ptrdiff_t(i),
                                                          inserts.begin() + std::ptrdiff_t(std::min(inserts.size(), i + BatchRows)));
            const Result<void> s = insertBatch(batch, withAmounts, added);
            if (!s.ok())
                return Error(s.error());
        }
    }
    return added;
}

} // namespace kx
