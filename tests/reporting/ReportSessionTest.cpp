// The report program joins Outlook as another program does and reads the
// user's settings through cPersonalSettings, against the simulated Outlook
// and the memory platform; it leaves the mailbox as it was.
#include "reporting/ReportSession.h"

#include <gtest/gtest.h>

#include "settings/SimSupport.h"
#include "settings/cPersonalSettings.h"
#include "support/ErrorOf.h"
#include "support/ShippedLanguage.h"

namespace hb::reporting {
namespace {

using test::raisedBy;

using test::SimEnv;

struct ReportEnv : SimEnv {
    Variant app;
    ReportEnv() {
        cal->addAppointment(u"Client call", sim::makeDate(2024, 5, 6, 11),
                            sim::makeDate(2024, 5, 6, 12), u"Globex, Jones");
        app = handle(sc.outlook().application());
        // The program carries the add-in's phrase table as its own resource.
        platform.setResource(u"CUSTOM", u"LANGUAGE", hbtest::shippedLanguageResource());
        s.strListSeparator.clear();
    }
    void storeSetting(const char16_t* name, const Str& value) {
        platform.setString(test::kSettingsKey, name, value);
    }
};

TEST(ReportSession, TheRunningOutlookIsTakenBeforeANewOneIsStarted) {
    const struct {
        const char* what;
        bool running, creatable;
        std::vector<Str> created;
    } cases[] = {
        {"running", true, true, {}},
        {"started", false, true, {u"Outlook.Application"}},
    };
    for (const auto& c : cases) {
        ReportEnv env;
        if (c.running) env.platform.setActiveObject(u"Outlook.Application", env.app);
        if (c.creatable) env.platform.setCreatableObject(u"Outlook.Application", env.app);
        const Variant got = reachOutlook(env.platform);
        EXPECT_TRUE(sameObject(got, env.app)) << c.what;
        EXPECT_EQ(env.platform.activeObjectRequests(), std::vector<Str>{u"Outlook.Application"})
            << c.what;
        EXPECT_EQ(env.platform.createObjectRequests(), c.created) << c.what;
    }
}

TEST(ReportSession, NoOutlookAtAllRaises429) {
    ReportEnv env;
    const auto error = raisedBy([&] { reachOutlook(env.platform); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->number(), 429);
}

TEST(ReportSession, TheSessionHoldsTheCalendarTheUserAndTheStoredSettings) {
    ReportEnv env;
    env.storeSetting(u"ReportChoice", u"2");
    env.storeSetting(u"ReportValue", u"C:\\Users\\John\\Documents\\My Hourbooks\\");
    env.storeSetting(u"PersonalRate", u"85");
    env.storeSetting(u"FilterPrivate", u"True");
    env.storeSetting(u"FilterEvents", u"False");
    env.storeSetting(u"FilterRecurring", u"True");
    env.storeSetting(u"Convert24", u"True");
    env.storeSetting(u"Convert24Hours", u"8");
    env.storeSetting(u"RemoveLunch", u"False");
    env.storeSetting(u"RemoveLunchHours", u"1");
    env.storeSetting(u"MetadataList",
                     u"Company:Acme;Globex;\r\nPerson:Smith;Jones;\r\nExtra Field:Travel;\r\n");
    const std::size_t items = env.cal->items.size();

    prepareReportSession(env.s, env.app);

    EXPECT_TRUE(env.noReport());
    EXPECT_TRUE(sameObject(env.s.olApp, env.app));
    EXPECT_EQ(env.s.strCalendarEntryID, env.cal->entryId);
    EXPECT_FALSE(env.s.strCalendarEntryID.empty());
    EXPECT_EQ(env.s.strCurrentUser, u"John Smith");
    EXPECT_FALSE(env.s.strListSeparator.empty());
    ASSERT_TRUE(env.s.oPersonalSettings);
    const cPersonalSettings& p = *env.s.oPersonalSettings;
    EXPECT_EQ(p.lngReportChoice, 2);
    EXPECT_EQ(p.curPersonalRate, Variant(85).toCurrency());
    EXPECT_TRUE(p.blnFilterPrivate);
    EXPECT_FALSE(p.blnFilterEvents);
    EXPECT_TRUE(p.blnFilterRecurring);
    EXPECT_TRUE(p.blnConvert24);
    ASSERT_EQ(p.MetaDataLists.size(), 3u);
    // Nothing written to the mailbox: no settings appointment, no new item.
    EXPECT_EQ(env.settingsItemCount(), 0u);
    EXPECT_EQ(env.cal->items.size(), items);
    EXPECT_TRUE(env.platform.messageBoxes().empty());
}

TEST(ReportSession, AnOutlookThatRefusesTheCalendarRaisesItsError) {
    ReportEnv env;
    env.sc.instruments().failMember(u"GetDefaultFolder", {}, -2147221233, u"The operation failed.");
    const auto error = raisedBy([&] { prepareReportSession(env.s, env.app); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->number(), -2147221233);
    EXPECT_EQ(error->description(), u"The operation failed.");
}

}  // namespace
}  // namespace hb::reporting
