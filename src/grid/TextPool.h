#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace kx {

/// The texts of a grid, each kept once and counted: account names,
/// directions and labels repeat down a book, so a row refers to them by id.
/// An id lives while cells refer to it; its slot is reused afterwards.
class TextPool
{
public:
    /// The id of \a text, with one more reference.
    std::uint32_t intern(const QString &text);
    /// Adds a reference to \a id.
    void retain(std::uint32_t id) { ++m_refs[id]; }
    /// Drops a reference to \a id; the text goes when none is left.
    void release(std::uint32_t id);
    /// The id of \a text when a cell holds it, else UINT32_MAX; adds no reference.
    std::uint32_t find(const QString &text) const
    {
        const auto it = m_ids.constFind(text);
        return it == m_ids.constEnd() ? UINT32_MAX : it.value();
    }
    /// The text of a live id.
    const QString &text(std::uint32_t id) const { return m_texts[id]; }
    /// A hash of the text of a live id, made once when it was pooled.
    quint64 hash(std::uint32_t id) const { return m_hashes[id]; }
    /// How many distinct texts are alive.
    std::size_t liveCount() const { return m_ids.size(); }
    /// Bytes held beyond the texts' own characters (for measurements).
    std::size_t overheadBytes() const;

private:
    std::uint32_t lookUp(const QString &text);

    std::array<std::uint32_t, 4> m_recent{{UINT32_MAX, UINT32_MAX, UINT32_MAX, UINT32_MAX}};
    std::uint32_t m_nextRecent = 0;
    std::vector<QString> m_texts;
    std::vector<std::uint32_t> m_refs;
    std::vector<quint64> m_hashes;
    std::vector<std::uint32_t> m_free;
    QHash<QString, std::uint32_t> m_ids;
};

/// Decodes UTF-8 field values into pool ids, decoding each distinct value of
/// a column about once: a fetch meets the same account name thousands of
/// times. Each column keeps a fixed table of recently met values, so a
/// column of unique texts costs no more memory than a column of few.
class Utf8Interner
{
public:
    /// An interner for \a columns columns into \a pool.
    Utf8Interner(TextPool &pool, int columns) : m_pool(pool), m_tables(std::size_t(columns)) {}
    /// Drops the references the interner held to remember values.
    ~Utf8Interner();
    Utf8Interner(const Utf8Interner &) = delete;
    Utf8Interner &operator=(const Utf8Interner &) = delete;
    /// The id (with one more reference) of the text \a bytes holds.
    std::uint32_t intern(int column, const char *bytes, int size);

private:
    static constexpr std::size_t Slots = 2048;
    static std::size_t slotOf(const char *bytes, int size);
    // A slot holds the value last met at its hash; a newer value takes the
    // slot over, so values that recur near each other (the rows of one
    // voucher, one day's label) are found however many a column has.
    struct Slot {
        QByteArray bytes;
        std::uint32_t id = 0;
        bool valid = false;
    };
    // Down a book a column often repeats the row above (one account, one
    // direction): that slot is checked before any hashing.
    struct Table {
        std::unique_ptr<Slot[]> slots;
        Slot *last = nullptr;
    };
    TextPool &m_pool;
    std::vector<Table> m_tables;
};
} // namespace kx
