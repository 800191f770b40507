#pragma once

#include "bank/ColumnMapping.h"
#include "kxjournal/Currency.h"

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>
#include <optional>

namespace kx {

/// Which way money moved, seen from the depositor's books (the journal's):
/// a receipt (收) raised the balance, a payment (付) lowered it.
enum class StatementSide { Receipt, Payment };

/// One transaction of a bank statement.
struct StatementLine
{
    /// Where it is in the file: the 1-based line (delimited text) or row
    /// (spreadsheets) it starts on, or its ordinal among the transactions
    /// (OFX, CAMT).
    int sourceLine = 0;
    QDate date;
    StatementSide side = StatementSide::Receipt;
    /// The amount moved, always more than zero.
    Currency amount;
    /// The bank's serial number of the transaction (交易流水号, FITID, AcctSvcrRef).
    QString reference;
    /// 对方户名.
    QString counterparty;
    /// 对方账号.
    QString counterpartyAccount;
    /// 摘要, 用途, 附言: the texts the bank gives, joined with "；".
    QString memo;
    /// The balance after this line, when the bank gives it.
    std::optional<Currency> balance;
};

/// A bank statement read from a file: its lines, in the file's order.
struct Statement
{
    /// "csv", "xlsx", "xls", "ofx" or "camt.053".
    QString format;
    /// The bank account the file is for, when it says.
    QString account;
    QList<StatementLine> lines;
    /// SHA-256 of the file's bytes, to tell a file imported before.
    QByteArray hash;
    /// For tables: which column was taken for what, in one line
    /// ("日期=交易日期, 收入=收入金额, …").
    QString mappingUsed;
    /// For tables: the layout read by, to be remembered once confirmed.
    std::optional<ColumnMapping> mapping;
    /// sourceLine of each line whose balance is not the balance before it
    /// plus its receipt or minus its payment. Flagged for the cashier, not
    /// refused: a bank may leave out lines or order them by another key.
    QList<int> balanceBreaks;
    /// The closing (ledger) balance and its date, when the file gives them
    /// apart from the lines (OFX LEDGERBAL, CAMT CLBD).
    std::optional<Currency> closingBalance;
    QDate closingDate;
};

/// The lines of \a lines whose balance does not follow from the line
/// before it. Files listed newest first are recognised: when the balances
/// chain better read from the bottom up, the check runs that way.
QList<int> findBalanceBreaks(const QList<StatementLine> &lines);

} // namespace kx
