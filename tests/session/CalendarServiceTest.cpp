// The report program reading the calendar through the add-in inside
// Outlook's process (Application.COMAddIns("HBAddin.Connect").Object), and
// reading it itself when the add-in cannot serve: the entries are the same
// either way.
#include <gtest/gtest.h>

#include "SessionHarness.h"
#include "common/AutomationError.h"
#include "common/DateTime.h"
#include "common/DispatchObject.h"
#include "reporting/AddinCalendar.h"
#include "reporting/OutlookCalendar.h"

namespace {

using hb::Str;
using hb::Variant;
using hb::reporting::AddinCalendar;
using hb::reporting::CalendarEntry;
using hb::reporting::DayNumber;
using hb::reporting::OutlookCalendar;
using hb::reporting::Period;
using hbtest::SessionHarness;
using sim::makeDate;

// 6 to 12 May 2024: the harness's appointments, a weekly series with an
// exception, an all-day event and a private appointment.
const Period kWeek{static_cast<DayNumber>(hb::dt::serial(2024, 5, 6)),
                   static_cast<DayNumber>(hb::dt::serial(2024, 5, 12))};

void furnish(SessionHarness& h) {
    h.addAppointment(u"Review", u"Acme, Smith");
    h.addAppointment(u"Tab\there, \\ and\r\nnew line", u"Globex");
    auto cal = h.sc().outlook().calendar();
    auto series = cal->addSeries(u"Standup", makeDate(2024, 5, 6, 8), makeDate(2024, 5, 6, 8, 15),
                                 sim::Recurrence::weekly(sim::ol::Monday | sim::ol::Wednesday));
    series->addException(makeDate(2024, 5, 8, 8), makeDate(2024, 5, 8, 10),
                         makeDate(2024, 5, 8, 11));
    cal->addAllDayEvent(u"Holiday", makeDate(2024, 5, 10));
    cal->addAppointment(u"Doctor", makeDate(2024, 5, 9, 15), makeDate(2024, 5, 9, 16))
        ->sensitivity = sim::ol::Private;
}

Variant reportSide(SessionHarness& h) {
    return h.sc().instruments().toAddin(Variant(hb::ObjectPtr(h.sc().outlook().application())),
                                        u"report");
}

void expectSame(const std::vector<CalendarEntry>& a, const std::vector<CalendarEntry>& b) {
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a[i].entryId, b[i].entryId) << i;
        EXPECT_EQ(a[i].occurrenceStart, b[i].occurrenceStart) << i;
        EXPECT_EQ(a[i].start, b[i].start) << i;
        EXPECT_EQ(a[i].end, b[i].end) << i;
        EXPECT_EQ(a[i].subject, b[i].subject) << i;
        EXPECT_EQ(a[i].categories, b[i].categories) << i;
        EXPECT_EQ(a[i].allDay, b[i].allDay) << i;
        EXPECT_EQ(a[i].isPrivate, b[i].isPrivate) << i;
        EXPECT_EQ(a[i].recurring, b[i].recurring) << i;
    }
}

// An add-in object of another build: it answers Version 1 and then hands a
// text of another kind.
class StrangeService : public hb::DispatchObject {
  public:
    StrangeService() : DispatchObject(u"StrangeService", table()) {}

  private:
    static std::shared_ptr<const hb::MemberTable> table() {
        static const auto t =
            hb::Members<StrangeService>()
                .method(u"ReadCalendar",
                        [](StrangeService&, hb::Args&) { return Variant(Str(u"HBCAL 9\n")); })
                .get(u"Version", [](StrangeService&) { return std::int32_t{1}; })
                .build();
        return t;
    }
};

TEST(CalendarService, TheAddinReadsThePeriodForTheReportProgramInOneCall) {
    SessionHarness h;
    furnish(h);
    h.start();
    {
        Variant app = reportSide(h);
        const auto direct = OutlookCalendar(app, hb::Locale::enUS()).read(kWeek);
        ASSERT_GE(direct.size(), 6u);

        AddinCalendar calendar(app, hb::Locale::enUS());
        h.sc().instruments().resetCounts();
        const auto entries = calendar.read(kWeek);
        EXPECT_TRUE(calendar.lastReadThroughAddin());
        expectSame(entries, direct);
        // Across the process boundary only the way to the add-in's object
        // is walked: COMAddIns, Item, Object (the rest are the add-in's own
        // calls, inside Outlook).
        EXPECT_EQ(h.sc().instruments().count(u"COMAddIns"), 1u);
        EXPECT_EQ(h.sc().instruments().count(u"COMAddIn", u"Object"), 1u);
    }
    h.sc().quit();
    EXPECT_TRUE(h.census().empty()) << h.censusText();
}

TEST(CalendarService, WithoutTheAddinTheReportProgramReadsTheCalendarItself) {
    enum class Case { NotLoaded, OfferRefused, AnotherBuild };
    for (Case c : {Case::NotLoaded, Case::OfferRefused, Case::AnotherBuild}) {
        SCOPED_TRACE(static_cast<int>(c));
        SessionHarness h;
        furnish(h);
        if (c == Case::OfferRefused) h.sc().instruments().failMember(u"Object");
        if (c == Case::NotLoaded) {
            h.startWithoutAddin();
        } else {
            h.start();
        }
        if (c == Case::AnotherBuild)
            h.sc().outlook().comAddIns.front()->object =
                Variant(hb::ObjectPtr(std::make_shared<StrangeService>()));
        Variant app = reportSide(h);
        h.sc().instruments().clearFaults();
        const auto direct = OutlookCalendar(app, hb::Locale::enUS()).read(kWeek);
        AddinCalendar calendar(app, hb::Locale::enUS());
        expectSame(calendar.read(kWeek), direct);
        EXPECT_FALSE(calendar.lastReadThroughAddin());
        // Once refused, the add-in is not asked again.
        h.sc().instruments().resetCounts();
        calendar.read(kWeek);
        EXPECT_EQ(h.sc().instruments().count(u"COMAddIns"), 0u);
        EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
    }
}

TEST(CalendarService, AfterTheSessionEndedTheAddinsObjectAnswers429) {
    SessionHarness h;
    furnish(h);
    h.start();
    Variant service = h.sc().outlook().comAddIns.front()->object;
    ASSERT_TRUE(service.isObject());
    h.sc().quit();
    try {
        service.toObject()->call(u"ReadCalendar", {Variant(std::int32_t{kWeek.first}),
                                                   Variant(std::int32_t{kWeek.last})});
        ADD_FAILURE() << "a read after the end must raise";
    } catch (const hb::AutomationError& e) {
        EXPECT_EQ(e.number(), 429);
    }
}

}  // namespace
