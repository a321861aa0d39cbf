// The report program's export with "create local cube" on, under the
// stand-in Outlook, writes the cube in the documents folder's "OLAP Cubes";
// Cubelens.exe pivots that cube to the report's own totals.
#include <windows.h>
// windows.h first: shlobj.h relies on its types.
#include <shlobj.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "ComTestSupport.h"
#include "standin/HostSetup.h"
#include "standin/OutlookServer.h"

namespace {

using hb::test::exeFolder;

DWORD run(const wchar_t* program, const std::wstring& arguments, std::string* output) {
    return hb::test::runProgram(L"\"" + exeFolder() + L"\\" + program + L"\" " + arguments, 120000,
                                output);
}

// The rows of a CSV of plain cells (the stand-in's values hold no separator
// or quote), the byte-order mark dropped.
std::vector<std::vector<std::string>> csvRows(const std::wstring& file) {
    std::string text = hb::test::readFile(file);
    if (text.rfind("\xEF\xBB\xBF", 0) == 0) text.erase(0, 3);
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        std::vector<std::string> cells;
        std::istringstream parts(line);
        std::string cell;
        while (std::getline(parts, cell, ','))
            cells.push_back(cell);
        rows.push_back(cells);
    }
    return rows;
}

TEST(StatisticsEndToEnd, TheReportsLocalCubePivotsToTheReportsTotals) {
    ASSERT_TRUE(standin::registerOutlookServer(exeFolder() + L"\\hb_standin.exe"));
    {
        standin::MachineState machine;
        standin::writeSettings();
        const wchar_t on[] = L"True";
        RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\Brindlewood\\Hourbook for Outlook\\Settings",
                        L"CreateLocalCube", REG_SZ, on, sizeof on);
        wchar_t documents[MAX_PATH] = {};
        SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, 0, documents);
        const std::wstring cubeFolder = std::wstring(documents) + L"\\OLAP Cubes";
        DeleteFileW((cubeFolder + L"\\Hourbook cube.sqlite").c_str());

        wchar_t temp[MAX_PATH] = {};
        GetTempPathW(MAX_PATH, temp);
        const std::wstring folder = std::wstring(temp) + L"hb-statistics-end-to-end";
        CreateDirectoryW(folder.c_str(), nullptr);
        const std::wstring report = folder + L"\\report.csv";
        const std::wstring pivot = folder + L"\\pivot.csv";
        std::string said;
        ASSERT_EQ(
            run(L"HBReporting.exe",
                L"\"" + folder + L"\" /period:thismonth /group:list1 \"/csv:" + report + L"\"",
                &said),
            0u)
            << said;
        ASSERT_NE(GetFileAttributesW((cubeFolder + L"\\Hourbook cube.sqlite").c_str()),
                  INVALID_FILE_ATTRIBUTES)
            << "no cube in " << hb::test::unixPath(cubeFolder);
        ASSERT_EQ(run(L"Cubelens.exe",
                      L"\"" + cubeFolder + L"\" /rows:list1 /cols:day /period:thismonth \"/csv:" +
                          pivot + L"\"",
                      &said),
                  0u)
            << said;

        // The summary: level, group, hours, ...; the grand total last. The
        // pivot: group, one column per day, the total column last.
        const auto summary = csvRows(folder + L"\\report-summary.csv");
        const auto table = csvRows(pivot);
        ASSERT_GE(summary.size(), 3u);
        ASSERT_EQ(table.size(), summary.size());
        for (std::size_t r = 1; r < summary.size(); ++r) {
            SCOPED_TRACE(r);
            ASSERT_GE(summary[r].size(), 3u);
            if (r + 1 < summary.size()) {
                EXPECT_EQ(table[r].front(), summary[r][1]);
            }
            EXPECT_EQ(table[r].back(), summary[r][2]) << "hours of " << summary[r][1];
        }
    }
    standin::unregisterOutlookServer();
}

}  // namespace
