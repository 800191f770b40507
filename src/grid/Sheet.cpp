#include "grid/Sheet.h"

namespace kx {

Sheet::Sheet(QObject *parent) : GridModel(parent) {}

Sheet::~Sheet() = default;

Sheet *Sheet::of(GridModel *grid)
{
    return qobject_cast<Sheet *>(grid);
}

} // namespace kx
