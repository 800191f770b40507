#pragma once

#include <QString>
#include <functional>
#include <vector>

namespace kx {

/// One thing the journal can be told to do: a context-menu item, a command
/// name for DoCommand, or both.
struct Command {
    /// The menu item's object name ("mnuRecalc"); empty: no menu item.
    QString name;
    /// The DoCommand name ("Refresh"); empty: the menu's own.
    QString command;
    /// The menu text.
    QString text;
    /// Menu group ("edit", "rows", "book", …): a separator stands between groups.
    QString group;
    /// Runs the command with DoCommand's parameter; a checkable item passes
    /// "True" or "False" for its new state. Empty: not available yet.
    std::function<void(const QString &parameter)> run;
    /// Whether it can run now; empty: whenever it has a run.
    std::function<bool()> enabled;
    /// A checkable item's state; empty: not checkable.
    std::function<bool()> checked;
    /// The keys that run it, as shown beside the menu item ("Ctrl+C"); the
    /// control handles the keys itself.
    QString keys = QString();
};

/// Every command the journal offers, in menu order. Each folder adds its
/// own; the menu builds itself from the list, and DoCommand and the menu
/// find an entry here by name.
class CommandRegistry
{
public:
    /// Adds \a command at the end; of two entries with one name, the first is found.
    void add(Command command);
    /// Every entry, in the order added.
    const std::vector<Command> &commands() const { return m_commands; }
    /// The entry whose menu item is named \a name (exact), or nullptr.
    const Command *byName(const QString &name) const;
    /// The entry whose menu item is named \a name, to be refined, or nullptr.
    Command *byName(const QString &name);
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

private:
    std::vector<Command> m_commands;
    std::function<bool(const Command &)> m_gate;
};

} // namespace kx
