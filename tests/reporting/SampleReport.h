#pragma once
// A report built by hand, as the aggregation would make it (records and the
// summary tree), and the two locales the export tests write in. Shared by
// the native tests and the Windows export check.
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
        record(tue, 22, 0, 23, 59, u"Night \"deploy\", step 1\nsecond line",
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

}  // namespace hb::reporting::test
