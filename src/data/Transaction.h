#pragma once

#include "kxjournal/Result.h"

namespace kx {

class Database;

/// A database transaction that rolls back unless it was committed: leaving
/// the scope on any path other than commit() undoes everything done in it.
class Transaction
{
public:
    /// Begins a transaction on \a db; check ok() before relying on it.
    explicit Transaction(const Database &db);
    /// Rolls back when still open.
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    /// True when the transaction began.
    bool ok() const { return m_open; }
    /// Why it could not begin (empty when it did).
    QString error() const { return m_error; }
    /// Makes the work permanent.
    Result<void> commit();
    /// Undoes the work now.
    void rollback();

private:
    const Database &m_db;
    QString m_error;
    bool m_open = false;
};

} // namespace kx
