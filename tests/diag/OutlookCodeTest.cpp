// The Outlook access helpers: finding or starting Outlook, its version, the
// user's name, the list separator.
#include <gtest/gtest.h>

#include "addin/modOutlookCode.h"
#include "common/Constants.h"
#include "diag/DiagSupport.h"
#include "diagnostics/modErroHandling.h"

namespace hbtest {
namespace {

using hb::win::MbIconCritical;
using hb::win::MbOk;

struct OutlookEnv : DiagEnv {
    void setMailboxName(const Str& name) { outlook.defaultStore().root->name = name; }
    Str userName() {
        connect();
        return hb::fncGetUserName(s);
    }
};
class OutlookCodeTest : public ::testing::Test, public OutlookEnv {};

// ---- the user's name ----

TEST(OutlookCodeNameTest, FromTheMailboxNameOrTheWindowsUser) {
    struct Case {
        Str mailbox;
        Str earlier;  // a name the session already holds
        bool noShell;
        Str name;
    } cases[] = {
        {u"Mailbox - John Smith", u"", false, u"John Smith"},
        {u"Postfach - Hans Müller", u"", false, u"Hans Müller"},
        {u"Mailbox -   Jane Doe  ", u"", false, u"Jane Doe"},
        {u"Smith, John", u"", false, u"Smith, John"},  // no dash: taken whole
        {u"Personal Folders", u"", false, u"jsmith"},  // the Windows user
        {u"Personal Folders", u"Earlier", false, u"Earlier"},
        {u"Personal Folders", u"", true, u""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(hb::toUtf8(c.mailbox + u"/" + c.earlier));
        OutlookEnv t;
        t.setMailboxName(c.mailbox);
        t.platform.setEnvironment(u"USERNAME", u"jsmith");
        t.s.strCurrentUser = c.earlier;
        if (c.noShell) t.platform.failComponent(hb::ScriptComponent::Shell);
        EXPECT_EQ(t.userName(), c.name);
        EXPECT_EQ(t.s.strCurrentUser, c.name);
        EXPECT_EQ(t.outlook.instruments().count(u"NameSpace", u"GetDefaultFolder"), 1u);
        // The shell is asked only for a name the mailbox does not give.
        const bool asksWindows = c.mailbox == u"Personal Folders" && c.earlier.empty();
        EXPECT_EQ(t.platform.componentAttempts().size(), asksWindows ? 1u : 0u);
        EXPECT_TRUE(t.boxes().empty());
        EXPECT_FALSE(t.s.err);
    }
}

TEST_F(OutlookCodeTest, MailboxFailureIsReportedAndTheWindowsUserTaken) {
    connect();
    outlook.instruments().failMember(u"GetDefaultFolder");
    EXPECT_EQ(hb::fncGetUserName(s), u"John");
    ASSERT_EQ(boxes().size(), 1u);
    EXPECT_NE(boxes()[0].text.find(u" : subGetSafeMailboxName \r\n"), Str::npos);
    EXPECT_EQ(hb::fncGetLastTrace(s), u"Getting current user full name from mailbox name");
    EXPECT_FALSE(s.err);
}

// ---- the list separator ----

TEST_F(OutlookCodeTest, ListSeparator) {
    platform.setListSeparator(u";");
    EXPECT_EQ(hb::fncGetListSeparator(s), u";");
    EXPECT_EQ(hb::fncGetLastTrace(s), u"Getting List separator from computer settings!");
    ASSERT_EQ(platform.localeInfoRequests().size(), 1u);
    EXPECT_EQ(platform.localeInfoRequests()[0], std::make_pair(1024u, 12u));
    platform.setListSeparator(u",");
    EXPECT_EQ(hb::fncGetListSeparator(s), u",");
    platform.failNext("localeInfo");
    EXPECT_EQ(hb::fncGetListSeparator(s), Str(256, u' '));  // the buffer as it was
}

// ---- the version ----

TEST_F(OutlookCodeTest, VersionIsCached) {
    connect();
    EXPECT_EQ(hb::fncOutlookVersion(s), 11);
    EXPECT_EQ(s.intOutlookVersion, 11);
    EXPECT_EQ(outlook.instruments().count(u"Version"), 1u);
    outlook.version = u"12.0.4518.1014";
    EXPECT_EQ(hb::fncOutlookVersion(s), 11);
    EXPECT_EQ(outlook.instruments().count(u"Version"), 1u);
}

TEST_F(OutlookCodeTest, MajorFromVersionAndAVersionWithoutDot) {
    Str v = u"12.0.4518.1014";
    EXPECT_EQ(hb::fncMajorFromVersion(v), 12);
    EXPECT_EQ(v, u"12");
    v = u"9.0.0.2711";
    EXPECT_EQ(hb::fncMajorFromVersion(v), 9);
    v = u"";
    EXPECT_THROW(hb::fncMajorFromVersion(v), hb::AutomationError);
    connect();
    outlook.version = u"12";
    EXPECT_EQ(errorOf([&] { (void)hb::fncOutlookVersion(s); }), 5);
    EXPECT_EQ(s.intOutlookVersion, 0);
}

TEST_F(OutlookCodeTest, VersionAndMailboxNameStartOutlookWhenNotHeld) {
    outlookRunning();
    EXPECT_EQ(hb::fncOutlookVersion(s), 11);
    EXPECT_FALSE(s.olApp.isNothing());
    s.olApp = Variant();
    hb::subGetSafeMailboxName(s);
    EXPECT_EQ(s.strCurrentUser, u"John Smith");
    EXPECT_EQ(platform.activeObjectRequests(),
              (std::vector<Str>{u"Outlook.Application", u"Outlook.Application"}));
}

// ---- finding or starting Outlook ----

TEST_F(OutlookCodeTest, StartDoesNothingWhenHeld) {
    connect();
    std::int16_t inbox = 6;
    hb::fncStartOutlook(s, inbox);
    EXPECT_EQ(hb::fncGetLastTrace(s), u"Attempting to start MS Outlook 2000 or later");
    EXPECT_TRUE(platform.activeObjectRequests().empty());
    EXPECT_EQ(outlook.instruments().callCount(), 0u);
    EXPECT_TRUE(s.onsMAPI.isEmpty());
}

TEST_F(OutlookCodeTest, StartAttachesToARunningOutlookAndOpensAWindow) {
    outlookRunning();
    std::int16_t inbox = 6;
    hb::fncStartOutlook(s, inbox);
    EXPECT_TRUE(hb::sameObject(s.olApp, application()));
    EXPECT_TRUE(platform.createObjectRequests().empty());
    EXPECT_EQ(s.onsMAPI.deref().obj().typeName(), u"NameSpace");
    EXPECT_EQ(s.intOutlookVersion, 11);
    ASSERT_EQ(outlook.explorers().size(), 1u);
    EXPECT_EQ(outlook.explorers()[0]->currentFolder, outlook.inbox());
    EXPECT_EQ(outlook.instruments().count(u"Activate"), 1u);
    EXPECT_TRUE(boxes().empty());
    EXPECT_FALSE(s.err);
}

TEST_F(OutlookCodeTest, StartWithAWindowOpenAddsNone) {
    outlook.openExplorer(outlook.calendar());
    outlookRunning();
    std::int16_t inbox = 6;
    hb::fncStartOutlook(s, inbox);
    EXPECT_EQ(outlook.explorers().size(), 1u);
    EXPECT_EQ(outlook.instruments().count(u"Explorers", u"Add"), 0u);
}

TEST_F(OutlookCodeTest, StartCreatesByVersionedProgId) {
    platform.setCreatableObject(u"Outlook.Application.11", application());
    std::int16_t inbox = 6;
    hb::fncStartOutlook(s, inbox);
    EXPECT_FALSE(s.olApp.isNothing());
    EXPECT_EQ(platform.activeObjectRequests(), std::vector<Str>{u"Outlook.Application"});
    EXPECT_EQ(platform.createObjectRequests(),
              (std::vector<Str>{u"Outlook.Application", u"Outlook.Application.12",
                                u"Outlook.Application.11"}));
    EXPECT_TRUE(boxes().empty());
}

TEST_F(OutlookCodeTest, NoOutlookAtAll) {
    s.phrases.LNGO2KNEEDED = u"You need Outlook 2000 or later to run this application.";
    std::int16_t inbox = 6;
    hb::fncStartOutlook(s, inbox);
    EXPECT_EQ(platform.createObjectRequests(),
              (std::vector<Str>{u"Outlook.Application", u"Outlook.Application.12",
                                u"Outlook.Application.11", u"Outlook.Application.10",
                                u"Outlook.Application.9", u"Outlook.Application"}));
    ASSERT_EQ(boxes().size(), 2u);
    EXPECT_EQ(boxes()[0].text,
              u"Please start Outlook manually before you execute this application!");
    EXPECT_EQ(boxes()[0].caption, hb::kProductCaption);
    EXPECT_EQ(boxes()[0].flags, MbOk);
    EXPECT_EQ(boxes()[1].text,
              u"You need Outlook 2000 or later to run this application.\r\n"
              u"429 ActiveX component can't create object\r\n0");
    EXPECT_EQ(boxes()[1].caption, hb::kProductCaption);
    EXPECT_EQ(boxes()[1].flags, MbIconCritical | MbOk);
    EXPECT_FALSE(s.err);
}

TEST_F(OutlookCodeTest, Outlook97IsRefused) {
    outlook.version = u"8.5.5104.0";
    outlookRunning();
    s.phrases.LNGO2KNEEDED = u"Outlook 2000 needed.";
    std::int16_t inbox = 6;
    hb::fncStartOutlook(s, inbox);
    ASSERT_EQ(boxes().size(), 1u);
    EXPECT_EQ(boxes()[0].text, u"Outlook 2000 needed.\r\n8");
    EXPECT_EQ(boxes()[0].caption, hb::kProductCaption);
    EXPECT_EQ(boxes()[0].flags, MbIconCritical | MbOk);
    EXPECT_TRUE(s.onsMAPI.isEmpty());
}

}  // namespace
}  // namespace hbtest
