#include "reporting/Aggregation.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <unordered_map>

#include "common/Text.h"
#include "reporting/Periods.h"

namespace hb::reporting {

bool isTextDimension(Dimension d) {
    return d == Dimension::List1 || d == Dimension::List2 || d == Dimension::List3 ||
           d == Dimension::User;
}

const Str& dimensionText(const TimeRecord& r, Dimension d) {
    switch (d) {
        case Dimension::List1:
            return r.values[0];
        case Dimension::List2:
            return r.values[1];
        case Dimension::List3:
            return r.values[2];
        default:
            return r.user;
    }
}

std::int64_t timeGroupKey(DayNumber day, Dimension d) {
    switch (d) {
        case Dimension::Week:
            return weekStart(day);
        case Dimension::Month: {
            const CivilDate c = civilDate(day);
            return std::int64_t{c.year} * 12 + c.month - 1;
        }
        case Dimension::Year:
            return civilDate(day).year;
        default:
            return day;
    }
}

namespace {

// Alphabetical without regard to letter case (then exactly, so that the
// order is total), the empty text last.
bool textBefore(StrView a, StrView b) {
    if (a.empty() != b.empty()) return b.empty();
    const Str fa = text::foldCase(a), fb = text::foldCase(b);
    if (fa != fb) return fa < fb;
    return a < b;
}

// Texts numbered in order of first appearance: open addressing over the
// texts' hashes (a million records look up three texts each).
class Interner {
  public:
    std::uint32_t id(StrView text) {
        if ((texts_.size() + 1) * 2 > slots_.size()) grow();
        const std::size_t h = std::hash<StrView>{}(text);
        const std::size_t mask = slots_.size() - 1;
        for (std::size_t i = h & mask;; i = (i + 1) & mask) {
            const std::uint32_t s = slots_[i];
            if (s == 0) {
                texts_.push_back(text);
                hashes_.push_back(h);
                slots_[i] = static_cast<std::uint32_t>(texts_.size());
                return static_cast<std::uint32_t>(texts_.size() - 1);
            }
            if (hashes_[s - 1] == h && texts_[s - 1] == text) return s - 1;
        }
    }
    const std::vector<StrView>& texts() const { return texts_; }

  private:
    void grow() {
        std::vector<std::uint32_t> slots(std::max<std::size_t>(64, slots_.size() * 2), 0);
        const std::size_t mask = slots.size() - 1;
        for (std::uint32_t k = 0; k < texts_.size(); ++k) {
            std::size_t i = hashes_[k] & mask;
            while (slots[i] != 0)
                i = (i + 1) & mask;
            slots[i] = k + 1;
        }
        slots_ = std::move(slots);
    }
    std::vector<std::uint32_t> slots_;
    std::vector<StrView> texts_;
    std::vector<std::size_t> hashes_;
};

// One level's keys: for each record the rank of its group among the
// level's groups (0 .. count-1), in the order the groups are shown. Texts
// rank alphabetically, times by their first day. Filled record by record
// (every level in one pass over the records), then ranked.
class LevelKeys {
  public:
    LevelKeys(Dimension d, std::size_t records) : dimension_(d), isText_(isTextDimension(d)) {
        keys_.reserve(records);
    }
    void add(const TimeRecord& r) {
        if (isText_) {
            keys_.push_back(interner_.id(dimensionText(r, dimension_)));
            return;
        }
        // Records mostly come in order of day: the id of the last day is kept.
        if (keys_.empty() || r.day != lastDay_) {
            lastDay_ = r.day;
            const std::int64_t raw = timeKey(r.day);
            const auto [it, added] =
                timeIds_.emplace(raw, static_cast<std::uint32_t>(times_.size()));
            if (added) times_.push_back(raw);
            lastId_ = it->second;
        }
        keys_.push_back(lastId_);
    }
    // The ids, numbered in order of appearance, into ranks.
    void rank() {
        const auto& texts = interner_.texts();
        std::vector<std::uint32_t> order(isText_ ? texts.size() : times_.size());
        std::iota(order.begin(), order.end(), 0U);
        std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
            return isText_ ? textBefore(texts[a], texts[b]) : times_[a] < times_[b];
        });
        std::vector<std::uint32_t> rankOf(order.size());
        for (std::uint32_t r = 0; r < order.size(); ++r)
            rankOf[order[r]] = r;
        for (auto& k : keys_)
            k = rankOf[k];
        count_ = order.size();
    }
    std::uint32_t operator[](std::size_t i) const { return keys_[i]; }
    std::size_t count() const { return count_; }

