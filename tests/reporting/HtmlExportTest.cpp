// The HTML page read back by python3 (as XML and through html.parser):
// well-formed, nothing fetched from outside, every text escaped and read
// back as written, the chart, the summary tree and the records.
#include "ExportTestSupport.h"
#include "reporting/HtmlExport.h"

#ifndef HB_TEST_SOURCE_DIR
#error "HB_TEST_SOURCE_DIR: the tests' source folder"
#endif

namespace hb::reporting::test {
namespace {

// The check script's lines that start with key (each without the key).
std::vector<std::string> linesOf(const std::string& output, const std::string& key) {
    std::vector<std::string> lines;
    std::istringstream in(output);
    for (std::string line; std::getline(in, line);) {
        if (line.rfind(key + " ", 0) == 0) lines.push_back(line.substr(key.size() + 1));
    }
    return lines;
}

std::string checkPage(const std::filesystem::path& page) {
    const CommandResult r = runCommand(
        "/usr/bin/python3 " HB_TEST_SOURCE_DIR "/reporting/page_check.py '" + page.string() + "'");
    EXPECT_EQ(r.status, 0) << "the page does not parse:\n" << r.output;
    return r.output;
}

struct PageCase {
    const char* name;
    HoursFormat format;
    Locale locale;
    std::vector<std::string> summary;
    std::string firstRecord;
    std::string facts;
};

std::vector<PageCase> pageCases() {
    return {
        {"DecimalEnUS",
         HoursFormat::Decimal,
         Locale::enUS(),
         {"Acme & Co|1.83|2.00|160.00|2", "Jones|0.33|0.50|40.00|1", "Smith|1.50|1.50|120.00|1",
          "Beta; GmbH|1.98|2.00|160.00|1", "Smith|1.98|2.00|160.00|1", "(none)|8.00|8.00|0.00|1",
          "(none)|8.00|8.00|0.00|1", "Total|11.82|12.00|320.00|4"},
         "3/2/2026|9:00 AM|10:30 AM|Kick-off <script>alert(1)</script>|Acme & Co|Smith||1.50|1.50|"
         "120.00",
         "Period|3/2/2026 \u2013 3/8/2026|Grouping|Company \u203A Person|User|john|Total|11.82 "
         "Hours, 320.00 Amount"},
        {"HoursMinutesDeDE",
         HoursFormat::HoursMinutes,
         germanLocale(),
         {"Acme & Co|1:50|2:00|160,00|2", "Jones|0:20|0:30|40,00|1", "Smith|1:30|1:30|120,00|1",
          "Beta; GmbH|1:59|2:00|160,00|1", "Smith|1:59|2:00|160,00|1", "(none)|8:00|8:00|0,00|1",
          "(none)|8:00|8:00|0,00|1", "Total|11:49|12:00|320,00|4"},
         "02.03.2026|09:00|10:30|Kick-off <script>alert(1)</script>|Acme & Co|Smith||1:30|1:30|"
         "120,00",
         "Period|02.03.2026 \u2013 08.03.2026|Grouping|Company \u203A Person|User|john|Total|11:49 "
         "Hours, 320,00 Amount"},
    };
}

void PrintTo(const PageCase& c, std::ostream* os) {
    *os << c.name;
}

class HtmlPage : public ::testing::TestWithParam<PageCase> {};

TEST_P(HtmlPage, ReadsBackWellFormedSelfContainedAndAsWritten) {
    const PageCase& c = GetParam();
    const auto dir = scratchFolder();
    const auto file = dir / "report.html";
    writeHtml(file, sampleReport(c.format), c.locale);
    const std::string out = checkPage(file);

    EXPECT_EQ(linesOf(out, "html-errors"), std::vector<std::string>{"0"});
    EXPECT_EQ(linesOf(out, "outside"), std::vector<std::string>{"0"});
    EXPECT_EQ(linesOf(out, "http"),
              std::vector<std::string>{"0 src= 0 url( 0 @import 0 <script 0"});
    EXPECT_EQ(linesOf(out, "title"), std::vector<std::string>{"Hours report"});
    EXPECT_EQ(linesOf(out, "bars"), std::vector<std::string>{"3"});
    EXPECT_EQ(linesOf(out, "bar-labels"),
              std::vector<std::string>{c.format == HoursFormat::Decimal
                                           ? "Acme & Co|1.83|Beta; GmbH|1.98|(none)|8.00"
                                           : "Acme & Co|1:50|Beta; GmbH|1:59|(none)|8:00"});
    EXPECT_EQ(linesOf(out, "summary"), c.summary);
    const auto records = linesOf(out, "record");
    ASSERT_EQ(records.size(), 4u);
    EXPECT_EQ(records[0], c.firstRecord);
    EXPECT_NE(records[1].find("|=HYPERLINK(\"x\")|"), std::string::npos) << records[1];
    EXPECT_NE(records[2].find("|Night \"deploy\", step 1\\nsecond line|"), std::string::npos)
        << records[2];
    EXPECT_EQ(linesOf(out, "facts"), std::vector<std::string>{c.facts});
    std::filesystem::remove_all(dir);
}

INSTANTIATE_TEST_SUITE_P(Formats, HtmlPage, ::testing::ValuesIn(pageCases()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(HtmlPage, PrintsOnA4AndIsUtf8) {
    const std::string page = htmlPage(sampleReport(), Locale::enUS());
    EXPECT_EQ(page.rfind("<!DOCTYPE html>\n<html lang=\"en\">", 0), 0u);
    EXPECT_NE(page.find("<meta charset=\"utf-8\"/>"), std::string::npos);
    EXPECT_NE(page.find("@media print"), std::string::npos);
    EXPECT_NE(page.find("@page { size: A4"), std::string::npos);
    EXPECT_NE(page.find("3/2/2026 \xE2\x80\x93 3/8/2026"), std::string::npos);  // UTF-8 en dash
}

TEST(HtmlPage, EmptyReportStillParses) {
    Report empty = sampleReport();
    empty.records.clear();
    empty.total = SummaryNode{};
    const auto dir = scratchFolder();
    writeHtml(dir / "empty.html", empty, Locale::enUS());
    const std::string out = checkPage(dir / "empty.html");
    EXPECT_EQ(linesOf(out, "bars"), std::vector<std::string>{"0"});
    EXPECT_EQ(linesOf(out, "summary"), std::vector<std::string>{"Total|0.00|0.00|0.00|0"});
    EXPECT_TRUE(linesOf(out, "record").empty());
    std::filesystem::remove_all(dir);
}

TEST(HtmlEscape, MarkupCharactersAndControls) {
    const std::vector<std::pair<Str, Str>> cases = {
        {u"plain", u"plain"},
        {u"<script>alert('x')</script>", u"&lt;script&gt;alert(&#39;x&#39;)&lt;/script&gt;"},
        {u"A & B", u"A &amp; B"},
        {u"&amp;", u"&amp;amp;"},
        {u"\"quoted\"", u"&quot;quoted&quot;"},
        {u"a\u0001b\u001Fc", u"a b c"},
        {u"tab\tline\n", u"tab\tline\n"},
        {u"\u00C4rger \u20AC", u"\u00C4rger \u20AC"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(toUtf8(htmlEscape(text)), toUtf8(expected)) << toUtf8(text);
    }
}

}  // namespace
}  // namespace hb::reporting::test
