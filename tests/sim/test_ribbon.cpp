// The simulated Office ribbon: which XML it refuses, and how it calls an
// add-in's callbacks.
#include <gtest/gtest.h>

#include "common/DispatchObject.h"
#include "sim/Scenario.h"

namespace {

using hb::Args;
using hb::Str;
using hb::Variant;
using namespace sim;

// An add-in whose dispatch serves a fixed XML and records the callbacks.
class XmlAddin : public hb::DispatchObject {
  public:
    explicit XmlAddin(Str xml) : DispatchObject(u"Addin", table()), xml_(std::move(xml)) {}
    std::vector<Str> calls;
    Variant ribbonUI;

  private:
    static std::shared_ptr<const hb::MemberTable> table() {
        static const auto t =
            hb::Members<XmlAddin>()
                .method(u"GetCustomUI", [](XmlAddin& a) { return a.xml_; })
                .method(u"onLoad",
                        [](XmlAddin& a, Args& args) {
                            a.calls.push_back(u"onLoad");
                            a.ribbonUI = args.at(0);
                        })
                .method(u"getVisible",
                        [](XmlAddin& a, Args& args) {
                            a.calls.push_back(u"getVisible " + args.at(0).get(u"Id").toStr());
                            return true;
                        })
                .method(u"getLabel",
                        [](XmlAddin& a, Args& args) {
                            a.calls.push_back(u"getLabel " + args.at(0).get(u"Id").toStr());
                            // Context is the window the control is in.
                            return args.at(0).get(u"Context").get(u"Class").toStr();
                        })
                .method(u"getItemCount", [](XmlAddin&) { return std::int32_t{2}; })
                .method(u"getItemLabel",
                        [](XmlAddin&, Args& args) { return u"Item " + args.at(1).toStr(); })
                .method(u"getItemID",
                        [](XmlAddin&, Args& args) { return u"i" + args.at(1).toStr(); })
                .method(u"getSelectedItemIndex", [](XmlAddin&) { return Str(u"wrong type"); })
                .method(u"onAction",
                        [](XmlAddin& a, Args& args) {
                            Str call = u"onAction " + args.at(0).get(u"Id").toStr();
                            for (std::size_t i = 1; i < args.size(); ++i)
                                call += u" " + args[i].toStr();
                            a.calls.push_back(call);
                        })
                .build();
        return t;
    }
    Str xml_;
};

class XmlAddinHost : public CallbackAddin {
  public:
    explicit XmlAddinHost(std::shared_ptr<XmlAddin> a) : addin(std::move(a)) {}
    hb::ObjectPtr ribbonExtensibility() override { return addin; }
    std::shared_ptr<XmlAddin> addin;
};

Str customUI(const Str& ns, const Str& group) {
    return u"<?xml version=\"1.0\"?><customUI xmlns=\"" + ns +
           u"\" onLoad=\"onLoad\"><ribbon><tabs><tab idMso=\"TabCalendarHome\">" + group +
           u"</tab></tabs></ribbon></customUI>";
}

constexpr char16_t k2009[] = u"http://schemas.microsoft.com/office/2009/07/customui";

TEST(SimRibbon, RefusesTheXmlOfficeRefusesAndShowsNothing) {
    struct Case {
        const char* name;
        Str xml;
        const char16_t* reason;  // empty: accepted
    };
    const Str good =
        u"<group id=\"g\" getVisible=\"getVisible\"><button id=\"b\" "
        u"getLabel=\"getLabel\" onAction=\"onAction\"/></group>";
    const std::vector<Case> cases = {
        {"accepted", customUI(k2009, good), u""},
        {"2006 namespace", customUI(u"http://schemas.microsoft.com/office/2006/01/customui", good),
         u""},
        {"wrong namespace", customUI(u"http://example.com/ui", good), u"wrong namespace"},
        {"unknown element", customUI(k2009, u"<group id=\"g\"><knob id=\"k\"/></group>"),
         u"unknown element knob"},
        {"duplicate id",
         customUI(k2009, u"<group id=\"g\"><button id=\"b\"/><button id=\"b\"/></group>"),
         u"duplicate id b"},
        {"missing callback", customUI(k2009, u"<group id=\"g\" getEnabled=\"nowhere\"/>"),
         u"missing callback nowhere"},
        {"not well formed", customUI(k2009, u"<group id=\"g\">"), u"not well formed"},
        {"no ribbon", Str(), u"no ribbon"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Scenario sc;
        sc.outlook().version = u"16.0.4266.1001";
        auto addin = std::make_shared<XmlAddin>(c.xml);
        sc.startOutlook(std::make_shared<XmlAddinHost>(addin), ol::FolderCalendar);
        ASSERT_NE(sc.ribbon(), nullptr);
        const Str reason = c.reason;
        if (reason.empty()) {
            EXPECT_EQ(sc.ribbon()->loadError, u"");
            EXPECT_TRUE(sc.ribbon()->groupShown(*sc.explorer()));
            EXPECT_EQ(addin->calls.front(), u"onLoad");
        } else {
            EXPECT_EQ(sc.ribbon()->loadError.rfind(reason, 0), 0u)
                << hb::toUtf8(sc.ribbon()->loadError);
            EXPECT_FALSE(sc.ribbon()->groupShown(*sc.explorer()));
            EXPECT_TRUE(addin->calls.empty());
        }
        addin->ribbonUI = Variant();
        sc.quit();
    }
}

TEST(SimRibbon, CallsTheCallbacksByNameWithTheControlAndInvalidatesOnRequest) {
    Scenario sc;
    sc.outlook().version = u"14.0.4760.1000";
    auto addin = std::make_shared<XmlAddin>(customUI(
        k2009,
        u"<group id=\"g\" getVisible=\"getVisible\"><dropDown id=\"d\" tag=\"t\" "
        u"getLabel=\"getLabel\" getItemCount=\"getItemCount\" getItemLabel=\"getItemLabel\" "
        u"getItemID=\"getItemID\" getSelectedItemIndex=\"getSelectedItemIndex\" "
        u"onAction=\"onAction\"/><button id=\"b\" onAction=\"onAction\"/></group>"));
    sc.startOutlook(std::make_shared<XmlAddinHost>(addin), ol::FolderCalendar);
    auto e = sc.explorer();
    Ribbon& ribbon = *sc.ribbon();
    EXPECT_EQ(addin->calls, (std::vector<Str>{u"onLoad", u"getVisible g", u"getLabel d"}));
    const auto* d = ribbon.view(*e, u"d");
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->label, u"34");  // olExplorer
    EXPECT_EQ(d->items, (std::vector<std::pair<Str, Str>>{{u"i0", u"Item 0"}, {u"i1", u"Item 1"}}));
    // getSelectedItemIndex answered with text: Office takes it as a fault.
    EXPECT_EQ(ribbon.typeErrors, 1u);

    sc.ribbonPick(e, u"d", 1);
    sc.ribbonPress(e, u"b");
    EXPECT_EQ(addin->calls.back(), u"onAction b");
    EXPECT_EQ(addin->calls[addin->calls.size() - 2], u"onAction d i1 1");

    // Only the invalidated control is asked again; an unknown id raises.
    addin->calls.clear();
    addin->ribbonUI.call(u"InvalidateControl", {Variant(Str(u"d"))});
    sc.pump();
    EXPECT_EQ(addin->calls, (std::vector<Str>{u"getLabel d"}));
    EXPECT_THROW(addin->ribbonUI.call(u"InvalidateControl", {Variant(Str(u"x"))}),
                 hb::AutomationError);
    addin->ribbonUI.call(u"Invalidate");
    addin->calls.clear();
    sc.pump();
    EXPECT_EQ(addin->calls, (std::vector<Str>{u"getVisible g", u"getLabel d"}));
    // Outside a calendar the tab and its group are not shown.
    sc.switchFolder(e, sc.outlook().inbox());
    EXPECT_FALSE(ribbon.groupShown(*e));
    addin->ribbonUI = Variant();
    sc.quit();
}

TEST(SimRibbon, OutlookBefore2010AsksForNoRibbon) {
    Scenario sc;
    sc.outlook().version = u"12.0.4518.1014";
    auto addin = std::make_shared<XmlAddin>(customUI(k2009, u"<group id=\"g\"/>"));
    sc.startOutlook(std::make_shared<XmlAddinHost>(addin), ol::FolderCalendar);
    EXPECT_EQ(sc.ribbon(), nullptr);
    EXPECT_TRUE(addin->calls.empty());
    sc.quit();
}

}  // namespace
