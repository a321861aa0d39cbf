// The CSV export read back cell by cell: byte-order mark, separator, line
// ends, quoting, formula injection, numbers in the locale's notation, the
// summary file, and a failed write leaving the old file.
#include "ExportTestSupport.h"
#include "reporting/CsvExport.h"

namespace hb::reporting::test {
namespace {

using Rows = std::vector<std::vector<std::string>>;

struct LocaleCase {
    const char* name;
    Locale locale;
    std::string separator;
    Rows records;
    Rows summary;
};

std::vector<LocaleCase> localeCases() {
    const std::string night = "Night \"deploy\", step 1\nsecond line";
    return {
        {"enUS",
         Locale::enUS(),
         ",",
         {{"Date", "Start", "End", "Subject", "Company", "Person", "Project", "Hours",
           "Rounded hours", "Amount"},
          {"3/2/2026", "9:00 AM", "10:30 AM", "Kick-off <script>alert(1)</script>", "Acme & Co",
           "Smith", "", "1.50", "1.50", "120.00"},
          {"3/2/2026", "1:00 PM", "1:20 PM", "'=HYPERLINK(\"x\")", "Acme & Co", "Jones", "",
           "0.3333", "0.50", "40.00"},
          {"3/3/2026", "10:00 PM", "11:59 PM", night, "Beta; GmbH", "Smith", "X", "1.9833", "2.00",
           "160.00"},
          {"3/4/2026", "12:00 AM", "12:00 AM", "Holiday", "", "", "", "8.00", "8.00", "0.00"}},
         {{"Level", "Company", "Person", "Hours", "Rounded hours", "Amount", "Records"},
          {"1", "Acme & Co", "", "1.8333", "2.00", "160.00", "2"},
          {"2", "Acme & Co", "Jones", "0.3333", "0.50", "40.00", "1"},
          {"2", "Acme & Co", "Smith", "1.50", "1.50", "120.00", "1"},
          {"1", "Beta; GmbH", "", "1.9833", "2.00", "160.00", "1"},
          {"2", "Beta; GmbH", "Smith", "1.9833", "2.00", "160.00", "1"},
          {"1", "(none)", "", "8.00", "8.00", "0.00", "1"},
          {"2", "(none)", "(none)", "8.00", "8.00", "0.00", "1"},
          {"0", "Total", "", "11.8167", "12.00", "320.00", "4"}}},
        {"deDE",
         germanLocale(),
         ";",
         {{"Date", "Start", "End", "Subject", "Company", "Person", "Project", "Hours",
           "Rounded hours", "Amount"},
          {"02.03.2026", "09:00", "10:30", "Kick-off <script>alert(1)</script>", "Acme & Co",
           "Smith", "", "1,50", "1,50", "120,00"},
          {"02.03.2026", "13:00", "13:20", "'=HYPERLINK(\"x\")", "Acme & Co", "Jones", "", "0,3333",
           "0,50", "40,00"},
          {"03.03.2026", "22:00", "23:59", night, "Beta; GmbH", "Smith", "X", "1,9833", "2,00",
           "160,00"},
          {"04.03.2026", "00:00", "00:00", "Holiday", "", "", "", "8,00", "8,00", "0,00"}},
         {{"Level", "Company", "Person", "Hours", "Rounded hours", "Amount", "Records"},
          {"1", "Acme & Co", "", "1,8333", "2,00", "160,00", "2"},
          {"2", "Acme & Co", "Jones", "0,3333", "0,50", "40,00", "1"},
          {"2", "Acme & Co", "Smith", "1,50", "1,50", "120,00", "1"},
          {"1", "Beta; GmbH", "", "1,9833", "2,00", "160,00", "1"},
          {"2", "Beta; GmbH", "Smith", "1,9833", "2,00", "160,00", "1"},
          {"1", "(none)", "", "8,00", "8,00", "0,00", "1"},
          {"2", "(none)", "(none)", "8,00", "8,00", "0,00", "1"},
          {"0", "Total", "", "11,8167", "12,00", "320,00", "4"}}},
    };
}

void PrintTo(const LocaleCase& c, std::ostream* os) {
    *os << c.name;
}

class CsvInLocale : public ::testing::TestWithParam<LocaleCase> {};

std::string withoutBom(const std::string& text) {
    EXPECT_EQ(text.substr(0, 3), "\xEF\xBB\xBF") << "no UTF-8 byte-order mark";
    return text.substr(3);
}

TEST_P(CsvInLocale, RecordsReadBackCellByCell) {
    const LocaleCase& c = GetParam();
    const Rows rows = readCsv(withoutBom(csvRecords(sampleReport(), c.locale)), c.separator);
    ASSERT_EQ(rows.size(), c.records.size());
    for (std::size_t r = 0; r < rows.size(); ++r) {
        EXPECT_EQ(rows[r], c.records[r]) << "row " << r;
    }
}

TEST_P(CsvInLocale, SummaryReadBackWithPathsSubtotalsAndGrandTotal) {
    const LocaleCase& c = GetParam();
    const Rows rows = readCsv(withoutBom(csvSummary(sampleReport(), c.locale)), c.separator);
    ASSERT_EQ(rows.size(), c.summary.size());
    for (std::size_t r = 0; r < rows.size(); ++r) {
        EXPECT_EQ(rows[r], c.summary[r]) << "row " << r;
    }
}

// Numbers are bare (a spreadsheet reads them as numbers); text with the
// separator in it is quoted, and only then.
TEST_P(CsvInLocale, NumbersUnquotedTextQuotedOnlyWhenNeeded) {
    const LocaleCase& c = GetParam();
    const std::string text = csvRecords(sampleReport(), c.locale);
    const std::string& s = c.separator;
    const std::string decimal = c.name == std::string("deDE") ? "," : ".";
    EXPECT_NE(text.find(s + "1" + decimal + "50" + s + "1" + decimal + "50" + s + "120" + decimal +
                        "00\r\n"),
              std::string::npos);
    EXPECT_NE(text.find(s + "Acme & Co" + s), std::string::npos);
    const bool germanQuotes = text.find(s + "\"Beta; GmbH\"" + s) != std::string::npos;
    EXPECT_EQ(germanQuotes, s == ";");
    EXPECT_NE(text.find("\"Night \"\"deploy\"\", step 1\nsecond line\""), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Locales, CsvInLocale, ::testing::ValuesIn(localeCases()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(CsvExport, BomCrLfAndHeaderFirst) {
    const std::string text = csvRecords(sampleReport(), Locale::enUS());
    EXPECT_EQ(text.rfind("\xEF\xBB\xBF"
                         "Date,Start,End,Subject,Company,",
                         0),
              0u);
    EXPECT_EQ(text.substr(text.size() - 2), "\r\n");
    // Every line break outside the quoted subject is CRLF.
    std::size_t bare = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n' && (i == 0 || text[i - 1] != '\r')) ++bare;
    }
    EXPECT_EQ(bare, 1u);  // the one inside "Night ... second line"
}

TEST(CsvExport, EmptyReportHasHeaderAndTotal) {
    Report empty = sampleReport();
    empty.records.clear();
    empty.total = SummaryNode{};
    EXPECT_EQ(readCsv(withoutBom(csvRecords(empty, Locale::enUS())), ",").size(), 1u);
    const Rows summary = readCsv(withoutBom(csvSummary(empty, Locale::enUS())), ",");
    ASSERT_EQ(summary.size(), 2u);
    EXPECT_EQ(summary[1],
              (std::vector<std::string>{"0", "Total", "", "0.00", "0.00", "0.00", "0"}));
}

struct CellCase {
    Str text;
    Str separator;
    Str expected;
};

TEST(CsvTextCell, QuotingAndFormulaInjection) {
    const std::vector<CellCase> cases = {
        // plain text stays bare
        {u"Acme", u",", u"Acme"},
        {u"", u",", u""},
        {u"a=b", u",", u"a=b"},
        {u" =x", u",", u" =x"},
        // RFC 4180: separator, quote or line break -> quoted, quotes doubled
        {u"a,b", u",", u"\"a,b\""},
        {u"a,b", u";", u"a,b"},
        {u"a;b", u";", u"\"a;b\""},
        {u"say \"hi\"", u",", u"\"say \"\"hi\"\"\""},
        {u"two\nlines", u",", u"\"two\nlines\""},
        {u"two\r\nlines", u";", u"\"two\r\nlines\""},
        // formulas: an apostrophe in front, and quoted
        {u"=1+2", u",", u"\"'=1+2\""},
        {u"+SUM(A1:A9)", u",", u"\"'+SUM(A1:A9)\""},
        {u"-2+3", u",", u"\"'-2+3\""},
        {u"@cmd", u";", u"\"'@cmd\""},
        {u"\tx", u",", u"\"'\tx\""},
        {u"\rx", u",", u"\"'\rx\""},
        {u"=\"a\",b", u",", u"\"'=\"\"a\"\",b\""},
        {u"-", u",", u"\"'-\""},
        {u"-1e5", u",", u"\"'-1e5\""},
        // a text that is just a number stays a number
        {u"-12.5", u",", u"-12.5"},
        {u"-0,25", u";", u"-0,25"},
        {u"-0,25", u",", u"\"-0,25\""},
        {u"+5", u",", u"+5"},
        {u"-3.", u",", u"\"'-3.\""},
    };
    for (const CellCase& c : cases) {
        EXPECT_EQ(toUtf8(csvTextCell(c.text, c.separator)), toUtf8(c.expected))
            << "text: " << toUtf8(c.text) << " separator: " << toUtf8(c.separator);
    }
}

TEST(CsvSeparator, ListSeparatorUnlessItIsTheDecimalOne) {
    struct Case {
        Str list, decimal, expected;
    };
    const std::vector<Case> cases = {
        {u",", u".", u","}, {u";", u",", u";"}, {u",", u",", u";"},
        {u"", u".", u","},  {u"", u",", u";"},  {u"\t", u".", u"\t"},
    };
    for (const Case& c : cases) {
        Locale loc;
        loc.listSeparator = c.list;
        loc.decimalSeparator = c.decimal;
        EXPECT_EQ(csvSeparator(loc), c.expected) << toUtf8(c.list) << " / " << toUtf8(c.decimal);
    }
}

TEST(CsvExport, WritesRecordsAndSummaryFiles) {
    const auto dir = scratchFolder();
    const auto file = dir / "week 10.csv";
    EXPECT_EQ(summaryCsvPath(file), dir / "week 10-summary.csv");
    writeCsv(file, sampleReport(), germanLocale());
    EXPECT_EQ(readFile(file), csvRecords(sampleReport(), germanLocale()));
    EXPECT_EQ(readFile(dir / "week 10-summary.csv"), csvSummary(sampleReport(), germanLocale()));
    // Written again: replaced, not appended.
    writeCsv(file, sampleReport(), germanLocale());
    EXPECT_EQ(readFile(file), csvRecords(sampleReport(), germanLocale()));
    EXPECT_FALSE(std::filesystem::exists(dir / "week 10.csv.part"));
    std::filesystem::remove_all(dir);
}

TEST(CsvExport, FailedWriteLeavesNoFileBehind) {
    const auto dir = scratchFolder();
    // The target is a folder that cannot be replaced by a file.
    std::filesystem::create_directories(dir / "taken.csv" / "inside");
    EXPECT_THROW(writeCsv(dir / "taken.csv", sampleReport(), Locale::enUS()), std::runtime_error);
    EXPECT_TRUE(std::filesystem::is_directory(dir / "taken.csv" / "inside"));
    EXPECT_FALSE(std::filesystem::exists(dir / "taken.csv.part"));
    EXPECT_THROW(writeCsv(dir / "missing" / "r.csv", sampleReport(), Locale::enUS()),
                 std::runtime_error);
    std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace hb::reporting::test
