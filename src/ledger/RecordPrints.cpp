#include "ledger/RecordPrints.h"

namespace kx {

std::size_t RecordPrints::slotOf(int key) const
{
    // Keys come from the database's counter, so they are mostly consecutive:
    // each key's home is its own value, a book's records fill the table in
    // memory order without a cache miss each, and consecutive keys never
    // collide while the table is at most half full.
    return std::size_t(quint32(key)) & (m_keys.size() - 1);
}

void RecordPrints::clear()
{
    m_keys.clear();
    m_prints.clear();
    m_rests.clear();
    m_size = 0;
}

void RecordPrints::reserve(int count)
{
    std::size_t capacity = 16;
    while (capacity < std::size_t(count) * 2)
        capacity *= 2;
    if (capacity > m_keys.size())
        grow(capacity);
}

void RecordPrints::grow(std::size_t capacity)
{
    std::vector<int> keys(capacity, 0);
    std::vector<quint64> prints(capacity, 0);
    std::vector<quint64> rests(m_rests.empty() ? 0 : capacity, 0);
    keys.swap(m_keys);
    prints.swap(m_prints);
    rests.swap(m_rests);
    m_size = 0;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (keys[i] != 0) {
            insert(keys[i], prints[i]);
            if (!rests.empty())
                setRest(keys[i], rests[i]);
        }
    }
}

void RecordPrints::insert(int key, quint64 print)
{
    if (key <= 0)
        return;
    // Kept at most half full, so a probe run stays short.
    if (std::size_t(m_size + 1) * 2 > m_keys.size())
        grow(m_keys.empty() ? 16 : m_keys.size() * 2);
    const std::size_t mask = m_keys.size() - 1;
    for (std::size_t i = slotOf(key);; i = (i + 1) & mask) {
        if (m_keys[i] == key || m_keys[i] == 0) {
            m_size += m_keys[i] == 0 ? 1 : 0;
            m_keys[i] = key;
            m_prints[i] = print;
            if (!m_rests.empty())
                m_rests[i] = 0;
            return;
        }
    }
}

std::vector<int> RecordPrints::keys() const
{
    std::vector<int> out;
    out.reserve(std::size_t(m_size));
    for (int key : m_keys)
        if (key != 0)
            out.push_back(key);
    return out;
}

std::ptrdiff_t RecordPrints::find(int key) const
{
    if (key <= 0 || m_keys.empty())
        return -1;
    const std::size_t mask = m_keys.size() - 1;
    for (std::size_t i = slotOf(key); m_keys[i] != 0; i = (i + 1) & mask)
        if (m_keys[i] == key)
            return std::ptrdiff_t(i);
    return -1;
}

bool RecordPrints::find(int key, quint64 &print) const
{
    const std::ptrdiff_t at = find(key);
    if (at < 0)
        return false;
    print = m_prints[std::size_t(at)];
    return true;
}

void RecordPrints::setRest(int key, quint64 rest)
{
    const std::ptrdiff_t at = find(key);
    if (at < 0)
        return;
    if (m_rests.empty())
        m_rests.assign(m_keys.size(), 0);
    m_rests[std::size_t(at)] = rest;
}

quint64 RecordPrints::rest(int key) const
{
    const std::ptrdiff_t at = m_rests.empty() ? -1 : find(key);
    return at < 0 ? 0 : m_rests[std::size_t(at)];
}

void RecordPrints::remove(int key)
{
    if (key <= 0 || m_keys.empty())
        return;
    const std::size_t mask = m_keys.size() - 1;
    std::size_t i = slotOf(key);
    while (m_keys[i] != key) {
        if (m_keys[i] == 0)
            return;
        i = (i + 1) & mask;
    }
    // Shift later members of the run back into the hole, so every key stays
    // reachable from its home slot without passing an empty one.
    std::size_t hole = i;
    for (std::size_t j = (i + 1) & mask; m_keys[j] != 0; j = (j + 1) & mask) {
        const std::size_t home = slotOf(m_keys[j]);
        const bool movable = hole <= j ? (home <= hole || home > j) : (home <= hole && home > j);
        if (movable) {
            m_keys[hole] = m_keys[j];
            m_prints[hole] = m_prints[j];
            if (!m_rests.empty())
                m_rests[hole] = m_rests[j];
            hole = j;
        }
    }
    m_keys[hole] = 0;
    m_prints[hole] = 0;
    if (!m_rests.empty())
        m_rests[hole] = 0;
    --m_size;
}

} // namespace kx
