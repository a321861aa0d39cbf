// The error reporter: the dialog's text, one dialog per load, the Yes and No
// answers, the error mail.
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "common/Constants.h"
#include "common/ErrorTrap.h"
#include "diag/DiagSupport.h"
#include "diagnostics/modErroHandling.h"
#include "languages/modMultiLanguage.h"

namespace hbtest {
namespace {

using hb::win::IdNo;
using hb::win::IdYes;
using hb::win::MbYesNo;

const Str kDashes(70, u'-');

class ErrorReportTest : public DiagTest {
  protected:
    void loadEnglish() {
        setLanguageTable(fullEnglishTable());
        hb::LoadLanguages(s, hb::lang::English);
        ASSERT_TRUE(boxes().empty()) << "the full table loads without a report";
    }
    std::vector<std::shared_ptr<sim::Item>> drafts() {
        return outlook.defaultFolder(sim::ol::FolderDrafts)->items;
    }
    std::size_t logPosition(const Str& member) {
        const auto& log = outlook.instruments().log();
        auto it = std::find_if(log.begin(), log.end(),
                               [&](const sim::CallRecord& r) { return r.member == member; });
        return static_cast<std::size_t>(it - log.begin());
    }
};

TEST_F(ErrorReportTest, DialogTextWithEnglishPhrases) {
    loadEnglish();
    hb::subTrace(s, u"Reacting to Explorer Activate event");
    hb::subErrorHandler(s, u"Object variable or With block variable not set", 91, 0,
                        u"cCalendarReactions.AddExplorer");

    ASSERT_EQ(boxes().size(), 1u);
    const Str expected =
        u"There has been an error in this application. Hourbook for Outlook Addin v4 "
        u"(Windows NT 5.1)\r\n" +
        kDashes +
        u"\r\n\r\n"
        u"This error has occured: :\r\n"
        u"Reacting to Explorer Activate event\r\n\r\n"
        u"The system error message was: :\r\n"
        u"Object variable or With block variable not set\r\n"
        u"#91\r\n\r\n"
        u"Sub routine : cCalendarReactions.AddExplorer \r\n"
        u"Error on line: 0"
        u"\r\n\r\n"
        u"Would you like to send an e-mail with an error report??";
    EXPECT_EQ(boxes()[0].text, expected);
    EXPECT_EQ(boxes()[0].caption, u"Hourbook for Outlook Addin v4");
    EXPECT_EQ(boxes()[0].flags, MbYesNo);  // Yes and No, no icon
    EXPECT_TRUE(s.diag.blnReported);
    EXPECT_TRUE(s.diag.blnErrorOccurred);
    EXPECT_EQ(
        s.diag.strErrorReport,
        u"This error has occured: :\r\nReacting to Explorer Activate event\r\n\r\n"
        u"The system error message was: :\r\nObject variable or With block variable not "
        u"set\r\n#91\r\n\r\nSub routine : cCalendarReactions.AddExplorer \r\nError on line: 0");
}

TEST_F(ErrorReportTest, DialogTextBeforeThePhrasesAreLoaded) {
    hb::subErrorHandler(s, u"Overflow", 6, 120, u"subGetSafeMailboxName");
    ASSERT_EQ(boxes().size(), 1u);
    EXPECT_EQ(boxes()[0].text, u" Hourbook for Outlook Addin v4 (Windows NT 5.1)\r\n" + kDashes +
                                   u"\r\n\r\n :\r\n\r\n\r\n :\r\nOverflow\r\n#6\r\n\r\n : "
                                   u"subGetSafeMailboxName \r\n: 120\r\n\r\n?");
}

TEST_F(ErrorReportTest, WindowsNameInTheHeaderAndANegativeNumberWithItsSign) {
    platform.setWindowsVersion({true, 1, 4, 10});
    hb::subErrorHandler(s, u"The operation failed.", -2147467259, 0, u"modX.subY");
    ASSERT_EQ(boxes().size(), 1u);
    EXPECT_EQ(boxes()[0].text.rfind(u" Hourbook for Outlook Addin v4 (Windows 98)\r\n", 0), 0u);
    EXPECT_NE(s.diag.strErrorReport.find(u"\r\n#-2147467259\r\n"), Str::npos);
}

TEST_F(ErrorReportTest, OneDialogPerLoad) {
    hb::subErrorHandler(s, u"first", 5, 0, u"p1");
    hb::subTrace(s, u"later");
    hb::subErrorHandler(s, u"second", 6, 0, u"p2");
    ASSERT_EQ(boxes().size(), 1u);
    // The second error is not written anywhere either.
    EXPECT_EQ(s.diag.strErrorReport.find(u"second"), Str::npos);
    EXPECT_NE(s.diag.strErrorReport.find(u"first"), Str::npos);
}

// An error raised while the dialog is open (Outlook still delivers events)
// reaches the reporter again.
class ReentrantPlatform : public hb::MemoryPlatform {
  public:
    hb::Session* session = nullptr;
    bool reportedWhileOpen = false;

