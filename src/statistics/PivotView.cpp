#include "statistics/PivotView.h"

#include <algorithm>
#include <cmath>

namespace hb::statistics {

namespace {

bool taken(const std::vector<Dimension>& chosen, Dimension d) {
    return std::find(chosen.begin(), chosen.end(), d) != chosen.end();
}

// The filter's keys: the text split at ";", blanks around each dropped.
std::vector<Str> filterKeys(const Str& text) {
    std::vector<Str> keys;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find(u';', start);
        if (end == Str::npos) end = text.size();
        std::size_t a = start, b = end;
        while (a < b && text[a] == u' ')
            ++a;
        while (b > a && text[b - 1] == u' ')
            --b;
        if (b > a) keys.push_back(text.substr(a, b - a));
        start = end + 1;
    }
    return keys;
}

// Whether a header belongs to the innermost groups of its axis (no total).
bool innermost(const PivotHeader& h, std::size_t dimensions) {
    return !h.isTotal(dimensions);
}

}  // namespace

PivotSpec specFrom(const PivotForm& form) {
    PivotSpec request;
    request.columns.clear();
    if (form.column) request.columns.push_back(*form.column);
    request.rows.clear();
    for (const std::optional<Dimension>& level : form.rows)
        if (level && !taken(request.rows, *level) && !taken(request.columns, *level))
            request.rows.push_back(*level);
    if (request.rows.empty())
        for (const Dimension d : kPivotDimensions)
            if (!taken(request.columns, d)) {
                request.rows.push_back(d);
                break;
            }
    request.measure = form.measure;
    if (form.filterDimension) {
        PivotFilter filter{*form.filterDimension, filterKeys(form.filterValue)};
        if (!filter.values.empty()) request.filters.push_back(std::move(filter));
    }
    return request;
}

reporting::Period periodFrom(const PivotForm& form, reporting::DayNumber today, int firstWeekday) {
    const std::size_t i = std::min(form.period, kPivotPeriods.size() - 1);
    if (!kPivotPeriods[i]) return reporting::Period{};
    return reporting::periodFor(*kPivotPeriods[i], today, firstWeekday);
}

PivotTexts pivotTextsFrom(const Phrases& p) {
    PivotTexts t;
    auto take = [](Str& caption, const Str& phrase) {
        if (!phrase.empty()) caption = phrase;
    };
    if (!p.LNGSTATISTICS.empty()) t.caption = u"Hourbook for Outlook - " + p.LNGSTATISTICS;
    take(t.period, p.LNGDATERANGE);
    take(t.periods[0], p.LNGALL);
    take(t.save, p.LNGSAVE);
    take(t.sum, p.LNGSUM);
    if (!p.LNGNONE.empty()) t.none = u"(" + p.LNGNONE + u")";
    t.names = reporting::exportTexts(p);
    t.names.title = p.LNGSTATISTICS.empty() ? Str(u"Hours statistics") : p.LNGSTATISTICS;
    return t;
}

std::vector<Str> dimensionChoices(const ListCaptions& captions, const PivotTexts& t) {
    std::vector<Str> out;
    for (const Dimension d : kPivotDimensions)
        out.push_back(pivotDimensionCaption(d, captions, t.names));
    return out;
}

std::vector<Str> measureChoices(const PivotTexts& t) {
    std::vector<Str> out;
    for (const Measure m : kPivotMeasures)
        out.push_back(measureCaption(m, t.names));
    return out;
}

