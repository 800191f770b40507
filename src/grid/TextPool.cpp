#include "grid/TextPool.h"

#include <algorithm>
#include <cstring>

namespace kx {

std::uint32_t TextPool::intern(const QString &text)
{
    // A pass that writes the same string object row after row (a direction,
    // a label) is recognised by its shared characters, without hashing.
    for (std::uint32_t id : m_recent) {
        if (id < m_texts.size() && m_refs[id] != 0 && m_texts[id].constData() == text.constData() &&
            m_texts[id].size() == text.size() && !text.isNull()) {
            ++m_refs[id];
            return id;
        }
    }
    const std::uint32_t id = lookUp(text);
    m_recent[m_nextRecent++ % m_recent.size()] = id;
    return id;
}

std::uint32_t TextPool::lookUp(const QString &text)
{
    auto it = m_ids.constFind(text);
    if (it != m_ids.constEnd()) {
        ++m_refs[it.value()];
        return it.value();
    }
    const quint64 hash = quint64(qHash(text, 0x6b78)) ^ 0x5bd1e9955bd1e995ULL;
    std::uint32_t id;
    if (!m_free.empty()) {
        id = m_free.back();
        m_free.pop_back();
        m_texts[id] = text;
        m_refs[id] = 1;
        m_hashes[id] = hash;
    } else {
        id = std::uint32_t(m_texts.size());
        m_texts.push_back(text);
        m_refs.push_back(1);
        m_hashes.push_back(hash);
    }
    m_ids.insert(text, id);
    return id;
}

void TextPool::release(std::uint32_t id)
{
    if (--m_refs[id] != 0)
        return;
    m_ids.remove(m_texts[id]);
    m_texts[id] = QString();
    m_free.push_back(id);
}

std::size_t TextPool::overheadBytes() const
{
    return m_texts.capacity() * sizeof(QString) + m_refs.capacity() * sizeof(std::uint32_t) + m_hashes.capacity() * sizeof(quint64) +
           m_free.capacity() * sizeof(std::uint32_t) + m_ids.capacity() * (sizeof(QString) + 16);
}

Utf8Interner::~Utf8Interner()
{
    for (const Table &table : m_tables) {
        if (!table.slots)
            continue;
        for (std::size_t i = 0; i < Slots; ++i)
            if (table.slots[i].valid)
                m_pool.release(table.slots[i].id);
    }
}

// Field values differ mostly at their ends (a day, a voucher number, the
// last characters of a name): the first and last eight bytes and the length
// pick the slot, which costs far less than hashing every byte.
std::size_t Utf8Interner::slotOf(const char *bytes, int size)
{
    std::uint64_t head = 0, tail = 0;
    const std::size_t n = std::size_t(size);
    std::memcpy(&head, bytes, std::min<std::size_t>(n, 8));
    if (n > 8)
        std::memcpy(&tail, bytes + n - std::min<std::size_t>(n - 8, 8), std::min<std::size_t>(n - 8, 8));
    std::uint64_t h = (head ^ (tail * 0x9e3779b97f4a7c15ULL) ^ n) * 0xff51afd7ed558ccdULL;
    return std::size_t(h >> 40) & (Slots - 1);
}

std::uint32_t Utf8Interner::intern(int column, const char *bytes, int size)
{
    Table &table = m_tables[std::size_t(column)];
    const auto same = [bytes, size](const Slot &slot) {
        return slot.valid && slot.bytes.size() == size && std::memcmp(slot.bytes.constData(), bytes, std::size_t(size)) == 0;
    };
    if (table.last && same(*table.last)) {
        m_pool.retain(table.last->id);
        return table.last->id;
    }
    if (!table.slots)
        table.slots = std::make_unique<Slot[]>(Slots);
    Slot &slot = table.slots[slotOf(bytes, size)];
    if (!same(slot)) {
        // The slot holds this reference of its own so its id cannot be reused
        // under the interner; dropped when a newer value takes the slot.
        const std::uint32_t id = m_pool.intern(QString::fromUtf8(bytes, size));
        if (slot.valid)
            m_pool.release(slot.id);
        slot.bytes = QByteArray(bytes, size);
        slot.id = id;
        slot.valid = true;
    }
    m_pool.retain(slot.id);
    table.last = &slot;
    return slot.id;
}

} // namespace kx
