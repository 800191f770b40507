#include "kxjournal/EditCycle.h"

#include "kxjournal/GridModel.h"

namespace kx {

EditCycle::EditCycle(GridModel *grid) : QObject(grid), m_grid(grid) {}

void EditCycle::setEditText(const QString &text)
{
    m_editText = text;
}

bool EditCycle::begin(int row, int col)
{
    if (m_editing || !m_grid->editable() || !m_grid->isDataRow(row) || !m_grid->isDataCol(col))
        return false;
    m_row = row;
    m_col = col;
    m_comboList = m_grid->colComboList(col);
    m_editText = m_grid->text(row, col);
    m_stored = false;
    // Marked as editing before the event so a handler sees editRow()/editCol().
    m_editing = true;
    bool cancel = false;
    Q_EMIT beforeEdit(row, col, cancel);
    if (cancel) {
        m_editing = false;
        Q_EMIT editEnded(row, col, false);
        return false;
    }
    return true;
}

int EditCycle::keyPress(int keyCode)
{
    if (!m_editing)
        return keyCode;
    Q_EMIT keyPressEdit(m_row, m_col, keyCode);
    return keyCode;
}

bool EditCycle::validate(const QString &text)
{
    if (!m_editing)
        return false;
    m_editText = text;
    bool cancel = false;
    Q_EMIT validateEdit(m_row, m_col, cancel);
    return !cancel;
}

void EditCycle::store()
{
    if (!m_editing)
        return;
    m_grid->setText(m_row, m_col, m_editText);
    m_stored = true;
}

void EditCycle::finish()
{
    if (!m_editing)
        return;
    m_editing = false;
    const bool stored = m_stored;
    m_stored = false;
    if (stored)
        Q_EMIT afterEdit(m_row, m_col);
    Q_EMIT editEnded(m_row, m_col, stored);
}

void EditCycle::cancel()
{
    if (!m_editing)
        return;
    m_editing = false;
    m_stored = false;
    Q_EMIT editEnded(m_row, m_col, false);
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
    if (m_editing)
        Q_EMIT cellButtonClick(m_row, m_col);
}

} // namespace kx
