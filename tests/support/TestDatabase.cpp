#include "support/TestDatabase.h"

#include "SampleBooks.h"
#include "data/SqlAccess.h"

#include <QAtomicInt>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <cstdlib>
#include <stdexcept>

namespace kxtest {

namespace {

QString ownClusterState;

void stopOwnCluster()
{
    if (ownClusterState.isEmpty())
        return;
    const std::string cmd = std::string(KX_TEST_SUPPORT_DIR) + "/pg-cluster stop '" +
                            ownClusterState.toStdString() + "' >/dev/null 2>&1";
    if (std::system(cmd.c_str()) != 0)
        return;
}

QString readUrl(const QString &stateDir)
{
    QFile f(stateDir + QStringLiteral("/url"));
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(f.readAll()).trimmed();
}

} // namespace

std::string engineName(Engine engine)
{
    return engine == Engine::Sqlite ? "Sqlite" : "Postgres";
}

QString postgresUrl()
{
    static QString url = [] {
        const QString fromEnv = qEnvironmentVariable("KX_TEST_PG_URL");
        if (!fromEnv.isEmpty())
            return fromEnv;
        const QString shared = readUrl(qEnvironmentVariable("KX_TEST_PG_STATE"));
        if (!shared.isEmpty())
            return shared;
        ownClusterState = QDir::tempPath() + QStringLiteral("/kxpg-state-%1").arg(QCoreApplication::applicationPid());
        QProcess p;
        p.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        p.start(QStringLiteral(KX_TEST_SUPPORT_DIR "/pg-cluster"), {QStringLiteral("start"), ownClusterState});
        if (!p.waitForFinished(120000) || p.exitCode() != 0)
            throw std::runtime_error("could not start the PostgreSQL test server");
        std::atexit(stopOwnCluster);
        return readUrl(ownClusterState);
    }();
    return url;
}

TestDatabase::TestDatabase(Engine engine) : m_engine(engine)
{
    if (engine == Engine::Sqlite) {
        m_dir = std::make_unique<QTemporaryDir>();
        m_url = QStringLiteral("sqlite:") + m_dir->filePath(QStringLiteral("journal.db"));
        return;
    }
    static QAtomicInt counter;
    const QString base = postgresUrl();
    m_schema = QStringLiteral("t%1_%2").arg(QCoreApplication::applicationPid()).arg(counter.fetchAndAddRelaxed(1));
    kx::Database admin = kx::Database::open(base);
    if (!admin.isOpen())
        throw std::runtime_error(admin.lastError().toStdString());
    const kx::Result<void> made = kx::sqlRun(admin, {QStringLiteral("CREATE SCHEMA %1").arg(m_schema), {}});
    if (!made.ok())
        throw std::runtime_error(made.error().toStdString());
    m_url = base + QStringLiteral("?schema=") + m_schema;
}

TestDatabase::~TestDatabase()
{
    if (m_engine == Engine::Postgres && !m_schema.isEmpty()) {
        kx::Database admin = kx::Database::open(postgresUrl());
        if (admin.isOpen())
            (void)kx::sqlRun(admin, {QStringLiteral("DROP SCHEMA %1 CASCADE").arg(m_schema), {}});
    }
}

kx::Database TestDatabase::open() const
{
    return kx::Database::open(m_url);
}

int fillSampleBooks(kx::Database &db, int records, int books, const QString &code)
{
    kx::SampleOptions options;
    options.records = records;
    options.books = books;
    options.year = 2025;
    if (!kx::SampleBooks::create(db, options).ok())
        return 0;
    return kx::sqlScalar(db, {QStringLiteral("Select asID From kxJournal Where AssistCode=?"), {code}}).valueOr(QVariant()).toInt();
}

} // namespace kxtest
