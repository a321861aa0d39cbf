// The trace: the last trace text, and the log file written while the trace
// switch is on.
#include <gtest/gtest.h>

#include "diag/DiagSupport.h"
#include "diagnostics/modErroHandling.h"
#include "support/Locales.h"

namespace hbtest {
namespace {

const Str kLog = u"C:\\Program Files\\Hourbook\\BrindlewoodLog.txt";

class TraceLogTest : public ::testing::Test {
  protected:
    TraceLogTest() { platform.setModuleFolder(u"C:\\Program Files\\Hourbook"); }
    hb::MemoryPlatform platform;
    hb::Session s{platform};
};

TEST_F(TraceLogTest, SwitchIsOffAtLoadUnlessBuiltWithTrace) {
#ifdef HB_TRACE
    EXPECT_TRUE(s.diag.blnTrace);
#else
    EXPECT_FALSE(s.diag.blnTrace);
#endif
}

TEST_F(TraceLogTest, SwitchOffRemembersTheLastTextAndKeepsThePendingError) {
    s.diag.blnTrace = false;
    s.err.number = 13;
    hb::subTrace(s, u"Getting List separator from computer settings!");
    hb::subTrace(s, u"Checking for remaining commandbars");
    EXPECT_EQ(hb::fncGetLastTrace(s), u"Checking for remaining commandbars");
    EXPECT_FALSE(platform.file(kLog).has_value());
    EXPECT_EQ(platform.calls("appendLine"), 0);
    EXPECT_EQ(s.err.number, 13);
}

TEST_F(TraceLogTest, SwitchOnAppendsALinePerTextAndClearsThePendingError) {
    platform.setFile(kLog, u"older line\r\n");
    s.diag.blnTrace = true;
    s.err.number = 13;
    hb::subTrace(s, u"Reacting to Explorer Activate event");
    EXPECT_FALSE(s.err);
    platform.setNow(platform.now() + 1.0 / 24 / 60);  // a minute later
    hb::subTrace(s, u"Checking for remaining commandbars");
    hb::subTrace(s, u"");  // nothing written, the last text emptied
    EXPECT_EQ(hb::fncGetLastTrace(s), u"");
    EXPECT_EQ(platform.calls("appendLine"), 2);
    EXPECT_EQ(platform.file(kLog),
              u"older line\r\n"
              u"Hourbook for Outlook Addin v4\t3/15/2024 9:30:00 AM\t"
              u"Reacting to Explorer Activate event\r\n"
              u"Hourbook for Outlook Addin v4\t3/15/2024 9:31:00 AM\t"
              u"Checking for remaining commandbars\r\n");
}

TEST_F(TraceLogTest, DateAndTimeInTheUsersFormat) {
    hb::Locale german = hb::test::germanLocale();
    platform.setUserLocale(german);
    s.diag.blnTrace = true;
    hb::subTrace(s, u"Splitting the categories string ,Acme");
    EXPECT_EQ(platform.file(kLog),
              u"Hourbook for Outlook Addin v4\t15.03.2024 09:30:00\t"
              u"Splitting the categories string ,Acme\r\n");
}

// Records the paths the log is appended to.
class PathRecordingPlatform : public hb::MemoryPlatform {
  public:
    std::vector<Str> paths;
    bool appendLine(const Str& path, const Str& line) override {
        paths.push_back(path);
        return MemoryPlatform::appendLine(path, line);
    }
};

TEST(TraceLogPathTest, TheFolderIsUsedAsItStands) {
    PathRecordingPlatform p;
    hb::Session s{p};
    s.diag.blnTrace = true;
    p.setModuleFolder(u"C:\\Addins\\");
    hb::subTrace(s, u"x");
    p.setModuleFolder(u"D:\\Office\\Hourbook");
    hb::subTrace(s, u"y");
    // No "\\" check: a folder ending in one gives a doubled "\\".
    EXPECT_EQ(p.paths, (std::vector<Str>{u"C:\\Addins\\\\BrindlewoodLog.txt",
                                         u"D:\\Office\\Hourbook\\BrindlewoodLog.txt"}));
}

TEST_F(TraceLogTest, WriteFailuresAndAMissingFolderAreSilent) {
    s.diag.blnTrace = true;
    platform.failNext("appendLine");
    hb::subTrace(s, u"lost");
    hb::subTrace(s, u"kept");
    EXPECT_EQ(platform.file(kLog),
              u"Hourbook for Outlook Addin v4\t3/15/2024 9:30:00 AM\tkept\r\n");
    EXPECT_EQ(hb::fncGetLastTrace(s), u"kept");
    EXPECT_FALSE(s.err);
    platform.setModuleFolder(u"C:\\Gone", false);
    hb::subTrace(s, u"x");
    EXPECT_EQ(platform.filePaths().size(), 1u);
    EXPECT_EQ(hb::fncGetLastTrace(s), u"x");
}

}  // namespace
}  // namespace hbtest
