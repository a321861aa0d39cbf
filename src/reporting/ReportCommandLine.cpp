#include "reporting/ReportCommandLine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "common/DateTime.h"
#include "common/Text.h"

namespace hb::reporting {

namespace {

using text::equalsNoCase;

struct Named {
    const char16_t* name;
    NamedPeriod period;
};
constexpr Named kPeriods[] = {
    {u"thisweek", NamedPeriod::ThisWeek},   {u"lastweek", NamedPeriod::LastWeek},
    {u"thismonth", NamedPeriod::ThisMonth}, {u"lastmonth", NamedPeriod::LastMonth},
    {u"thisyear", NamedPeriod::ThisYear},   {u"lastyear", NamedPeriod::LastYear},
};

struct NamedDimension {
    const char16_t* name;
    Dimension dimension;
};
constexpr NamedDimension kDimensions[] = {
    {u"list1", Dimension::List1}, {u"list2", Dimension::List2}, {u"list3", Dimension::List3},
    {u"day", Dimension::Day},     {u"week", Dimension::Week},   {u"month", Dimension::Month},
    {u"year", Dimension::Year},   {u"user", Dimension::User},
};

struct NamedDirection {
    const char16_t* name;
    RoundingDirection direction;
};
constexpr NamedDirection kDirections[] = {
    {u"up", RoundingDirection::Up},
    {u"nearest", RoundingDirection::Nearest},
    {u"down", RoundingDirection::Down},
};

constexpr std::array<int, 4> kRoundingMinutes{6, 15, 30, 60};

Str quoted(StrView s) {
    Str out;
    out.reserve(s.size() + 2);
    out += u'"';
    out.append(s);
    out += u'"';
    return out;
}

// A whole number of decimal digits only.
std::optional<int> number(StrView s) {
    if (s.empty() || s.size() > 6) return std::nullopt;
    int n = 0;
    for (char16_t c : s) {
        if (c < u'0' || c > u'9') return std::nullopt;
        n = n * 10 + (c - u'0');
    }
    return n;
}

class Parser {
  public:
    ParsedCommand run(const std::vector<Str>& arguments) {
        for (const Str& argument : arguments) {
            if (!take(argument)) return {std::nullopt, error_};
        }
        if (!finish()) return {std::nullopt, error_};
        return {std::move(c_), {}};
    }

  private:
    bool fail(Str message) {
        error_ = std::move(message);
        return false;
    }

    bool take(const Str& argument) {
        if (argument.empty()) return true;
        const CommandArgument a = splitArgument(argument);
        if (!a.isOption) {
            if (!c_.folder.empty()) return fail(u"more than one folder: " + quoted(argument));
            c_.folder = argument;
            return true;
        }
        const Str& key = a.key;
        const bool hasValue = a.hasValue;
        const StrView value = a.value;
        if (key.empty()) return fail(u"unknown option " + quoted(argument));
        if (a.isHelp()) {
            help_ = true;
            return true;
        }
        if (std::find(seen_.begin(), seen_.end(), key) != seen_.end())
            return fail(u"option /" + key + u" is given twice");
        seen_.push_back(key);
        if (key == u"overlaponce") {
            if (hasValue) return fail(u"/overlaponce takes no value");
            c_.options.overlapOnce = true;
            report_ = true;
            return true;
        }
        static const char16_t* const kValued[] = {u"period", u"from", u"to",   u"group", u"hours",
                                                  u"round",  u"csv",  u"xlsx", u"html"};
        if (std::none_of(std::begin(kValued), std::end(kValued),
                         [&](const char16_t* k) { return key == k; }))
            return fail(u"unknown option " + quoted(argument));
        if (value.empty()) return fail(u"/" + key + u" needs a value, as in /" + key + u":...");
        report_ = true;
        if (key == u"period") return period(value);
        if (key == u"from" || key == u"to") {
            const auto day = isoDay(value);
            if (!day)
                return fail(u"/" + key + u": " + quoted(value) +
                            u" is not a date written YYYY-MM-DD");
            (key == u"from" ? c_.from : c_.to) = *day;
            return true;
        }
        if (key == u"group") return group(value);
        if (key == u"hours") return hours(value);
        if (key == u"round") return round(value);
        (key == u"csv" ? c_.csv : key == u"xlsx" ? c_.xlsx : c_.html) = Str(value);
        return true;
    }

    bool period(StrView value) {
        c_.namedPeriod = periodNamed(value);
        if (c_.namedPeriod) return true;
        return fail(periodNameProblem(value));
    }

    bool group(StrView value) {
        std::vector<Dimension> levels;
        for (const StrView part : text::splitViews(value, u",")) {
            const Str name = text::trim(part);
            const auto d = dimensionNamed(name);
            if (!d)
                return fail(u"/group: " + quoted(name) +
                            u" is none of list1, list2, list3, day, week, month, year, user");
            if (std::find(levels.begin(), levels.end(), *d) != levels.end())
                return fail(u"/group: " + quoted(name) + u" is given twice");
            levels.push_back(*d);
        }
        c_.options.grouping = std::move(levels);
        return true;
    }

    bool hours(StrView value) {
        if (equalsNoCase(value, u"decimal")) {
            c_.options.hoursFormat = HoursFormat::Decimal;
        } else if (equalsNoCase(value, u"hmm") || equalsNoCase(value, u"h:mm")) {
            c_.options.hoursFormat = HoursFormat::HoursMinutes;
        } else {
            return fail(u"/hours: " + quoted(value) + u" is neither decimal nor hmm");
        }
        return true;
    }

