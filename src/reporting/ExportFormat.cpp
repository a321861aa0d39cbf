#include "reporting/ExportFormat.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "common/DateTime.h"

namespace hb::reporting {

namespace {

// a / b rounded half away from zero (b > 0).
std::int64_t divideRounded(std::int64_t a, std::int64_t b) {
    const std::int64_t half = b / 2;
    return a >= 0 ? (a + half) / b : -((-a + half) / b);
}

}  // namespace

ExportTexts exportTexts(const Phrases& p) {
    ExportTexts t;
    auto take = [](Str& caption, const Str& phrase) {
        if (!phrase.empty()) caption = phrase;
    };
    take(t.title, p.LNGREPORT);
    take(t.date, p.LNGDATE);
    take(t.start, p.LNGFROM);
    take(t.end, p.LNGTO);
    take(t.subject, p.LNGSUBJECT);
    take(t.hours, p.LNGHOURS);
    take(t.total, p.LNGSUM);
    take(t.period, p.LNGDATERANGE);
    take(t.user, p.LNGUSERNAME);
    take(t.day, p.LNGDAY);
    take(t.week, p.LNGWEEK);
    take(t.month, p.LNGMONTH);
    take(t.year, p.LNGYEAR);
    if (!p.LNGNONE.empty()) t.none = u"(" + p.LNGNONE + u")";
    return t;
}

std::int64_t scaledHours(std::int64_t seconds) {
    // hours x 10^4 = seconds x 10^4 / 3600 = seconds x 25 / 9
    return divideRounded(seconds * 25, 9);
}

Str decimalText(std::int64_t scaled, int minDecimals, int maxDecimals, const Locale& loc) {
    std::int64_t divisor = 1;
    for (int i = maxDecimals; i < 4; ++i)
        divisor *= 10;
    const std::int64_t value = divideRounded(scaled, divisor);
    const bool negative = value < 0;
    const std::uint64_t magnitude =
        negative ? static_cast<std::uint64_t>(-(value + 1)) + 1 : static_cast<std::uint64_t>(value);
    std::uint64_t unit = 1;
    for (int i = 0; i < maxDecimals; ++i)
        unit *= 10;
    Str out;
    if (negative) out += u'-';
    for (char c : std::to_string(magnitude / unit))
        out += static_cast<char16_t>(c);
    Str decimals;
    std::uint64_t fraction = magnitude % unit;
    for (int i = 0; i < maxDecimals; ++i) {
        decimals.insert(decimals.begin(), static_cast<char16_t>(u'0' + fraction % 10));
        fraction /= 10;
    }
    while (static_cast<int>(decimals.size()) > minDecimals && decimals.back() == u'0') {
        decimals.pop_back();
    }
    if (!decimals.empty()) out += loc.decimalSeparator + decimals;
    return out;
}

Str amountText(Currency amount, const Locale& loc, bool thousands) {
    Str text = decimalText(amount.scaled, 2, 2, loc);
    if (!thousands || loc.thousandSeparator.empty()) return text;
    const std::size_t digitsFrom = text[0] == u'-' ? 1 : 0;
    const std::size_t point = text.find(loc.decimalSeparator, digitsFrom);
    for (std::size_t i = (point == Str::npos ? text.size() : point); i > digitsFrom + 3; i -= 3)
        text.insert(i - 3, loc.thousandSeparator);
    return text;
}

Str dayText(DayNumber day, const Locale& loc) {
    return dt::formatPicture(dt::toParts(static_cast<double>(day)), loc.shortDate, loc);
}

Str periodText(const Period& period, const Locale& loc) {
    Str text = dayText(period.first, loc);
    if (period.last != period.first) text += u" \u2013 " + dayText(period.last, loc);
    return text;
}

Str shortTimePicture(const Locale& loc) {
    const Str& picture = loc.longTime;
    Str out;
    bool quoted = false;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        const char16_t c = picture[i];
        if (c == u'\'') quoted = !quoted;
        if (quoted || c != u's') {
            out += c;
            continue;
        }
        // Drop the seconds and the separator written before them.
        while (i + 1 < picture.size() && picture[i + 1] == u's')
            ++i;
        while (!out.empty() && out.back() != u'm' && out.back() != u'h' && out.back() != u'H' &&
               out.back() != u' ' && out.back() != u'\'') {
            out.pop_back();
        }
    }
    return out;
}

Str timeText(Date value, const Locale& loc) {
    return dt::formatPicture(dt::toParts(value.days), shortTimePicture(loc), loc);
}

Str dimensionCaption(Dimension d, const Report& report, const ExportTexts& texts) {
    return dimensionCaption(d, report.listCaptions, texts);
}

Str dimensionCaption(Dimension d, const std::array<Str, kReportLists>& listCaptions,
                     const ExportTexts& texts) {
    switch (d) {
        case Dimension::List1:
            return listCaptions[0];
        case Dimension::List2:
            return listCaptions[1];
        case Dimension::List3:
            return listCaptions[2];
        case Dimension::Day:
            return texts.day;
        case Dimension::Week:
            return texts.week;
        case Dimension::Month:
            return texts.month;
        case Dimension::Year:
            return texts.year;
        case Dimension::User:
            return texts.user;
    }
    return Str();
}

Str groupLabel(const SummaryNode& node, const ExportTexts& texts) {
    return node.label.empty() ? texts.none : node.label;
}

namespace {
void flattenInto(const SummaryNode& node, int level, std::vector<SummaryRow>& rows) {
    for (const SummaryNode& child : node.children) {
        rows.push_back({level, &child});
        flattenInto(child, level + 1, rows);
    }
}
}  // namespace

std::vector<SummaryRow> flattenSummary(const SummaryNode& root) {
    std::vector<SummaryRow> rows;
    flattenInto(root, 0, rows);
    return rows;
}

std::filesystem::path temporaryBeside(const std::filesystem::path& target) {
    std::filesystem::path temporary = target;
    temporary += ".part";
    return temporary;
}

void replaceWith(const std::filesystem::path& temporary, const std::filesystem::path& target) {
    std::error_code ec;
    std::filesystem::rename(temporary, target, ec);
    if (ec) {
        std::filesystem::remove(temporary, ec);
        throw std::runtime_error("cannot write the file " + target.string());
    }
}

void writeFileReplacing(const std::filesystem::path& target, std::string_view bytes) {
    const std::filesystem::path temporary = temporaryBeside(target);
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        if (out) out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        out.close();
        if (!out) {
            std::error_code ec;
            std::filesystem::remove(temporary, ec);
            throw std::runtime_error("cannot write the file " + target.string());
        }
    }
    replaceWith(temporary, target);
}

}  // namespace hb::reporting
