#include "statistics/StatsCommandLine.h"

#include <algorithm>

#include "common/Text.h"

namespace hb::statistics {

namespace {

using reporting::CommandArgument;

// Appended piece by piece: MinGW's GCC 12 sees a false overlap (-Wrestrict)
// in the concatenation of a literal, the text and a literal.
Str quoted(StrView s) {
    Str out;
    out.reserve(s.size() + 2);
    out += u'"';
    out.append(s);
    out += u'"';
    return out;
}

constexpr char16_t kDimensionChoices[] =
    u" is none of list1, list2, list3, day, week, month, year, user";

class Parser {
  public:
    ParsedStatsCommand run(const std::vector<Str>& arguments) {
        for (const Str& argument : arguments)
            if (!argument.empty() && !take(argument)) return {std::nullopt, error_};
        if (!finish()) return {std::nullopt, error_};
        return {std::move(c_), {}};
    }

  private:
    bool fail(Str message) {
        error_ = std::move(message);
        return false;
    }

    bool take(const Str& argument) {
        const CommandArgument a = reporting::splitArgument(argument);
        if (!a.isOption) {
            if (!c_.folder.empty()) return fail(u"more than one folder: " + quoted(argument));
            c_.folder = argument;
            return true;
        }
        if (a.isHelp()) {
            help_ = true;
            return true;
        }
        static const char16_t* const kOptions[] = {u"rows",   u"cols", u"columns", u"measure",
                                                   u"period", u"from", u"to",      u"filter",
                                                   u"source", u"csv",  u"xlsx",    u"html"};
        const Str key = a.key == u"columns" ? Str(u"cols") : a.key;
        if (std::none_of(std::begin(kOptions), std::end(kOptions),
                         [&](const char16_t* k) { return key == k; }))
            return fail(u"unknown option " + quoted(argument));
        if (key != u"filter") {
            if (std::find(seen_.begin(), seen_.end(), key) != seen_.end())
                return fail(u"option /" + key + u" is given twice");
            seen_.push_back(key);
        }
        if (a.value.empty()) return fail(u"/" + key + u" needs a value, as in /" + key + u":...");
        report_ = true;
        const StrView value = a.value;
        if (key == u"rows") return dimensions(value, key, c_.request.rows);
        if (key == u"cols") return dimensions(value, key, c_.request.columns);
        if (key == u"measure") return measure(value);
        if (key == u"period") {
            c_.namedPeriod = reporting::periodNamed(value);
            return c_.namedPeriod ? true : fail(reporting::periodNameProblem(value));
        }
        if (key == u"from" || key == u"to") {
            const auto day = reporting::isoDay(value);
            if (!day)
                return fail(u"/" + key + u": " + quoted(value) +
                            u" is not a date written YYYY-MM-DD");
            (key == u"from" ? c_.from : c_.to) = *day;
            return true;
        }
        if (key == u"filter") return filter(value);
        if (key == u"source") return source(value);
        (key == u"csv" ? c_.csv : key == u"xlsx" ? c_.xlsx : c_.html) = a.value;
        return true;
    }

    bool dimensions(StrView value, const Str& key, std::vector<Dimension>& out) {
        out.clear();
        for (const StrView part : text::splitViews(value, u",")) {
            const Str name = text::trim(part);
            const auto d = reporting::dimensionNamed(name);
            if (!d) return fail(u"/" + key + u": " + quoted(name) + kDimensionChoices);
            if (std::find(out.begin(), out.end(), *d) != out.end())
                return fail(u"/" + key + u": " + quoted(name) + u" is given twice");
            out.push_back(*d);
        }
        return true;
    }

    bool measure(StrView value) {
        for (const Measure m : {Measure::Hours, Measure::RoundedHours, Measure::Amount})
            if (text::equalsNoCase(value, measureName(m))) {
                c_.request.measure = m;
                return true;
            }
        return fail(u"/measure: " + quoted(value) + u" is none of hours, rounded, amount");
    }

