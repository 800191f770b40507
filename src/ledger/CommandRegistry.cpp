#include "ledger/CommandRegistry.h"

#include <utility>

namespace kx {

void CommandRegistry::add(Command command)
{
    m_commands.push_back(std::move(command));
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

Command *CommandRegistry::byName(const QString &name)
{
    return const_cast<Command *>(std::as_const(*this).byName(name));
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