PivotGrid pivotGrid(const PivotTable& table, const ListCaptions& captions, const PivotTexts& t,
                    const Locale& loc) {
    PivotGrid grid;
    const std::size_t nr = table.request.rows.size();
    const std::size_t labels = std::max<std::size_t>(nr, 1);
    for (const Dimension d : table.request.rows)
        grid.columns.push_back({pivotDimensionCaption(d, captions, t.names), false});
    if (nr == 0) grid.columns.push_back({measureCaption(table.request.measure, t.names), false});
    for (const PivotHeader& c : table.columns)
        grid.columns.push_back({pivotHeaderText(c, table.request.columns.size(), t.names), true});

    grid.rows.reserve(table.rows.size());
    for (std::size_t r = 0; r < table.rows.size(); ++r) {
        const PivotHeader& h = table.rows[r];
        PivotGridRow row;
        row.level = h.level;
        row.total = h.isTotal(nr);
        for (std::size_t l = 0; l < labels; ++l) {
            if (l < h.level)
                row.cells.push_back(h.labels[l].empty() ? t.names.none : h.labels[l]);
            else
                row.cells.push_back(l == h.level ? t.names.total : Str());
        }
        for (std::size_t c = 0; c < table.columns.size(); ++c) {
            const PivotFigures& f = table.at(r, c);
            row.cells.push_back(f.records ? reporting::decimalText(
                                                scaledMeasure(f, table.request.measure), 2, 2, loc)
                                          : Str());
        }
        grid.rows.push_back(std::move(row));
    }
    return grid;
}

PivotChart pivotChart(const PivotTable& table, ChartKind kind, const PivotTexts& t,
                      const Locale& loc) {
    PivotChart chart;
    chart.kind = kind;
    const std::size_t nr = table.request.rows.size(), nc = table.request.columns.size();
    if (table.rows.empty() || table.columns.empty()) return chart;
    auto value = [&](std::size_t r, std::size_t c) {
        return static_cast<double>(scaledMeasure(table.at(r, c), table.request.measure)) / 10000.0;
    };
    // The outer row groups are the headers with the first level fixed (a
    // subtotal row, or the group itself with one row dimension); without
    // row dimensions the grand total row stands for them.
    std::vector<std::size_t> groups;
    for (std::size_t r = 0; r < table.rows.size(); ++r)
        if (nr == 0 ? r + 1 == table.rows.size() : table.rows[r].level == 1) {
            groups.push_back(r);
            const PivotHeader& h = table.rows[r];
            chart.series.push_back(nr == 0 ? measureCaption(table.request.measure, t.names)
                                   : h.labels.empty() || h.labels[0].empty() ? t.names.none
                                                                             : h.labels[0]);
        }
    const std::size_t totalColumn = table.columns.size() - 1;

    if (kind == ChartKind::Shares) {
        double whole = 0;
        for (const std::size_t r : groups)
            whole += std::max(0.0, value(r, totalColumn));
        if (whole <= 0) return chart;
        for (std::size_t g = 0; g < groups.size(); ++g) {
            const double v = value(groups[g], totalColumn);
            if (v <= 0) continue;
            PivotChart::Slice slice{chart.series[g], v, v / whole, {}};
            slice.legend =
                slice.label + u" " +
                reporting::decimalText(std::llround(slice.share * 1000000.0), 1, 1, loc) + u"%";
            chart.slices.push_back(std::move(slice));
        }
        return chart;
    }

    std::vector<std::size_t> bars;
    for (std::size_t c = 0; c < table.columns.size(); ++c)
        if (nc == 0 ? c == totalColumn : innermost(table.columns[c], nc)) bars.push_back(c);
    for (const std::size_t c : bars) {
        PivotChart::Bar bar;
        bar.label = nc == 0 ? t.sum : pivotHeaderText(table.columns[c], nc, t.names);
        for (const std::size_t r : groups) {
            bar.parts.push_back(value(r, c));
            bar.total += bar.parts.back();
        }
        chart.largest = std::max(chart.largest, bar.total);
        chart.bars.push_back(std::move(bar));
    }
    return chart;
}

Str pivotStatus(const PivotTable& table, const PivotTexts& t, const Locale& loc) {
    if (table.records == 0) return t.noRecords;
    const Str total =
        reporting::decimalText(scaledMeasure(table.grandTotal(), table.request.measure), 2, 2, loc);
    return toStr(static_cast<std::int64_t>(table.records)) + u" " +
           (table.records == 1 ? t.record : t.records) + u", " +
           measureCaption(table.request.measure, t.names) + u" " + total;
}

}  // namespace hb::statistics