    // DIM=VALUE;DIM=VALUE...; a value may be empty (records without one).
    bool filter(StrView value) {
        for (const StrView part : text::splitViews(value, u";")) {
            const std::size_t eq = part.find(u'=');
            if (eq == StrView::npos)
                return fail(u"/filter: " + quoted(part) + u" is not written DIM=VALUE");
            const Str name = text::trim(part.substr(0, eq));
            const auto d = reporting::dimensionNamed(name);
            if (!d) return fail(u"/filter: " + quoted(name) + kDimensionChoices);
            auto it = std::find_if(c_.request.filters.begin(), c_.request.filters.end(),
                                   [&](const PivotFilter& f) { return f.dimension == *d; });
            if (it == c_.request.filters.end()) {
                c_.request.filters.push_back({*d, {}});
                it = c_.request.filters.end() - 1;
            }
            it->values.emplace_back(part.substr(eq + 1));
        }
        return true;
    }

    bool source(StrView value) {
        struct Named {
            const char16_t* name;
            StatsSource source;
        };
        static constexpr Named kSources[] = {{u"auto", StatsSource::Auto},
                                             {u"database", StatsSource::Database},
                                             {u"cube", StatsSource::Cube},
                                             {u"server", StatsSource::Server}};
        for (const Named& n : kSources)
            if (text::equalsNoCase(value, n.name)) {
                c_.source = n.source;
                return true;
            }
        return fail(u"/source: " + quoted(value) + u" is none of auto, database, cube, server");
    }

    bool finish() {
        if (help_) {
            c_.mode = RunMode::Help;
            return true;
        }
        if (!report_) return true;
        c_.mode = RunMode::Report;
        Str problem = reporting::periodOptionsProblem(c_.namedPeriod, c_.from, c_.to, false);
        if (!problem.empty()) return fail(std::move(problem));
        if (c_.csv.empty() && c_.xlsx.empty() && c_.html.empty())
            return fail(u"nothing to write: give /csv:FILE, /xlsx:FILE or /html:FILE");
        for (const Dimension d : c_.request.rows)
            if (std::find(c_.request.columns.begin(), c_.request.columns.end(), d) !=
                c_.request.columns.end())
                return fail(u"/rows and /cols both have " + Str(reporting::dimensionName(d)));
        if (c_.source != StatsSource::Server && c_.folder.empty())
            return fail(u"no folder: give the database or cube folder (or /source:server)");
        return true;
    }

    StatsCommand c_;
    std::vector<Str> seen_;
    bool report_ = false;
    bool help_ = false;
    Str error_;
};

}  // namespace

ParsedStatsCommand parseStatsCommand(const std::vector<Str>& arguments) {
    return Parser().run(arguments);
}

Period statsPeriod(const StatsCommand& command, DayNumber today, int firstWeekday) {
    if (!command.namedPeriod && !command.from) return Period{};
    return reporting::resolvePeriod(command.namedPeriod, command.from, command.to, today,
                                    firstWeekday);
}

Str statsUsage() {
    return u"Cubelens.exe [FOLDER]  opens the pivot window\r\n"
           u"Cubelens.exe [FOLDER] [/rows:DIM,...] [/cols:DIM,...] "
           u"[/measure:hours|rounded|amount]\r\n"
           u"             [/period:thisweek|lastweek|thismonth|lastmonth|thisyear|lastyear\r\n"
           u"              | /from:YYYY-MM-DD /to:YYYY-MM-DD] "
           u"[/filter:DIM=VALUE[;DIM=VALUE]]...\r\n"
           u"             [/source:auto|database|cube|server] [/csv:FILE] [/xlsx:FILE] "
           u"[/html:FILE]\r\n"
           u"DIM: list1 list2 list3 day week month year user\r\n"
           u"Exit codes: 0 done, 1 failed, 2 bad arguments, 4 database or cube unreadable,\r\n"
           u"5 export failed.";
}

}  // namespace hb::statistics
