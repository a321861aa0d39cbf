#pragma once
// Shared set-up of the report tests: a session with personal settings and
// three metadata lists, and short ways to write calendar entries and times.
#include <gtest/gtest.h>

#include <memory>

#include "common/DateTime.h"
#include "reporting/Periods.h"
#include "reporting/TimeRules.h"
#include "settings/SettingsTestSupport.h"
#include "settings/cPersonalSettings.h"

namespace hb::test {

using namespace hb::reporting;

// The lists of every report test: Company, Person and Extra, and a fourth
// list whose values are never reported.
inline constexpr char16_t kListsText[] =
    u"Company:Acme;Zenith;\r\nPerson:Smith;Jones;\r\nExtra:Travel;\r\nFourth:Other;\r\n";

struct ReportEnv : Env {
    ReportEnv() {
        s.strCurrentUser = u"john";
        s.oPersonalSettings = std::make_shared<cPersonalSettings>(s);
        s.oPersonalSettings->subPopulateMetadataList(kListsText);
    }
};

// 2026-11-<day> (a Tuesday on the 24th) at h:mm[:ss], as a date value.
inline Date at(int day, int hour = 0, int minute = 0, int second = 0, int month = 11,
               int year = 2026) {
    return Date{dt::fromParts({year, month, day, hour, minute, second})};
}
inline DayNumber dayOf(int day, int month = 11, int year = 2026) {
    return dayNumber(year, month, day);
}

inline CalendarEntry entry(Str id, Date start, Date end, Str categories = u"") {
    CalendarEntry e;
    e.entryId = std::move(id);
    e.occurrenceStart = start;
    e.start = start;
    e.end = end;
    e.subject = u"Work " + e.entryId;
    e.categories = std::move(categories);
    return e;
}
inline CalendarEntry allDayEntry(Str id, int firstDay, int days, Str categories = u"") {
    const double first = dayOf(firstDay);
    CalendarEntry e = entry(std::move(id), Date{first}, Date{first + days}, std::move(categories));
    e.allDay = true;
    return e;
}

inline constexpr std::int64_t H = 3600;
inline constexpr std::int64_t M = 60;

// November 2026 as a period.
inline Period november() {
    return {dayOf(1), dayOf(30)};
}

}  // namespace hb::test
