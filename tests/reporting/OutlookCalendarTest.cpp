// The report's calendar reader against the simulated Outlook: what a period
// gives (single, all-day, crossing midnight, recurring with an exception
// and a deletion, private, the settings appointment), its bounds in two
// locales, the calls it makes per appointment, and Outlook's failures.
#include <gtest/gtest.h>

#include "common/Constants.h"
#include "common/DateTime.h"
#include "reporting/OutlookCalendar.h"
#include "sim/Scenario.h"
#include "support/Locales.h"

namespace {

using hb::Str;
using hb::Variant;
using hb::reporting::CalendarEntry;
using hb::reporting::DayNumber;
using hb::reporting::OutlookCalendar;
using hb::reporting::Period;
using namespace sim;

using hb::test::germanLocale;

DayNumber day(int y, int m, int d) {
    return static_cast<DayNumber>(hb::dt::serial(y, m, d));
}

struct Calendar {
    Scenario sc;
    std::shared_ptr<Folder> cal = sc.outlook().calendar();

    Variant application() {
        return sc.instruments().toAddin(Variant(hb::ObjectPtr(sc.outlook().application())),
                                        u"test");
    }
    std::vector<CalendarEntry> read(Period p, const hb::Locale& locale = hb::Locale::enUS()) {
        sc.outlook().locale = locale;
        OutlookCalendar reader(application(), locale);
        return reader.read(p);
    }
};

std::vector<std::string> subjects(const std::vector<CalendarEntry>& entries) {
    std::vector<std::string> out;
    for (const auto& e : entries)
        out.push_back(hb::toUtf8(e.subject));
    return out;
}

TEST(OutlookCalendar, RestrictionIsWrittenInTheUsersFormatWithoutSeconds) {
    Period p{day(2026, 11, 1), day(2026, 11, 30)};
    EXPECT_EQ(OutlookCalendar::restriction(p, hb::Locale::enUS()),
              u"[Start] < '12/1/2026 12:00 AM' AND [End] > '11/1/2026 12:00 AM'");
    EXPECT_EQ(OutlookCalendar::restriction(p, germanLocale()),
              u"[Start] < '01.12.2026 00:00' AND [End] > '01.11.2026 00:00'");
}

// Which appointments a period of one week (Monday 2 to Sunday 8 November
// 2026) gives, in either locale.
class PeriodBounds : public ::testing::TestWithParam<bool> {};

TEST_P(PeriodBounds, KeepWhatOverlapsTheDays) {
    Calendar c;
    c.cal->addAppointment(u"Ends at first midnight", makeDate(2026, 11, 1, 22),
                          makeDate(2026, 11, 2));
    c.cal->addAppointment(u"Night shift", makeDate(2026, 11, 1, 22), makeDate(2026, 11, 2, 6));
    c.cal->addAppointment(u"Inside", makeDate(2026, 11, 4, 9), makeDate(2026, 11, 4, 12));
    c.cal->addAppointment(u"Last minute", makeDate(2026, 11, 8, 23, 59), makeDate(2026, 11, 9, 1));
    c.cal->addAppointment(u"Starts after", makeDate(2026, 11, 9), makeDate(2026, 11, 9, 1));
    c.cal->addMeetingRequest(u"A request");
    auto entries = c.read(Period{day(2026, 11, 2), day(2026, 11, 8)},
                          GetParam() ? germanLocale() : hb::Locale::enUS());
    EXPECT_EQ(subjects(entries),
              (std::vector<std::string>{"Night shift", "Inside", "Last minute"}));
}

INSTANTIATE_TEST_SUITE_P(Reader, PeriodBounds, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "German" : "English"; });

TEST(OutlookCalendar, ReadsWhatAnEntryNeeds) {
    Calendar c;
    auto single = c.cal->addAppointment(u"Review", makeDate(2026, 11, 3, 9),
                                        makeDate(2026, 11, 3, 10, 30), u"Acme, Smith");
    single->sensitivity = ol::Private;
    c.cal->addAllDayEvent(u"Holiday", makeDate(2026, 11, 5), 2, u"Leave");
    c.cal->addAppointment(u"Midnight to midnight", makeDate(2026, 11, 8), makeDate(2026, 11, 9));
    auto entries = c.read(Period{day(2026, 11, 2), day(2026, 11, 8)});
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_FALSE(entries[2].allDay);
    const auto& r = entries[0];
    EXPECT_EQ(r.entryId, single->entryId);
    EXPECT_EQ(r.start, makeDate(2026, 11, 3, 9));
    EXPECT_EQ(r.end, makeDate(2026, 11, 3, 10, 30));
    EXPECT_EQ(r.occurrenceStart, r.start);
    EXPECT_EQ(r.categories, u"Acme, Smith");
    EXPECT_TRUE(r.isPrivate);
    EXPECT_FALSE(r.allDay);
    EXPECT_FALSE(r.recurring);
    const auto& h = entries[1];
    EXPECT_TRUE(h.allDay);
    EXPECT_FALSE(h.isPrivate);
    EXPECT_EQ(h.start, makeDate(2026, 11, 5));
    EXPECT_EQ(h.end, makeDate(2026, 11, 7));
}

