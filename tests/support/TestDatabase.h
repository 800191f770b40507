#pragma once

#include <kxjournal/Database.h>

#include <QString>
#include <QTemporaryDir>
#include <memory>
#include <string>

namespace kxtest {

/// The engines the data tests run on.
enum class Engine { Sqlite, Postgres };

/// "Sqlite" or "Postgres", for test names.
std::string engineName(Engine engine);

/// A fresh, empty database for one test: a new SQLite file, or a new schema
/// on the throw-away PostgreSQL server, removed again when the test ends.
class TestDatabase
{
public:
    explicit TestDatabase(Engine engine);
    ~TestDatabase();

    /// The URL of the database (open it as often as needed).
    QString url() const { return m_url; }
    /// A new connection to it.
    kx::Database open() const;

private:
    Engine m_engine;
    QString m_url;
    QString m_schema;
    std::unique_ptr<QTemporaryDir> m_dir;
};

/// Fills \a db with sample books (\a records records over \a books bottom
/// books, all in 2025) and returns the id of the book with code \a code
/// (0 when that failed).
int fillSampleBooks(kx::Database &db, int records, int books, const QString &code = QStringLiteral("020101"));

/// The URL of the PostgreSQL test server: from KX_TEST_PG_URL, from the
/// cluster started by ctest (KX_TEST_PG_STATE/url), or from a cluster this
/// process starts and stops itself.
QString postgresUrl();

} // namespace kxtest
