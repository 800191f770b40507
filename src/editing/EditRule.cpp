#include "editing/EditRule.h"

namespace kx {

EditRule::~EditRule() = default;

QStringList EditRule::comboHints(EditContext &, int, int, const QString &) const
{
    return {};
}

QString EditRule::comboList(EditContext &, int, int) const
{
    return {};
}

bool EditRule::validate(EditContext &, int, int, QString &)
{
    return true;
}

void EditRule::afterEdit(EditContext &, int, int) {}

} // namespace kx
