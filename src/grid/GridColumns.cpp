#include "grid/GridColumns.h"

#include <algorithm>

namespace kx {

void GridColumns::resize(int n)
{
    m_cols.resize(std::size_t(std::max(n, 0)));
    m_valid = false;
}

void GridColumns::move(int from, int to)
{
    if (from < to)
        std::rotate(m_cols.begin() + from, m_cols.begin() + from + 1, m_cols.begin() + to + 1);
    else
        std::rotate(m_cols.begin() + to, m_cols.begin() + from, m_cols.begin() + from + 1);
    m_valid = false;
}

void GridColumns::setKey(int col, const QString &key)
{
    m_cols[std::size_t(col)].key = key;
    m_valid = false;
}

void GridColumns::rebuild() const
{
    m_exact.clear();
    m_folded.clear();
    // From the right, so the leftmost of two equal keys wins.
    for (int c = count() - 1; c >= 0; --c) {
        const QString &k = m_cols[std::size_t(c)].key;
        if (k.isEmpty())
            continue;
        m_exact.insert(k, c);
        m_folded.insert(k.toLower(), c);
    }
    m_valid = true;
}

int GridColumns::indexOf(const QString &key) const
{
    if (key.isEmpty())
        return -1;
    if (!m_valid)
        rebuild();
    auto it = m_exact.constFind(key);
    if (it != m_exact.constEnd())
        return it.value();
    it = m_folded.constFind(key.toLower());
    return it != m_folded.constEnd() ? it.value() : -1;
}

} // namespace kx
