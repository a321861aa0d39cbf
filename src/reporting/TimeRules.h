#pragma once
// Calendar entries into time records, by the settings' rules and the
// report's options (README, "Report rules", states each rule exactly):
// the period's days only, the filters, one record per local day, the
// 24-hour conversion, lunch, overlapping time counted once on request,
// billing values through the add-in's markings code, the rate, rounding and
// the amount. Every duration is whole seconds and every amount is Currency,
// so that each grouping of the records adds up to the grand total exactly.
#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "common/Session.h"
#include "reporting/RecordStore.h"
#include "reporting/ReportJob.h"
#include "reporting/ReportTypes.h"

namespace hb::reporting {

inline constexpr std::int64_t kDaySeconds = 86400;

// Seconds since 30 December 1899 00:00 of a date value (whole part before
// 1899 counting backwards, the fraction forwards), to the nearest second;
// and back.
std::int64_t secondsOf(Date date);
Date dateOfSeconds(std::int64_t seconds);
// The local day a second lies in.
DayNumber dayOfSeconds(std::int64_t seconds);

using BillingValues = std::array<Str, kReportLists>;

// The billing values of an appointment's categories, as the add-in reads
// them: the pieces that are entries of the first three lists (BillingPart),
// then those pieces into markings (BillingToMarkings). Categories of no
// list are ignored. Needs the session's personal settings (91 otherwise).
// Remembers every categories text it has read: a calendar repeats few.
class BillingReader {
  public:
    explicit BillingReader(Session& s);
    const BillingValues& values(const Str& categories);

  private:
    Session& s_;
    std::unordered_map<Str, BillingValues> cache_;
};

// The hourly rate of a record: the rate of the first list (in list order)
// whose value has a rate of its own in the store's table (entry names
// matched without regard to letter case), else the personal rate.
class RateLookup {
  public:
    RateLookup(const RateTable& rates, Currency personalRate);
    Currency rateFor(const BillingValues& values) const;

  private:
    std::array<std::unordered_map<Str, Currency>, kReportLists> byList_;
    Currency personal_;
};

// A record's time after rounding: to a multiple of minutes x 60 seconds,
// up, down or to the nearest (a half unit goes up); minutes <= 0: as is.
std::int64_t roundSeconds(std::int64_t seconds, const Rounding& rounding);
// a x b / d exactly, for a, b >= 0 and d > 0 (5 otherwise): the quotient
// and the remainder, whatever the size of the product; 6 when the quotient
// does not fit 64 bits.
struct QuotientRemainder {
    std::int64_t quotient = 0;
    std::int64_t remainder = 0;
};
QuotientRemainder mulDiv(std::int64_t a, std::int64_t b, std::int64_t d);
// rate x seconds / 3600, to four decimals with the currency type's own
// rounding (a half goes to the even last digit), exact integer arithmetic.
Currency amountOf(std::int64_t seconds, Currency rate);

// The time records of the entries for one user, in order of day, start,
// EntryID and occurrence start.
std::vector<TimeRecord> makeRecords(const std::vector<CalendarEntry>& entries,
                                    const RecordRules& rules, const ReportOptions& options,
                                    BillingReader& billing, const RateLookup& rates,
                                    const Str& user);

}  // namespace hb::reporting
