#include "statistics/Pivot.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "common/Text.h"
#include "reporting/Aggregation.h"
#include "reporting/Periods.h"
#include "reporting/ReportCommandLine.h"

namespace hb::statistics {

using reporting::civilDate;
using reporting::DayNumber;
using reporting::isoWeek;

namespace {

using reporting::dimensionText;
using reporting::isTextDimension;
using reporting::timeGroupKey;

Str digits(int n, std::size_t width) {
    Str s = toStr(n);
    if (s.size() < width) s.insert(0, width - s.size(), u'0');
    return s;
}

// The values one dimension takes, numbered as they first appear: a record's
// id through its text (lists, user) or its day (times, each day looked up
// once), whether a filter lets the value through, and the values' ranks in
// the order they are shown.
class Values {
  public:
    Values(Dimension d, const PivotFilter* filter) : dimension_(d), text_(isTextDimension(d)) {
        if (filter) {
            filtered_ = true;
            for (const Str& v : filter->values)
                allowed_.insert(text_ ? text::foldCase(v) : v);
        }
    }

    std::uint32_t id(const TimeRecord& r, std::size_t index) {
        if (text_) {
            const Str& t = dimensionText(r, dimension_);
            const auto [it, added] =
                byText_.try_emplace(StrView(t), static_cast<std::uint32_t>(samples_.size()));
            if (added) add(r, index);
            return it->second;
        }
        if (hasLast_ && r.day == lastDay_) return lastId_;
        const std::int64_t order = timeGroupKey(r.day, dimension_);
        const auto [it, added] =
            byTime_.try_emplace(order, static_cast<std::uint32_t>(samples_.size()));
        if (added) add(r, index);
        hasLast_ = true;
        lastDay_ = r.day;
        lastId_ = it->second;
        return lastId_;
    }
    bool allowed(std::uint32_t id) const { return !filtered_ || allowed_flags_[id]; }
    std::size_t count() const { return samples_.size(); }
    std::size_t sample(std::uint32_t id) const { return samples_[id]; }
    const Str& key(std::uint32_t id) const { return keys_[id]; }

    // rank[id]: the value's place among all of the dimension's values.
    std::vector<std::uint32_t> ranks(const std::vector<TimeRecord>& records) const {
        std::vector<std::uint32_t> order(samples_.size());
        std::iota(order.begin(), order.end(), 0U);
        std::vector<Str> folded;
        if (text_) {
            folded.reserve(order.size());
            for (const std::uint32_t id : order)
                folded.push_back(text::foldCase(dimensionText(records[samples_[id]], dimension_)));
        }
        std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
            if (!text_) return times_[a] < times_[b];
            const Str& ta = keys_[a];
            const Str& tb = keys_[b];
            if (ta.empty() != tb.empty()) return tb.empty();
            if (folded[a] != folded[b]) return folded[a] < folded[b];
            return ta < tb;
        });
        std::vector<std::uint32_t> rank(order.size());
        for (std::uint32_t k = 0; k < order.size(); ++k)
            rank[order[k]] = k;
        return rank;
    }

  private:
    void add(const TimeRecord& r, std::size_t index) {
        samples_.push_back(index);
        keys_.push_back(dimensionKey(r, dimension_));
        times_.push_back(text_ ? 0 : timeGroupKey(r.day, dimension_));
        allowed_flags_.push_back(
            !filtered_ || allowed_.count(text_ ? text::foldCase(keys_.back()) : keys_.back()) != 0);
    }

    Dimension dimension_;
    bool text_;
    bool filtered_ = false;
    std::unordered_set<Str> allowed_;
    std::unordered_map<StrView, std::uint32_t> byText_;
    std::unordered_map<std::int64_t, std::uint32_t> byTime_;
    std::vector<std::size_t> samples_;
    std::vector<Str> keys_;
    std::vector<std::int64_t> times_;
    std::vector<char> allowed_flags_;
    bool hasLast_ = false;
    DayNumber lastDay_ = 0;
    std::uint32_t lastId_ = 0;
};

// The groups of one axis as a tree: node 0 the whole axis (the grand
// total), below it a level per dimension. Nodes are made before their
// children, so a walk from the last node back reaches children first.
struct Axis {
    struct Node {
        std::uint32_t parent = 0;
        std::uint32_t value = 0;  // the value id of its level's dimension
        std::size_t depth = 0;
        std::vector<std::uint32_t> children;
    };
    std::vector<Dimension> dimensions;
    std::vector<Values*> values;  // of each level
    std::vector<Node> nodes{Node{}};
    std::vector<std::uint32_t> leafOf;  // each passing record's deepest node

