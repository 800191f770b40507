#include "bank/StatementMatcher.h"

#include "grid/Sheet.h"
#include "ledger/Book.h"
#include "ledger/BookRow.h"

#include <QHash>
#include <algorithm>
#include <functional>
#include <vector>

namespace kx {

namespace {

using Key = QPair<int, qint64>;  // side, amount in ten-thousandths

Key keyOf(StatementSide side, Currency amount)
{
    return {side == StatementSide::Receipt ? 0 : 1, amount.raw()};
}

// One tie: the lines and records of one side and amount linked by dates
// inside the window, with each line's candidates.
struct Tie {
    std::vector<int> lines;            // indexes into the lines
    std::vector<int> records;          // indexes into the records
    std::vector<std::vector<int>> of;  // per tie line: positions in records
};

// Pairs lines with records along augmenting paths; how many were paired.
int maximumPairs(const Tie &tie, std::vector<int> &recordOf, std::vector<int> &lineOf)
{
    recordOf.assign(tie.lines.size(), -1);
    lineOf.assign(tie.records.size(), -1);
    int pairs = 0;
    for (std::size_t l = 0; l < tie.lines.size(); ++l) {
        std::vector<char> seen(tie.records.size(), 0);
        const std::function<bool(int)> augment = [&](int line) {
            for (int r : tie.of[std::size_t(line)]) {
                if (seen[std::size_t(r)])
                    continue;
                seen[std::size_t(r)] = 1;
                if (lineOf[std::size_t(r)] < 0 || augment(lineOf[std::size_t(r)])) {
                    lineOf[std::size_t(r)] = line;
                    recordOf[std::size_t(line)] = r;
                    return true;
                }
            }
            return false;
        };
        if (augment(int(l)))
            ++pairs;
    }
    return pairs;
}

} // namespace

QList<BankRecord> BankRecord::of(const Book &book)
{
    QList<BankRecord> out;
    const Sheet &grid = book.sheet();
    const JournalColumns columns = book.columns();
    for (int r = grid.fixedRows(); r < grid.rows(); ++r) {
        const BookRow row = BookRow::of(grid, columns, r);
        if (row.isOpening() || row.isSummary() || !row.isDated() || row.recId() <= 0)
            continue;
        const Currency net = row.debit() - row.credit();
        if (net.isZero() || !net.isValid())
            continue;
        BankRecord rec;
        rec.recId = row.recId();
        rec.date = row.date();
        rec.side = net.sign() > 0 ? StatementSide::Receipt : StatementSide::Payment;
        rec.amount = net.abs();
        rec.number = row.text(JournalColumns::JnlNo);
        rec.explain = row.text(JournalColumns::Explain);
        out << rec;
    }
    return out;
}

int StatementMatcher::score(const StatementLine &line, const BankRecord &record)
{
    int s = 0;
    const QString &ref = line.reference;
    if (!ref.isEmpty() && (record.number == ref || record.explain.contains(ref)))
        s += 1000;
    if (line.counterparty.size() >= 2 && record.explain.contains(line.counterparty))
        s += 500;
    return s - 10 * int(std::abs(line.date.daysTo(record.date)));
}

StatementMatcher::Outcome StatementMatcher::match(const QList<StoredLine> &lines, const QList<BankRecord> &records,
                                                  const QSet<int> &matchedLines, const QSet<int> &matchedRecords,
                                                  int days)
{
    Outcome out;
    QHash<Key, std::vector<int>> bySideAndAmount;
    for (int i = 0; i < int(records.size()); ++i)
        if (!matchedRecords.contains(records.at(i).recId) && records.at(i).date.isValid())
            bySideAndAmount[keyOf(records.at(i).side, records.at(i).amount)].push_back(i);

    // Lines grouped the same way; each group is solved on its own.
    QHash<Key, std::vector<int>> linesBy;
    for (int i = 0; i < int(lines.size()); ++i)
        if (!matchedLines.contains(lines.at(i).id) && lines.at(i).line.date.isValid())
            linesBy[keyOf(lines.at(i).line.side, lines.at(i).line.amount)].push_back(i);

    for (auto group = linesBy.cbegin(); group != linesBy.cend(); ++group) {
        const auto found = bySideAndAmount.constFind(group.key());
        if (found == bySideAndAmount.cend())
            continue;
        const std::vector<int> &groupLines = group.value();
        std::vector<int> groupRecords = found.value();
        std::sort(groupRecords.begin(), groupRecords.end(),
                  [&](int a, int b) { return records.at(a).date < records.at(b).date; });
        // Candidates within the window, as edges of a graph whose parts are
        // the ties solved one by one.
        std::vector<std::vector<int>> edges(groupLines.size());
        std::vector<std::vector<int>> back(groupRecords.size());
        for (std::size_t l = 0; l < groupLines.size(); ++l) {
            const QDate d = lines.at(groupLines[l]).line.date;
            const QDate from = d.addDays(-days);
            auto r = std::lower_bound(groupRecords.begin(), groupRecords.end(), from,
                                      [&](int rec, const QDate &day) { return records.at(rec).date < day; });
            for (; r != groupRecords.end() && records.at(*r).date.daysTo(d) >= -days; ++r) {
                const int at = int(r - groupRecords.begin());
                edges[l].push_back(at);
                back[std::size_t(at)].push_back(int(l));
            }
        }
        std::vector<char> lineDone(groupLines.size(), 0), recordDone(groupRecords.size(), 0);
        auto take = [&](int l, int r) {
            lineDone[std::size_t(l)] = recordDone[std::size_t(r)] = 1;
            out.pairs.append({lines.at(groupLines[std::size_t(l)]).id, records.at(groupRecords[std::size_t(r)]).recId});
        };
        auto scoreOf = [&](int l, int r) {
            return score(lines.at(groupLines[std::size_t(l)]).line, records.at(groupRecords[std::size_t(r)]));
        };
        // The best open partner of a line (or a record), and whether it is the only best.
        auto best = [&](const std::vector<int> &candidates, const std::vector<char> &done, auto scoreWith) {
            int who = -1, top = 0;
            bool alone = false;
            for (int c : candidates) {
                if (done[std::size_t(c)])
                    continue;
                const int s = scoreWith(c);
                if (who < 0 || s > top) {
                    who = c;
                    top = s;
                    alone = true;
                } else if (s == top) {
                    alone = false;
                }
            }
            return std::make_pair(who, alone);
        };
        // First the certain pairs: each the other's one best partner.
        for (bool progress = true; progress;) {
            progress = false;
            for (int l = 0; l < int(groupLines.size()); ++l) {
                if (lineDone[std::size_t(l)])
                    continue;
                const auto [r, onlyR] = best(edges[std::size_t(l)], recordDone, [&](int c) { return scoreOf(l, c); });
                if (r < 0 || !onlyR)
                    continue;
                const auto [l2, onlyL] = best(back[std::size_t(r)], lineDone, [&](int c) { return scoreOf(c, r); });
                if (l2 == l && onlyL) {
                    take(l, r);
                    progress = true;
                }
            }
        }
        // Then the ties left: paired when every line and every record of a
        // tie can be (which goes with which changes nothing then), else
        // left for the cashier.
        std::vector<char> visited(groupLines.size(), 0);
        for (int start = 0; start < int(groupLines.size()); ++start) {
            if (lineDone[std::size_t(start)] || visited[std::size_t(start)])
                continue;
            Tie tie;
            QHash<int, int> recordAt;
            std::vector<int> stack{start};
            visited[std::size_t(start)] = 1;
            while (!stack.empty()) {
                const int l = stack.back();
                stack.pop_back();
                tie.lines.push_back(l);
                for (int r : edges[std::size_t(l)]) {
                    if (recordDone[std::size_t(r)] || recordAt.contains(r))
                        continue;
                    recordAt.insert(r, int(tie.records.size()));
                    tie.records.push_back(r);
                    for (int l2 : back[std::size_t(r)])
                        if (!lineDone[std::size_t(l2)] && !visited[std::size_t(l2)]) {
                            visited[std::size_t(l2)] = 1;
                            stack.push_back(l2);
                        }
                }
            }
            if (tie.records.empty())
                continue;
            for (int l : tie.lines) {
                std::vector<int> mine;
                for (int r : edges[std::size_t(l)])
                    if (!recordDone[std::size_t(r)])
                        mine.push_back(recordAt.value(r));
                tie.of.push_back(mine);
            }
            std::vector<int> recordOf, lineOf;
            const int paired = maximumPairs(tie, recordOf, lineOf);
            if (paired == int(tie.lines.size()) && paired == int(tie.records.size())) {
                // Paired in the order of their days where that order keeps
                // each pair inside the window: a month's end then parts no
                // line from its record. Else the pairing found stands.
                std::vector<int> byDayLines = tie.lines, byDayRecords = tie.records;
                std::stable_sort(byDayLines.begin(), byDayLines.end(), [&](int a, int b) {
                    return lines.at(groupLines[std::size_t(a)]).line.date < lines.at(groupLines[std::size_t(b)]).line.date;
                });
                std::stable_sort(byDayRecords.begin(), byDayRecords.end(), [&](int a, int b) {
                    return records.at(groupRecords[std::size_t(a)]).date < records.at(groupRecords[std::size_t(b)]).date;
                });
                bool inOrder = true;
                for (std::size_t i = 0; i < byDayLines.size() && inOrder; ++i)
                    inOrder = std::abs(lines.at(groupLines[std::size_t(byDayLines[i])]).line.date.daysTo(
                                  records.at(groupRecords[std::size_t(byDayRecords[i])]).date)) <= days;
                for (std::size_t i = 0; i < tie.lines.size(); ++i) {
                    if (inOrder)
                        take(byDayLines[i], byDayRecords[i]);
                    else
                        take(tie.lines[i], tie.records[std::size_t(recordOf[i])]);
                }
            } else {
                out.ambiguous += int(tie.lines.size());
            }
        }
    }
    return out;
}

} // namespace kx
