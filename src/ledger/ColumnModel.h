#pragma once

#include <QString>

namespace kx {

class Book;
class Sheet;
struct RowLooks;

/// The journal's 30 keyed columns and the routine that lays them down on the
/// grid (the card definition), the fonts of numeric columns, and the
/// explanation template.
class ColumnModel
{
public:
    /// The tag the grid carries while the columns are laid down.
    static const QString BusyTag;
    /// The default ColsFilter (without "AssistName|").
    static const QString DefaultColsFilter;
    /// The default EditFields.
    static const QString DefaultEditFields;
    /// How amounts and balances show while the host sets no AccountFormat.
    static const QString DefaultAmountFormat;

    /// Lays the 30 columns down in their order with their headers, types,
    /// alignments, widths and hidden flags, keeping every cell value (cells
    /// move with their columns); resets the key lists in \a state, the row
    /// heights and the fonts, except those the host chose (the state's chosen).
    static void define(Book &book);
    /// Sets \a fontName ("Arial" when empty) on the data cells of the columns
    /// in \a keys ("|"-separated; empty: every numeric column).
    static void setColumnFonts(Sheet &grid, QString keys, QString fontName);
    /// Re-applies the column fonts and the display formats: AccountFormat on
    /// the amount and balance columns (DefaultAmountFormat while it is
    /// empty), RateFormat on the rate.
    static void applyFormats(Book &book);
    /// True when column \a col holds numbers.
    static bool isNumericColumn(const Sheet &grid, int col);
    /// Expands \a templ for row \a row and stores it as the row's explanation:
    /// "[日期]" the row's date in DateFormat, "[月份]" its year and month,
    /// "[科目名称]" its account's name, "[]" the present explanation; each
    /// placeholder once (account names come from the book's context, if any).
    /// Does nothing while changes are not allowed.
    static void applyExplainTemplate(Book &book, int row, QString templ);
    /// Shows the rate, the foreign amount and the foreign balance of a book
    /// kept in a foreign currency, except where the user or the host chose.
    static void showForeignColumns(Book &book);
    /// True when \a currency (kxAccClass.Currency) names a foreign currency:
    /// neither empty nor the home currency.
    static bool isForeignCurrency(const QString &currency);
    /// Shows, hides and sizes the columns as the user chose (state.columns);
    /// columns the key lists keep from the user are left alone.
    static void applyChoices(Book &book);
    /// Gives every summary row (subtotal node) and the header row their heights.
    static void applyRowHeights(Sheet &grid, const RowLooks &looks);
};

} // namespace kx
