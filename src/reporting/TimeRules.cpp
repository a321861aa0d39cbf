#include "reporting/TimeRules.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "common/Text.h"
#include "metadata/cMarking.h"
#include "settings/cPersonalSettings.h"

namespace hb::reporting {

std::int64_t secondsOf(Date date) {
    const double whole = std::trunc(date.days);
    const double fraction = std::fabs(date.days - whole);
    return static_cast<std::int64_t>(whole) * kDaySeconds +
           static_cast<std::int64_t>(std::llround(fraction * kDaySeconds));
}

Date dateOfSeconds(std::int64_t seconds) {
    const DayNumber day = dayOfSeconds(seconds);
    const double fraction =
        static_cast<double>(seconds - static_cast<std::int64_t>(day) * kDaySeconds) / kDaySeconds;
    return Date{day < 0 ? day - fraction : day + fraction};
}

DayNumber dayOfSeconds(std::int64_t seconds) {
    std::int64_t d = seconds / kDaySeconds;
    if (seconds % kDaySeconds < 0) --d;
    return static_cast<DayNumber>(d);
}

BillingReader::BillingReader(Session& s) : s_(s) {}

const BillingValues& BillingReader::values(const Str& categories) {
    if (const auto found = cache_.find(categories); found != cache_.end()) return found->second;
    cMarking marking(s_);
    marking.BillingToMarkings(marking.BillingPart(categories, kReportLists));
    BillingValues v;
    for (std::size_t i = 0; i < kReportLists && i < marking.colMarkings.size(); ++i) {
        v[i] = marking.colMarkings[i]->MetaName;
    }
    return cache_.emplace(categories, std::move(v)).first->second;
}

RateLookup::RateLookup(const RateTable& rates, Currency personalRate) : personal_(personalRate) {
    for (const auto& [key, rate] : rates) {
        if (key.first < kReportLists) byList_[key.first].emplace(text::foldCase(key.second), rate);
    }
}

Currency RateLookup::rateFor(const BillingValues& values) const {
    for (std::size_t i = 0; i < kReportLists; ++i) {
        if (values[i].empty() || byList_[i].empty()) continue;
        if (const auto found = byList_[i].find(text::foldCase(values[i]));
            found != byList_[i].end()) {
            return found->second;
        }
    }
    return personal_;
}

std::int64_t roundSeconds(std::int64_t seconds, const Rounding& rounding) {
    if (rounding.minutes <= 0) return seconds;
    const std::int64_t unit = std::int64_t{rounding.minutes} * 60;
    std::int64_t units = seconds / unit;
    const std::int64_t rest = seconds % unit;  // durations are never negative
    switch (rounding.direction) {
        case RoundingDirection::Up:
            if (rest > 0) ++units;
            break;
        case RoundingDirection::Nearest:
            if (rest * 2 >= unit) ++units;
            break;
        case RoundingDirection::Down:
            break;
    }
    return units * unit;
}

QuotientRemainder mulDiv(std::int64_t a, std::int64_t b, std::int64_t d) {
    if (a < 0 || b < 0 || d <= 0) raise(err::InvalidProcedureCall);
    std::int64_t product = 0;
    if (!__builtin_mul_overflow(a, b, &product)) return {product / d, product % d};
    // The 128-bit product from 32-bit halves (the 32-bit Windows build has
    // no 128-bit integers), then long division one bit at a time.
    const auto ua = static_cast<std::uint64_t>(a), ub = static_cast<std::uint64_t>(b);
    const std::uint64_t aLo = ua & 0xFFFFFFFFu, aHi = ua >> 32, bLo = ub & 0xFFFFFFFFu,
                        bHi = ub >> 32;
    const std::uint64_t ll = aLo * bLo, lh = aLo * bHi, hl = aHi * bLo, hh = aHi * bHi;
    const std::uint64_t mid = (ll >> 32) + (lh & 0xFFFFFFFFu) + (hl & 0xFFFFFFFFu);
    const std::uint64_t lo = (ll & 0xFFFFFFFFu) | (mid << 32);
    const std::uint64_t hi = hh + (lh >> 32) + (hl >> 32) + (mid >> 32);
    const auto ud = static_cast<std::uint64_t>(d);
    if (hi >= ud) raise(err::Overflow);
    std::uint64_t q = 0, r = hi;  // r < d < 2^63: shifting it left never loses a bit
    for (int bit = 63; bit >= 0; --bit) {
        r = (r << 1) | ((lo >> bit) & 1u);
        q <<= 1;
        if (r >= ud) {
            r -= ud;
            q |= 1u;
        }
    }
    if (q > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        raise(err::Overflow);
    }
    return {static_cast<std::int64_t>(q), static_cast<std::int64_t>(r)};
}

Currency amountOf(std::int64_t seconds, Currency rate) {
    // rate.scaled is ten-thousandths per hour: the amount in ten-thousandths
    // is rate.scaled x seconds / 3600.
    const bool negative = rate.scaled < 0;
    if (rate.scaled == std::numeric_limits<std::int64_t>::min()) raise(err::Overflow);
    auto [q, r] = mulDiv(negative ? -rate.scaled : rate.scaled, seconds, 3600);
    if (r * 2 > 3600 || (r * 2 == 3600 && q % 2 != 0)) {
        if (q == std::numeric_limits<std::int64_t>::max()) raise(err::Overflow);
        ++q;
    }
    return Currency{negative ? -q : q};
}

namespace {

// A record being made, with its clock stretch in seconds.
struct Piece {
    TimeRecord record;
    std::int64_t from = 0;
    std::int64_t to = 0;
    bool converted = false;  // a whole day that counts the 24-hour conversion's time
};

bool filteredOut(const CalendarEntry& e, const RecordRules& rules) {
    return (rules.filterEvents && e.allDay) || (rules.filterPrivate && e.isPrivate) ||
           (rules.filterRecurring && e.recurring);
}

// Lunch off one day's pieces [begin, end): min(lunch, the day's time)
// distributed over the pieces that are no converted whole day, in
// proportion to their time; the seconds the whole-second shares leave over
// go one each to the largest remainders, the earlier piece first on a tie.
void removeLunch(std::vector<Piece>& pieces, std::size_t begin, std::size_t end,
                 std::int64_t lunch) {
    std::int64_t total = 0;
    for (std::size_t i = begin; i < end; ++i) {
        if (!pieces[i].converted) total += pieces[i].record.seconds;
    }
    if (total <= 0 || lunch <= 0) return;
    const std::int64_t off = std::min(lunch, total);
    std::vector<std::pair<std::int64_t, std::size_t>> remainders;  // (remainder, index)
    std::int64_t given = 0;
    for (std::size_t i = begin; i < end; ++i) {
        if (pieces[i].converted) continue;
        const auto [whole, remainder] = mulDiv(off, pieces[i].record.seconds, total);
        pieces[i].record.seconds -= whole;
        given += whole;
        remainders.emplace_back(remainder, i);
    }
    std::stable_sort(remainders.begin(), remainders.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    // The leftover is less than the number of pieces, and a piece with a
    // remainder still has at least one second (its share was below its time).
    for (std::int64_t k = 0; given < off; ++k, ++given) {
        pieces[remainders[static_cast<std::size_t>(k)].second].record.seconds -= 1;
    }
}

}  // namespace

std::vector<TimeRecord> makeRecords(const std::vector<CalendarEntry>& entries,
                                    const RecordRules& rules, const ReportOptions& options,
                                    BillingReader& billing, const RateLookup& rates,
                                    const Str& user) {
    const Period& period = options.period;
    std::vector<Piece> pieces;
    for (const CalendarEntry& e : entries) {
        if (filteredOut(e, rules)) continue;
        const std::int64_t from = secondsOf(e.start);
        const std::int64_t to = secondsOf(e.end);
        if (to <= from) continue;  // no time, no record
        const DayNumber firstDay = std::max(dayOfSeconds(from), period.first);
        const DayNumber lastDay = std::min(dayOfSeconds(to - 1), period.last);
        if (firstDay > lastDay) continue;
        const BillingValues& values = billing.values(e.categories);
        const Currency rate = rates.rateFor(values);
        const bool billed =
            std::any_of(values.begin(), values.end(), [](const Str& v) { return !v.empty(); });
        for (DayNumber d = firstDay; d <= lastDay; ++d) {
            const std::int64_t dayStart = std::int64_t{d} * kDaySeconds;
            Piece p;
            p.from = std::max(from, dayStart);
            p.to = std::min(to, dayStart + kDaySeconds);
            TimeRecord& r = p.record;
            r.user = user;
            r.entryId = e.entryId;
            r.occurrenceStart = e.occurrenceStart;
            r.day = d;
            r.start = dateOfSeconds(p.from);
            r.end = dateOfSeconds(p.to);
            r.subject = e.subject;
            r.values = values;
            r.billed = billed;
            r.allDay = e.allDay;
            r.isPrivate = e.isPrivate;
            r.recurring = e.recurring;
            r.rate = rate;
            pieces.push_back(std::move(p));
        }
    }
    std::sort(pieces.begin(), pieces.end(), [](const Piece& a, const Piece& b) {
        if (a.record.day != b.record.day) return a.record.day < b.record.day;
        if (a.from != b.from) return a.from < b.from;
        if (a.record.entryId != b.record.entryId) return a.record.entryId < b.record.entryId;
        return a.record.occurrenceStart < b.record.occurrenceStart;
    });

    for (std::size_t begin = 0; begin < pieces.size();) {
        std::size_t end = begin;
        while (end < pieces.size() && pieces[end].record.day == pieces[begin].record.day)
            ++end;
        // Clock time; with overlap counted once, each piece keeps what no
        // earlier piece of the order covers.
        std::int64_t coveredUntil = std::numeric_limits<std::int64_t>::min();
        for (std::size_t i = begin; i < end; ++i) {
            Piece& p = pieces[i];
            std::int64_t clock = p.to - p.from;
            if (options.overlapOnce) {
                clock = std::max<std::int64_t>(0, p.to - std::max(p.from, coveredUntil));
                coveredUntil = std::max(coveredUntil, p.to);
            }
            p.converted = rules.convert24 && p.to - p.from == kDaySeconds;
            p.record.seconds =
                p.converted
                    ? mulDiv(clock, std::max<std::int64_t>(0, rules.convert24Seconds), kDaySeconds)
                          .quotient
                    : clock;
        }
        if (rules.removeLunch) removeLunch(pieces, begin, end, rules.removeLunchSeconds);
        begin = end;
    }

    std::vector<TimeRecord> records;
    records.reserve(pieces.size());
    for (Piece& p : pieces) {
        TimeRecord& r = p.record;
        r.roundedSeconds = roundSeconds(r.seconds, options.rounding);
        r.amount = amountOf(r.roundedSeconds, r.rate);
        records.push_back(std::move(r));
    }
    return records;
}

namespace {

// An hours setting (a number, or a text such as "8" or "0,75" written with
// the user's decimal separator) as whole seconds, read as the settings code
// reads it: CCur with the user's regional settings, so "0,75" is 45 minutes
// in a German locale. A value that is no number, or none at all, takes the
// default; the result lies between 0 and 24 hours.
std::int64_t hoursSetting(const Variant& value, const Locale& loc, std::int64_t fallback) {
    if (value.isEmpty()) return fallback;
    std::int64_t seconds = 0;
    try {
        // Ten-thousandths of an hour (within 0..24 h) x 0.36 s, to the
        // nearest second.
        const std::int64_t scaled =
            std::clamp<std::int64_t>(value.toCurrency(loc).scaled, 0, 240000);
        seconds = (scaled * 36 + 50) / 100;
    } catch (const AutomationError&) {
        return fallback;
    }
    return std::clamp<std::int64_t>(seconds, 0, kDaySeconds);
}

}  // namespace

RecordRules rulesFromSettings(const Session& s) {
    if (!s.oPersonalSettings) raise(err::ObjectVariableNotSet);
    const cPersonalSettings& p = *s.oPersonalSettings;
    const Locale loc = s.platform.userLocale();
    RecordRules r;
    r.filterEvents = p.blnFilterEvents;
    r.filterPrivate = p.blnFilterPrivate;
    r.filterRecurring = p.blnFilterRecurring;
    r.convert24 = p.blnConvert24;
    r.convert24Seconds = hoursSetting(p.intConvert24Hours, loc, RecordRules{}.convert24Seconds);
    r.removeLunch = p.blnRemoveLunch;
    r.removeLunchSeconds =
        hoursSetting(p.intRemoveLunchHours, loc, RecordRules{}.removeLunchSeconds);
    r.personalRate = p.curPersonalRate;
    return r;
}

}  // namespace hb::reporting
