#pragma once
// What the statistics tests share: records made from a few values.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "common/DateTime.h"
#include "reporting/ReportTypes.h"

namespace hb::statistics::test {

using reporting::DayNumber;
using reporting::TimeRecord;

inline DayNumber dayOf(int y, int m, int d) {
    return static_cast<DayNumber>(dt::serial(y, m, d));
}

// A record of `user` on a day with its list values, seconds and amount in
// cents (rounded seconds: the seconds rounded up to the quarter hour).
inline TimeRecord rec(Str user, DayNumber day, Str company, Str person, std::int64_t seconds,
                      std::int64_t cents = 0, Str extra = u"") {
    TimeRecord r;
    r.user = std::move(user);
    r.entryId = u"E" + toStr(day) + u"-" + toStr(seconds);
    r.day = day;
    r.values = {std::move(company), std::move(person), std::move(extra)};
    r.billed = !r.values[0].empty() || !r.values[1].empty() || !r.values[2].empty();
    r.seconds = seconds;
    r.roundedSeconds = (seconds + 899) / 900 * 900;
    r.amount.scaled = cents * 100;
    return r;
}

}  // namespace hb::statistics::test