    bool round(StrView value) {
        const auto parts = text::splitViews(value, u",");
        if (parts.size() > 2) return fail(u"/round: " + quoted(value) + u" has too many parts");
        const Str minutes = text::trim(parts[0]);
        if (equalsNoCase(minutes, u"none") || minutes == u"0") {
            if (parts.size() > 1) return fail(u"/round:none takes no direction");
            c_.options.rounding = Rounding{};
            return true;
        }
        const auto n = number(minutes);
        if (!n || std::find(kRoundingMinutes.begin(), kRoundingMinutes.end(), *n) ==
                      kRoundingMinutes.end())
            return fail(u"/round: " + quoted(minutes) + u" is none of none, 6, 15, 30, 60");
        Rounding r{*n, RoundingDirection::Nearest};
        if (parts.size() == 2) {
            const Str direction = text::trim(parts[1]);
            const auto it = std::find_if(
                std::begin(kDirections), std::end(kDirections),
                [&](const NamedDirection& d) { return equalsNoCase(direction, d.name); });
            if (it == std::end(kDirections))
                return fail(u"/round: " + quoted(direction) + u" is none of up, nearest, down");
            r.direction = it->direction;
        }
        c_.options.rounding = r;
        return true;
    }

    bool finish() {
        if (help_) {
            c_.mode = RunMode::Help;
            return true;
        }
        if (!report_) {
            c_.mode = RunMode::Window;
            return true;
        }
        c_.mode = RunMode::Report;
        Str problem = periodOptionsProblem(c_.namedPeriod, c_.from, c_.to, true);
        if (!problem.empty()) return fail(std::move(problem));
        return true;
    }

    ReportCommand c_;
    std::vector<Str> seen_;
    bool report_ = false;
    bool help_ = false;
    Str error_;
};

}  // namespace

std::optional<Dimension> dimensionNamed(StrView name) {
    for (const NamedDimension& d : kDimensions)
        if (equalsNoCase(name, d.name)) return d.dimension;
    return std::nullopt;
}

const char16_t* dimensionName(Dimension dimension) {
    for (const NamedDimension& d : kDimensions)
        if (d.dimension == dimension) return d.name;
    return u"";
}

std::optional<DayNumber> isoDay(StrView s) {
    if (s.size() != 10 || s[4] != u'-' || s[7] != u'-') return std::nullopt;
    const auto y = number(s.substr(0, 4)), m = number(s.substr(5, 2)), d = number(s.substr(8, 2));
    if (!y || !m || !d || *y < 1900 || !dt::isValidDate(*y, *m, *d)) return std::nullopt;
    return static_cast<DayNumber>(dt::serial(*y, *m, *d));
}

ParsedCommand parseReportCommand(const std::vector<Str>& arguments) {
    return Parser().run(arguments);
}

Period namedPeriodDays(NamedPeriod period, DayNumber today, int firstWeekday) {
    return periodFor(period, today, firstWeekday);
}

Period resolvePeriod(const ReportCommand& command, DayNumber today, int firstWeekday) {
    return resolvePeriod(command.namedPeriod, command.from, command.to, today, firstWeekday);
}

Period resolvePeriod(const std::optional<NamedPeriod>& named, std::optional<DayNumber> from,
                     std::optional<DayNumber> to, DayNumber today, int firstWeekday) {
    if (named) return namedPeriodDays(*named, today, firstWeekday);
    return {from.value_or(today), to.value_or(today)};
}

CommandArgument splitArgument(StrView argument) {
    CommandArgument a;
    if (argument.empty() || (argument[0] != u'/' && argument[0] != u'-')) {
        a.value = Str(argument);
        return a;
    }
    a.isOption = true;
    const StrView body = argument.substr(1);
    const std::size_t cut = body.find_first_of(u":=");
    a.key = text::lower(body.substr(0, cut));
    a.hasValue = cut != StrView::npos;
    if (a.hasValue) a.value = Str(body.substr(cut + 1));
    return a;
}

std::optional<NamedPeriod> periodNamed(StrView name) {
    for (const Named& p : kPeriods)
        if (equalsNoCase(name, p.name)) return p.period;
    return std::nullopt;
}

Str periodNameProblem(StrView value) {
    return u"/period: " + quoted(value) +
           u" is none of thisweek, lastweek, thismonth, lastmonth, thisyear, lastyear";
}

Str periodOptionsProblem(const std::optional<NamedPeriod>& named,
                         const std::optional<DayNumber>& from, const std::optional<DayNumber>& to,
                         bool required) {
    if (named && (from || to)) return u"/period and /from, /to cannot be given together";
    if (!named && !from && !to)
        return required ? u"no period: give /period:... or /from:YYYY-MM-DD /to:YYYY-MM-DD" : u"";
    if (!named && (!from || !to)) return from ? u"/from needs /to" : u"/to needs /from";
    if (from && *to < *from) return u"/to is before /from";
    return u"";
}

Str reportUsage() {
    return u"HBReporting.exe [FOLDER]  opens the report window\r\n"
           u"HBReporting.exe /period:thisweek|lastweek|thismonth|lastmonth|thisyear|lastyear\r\n"
           u"                | /from:YYYY-MM-DD /to:YYYY-MM-DD\r\n"
           u"                [/group:list1,list2,list3,day,week,month,year,user]\r\n"
           u"                [/hours:decimal|hmm] [/round:none|6|15|30|60[,up|nearest|down]]\r\n"
           u"                [/overlaponce] [/csv:FILE] [/xlsx:FILE] [/html:FILE]\r\n"
           u"Exit codes: 0 done, 1 failed, 2 bad arguments, 3 Outlook not available,\r\n"
           u"4 database unreachable, 5 export failed.";
}

}  // namespace hb::reporting
