#include "reporting/Aggregation.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <unordered_map>

#include "common/Text.h"
#include "reporting/Periods.h"

namespace hb::reporting {

namespace {

bool isListDimension(Dimension d) {
    return d == Dimension::List1 || d == Dimension::List2 || d == Dimension::List3;
}

const Str& textOf(const TimeRecord& r, Dimension d) {
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

// Alphabetical without regard to letter case (then exactly, so that the
// order is total), the empty text last.
bool textBefore(StrView a, StrView b) {
    if (a.empty() != b.empty()) return b.empty();
    const Str fa = text::foldCase(a), fb = text::foldCase(b);
    if (fa != fb) return fa < fb;
    return a < b;
}

// One level's keys: a number per record that orders the groups. Texts are
// numbered by their alphabetical rank, times by their first day.
class LevelKeys {
  public:
    LevelKeys(Dimension d, const std::vector<TimeRecord>& records) : dimension_(d) {
        keys_.resize(records.size());
        if (isListDimension(d) || d == Dimension::User) {
            std::unordered_map<StrView, std::uint32_t> ids;
            std::vector<StrView> texts;
            for (std::size_t i = 0; i < records.size(); ++i) {
                const StrView t = textOf(records[i], d);
                auto [it, added] = ids.emplace(t, static_cast<std::uint32_t>(texts.size()));
                if (added) texts.push_back(t);
                keys_[i] = it->second;
            }
            std::vector<std::uint32_t> order(texts.size());
            std::iota(order.begin(), order.end(), 0U);
            std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
                return textBefore(texts[a], texts[b]);
            });
            std::vector<std::uint32_t> rank(texts.size());
            for (std::uint32_t r = 0; r < order.size(); ++r)
                rank[order[r]] = r;
            for (auto& k : keys_)
                k = rank[k];
            return;
        }
        // Records mostly come in order of day: the key of the last day is kept.
        DayNumber lastDay = 0;
        std::uint32_t lastKey = 0;
        bool have = false;
        for (std::size_t i = 0; i < records.size(); ++i) {
            const DayNumber day = records[i].day;
            if (!have || day != lastDay) {
                lastDay = day;
                lastKey = timeKey(day);
                have = true;
            }
            keys_[i] = lastKey;
        }
    }
    std::uint32_t operator[](std::size_t i) const { return keys_[i]; }

  private:
    std::uint32_t timeKey(DayNumber day) const {
        // Offset so that days before 1899 still order correctly as unsigned.
        constexpr std::int64_t kBias = std::int64_t{1} << 31;
        std::int64_t k = day;
        switch (dimension_) {
            case Dimension::Week:
                k = weekStart(day);
                break;
            case Dimension::Month: {
                const CivilDate c = civilDate(day);
                k = std::int64_t{c.year} * 12 + c.month - 1;
                break;
            }
            case Dimension::Year:
                k = civilDate(day).year;
                break;
            default:
                break;
        }
        return static_cast<std::uint32_t>(k + kBias);
    }

    Dimension dimension_;
    std::vector<std::uint32_t> keys_;
};

struct FlatNode {
    std::uint32_t key = 0;
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
            const Str& v = textOf(record, dimension);
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
    std::vector<LevelKeys> levels;
    levels.reserve(grouping.size());
    for (const Dimension d : grouping)
        levels.emplace_back(d, records);

    // The flat tree: node 0 is the root; a node's child for a key is found
    // through one map per level keyed by (parent, key). Consecutive records
    // of one group reuse the path of the record before.
    std::vector<FlatNode> nodes(1);
    std::vector<std::unordered_map<std::uint64_t, std::uint32_t>> index(grouping.size());
    std::vector<std::uint32_t> path(grouping.size(), 0);
    bool havePath = false;
    for (std::size_t i = 0; i < records.size(); ++i) {
        const TimeRecord& r = records[i];
        std::uint32_t parent = 0;
        bool same = havePath;
        for (std::size_t l = 0; l < levels.size(); ++l) {
            const std::uint32_t key = levels[l][i];
            if (same && nodes[path[l]].key == key) {
                parent = path[l];
                continue;
            }
            same = false;
            const std::uint64_t k = (std::uint64_t{parent} << 32) | key;
            auto [it, added] = index[l].emplace(k, static_cast<std::uint32_t>(nodes.size()));
            if (added) {
                FlatNode n;
                n.key = key;
                n.level = l;
                n.sample = i;
                nodes[parent].children.push_back(it->second);
                nodes.push_back(std::move(n));
            }
            parent = path[l] = it->second;
        }
        havePath = true;
        // The record's totals go to the root and to every node of its path.
        for (std::size_t l = 0; l <= levels.size(); ++l) {
            FlatNode& n = nodes[l == 0 ? 0 : path[l - 1]];
            n.seconds += r.seconds;
            n.roundedSeconds += r.roundedSeconds;
            n.amount += r.amount.scaled;
            ++n.records;
        }
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