TEST(OutlookCalendar, ExpandsSeriesWithTheirExceptionsAndWithoutDeletions) {
    Calendar c;
    auto series = c.cal->addSeries(u"Standup", makeDate(2026, 10, 26, 9),
                                   makeDate(2026, 10, 26, 9, 15), Recurrence::daily(), u"Acme");
    auto moved = series->addException(makeDate(2026, 11, 3, 9), makeDate(2026, 11, 3, 16),
                                      makeDate(2026, 11, 3, 17));
    moved->setCategories(u"Globex");
    series->deleteOccurrence(makeDate(2026, 11, 4, 9));
    auto entries = c.read(Period{day(2026, 11, 2), day(2026, 11, 4)});
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].start, makeDate(2026, 11, 2, 9));
    EXPECT_EQ(entries[0].occurrenceStart, makeDate(2026, 11, 2, 9));
    EXPECT_EQ(entries[0].categories, u"Acme");
    EXPECT_EQ(entries[1].start, makeDate(2026, 11, 3, 16));
    EXPECT_EQ(entries[1].occurrenceStart, makeDate(2026, 11, 3, 9));
    EXPECT_EQ(entries[1].categories, u"Globex");
    for (const auto& e : entries) {
        EXPECT_TRUE(e.recurring);
        EXPECT_EQ(e.entryId, series->entryId);
    }
}

TEST(OutlookCalendar, GivesARepeatedOccurrenceOnce) {
    Calendar c;
    c.sc.outlook().repeatOccurrences = true;
    c.cal->addSeries(u"Standup", makeDate(2026, 11, 2, 9), makeDate(2026, 11, 2, 9, 15),
                     Recurrence::daily().times(3));
    EXPECT_EQ(c.read(Period{day(2026, 11, 2), day(2026, 11, 8)}).size(), 3u);
}

TEST(OutlookCalendar, LeavesOutOnlyTheSettingsAppointment) {
    Calendar c;
    c.cal->addAppointment(hb::kSettingsSubject, makeDate(2050, 1, 1, 0, 1),
                          makeDate(2050, 1, 1, 0, 2));
    c.cal->addAppointment(u"New year", makeDate(2050, 1, 1, 10), makeDate(2050, 1, 1, 11));
    c.cal->addAppointment(hb::kSettingsSubject, makeDate(2050, 1, 2, 10), makeDate(2050, 1, 2, 11));
    auto entries = c.read(Period{day(2050, 1, 1), day(2050, 1, 2)});
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].subject, u"New year");
    EXPECT_EQ(entries[1].start, makeDate(2050, 1, 2, 10));
}

TEST(OutlookCalendar, MakesFewCallsPerAppointment) {
    Calendar c;
    for (int d = 2; d <= 6; ++d) {
        c.cal->addAppointment(u"Work", makeDate(2026, 11, d, 9), makeDate(2026, 11, d, 17));
    }
    c.cal->addSeries(
        u"Standup", makeDate(2026, 11, 2, 8), makeDate(2026, 11, 2, 8, 15),
        Recurrence::weekly(ol::Monday | ol::Tuesday | ol::Wednesday | ol::Thursday | ol::Friday));
    c.cal->addAllDayEvent(u"Holiday", makeDate(2026, 11, 7));
    Variant app = c.application();
    c.sc.instruments().resetCounts();
    auto entries =
        OutlookCalendar(app, hb::Locale::enUS()).read(Period{day(2026, 11, 2), day(2026, 11, 8)});
    ASSERT_EQ(entries.size(), 11u);
    // Seven properties and GetFirst/GetNext per appointment, AllDayEvent
    // only for the one from midnight to midnight; six calls to get there
    // and the GetNext that finds the end.
    EXPECT_EQ(c.sc.instruments().callCount(), 11u * 8u + 1u + 7u) << c.sc.instruments().logText();
    EXPECT_EQ(c.sc.instruments().count(u"AllDayEvent"), 1u);
    EXPECT_EQ(c.sc.instruments().count(u"Items", u"Count"), 0u);
}

TEST(OutlookCalendar, OutlookFailuresReachTheCaller) {
    for (const char16_t* member : {u"Restrict", u"GetNext", u"Categories"}) {
        Calendar c;
        c.cal->addAppointment(u"A", makeDate(2026, 11, 3, 9), makeDate(2026, 11, 3, 10));
        c.cal->addAppointment(u"B", makeDate(2026, 11, 4, 9), makeDate(2026, 11, 4, 10));
        c.sc.instruments().failMember(member);
        try {
            c.read(Period{day(2026, 11, 2), day(2026, 11, 8)});
            ADD_FAILURE() << "a failing " << hb::toUtf8(member) << " must raise";
        } catch (const hb::AutomationError& e) {
            EXPECT_EQ(e.number(), kInjectedErrorNumber);
        }
    }
}

}  // namespace
