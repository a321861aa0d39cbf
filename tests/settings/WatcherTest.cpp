// The appointment watcher resets the posted date of items added
// to the default calendar.
#include "SimSupport.h"
#include "metadata/cAppointments.h"

namespace hb::test {
namespace {

struct WatchEnv : SimEnv {
    WatchEnv() { s.oAppointments = std::make_shared<cAppointments>(s); }
    // An appointment of another folder copied into the calendar (ItemAdd).
    std::shared_ptr<sim::Item> arrive(std::function<void(sim::Item&)> setUp) {
        auto item =
            sc.outlook().make<sim::Item>(sim::ItemKind::Appointment, Str(sim::kAppointmentClass));
        item->subject = u"Copied";
        item->start = sim::makeDate(2024, 3, 4, 9);
        item->end = sim::makeDate(2024, 3, 4, 10);
        setUp(*item);
        cal->insert(item, true);
        sc.outlook().pump();
        return item;
    }
};

TEST(Watcher, PostedDateIsResetAndSaved) {
    WatchEnv e;
    auto item = e.arrive([](sim::Item& i) {
        i.addUserProperty(u"strPosted", sim::ol::DateTime, Variant(sim::makeDate(2024, 3, 31)));
    });
    EXPECT_EQ(SimEnv::prop(item, u"strPosted"), Variant(Date{949998.0}));
    EXPECT_DOUBLE_EQ(sim::makeDate(4501, 1, 1).days, kNotPostedDay);
    EXPECT_EQ(item->saveCount, 1);
    EXPECT_EQ(e.s.err.number, 0);
    EXPECT_TRUE(e.noReport());
}

TEST(Watcher, AlreadyResetIsNotSavedAgain) {
    WatchEnv e;
    auto item = e.arrive([](sim::Item& i) {
        i.addUserProperty(u"strPosted", sim::ol::DateTime, Variant(Date{949998.0}));
    });
    EXPECT_EQ(item->saveCount, 0);
    EXPECT_EQ(SimEnv::prop(item, u"strPosted"), Variant(Date{949998.0}));
}

TEST(Watcher, ItemWithoutThePropertyIsLeftAlone) {
    WatchEnv e;
    auto item = e.arrive([](sim::Item& i) {
        i.addUserProperty(u"other", sim::ol::DateTime, Variant(sim::makeDate(2024, 3, 31)));
    });
    EXPECT_EQ(item->saveCount, 0);
    EXPECT_EQ(SimEnv::prop(item, u"other"), Variant(sim::makeDate(2024, 3, 31)));
    EXPECT_EQ(SimEnv::prop(item, u"strPosted"), Variant::missing());
    EXPECT_EQ(e.s.err.number, 0);
}

TEST(Watcher, SaveFailureIsIgnoredAndCleared) {
    WatchEnv e;
    e.sc.instruments().failMember(u"Save");
    auto item = e.arrive([](sim::Item& i) {
        i.addUserProperty(u"strPosted", sim::ol::DateTime, Variant(sim::makeDate(2024, 3, 31)));
    });
    EXPECT_EQ(item->saveCount, 0);
    EXPECT_EQ(e.s.err.number, 0);
    EXPECT_TRUE(e.noReport());
}

TEST(Watcher, SavingTheItemAddsNothingSoNoSecondEvent) {
    WatchEnv e;
    auto item = e.arrive([](sim::Item& i) {
        i.addUserProperty(u"strPosted", sim::ol::DateTime, Variant(sim::makeDate(2024, 3, 31)));
    });
    e.sc.outlook().pump();
    EXPECT_EQ(item->saveCount, 1);
}

TEST(Watcher, OtherFoldersAreNotWatched) {
    WatchEnv e;
    auto inbox = e.sc.outlook().inbox();
    auto item =
        e.sc.outlook().make<sim::Item>(sim::ItemKind::Appointment, Str(sim::kAppointmentClass));
    item->addUserProperty(u"strPosted", sim::ol::DateTime, Variant(sim::makeDate(2024, 3, 31)));
    inbox->insert(item, true);
    e.sc.outlook().pump();
    EXPECT_EQ(item->saveCount, 0);
}

TEST(Watcher, DestructionStopsTheEvents) {
    WatchEnv e;
    EXPECT_EQ(e.cal->liveItemsCollections(), 1u);
    e.s.oAppointments.reset();
    auto item = e.arrive([](sim::Item& i) {
        i.addUserProperty(u"strPosted", sim::ol::DateTime, Variant(sim::makeDate(2024, 3, 31)));
    });
    EXPECT_EQ(item->saveCount, 0);
    EXPECT_EQ(e.sc.instruments().liveSubscriptionCount(), 0u);
}

TEST(Watcher, CreationWithoutCalendarRaises) {
    Env e;
    EXPECT_THROW(cAppointments a(e.s), AutomationError);
}

}  // namespace
}  // namespace hb::test
