#pragma once


#include <memory>

namespace kx {

class GridChangesData;

/// What a stretch of changes did to a grid, kept so that it can be put back:
/// the earlier value of every cell written, every cell look and row colour
/// changed, every row mark and shape set, and rows inserted, removed (with
/// all they held) and moved.
///
/// Made by Sheet::endChanges() and Sheet::revertChanges(); putting
/// one back gives the changes that undo the putting back, so an undo step
/// and its redo are the same kind of object. Changes the grid cannot put
/// back (columns moved or added, a new book loaded, rows cut off the
/// bottom) make it incomplete: such a record must not be reverted.
class GridChanges
{
public:
    /// No changes.
    GridChanges();
    ~GridChanges();
    GridChanges(GridChanges &&other) noexcept;
    GridChanges &operator=(GridChanges &&other) noexcept;
    GridChanges(const GridChanges &) = delete;
    GridChanges &operator=(const GridChanges &) = delete;

    /// True when nothing changed.
    bool isEmpty() const;
    /// How many single changes were recorded.
    int size() const;
    /// False when a change was made that cannot be put back.
    bool isComplete() const;

private:
    friend class Sheet;
    explicit GridChanges(std::unique_ptr<GridChangesData> data);
    std::unique_ptr<GridChangesData> d;
};

} // namespace kx
