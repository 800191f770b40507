#pragma once

#include <QtGlobal>
#include <cstddef>
#include <vector>

namespace kx {

/// Record key → fingerprint, for a million keys: open addressing with
/// linear probing over two flat arrays, no node per entry. Keys are
/// positive (a stored record's key); removal shifts the run back, so no
/// tombstones pile up. A key may also carry a second print, of the record
/// without its balances (kept in a third array, made only once one is set).
class RecordPrints
{
public:
    /// Forgets everything.
    void clear();
    /// Makes room for \a count keys without growing.
    void reserve(int count);
    /// Sets the fingerprint of \a key (> 0); its second print becomes unknown.
    void insert(int key, quint64 print);
    /// Sets the second print of \a key, when the key is known.
    void setRest(int key, quint64 rest);
    /// The second print of \a key (0: unknown).
    quint64 rest(int key) const;
    /// Forgets \a key.
    void remove(int key);
    /// The fingerprint of \a key, or false when it is unknown.
    bool find(int key, quint64 &print) const;
    /// How many keys are known.
    int size() const { return m_size; }
    /// Every key known, in no particular order.
    std::vector<int> keys() const;

private:
    std::size_t slotOf(int key) const;
    /// The slot holding \a key, or -1.
    std::ptrdiff_t find(int key) const;
    void grow(std::size_t capacity);

    std::vector<int> m_keys;  ///< 0 = empty slot
    std::vector<quint64> m_prints;
    std::vector<quint64> m_rests;  ///< empty until a second print is set
    int m_size = 0;
};

} // namespace kx
