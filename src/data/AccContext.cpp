#include "kxjournal/AccContext.h"

namespace kx {

AccContext::AccContext(QObject *parent) : QObject(parent) {}

AccContext::~AccContext() = default;

void AccContext::virtual_hook(int id, void *data)
{
    Q_UNUSED(id)
    Q_UNUSED(data)
}

} // namespace kx
