#include "reporting/ReportView.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "common/AutomationError.h"
#include "common/DateTime.h"
#include "common/Text.h"

namespace hb::reporting {

namespace {

void take(Str& target, const Str& phrase) {
    if (!phrase.empty()) target = phrase;
}

// Floor division and modulo, for days before 1899 too.
Str twoDigits(std::int64_t v) {
    Str s = toStr(v);
    return s.size() < 2 ? u"0" + s : s;
}

Str nodeText(const Str& label, const SummaryNode& n, HoursFormat format, const ReportTexts& t,
             const Locale& loc) {
    return label + u": " + formatHours(n.seconds, format, loc) + u" h, " + t.rounded + u" " +
           formatHours(n.roundedSeconds, format, loc) + u" h, " + amountText(n.amount, loc, true);
}

TreeRow treeOf(const SummaryNode& n, HoursFormat format, const ReportTexts& t, const Locale& loc) {
    TreeRow row;
    const bool listLevel = n.dimension == Dimension::List1 || n.dimension == Dimension::List2 ||
                           n.dimension == Dimension::List3;
    const Str label = !n.label.empty() ? n.label : listLevel ? t.notBilled : t.none;
    row.text = nodeText(label, n, format, t, loc);
    for (const SummaryNode& child : n.children)
        row.children.push_back(treeOf(child, format, t, loc));
    return row;
}

Str isoDate(DayNumber day) {
    const dt::Parts p = dt::toParts(day);
    return toStr(p.year) + u"-" + twoDigits(p.month) + u"-" + twoDigits(p.day);
}

}  // namespace

ReportTexts reportTextsFrom(const Phrases& p) {
    ReportTexts t;
    if (!p.LNGREPORT.empty()) t.caption = u"Hourbook for Outlook - " + p.LNGREPORT;
    take(t.period, p.LNGDATERANGE);
    take(t.from, p.LNGFROM);
    take(t.to, p.LNGTO);
    take(t.groupBy, p.LNGBY);
    take(t.day, p.LNGDAY);
    take(t.week, p.LNGWEEK);
    take(t.month, p.LNGMONTH);
    take(t.year, p.LNGYEAR);
    take(t.user, p.LNGUSERNAME);
    take(t.hours, p.LNGHOURS);
    take(t.noRounding, p.LNGNONE);
    take(t.total, p.LNGSUM);
    take(t.date, p.LNGDATE);
    take(t.subject, p.LNGSUBJECT);
    take(t.working, p.LNGFETCHINGAPPS);
    take(t.noRecords, p.LNGNOAPPSFOUND);
    take(t.save, p.LNGSAVE);
    take(t.details, p.LNGAPPOINTMENTS);
    return t;
}

Period periodOf(PeriodChoice choice, DayNumber today, const Period& custom) {
    return choice == PeriodChoice::Custom ? custom : periodFor(choice, today);
}

std::optional<Str> formProblem(const ReportForm& form, const ReportTexts& t) {
    if (form.period == PeriodChoice::Custom && form.custom.empty()) return t.endBeforeStart;
    return std::nullopt;
}

ReportOptions optionsFrom(const ReportForm& form, DayNumber today) {
    ReportOptions o;
    o.period = periodOf(form.period, today, form.custom);
    o.grouping.clear();
    for (const std::optional<Dimension>& level : form.grouping) {
        if (!level) continue;
        if (std::find(o.grouping.begin(), o.grouping.end(), *level) != o.grouping.end()) continue;
        o.grouping.push_back(*level);
    }
    o.hoursFormat = form.hoursFormat;
    o.rounding = form.rounding;
    o.overlapOnce = form.overlapOnce;
    return o;
}

Str dimensionCaption(Dimension d, const std::array<Str, kReportLists>& listCaptions,
                     const ReportTexts& t) {
    switch (d) {
        case Dimension::List1:
            return listCaptions[0];
        case Dimension::List2:
            return listCaptions[1];
        case Dimension::List3:
            return listCaptions[2];
        case Dimension::Day:
            return t.day;
        case Dimension::Week:
            return t.week;
        case Dimension::Month:
            return t.month;
        case Dimension::Year:
            return t.year;
        case Dimension::User:
            return t.user;
    }
    return {};
}

std::vector<Str> roundingChoices(const ReportTexts& t) {
    std::vector<Str> out;
    for (std::int32_t minutes : kRoundingMinutes)
        out.push_back(minutes == 0 ? t.noRounding : toStr(minutes) + u" " + t.minutes);
    return out;
}

TreeRow summaryTree(const Report& report, HoursFormat format, const ReportTexts& t,
                    const Locale& loc) {
    TreeRow root = treeOf(report.total, format, t, loc);
    root.text = nodeText(t.total, report.total, format, t, loc);
    return root;
}

std::vector<ListColumn> listColumns(const Report& report, const ReportTexts& t) {
    std::vector<ListColumn> columns = {{t.date}, {t.start}, {t.end}, {t.subject}};
    for (const Str& caption : report.listCaptions)
        columns.push_back({caption});
    columns.push_back({t.hours, true});
    columns.push_back({t.roundedHours, true});
    columns.push_back({t.amount, true});
    return columns;
}

std::vector<std::vector<Str>> listRows(const Report& report, HoursFormat format,
                                       const Locale& loc) {
    std::vector<std::vector<Str>> rows;
    rows.reserve(report.records.size());
    for (const TimeRecord& r : report.records) {
        std::vector<Str> row = {dayText(r.day, loc), timeText(r.start, loc), timeText(r.end, loc),
                                r.subject};
        for (const Str& value : r.values)
            row.push_back(value);
        row.push_back(formatHours(r.seconds, format, loc));
        row.push_back(formatHours(r.roundedSeconds, format, loc));
        row.push_back(amountText(r.amount, loc, true));
        rows.push_back(std::move(row));
    }
    return rows;
}

std::vector<std::size_t> sortedOrder(const Report& report, std::size_t column, bool ascending) {
    const std::vector<TimeRecord>& r = report.records;
    std::vector<std::size_t> order(r.size());
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    // Each column's key as a number or as folded text.
    auto number = [&](std::size_t i) -> double {
        switch (column) {
            case 0:
                return r[i].day + (r[i].start.days - std::floor(r[i].start.days));
            case 1:
                return r[i].start.days - std::floor(r[i].start.days);
            case 2:
                return r[i].end.days - std::floor(r[i].start.days);
            case 7:
                return static_cast<double>(r[i].seconds);
            case 8:
                return static_cast<double>(r[i].roundedSeconds);
            default:
                return static_cast<double>(r[i].amount.scaled);
        }
    };
    const bool byText = column >= 3 && column < 4 + kReportLists;
    std::vector<Str> texts;
    if (byText)
        for (const TimeRecord& rec : r)
            texts.push_back(text::foldCase(column == 3 ? rec.subject : rec.values[column - 4]));
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        if (!ascending) std::swap(a, b);
        return byText ? texts[a] < texts[b] : number(a) < number(b);
    });
    return order;
}

