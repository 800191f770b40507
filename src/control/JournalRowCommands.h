#pragma once

namespace kx {

class JournalPrivate;

/// The commands of cells, rows and the book that change the grid: the
/// clipboard, inserting, deleting and renumbering rows, deleting history,
/// summary rows, closing and checking. Each runs as one undo step.
class JournalRowCommands
{
public:
    /// Binds them in \a d's registry.
    static void offer(JournalPrivate &d);
};

} // namespace kx
