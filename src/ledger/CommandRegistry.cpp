#include "ledger/CommandRegistry.h"

#include <utility>

namespace kx {

CommandRegistry::CommandRegistry()
{
    const std::vector<CommandSpec> &lines = table();
    m_commands.reserve(lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const CommandSpec &line = lines[i];
        Q_ASSERT(std::size_t(line.id) == i);
        Command c;
        c.id = line.id;
        c.name = QString::fromUtf8(line.name);
        c.command = QString::fromUtf8(line.command);
        c.text = QString::fromUtf8(line.text);
        c.group = QString::fromUtf8(line.group);
        c.keys = QString::fromUtf8(line.keys);
        c.scope = line.scope;
        c.condition = line.condition;
        c.checkable = line.checkable;
        m_commands.push_back(std::move(c));
    }
}

void CommandRegistry::bind(CommandId id, std::function<void(const QString &)> run, std::function<bool()> checked)
{
    Command &c = command(id);
    c.run = std::move(run);
    if (c.checkable)
        c.checked = std::move(checked);
}

const Command *CommandRegistry::byName(const QString &name) const
{
    if (name.isEmpty())
        return nullptr;
    for (const Command &c : m_commands)
        if (c.name == name)
            return &c;
    return nullptr;
}

const Command *CommandRegistry::byCommand(const QString &command) const
{
    if (command.isEmpty())
        return nullptr;
    for (const Command &c : m_commands)
        if (c.command == command)
            return &c;
    return nullptr;
}

bool CommandRegistry::isEnabled(const Command &command)
{
    return command.run && (!command.enabled || command.enabled());
}

bool CommandRegistry::run(const Command &command, const QString &parameter) const
{
    if (!isEnabled(command) || (m_gate && !m_gate(command)))
        return false;
    // A copy: the command may change the registry's owner while it runs.
    const auto run = command.run;
    run(parameter);
    return true;
}

} // namespace kx
