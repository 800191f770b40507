#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <vector>

namespace kx {

/// A run of result rows as an engine hands them out, copied so the engine
/// can step on while another thread types them: a type per value, whole
/// numbers, reals, and text bytes back to back.
struct RawRows {
    /// The engine's type of each value, row after row.
    std::vector<unsigned char> types;
    /// Whole numbers, in the order they come.
    std::vector<std::int64_t> numbers;
    /// Reals, in the order they come.
    std::vector<double> reals;
    /// The bytes of every text, back to back.
    std::vector<char> bytes;
    /// The size of each text.
    std::vector<int> sizes;
    /// How many rows this run holds.
    int rows = 0;

    /// Empties the run, keeping its memory for the next one.
    void clear();
};

/// Hands runs of rows from the thread that reads them to the thread that
/// keeps them, a few at a time so the reader never holds the whole result.
/// Runs go back and forth, so their memory is allocated once.
class RawRowQueue
{
public:
    /// A queue holding at most \a depth full runs.
    explicit RawRowQueue(int depth = 4) : m_depth(std::size_t(depth)) {}

    /// An empty run to fill (a used one when there is one), waiting while
    /// the queue is full.
    RawRows take();
    /// Hands a filled run to the keeping thread.
    void push(RawRows rows);
    /// No more runs will come.
    void close();
    /// The keeping thread gives up: the reader's waits end at once and what
    /// it pushes is dropped; it should stop reading.
    void cancel();
    /// True once cancel() was called.
    bool cancelled() const { return m_cancelled.load(); }
    /// The next filled run; false when the reader is done and none is left.
    bool pop(RawRows &rows);
    /// Gives a kept run's memory back to the reader.
    void recycle(RawRows rows);

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<RawRows> m_full;
    std::vector<RawRows> m_spare;
    std::size_t m_depth;
    bool m_closed = false;
    std::atomic<bool> m_cancelled{false};
};

} // namespace kx
