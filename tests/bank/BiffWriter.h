#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>

namespace kxtest {

/// Writes a one-sheet legacy .xls workbook (BIFF8 in a compound file), as
/// small as a reader accepts: strings in the shared string table, numbers as
/// doubles, and numbers with the built-in date format (XF 1) as dates. No
/// tool on the build machines writes .xls; this is the test's own writer.
class BiffWriter
{
public:
    /// A text cell.
    void text(int row, int column, const QString &value);
    /// A number cell.
    void number(int row, int column, double value);
    /// A day serial shown as a date.
    void date(int row, int column, double serial);
    /// Keeps a workbook under 4096 bytes in the small-stream container, as
    /// some writers do, instead of padding it to a stream of its own.
    void setSmallStream(bool small) { m_smallStream = small; }
    /// The file's bytes.
    QByteArray bytes() const;

private:
    bool m_smallStream = false;
    struct Cell { int row; int column; int xf; QVariant value; };
    QList<Cell> m_cells;
};

} // namespace kxtest
