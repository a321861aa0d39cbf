// The simulated Office command bars and custom task panes.
#include <gtest/gtest.h>

#include "sim/Scenario.h"

namespace {

using hb::Args;
using hb::Str;
using hb::Variant;
using namespace sim;

Variant handle(Scenario& sc, const std::shared_ptr<SimObject>& o) {
    return sc.instruments().toAddin(Variant(hb::ObjectPtr(o)), u"test");
}

Variant missing() {
    return Variant::missing();
}

TEST(SimCommandBars, TemporaryBarsAndControlsVanishWhenOutlookQuits) {
    Scenario sc;
    sc.startOutlook();
    auto e = sc.explorer();
    Variant bars = handle(sc, e).get(u"CommandBars");
    Variant temp =
        bars.call(u"Add", {Str(u"Hourbook for Outlook Addin v4"), std::int32_t{1}, false, true});
    temp.get(u"Controls")
        .call(u"Add", {std::int32_t{4}, std::int32_t{1}, missing(), missing(), true});
    Variant kept = bars.call(u"Add", {Str(u"Kept"), std::int32_t{1}, false, false});
    Variant controls = kept.get(u"Controls");
    controls.call(u"Add", {std::int32_t{1}, std::int32_t{1}, missing(), missing(), true});
    controls.call(u"Add", {std::int32_t{1}, std::int32_t{1}, missing(), missing(), false});
    Variant menu = bars.get(u"ActiveMenuBar").get(u"Controls");
    menu.call(u"Add", {std::int32_t{10}, missing(), missing(), missing(), true})
        .put(u"Caption", Str(u"Hourbook for Outlook Addin v4"));
    std::size_t menuBefore = e->commandBars->menuBar()->controls->list.size();

    sc.quit();
    EXPECT_FALSE(Scenario::bar(*e, u"Hourbook for Outlook Addin v4"));
    auto keptBar = Scenario::bar(*e, u"Kept");
    ASSERT_TRUE(keptBar);
    EXPECT_EQ(keptBar->controls->list.size(), 1u);
    EXPECT_EQ(e->commandBars->menuBar()->controls->list.size(), menuBefore - 1);
    EXPECT_THROW(temp.get(u"Name"), hb::AutomationError);
}

TEST(SimCommandBars, AddingATakenNameRaises) {
    Scenario sc;
    sc.startOutlook();
    Variant bars = handle(sc, sc.explorer()).get(u"CommandBars");
    bars.call(u"Add", {Str(u"Mine"), std::int32_t{1}, false, true});
    EXPECT_THROW(bars.call(u"Add", {Str(u"Mine"), std::int32_t{1}, false, true}),
                 hb::AutomationError);
    EXPECT_EQ(bars.call(u"Item", {Str(u"mine")}).get(u"Name").toStr(), u"Mine");
}

TEST(SimCommandBars, ComboBoxChangeComesFromTheUserOnly) {
    Scenario sc;
    sc.startOutlook();
    Variant bar = handle(sc, sc.explorer())
                      .get(u"CommandBars")
                      .call(u"Add", {Str(u"Bar"), std::int32_t{1}, false, true});
    Variant combo =
        bar.get(u"Controls")
            .call(u"Add", {std::int32_t{4}, std::int32_t{1}, missing(), missing(), true});
    std::vector<std::pair<std::int32_t, Str>> changes;
    auto conn = combo.obj().subscribe(
        u"_CommandBarComboBoxEvents", std::make_shared<hb::FunctionSink>([&](const Str&, Args& a) {
            changes.emplace_back(a[0].get(u"ListIndex").toLong(), a[0].get(u"Text").toStr());
        }));
    combo.call(u"AddItem", {Str(u"Acme")});
    combo.call(u"AddItem", {Str(u"Globex")});
    combo.put(u"Text", Str(u"Globex"));  // from code: no Change
    EXPECT_EQ(combo.get(u"ListIndex"), Variant(std::int32_t{2}));
    EXPECT_TRUE(changes.empty());

    auto c = sc.explorer()->commandBars->find(u"Bar")->controls->list[0];
    sc.typeInCombo(c, u"Initech");
    sc.pickInCombo(c, u"Acme");
    EXPECT_EQ(changes, (std::vector<std::pair<std::int32_t, Str>>{{0, u"Initech"}, {1, u"Acme"}}));

    combo.call(u"Clear");
    EXPECT_EQ(combo.get(u"ListCount"), Variant(std::int32_t{0}));
    EXPECT_EQ(combo.get(u"Text").toStr(), u"");
    combo.put(u"Enabled", false);
    EXPECT_THROW(sc.typeInCombo(c, u"x"), ScenarioError);
}

// A click reaches every button of the same Tag, in every window.
TEST(SimCommandBars, ButtonClickPassesCancelDefaultByReferenceToEveryButtonOfItsTag) {
    Scenario sc;
    sc.startOutlook();
    auto second = sc.openExplorer(sc.outlook().calendar());
    auto addButton = [&](const std::shared_ptr<Explorer>& w, const Str& tag) {
        Variant b =
            handle(sc, w)
                .get(u"CommandBars")
                .call(u"Add", {Str(u"Bar"), std::int32_t{1}, false, true})
                .get(u"Controls")
                .call(u"Add", {std::int32_t{1}, std::int32_t{1}, missing(), missing(), true});
        b.put(u"Tag", tag);
        return b;
    };
    Variant button = addButton(sc.explorer(), u"HB"), twin = addButton(second, u"HB");
    Variant clicked;
    int clicks = 0;
    auto sink = std::make_shared<hb::FunctionSink>([&](const Str&, Args& a) {
        ++clicks;
        clicked = a[0];
        a[1].assign(true);
    });
    auto conn = button.obj().subscribe(u"_CommandBarButtonEvents", sink);
    auto b = second->commandBars->find(u"Bar")->controls->list[0];
    EXPECT_TRUE(sc.click(b));
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(Instruments::simObject(clicked), b);  // Ctrl: the button clicked
    twin.put(u"Tag", Str(u"Other"));
    EXPECT_FALSE(sc.click(b));
    EXPECT_EQ(clicks, 1);
    button.call(u"Delete");
    EXPECT_THROW(button.get(u"Caption"), hb::AutomationError);
}

struct PaneFixture : ::testing::Test {
    Scenario sc;
    std::shared_ptr<Item> appt;
    int controlsAlive = 0;
    void SetUp() override {
        appt = sc.outlook().calendar()->addAppointment(u"A", makeDate(2024, 1, 1, 9),
                                                       makeDate(2024, 1, 1, 10));
        sc.outlook().registerControl(u"HBAddin.pane", [this] {
            struct Control : hb::Object {
                int& alive;
                explicit Control(int& a) : alive(a) { ++alive; }
                ~Control() override { --alive; }
                Variant invoke(hb::CallKind, const Str&, Args&) override { return {}; }
                Str typeName() const override { return u"Pane"; }
            };
            return std::make_shared<Control>(controlsAlive);
        });
        sc.startOutlook(nullptr, ol::FolderCalendar);
    }
    Variant factory() { return handle(sc, sc.outlook().taskPaneFactory()); }
};

TEST_F(PaneFixture, CreateCtpMakesTheRegisteredControl) {
    auto in = sc.openInspector(appt);
    Variant pane =
        factory().call(u"CreateCTP", {Str(u"hbaddin.PANE"), Str(u"Title"), handle(sc, in)});
    EXPECT_EQ(controlsAlive, 1);
    EXPECT_EQ(pane.get(u"ContentControl").obj().typeName(), u"Pane");
    EXPECT_EQ(pane.get(u"Visible"), Variant(false));
    EXPECT_THROW(factory().call(u"CreateCTP", {Str(u"No.Such"), Str(u"T"), handle(sc, in)}),
                 hb::AutomationError);
    sc.close(in);  // the pane and its control go with the window
    EXPECT_EQ(controlsAlive, 0);
    EXPECT_THROW(pane.get(u"Width"), hb::AutomationError);
}

// The events come after the calls that caused them, each reading the pane
// as it is by then.
TEST_F(PaneFixture, ProgrammaticDockAndSizeChangesPostDockPositionStateChange) {
    auto in = sc.openInspector(appt);
    Variant pane = factory().call(u"CreateCTP", {Str(u"HBAddin.pane"), Str(u"T"), handle(sc, in)});
    std::vector<std::tuple<std::int32_t, std::int32_t, std::int32_t>> seen;
    auto conn = pane.obj().subscribe(
        u"_CustomTaskPaneEvents", std::make_shared<hb::FunctionSink>([&](const Str& m, Args& a) {
            if (m != u"DockPositionStateChange") return;
            seen.emplace_back(a[0].get(u"DockPosition").toLong(), a[0].get(u"Width").toLong(),
                              a[0].get(u"Height").toLong());
        }));
    pane.put(u"DockPosition", std::int32_t{4});  // floating
    pane.put(u"Width", std::int32_t{185});
    pane.put(u"Height", std::int32_t{600});
    pane.put(u"Height", std::int32_t{600});  // no change, no event
    EXPECT_TRUE(seen.empty());
    sc.pump();
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0], std::make_tuple(4, 185, 600));

    pane.put(u"DockPosition", std::int32_t{2});  // right: the height is Office's
    EXPECT_THROW(pane.put(u"Height", std::int32_t{300}), hb::AutomationError);
    pane.put(u"DockPosition", std::int32_t{3});  // bottom: the width is Office's
    EXPECT_THROW(pane.put(u"Width", std::int32_t{300}), hb::AutomationError);

    sc.pump();
    seen.clear();
    auto p = in->panes.at(0);
    sc.resizePane(p, 999, 250);  // docked at the bottom: the user drags the height
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(std::get<2>(seen[0]), 250);
    sc.dockPane(p, mso::DockLeft);
    EXPECT_EQ(std::get<0>(seen.back()), 0);
}

}  // namespace
