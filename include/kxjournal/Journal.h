#pragma once

#include "kxjournal/AccContext.h"
#include "kxjournal/GridModel.h"
#include "kxjournal/PropertyBag.h"
#include "kxjournal/kxjournal_export.h"

#include <QColor>
#include <QDate>
#include <QFont>
#include <QMap>
#include <QStringList>
#include <QWidget>
#include <functional>
#include <memory>

class QAction;
class QMenu;

namespace kx {

class AccountPicker;
class CalculatorPopup;
class GridView;
class JournalPrivate;
class VoucherPicker;

/// The journal book control: an editable grid of one book's records with
/// running balances. The host sets Acc (its accounting context), then DocID
/// (the book), and calls Load. Every message goes through Prompt, which
/// raises Notify. Signals with a reference (CommandExecute's Cancel, the
/// mouse events) must be connected directly: a queued one cannot write back.
/// Properties read as X() and write as setX(v); a Row argument comes last,
/// 0 meaning the current row. No operation throws.
class KXJOURNAL_EXPORT Journal : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString Message READ Message WRITE setMessage DESIGNABLE false STORED false)
    Q_PROPERTY(kx::AccContext *Acc READ Acc WRITE setAcc DESIGNABLE false STORED false)
    Q_PROPERTY(QString Caption READ Caption WRITE setCaption NOTIFY captionChanged)
    Q_PROPERTY(QString FmtName READ FmtName NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(QString FmtFlag READ FmtFlag NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(int fmtID READ fmtID NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(bool IsPackedJnl READ IsPackedJnl WRITE setIsPackedJnl NOTIFY packedChanged DESIGNABLE false STORED false)
    Q_PROPERTY(bool IsBottomClass READ IsBottomClass NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(QString AccCode READ AccCode NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(QString AccName READ AccName NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(int RelativeAccID READ RelativeAccID WRITE setRelativeAccID NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(QString RelativeAccCode READ RelativeAccCode NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(QString RelativeAccName READ RelativeAccName NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(QString Direction READ Direction WRITE setDirection NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(QString ObjName READ ObjName NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(int LastSumRow READ LastSumRow WRITE setLastSumRow NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(kx::GridModel *Grid READ Grid DESIGNABLE false STORED false)
    Q_PROPERTY(bool AllowAccDoc READ AllowAccDoc NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(QColor BorderColor READ BorderColor WRITE setBorderColor)
    Q_PROPERTY(QColor BackColor READ BackColor WRITE setBackColor)
    Q_PROPERTY(QColor BackColorFixed READ BackColorFixed WRITE setBackColorFixed)
    Q_PROPERTY(QColor BackColorBkg READ BackColorBkg WRITE setBackColorBkg)
    Q_PROPERTY(QColor GridColor READ GridColor WRITE setGridColor)
    Q_PROPERTY(QColor GridColorFixed READ GridColorFixed WRITE setGridColorFixed)
    Q_PROPERTY(QColor HotBackColor READ HotBackColor WRITE setHotBackColor)
    Q_PROPERTY(QColor WarnBackColor READ WarnBackColor WRITE setWarnBackColor)
    Q_PROPERTY(QColor LockedForeColor READ LockedForeColor WRITE setLockedForeColor)
    Q_PROPERTY(QColor ModifiedForeColor READ ModifiedForeColor WRITE setModifiedForeColor)
    Q_PROPERTY(QString ColsFilter READ ColsFilter WRITE setColsFilter)
    Q_PROPERTY(QString OutlineKey READ OutlineKey WRITE setOutlineKey)
    Q_PROPERTY(QString ListFields READ ListFields WRITE setListFields)
    Q_PROPERTY(QString NumericFields READ NumericFields WRITE setNumericFields)
    Q_PROPERTY(QString EditFields READ EditFields WRITE setEditFields)
    Q_PROPERTY(QString DateFields READ DateFields WRITE setDateFields)
    Q_PROPERTY(QFont Font READ Font WRITE setFont)
    Q_PROPERTY(int RowHeightMax READ RowHeightMax WRITE setRowHeightMax)
    Q_PROPERTY(int RowHeightMin READ RowHeightMin WRITE setRowHeightMin)
    Q_PROPERTY(int Row READ Row WRITE setRow NOTIFY AfterRowChanged DESIGNABLE false STORED false)
    Q_PROPERTY(QString PriceFormat READ PriceFormat WRITE setPriceFormat)
    Q_PROPERTY(QString RateFormat READ RateFormat WRITE setRateFormat)
    Q_PROPERTY(QString QuantityFormat READ QuantityFormat WRITE setQuantityFormat)
    Q_PROPERTY(QString AccountFormat READ AccountFormat WRITE setAccountFormat)
    Q_PROPERTY(QString DateFormat READ DateFormat WRITE setDateFormat)
    Q_PROPERTY(bool AllowModify READ AllowModify WRITE setAllowModify DESIGNABLE false STORED false)
    Q_PROPERTY(bool AllowAudit READ AllowAudit DESIGNABLE false STORED false)
    Q_PROPERTY(int Rows READ Rows NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(bool IsDirty READ IsDirty WRITE setIsDirty NOTIFY dirtyChanged DESIGNABLE false STORED false)
    Q_PROPERTY(bool IsLastSumRow READ IsLastSumRow NOTIFY bookChanged DESIGNABLE false STORED false)
    Q_PROPERTY(int DocID READ DocID WRITE setDocID NOTIFY docIdChanged DESIGNABLE false STORED false)
    Q_PROPERTY(QDate JnlDate READ JnlDate WRITE setJnlDate DESIGNABLE false STORED false)
    Q_PROPERTY(QString Statistics READ Statistics NOTIFY bookChanged DESIGNABLE false STORED false)

public:
    /// A control with an empty grid and its persisted properties at their defaults.
    explicit Journal(QWidget *parent = nullptr);
    ~Journal() override;

    /// What a file written by Export or ExportToFile holds (the int values
    /// are those of the rType argument).
    enum ExportType {
        ExportByExtension = 0,  ///< .xlsx a spreadsheet, .tsv/.txt tab-separated, else comma-separated
        ExportComma = 1,        ///< comma-separated text, UTF-8 with a byte-order mark
        ExportTab = 2,          ///< tab-separated text, UTF-8 with a byte-order mark
        ExportSpreadsheet = 3   ///< an .xlsx workbook
    };
    Q_ENUM(ExportType)
    /// The book's balance direction, beside Direction()'s "借", "贷" and "".
    enum BalanceDirection {
        NoDirection,      ///< no direction (Direction() is empty)
        DebitDirection,   ///< "借"
        CreditDirection   ///< "贷"
    };
    Q_ENUM(BalanceDirection)
    /// What a message raised through message() is.
    enum MessageKind {
        InformationMessage,  ///< a result or a remark; nothing needs an answer (Notify's ShowBox false)
        ProgressMessage,     ///< a line that says what is under way ("读入…的记录..."); a later message replaces it
        WarningMessage,      ///< something the user must see (Notify's ShowBox true)
        ErrorMessage         ///< an operation failed (a load, a save, a file not written)
    };
    Q_ENUM(MessageKind)

    /// @name Automation properties
    /// The control's properties under their automation names: a property X
    /// is read by X() and written by setX(); those with a Row argument take
    /// it last (0: the current row). Each is also a Q_PROPERTY of that name.
    ///@{

    /// A plain stored text.
    QString Message() const;
    /// Stores a text.
    void setMessage(const QString &value);
    /// The host's accounting context (not owned).
    AccContext *Acc() const;
    /// Sets the host's accounting context; its Announce reaches the control.
    void setAcc(AccContext *value);
    /// The header strip's caption without the leading blanks.
    QString Caption() const;
    /// Writes four blanks and \a value into the header strip.
    void setCaption(const QString &value);
    /// Always "流水账".
    QString FmtName() const;
    /// The book id as decimal text.
    QString FmtFlag() const;
    /// The book id.
    int fmtID() const;
    /// Whether a book with books below it is shown consolidated (the 合并显示 menu item).
    bool IsPackedJnl() const;
    /// Checks or unchecks 合并显示; takes effect at the next Load.
    void setIsPackedJnl(bool value);
    /// True when the book has no books below it.
    bool IsBottomClass() const;
    /// The Row's AccID cell as a number.
    Q_INVOKABLE int AccID(int Row = 0) const;
    /// Writes the Row's AccID cell and makes \a value the current account.
    Q_INVOKABLE void setAccID(int value, int Row = 0);
    /// Code of the current account.
    QString AccCode() const;
    /// Name of the current account.
    QString AccName() const;
    /// The book's relative account.
    int RelativeAccID() const;
    /// Sets the relative account.
    void setRelativeAccID(int value);
    /// Code of the relative account.
    QString RelativeAccCode() const;
    /// Name of the relative account.
    QString RelativeAccName() const;
    /// The book's balance direction: "借", "贷" or empty.
    QString Direction() const;
    /// Keeps "借" or "贷" (anything else: empty) when it differs from the present one.
    void setDirection(const QString &value);
    /// Always "JournalRec".
    QString ObjName() const;
    /// The last summary row.
    int LastSumRow() const;
    /// Sets the last summary row.
    void setLastSumRow(int value);
    /// The journal grid.
    GridModel *Grid() const;
    /// True when the current row has an account (a voucher may be linked to it).
    bool AllowAccDoc() const;
    /// The voucher row \a Row is linked to (0: none; -1: a summary or unstored row).
    Q_INVOKABLE int DirID(int Row = 0) const;
    /// Links row \a Row to voucher \a value (a kxDocDir DocID), stored at once;
    /// a row already linked, or without an account, is refused with a message.
    Q_INVOKABLE void setDirID(int value, int Row = 0);
    /// Background of the frame around the grid.
    QColor BorderColor() const;
    /// Sets the background of the frame around the grid.
    void setBorderColor(const QColor &value);
    /// Grid background.
    QColor BackColor() const;
    /// Sets the grid background.
    void setBackColor(const QColor &value);
    /// Background of the fixed row and column.
    QColor BackColorFixed() const;
    /// Sets the background of the fixed row and column.
    void setBackColorFixed(const QColor &value);
    /// Background outside the cells.
    QColor BackColorBkg() const;
    /// Sets the background outside the cells.
    void setBackColorBkg(const QColor &value);
    /// Grid line colour.
    QColor GridColor() const;
    /// Sets the grid line colour.
    void setGridColor(const QColor &value);
    /// Grid line colour of the fixed cells.
    QColor GridColorFixed() const;
    /// Sets the grid line colour of the fixed cells.
    void setGridColorFixed(const QColor &value);
    /// Background of the row under edit.
    QColor HotBackColor() const;
    /// Sets the background of the row under edit.
    void setHotBackColor(const QColor &value);
    /// Background of rows that fail a check.
    QColor WarnBackColor() const;
    /// Sets the background of rows that fail a check.
    void setWarnBackColor(const QColor &value);
    /// Text colour of locked rows.
    QColor LockedForeColor() const;
    /// Sets the text colour of locked rows.
    void setLockedForeColor(const QColor &value);
    /// Text colour of changed cells (not persisted).
    QColor ModifiedForeColor() const;
    /// Sets the text colour of changed cells.
    void setModifiedForeColor(const QColor &value);
    /// The grid's font.
    QFont Font() const;
    /// Gives every cell of the grid \a value.
    void setFont(const QFont &value);
    /// Largest row height.
    int RowHeightMax() const;
    /// Sets the largest row height.
    void setRowHeightMax(int value);
    /// Smallest row height.
    int RowHeightMin() const;
    /// Sets the smallest row height.
    void setRowHeightMin(int value);
    /// Columns offered in the show-fields list ("|key|key|").
    QString ColsFilter() const;
    /// Sets ColsFilter.
    void setColsFilter(const QString &value);
    /// The column whose empty cell marks a blank row.
    QString OutlineKey() const;
    /// Sets OutlineKey.
    void setOutlineKey(const QString &value);
    /// Columns that offer a drop-down list.
    QString ListFields() const;
    /// Sets ListFields.
    void setListFields(const QString &value);
    /// Numeric columns.
    QString NumericFields() const;
    /// Sets NumericFields.
    void setNumericFields(const QString &value);
    /// Columns a person may edit.
    QString EditFields() const;
    /// Sets EditFields.
    void setEditFields(const QString &value);
    /// Date columns.
    QString DateFields() const;
    /// Sets DateFields.
    void setDateFields(const QString &value);
    /// Format of prices (not persisted).
    QString PriceFormat() const;
    /// Sets PriceFormat.
    void setPriceFormat(const QString &value);
    /// Format of exchange rates (not persisted).
    QString RateFormat() const;
    /// Sets RateFormat.
    void setRateFormat(const QString &value);
    /// Format of quantities (not persisted).
    QString QuantityFormat() const;
    /// Sets QuantityFormat.
    void setQuantityFormat(const QString &value);
    /// Format of amounts, e.g. "#,##0.00" (not persisted).
    QString AccountFormat() const;
    /// Sets AccountFormat.
    void setAccountFormat(const QString &value);
    /// Format of dates (not persisted).
    QString DateFormat() const;
    /// Sets DateFormat.
    void setDateFormat(const QString &value);
    /// The grid's current row.
    int Row() const;
    /// Moves the cursor to a row, showing it when hidden and scrolling it into view.
    void setRow(int value);
    /// Whether records may be changed: true once a book is chosen, unless the host says no.
    bool AllowModify() const;
    /// Allows changes; always false while no book (DocID below 1) is set.
    void setAllowModify(bool value);
    /// Whether the book may be audited.
    bool AllowAudit() const;
    /// Grid rows less the header row.
    int Rows() const;
    /// True when the grid holds changes not yet saved.
    bool IsDirty() const;
    /// Sets the dirty flag; setting it raises DataChanged with the current column's key.
    void setIsDirty(bool value);
    /// True when the current row is the last summary row and no dated row follows it.
    bool IsLastSumRow() const;
    /// The book shown.
    int DocID() const;
    /// Sets the book to show.
    void setDocID(int value);
    /// The current row's date.
    QDate JnlDate() const;
    /// Writes the current row's date and its shown form.
    void setJnlDate(const QDate &value);
    /// Counts of summary rows (less one), saved records and rows linked to vouchers, on three lines.
    QString Statistics() const;
    ///@}

    /// @name Automation methods
    /// The control's methods under their automation names and parameters.
    ///@{

    /// Does nothing; kept for hosts that call it before Load.
    Q_INVOKABLE void Initial();
    /// Field \a rFieldName of account \a rAccID as text (empty when there is none).
    Q_INVOKABLE QString Get_AccCodeField(const QString &rFieldName, int rAccID);
    /// Sends a message to the host through Notify.
    Q_INVOKABLE void Prompt(const QString &rMsg, bool ShowBox = false);
    /// Reads book \a rDocID (0: the current book) into the grid; true when filled.
    Q_INVOKABLE bool Load(int rDocID = 0);
    /// Stores the grid's changes in one transaction; true when stored (or nothing to store).
    Q_INVOKABLE bool Save();
    /// Opens as many empty rows above the selection as are selected; true when inserted.
    Q_INVOKABLE bool InsertRows();
    /// Asks, then removes the selected rows (\a Row > 0: that row); their
    /// records are deleted by the next Save. True when rows were removed.
    Q_INVOKABLE bool DeleteRows(int Row = 0);
    /// Closes the month (a 本月结余 row under the last record), or un-closes
    /// it when the last record row is a summary row.
    Q_INVOKABLE bool CloseBook();
    /// Checks the open period: records with amounts have dates, in order.
    Q_INVOKABLE bool CheckBook();
    /// Links every selected row that may take a voucher to \a v; the others say why not.
    Q_INVOKABLE void SetDirID(int v);
    /// Makes voucher files of the selected records in voucherFolder(), one per
    /// voucher (voucherGrouping()), and raises AfterMaked once per file, in
    /// voucher order; true when a file was written.
    Q_INVOKABLE bool Make();
    /// Tells the host through FindMsg every row holding all the words of
    /// \a rSearchString, between "#BEGIN#" and "#END#"; FromNextRow is ignored.
    Q_INVOKABLE void Find(const QString &rSearchString, bool FromNextRow = false);
    /// Asks for a file name (setFileNameAsker), then does as ExportToFile.
    Q_INVOKABLE void Export(int rType = 0);
    /// Writes the visible book into \a rFileName: \a rType 0 by extension, 1
    /// comma-, 2 tab-separated, 3 spreadsheet. True when the file was written.
    Q_INVOKABLE bool ExportToFile(const QString &rFileName, int rType = 0);
    /// The print grid: the lines of the latest layout, page number in column 0.
    Q_INVOKABLE kx::GridModel *PrintGrid() const;
    /// Inserts a sub-total row below \a Row (0: the current row).
    Q_INVOKABLE bool InsSumRow(int Row = 0);
    /// Removes the summary row \a Row (0: the current row).
    Q_INVOKABLE bool RemoveSumRow(int Row = 0);
    /// Lays the 29 columns down again in their places; every cell value stays.
    Q_INVOKABLE void SetDefaultFormat();
    /// Expands an explanation template for the current row ("[日期]", "[月份]",
    /// "[科目名称]", "[]") and stores it as the row's explanation.
    void ApplyExplainTemplate(const QString &rTemplate);
    /// Runs the command \a CommandName (exact, case-sensitive match); unknown names do nothing.
    Q_INVOKABLE void DoCommand(const QString &CommandName, const QString &CommandParameter = QString());
    /// Writes the persisted looks into \a bag.
    void WriteProperties(PropertyBag &bag) const;
    /// Restores the persisted looks from \a bag; a missing key keeps the present value.
    void ReadProperties(const PropertyBag &bag);
    /// Whether the edit under way changed its cell.
    bool CellChanged() const;
    /// The explanations typed since the control was made, newest first, each followed by "|".
    QString ExplainHistory() const;
    /// The account whose code, else name, else entry code is \a rText (0: none).
    Q_INVOKABLE int FindAccID(const QString &rText);
    /// The explanation column's drop-down list: the explanations typed here,
    /// then the book's 30 latest (summary labels left out), as "|a|b".
    Q_INVOKABLE QString GetExplainList();
    ///@}

    /// @name Qt-style additions
    /// What the control offers a host beyond the automation interface, named
    /// in Qt's style.
    ///@{

    /// The view of the journal grid.
    GridView *gridView() const;
    /// The account picker the account cell's ellipsis opens.
    AccountPicker *accountPicker() const;
    /// The voucher picker the voucher cell's ellipsis opens.
    VoucherPicker *voucherPicker() const;
    /// The calculator the amount cells' ellipsis opens.
    CalculatorPopup *calculator() const;
    /// The selected block as tab-separated text, as the clipboard gets it.
    QString copyText() const;
    /// Pastes tab-separated \a text at the cursor, each cell checked as if
    /// typed; refused cells are listed in one message. True when a cell changed.
    bool pasteText(const QString &text);
    /// Undoes the latest edit, balances, colours, marks and IsDirty included;
    /// false when there is nothing to undo (a Save, a Load or a change made
    /// outside the edits ends the history).
    Q_INVOKABLE bool undo();
    /// Makes the latest undone edit again.
    Q_INVOKABLE bool redo();
    /// True when undo() has a step to undo.
    bool canUndo() const;
    /// True when redo() has a step to make again.
    bool canRedo() const;
    /// The account a path of names points at ("银行存款/工商银行"; "/", "\\",
    /// "_" or "." between levels), 0 when none.
    Q_INVOKABLE int findAccountByPath(const QString &path);
    /// Whether an explanation typed or picked that earlier records of the
    /// book carry fills the row's empty account and amount from the latest
    /// of them (default true; kept in the property bag as "QuickFill").
    bool quickFill() const;
    /// Turns filling from the explanation on or off.
    void setQuickFill(bool on);
    /// Whether a new record gets the next 单据号 of the book as it is dated
    /// (default true; kept in the property bag as "AutoNumber").
    bool autoNumber() const;
    /// Turns numbering new records on or off.
    void setAutoNumber(bool on);
    /// The folder Make writes into (default: the system's temporary folder).
    QString voucherFolder() const;
    /// Sets the folder Make writes into; empty: the temporary folder.
    void setVoucherFolder(const QString &path);
    /// The code page of the voucher file (default "GBK").
    QString voucherCodec() const;
    /// Sets the voucher file's code page; an unknown name is refused with a message.
    void setVoucherCodec(const QString &name);
    /// How Make groups the selected records into vouchers, one file each:
    /// "all" (one voucher, the default), "record" (one per record) or "type"
    /// (one 收款 voucher of the records that bring money in, one 付款 voucher
    /// of those that take it out); kept in the property bag as "VoucherGrouping".
    QString voucherGrouping() const;
    /// Sets the grouping; another name is refused with a message.
    void setVoucherGrouping(const QString &name);
    /// Replaces how Export asks for a file name (an empty answer cancels).
    void setFileNameAsker(std::function<QString(const QString &suggested)> asker);
    /// Lays the book out on A4 pages and writes them into a PDF file.
    Q_INVOKABLE bool printToPdf(const QString &fileName);
    /// Replaces how Yes/No questions are asked (No is the default answer).
    void setAsker(std::function<bool(const QString &text, const QString &title)> asker);
    /// Asks a Yes/No question through the asker.
    bool ask(const QString &text, const QString &title = QString()) const;
    /// Replaces how a question with several answers is asked (such as
    /// 存储 / 不存储 / 取消): the asker returns the index in \a answers of the
    /// one chosen. The first answer is the default; the last is what closing
    /// the question gives.
    void setChoiceAsker(
        std::function<int(const QString &text, const QString &title, const QStringList &answers)> asker);
    /// Asks a question with several answers through the choice asker: the
    /// index of the answer chosen (the last one for anything out of range).
    int choose(const QString &text, const QStringList &answers, const QString &title = QString()) const;
    /// The context menu.
    QMenu *contextMenu() const;
    /// The context-menu item named \a name ("mnuCopy"), or nullptr when there is none.
    QAction *menuAction(const QString &name) const;

    /// Asks for a file name (setFileNameAsker), then does as ExportToFile.
    void Export(ExportType type);
    /// Writes the visible book into \a fileName as \a type; true when written.
    bool ExportToFile(const QString &fileName, ExportType type);
    /// The book's balance direction as an enum.
    BalanceDirection balanceDirection() const;
    /// Sets the book's balance direction (as setDirection with "借", "贷" or "").
    void setBalanceDirection(BalanceDirection direction);

    /// Enters one record's fields on \a row (0: the empty row under the last
    /// record, which becomes a new record) as typing them would: each text
    /// goes into the column keyed by its key through the edit cycle, so the
    /// before-edit, validation and after-edit rules (account lookup, balances)
    /// run; the date goes in first. Every key is checked before anything is
    /// written: an unknown key, a key whose column takes no typing, a row that
    /// may not change, or a closed control is refused with a message through
    /// Prompt, and nothing is written. When a field is refused by its rule the
    /// fields entered before it stay (as typed ones would) and false is
    /// returned. True when every field was entered.
    bool enterRecord(const QMap<QString, QString> &fieldsByKey, int row = 0);
    /// The keys of the columns enterRecord and typing accept, in grid order.
    QStringList enterableKeys() const;

    /// Shows or hides the column keyed \a key, as the show-fields list does,
    /// and keeps it for WriteProperties; false when the key is not offered
    /// there (unknown, or kept from the user by ColsFilter) or already so.
    bool setColumnVisible(const QString &key, bool visible);
    /// True when the column keyed \a key is shown (false for an unknown key).
    bool isColumnVisible(const QString &key) const;
    /// Sets the width in pixels of the column keyed \a key, as a drag in the
    /// view does, and keeps it for WriteProperties; false for an unknown key
    /// or a width outside 1…4000.
    bool setColumnWidth(const QString &key, int width);
    /// The width in pixels of the column keyed \a key (-1 for an unknown key).
    int columnWidth(const QString &key) const;
    ///@}

Q_SIGNALS:
    /// @name Automation events
    /// The control's events under their automation names, in the order of
    /// their ids; reference arguments are written back by directly
    /// connected handlers.
    ///@{

    /// 1: the grid changed (key of the current column).
    void DataChanged(const QString &ColKey);
    /// 2: declared for hosts; never raised.
    void MouseDown(int &Button, int &Shift, float &X, float &Y);
    /// 3: a mouse button was released over the grid.
    void MouseUp(int &Button, int &Shift, float &X, float &Y);
    /// 4: declared for hosts; never raised.
    void MouseMove(int &Button, int &Shift, float &X, float &Y);
    /// 5: the grid's current row changed.
    void AfterRowChanged();
    /// 6: the grid's current column changed.
    void AfterColChanged();
    /// 7: Load finished.
    void AfterLoaded();
    /// 8: Save finished.
    void AfterSaved();
    /// 9: an operation is about to run; set Cancel to stop it.
    void CommandExecute(const QString &CommandName, bool &Cancel);
    /// 10: declared for hosts; never raised.
    void AfterCommand(const QString &CommandName);
    /// 11: a message for the user; ShowBox asks for a message box.
    void Notify(const QString &rMsg, bool ShowBox);
    /// 12: progress of a long operation, 0 to 100, then -1.
    void Process(int Indicator);
    /// 13: a voucher exchange file was written.
    void AfterMaked(const QString &rFileName);
    /// 14: an export file was written.
    void AfterExport(const QString &rFileName);
    /// 15: the side-task menu item was chosen.
    void IconClick();
    /// 16: a find reports a result.
    void FindMsg(const QString &Msg);
    ///@}

    /// @name Qt-style notifications
    ///@{

    /// Raised beside every Notify, saying what kind of message it is.
    void message(const QString &text, kx::Journal::MessageKind kind);
    /// A persisted (or announced) property changed.
    void propertyChanged(const QString &name);
    /// The caption changed.
    void captionChanged(const QString &caption);
    /// Whether the consolidated journal is wanted changed.
    void packedChanged(bool packed);
    /// The dirty flag changed.
    void dirtyChanged(bool dirty);
    /// Another book was set.
    void docIdChanged(int docId);
    /// An operation on the book ended: the book-derived properties may have changed.
    void bookChanged();
    ///@}

protected:
    /// Shows the context menu, its items' states brought up to date first.
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void announce(const QString &name);
    void onCursorChanged(int row, int col);

    std::shared_ptr<JournalPrivate> const d;  ///< also held by running operations: it may outlive the widget
};

} // namespace kx
