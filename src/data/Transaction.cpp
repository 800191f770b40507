#include "data/Transaction.h"

#include "kxjournal/Database.h"

#include <QSqlError>

namespace kx {

Transaction::Transaction(const Database &db) : m_db(db)
{
    QSqlDatabase h = db.handle();
    m_open = db.isOpen() && h.transaction();
    if (!m_open)
        m_error = db.isOpen() ? QStringLiteral("无法开始事务：%1").arg(h.lastError().text())
                              : QStringLiteral("数据库没有打开。");
}

Transaction::~Transaction()
{
    rollback();
}

Result<void> Transaction::commit()
{
    if (!m_open)
        return Error(m_error.isEmpty() ? QStringLiteral("事务已经结束。") : m_error);
    QSqlDatabase h = m_db.handle();
    if (!h.commit()) {
        const QString why = QStringLiteral("无法提交事务：%1").arg(h.lastError().text());
        rollback();
        return Error(why);
    }
    m_open = false;
    return {};
}

void Transaction::rollback()
{
    if (!m_open)
        return;
    m_open = false;
    m_db.handle().rollback();
}

} // namespace kx
