// The workbook read back by Debian's python3-openpyxl: cell types and values
// (dates as dates, times, hours and amounts as numbers with their formats),
// the totals' formulas and cached values, the summary tree, the chart; a
// failed export leaving no file behind.
#include <map>

#include "ExportTestSupport.h"
#include "reporting/XlsxExport.h"

#ifndef HB_TEST_SOURCE_DIR
#error "HB_TEST_SOURCE_DIR: the tests' source folder"
#endif

namespace hb::reporting::test {
namespace {

struct Workbook {
    std::string properties;  // "title | subject | author"
    std::vector<std::string> sheets;
    std::map<std::string, std::string> cells;   // "Records!A2" -> "datetime 2026-... | mm-dd-yy"
    std::map<std::string, std::string> cached;  // formula cells' cached values
    std::vector<std::string> charts, parts;
};

// Debian's python3, which has python3-openpyxl (not a python of the user's own).
Workbook readBack(const std::filesystem::path& file) {
    const CommandResult r = runCommand(
        "/usr/bin/python3 " HB_TEST_SOURCE_DIR "/reporting/xlsx_check.py '" + file.string() + "'");
    EXPECT_EQ(r.status, 0) << "openpyxl could not read the workbook:\n" << r.output;
    Workbook book;
    std::istringstream in(r.output);
    for (std::string line; std::getline(in, line);) {
        const auto space = line.find(' ');
        const std::string key = line.substr(0, space), rest = line.substr(space + 1);
        const auto second = rest.find(' ');
        if (key == "properties") {
            book.properties = rest;
        } else if (key == "sheets") {
            std::istringstream names(rest);
            for (std::string name; std::getline(names, name, '|');)
                book.sheets.push_back(name);
        } else if (key == "cell") {
            book.cells[rest.substr(0, second)] = rest.substr(second + 1);
        } else if (key == "cached") {
            book.cached[rest.substr(0, second)] = rest.substr(second + 1);
        } else if (key == "chart") {
            book.charts.push_back(rest);
        } else if (key == "part") {
            book.parts.push_back(rest);
        }
    }
    return book;
}

struct WorkbookCase {
    const char* name;
    HoursFormat format;
    std::map<std::string, std::string> cells;  // expected cells (a selection)
    std::string cachedHoursTotal;
};

std::vector<WorkbookCase> workbookCases() {
    const std::map<std::string, std::string> common = {
        {"Records!A1", "str Date | General"},
        {"Records!E1", "str Company | General"},
        {"Records!J1", "str Amount | General"},
        // dates as Excel dates in the reader's short date format (built-in 14)
        {"Records!A2", "datetime 2026-03-02 00:00:00 | mm-dd-yy"},
        {"Records!A4", "datetime 2026-03-03 00:00:00 | mm-dd-yy"},
        {"Records!B2", "time 09:00:00 | hh:mm"},
        {"Records!C4", "time 23:59:00 | hh:mm"},
        // text is text, a formula in a subject included
        {"Records!D2", "str Kick-off <script>alert(1)</script> | General"},
        {"Records!D3", "str =HYPERLINK(\"x\") | General"},
        {"Records!D4", "str Night \"deploy\", step 1\\nsecond line | General"},
        {"Records!E4", "str Beta; GmbH | General"},
        {"Records!J2", "int 120 | #,##0.00"},
        {"Records!J3", "int 40 | #,##0.00"},
        {"Records!A6", "str Total | General"},
        {"Records!J6", "str =SUM(J2:J5) | #,##0.00"},
        // the summary tree: each group before its subgroups, the total last
        {"Summary!A2", "str Acme & Co | General"},
        {"Summary!A3", "str Jones | General"},
        {"Summary!A7", "str (none) | General"},
        {"Summary!A9", "str Total | General"},
        {"Summary!D2", "int 160 | #,##0.00"},
        {"Summary!D9", "int 320 | #,##0.00"},
        {"Summary!E2", "int 2 | 0"},
        {"Summary!E9", "int 4 | 0"},
        // the chart's data: first-level groups in decimal hours
        {"Summary!G2", "str Acme & Co | General"},
        {"Summary!G4", "str (none) | General"},
        {"Summary!H3", "float 1.983333333333333 | 0.00"},
        {"Summary!H4", "int 8 | 0.00"},
    };
    auto with = [&](std::map<std::string, std::string> extra) {
        extra.insert(common.begin(), common.end());
        return extra;
    };
    return {
        {"Decimal", HoursFormat::Decimal,
         with({{"Records!H2", "float 1.5 | 0.00"},
               {"Records!H3", "float 0.3333333333333333 | 0.00"},
               {"Records!I3", "float 0.5 | 0.00"},
               {"Records!H6", "str =SUM(H2:H5) | 0.00"},
               {"Summary!B2", "float 1.833333333333333 | 0.00"},
               {"Summary!C9", "int 12 | 0.00"}}),
         "11.81666666666667"},
        {"HoursMinutes", HoursFormat::HoursMinutes,
         with({{"Records!H2", "timedelta 1:30:00 | [h]:mm"},
               {"Records!H3", "timedelta 0:20:00 | [h]:mm"},
               {"Records!I3", "timedelta 0:30:00 | [h]:mm"},
               {"Records!H6", "str =SUM(H2:H5) | [h]:mm"},
               {"Summary!B2", "timedelta 1:50:00 | [h]:mm"},
               {"Summary!C9", "timedelta 12:00:00 | [h]:mm"}}),
         "datetime.timedelta(seconds=42540)"},
    };
}

void PrintTo(const WorkbookCase& c, std::ostream* os) {
    *os << c.name;
}

class XlsxWorkbook : public ::testing::TestWithParam<WorkbookCase> {};

TEST_P(XlsxWorkbook, ReadsBackWithNumbersFormulasSummaryAndChart) {
    const WorkbookCase& c = GetParam();
    const auto dir = scratchFolder();
    const auto file = dir / "report.xlsx";
    writeXlsx(file, sampleReport(c.format), Locale::enUS());
    const Workbook book = readBack(file);

    EXPECT_EQ(book.sheets, (std::vector<std::string>{"Records", "Summary"}));
    EXPECT_EQ(book.properties, "Hours report | 3/2/2026 \xE2\x80\x93 3/8/2026 | john");
    for (const auto& [cell, expected] : c.cells) {
        const auto found = book.cells.find(cell);
        ASSERT_NE(found, book.cells.end()) << cell << " is empty";
        EXPECT_EQ(found->second, expected) << cell;
    }
    // Empty list values stay empty cells; nothing after the totals row.
    EXPECT_EQ(book.cells.count("Records!G2"), 0u);
    EXPECT_EQ(book.cells.count("Records!A7"), 0u);
    // Only the totals are formulas; their cached values are the report's.
    EXPECT_EQ(book.cached.size(), 3u);
    EXPECT_EQ(book.cached.at("Records!H6"), c.cachedHoursTotal);
    EXPECT_EQ(book.cached.at("Records!J6"), "320");
    EXPECT_EQ(book.charts, (std::vector<std::string>{"Summary BarChart col 1 Summary!$G$2:$G$4 "
                                                     "Summary!$H$2:$H$4 Hours per group"}));
    EXPECT_EQ(book.parts, (std::vector<std::string>{"xl/charts/chart1.xml"}));
    EXPECT_FALSE(std::filesystem::exists(dir / "report.xlsx.part"));
    std::filesystem::remove_all(dir);
}

INSTANTIATE_TEST_SUITE_P(Formats, XlsxWorkbook, ::testing::ValuesIn(workbookCases()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(XlsxExport, EmptyReportHasTotalsAndNoChart) {
    Report empty = sampleReport();
    empty.records.clear();
    empty.total = SummaryNode{};
    const auto dir = scratchFolder();
    writeXlsx(dir / "empty.xlsx", empty, Locale::enUS());
    const Workbook book = readBack(dir / "empty.xlsx");
    EXPECT_EQ(book.cells.at("Records!A2"), "str Total | General");
    EXPECT_EQ(book.cells.at("Records!H2"), "str =0 | 0.00");
    EXPECT_EQ(book.cells.at("Summary!A2"), "str Total | General");
    EXPECT_TRUE(book.charts.empty());
    std::filesystem::remove_all(dir);
}

// libxlsxwriter refuses the second sheet half-way through the workbook: the
// older file stays as it was, no temporary file is left.
TEST(XlsxExport, FailureHalfWayKeepsTheOlderFile) {
    const auto dir = scratchFolder();
    { std::ofstream(dir / "report.xlsx") << "an older export"; }
    ExportTexts texts;
    texts.summarySheet = texts.recordsSheet;
    try {
        writeXlsx(dir / "report.xlsx", sampleReport(), Locale::enUS(), texts);
        ADD_FAILURE() << "no error";
    } catch (const std::runtime_error& e) {
        EXPECT_NE(std::string(e.what()).find("report.xlsx"), std::string::npos) << e.what();
        EXPECT_NE(std::string(e.what()).find("\"Records\" cannot be added"), std::string::npos)
            << e.what();
    }
    EXPECT_EQ(readFile(dir / "report.xlsx"), "an older export");
    EXPECT_FALSE(std::filesystem::exists(dir / "report.xlsx.part"));
    std::filesystem::remove_all(dir);
}

// A folder named beyond ASCII: the workbook goes through the temporary
// folder (Windows would not find the narrow name) and ends up in place.
TEST(XlsxExport, FolderNameBeyondAscii) {
    const auto dir = scratchFolder() / std::filesystem::u8path("Berichte f\xC3\xBCr Kunden");
    std::filesystem::create_directories(dir);
    const auto file = dir / std::filesystem::u8path("M\xC3\xA4rz.xlsx");
    writeXlsx(file, sampleReport(), germanLocale());
    EXPECT_EQ(readBack(file).cells.at("Records!A2"), "datetime 2026-03-02 00:00:00 | mm-dd-yy");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir),
                            std::filesystem::directory_iterator()),
              1);
    std::filesystem::remove_all(dir.parent_path());
}

TEST(XlsxExport, ReplacesAnOlderFileAndFailsWithoutLeavingOne) {
    const auto dir = scratchFolder();
    { std::ofstream(dir / "old.xlsx") << "an older export"; }
    writeXlsx(dir / "old.xlsx", sampleReport(), Locale::enUS());
    EXPECT_EQ(readBack(dir / "old.xlsx").sheets.size(), 2u);

    std::filesystem::create_directories(dir / "taken.xlsx" / "inside");
    EXPECT_THROW(writeXlsx(dir / "taken.xlsx", sampleReport(), Locale::enUS()), std::runtime_error);
    EXPECT_TRUE(std::filesystem::is_directory(dir / "taken.xlsx" / "inside"));
    EXPECT_FALSE(std::filesystem::exists(dir / "taken.xlsx.part"));

    EXPECT_THROW(writeXlsx(dir / "missing" / "r.xlsx", sampleReport(), Locale::enUS()),
                 std::runtime_error);
    EXPECT_FALSE(std::filesystem::exists(dir / "missing"));
    std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace hb::reporting::test
