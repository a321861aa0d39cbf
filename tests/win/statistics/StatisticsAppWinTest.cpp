// Cubelens.exe's command line under Wine, run as a script runs it: the exit
// codes and messages on the standard error it was handed, and a pivot of a
// report database written here, which it reads without changing a byte.
#include <windows.h>

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "ComTestSupport.h"
#include "reporting/SqliteStore.h"

namespace {

using hb::test::exeFolder;
using hb::test::readFile;

struct Outcome {
    DWORD code;
    std::string stderrText;
};

Outcome cubelens(const std::wstring& arguments) {
    std::string output;
    const DWORD code = hb::test::runProgram(L"\"" + exeFolder() + L"\\Cubelens.exe\" " + arguments,
                                            120000, &output);
    return {code, output};
}

std::wstring scratchFolder(const wchar_t* name) {
    wchar_t temp[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, temp);
    const std::wstring folder = std::wstring(temp) + name;
    CreateDirectoryW(folder.c_str(), nullptr);
    return folder;
}

TEST(StatisticsApp, ExitCodesAndMessages) {
    const std::wstring empty = scratchFolder(L"hb-cubelens-empty");
    DeleteFileW((empty + L"\\Hourbook cube.sqlite").c_str());
    const std::wstring garbage = scratchFolder(L"hb-cubelens-garbage");
    std::ofstream((garbage + L"\\Hourbook cube.sqlite").c_str(), std::ios::binary)
        << std::string(3000, 'x');
    struct Case {
        std::wstring arguments;
        DWORD code;
        const char* says;
    };
    const Case cases[] = {
        {L"/?", 0, "Exit codes: 0 done"},
        {L"/bogus", 2, "Cubelens: unknown option \"/bogus\""},
        {L"C:\\x /rows:firm /csv:x.csv", 2, "\"firm\" is none of list1"},
        {L"C:\\x /rows:user", 2, "nothing to write"},
        {L"\"" + empty + L"\" /csv:x.csv", 4, "does not exist"},
        {L"\"" + garbage + L"\" /csv:x.csv", 4, "is not a cube"},
    };
    for (const Case& c : cases) {
        const Outcome run = cubelens(c.arguments);
        EXPECT_EQ(run.code, c.code) << run.stderrText;
        EXPECT_NE(run.stderrText.find(c.says), std::string::npos)
            << "expected \"" << c.says << "\" in:\n"
            << run.stderrText;
    }
}

TEST(StatisticsApp, PivotsTheReportDatabaseReadOnly) {
    using namespace hb::reporting;
    const std::wstring folder = scratchFolder(L"hb-cubelens-database");
    const std::wstring database = folder + L"\\Hourbook.sqlite";
    DeleteFileW(database.c_str());
    {
        SqliteStore store(reinterpret_cast<const char16_t*>(database.c_str()));
        const DayNumber first = 46328;  // 2026-11-02
        std::vector<TimeRecord> records;
        for (int i = 0; i < 3; ++i) {
            TimeRecord r;
            r.user = u"john";
            r.entryId = u"E" + hb::toStr(i);
            r.day = first + i;
            r.values = {i == 2 ? u"Zenith" : u"Acme", u"", u""};
            r.seconds = r.roundedSeconds = 5400;
            r.amount.scaled = 1275000;
            records.push_back(r);
        }
        store.replacePeriod(u"john", {first, first + 29}, records);
    }
    const std::string before = readFile(database);
    const std::wstring csv = folder + L"\\pivot.csv";
    DeleteFileW(csv.c_str());
    const Outcome run = cubelens(L"\"" + folder + L"\" /rows:list1 /cols:year /measure:amount " +
                                 L"/from:2026-11-01 /to:2026-11-30 /csv:\"" + csv + L"\"");
    EXPECT_EQ(run.code, 0U) << run.stderrText;
    EXPECT_EQ(readFile(database), before);
    const std::string text = readFile(csv);
    EXPECT_NE(text.find("Acme,255.00,255.00\r\n"), std::string::npos) << text;
    EXPECT_NE(text.find("Zenith,127.50,127.50\r\n"), std::string::npos) << text;
    EXPECT_NE(text.find(",382.50,382.50\r\n"), std::string::npos) << text;
}

}  // namespace
