// The appointment watcher resets the posted date of items added
// to the default calendar.
#include "SimSupport.h"
#include "metadata/cAppointments.h"

namespace hb::test {
namespace {

const Variant kPostedInMarch{sim::makeDate(2024, 3, 31)};
const Variant kNotPosted{Date{kNotPostedDay}};

TEST(Watcher, ItemsAddedToTheCalendar) {
    struct Case {
        const char* what;
        Str property;
        Variant value;
        bool failSave;
        bool stopWatching;
        Variant postedAfter;
        int saves;
    } cases[] = {
        {"posted date reset and saved", u"strPosted", kPostedInMarch, false, false, kNotPosted, 1},
        {"already reset: not saved again", u"strPosted", kNotPosted, false, false, kNotPosted, 0},
        {"no posted date: left alone", u"other", kPostedInMarch, false, false, Variant::missing(),
         0},
        {"failing save ignored and cleared", u"strPosted", kPostedInMarch, true, false,
         kPostedInMarch, 0},
        {"watcher gone: no events", u"strPosted", kPostedInMarch, false, true, kPostedInMarch, 0},
    };
    EXPECT_DOUBLE_EQ(sim::makeDate(4501, 1, 1).days, kNotPostedDay);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        SimEnv e;
        e.s.oAppointments = std::make_shared<cAppointments>(e.s);
        EXPECT_EQ(e.cal->liveItemsCollections(), 1u);
        if (c.failSave) e.sc.instruments().failMember(u"Save");
        if (c.stopWatching) e.s.oAppointments.reset();
        // An appointment of another folder copied into the calendar (ItemAdd).
        auto item =
            e.sc.outlook().make<sim::Item>(sim::ItemKind::Appointment, Str(sim::kAppointmentClass));
        item->subject = u"Copied";
        item->start = sim::makeDate(2024, 3, 4, 9);
        item->end = sim::makeDate(2024, 3, 4, 10);
        item->addUserProperty(c.property, sim::ol::DateTime, c.value);
        e.cal->insert(item, true);
        e.sc.outlook().pump();
        EXPECT_EQ(SimEnv::prop(item, u"strPosted"), c.postedAfter);
        EXPECT_EQ(SimEnv::prop(item, c.property),
                  c.property == u"strPosted" ? c.postedAfter : c.value);
        EXPECT_EQ(item->saveCount, c.saves);
        EXPECT_EQ(e.s.err.number, 0);
        EXPECT_TRUE(e.noReport());
        // Saving the item adds nothing, so there is no second event.
        e.sc.outlook().pump();
        EXPECT_EQ(item->saveCount, c.saves);
        if (c.stopWatching) {
            EXPECT_EQ(e.sc.instruments().liveSubscriptionCount(), 0u);
        }
    }
}

TEST(Watcher, OtherFoldersAreNotWatchedAndACalendarIsNeeded) {
    SimEnv e;
    e.s.oAppointments = std::make_shared<cAppointments>(e.s);
    auto item =
        e.sc.outlook().make<sim::Item>(sim::ItemKind::Appointment, Str(sim::kAppointmentClass));
    item->addUserProperty(u"strPosted", sim::ol::DateTime, kPostedInMarch);
    e.sc.outlook().inbox()->insert(item, true);
    e.sc.outlook().pump();
    EXPECT_EQ(item->saveCount, 0);

    Env bare;
    EXPECT_THROW(cAppointments a(bare.s), AutomationError);
}

}  // namespace
}  // namespace hb::test