    std::int32_t messageBox(const Str& text, const Str& caption, std::uint32_t flags) override {
        if (hb::Session* s = std::exchange(session, nullptr)) {
            reportedWhileOpen = s->diag.blnReported;
            hb::trap(*s, u"cExplorerEvents.oExplorer_SelectionChange", [] { hb::raise(91); });
        }
        return MemoryPlatform::messageBox(text, caption, flags);
    }
};

TEST(ErrorReportReentryTest, ReportedIsSetBeforeTheDialogShows) {
    ReentrantPlatform p;
    hb::Session s{p};
    p.session = &s;
    hb::subErrorHandler(s, u"first", 5, 0, u"p1");
    EXPECT_TRUE(p.reportedWhileOpen);
    ASSERT_EQ(p.messageBoxes().size(), 1u);
    EXPECT_NE(p.messageBoxes()[0].text.find(u"first"), Str::npos);
    EXPECT_EQ(s.diag.strErrorReport.find(u"SelectionChange"), Str::npos);
}

TEST_F(ErrorReportTest, TrapReportsUnderTheProcedureName) {
    hb::trap(s, u"modScriptingDic.fncCreateDic", [] { hb::raise(429); });
    ASSERT_EQ(boxes().size(), 1u);
    EXPECT_NE(boxes()[0].text.find(u"\r\n#429\r\n"), Str::npos);
    EXPECT_NE(boxes()[0].text.find(u" : modScriptingDic.fncCreateDic \r\n"), Str::npos);
}

TEST_F(ErrorReportTest, YesDisplaysTheMailAndNeverSendsIt) {
    loadEnglish();
    connect();
    platform.scriptAnswer(IdYes);
    hb::subTrace(s, u"Checking Billing Information -property");
    hb::subErrorHandler(s, u"Type mismatch", 13, 4, u"cExplorerEvents.GetCurrentValues");

    const Str report =
        u"This error has occured: :\r\nChecking Billing Information -property\r\n\r\n"
        u"The system error message was: :\r\nType mismatch\r\n#13\r\n\r\n"
        u"Sub routine : cExplorerEvents.GetCurrentValues \r\nError on line: 4"
        u"\r\nOutlook Version: 11.0.8169\r\n";
    EXPECT_EQ(s.diag.strErrorReport, report);

    ASSERT_EQ(drafts().size(), 1u);
    const auto& mail = *drafts()[0];
    EXPECT_EQ(mail.to, hb::kSupportEmail);
    EXPECT_EQ(mail.subject, u"Error in Hourbook for Outlook Addin v4 4.0.12 (Windows NT 5.1)");
    EXPECT_EQ(mail.body, report);
    EXPECT_EQ(mail.saveCount, 1);
    EXPECT_EQ(mail.displayCount, 1);
    EXPECT_EQ(mail.sendCount, 0);
    EXPECT_EQ(outlook.instruments().count(u"Send"), 0u);
    EXPECT_EQ(outlook.instruments().count(u"Application", u"CreateItem"), 1u);
    EXPECT_LT(logPosition(u"Save"), logPosition(u"Display"));
    // Only the one dialog: the mail's success message does not exist and
    // its failure message never shows.
    EXPECT_EQ(boxes().size(), 1u);
}

TEST_F(ErrorReportTest, YesStartsOutlookWhenNotHeld) {
    outlookRunning();
    platform.scriptAnswer(IdYes);
    hb::subErrorHandler(s, u"x", 5, 0, u"p");
    EXPECT_FALSE(s.olApp.isNothing());
    ASSERT_EQ(drafts().size(), 1u);
    EXPECT_TRUE(drafts()[0]->body.ends_with(u"\r\nOutlook Version: 11.0.8169\r\n"));
}

TEST_F(ErrorReportTest, NoSendsNothing) {
    connect();
    platform.scriptAnswer(IdNo);
    hb::subErrorHandler(s, u"x", 5, 0, u"p");
    EXPECT_EQ(s.diag.strErrorReport.find(u"Outlook Version: "), Str::npos);
    EXPECT_TRUE(drafts().empty());
    EXPECT_EQ(outlook.instruments().count(u"CreateItem"), 0u);
    EXPECT_EQ(outlook.instruments().callCount(), 0u);
}

TEST_F(ErrorReportTest, MailFailuresAreIgnored) {
    connect();
    platform.scriptAnswer(IdYes);
    outlook.instruments().failMember(u"Display");
    hb::subErrorHandler(s, u"x", 5, 0, u"p");
    // Saved, not shown, no further message, nothing raised, no error left.
    ASSERT_EQ(drafts().size(), 1u);
    EXPECT_EQ(drafts()[0]->saveCount, 1);
    EXPECT_EQ(boxes().size(), 1u);
    EXPECT_FALSE(s.err);
}

TEST_F(ErrorReportTest, SendErrorMailNeedsOutlookAndNamesTheVersions) {
    hb::subSendErrorMail(s);  // Outlook not held: nothing, silently
    EXPECT_TRUE(boxes().empty());
    EXPECT_FALSE(s.err);
    connect();
    platform.setAddinVersion({4, 0, 3});
    platform.setWindowsVersion({true, 2, 6, 1});
    s.diag.strErrorReport = u"report";
    hb::subSendErrorMail(s);
    ASSERT_EQ(drafts().size(), 1u);
    EXPECT_EQ(drafts()[0]->subject,
              u"Error in Hourbook for Outlook Addin v4 4.0.3 (Windows NT 6.1)");
    EXPECT_EQ(drafts()[0]->body, u"report");
    EXPECT_EQ(drafts()[0]->to, hb::kSupportEmail);
}

TEST(WindowsVersionTest, Names) {
    hb::MemoryPlatform p;
    hb::Session s{p};
    auto name = [&](hb::WindowsVersion v) {
        p.setWindowsVersion(v);
        return hb::fncGetWindowsVersion(s);
    };
    EXPECT_EQ(name({true, 2, 5, 1}), u"Windows NT 5.1");
    EXPECT_EQ(name({true, 2, 10, 0}), u"Windows NT 10.0");
    EXPECT_EQ(name({true, 1, 4, 10}), u"Windows 98");
    EXPECT_EQ(name({true, 1, 4, 0}), u"Windows 95");
    EXPECT_EQ(name({true, 1, 4, 90}), u"Windows Me");
    EXPECT_EQ(name({true, 1, 7, 10}), u"Windows 98");  // the major version is not looked at
    EXPECT_EQ(name({true, 1, 4, 3}), u"");
    EXPECT_EQ(name({true, 0, 3, 1}), u"");
    EXPECT_EQ(name({false, 2, 5, 1}), u"");  // a failed call leaves the record at zero
    EXPECT_EQ(s.diag.lngOSPlatform, 0u);
    p.setWindowsVersion({true, 2, 6, 2});
    p.failNext("windowsVersion");
    EXPECT_EQ(hb::fncGetWindowsVersion(s), u"");
    EXPECT_EQ(hb::fncGetWindowsVersion(s), u"Windows NT 6.2");
    EXPECT_EQ(s.diag.lngOSMajor, 6u);
    EXPECT_EQ(s.diag.lngOSMinor, 2u);
    EXPECT_EQ(s.diag.lngOSPlatform, 2u);
}

}  // namespace
}  // namespace hbtest
