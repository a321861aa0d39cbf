// The simulation's instruments: call log, fault injection, census; and the
// generic automation object they stand on.
#include <gtest/gtest.h>

#include "common/DispatchObject.h"
#include "sim/Scenario.h"

namespace {

using hb::Args;
using hb::Str;
using hb::Variant;
using namespace sim;

Variant appHandle(Scenario& sc) {
    return sc.instruments().toAddin(Variant(hb::ObjectPtr(sc.outlook().application())), u"test");
}

TEST(SimInstruments, EveryCallIsLoggedAndCounted) {
    Scenario sc;
    Variant app = appHandle(sc);
    Variant ns = app.call(u"GetNamespace", {Str(u"MAPI")});
    ns.call(u"GetDefaultFolder", {std::int32_t{9}}).get(u"EntryID");
    EXPECT_EQ(sc.instruments().callCount(), 3u);
    EXPECT_EQ(sc.instruments().count(u"NameSpace", u"getdefaultfolder"), 1u);
    EXPECT_EQ(sc.instruments().count(u"EntryID"), 1u);
    EXPECT_EQ(sc.instruments().log()[2].typeName, u"MAPIFolder");
    EXPECT_NE(sc.instruments().logText().find("call Application.GetNamespace"), std::string::npos);
}

TEST(SimInstruments, TheNthCallFails) {
    Scenario sc;
    sc.instruments().failCall(2, 287, u"Application-defined or object-defined error");
    Variant app = appHandle(sc);
    Variant ns = app.call(u"GetNamespace", {Str(u"MAPI")});
    try {
        ns.call(u"GetDefaultFolder", {std::int32_t{9}});
        FAIL();
    } catch (const hb::AutomationError& e) {
        EXPECT_EQ(e.number(), 287);
    }
    EXPECT_NO_THROW(ns.call(u"GetDefaultFolder", {std::int32_t{9}}));  // call 3
    EXPECT_EQ(sc.instruments().faultsInjected(), 1u);
    EXPECT_EQ(sc.instruments().lastFault()->member, u"GetDefaultFolder");
}

TEST(SimInstruments, EveryCallOfAMemberFails) {
    Scenario sc;
    auto appt = sc.outlook().calendar()->addAppointment(u"A", makeDate(2024, 1, 1, 9),
                                                        makeDate(2024, 1, 1, 10));
    sc.instruments().failMember(u"Save", u"AppointmentItem");
    Variant h = sc.instruments().toAddin(Variant(hb::ObjectPtr(appt)), u"test");
    EXPECT_THROW(h.call(u"Save"), hb::AutomationError);
    EXPECT_THROW(h.call(u"save"), hb::AutomationError);
    EXPECT_EQ(appt->saveCount, 0);
    EXPECT_NO_THROW(h.get(u"Subject"));
}

TEST(SimInstruments, FaultSweepFailsEachCallInTurn) {
    std::vector<std::uint64_t> failedAt;
    auto n = faultSweep(
        [](Scenario& sc) {
            try {
                Variant app = appHandle(sc);
                app.call(u"GetNamespace", {Str(u"MAPI")})
                    .call(u"GetDefaultFolder", {std::int32_t{9}})
                    .get(u"Items")
                    .get(u"Count");
            } catch (const hb::AutomationError&) {
            }
        },
        [&](Scenario& sc, std::uint64_t k) {
            ASSERT_TRUE(sc.instruments().lastFault());
            failedAt.push_back(sc.instruments().lastFault()->number);
            EXPECT_EQ(sc.instruments().callCount(), k);  // the scenario stops at the failure
        });
    EXPECT_EQ(n, 4u);
    EXPECT_EQ(failedAt, (std::vector<std::uint64_t>{1, 2, 3, 4}));
}

TEST(SimInstruments, CensusCountsWhatTheAddinStillHolds) {
    Scenario sc;
    Variant leaked;
    std::vector<hb::EventConnection> kept;
    auto addin = std::make_shared<CallbackAddin>();
    Variant app;
    addin->connection = [&](const Variant& a, std::int32_t, const Variant&) {
        app = a;
        kept.push_back(a.obj().subscribe(
            u"ApplicationEvents", std::make_shared<hb::FunctionSink>([](const Str&, Args&) {})));
    };
    addin->disconnection = [&](std::int32_t) {
        leaked = app.call(u"GetNamespace", {Str(u"MAPI")});  // forgotten
        app = Variant();
    };
    sc.startOutlook(addin);
    sc.quit();
    auto census = sc.instruments().census();
    ASSERT_EQ(census.size(), 2u) << hb::toUtf8(census.size() ? census[0] : Str());
    EXPECT_EQ(census[0], u"NameSpace from Application.GetNamespace");
    EXPECT_EQ(census[1], u"subscription to ApplicationEvents of Application");

    leaked = Variant();
    kept.clear();
    EXPECT_TRUE(sc.instruments().census().empty());
    EXPECT_EQ(sc.instruments().liveHandleCount(), 0u);
}

TEST(SimInstruments, EventArgumentsAndEnumerationHandOutFreshHandles) {
    Scenario sc;
    auto cal = sc.outlook().calendar();
    cal->addAppointment(u"A", makeDate(2024, 1, 1, 9), makeDate(2024, 1, 1, 10));
    cal->addAppointment(u"B", makeDate(2024, 1, 1, 11), makeDate(2024, 1, 1, 12));
    Variant items = appHandle(sc)
                        .call(u"GetNamespace", {Str(u"MAPI")})
                        .call(u"GetDefaultFolder", {std::int32_t{9}})
                        .get(u"Items");
    std::size_t before = sc.instruments().liveHandleCount();
    {
        auto all = items.obj().enumerate();
        ASSERT_EQ(all.size(), 2u);
        EXPECT_EQ(sc.instruments().liveHandleCount(), before + 2);
        // A new object for the same item, as Outlook gives: equal EntryIDs.
        Variant again = items.call(u"Item", {std::int32_t{1}});
        EXPECT_FALSE(hb::sameObject(all[0], again));
        EXPECT_EQ(all[0].get(u"EntryID"), again.get(u"EntryID"));
        EXPECT_EQ(all[1].get(u"Subject").toStr(), u"B");
    }
    EXPECT_EQ(sc.instruments().liveHandleCount(), before);
    EXPECT_EQ(sc.instruments().count(u"_NewEnum"), 1u);
}

// ---- the generic automation object ----

class Counter : public hb::DispatchObject {
  public:
    Counter() : DispatchObject(u"Counter", table()) {}
    std::int32_t value = 0;
    void bump() {
        Args args{Variant(value)};
        fire(u"CounterEvents", u"Bumped", args);
    }

