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

Variant handleOf(Scenario& sc, const std::shared_ptr<Item>& item) {
    return sc.instruments().toAddin(sc.outlook().lookup(item), u"test");
}

// The stored item behind an object the add-in holds.
Item* storedOf(const Variant& v) {
    return &std::dynamic_pointer_cast<Item>(Instruments::simObject(v))->record();
}

TEST(SimItems, LookupsFindByTextOrFilterAndGiveANewObjectEachTime) {
    Scenario sc;
    auto cal = sc.outlook().calendar();
    auto a = cal->addAppointment(u"It's here", makeDate(2024, 1, 1, 9), makeDate(2024, 1, 1, 10));
    cal->addAppointment(u"It's here", makeDate(2024, 1, 2, 9), makeDate(2024, 1, 2, 10));
    Variant items = calendarHandle(sc).get(u"Items");
    Variant byText = items.call(u"", {Str(u"IT'S HERE")});
    Variant byFilter = items.call(u"Find", {Str(u"[Subject]='It''s here'")});
    EXPECT_EQ(storedOf(byText), a.get());
    EXPECT_EQ(storedOf(byFilter), a.get());
    EXPECT_FALSE(hb::sameObject(byText, byFilter));
    EXPECT_EQ(byText.get(u"EntryID"), byFilter.get(u"EntryID"));
    EXPECT_TRUE(items.call(u"Find", {Str(u"[Subject]='absent'")}).isNothing());
    EXPECT_THROW(items.call(u"Find", {Str(u"Subject = x")}), hb::AutomationError);
    try {
        items.call(u"", {Str(u"No such subject")});
        FAIL() << "Outlook raises for a missing item";
    } catch (const hb::AutomationError& e) {
        EXPECT_EQ(e.number(), kNotFoundNumber);
    }
}

TEST(SimItems, AChangeIsStoredBySaveAndLostWithoutIt) {
    Scenario sc;
    auto appt = sc.outlook().calendar()->addAppointment(u"A", makeDate(2024, 1, 1, 9),
                                                        makeDate(2024, 1, 1, 10), u"Acme");
    Variant first = handleOf(sc, appt);
    first.put(u"Categories", Str(u"Globex"));
    first.get(u"UserProperties").call(u"Add", {Str(u"strPosted"), std::int32_t{5}});
    EXPECT_FALSE(first.get(u"Saved").toBool());
    EXPECT_EQ(appt->categories, u"Acme");
    EXPECT_EQ(handleOf(sc, appt).get(u"Categories").toStr(), u"Acme");
    first.call(u"Save");
    EXPECT_TRUE(first.get(u"Saved").toBool());
    EXPECT_EQ(appt->categories, u"Globex");
    EXPECT_TRUE(appt->findUserProperty(u"strPosted"));
    EXPECT_EQ(handleOf(sc, appt).get(u"Categories").toStr(), u"Globex");

    // The item open in a window: every lookup reaches the window's copy.
    auto window = sc.openInspector(appt);
    handleOf(sc, appt).put(u"Subject", Str(u"B"));
    EXPECT_EQ(window->currentItem->subject, u"B");
    EXPECT_EQ(appt->subject, u"A");
    sc.saveItem(window);
    EXPECT_EQ(appt->subject, u"B");
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
    EXPECT_EQ(storedOf(rec.firstArgs[0]), storedOf(appt));
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

TEST(SimItems, ExceptionsAndOccurrencesReachTheirSeriesThroughParent) {
    Scenario sc;
    auto cal = sc.outlook().calendar();
    auto master = cal->addRecurringAppointment(u"Weekly", makeDate(2024, 1, 1, 9),
                                               makeDate(2024, 1, 1, 10), u"Acme");
    auto exc = master->addException(makeDate(2024, 1, 8, 11), makeDate(2024, 1, 8, 12));
    auto occ = master->occurrence(makeDate(2024, 1, 15, 9), makeDate(2024, 1, 15, 10));
    EXPECT_EQ(master->occurrence(makeDate(2024, 1, 15, 9), makeDate(2024, 1, 15, 10)), occ);
    struct Case {
        std::shared_ptr<Item> item;
        const char16_t* messageClass;
        std::int32_t state;
    };
    for (const Case& c : {Case{exc, kExceptionClass, 3}, Case{occ, kAppointmentClass, 2},
                          Case{master, kAppointmentClass, 1}}) {
        Variant h = handleOf(sc, c.item);
        EXPECT_EQ(h.get(u"MessageClass").toStr(), c.messageClass);
        EXPECT_EQ(h.get(u"RecurrenceState"), Variant(c.state));
        EXPECT_EQ(h.get(u"EntryID").toStr(), master->entryId);
        if (c.item != master) {
            EXPECT_EQ(storedOf(h.get(u"Parent")), master.get());
        }
    }
    // An occurrence reads its series; a change saved makes it an exception.
    master->setCategories(u"Globex");
    Variant h = handleOf(sc, occ);
    EXPECT_EQ(h.get(u"Categories").toStr(), u"Globex");
    h.call(u"Save");
    EXPECT_EQ(master->exceptions.size(), 1u);
    h.put(u"Location", Str(u"Room 2"));
    h.call(u"Save");
    EXPECT_EQ(master->exceptions.size(), 2u);
    EXPECT_EQ(h.get(u"RecurrenceState"), Variant(std::int32_t{3}));
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
    Variant props = handleOf(sc, appt).get(u"UserProperties");
    struct Case {
        const char16_t* name;
        std::int32_t type;
        Variant assigned, read;
    };
    for (const Case& c :
         {Case{u"SettingsCount", 3, std::int16_t{2}, 2.0}, Case{u"Count2", 3, Str(u"4"), 4.0},
          Case{u"Settings0", 1, 1.5, Str(u"1.5")},
          Case{u"strPosted", 5, hb::Date{949998.0}, hb::Date{949998.0}},
          Case{u"Flag", 6, Str(u"True"), true}}) {
        Variant p = props.call(u"Add", {Str(c.name), c.type});
        EXPECT_TRUE(p.get(u"Value").isEmpty());
        p.put(u"Value", c.assigned);
        EXPECT_EQ(p.get(u"Value"), c.read) << hb::toUtf8(c.name);
        EXPECT_EQ(p.get(u"Value").type(), c.read.type());
    }
    EXPECT_THROW(props.call(u"Find", {Str(u"settingscount")}).put(u"Value", Str(u"abc")),
                 hb::AutomationError);
    EXPECT_TRUE(props.call(u"Find", {Str(u"Missing")}).isNothing());
}

TEST(SimItems, AddingAnExistingUserPropertyOverwritesItWithAnEmptyOne) {
    Scenario sc;
    auto appt = sc.outlook().calendar()->addAppointment(u"A", makeDate(2024, 1, 1, 9),
                                                        makeDate(2024, 1, 1, 10));
    Variant item = handleOf(sc, appt);
    Variant props = item.get(u"UserProperties");
    props.call(u"Add", {Str(u"Settings0"), std::int32_t{1}}).put(u"Value", Str(u"old"));
    Variant again = props.call(u"Add", {Str(u"Settings0"), std::int32_t{1}});
    EXPECT_TRUE(again.get(u"Value").isEmpty());
    again.put(u"Value", Str(u"new"));
    EXPECT_EQ(props.get(u"Count"), Variant(std::int32_t{1}));
    item.call(u"Save");
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
    auto& item = sc.outlook().inspectors()[0]->currentItem;
    EXPECT_EQ(item->record().displayCount, 1);
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
