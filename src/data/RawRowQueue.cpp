#include "data/RawRowQueue.h"

namespace kx {

void RawRows::clear()
{
    types.clear();
    numbers.clear();
    reals.clear();
    bytes.clear();
    sizes.clear();
    rows = 0;
}

RawRows RawRowQueue::take()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_full.size() < m_depth || m_cancelled; });
    if (m_spare.empty() || m_cancelled)
        return {};
    RawRows rows = std::move(m_spare.back());
    m_spare.pop_back();
    return rows;
}

void RawRowQueue::push(RawRows rows)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_cancelled)
            return;
        m_full.push_back(std::move(rows));
    }
    m_changed.notify_all();
}

void RawRowQueue::cancel()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_cancelled = true;
    }
    m_changed.notify_all();
}

void RawRowQueue::close()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_closed = true;
    }
    m_changed.notify_all();
}

bool RawRowQueue::pop(RawRows &rows)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_full.empty() || m_closed; });
    if (m_full.empty())
        return false;
    rows = std::move(m_full.front());
    m_full.pop_front();
    lock.unlock();
    m_changed.notify_all();
    return true;
}

void RawRowQueue::recycle(RawRows rows)
{
    rows.clear();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_spare.push_back(std::move(rows));
}

} // namespace kx