  private:
    std::int64_t timeKey(DayNumber day) const { return timeGroupKey(day, dimension_); }

    Dimension dimension_;
    bool isText_;
    std::vector<std::uint32_t> keys_;
    std::size_t count_ = 0;
    Interner interner_;
    std::unordered_map<std::int64_t, std::uint32_t> timeIds_;
    std::vector<std::int64_t> times_;
    DayNumber lastDay_ = 0;
    std::uint32_t lastId_ = 0;
};

struct FlatNode {
    std::uint32_t key = 0;
    std::uint32_t parent = 0;
    std::size_t level = 0;   // the level of the grouping this node is a group of (root: none)
    std::size_t sample = 0;  // a record of the group, for its label
    std::int64_t seconds = 0;
    std::int64_t roundedSeconds = 0;
    std::int64_t amount = 0;
    std::size_t records = 0;
    std::vector<std::uint32_t> children;
};

}  // namespace

Str groupLabel(const TimeRecord& record, Dimension dimension, const Locale& locale,
               StrView notBilled) {
    switch (dimension) {
        case Dimension::List1:
        case Dimension::List2:
        case Dimension::List3: {
            const Str& v = dimensionText(record, dimension);
            return v.empty() ? Str(notBilled) : v;
        }
        case Dimension::Day:
            return dayLabel(record.day, locale);
        case Dimension::Week:
            return weekLabel(record.day);
        case Dimension::Month:
            return monthLabel(record.day, locale);
        case Dimension::Year:
            return yearLabel(record.day);
        case Dimension::User:
            return record.user;
    }
    return Str();
}

void sortRecords(std::vector<TimeRecord>& records) {
    std::sort(records.begin(), records.end(), [](const TimeRecord& a, const TimeRecord& b) {
        if (a.day != b.day) return a.day < b.day;
        if (a.start != b.start) return a.start < b.start;
        if (a.user != b.user) return a.user < b.user;
        if (a.entryId != b.entryId) return a.entryId < b.entryId;
        return a.occurrenceStart < b.occurrenceStart;
    });
}