    // Every record's node, level by level, through a table of (parent,
    // value) - dense where the level's parents x values are few.
    void build(const std::vector<std::vector<std::uint32_t>>& ids, std::size_t n) {
        leafOf.assign(n, 0);
        std::size_t parentsBegin = 0, parentsEnd = 1;
        for (std::size_t l = 0; l < dimensions.size(); ++l) {
            const std::vector<std::uint32_t>& level = ids[l];
            const std::size_t width = std::max<std::size_t>(values[l]->count(), 1);
            const std::size_t parents = parentsEnd - parentsBegin;
            const auto child = [&](std::size_t i, std::uint32_t& slot) {
                if (slot == UINT32_MAX) {
                    slot = static_cast<std::uint32_t>(nodes.size());
                    nodes[leafOf[i]].children.push_back(slot);
                    nodes.push_back(Node{leafOf[i], level[i], l + 1, {}});
                }
                leafOf[i] = slot;
            };
            if (parents * width <= (std::size_t{1} << 22)) {
                std::vector<std::uint32_t> table(parents * width, UINT32_MAX);
                for (std::size_t i = 0; i < n; ++i)
                    child(i, table[(leafOf[i] - parentsBegin) * width + level[i]]);
            } else {
                std::unordered_map<std::uint64_t, std::uint32_t> table;
                for (std::size_t i = 0; i < n; ++i)
                    child(i,
                          table.try_emplace((std::uint64_t{leafOf[i]} << 32) | level[i], UINT32_MAX)
                              .first->second);
            }
            parentsBegin = parentsEnd;
            parentsEnd = nodes.size();
        }
    }

    // The nodes in reading order: each group's members, then its subtotal;
    // the grand total last. Siblings in the order of their values' ranks.
    std::vector<std::uint32_t> readingOrder(const std::vector<std::vector<std::uint32_t>>& ranks) {
        std::vector<std::uint32_t> out;
        out.reserve(nodes.size());
        walk(0, ranks, out);
        return out;
    }

    PivotHeader header(std::uint32_t node, const std::vector<TimeRecord>& records,
                       const Locale& locale) const {
        PivotHeader h;
        h.level = nodes[node].depth;
        h.keys.resize(h.level);
        h.labels.resize(h.level);
        for (std::uint32_t at = node; at != 0; at = nodes[at].parent) {
            const std::size_t l = nodes[at].depth - 1;
            const Values& v = *values[l];
            h.keys[l] = v.key(nodes[at].value);
            h.labels[l] =
                reporting::groupLabel(records[v.sample(nodes[at].value)], dimensions[l], locale);
        }
        return h;
    }

  private:
    void walk(std::uint32_t node, const std::vector<std::vector<std::uint32_t>>& ranks,
              std::vector<std::uint32_t>& out) {
        Node& n = nodes[node];
        if (n.depth < dimensions.size()) {
            const std::vector<std::uint32_t>& rank = ranks[n.depth];
            std::sort(n.children.begin(), n.children.end(), [&](std::uint32_t a, std::uint32_t b) {
                return rank[nodes[a].value] < rank[nodes[b].value];
            });
            for (const std::uint32_t c : n.children)
                walk(c, ranks, out);
        }
        out.push_back(node);
    }
};

void add(PivotFigures& to, const PivotFigures& from) {
    to.seconds += from.seconds;
    to.roundedSeconds += from.roundedSeconds;
    to.amount.scaled += from.amount.scaled;
    to.records += from.records;
}

}  // namespace

Str dimensionKey(const TimeRecord& r, Dimension d) {
    switch (d) {
        case Dimension::Day: {
            const auto c = civilDate(r.day);
            return digits(c.year, 4) + u"-" + digits(c.month, 2) + u"-" + digits(c.day, 2);
        }
        case Dimension::Week: {
            const auto w = isoWeek(r.day);
            return digits(w.year, 4) + u"-W" + digits(w.week, 2);
        }
        case Dimension::Month: {
            const auto c = civilDate(r.day);
            return digits(c.year, 4) + u"-" + digits(c.month, 2);
        }
        case Dimension::Year:
            return digits(civilDate(r.day).year, 4);
        default:
            return dimensionText(r, d);
    }
}

