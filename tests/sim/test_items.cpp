// The simulated Outlook's folders, items and user properties as the add-in
// sees them: through Handles, with Outlook's lookups, typing and events.
#include <gtest/gtest.h>

#include "sim/Scenario.h"

namespace {

using hb::Args;
using hb::Str;
using hb::Variant;
using namespace sim;

// What the add-in would hold: the Application as a Handle.
Variant appHandle(Scenario& sc) {
    return sc.instruments().toAddin(Variant(hb::ObjectPtr(sc.outlook().application())), u"test");
}

Variant calendarHandle(Scenario& sc) {
    return appHandle(sc)
        .call(u"GetNamespace", {Str(u"MAPI")})
        .call(u"GetDefaultFolder", {std::int32_t{9}});
}

struct Recorder {
    std::vector<Str> events;
    std::vector<Variant> firstArgs;
    std::shared_ptr<hb::EventSink> sink() {
        return std::make_shared<hb::FunctionSink>([this](const Str& member, Args& args) {
            events.push_back(member);
            firstArgs.push_back(args.empty() ? Variant() : args[0]);
        });
    }
};

TEST(SimItems, DefaultLookupByTextFindsTheItemWhoseSubjectIsTheText) {
    Scenario sc;
    auto cal = sc.outlook().calendar();
    cal->addAppointment(u"Other", makeDate(2024, 1, 1, 9), makeDate(2024, 1, 1, 10));
    auto settings = cal->addAppointment(u"Outlook Hourbook 3 Personal Settings",
                                        makeDate(2050, 1, 1, 0, 1), makeDate(2050, 1, 1, 0, 2));
    Variant items = calendarHandle(sc).get(u"Items");
    Variant found = items.call(u"", {Str(u"outlook hourbook 3 personal settings")});
    EXPECT_EQ(found.obj().identity(), settings->identity());

    try {
        items.call(u"", {Str(u"No such subject")});
        FAIL() << "Outlook raises for a missing item";
    } catch (const hb::AutomationError& e) {
        EXPECT_EQ(e.number(), kNotFoundNumber);
    }
}

TEST(SimItems, FindReturnsFirstMatchOrNothing) {
    Scenario sc;
    auto cal = sc.outlook().calendar();
    auto a = cal->addAppointment(u"It's here", makeDate(2024, 1, 1, 9), makeDate(2024, 1, 1, 10));
    cal->addAppointment(u"It's here", makeDate(2024, 1, 2, 9), makeDate(2024, 1, 2, 10));
    Variant items = calendarHandle(sc).get(u"Items");
    Variant hit = items.call(u"Find", {Str(u"[Subject]='It''s here'")});
    EXPECT_EQ(hit.obj().identity(), a->identity());
    EXPECT_TRUE(items.call(u"Find", {Str(u"[Subject]='absent'")}).isNothing());
    EXPECT_THROW(items.call(u"Find", {Str(u"Subject = x")}), hb::AutomationError);
}

TEST(SimItems, ItemAddOnFirstSaveOfAnAddedItemNotOnLaterSaves) {
    Scenario sc;
    Variant items = calendarHandle(sc).get(u"Items");
    Recorder rec;
    auto conn = items.obj().subscribe(u"ItemsEvents", rec.sink());

    Variant appt = items.call(u"Add", {Str(u"IPM.Appointment")});
    EXPECT_EQ(appt.get(u"EntryID").toStr(), u"");
    EXPECT_EQ(sc.outlook().calendar()->items.size(), 0u);  // not in the folder before Save
    appt.put(u"Subject", Str(u"New"));
    appt.call(u"Save");
    sc.pump();
    ASSERT_EQ(rec.events, std::vector<Str>{u"ItemAdd"});
    EXPECT_TRUE(hb::sameObject(rec.firstArgs[0], appt));
    EXPECT_NE(appt.get(u"EntryID").toStr(), u"");

    appt.call(u"Save");
    sc.pump();
    EXPECT_EQ(rec.events, (std::vector<Str>{u"ItemAdd", u"ItemChange"}));
    auto item = sc.outlook().calendar()->findBySubject(u"New");
    ASSERT_TRUE(item);
    EXPECT_EQ(item->saveCount, 2);
}

TEST(SimItems, ItemAddReachesOnlyItemsCollectionsStillHeld) {
    Scenario sc;
    Variant cal = calendarHandle(sc);
    Recorder held, dropped;
    Variant keep = cal.get(u"Items");
    auto c1 = keep.obj().subscribe(u"ItemsEvents", held.sink());
    {
        Variant temp = cal.get(u"Items");
        auto c2 = temp.obj().subscribe(u"ItemsEvents", dropped.sink());
        c2.disconnect();
    }
    auto src = sc.outlook().inbox()->addMail(u"Copied");
    sc.copyItem(src);
    EXPECT_EQ(held.events.size(), 1u);
    EXPECT_TRUE(dropped.events.empty());
}

TEST(SimItems, ExceptionOfASeriesReachesItsMasterThroughParent) {
    Scenario sc;
    auto cal = sc.outlook().calendar();
    auto master = cal->addRecurringAppointment(u"Weekly", makeDate(2024, 1, 1, 9),
                                               makeDate(2024, 1, 1, 10), u"Acme");
    auto exc = master->addException(makeDate(2024, 1, 8, 11), makeDate(2024, 1, 8, 12));
    Variant h = sc.instruments().toAddin(Variant(hb::ObjectPtr(exc)), u"test");
    EXPECT_EQ(h.get(u"MessageClass").toStr(),
              u"IPM.OLE.CLASS.{00061055-0000-0000-C000-000000000046}");
    Variant parent = h.get(u"Parent");
    EXPECT_EQ(parent.obj().identity(), master->identity());
    EXPECT_EQ(parent.get(u"Categories").toStr(), u"Acme");
}

TEST(SimItems, CategoriesAreKeptAsKeywords) {
    Scenario sc;
    auto appt = sc.outlook().calendar()->addAppointment(u"A", makeDate(2024, 1, 1, 9),
                                                        makeDate(2024, 1, 1, 10));
    Variant h = sc.instruments().toAddin(Variant(hb::ObjectPtr(appt)), u"test");
    h.put(u"Categories", Str(u",Acme,Smith,,acme, Travel"));
    EXPECT_EQ(h.get(u"Categories").toStr(), u"Acme, Smith, Travel");
    sc.outlook().listSeparator = Str(1, u';');  // GCC 12 -Wrestrict misfires on = u";"
    h.put(u"Categories", Str(u";Acme;Smith"));
    EXPECT_EQ(appt->categories, u"Acme; Smith");
}

TEST(SimItems, UserPropertyValuesTakeTheirPropertysType) {
    Scenario sc;
    auto appt = sc.outlook().calendar()->addAppointment(u"A", makeDate(2024, 1, 1, 9),
                                                        makeDate(2024, 1, 1, 10));
    Variant props =
        sc.instruments().toAddin(Variant(hb::ObjectPtr(appt)), u"test").get(u"UserProperties");
    Variant count = props.call(u"Add", {Str(u"SettingsCount"), std::int32_t{3}});
    EXPECT_TRUE(count.get(u"Value").isEmpty());
    count.put(u"Value", std::int16_t{2});
    EXPECT_EQ(count.get(u"Value").type(), Variant::Type::Double);
    count.put(u"Value", Str(u"4"));
    EXPECT_EQ(count.get(u"Value"), Variant(4.0));
    EXPECT_THROW(count.put(u"Value", Str(u"abc")), hb::AutomationError);

    Variant text = props.call(u"Add", {Str(u"Settings0"), std::int32_t{1}});
    text.put(u"Value", 1.5);
    EXPECT_EQ(text.get(u"Value").type(), Variant::Type::String);

    Variant when = props.call(u"Add", {Str(u"strPosted"), std::int32_t{5}});
    when.put(u"Value", hb::Date{949998.0});
    EXPECT_EQ(when.get(u"Value"), Variant(hb::Date{949998.0}));

    Variant yes = props.call(u"Add", {Str(u"Flag"), std::int32_t{6}});
    yes.put(u"Value", Str(u"True"));
    EXPECT_EQ(yes.get(u"Value"), Variant(true));

    EXPECT_TRUE(props.call(u"Find", {Str(u"Missing")}).isNothing());
    EXPECT_EQ(props.call(u"Find", {Str(u"settingscount")}).get(u"Value"), Variant(4.0));
}

TEST(SimItems, AddingAnExistingUserPropertyOverwritesItWithAnEmptyOne) {
    Scenario sc;
    auto appt = sc.outlook().calendar()->addAppointment(u"A", makeDate(2024, 1, 1, 9),
                                                        makeDate(2024, 1, 1, 10));
    Variant props =
        sc.instruments().toAddin(Variant(hb::ObjectPtr(appt)), u"test").get(u"UserProperties");
    props.call(u"Add", {Str(u"Settings0"), std::int32_t{1}}).put(u"Value", Str(u"old"));
    Variant again = props.call(u"Add", {Str(u"Settings0"), std::int32_t{1}});
    EXPECT_TRUE(again.get(u"Value").isEmpty());
    again.put(u"Value", Str(u"new"));
    EXPECT_EQ(props.get(u"Count"), Variant(std::int32_t{1}));
    EXPECT_EQ(appt->findUserProperty(u"Settings0")->value, Variant(Str(u"new")));
    // Another type under the same name is refused.
    EXPECT_THROW(props.call(u"Add", {Str(u"Settings0"), std::int32_t{3}}), hb::AutomationError);
}

TEST(SimItems, MailItemDisplayOpensAnInspectorAndIsCounted) {
    Scenario sc;
    sc.startOutlook();
    Variant mail = appHandle(sc).call(u"CreateItem", {std::int32_t{0}});
    mail.put(u"To", Str(u"support@hourbook.invalid"));
    mail.put(u"Subject", Str(u"Error report"));
    mail.call(u"Display");
    ASSERT_EQ(sc.outlook().inspectors().size(), 1u);
    auto item = sc.outlook().inspectors()[0]->currentItem;
    EXPECT_EQ(item->displayCount, 1);
    EXPECT_EQ(item->to, u"support@hourbook.invalid");
    EXPECT_EQ(item->messageClass, u"IPM.Note");
}

TEST(SimItems, MeetingItemHasNoStart) {
    Scenario sc;
    auto m = sc.outlook().calendar()->addMeetingRequest(u"Invitation");
    Variant h = sc.instruments().toAddin(Variant(hb::ObjectPtr(m)), u"test");
    EXPECT_EQ(h.get(u"MessageClass").toStr(), u"IPM.Schedule.Meeting.Request");
    try {
        h.get(u"Start");
        FAIL();
    } catch (const hb::AutomationError& e) {
        EXPECT_EQ(e.number(), 438);
    }
}

TEST(SimItems, RootFolderParentIsTheNameSpace) {
    Scenario sc;
    sc.outlook().addStore(u"Postfach - Hans Müller");
    sc.outlook().addStore(u"Personal Folders");
    Variant cal = calendarHandle(sc);
    Variant root = cal.get(u"Parent");
    EXPECT_EQ(root.get(u"Name").toStr(), u"Postfach - Hans Müller");
    EXPECT_EQ(root.get(u"Parent").obj().typeName(), u"NameSpace");
    EXPECT_EQ(cal.get(u"StoreID"), root.get(u"StoreID"));
    Variant ns = appHandle(sc).call(u"GetNamespace", {Str(u"MAPI")});
    EXPECT_EQ(ns.get(u"Folders").get(u"Count"), Variant(std::int32_t{2}));
}

}  // namespace