  private:
    static std::shared_ptr<const hb::MemberTable> table() {
        static const auto t =
            hb::Members<Counter>()
                .prop(
                    u"Value", [](Counter& c) { return c.value; },
                    [](Counter& c, const Variant& v) { c.value = v.toLong(); })
                .method(u"Add",
                        [](Counter& c, Args& a) { c.value += hb::requiredArg(a, 0).toLong(); })
                .get(u"Twice",
                     [](Counter& c, Args& a) { return c.value * hb::argAt(a, 0).toLong(); })
                .defaultMember(u"Value")
                .events(u"CounterEvents")
                .build();
        return t;
    }
};

TEST(DispatchObject, MembersByNameWithoutRegardToCase) {
    auto c = std::make_shared<Counter>();
    Variant v{hb::ObjectPtr(c)};
    v.put(u"VALUE", std::int32_t{4});
    v.call(u"add", {std::int32_t{1}});
    EXPECT_EQ(v.get(u""), Variant(std::int32_t{5}));
    EXPECT_EQ(v.get(u"Twice", {std::int32_t{3}}), Variant(std::int32_t{15}));
    try {
        v.get(u"Nope");
        FAIL();
    } catch (const hb::AutomationError& e) {
        EXPECT_EQ(e.number(), 438);
    }
    EXPECT_THROW(v.put(u"Add", std::int32_t{1}), hb::AutomationError);
    EXPECT_THROW(v.call(u"Add"), hb::AutomationError);  // argument not optional
    EXPECT_THROW(c->subscribe(u"OtherEvents", std::make_shared<hb::FunctionSink>(nullptr)),
                 hb::AutomationError);
}

TEST(DispatchObject, EventsReachSinksInSubscriptionOrderUntilDisconnected) {
    auto c = std::make_shared<Counter>();
    std::vector<int> order;
    hb::EventConnection second;
    auto first =
        c->subscribe(u"counterevents", std::make_shared<hb::FunctionSink>([&](const Str&, Args&) {
                         order.push_back(1);
                         second.disconnect();  // the later sink hears nothing more
                     }));
    second = c->subscribe(u"CounterEvents", std::make_shared<hb::FunctionSink>(
                                                [&](const Str&, Args&) { order.push_back(2); }));
    c->bump();
    EXPECT_EQ(order, std::vector<int>{1});
    first.disconnect();
    c->bump();
    EXPECT_EQ(order, std::vector<int>{1});
    EXPECT_EQ(c->sinkCount(), 0u);
}

}  // namespace
