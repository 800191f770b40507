#include "grid/TextPool.h"

#include <cstring>

namespace kx {

std::uint32_t TextPool::intern(const QString &text)
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
    for (const auto &seen : m_seen)
        for (auto it = seen.constBegin(); it != seen.constEnd(); ++it)
            m_pool.release(it.value());
}

std::uint32_t Utf8Interner::intern(int column, const char *bytes, int size)
{
    Last &last = m_last[std::size_t(column)];
    if (last.valid && last.bytes.size() == size && std::memcmp(last.bytes.constData(), bytes, std::size_t(size)) == 0) {
        m_pool.retain(last.id);
        return last.id;
    }
    auto &seen = m_seen[std::size_t(column)];
    const QByteArray key = QByteArray::fromRawData(bytes, size);
    auto it = seen.constFind(key);
    if (it != seen.constEnd()) {
        m_pool.retain(it.value());
    } else {
        const std::uint32_t id = m_pool.intern(QString::fromUtf8(bytes, size));
        // The remembered id holds a reference of its own so it cannot be
        // reused under the interner; dropped again when the interner goes.
        if (seen.size() >= Cap)
            return id;
        m_pool.retain(id);
        it = seen.insert(QByteArray(bytes, size), id);
    }
    // Only remembered ids may be the last one: they cannot be freed meanwhile.
    // The key's bytes are shared, not copied.
    last.bytes = it.key();
    last.id = it.value();
    last.valid = true;
    return last.id;
}

} // namespace kx
