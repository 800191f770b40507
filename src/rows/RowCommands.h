#pragma once

namespace kx {

class CommandRegistry;
class GridModel;

/// The cell and row commands: the clipboard, inserting, deleting and
/// renumbering rows, and deleting the records before the accounts begin.
class RowCommands
{
public:
    /// Adds the cell and row commands working on \a grid to \a registry.
    static void offer(CommandRegistry &registry, GridModel &grid);
};

} // namespace kx
