#include "output/BookSession.h"

#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "ledger/BookCheck.h"
#include "ledger/BookLoader.h"
#include "ledger/ColumnFit.h"
#include "ledger/ColumnModel.h"
#include "output/BookExporter.h"
#include "output/BookPrinter.h"
#include "output/FileOutput.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QFontMetrics>
#include <QGuiApplication>

namespace kx {

namespace {

// Fonts exist only under a QGuiApplication; without one nothing is measured.
bool canMeasure()
{
    return qobject_cast<QGuiApplication *>(QCoreApplication::instance()) != nullptr;
}

} // namespace

void BookSession::Relay::captionChanged(const QString &caption)
{
    m_session.m_caption = caption;
    m_host.captionChanged(caption);
}

BookSession::BookSession(AccContext *acc, int docId, LedgerHost &host)
    : m_acc(acc), m_docId(docId), m_relay(*this, host),
      m_book(m_relay, [this] { return m_acc.data(); }), m_caption(QStringLiteral("流水账"))
{
    // The grid starts laid out, as a control's does before its first load.
    ColumnModel::define(m_book);
    if (acc)
        m_announce = QObject::connect(acc, &AccContext::Announce,
                                      [this](const QString &message) { m_relay.prompt(message, false); });
}

BookSession::~BookSession()
{
    QObject::disconnect(m_announce);
}

bool BookSession::load()
{
    const BookLoader::Outcome outcome = BookLoader(m_book).load(m_docId);
    // Nothing is typed here: no blank row is kept at the end for typing.
    fitColumns();
    return outcome == BookLoader::Loaded || outcome == BookLoader::Empty;
}

void BookSession::fitColumns()
{
    if (!canMeasure())
        return;
    // Measured as the control's view measures: the cell's font on the screen.
    ColumnFit fit(m_book, [](const QString &text, const QFont &font) {
        return QFontMetrics(font).horizontalAdvance(text);
    });
    fit.fitFigures();
    fit.fitLabels();
}

bool BookSession::check()
{
    return BookCheck(m_book).check();
}

QStringList BookSession::databaseFiles() const
{
    AccContext *acc = m_acc.data();
    if (!acc || acc->Connection().engine() != Database::SqliteEngine)
        return {};
    return FileOutput::databaseFiles(acc->Connection().handle().databaseName());
}

QString BookSession::exportTo(const QString &path, int type)
{
    if (Result<void> known = BookExporter::checkType(type); !known.ok()) {
        m_relay.failure(known.error(), false);
        return QString();
    }
    if (m_relay.cancels(QStringLiteral("Export")))
        return QString();
    const Result<int> written = BookExporter(m_book).write(path, type, m_caption, databaseFiles());
    if (!written.ok()) {
        m_relay.failure(written.error(), false);
        return QString();
    }
    m_relay.prompt(QStringLiteral("已导出到 %1").arg(QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath())), false);
    // Texts the spreadsheet had to cut are said, never passed over.
    if (const QString cut = BookExporter::cutNotice(written.value()); !cut.isEmpty())
        m_relay.prompt(cut, true);
    return path;
}

bool BookSession::printToPdf(const QString &path)
{
    if (m_relay.cancels(QStringLiteral("Print")))
        return false;
    // Pages are laid out in real fonts, which only a QGuiApplication has.
    if (!canMeasure()) {
        m_relay.failure(QStringLiteral("没有可用的字体，不能排出打印的页面。"), false);
        return false;
    }
    const Sheet &grid = m_book.sheet();
    const Result<void> printed = BookPrinter(grid, m_printGrid, m_caption, grid.font()).printToPdf(path, databaseFiles());
    if (!printed.ok())
        m_relay.failure(printed.error(), false);
    return printed.ok();
}

} // namespace kx
