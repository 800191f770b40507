#pragma once

#include "grid/Cell.h"

#include <QtGlobal>

namespace kx {

class CellArrayData;

/// Types a value read from a database into a grid cell, the same way for
/// every engine, so that a date, an amount, an id or a text stored by any of
/// them becomes the same cell.
///
/// The engine's reader says what the column is declared to hold and hands
/// the value over as it came, without a copy: nothing (NULL), a whole
/// number, a double, or UTF-8 text.
class FetchedCell
{
public:
    /// What a column is declared to hold, as far as its cells go.
    enum class Declared : unsigned char {
        Any,      ///< whatever the value is (an engine typing each value, an expression)
        Amount,   ///< money: exact to four decimals; a value money cannot hold stays its text
        Integer,  ///< a whole number (ids, counts)
        Decimal,  ///< a number that is no amount (kept at four decimals when it has no more)
        Day,      ///< a date
        Moment,   ///< a date and time: the day is kept
        Flag,     ///< true or false
    };

    /// One value as the engine hands it out.
    struct Raw {
        enum Kind : unsigned char { Null, Integer, Real, Text };
        Kind kind = Null;
        qint64 integer = 0;
        double real = 0;
        const char *bytes = nullptr;  ///< Text: UTF-8, not ended by a NUL
        int size = 0;

        static Raw null() { return {}; }
        static Raw number(qint64 v) { return {Integer, v, 0, nullptr, 0}; }
        static Raw decimal(double v) { return {Real, 0, v, nullptr, 0}; }
        static Raw text(const char *bytes, int size) { return {Text, 0, 0, bytes, size}; }
    };

    /// The cell for \a value of a column declared \a declared, for column
    /// \a col of \a block (whose pool takes the texts).
    static Cell of(CellArrayData &block, int col, Declared declared, const Raw &value);
};

} // namespace kx
