#pragma once

namespace kx {

class JournalPrivate;

/// The control's own commands: the view (consolidated display, refresh,
/// formats, the side panel) and the menu items of what is not built yet.
class JournalCommands
{
public:
    /// Adds the control's commands to \a d's registry.
    static void offer(JournalPrivate &d);
};

} // namespace kx
