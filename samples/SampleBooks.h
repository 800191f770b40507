#pragma once

#include "kxjournal/Result.h"

#include <QtGlobal>

namespace kx {

class Database;

/// What to put into a sample database.
struct SampleOptions {
    int records = 2000;      ///< journal records in all, spread over the books
    int books = 5;           ///< how many of the bottom books get records (1 to 5)
    int year = 0;            ///< the year of the records (0: this year)
    int lastMonth = 0;       ///< the last month with records (0: this month, or 12 for an earlier year)
    quint32 seed = 20261122; ///< the same seed gives the same books
};

/// Fills a database with realistic books for demos, tests and benchmarks: a
/// Chinese chart of accounts with entry codes, a book tree three levels deep
/// (01 现金日记账; 02 银行日记账 → 0201 工商银行 → 020101 基本户 …), vouchers,
/// and records spread over the months with opening rows, month sub-totals,
/// foreign-currency rows, voucher links and one link broken on purpose.
class SampleBooks
{
public:
    /// Creates the tables when missing and adds the sample data in one transaction.
    static Result<void> create(Database &db, const SampleOptions &options);
};

} // namespace kx