PivotTable pivot(const std::vector<TimeRecord>& records, const PivotSpec& request,
                 const Locale& locale) {
    std::vector<Dimension> used = request.rows;
    used.insert(used.end(), request.columns.begin(), request.columns.end());
    for (std::size_t i = 0; i < used.size(); ++i)
        if (std::find(used.begin() + static_cast<std::ptrdiff_t>(i) + 1, used.end(), used[i]) !=
            used.end())
            throw PivotError(std::string("the dimension ") +
                             toUtf8(reporting::dimensionName(used[i])) + " is chosen twice");

    // One Values per shown dimension and one per filter (filters of one
    // dimension given twice must both let a record through).
    std::vector<std::unique_ptr<Values>> filters;
    std::unordered_map<int, std::unique_ptr<Values>> shown;
    for (const Dimension d : used)
        shown[static_cast<int>(d)] = std::make_unique<Values>(d, nullptr);
    for (const PivotFilter& f : request.filters)
        filters.push_back(std::make_unique<Values>(f.dimension, &f));

    Axis rows, columns;
    rows.dimensions = request.rows;
    columns.dimensions = request.columns;
    for (const Dimension d : request.rows)
        rows.values.push_back(shown[static_cast<int>(d)].get());
    for (const Dimension d : request.columns)
        columns.values.push_back(shown[static_cast<int>(d)].get());

    // One pass: the filters, then each shown dimension's value id.
    std::vector<std::vector<std::uint32_t>> rowIds(request.rows.size()),
        colIds(request.columns.size());
    std::vector<std::size_t> passing;
    passing.reserve(records.size());
    for (std::size_t i = 0; i < records.size(); ++i) {
        const TimeRecord& r = records[i];
        bool pass = true;
        for (auto& f : filters)
            if (!f->allowed(f->id(r, i))) {
                pass = false;
                break;
            }
        if (!pass) continue;
        passing.push_back(i);
        for (std::size_t l = 0; l < request.rows.size(); ++l)
            rowIds[l].push_back(rows.values[l]->id(r, i));
        for (std::size_t l = 0; l < request.columns.size(); ++l)
            colIds[l].push_back(columns.values[l]->id(r, i));
    }
    rows.build(rowIds, passing.size());
    columns.build(colIds, passing.size());

    const std::size_t nr = rows.nodes.size(), nc = columns.nodes.size();
    if (nr * nc > kMaxPivotCells)
        throw PivotError("the pivot would have " + std::to_string(nr) + " rows and " +
                         std::to_string(nc) + " columns: choose fewer dimensions or a filter");

    // The records into their cells, then each node into its parent: rows
    // first (the leaves' columns), then columns (every row).
    std::vector<PivotFigures> grid(nr * nc);
    for (std::size_t k = 0; k < passing.size(); ++k) {
        const TimeRecord& r = records[passing[k]];
        PivotFigures& cell = grid[rows.leafOf[k] * nc + columns.leafOf[k]];
        cell.seconds += r.seconds;
        cell.roundedSeconds += r.roundedSeconds;
        cell.amount.scaled += r.amount.scaled;
        ++cell.records;
    }
    for (std::size_t n = nr - 1; n > 0; --n) {
        const std::size_t p = rows.nodes[n].parent;
        for (std::size_t c = 0; c < nc; ++c)
            add(grid[p * nc + c], grid[n * nc + c]);
    }
    for (std::size_t n = nc - 1; n > 0; --n) {
        const std::size_t p = columns.nodes[n].parent;
        for (std::size_t r = 0; r < nr; ++r)
            add(grid[r * nc + p], grid[r * nc + n]);
    }

    const auto ranks = [&](const Axis& axis) {
        std::vector<std::vector<std::uint32_t>> out;
        for (const Values* v : axis.values)
            out.push_back(v->ranks(records));
        return out;
    };
    const std::vector<std::uint32_t> rowOrder = rows.readingOrder(ranks(rows));
    const std::vector<std::uint32_t> colOrder = columns.readingOrder(ranks(columns));

    PivotTable t;
    t.request = request;
    t.records = passing.size();
    t.rows.reserve(nr);
    for (const std::uint32_t n : rowOrder)
        t.rows.push_back(rows.header(n, records, locale));
    t.columns.reserve(nc);
    for (const std::uint32_t n : colOrder)
        t.columns.push_back(columns.header(n, records, locale));
    t.cells.reserve(nr * nc);
    for (const std::uint32_t r : rowOrder)
        for (const std::uint32_t c : colOrder)
            t.cells.push_back(grid[r * nc + c]);
    return t;
}

const char16_t* measureName(Measure m) {
    switch (m) {
        case Measure::Hours:
            return u"hours";
        case Measure::RoundedHours:
            return u"rounded";
        case Measure::Amount:
            return u"amount";
    }
    return u"";
}

}  // namespace hb::statistics
