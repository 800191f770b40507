#include "bank/Statement.h"

namespace kx {

namespace {

Currency signedAmount(const StatementLine &line)
{
    return line.side == StatementSide::Receipt ? line.amount : -line.amount;
}

// Each line with a balance against the balance the lines before it (in
// reading order) lead to; \a step is 1 for oldest first, -1 for newest
// first. Lines without a balance carry the running one on.
QList<int> breaksInOrder(const QList<StatementLine> &lines, int step)
{
    QList<int> breaks;
    const qsizetype n = lines.size();
    std::optional<Currency> running;
    for (qsizetype k = 0; k < n; ++k) {
        const StatementLine &line = lines.at(step > 0 ? k : n - 1 - k);
        if (running)
            *running += signedAmount(line);
        if (!line.balance)
            continue;
        if (running && *line.balance != *running)
            breaks.append(line.sourceLine);
        running = line.balance;
    }
    return breaks;
}

} // namespace

QList<int> findBalanceBreaks(const QList<StatementLine> &lines)
{
    QList<int> forward = breaksInOrder(lines, 1);
    if (forward.isEmpty())
        return forward;
    QList<int> backward = breaksInOrder(lines, -1);
    if (backward.size() < forward.size()) {
        std::sort(backward.begin(), backward.end());
        return backward;
    }
    return forward;
}

} // namespace kx
