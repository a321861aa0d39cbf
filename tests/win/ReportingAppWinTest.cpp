// HBReporting.exe's command line under Wine, run as a script runs it: the
// exit code and what it says on the standard error it was handed (a pipe),
// for mistakes in the arguments, with no Outlook at all, and with the
// stand-in Outlook that COM starts as Outlook.Application's local server.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "ComTestSupport.h"
#include "common/Text.h"
#include "standin/HostSetup.h"
#include "standin/OutlookServer.h"
#include "win/com/ComVariant.h"

namespace {

using hb::test::exeFolder;

struct Outcome {
    DWORD code;
    std::string stderrText;
};

Outcome reporting(const std::wstring& arguments) {
    std::string output;
    const DWORD code = hb::test::runProgram(
        L"\"" + exeFolder() + L"\\HBReporting.exe\" " + arguments, 120000, &output);
    return {code, output};
}

std::wstring scratchFolder() {
    wchar_t temp[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, temp);
    const std::wstring folder = std::wstring(temp) + L"hb-reporting-test";
    CreateDirectoryW(folder.c_str(), nullptr);
    return folder;
}

struct Expected {
    const wchar_t* arguments;
    DWORD code;
    const char* says;  // on stderr
};

void check(const Expected& e) {
    const Outcome run = reporting(e.arguments);
    EXPECT_EQ(run.code, e.code) << hb::toUtf8(hb::com::fromWide(e.arguments, wcslen(e.arguments)))
                                << "\n"
                                << run.stderrText;
    EXPECT_NE(run.stderrText.find(e.says), std::string::npos)
        << "expected \"" << e.says << "\" in:\n"
        << run.stderrText;
}

class ReportingApp : public ::testing::Test {
  protected:
    static void TearDownTestSuite() { standin::unregisterOutlookServer(); }
};

TEST_F(ReportingApp, MistakesInTheArgumentsEndWith2AndNameTheMistake) {
    const Expected cases[] = {
        {L"/period:fortnight", 2, "HBReporting: /period: \"fortnight\" is none of"},
        {L"/from:2024-02-30 /to:2024-03-01", 2, "\"2024-02-30\" is not a date written YYYY-MM-DD"},
        {L"/from:2024-03-02 /to:2024-03-01", 2, "/to is before /from"},
        {L"/csv:report.csv", 2, "no period"},
        {L"/period:thisweek /round:7", 2, "\"7\" is none of none, 6, 15, 30, 60"},
        {L"/period:thisweek /pdf:a.pdf", 2, "unknown option \"/pdf:a.pdf\""},
        {L"/?", 0, "/from:YYYY-MM-DD /to:YYYY-MM-DD"},
    };
    for (const Expected& e : cases)
        check(e);
}

TEST_F(ReportingApp, WithoutOutlookTheRunEndsWith3) {
    standin::unregisterOutlookServer();
    check({L"/period:lastmonth /csv:report.csv", 3,
           "Outlook is not available (reaching Outlook): error 429"});
}

TEST_F(ReportingApp, WithTheStandinOutlookStartedByComTheRunGoesOnToTheDatabaseAndTheFiles) {
    ASSERT_TRUE(standin::registerOutlookServer(exeFolder() + L"\\hb_standin.exe"));
    standin::MachineState machine;
    standin::writeSettings();
    const std::wstring folder = scratchFolder();
    // A file where the report folder should be: no database can be made there.
    const std::wstring notAFolder = folder + L"\\not-a-folder";
    HANDLE f =
        CreateFileW(notAFolder.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(f, INVALID_HANDLE_VALUE);
    CloseHandle(f);
    const std::wstring unwritable = folder + L"\\no such folder\\report.csv";
    const std::wstring badStore = L"\"" + notAFolder + L"\" /from:2024-05-06 /to:2024-05-07";
    const std::wstring badFile =
        L"\"" + folder + L"\" /from:2024-05-06 /to:2024-05-07 \"/csv:" + unwritable + L"\"";
    const Expected cases[] = {
        {badStore.c_str(), 4, "The database cannot be used (opening the database)"},
        {badFile.c_str(), 5, "Could not write "},
    };
    for (const Expected& e : cases)
        check(e);
    DeleteFileW(notAFolder.c_str());

    // And a run that goes through: the file is there, nothing is said.
    const std::wstring csv = folder + L"\\report.csv";
    DeleteFileW(csv.c_str());
    const Outcome run =
        reporting(L"\"" + folder + L"\" /from:2024-05-06 /to:2024-05-07 \"/csv:" + csv + L"\"");
    EXPECT_EQ(run.code, 0u) << run.stderrText;
    EXPECT_EQ(run.stderrText, "");
    EXPECT_NE(GetFileAttributesW(csv.c_str()), INVALID_FILE_ATTRIBUTES) << "no report.csv";
    DeleteFileW(csv.c_str());
}

}  // namespace
