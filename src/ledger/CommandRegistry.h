#pragma once

#include <QString>
#include <functional>
#include <vector>

namespace kx {

/// Every command the journal knows, in menu order. Code inside the library
/// names a command by its id; hosts name it by its menu item's object name
/// or its DoCommand name, both found in the table.
enum class CommandId {
    Undo,
    Redo,
    Cut,
    Copy,
    Paste,
    Clear,
    InsertRows,
    DeleteRows,
    Renumber,
    DelHistory,
    Save,
    InsSumRow,
    RemoveSumRow,
    CloseBook,
    CheckBook,
    Statistics,
    Recalc,
    ExplainMemo,
    AccDoc,
    DocSelect,
    RemoveDoc,
    MakeDoc,
    VoucherPerRecord,
    VoucherPerType,
    VoucherAllInOne,
    Find,
    Export,
    Print,
    Reconcile,
    DailyReport,
    PackJnl,
    Refresh,
    DefaultFormatItem,
    FieldShow,
    Unreconciled,
    SideTask,
    // Without a menu item: DoCommand names and keys of their own.
    DefaultFormat,
    AfterSetFormat,
    SetColFont,
    SideVisible,
    FindNext,
    FindPrevious,
};

/// When a command may run, asked of the menu's conditions on the grid and
/// the book (MenuConditions::holds).
enum class CommandCondition {
    Always,
    CanUndo,
    CanRedo,
    HasRows,             ///< some row below the header
    HasRecords,          ///< some dated record below the opening row
    OneBookRecords,      ///< records of one book, not the consolidated journal
    SelectionEditable,
    PasteTarget,         ///< clipboard text and a current row that takes it
    InsertionOpen,       ///< rows may open above the selection
    SelectionDeletable,
    SelectionRenumberable,
    ChangeableRecords,   ///< the book may change and holds records
    Dirty,               ///< unsaved changes that may be stored
    DatedCurrentRow,     ///< a changeable book, the current row a dated record
    SummaryCurrentRow,   ///< a changeable book, the current row a summary row
    VoucherToLookAt,
    SelectionLinkable,
    SelectionLinked,
    VoucherToMake,
    BookChosen,
    ChangeableBook,      ///< one book shown that may change, records or not
    Connected,           ///< a context whose database is open
};

/// Where a command's keys are answered.
enum class KeyScope {
    Journal,  ///< anywhere inside the control
    Grid,     ///< on the grid while no cell is being edited
};

/// One line of the command table: what never changes about a command.
struct CommandSpec {
    CommandId id;
    const char *name;     ///< the menu item's object name ("mnuRecalc"); empty: no menu item
    const char *command;  ///< the DoCommand name ("Refresh"); empty: none
    const char *text;     ///< the menu text (UTF-8)
    const char *group;    ///< the menu group: a separator stands between groups
    const char *keys;     ///< the keys that run it, portable text ("Ctrl+C"); empty: none
    KeyScope scope;
    CommandCondition condition;
    bool checkable;
};

/// One thing the journal can be told to do: a table line and, once the
/// control is built, what runs it.
struct Command {
    CommandId id = CommandId::Undo;
    /// The menu item's object name ("mnuRecalc"); empty: no menu item.
    QString name;
    /// The DoCommand name ("Refresh"); empty: the menu's own.
    QString command;
    /// The menu text.
    QString text;
    /// Menu group ("edit", "rows", "book", …): a separator stands between groups.
    QString group;
    /// The keys that run it, as shown beside the menu item and bound by the control.
    QString keys;
    KeyScope scope = KeyScope::Journal;
    CommandCondition condition = CommandCondition::Always;
    /// A menu item with a check mark.
    bool checkable = false;
    /// Runs the command with DoCommand's parameter; a checkable item passes
    /// "True" or "False" for its new state. Empty: not available yet.
    std::function<void(const QString &parameter)> run;
    /// Whether it can run now; empty: whenever it has a run.
    std::function<bool()> enabled;
    /// A checkable item's state; empty: not checkable.
    std::function<bool()> checked;
};

/// Every command the journal offers, one entry per line of the table, in
/// menu order. Each folder binds what runs its own commands by id; the menu
/// builds itself from the list, and DoCommand and the menu find an entry
/// by name.
class CommandRegistry
{
public:
    /// A registry of every command in the table, none of them bound yet.
    CommandRegistry();

    /// The command table, in menu order.
    static const std::vector<CommandSpec> &table();

    /// Sets what runs \a id (and, for a checkable item, its state).
    void bind(CommandId id, std::function<void(const QString &)> run, std::function<bool()> checked = {});
    /// Every entry, in table order.
    const std::vector<Command> &commands() const { return m_commands; }
    /// The entry \a id.
    const Command &command(CommandId id) const { return m_commands[std::size_t(id)]; }
    Command &command(CommandId id) { return m_commands[std::size_t(id)]; }
    /// The entry whose menu item is named \a name (exact), or nullptr.
    const Command *byName(const QString &name) const;
    /// The entry whose DoCommand name is \a command (exact, case-sensitive), or nullptr.
    const Command *byCommand(const QString &command) const;
    /// True when \a command has a run and may run now.
    static bool isEnabled(const Command &command);

    /// Decides whether any command may run now (the control refuses while a
    /// load or save is under way); empty: always.
    void setGate(std::function<bool(const Command &)> gate) { m_gate = std::move(gate); }
    /// Runs \a command with \a parameter when it is enabled and the gate lets it;
    /// true when it ran.
    bool run(const Command &command, const QString &parameter = QString()) const;
    /// Runs the entry \a id as run() does.
    bool run(CommandId id, const QString &parameter = QString()) const { return run(command(id), parameter); }

private:
    std::vector<Command> m_commands;
    std::function<bool(const Command &)> m_gate;
};

} // namespace kx
