// Numbers, hours and times as the exports write them.
#include "ExportTestSupport.h"
#include "reporting/ExportFormat.h"

namespace hb::reporting::test {
namespace {

TEST(ExportFormat, ScaledHoursRoundHalfAwayFromZero) {
    const std::vector<std::pair<std::int64_t, std::int64_t>> cases = {
        {0, 0},    {3600, 10000},   {1, 3}, {1200, 3333}, {-1200, -3333}, {7140, 19833},
        {36, 100}, {90000, 250000}, {2, 6}, {-1, -3},     {18, 50},       {3599, 9997},
    };
    for (const auto& [seconds, scaled] : cases) {
        EXPECT_EQ(scaledHours(seconds), scaled) << seconds << " s";
    }
}

TEST(ExportFormat, DecimalText) {
    struct Case {
        std::int64_t scaled;
        int minDecimals, maxDecimals;
        bool german;
        const char* expected;
    };
    const std::vector<Case> cases = {
        {15000, 2, 2, false, "1.50"},   {15000, 2, 2, true, "1,50"},
        {33333, 2, 4, false, "3.3333"}, {12345, 2, 2, false, "1.23"},
        {12350, 2, 2, false, "1.24"},   {-12350, 2, 2, false, "-1.24"},
        {10000, 0, 4, false, "1"},      {10500, 0, 4, true, "1,05"},
        {5, 2, 4, false, "0.0005"},     {5, 2, 3, false, "0.001"},
        {-1, 2, 2, false, "0.00"},      {-49, 2, 2, false, "0.00"},
        {-50, 2, 2, false, "-0.01"},    {1234567890000, 2, 2, false, "123456789.00"},
        {99995, 2, 2, false, "10.00"},  {0, 0, 0, false, "0"},
    };
    for (const Case& c : cases) {
        const Locale loc = c.german ? germanLocale() : Locale::enUS();
        EXPECT_EQ(toUtf8(decimalText(c.scaled, c.minDecimals, c.maxDecimals, loc)), c.expected)
            << c.scaled << " " << c.minDecimals << ".." << c.maxDecimals;
    }
}

TEST(ExportFormat, HoursTextDecimalAndHoursMinutes) {
    struct Case {
        std::int64_t seconds;
        HoursFormat format;
        const char* expected;
    };
    const std::vector<Case> cases = {
        {0, HoursFormat::Decimal, "0.00"},
        {5400, HoursFormat::Decimal, "1.50"},
        {1200, HoursFormat::Decimal, "0.33"},
        {7140, HoursFormat::Decimal, "1.98"},
        {0, HoursFormat::HoursMinutes, "0:00"},
        {5400, HoursFormat::HoursMinutes, "1:30"},
        {1200, HoursFormat::HoursMinutes, "0:20"},
        {29, HoursFormat::HoursMinutes, "0:00"},
        {30, HoursFormat::HoursMinutes, "0:01"},
        {42540, HoursFormat::HoursMinutes, "11:49"},
        {360000, HoursFormat::HoursMinutes, "100:00"},
        {-5400, HoursFormat::HoursMinutes, "-1:30"},
        {3570, HoursFormat::HoursMinutes, "1:00"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(toUtf8(formatHours(c.seconds, c.format, Locale::enUS())), c.expected)
            << c.seconds << " s";
    }
}

TEST(ExportFormat, ShortTimePictureDropsTheSeconds) {
    const std::vector<std::pair<Str, Str>> cases = {
        {u"h:mm:ss tt", u"h:mm tt"}, {u"HH:mm:ss", u"HH:mm"}, {u"tt hh:mm:ss", u"tt hh:mm"},
        {u"H.mm.ss", u"H.mm"},       {u"HH:mm", u"HH:mm"},    {u"H:mm:s", u"H:mm"},
    };
    for (const auto& [picture, expected] : cases) {
        Locale loc;
        loc.longTime = picture;
        EXPECT_EQ(toUtf8(shortTimePicture(loc)), toUtf8(expected)) << toUtf8(picture);
    }
    EXPECT_EQ(toUtf8(timeText(at(day(2026, 3, 2), 14, 5), germanLocale())), "14:05");
    EXPECT_EQ(toUtf8(timeText(at(day(2026, 3, 2), 14, 5), Locale::enUS())), "2:05 PM");
}

TEST(ExportFormat, CaptionsFromThePhraseTableWhereItHasThem) {
    Phrases german;
    german.LNGREPORT = u"Bericht";
    german.LNGDATE = u"Datum";
    german.LNGFROM = u"Von";
    german.LNGTO = u"Bis";
    german.LNGSUBJECT = u"Betreff";
    german.LNGHOURS = u"Stunden";
    german.LNGSUM = u"Summe";
    german.LNGDATERANGE = u"Datumsbereich";
    german.LNGWEEK = u"Woche";
    german.LNGNONE = u"Keine";
    const ExportTexts t = exportTexts(german);
    const std::vector<std::pair<Str, Str>> captions = {
        {t.title, u"Bericht"},
        {t.date, u"Datum"},
        {t.start, u"Von"},
        {t.end, u"Bis"},
        {t.subject, u"Betreff"},
        {t.hours, u"Stunden"},
        {t.total, u"Summe"},
        {t.period, u"Datumsbereich"},
        {t.week, u"Woche"},
        {t.none, u"(Keine)"},
        // no phrase, or an empty one: English
        {t.roundedHours, u"Rounded hours"},
        {t.amount, u"Amount"},
        {t.day, u"Day"},
        {t.user, u"User"},
    };
    for (const auto& [caption, expected] : captions) {
        EXPECT_EQ(toUtf8(caption), toUtf8(expected));
    }
    EXPECT_EQ(toUtf8(exportTexts(Phrases{}).none), "(none)");
}

TEST(ExportFormat, SummaryFlattenedGroupBeforeSubgroups) {
    const Report r = sampleReport();
    std::vector<std::string> rows;
    for (const SummaryRow& row : flattenSummary(r.total)) {
        rows.push_back(std::to_string(row.level) + " " +
                       toUtf8(groupLabel(*row.node, ExportTexts{})));
    }
    EXPECT_EQ(rows, (std::vector<std::string>{"0 Acme & Co", "1 Jones", "1 Smith", "0 Beta; GmbH",
                                              "1 Smith", "0 (none)", "1 (none)"}));
    EXPECT_TRUE(flattenSummary(SummaryNode{}).empty());
}

}  // namespace
}  // namespace hb::reporting::test
