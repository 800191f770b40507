#include "kxjournal/EditCycle.h"

#include "kxjournal/GridModel.h"

namespace kx {

/// EditCycle's state: the edit in progress.
class EditCyclePrivate
{
public:
    explicit EditCyclePrivate(GridModel *g) : grid(g) {}
    GridModel *const grid;
    QString editText;
    QString comboList;
    QStringList comboHints;
    int row = -1;
    int col = -1;
    bool editing = false;
    bool stored = false;
};

EditCycle::EditCycle(GridModel *grid) : QObject(grid), d(std::make_unique<EditCyclePrivate>(grid)) {}

EditCycle::~EditCycle() = default;

GridModel *EditCycle::grid() const
{
    return d->grid;
}

bool EditCycle::isEditing() const
{
    return d->editing;
}

int EditCycle::editRow() const
{
    return d->editing ? d->row : -1;
}

int EditCycle::editCol() const
{
    return d->editing ? d->col : -1;
}

QString EditCycle::editText() const
{
    return d->editText;
}

QString EditCycle::comboList() const
{
    return d->comboList;
}

void EditCycle::setComboList(const QString &list)
{
    d->comboList = list;
    d->comboHints.clear();
}

QStringList EditCycle::comboHints() const
{
    return d->comboHints;
}

void EditCycle::setComboHints(const QStringList &hints)
{
    d->comboHints = hints;
}

void EditCycle::setEditText(const QString &text)
{
    d->editText = text;
}

bool EditCycle::begin(int row, int col)
{
    if (d->editing || !d->grid->editable() || !d->grid->isDataRow(row) || !d->grid->isDataCol(col))
        return false;
    d->row = row;
    d->col = col;
    d->comboList = d->grid->colComboList(col);
    d->comboHints.clear();
    d->editText = d->grid->text(row, col);
    d->stored = false;
    // Marked as editing before the event so a handler sees editRow()/editCol().
    d->editing = true;
    bool cancel = false;
    Q_EMIT beforeEdit(row, col, cancel);
    if (cancel) {
        d->editing = false;
        Q_EMIT editEnded(row, col, false);
        return false;
    }
    return true;
}

int EditCycle::keyPress(int keyCode)
{
    if (!d->editing)
        return keyCode;
    Q_EMIT keyPressEdit(d->row, d->col, keyCode);
    return keyCode;
}

bool EditCycle::validate(const QString &text)
{
    if (!d->editing)
        return false;
    d->editText = text;
    bool cancel = false;
    Q_EMIT validateEdit(d->row, d->col, cancel);
    return !cancel;
}

void EditCycle::store()
{
    if (!d->editing)
        return;
    d->grid->setText(d->row, d->col, d->editText);
    d->stored = true;
}

void EditCycle::finish()
{
    if (!d->editing)
        return;
    d->editing = false;
    const bool stored = d->stored;
    d->stored = false;
    if (stored)
        Q_EMIT afterEdit(d->row, d->col);
    Q_EMIT editEnded(d->row, d->col, stored);
}

void EditCycle::cancel()
{
    if (!d->editing)
        return;
    d->editing = false;
    d->stored = false;
    Q_EMIT editEnded(d->row, d->col, false);
}

bool EditCycle::editCell(int row, int col, const QString &text)
{
    if (!begin(row, col))
        return false;
    QString typed;
    typed.reserve(text.size());
    for (QChar ch : text) {
        const int code = keyPress(ch.unicode());
        if (code != 0)
            typed += QChar(char16_t(code));
    }
    if (!validate(typed)) {
        cancel();
        return false;
    }
    store();
    finish();
    return true;
}

void EditCycle::clickButton()
{
    if (d->editing)
        Q_EMIT cellButtonClick(d->row, d->col);
}

} // namespace kx
