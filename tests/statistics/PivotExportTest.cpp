// The pivot's files read back: the CSV by the report's rules, the workbook
// by openpyxl (numbers, the chart), the offline page self-contained and
// carrying the records; and the command's run with its exit codes.
#include <regex>

#include "StatsTestSupport.h"
#include "reporting/ExportTestSupport.h"
#include "reporting/RecordStores.h"
#include "reporting/SampleReport.h"
#include "statistics/PivotExport.h"
#include "statistics/StatsRun.h"

namespace hb::statistics::test {
namespace {

namespace fs = std::filesystem;
using reporting::Dimension;
using reporting::test::readCsv;
using reporting::test::readFile;
using reporting::test::runCommand;
using reporting::test::scratchFolder;

const ListCaptions kCaptions{u"Company", u"Person", u""};

std::vector<TimeRecord> records() {
    return {rec(u"john", dayOf(2026, 11, 2), u"Acme", u"Smith", 5400, 12550),
            rec(u"john", dayOf(2026, 11, 3), u"=HYPERLINK(\"x\")", u"", 900, 1),
            rec(u"ann", dayOf(2026, 12, 1), u"Acme", u"</script><b>", 1800)};
}

PivotTable table(Measure m = Measure::Hours) {
    return pivot(records(), {{Dimension::List1, Dimension::List2}, {Dimension::Month}, m, {}},
                 Locale());
}

TEST(PivotExport, CsvByTheReportsRules) {
    struct Case {
        const char* name;
        Locale loc;
        std::string sep;
        Measure measure;
        std::vector<std::vector<std::string>> expected;
    };
    const Case cases[] = {
        {"hours, English",
         Locale(),
         ",",
         Measure::Hours,
         {{"Company", "Person", "November 2026", "December 2026", "Total"},
          {"'=HYPERLINK(\"x\")", "not billed", "0.25", "", "0.25"},
          {"'=HYPERLINK(\"x\")", "Total", "0.25", "", "0.25"},
          {"Acme", "</script><b>", "", "0.50", "0.50"},
          {"Acme", "Smith", "1.50", "", "1.50"},
          {"Acme", "Total", "1.50", "0.50", "2.00"},
          {"Total", "", "1.75", "0.50", "2.25"}}},
        {"amounts, German",
         reporting::test::germanLocale(),
         ";",
         Measure::Amount,
         {{"Company", "Person", "November 2026", "December 2026", "Total"},
          {"'=HYPERLINK(\"x\")", "not billed", "0,01", "", "0,01"},
          {"'=HYPERLINK(\"x\")", "Total", "0,01", "", "0,01"},
          {"Acme", "</script><b>", "", "0,00", "0,00"},
          {"Acme", "Smith", "125,50", "", "125,50"},
          {"Acme", "Total", "125,50", "0,00", "125,50"},
          {"Total", "", "125,51", "0,00", "125,51"}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string bytes = pivotCsv(table(c.measure), kCaptions, c.loc);
        ASSERT_EQ(bytes.substr(0, 3), "\xEF\xBB\xBF");
        auto rows = readCsv(bytes.substr(3), c.sep);
        // Month labels are the locale's; compare the figures and labels of the rows.
        rows[0][2] = "November 2026";
        rows[0][3] = "December 2026";
        EXPECT_EQ(rows, c.expected);
    }
}

TEST(PivotExport, WorkbookWithNumbersAndAChart) {
    const fs::path dir = scratchFolder();
    const fs::path file = dir / "pivot.xlsx";
    writePivotXlsx(file, table(), kCaptions);
    const auto r = runCommand("/usr/bin/python3 " HB_TEST_SOURCE_DIR "/reporting/xlsx_check.py '" +
                              file.string() + "'");
    ASSERT_EQ(r.status, 0) << r.output;
    for (const char* line : {"sheets Pivot|Chart data", "cell Pivot!A1 str Company",
                             "cell Pivot!C5 float 1.5 | 0.00", "cell Pivot!E7 float 2.25 | 0.00",
                             "cell Pivot!A7 str Total", "cell Chart data!B4 float 1.5 | 0.00",
                             "chart Pivot BarChart col 2", "part xl/charts/chart1.xml"}) {
        EXPECT_NE(r.output.find(line), std::string::npos) << line << "\n" << r.output;
    }
    // No file of a failed write, and the old one kept.
    EXPECT_THROW(writePivotXlsx(dir / "missing" / "p.xlsx", table(), kCaptions),
                 std::runtime_error);
}

TEST(PivotExport, OfflinePageCarriesTheRecords) {
    CubeContent data{kCaptions, records()};
    const std::string page =
        pivotHtmlPage(data, {{Dimension::List1}, {Dimension::Month}, Measure::Amount, {}});
    // Nothing is fetched: no external script, style, image or import.
    const std::regex external(
        R"((src|href)\s*=\s*["']?(https?:)?//|url\(\s*["']?(https?:)?//|@import|<link\s[^>]*href)",
        std::regex::icase);
    EXPECT_FALSE(std::regex_search(page, external));
    // The three libraries and their licences are inline.
    for (const char* part : {"jQuery v3.8.0", "jQuery UI - v1.14.2", "pivotUI",
                             "Permission is hereby granted", ".pvtTable"})
        EXPECT_NE(page.find(part), std::string::npos) << part;
    // Every record, its values escaped so that none closes the script.
    const std::size_t begin = page.find("id=\"hb-records\">");
    const std::size_t end = page.find("</script>", begin);
    ASSERT_NE(begin, std::string::npos);
    const std::string json = page.substr(begin, end - begin);
    EXPECT_EQ(json.find("</script"), std::string::npos);
    EXPECT_NE(json.find(R"("Person":"\u003c/script\u003e\u003cb\u003e")"), std::string::npos);
    EXPECT_NE(json.find(R"j("Company":"=HYPERLINK(\"x\")")j"), std::string::npos);
    EXPECT_NE(
        json.find(
            R"("Day":"2026-11-02","Week":"2026-W45","Month":"2026-11","Year":"2026","Hours":1.5,"Rounded hours":1.5,"Amount":125.5})"),
        std::string::npos)
        << json;
    std::size_t objects = 0;
    for (std::size_t at = json.find("{"); at != std::string::npos; at = json.find("{", at + 1))
        ++objects;
    EXPECT_EQ(objects, 3U);
    EXPECT_NE(page.find(R"(rows: ["Company"])"), std::string::npos);
    EXPECT_NE(page.find(R"(vals: ["Amount"])"), std::string::npos);
    // The measures are summed, never dragged to an axis.
    EXPECT_NE(page.find(R"(hiddenFromDragDrop: ["Hours","Rounded hours","Amount"])"),
              std::string::npos);
}

// The run's exit codes with the program's own steps over real files.
TEST(StatsRun, ExitCodes) {
    const fs::path dir = scratchFolder();
    writeCube(cubeFilePath(dir.u16string()), u"john", {dayOf(2026, 11, 1), dayOf(2026, 11, 30)},
              {records()[0], records()[1]}, kCaptions);
    fs::create_directories(dir / "empty");
    const StatsSteps steps = statsSteps(Str(), Locale(), {});
    struct Case {
        const char* name;
        std::vector<Str> args;
        ExitCode code;
        const char* message;  // in the first message
    };
    // Relative: a folder beginning with "/" would read as an option.
    const Str folder = fs::relative(dir).u16string();
    const Str out = (dir / "out").u16string();
    const Case cases[] = {
        {"done", {folder, u"/csv:" + out + u".csv", u"/html:" + out + u".html"}, ExitCode::Ok, ""},
        {"no cube",
         {folder + u"/empty", u"/csv:x.csv"},
         ExitCode::DatabaseUnreachable,
         "does not exist"},
        {"no database",
         {folder + u"/empty", u"/source:database", u"/csv:x.csv"},
         ExitCode::DatabaseUnreachable,
         "does not exist"},
        {"a file fails, the other is written",
         {folder, u"/csv:" + (dir / "no" / "x.csv").u16string(), u"/xlsx:" + out + u".xlsx"},
         ExitCode::ExportFailed,
         "Could not write"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const auto command = parseStatsCommand(c.args).command;
        ASSERT_TRUE(command);
        const RunOutcome o =
            runStatsCommand(*command, statsPeriod(*command, 0, 0), steps, Locale());
        EXPECT_EQ(o.code, c.code);
        if (c.code != ExitCode::Ok) {
            ASSERT_FALSE(o.messages.empty());
            EXPECT_NE(toUtf8(o.messages[0]).find(c.message), std::string::npos)
                << toUtf8(o.messages[0]);
        }
    }
    EXPECT_TRUE(fs::exists(dir / "out.csv"));
    EXPECT_TRUE(fs::exists(dir / "out.html"));
    EXPECT_TRUE(fs::exists(dir / "out.xlsx"));
    // A pivot that cannot be made is the arguments' fault.
    StatsCommand both = *parseStatsCommand({folder, u"/csv:x"}).command;
    both.request.columns = both.request.rows;
    EXPECT_EQ(runStatsCommand(both, {}, steps, Locale()).code, ExitCode::BadArguments);
}

}  // namespace
}  // namespace hb::statistics::test
