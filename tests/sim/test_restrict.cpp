// The simulated Outlook's calendar views: Restrict with Jet filters read in
// the user's locale, Sort and IncludeRecurrences (and their order), Count
// and the GetFirst/GetNext walk, recurrence patterns, exceptions and
// deleted occurrences, all-day events and sensitivity.
#include <gtest/gtest.h>

#include <cstdio>

#include "common/DateTime.h"
#include "sim/Scenario.h"
#include "support/Locales.h"

namespace {

using hb::Str;
using hb::Variant;
using namespace sim;

using hb::test::germanLocale;

Variant calendarItems(Scenario& sc) {
    return sc.instruments()
        .toAddin(Variant(hb::ObjectPtr(sc.outlook().application())), u"test")
        .call(u"GetNamespace", {Str(u"MAPI")})
        .call(u"GetDefaultFolder", {ol::FolderCalendar})
        .get(u"Items");
}

// "Subject@yyyy-mm-dd hh:mm" of every member, walked with GetFirst/GetNext.
std::vector<std::string> walk(const Variant& items) {
    std::vector<std::string> out;
    for (Variant i = items.call(u"GetFirst"); !i.isNothing(); i = items.call(u"GetNext")) {
        auto p = hb::dt::toParts(i.get(u"Start").toDate().days);
        char when[32];
        std::snprintf(when, sizeof when, "%04d-%02d-%02d %02d:%02d", p.year, p.month, p.day, p.hour,
                      p.minute);
        out.push_back(hb::toUtf8(i.get(u"Subject").toStr()) + "@" + when);
    }
    return out;
}

struct FilterCase {
    const char* name;
    bool german;
    const char16_t* filter;
    std::vector<std::string> expected;  // subjects in folder order
    bool raises = false;
};

class RestrictFilters : public ::testing::TestWithParam<FilterCase> {};

TEST_P(RestrictFilters, MatchWhatTheUserLocaleWrites) {
    const auto& c = GetParam();
    Scenario sc;
    if (c.german) sc.outlook().locale = germanLocale();
    auto cal = sc.outlook().calendar();
    cal->addAppointment(u"Early", makeDate(2026, 11, 29, 22), makeDate(2026, 11, 30, 1));
    cal->addAppointment(u"Day", makeDate(2026, 11, 30, 9), makeDate(2026, 11, 30, 17));
    cal->addAppointment(u"Late", makeDate(2026, 11, 30, 23, 59, 30), makeDate(2026, 12, 1, 0, 30));
    cal->addAppointment(u"Next", makeDate(2026, 12, 1, 0), makeDate(2026, 12, 1, 2));
    cal->addMeetingRequest(u"Request");
    Variant items = calendarItems(sc);
    if (c.raises) {
        try {
            items.call(u"Restrict", {Str(c.filter)});
            FAIL() << "Outlook cannot parse " << hb::toUtf8(c.filter);
        } catch (const hb::AutomationError& e) {
            EXPECT_EQ(e.number(), kOutlookErrorNumber);
            EXPECT_NE(e.description().find(u"Cannot parse condition. Error at"), Str::npos)
                << hb::toUtf8(e.description());
        }
        return;
    }
    std::vector<std::string> subjects;
    for (const auto& s : walk(items.call(u"Restrict", {Str(c.filter)})))
        subjects.push_back(s.substr(0, s.find('@')));
    EXPECT_EQ(subjects, c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Sim, RestrictFilters,
    ::testing::Values(
        FilterCase{
            "UsDay", false, u"[Start] >= '11/30/2026 12:00 AM' AND [End] <= '12/1/2026'", {"Day"}},
        FilterCase{"UsOverlap",
                   false,
                   u"[Start] < '12/1/2026 12:00 AM' AND [End] > '11/30/2026 12:00 AM'",
                   {"Early", "Day", "Late"}},
        FilterCase{"UsOrParens",
                   false,
                   u"([Start] = '11/30/2026 9:00 AM') or ([Start] >= \"12/1/2026 12:00 AM\")",
                   {"Day", "Next"}},
        FilterCase{"UsNotAndUnequal",
                   false,
                   u"NOT [Start] < '11/30/2026 9:00 AM' AND [End] <> '12/1/2026 2:00 AM'",
                   {"Day", "Late"}},
        FilterCase{"GermanOverlap",
                   true,
                   u"[Start] < '01.12.2026 00:00' AND [End] > '30.11.2026 00:00'",
                   {"Early", "Day", "Late"}},
        FilterCase{"GermanLastMinute", true, u"[Start] <= '30.11.2026 23:59'", {"Early", "Day"}},
        // A time with seconds is misread: here it compares as midnight, so
        // the whole last day is lost.
        FilterCase{"SecondsTrap", false, u"[Start] <= '11/30/2026 11:59:59 PM'", {"Early"}},
        FilterCase{"SubjectEquals", false, u"[Subject] = 'late'", {"Late"}},
        // Read in the German order, 12/1 is the 12th of January.
        FilterCase{"UsOrderUnderGerman", true, u"[Start] < '12/1/2026 00:00'", {}},
        FilterCase{"WordUnderGerman", true, u"[Start] < 'morgen'", {}, true},
        FilterCase{"IsoUnderUs", false, u"[Start] < '2026-11-30T13:00'", {}, true},
        FilterCase{"Unclosed", false, u"[Start] < '11/30/2026", {}, true},
        FilterCase{"NoOperator", false, u"[Start] '11/30/2026'", {}, true},
        FilterCase{"DanglingAnd", false, u"[Start] < '11/30/2026' AND", {}, true}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SimRestrict, CategoriesAndUnknownPropertiesAreRefused) {
    Scenario sc;
    Variant items = calendarItems(sc);
    EXPECT_THROW(items.call(u"Restrict", {Str(u"[Categories] = 'Acme'")}), hb::AutomationError);
    EXPECT_THROW(items.call(u"Restrict", {Str(u"[Colour] = 'red'")}), hb::AutomationError);
    EXPECT_THROW(items.call(u"Sort", {Str(u"[Colour]")}), hb::AutomationError);
}

struct OrderCase {
    const char* name;
    bool sortFirst;   // Sort("[Start]") before IncludeRecurrences = True
    bool descending;  // Sort(..., True)
    std::size_t members;
    bool countUnknown;
};

class SortAndIncludeRecurrences : public ::testing::TestWithParam<OrderCase> {};

TEST_P(SortAndIncludeRecurrences, ExpandOnlyWhenSortedByStartFirst) {
    const auto& c = GetParam();
    Scenario sc;
    auto cal = sc.outlook().calendar();
    cal->addSeries(u"Standup", makeDate(2026, 11, 2, 9), makeDate(2026, 11, 2, 9, 15),
                   Recurrence::daily());
    cal->addAppointment(u"Review", makeDate(2026, 11, 4, 14), makeDate(2026, 11, 4, 15));
    Variant items = calendarItems(sc);
    if (c.sortFirst) {
        items.call(u"Sort", {Str(u"[Start]"), c.descending});
        items.put(u"IncludeRecurrences", true);
    } else {
        items.put(u"IncludeRecurrences", true);
        items.call(u"Sort", {Str(u"[Start]"), c.descending});
    }
    Variant week = items.call(u"Restrict", {Str(u"[Start] < '11/9/2026' AND [End] > '11/2/2026'")});
    EXPECT_EQ(walk(week).size(), c.members);
    EXPECT_EQ(week.get(u"Count").toLong(),
              c.countUnknown ? kUnknownCount : static_cast<std::int32_t>(c.members));
}

INSTANTIATE_TEST_SUITE_P(Sim, SortAndIncludeRecurrences,
                         ::testing::Values(OrderCase{"SortedFirst", true, false, 8, true},
                                           OrderCase{"IncludedFirst", false, false, 2, false},
                                           OrderCase{"SortedDescending", true, true, 2, false}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(SimRestrict, ExpandedCollectionsWalkInStartOrderBothWays) {
    Scenario sc;
    auto cal = sc.outlook().calendar();
    cal->addAppointment(u"Late", makeDate(2026, 11, 3, 16), makeDate(2026, 11, 3, 17));
    cal->addSeries(u"Gym", makeDate(2026, 11, 2, 7), makeDate(2026, 11, 2, 8),
                   Recurrence::weekly(ol::Monday | ol::Wednesday));
    cal->addAppointment(u"Early", makeDate(2026, 11, 2, 6), makeDate(2026, 11, 2, 7));
    Variant items = calendarItems(sc);
    items.call(u"Sort", {Str(u"[Start]")});
    items.put(u"IncludeRecurrences", true);
    EXPECT_EQ(items.get(u"Count").toLong(), kUnknownCount);
    Variant week = items.call(u"Restrict", {Str(u"[Start] < '11/5/2026' AND [End] > '11/2/2026'")});
    const std::vector<std::string> expected = {"Early@2026-11-02 06:00", "Gym@2026-11-02 07:00",
                                               "Late@2026-11-03 16:00", "Gym@2026-11-04 07:00"};
    EXPECT_EQ(walk(week), expected);
    std::vector<std::string> backwards;
    for (Variant i = week.call(u"GetLast"); !i.isNothing(); i = week.call(u"GetPrevious"))
        backwards.push_back(hb::toUtf8(i.get(u"Subject").toStr()));
    EXPECT_EQ(backwards, (std::vector<std::string>{"Gym", "Late", "Gym", "Early"}));
    // A restricted collection is a snapshot: a later appointment is not in it.
    cal->addAppointment(u"New", makeDate(2026, 11, 3, 10), makeDate(2026, 11, 3, 11));
    EXPECT_EQ(walk(week).size(), 4u);
}

TEST(SimRestrict, RestrictedCollectionsNarrowSortAndIndex) {
    Scenario sc;
    auto cal = sc.outlook().calendar();
    cal->addAppointment(u"b", makeDate(2026, 11, 2, 9), makeDate(2026, 11, 2, 12));
    cal->addAppointment(u"C", makeDate(2026, 11, 3, 9), makeDate(2026, 11, 3, 10));
    cal->addAppointment(u"a", makeDate(2026, 11, 4, 9), makeDate(2026, 11, 4, 11));
    Variant items = calendarItems(sc);
    Variant week = items.call(u"Restrict", {Str(u"[Start] >= '11/2/2026'")});
    Variant later = week.call(u"Restrict", {Str(u"[Start] > '11/2/2026 9:00 AM'")});
    EXPECT_EQ(later.get(u"Count").toLong(), 2);
    EXPECT_EQ(week.get(u"Count").toLong(), 3);
    week.call(u"Sort", {Str(u"[Subject]")});
    EXPECT_EQ(week.call(u"Item", {1}).get(u"Subject").toStr(), u"a");
    EXPECT_EQ(week.call(u"Item", {3}).get(u"Subject").toStr(), u"C");
    week.call(u"Sort", {Str(u"End"), true});
    EXPECT_EQ(week.call(u"Item", {1}).get(u"Subject").toStr(), u"a");
    EXPECT_EQ(week.obj().enumerate().size(), 3u);
    EXPECT_THROW(week.call(u"Item", {4}), hb::AutomationError);
    // Walking off either end gives Nothing, and keeps giving it.
    EXPECT_EQ(week.call(u"GetLast").get(u"Subject").toStr(), u"b");
    week.call(u"GetPrevious");
    week.call(u"GetPrevious");
    EXPECT_TRUE(week.call(u"GetPrevious").isNothing());
    EXPECT_TRUE(week.call(u"GetPrevious").isNothing());
    // Find reads dates too.
    EXPECT_EQ(items.call(u"Find", {Str(u"[End] = '11/3/2026 10:00 AM'")}).get(u"Subject").toStr(),
              u"C");
}

TEST(SimRestrict, AnEndlessExpansionStopsAndForEachRefusesIt) {
    Scenario sc;
    sc.outlook().calendar()->addSeries(u"Forever", makeDate(2026, 1, 1, 9),
                                       makeDate(2026, 1, 1, 10), Recurrence::daily());
    Variant items = calendarItems(sc);
    items.call(u"Sort", {Str(u"[Start]")});
    items.put(u"IncludeRecurrences", true);
    Variant open = items.call(u"Restrict", {Str(u"[End] > '1/1/2026'")});
    EXPECT_THROW(open.obj().enumerate(), hb::AutomationError);
    EXPECT_EQ(walk(open).size(), kExpansionCap);
    Variant bounded = items.call(u"Restrict", {Str(u"[Start] < '1/11/2026'")});
    EXPECT_EQ(bounded.obj().enumerate().size(), 10u);
}

struct PatternCase {
    const char* name;
    hb::Date first;
    Recurrence pattern;
    std::vector<std::string> expected;  // starts in January-March 2026
};

class Patterns : public ::testing::TestWithParam<PatternCase> {};

TEST_P(Patterns, GiveTheirOccurrences) {
    const auto& c = GetParam();
    Scenario sc;
    sc.outlook().calendar()->addSeries(u"S", c.first, hb::Date{c.first.days + 1.0 / 24}, c.pattern);
    Variant items = calendarItems(sc);
    items.call(u"Sort", {Str(u"[Start]")});
    items.put(u"IncludeRecurrences", true);
    std::vector<std::string> starts;
    for (const auto& s : walk(items.call(u"Restrict", {Str(u"[Start] < '4/1/2026'")})))
        starts.push_back(s.substr(2, 10));
    EXPECT_EQ(starts, c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Sim, Patterns,
    ::testing::Values(PatternCase{"DailyEveryTwentyDaysUntil",
                                  makeDate(2026, 1, 5, 8),
                                  Recurrence::daily(20).until(makeDate(2026, 2, 24)),
                                  {"2026-01-05", "2026-01-25", "2026-02-14"}},
                      PatternCase{"WeeklyMaskEveryOtherWeekTimes",
                                  makeDate(2026, 1, 6, 8),
                                  Recurrence::weekly(ol::Tuesday | ol::Friday, 2).times(4),
                                  {"2026-01-06", "2026-01-09", "2026-01-20", "2026-01-23"}},
                      PatternCase{"MonthlyOn31st",
                                  makeDate(2026, 1, 31, 8),
                                  Recurrence::monthly(31),
                                  {"2026-01-31", "2026-02-28", "2026-03-31"}},
                      PatternCase{"MonthNthLastFriday",
                                  makeDate(2026, 1, 1, 8),
                                  Recurrence::monthNth(5, ol::Friday),
                                  {"2026-01-30", "2026-02-27", "2026-03-27"}},
                      PatternCase{"MonthNthSecondMonday",
                                  makeDate(2026, 1, 1, 8),
                                  Recurrence::monthNth(2, ol::Monday).times(2),
                                  {"2026-01-12", "2026-02-09"}},
                      PatternCase{"Yearly",
                                  makeDate(2025, 2, 14, 8),
                                  Recurrence::yearly(2, 14),
                                  {"2025-02-14", "2026-02-14"}},
                      PatternCase{"YearNthFirstSundayOfMarch",
                                  makeDate(2025, 3, 2, 8),
                                  Recurrence::yearNth(1, ol::Sunday, 3),
                                  {"2025-03-02", "2026-03-01"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SimRecurrence, ExceptionsTakeTheirOccurrencesPlaceAndDeletionsAreGone) {
    Scenario sc;
    auto series = sc.outlook().calendar()->addSeries(
        u"Weekly", makeDate(2026, 3, 2, 9), makeDate(2026, 3, 2, 10),
        Recurrence::weekly(ol::Monday).times(4), u"Acme");
    auto moved = series->addException(makeDate(2026, 3, 9, 9), makeDate(2026, 3, 10, 14),
                                      makeDate(2026, 3, 10, 15));
    moved->subject = u"Moved";
    moved->setCategories(u"Globex");
    series->deleteOccurrence(makeDate(2026, 3, 16, 9));
    Variant items = calendarItems(sc);
    items.call(u"Sort", {Str(u"[Start]")});
    items.put(u"IncludeRecurrences", true);
    Variant all = items.call(u"Restrict", {Str(u"[Start] < '4/1/2026'")});
    const std::vector<std::string> expected = {"Weekly@2026-03-02 09:00", "Moved@2026-03-10 14:00",
                                               "Weekly@2026-03-23 09:00"};
    EXPECT_EQ(walk(all), expected);

    Variant first = all.call(u"GetFirst");
    Variant exception = all.call(u"GetNext");
    EXPECT_EQ(first.get(u"RecurrenceState").toLong(), 2);
    EXPECT_EQ(exception.get(u"RecurrenceState").toLong(), 3);
    EXPECT_TRUE(first.get(u"IsRecurring").toBool());
    EXPECT_EQ(first.get(u"EntryID").toStr(), series->entryId);
    EXPECT_EQ(exception.get(u"EntryID").toStr(), series->entryId);
    EXPECT_EQ(exception.get(u"Categories").toStr(), u"Globex");
    EXPECT_EQ(first.get(u"Parent").get(u"RecurrenceState").toLong(), 1);

    Variant pattern = first.call(u"GetRecurrencePattern");
    EXPECT_EQ(pattern.get(u"RecurrenceType").toLong(), ol::RecursWeekly);
    EXPECT_EQ(pattern.get(u"DayOfWeekMask").toLong(), ol::Monday);
    EXPECT_EQ(pattern.get(u"Occurrences").toLong(), 4);
    EXPECT_EQ(pattern.get(u"PatternEndDate").toDate(), makeDate(2026, 3, 23));
    EXPECT_EQ(pattern.get(u"Duration").toLong(), 60);
    Variant exceptions = pattern.get(u"Exceptions");
    ASSERT_EQ(exceptions.get(u"Count").toLong(), 2);
    EXPECT_EQ(exceptions.call(u"Item", {1}).get(u"OriginalDate").toDate(), makeDate(2026, 3, 9, 9));
    EXPECT_FALSE(exceptions.call(u"Item", {1}).get(u"Deleted").toBool());
    EXPECT_EQ(exceptions.call(u"Item", {1}).get(u"AppointmentItem").get(u"Subject").toStr(),
              u"Moved");
    EXPECT_TRUE(exceptions.call(u"Item", {2}).get(u"Deleted").toBool());
    EXPECT_THROW(exceptions.call(u"Item", {2}).get(u"AppointmentItem"), hb::AutomationError);

    EXPECT_EQ(pattern.call(u"GetOccurrence", {makeDate(2026, 3, 23)}).get(u"Start").toDate(),
              makeDate(2026, 3, 23, 9));
    EXPECT_EQ(pattern.call(u"GetOccurrence", {makeDate(2026, 3, 9)}).get(u"Subject").toStr(),
              u"Moved");
    for (hb::Date none : {makeDate(2026, 3, 16), makeDate(2026, 3, 3), makeDate(2026, 3, 30),
                          makeDate(2026, 3, 23, 10)}) {
        EXPECT_THROW(pattern.call(u"GetOccurrence", {none}), hb::AutomationError);
    }
}

TEST(SimRecurrence, RepeatedOccurrencesCanBeAskedFor) {
    Scenario sc;
    sc.outlook().repeatOccurrences = true;
    sc.outlook().calendar()->addSeries(u"S", makeDate(2026, 3, 2, 9), makeDate(2026, 3, 2, 10),
                                       Recurrence::daily().times(2));
    Variant items = calendarItems(sc);
    items.call(u"Sort", {Str(u"[Start]")});
    items.put(u"IncludeRecurrences", true);
    EXPECT_EQ(walk(items.call(u"Restrict", {Str(u"[Start] < '4/1/2026'")})).size(), 4u);
}

TEST(SimItems, AllDayEventsRunMidnightToMidnightAndSensitivityIsKept) {
    Scenario sc;
    auto appt = sc.outlook().calendar()->addAppointment(u"Trip", makeDate(2026, 5, 4, 9),
                                                        makeDate(2026, 5, 5, 17));
    Variant items = calendarItems(sc);
    Variant item = items.call(u"GetFirst");
    item.put(u"AllDayEvent", true);
    item.put(u"Sensitivity", ol::Private);
    EXPECT_EQ(item.get(u"Start").toDate(), makeDate(2026, 5, 4));
    EXPECT_EQ(item.get(u"End").toDate(), makeDate(2026, 5, 6));
    EXPECT_EQ(item.get(u"Duration").toLong(), 2 * 1440);
    EXPECT_THROW(item.put(u"Sensitivity", 4), hb::AutomationError);
    item.call(u"Save");
    EXPECT_EQ(appt->sensitivity, ol::Private);
    EXPECT_TRUE(appt->allDayEvent);
    // Asked for its pattern, a single appointment becomes a weekly series.
    Variant pattern = item.call(u"GetRecurrencePattern");
    EXPECT_EQ(pattern.get(u"RecurrenceType").toLong(), ol::RecursWeekly);
    EXPECT_EQ(pattern.get(u"DayOfWeekMask").toLong(), ol::Monday);
    EXPECT_TRUE(pattern.get(u"NoEndDate").toBool());
    EXPECT_EQ(appt->isRecurring, false);
    item.call(u"Save");
    EXPECT_EQ(items.call(u"GetFirst").get(u"RecurrenceState").toLong(), 1);
    auto holiday = sc.outlook().calendar()->addAllDayEvent(u"Holiday", makeDate(2026, 5, 8, 13), 3);
    EXPECT_EQ(holiday->start, makeDate(2026, 5, 8));
    EXPECT_EQ(holiday->end, makeDate(2026, 5, 11));
}

}  // namespace

namespace {

TEST(SimTable, GivesOneRowPerItemWithTheColumnsAskedFor) {
    Scenario sc;
    auto cal = sc.outlook().calendar();
    cal->addAppointment(u"Before", makeDate(2026, 10, 30, 9), makeDate(2026, 10, 30, 10));
    auto review = cal->addAppointment(u"Review", makeDate(2026, 11, 3, 9),
                                      makeDate(2026, 11, 3, 10, 30), u"Acme");
    cal->addSeries(u"Standup", makeDate(2026, 11, 2, 9), makeDate(2026, 11, 2, 9, 15),
                   Recurrence::daily());
    cal->addMeetingRequest(u"Request");
    Variant folder = calendarItems(sc).get(u"Parent");
    Variant table = folder.call(u"GetTable", {Str(u"[End] > '11/1/2026'")});
    EXPECT_EQ(table.call(u"GetRowCount").toLong(), 2);  // the series is its master only
    Variant first = table.call(u"GetNextRow");
    EXPECT_EQ(first.call(u"", {Str(u"EntryID")}).toStr(), review->entryId);
    EXPECT_THROW(first.call(u"", {Str(u"Start")}), hb::AutomationError);  // not a column yet

    Variant columns = table.get(u"Columns");
    columns.call(u"RemoveAll");
    for (const char16_t* c : {u"Subject", u"Start", u"Categories", u"IsRecurring"})
        columns.call(u"Add", {Str(c)});
    EXPECT_EQ(columns.get(u"Count").toLong(), 4);
    EXPECT_THROW(columns.call(u"Add", {Str(u"Colour")}), hb::AutomationError);
    table.call(u"MoveToStart");
    std::vector<std::string> rows;
    while (!table.get(u"EndOfTable").toBool()) {
        Variant row = table.call(u"GetNextRow");
        rows.push_back(hb::toUtf8(row.call(u"", {1}).toStr() + u" " + row.call(u"", {3}).toStr() +
                                  u" " + row.call(u"", {Str(u"IsRecurring")}).toStr()));
        EXPECT_GE(row.call(u"", {Str(u"start")}).toDate().days, makeDate(2026, 11, 2).days);
    }
    EXPECT_EQ(rows, (std::vector<std::string>{"Review Acme False", "Standup  True"}));
    EXPECT_TRUE(table.call(u"GetNextRow").isNothing());
    EXPECT_THROW(folder.call(u"GetTable", {Str(u"@SQL=\"urn:schemas:httpmail:subject\" = 'x'")}),
                 hb::AutomationError);
}

}  // namespace