SummaryNode aggregate(const std::vector<TimeRecord>& records,
                      const std::vector<Dimension>& grouping, const Locale& locale,
                      StrView notBilled) {
    // The flat tree, level by level: each record's node at the level
    // before (the root, node 0, at first) and its key at this level give
    // its node at this level, through a table of (parent, key) - dense
    // where the level's parents x keys are few, a hash map otherwise.
    std::vector<LevelKeys> levels;
    levels.reserve(grouping.size());
    for (const Dimension d : grouping)
        levels.emplace_back(d, records.size());
    // One pass over the records (large, so read once): every level's key
    // and the figures to add up.
    struct Figures {
        std::int64_t seconds, roundedSeconds, amount;
    };
    std::vector<Figures> figures;
    figures.reserve(records.size());
    for (const TimeRecord& r : records) {
        for (LevelKeys& level : levels)
            level.add(r);
        figures.push_back({r.seconds, r.roundedSeconds, r.amount.scaled});
    }
    for (LevelKeys& level : levels)
        level.rank();

    std::vector<FlatNode> nodes(1);
    std::vector<std::uint32_t> at(records.size(), 0);
    std::size_t parentsBegin = 0, parentsEnd = 1;
    for (std::size_t l = 0; l < grouping.size(); ++l) {
        const LevelKeys& keys = levels[l];
        const std::size_t width = std::max<std::size_t>(keys.count(), 1);
        const std::size_t parents = parentsEnd - parentsBegin;
        const auto child = [&](std::size_t i, std::uint32_t& slot) {
            if (slot == UINT32_MAX) {
                slot = static_cast<std::uint32_t>(nodes.size());
                FlatNode n;
                n.key = keys[i];
                n.parent = at[i];
                n.level = l;
                n.sample = i;
                nodes[at[i]].children.push_back(slot);
                nodes.push_back(std::move(n));
            }
            at[i] = slot;
        };
        if (parents * width <= (std::size_t{1} << 22)) {
            std::vector<std::uint32_t> table(parents * width, UINT32_MAX);
            for (std::size_t i = 0; i < records.size(); ++i)
                child(i, table[(at[i] - parentsBegin) * width + keys[i]]);
        } else {
            std::unordered_map<std::uint64_t, std::uint32_t> table;
            for (std::size_t i = 0; i < records.size(); ++i)
                child(i, table.try_emplace((std::uint64_t{at[i]} << 32) | keys[i], UINT32_MAX)
                             .first->second);
        }
        parentsBegin = parentsEnd;
        parentsEnd = nodes.size();
    }
    // Each record's totals into its group of the last level, then each
    // node's into its parent (parents were made before their children).
    for (std::size_t i = 0; i < records.size(); ++i) {
        FlatNode& n = nodes[at[i]];
        n.seconds += figures[i].seconds;
        n.roundedSeconds += figures[i].roundedSeconds;
        n.amount += figures[i].amount;
        ++n.records;
    }
    for (std::size_t k = nodes.size() - 1; k > 0; --k) {
        FlatNode& n = nodes[k];
        FlatNode& p = nodes[n.parent];
        p.seconds += n.seconds;
        p.roundedSeconds += n.roundedSeconds;
        p.amount += n.amount;
        p.records += n.records;
    }

    // The summary tree, children in key order.
    struct Builder {
        std::vector<FlatNode>& nodes;
        const std::vector<TimeRecord>& records;
        const std::vector<Dimension>& grouping;
        const Locale& locale;
        StrView notBilled;

        SummaryNode build(std::uint32_t at, bool root) {
            FlatNode& f = nodes[at];
            SummaryNode n;
            if (!root) {
                n.dimension = grouping[f.level];
                n.label = groupLabel(records[f.sample], n.dimension, locale, notBilled);
            }
            n.seconds = f.seconds;
            n.roundedSeconds = f.roundedSeconds;
            n.amount = Currency{f.amount};
            n.records = f.records;
            std::sort(f.children.begin(), f.children.end(), [&](std::uint32_t a, std::uint32_t b) {
                return nodes[a].key < nodes[b].key;
            });
            n.children.reserve(f.children.size());
            for (const std::uint32_t c : f.children)
                n.children.push_back(build(c, false));
            return n;
        }
    };
    Builder b{nodes, records, grouping, locale, notBilled};
    return b.build(0, true);
}

double hoursOf(std::int64_t seconds) {
    return static_cast<double>(seconds) / 3600.0;
}

Str formatDecimalHours(std::int64_t seconds, const Locale& locale) {
    const bool negative = seconds < 0;
    const std::int64_t s = negative ? -seconds : seconds;
    const std::int64_t hundredths = (s * 100 + 1800) / 3600;
    const std::int64_t cents = hundredths % 100;
    Str t = negative && hundredths != 0 ? u"-" : u"";
    t += toStr(hundredths / 100) + locale.decimalSeparator + (cents < 10 ? u"0" : u"") +
         toStr(cents);
    return t;
}

Str formatHoursMinutes(std::int64_t seconds) {
    const bool negative = seconds < 0;
    const std::int64_t s = negative ? -seconds : seconds;
    const std::int64_t minutes = (s + 30) / 60;
    const std::int64_t m = minutes % 60;
    Str t = negative && minutes != 0 ? u"-" : u"";
    t += toStr(minutes / 60) + u":" + (m < 10 ? u"0" : u"") + toStr(m);
    return t;
}

Str formatHours(std::int64_t seconds, HoursFormat format, const Locale& locale) {
    return format == HoursFormat::HoursMinutes ? formatHoursMinutes(seconds)
                                               : formatDecimalHours(seconds, locale);
}

}  // namespace hb::reporting
