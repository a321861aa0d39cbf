#pragma once
// What the export tests share: a report built by hand (records and the
// summary tree, as the aggregation would make them), the two locales the
// tests write in, a CSV reader, a scratch folder and running python3.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "common/DateTime.h"
#include "common/Locale.h"
#include "reporting/ReportTypes.h"

namespace hb::reporting::test {

inline Locale germanLocale() {
    Locale loc;
    loc.decimalSeparator = u",";
    loc.thousandSeparator = u".";
    loc.listSeparator = u";";
    loc.currencySymbol = u"\u20AC";
    loc.shortDate = u"dd.MM.yyyy";
    loc.longTime = u"HH:mm:ss";
    return loc;
}

inline DayNumber day(int y, int m, int d) {
    return static_cast<DayNumber>(dt::serial(y, m, d));
}
inline Date at(DayNumber d, int hour, int minute) {
    return Date{d + dt::timeFraction(hour, minute, 0)};
}

inline TimeRecord record(DayNumber d, int h1, int m1, int h2, int m2, Str subject,
                         std::array<Str, kReportLists> values, std::int64_t seconds,
                         std::int64_t rounded, std::int64_t amountScaled) {
    TimeRecord r;
    r.user = u"john";
    r.entryId = u"E" + subject.substr(0, 3);
    r.day = d;
    r.start = at(d, h1, m1);
    r.end = at(d, h2, m2);
    r.occurrenceStart = r.start;
    r.subject = std::move(subject);
    r.values = std::move(values);
    r.billed = !r.values[0].empty() || !r.values[1].empty() || !r.values[2].empty();
    r.seconds = seconds;
    r.roundedSeconds = rounded;
    r.rate = Currency::fromUnits(80);
    r.amount = Currency{amountScaled};
    return r;
}

inline SummaryNode node(Dimension d, Str label, std::int64_t seconds, std::int64_t rounded,
                        std::int64_t amountScaled, std::size_t records,
                        std::vector<SummaryNode> children = {}) {
    SummaryNode n;
    n.dimension = d;
    n.label = std::move(label);
    n.seconds = seconds;
    n.roundedSeconds = rounded;
    n.amount = Currency{amountScaled};
    n.records = records;
    n.children = std::move(children);
    return n;
}

// Four records of the week of 2 March 2026, grouped by company and person:
// subjects with markup, a formula and quotes; a company with the German list
// separator in its name; an unbilled all-day event.
inline Report sampleReport(HoursFormat format = HoursFormat::Decimal) {
    Report r;
    r.user = u"john";
    r.options.period = {day(2026, 3, 2), day(2026, 3, 8)};
    r.options.grouping = {Dimension::List1, Dimension::List2};
    r.options.hoursFormat = format;
    r.listCaptions = {u"Company", u"Person", u"Project"};
    const DayNumber mon = day(2026, 3, 2), tue = day(2026, 3, 3), wed = day(2026, 3, 4);
    r.records = {
        record(mon, 9, 0, 10, 30, u"Kick-off <script>alert(1)</script>",
               {u"Acme & Co", u"Smith", u""}, 5400, 5400, 1200000),
        record(mon, 13, 0, 13, 20, u"=HYPERLINK(\"x\")", {u"Acme & Co", u"Jones", u""}, 1200, 1800,
               400000),
        record(tue, 22, 0, 23, 59, u"Night \"deploy\", part 1\nsecond line",
               {u"Beta; GmbH", u"Smith", u"X"}, 7140, 7200, 1600000),
        record(wed, 0, 0, 0, 0, u"Holiday", {u"", u"", u""}, 28800, 28800, 0),
    };
    r.total = node(Dimension::List1, u"", 42540, 43200, 3200000, 4,
                   {node(Dimension::List1, u"Acme & Co", 6600, 7200, 1600000, 2,
                         {node(Dimension::List2, u"Jones", 1200, 1800, 400000, 1),
                          node(Dimension::List2, u"Smith", 5400, 5400, 1200000, 1)}),
                    node(Dimension::List1, u"Beta; GmbH", 7140, 7200, 1600000, 1,
                         {node(Dimension::List2, u"Smith", 7140, 7200, 1600000, 1)}),
                    node(Dimension::List1, u"", 28800, 28800, 0, 1,
                         {node(Dimension::List2, u"", 28800, 28800, 0, 1)})});
    return r;
}

// RFC 4180 fields: quoted fields may hold the separator, "" and line breaks;
// rows end with CRLF. The text must not start with a byte-order mark.
inline std::vector<std::vector<std::string>> readCsv(const std::string& text,
                                                     const std::string& sep) {
    std::vector<std::vector<std::string>> rows;
    std::vector<std::string> row;
    std::string field;
    bool quoted = false, wasQuoted = false;
    std::size_t i = 0;
    while (i < text.size()) {
        if (quoted) {
            if (text[i] == '"' && i + 1 < text.size() && text[i + 1] == '"') {
                field += '"';
                i += 2;
            } else if (text[i] == '"') {
                quoted = false;
                ++i;
            } else {
                field += text[i++];
            }
        } else if (text[i] == '"' && field.empty() && !wasQuoted) {
            quoted = wasQuoted = true;
            ++i;
        } else if (text.compare(i, sep.size(), sep) == 0) {
            row.push_back(field);
            field.clear();
            wasQuoted = false;
            i += sep.size();
        } else if (text.compare(i, 2, "\r\n") == 0) {
            row.push_back(field);
            rows.push_back(row);
            row.clear();
            field.clear();
            wasQuoted = false;
            i += 2;
        } else {
            field += text[i++];
        }
    }
    EXPECT_FALSE(quoted) << "a quoted field is not closed";
    EXPECT_TRUE(row.empty() && field.empty()) << "the last row does not end with CRLF";
    return rows;
}

// A new empty folder for the running test.
inline std::filesystem::path scratchFolder() {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = "hb-export-" + std::to_string(::getpid()) + "-" + info->test_suite_name() +
                       "-" + info->name();
    for (char& c : name) {
        if (c == '/') c = '_';
    }
    const std::filesystem::path dir = std::filesystem::temp_directory_path() / name;
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir;
}

inline std::string readFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

struct CommandResult {
    int status = -1;
    std::string output;
};

// Runs a shell command, its standard output captured (standard error passes).
inline CommandResult runCommand(const std::string& command) {
    CommandResult result;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return result;
    char buffer[4096];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        result.output.append(buffer, n);
    result.status = ::pclose(pipe);
    return result;
}

}  // namespace hb::reporting::test
