// GridModel: recording changes and putting them back (the undo history's ground).
#include "grid/GridChanges.h"
#include "kxjournal/GridModel.h"
#include "grid/Sheet.h"

#include "grid/GridModelPrivate.h"

#include <QScopedValueRollback>

namespace kx {

GridChanges::GridChanges() = default;
GridChanges::GridChanges(std::unique_ptr<GridChangesData> data) : d(std::move(data)) {}
GridChanges::~GridChanges() = default;
GridChanges::GridChanges(GridChanges &&other) noexcept = default;
GridChanges &GridChanges::operator=(GridChanges &&other) noexcept = default;
bool GridChanges::isEmpty() const { return !d || d->entries.empty(); }
int GridChanges::size() const { return d ? int(d->entries.size()) : 0; }
bool GridChanges::isComplete() const { return !d || d->complete; }

quint64 Sheet::revision() const { return d->revision; }

quint64 Sheet::valueRevision() const { return d->store.values(); }
bool Sheet::isRecordingChanges() const { return d->log != nullptr; }

void Sheet::beginChanges()
{
    if (d->logDepth++ > 0)
        return;
    d->log = std::make_unique<GridChangesData>();
    d->store.setLog(d->log.get());
}

GridChanges Sheet::endChanges()
{
    if (d->logDepth == 0 || --d->logDepth > 0)
        return GridChanges();
    d->store.setLog(nullptr);
    return GridChanges(std::move(d->log));
}

GridChanges Sheet::revertChanges(const GridChanges &changes)
{
    if (!changes.d || !changes.d->complete || d->logDepth > 0)
        return GridChanges();
    const GridChangesData &log = *changes.d;
    QScopedValueRollback<bool> reverting(d->reverting, true);
    beginChanges();
    // Newest first: each entry finds the grid as it was just after its change.
    for (auto it = log.entries.rbegin(); it != log.entries.rend(); ++it) {
        const GridChangesData::Entry &e = *it;
        switch (e.kind) {
        case GridChangesData::Value:
            if (e.cell.kind() == Cell::Text)
                setText(e.row, e.col, log.texts[std::size_t(e.side)]);
            else if (d->store.setTyped(e.row, e.col, e.cell))
                notifyCells(e.row, e.col, e.row, e.col);
            break;
        case GridChangesData::Look: {
            if (!d->isCell(e.row, e.col))
                break;
            const GridChangesData::LookBefore &before = log.looks[std::size_t(e.side)];
            if (!before.had && !d->styles.at(e.row, e.col))
                break;
            d->logLook(e.row, e.col);
            d->styles.make(e.row, e.col) = before.had ? before.style : GridStyles::CellStyle();
            notifyCells(e.row, e.col, e.row, e.col);
            break;
        }
        case GridChangesData::RowColor:
            setRowForeColor(e.row, log.colors[std::size_t(e.side)]);
            break;
        case GridChangesData::RowMark:
            setRowData(e.row, log.marks[std::size_t(e.side)]);
            break;
        case GridChangesData::RowCount:
            setRows(e.side);
            break;
        case GridChangesData::RowsIn:
            removeRowsAt(e.row, e.side);
            break;
        case GridChangesData::RowsOut: {
            const GridChangesData::Removed &removed = log.removed[std::size_t(e.side)];
            const int count = int(removed.cells.size());
            insertRowsAt(e.row, count);
            for (int i = 0; i < count; ++i) {
                d->store.restoreRow(e.row + i, removed.cells[std::size_t(i)]);
                d->styles.restoreRow(e.row + i, removed.looks[std::size_t(i)]);
            }
            notifyCells(e.row, 0, e.row + count - 1, cols() - 1);
            notifyRowLayout(-1);
            break;
        }
        case GridChangesData::RowMove:
            moveRowTo(e.col, e.row);
            break;
        case GridChangesData::Shape:
            if (e.row >= 0 && e.row < rows()) {
                d->logShape(e.row);
                d->store.setShape(e.row, log.shapes[std::size_t(e.side)]);
                notifyRowLayout(e.row);
            }
            break;
        case GridChangesData::Data:
            setCellData(e.row, e.col, log.marks[std::size_t(e.side)]);
            break;
        }
    }
    return endChanges();
}

} // namespace kx
