#pragma once

#include <QtGlobal>
#include <vector>

namespace kx {

/// Record key → fingerprint, for a million keys: open addressing with
/// linear probing over two flat arrays, no node per entry. Keys are
/// positive (a stored record's key); removal shifts the run back, so no
/// tombstones pile up.
class RecordPrints
{
public:
    /// Forgets everything.
    void clear();
    /// Makes room for \a count keys without growing.
    void reserve(int count);
    /// Sets the fingerprint of \a key (> 0).
    void insert(int key, quint64 print);
    /// Forgets \a key.
    void remove(int key);
    /// The fingerprint of \a key, or false when it is unknown.
    bool find(int key, quint64 &print) const;
    /// How many keys are known.
    int size() const { return m_size; }

private:
    std::size_t slotOf(int key) const;
    void grow(std::size_t capacity);

    std::vector<int> m_keys;  ///< 0 = empty slot
    std::vector<quint64> m_prints;
    int m_size = 0;
};

} // namespace kx