Str tabSeparated(const std::vector<ListColumn>& columns,
                 const std::vector<std::vector<Str>>& rows) {
    Str out;
    auto line = [&out](auto cells) {
        bool first = true;
        for (Str cell : cells) {
            for (char16_t& c : cell)
                if (c == u'\t' || c == u'\r' || c == u'\n') c = u' ';
            if (!first) out += u'\t';
            out += cell;
            first = false;
        }
        out += u"\r\n";
    };
    std::vector<Str> captions;
    for (const ListColumn& c : columns)
        captions.push_back(c.caption);
    line(captions);
    for (const auto& row : rows)
        line(row);
    return out;
}

Str statusText(const Report& report, HoursFormat format, const ReportTexts& t, const Locale& loc) {
    if (report.records.empty()) return t.noRecords;
    const std::size_t n = report.records.size();
    return toStr(static_cast<long long>(n)) + u" " + (n == 1 ? t.record : t.records) + u", " +
           dayText(report.options.period.first, loc) + u" - " +
           dayText(report.options.period.last, loc) + u", " +
           formatHours(report.total.seconds, format, loc) + u" h, " +
           amountText(report.total.amount, loc, true);
}

Str failureText(const Str& what, const std::exception_ptr& failure) {
    Str why;
    try {
        if (failure) std::rethrow_exception(failure);
    } catch (const AutomationError& e) {
        why = e.description() + u" (" + toStr(e.number()) + u")";
    } catch (const std::exception& e) {
        why = fromUtf8(e.what());
    } catch (...) {
        why = u"An unexpected error occurred.";
    }
    return why.empty() ? what : what + u"\n\n" + why;
}

Str exportExtension(ExportFormat format) {
    switch (format) {
        case ExportFormat::Csv:
            return u"csv";
        case ExportFormat::Xlsx:
            return u"xlsx";
        case ExportFormat::Html:
            return u"html";
    }
    return {};
}

Str exportFileName(ExportFormat format, const Period& period) {
    return u"Hourbook report " + isoDate(period.first) + u" to " + isoDate(period.last) + u"." +
           exportExtension(format);
}

}  // namespace hb::reporting
