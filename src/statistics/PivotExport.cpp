#include "statistics/PivotExport.h"

#include <cstdio>

#include "reporting/Aggregation.h"
#include "reporting/CsvExport.h"
#include "reporting/HtmlExport.h"
#include "statistics/PivotAssets.h"

namespace hb::statistics {

namespace {

using reporting::decimalText;
using reporting::scaledHours;

// A text for JSON inside a script element: quoted, and "<" escaped so that
// no record can close the element or open a comment.
void jsonString(std::string& out, StrView text) {
    out += '"';
    std::size_t plain = 0;  // the start of the run of characters taken as they are
    const auto flush = [&](std::size_t end) {
        if (end > plain) out += toUtf8(text.substr(plain, end - plain));
        plain = end + 1;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        const char* escape = nullptr;
        char code[8] = {};
        if (c == u'"') {
            escape = "\\\"";
        } else if (c == u'\\') {
            escape = "\\\\";
        } else if (c < 0x20 || c == u'<' || c == u'>' || c == u'&' || c == 0x2028 || c == 0x2029) {
            std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(c));
            escape = code;
        }
        if (!escape) continue;
        flush(i);
        out += escape;
    }
    flush(text.size());
    out += '"';
}

// A number for JSON: decimal point, up to four decimals.
std::string jsonNumber(std::int64_t scaled) {
    Locale dot;
    dot.decimalSeparator = u".";
    return toUtf8(decimalText(scaled, 0, 4, dot));
}

// A licence text inside an HTML comment ("--" may not appear in one).
std::string commentText(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        out += text[i];
        if (text[i] == '-' && i + 1 < text.size() && text[i + 1] == '-') out += ' ';
    }
    return out;
}

}  // namespace

std::int64_t scaledMeasure(const PivotFigures& f, Measure m) {
    switch (m) {
        case Measure::Hours:
            return scaledHours(f.seconds);
        case Measure::RoundedHours:
            return scaledHours(f.roundedSeconds);
        case Measure::Amount:
            return f.amount.scaled;
    }
    return 0;
}

Str pivotDimensionCaption(Dimension d, const ListCaptions& captions, const ExportTexts& texts) {
    Str caption = reporting::dimensionCaption(d, captions, texts);
    if (caption.empty()) caption = u"List " + toStr(static_cast<int>(d) + 1);
    return caption;
}

Str measureCaption(Measure m, const ExportTexts& texts) {
    switch (m) {
        case Measure::Hours:
            return texts.hours;
        case Measure::RoundedHours:
            return texts.roundedHours;
        case Measure::Amount:
            return texts.amount;
    }
    return Str();
}

Str pivotHeaderText(const PivotHeader& h, std::size_t dimensions, const ExportTexts& texts) {
    Str out;
    for (std::size_t i = 0; i < h.labels.size(); ++i) {
        if (i) out += u" / ";
        out += h.labels[i].empty() ? texts.none : h.labels[i];
    }
    if (h.level < dimensions || h.labels.empty())
        out += out.empty() ? texts.total : u" / " + texts.total;
    return out;
}

std::string pivotCsv(const PivotTable& t, const ListCaptions& captions, const Locale& loc,
                     const ExportTexts& texts) {
    const Str sep = reporting::csvSeparator(loc);
    const std::size_t nr = t.request.rows.size();
    Str out;
    std::vector<Str> cells;
    for (const Dimension d : t.request.rows)
        cells.push_back(reporting::csvTextCell(pivotDimensionCaption(d, captions, texts), sep));
    if (nr == 0)
        cells.push_back(reporting::csvTextCell(measureCaption(t.request.measure, texts), sep));
    for (const PivotHeader& c : t.columns)
        cells.push_back(
            reporting::csvTextCell(pivotHeaderText(c, t.request.columns.size(), texts), sep));
    reporting::csvAddRow(out, cells, sep);
    for (std::size_t r = 0; r < t.rows.size(); ++r) {
        cells.clear();
        const PivotHeader& h = t.rows[r];
        for (std::size_t l = 0; l < std::max<std::size_t>(nr, 1); ++l) {
            Str label;
            if (l < h.level) {
                label = h.labels[l].empty() ? texts.none : h.labels[l];
            } else if (l == h.level) {
                label = texts.total;
            }
            cells.push_back(reporting::csvTextCell(label, sep));
        }
        for (std::size_t c = 0; c < t.columns.size(); ++c) {
            const PivotFigures& f = t.at(r, c);
            cells.push_back(f.records ? decimalText(scaledMeasure(f, t.request.measure), 2, 4, loc)
                                      : Str());
        }
        reporting::csvAddRow(out, cells, sep);
    }
    return reporting::csvBytes(out);
}

void writePivotCsv(const std::filesystem::path& file, const PivotTable& table,
                   const ListCaptions& captions, const Locale& loc, const ExportTexts& texts) {
    reporting::writeFileReplacing(file, pivotCsv(table, captions, loc, texts));
}

std::string pivotHtmlPage(const CubeContent& data, const PivotSpec& request,
                          const ExportTexts& texts) {
    const PivotAssets& a = pivotAssets();
    constexpr Dimension kAll[] = {Dimension::List1, Dimension::List2, Dimension::List3,
                                  Dimension::User,  Dimension::Day,   Dimension::Week,
                                  Dimension::Month, Dimension::Year};
    std::vector<std::string> names;
    for (const Dimension d : kAll) {
        std::string n;
        jsonString(n, pivotDimensionCaption(d, data.captions, texts));
        names.push_back(n);
    }
    std::string hours, rounded, amount;
    jsonString(hours, texts.hours);
    jsonString(rounded, texts.roundedHours);
    jsonString(amount, texts.amount);

    std::string records = "[";
    records.reserve(data.records.size() * 160);
    for (std::size_t i = 0; i < data.records.size(); ++i) {
        const TimeRecord& r = data.records[i];
        records += i ? ",\n{" : "\n{";
        for (std::size_t k = 0; k < std::size(kAll); ++k) {
            records += names[k] + ":";
            const Str key = dimensionKey(r, kAll[k]);
            jsonString(records, key.empty() && k < kReportLists ? reporting::kNotBilled : key);
            records += ",";
        }
        records += hours + ":" + jsonNumber(scaledHours(r.seconds)) + "," + rounded + ":" +
                   jsonNumber(scaledHours(r.roundedSeconds)) + "," + amount + ":" +
                   jsonNumber(r.amount.scaled) + "}";
    }
    records += "\n]";

    const auto axis = [&](const std::vector<Dimension>& dims) {
        std::string out = "[";
        for (std::size_t i = 0; i < dims.size(); ++i) {
            if (i) out += ",";
            jsonString(out, pivotDimensionCaption(dims[i], data.captions, texts));
        }
        return out + "]";
    };
    std::string measure;
    jsonString(measure, measureCaption(request.measure, texts));
    const std::string title = toUtf8(reporting::htmlEscape(texts.title));

    std::string page;
    page.reserve(records.size() + a.jquery.size() + a.jqueryUi.size() + a.pivotScript.size() +
                 16384);
    page += "<!DOCTYPE html>\n<html lang=\"" + toUtf8(reporting::htmlEscape(texts.language)) +
            "\">\n<head>\n<meta charset=\"utf-8\"/>\n<title>" + title + "</title>\n";
    page +=
        "<!--\nThis page carries these programs inline, under their licences:\n\n"
        "pivottable 2.23.0 (npm pivottable)\n";
    page += commentText(a.pivotLicence);
    page += "\n\njQuery 3.8.0 (npm jquery)\n";
    page += commentText(a.jqueryLicence);
    page += "\n\njQuery UI 1.14.2 (npm jquery-ui)\n";
    page += commentText(a.jqueryUiLicence);
    page += "\n-->\n<style>\n";
    page += a.pivotStyle;
    page +=
        "\nbody{font-family:Segoe UI,Arial,sans-serif;font-size:10pt;margin:12px}"
        "h1{font-size:14pt}\n</style>\n<script>\n";
    page += a.jquery;
    page += "\n</script>\n<script>\n";
    page += a.jqueryUi;
    page += "\n</script>\n<script>\n";
    page += a.pivotScript;
    page += "\n</script>\n</head>\n<body>\n<h1>" + title + "</h1>\n<div id=\"pivot\"></div>\n";
    page += "<script type=\"application/json\" id=\"hb-records\">" + records + "</script>\n";
    page +=
        "<script>\n$(function () {\n"
        "  var records = JSON.parse(document.getElementById(\"hb-records\").textContent);\n"
        "  $(\"#pivot\").pivotUI(records, {\n"
        "    rows: " +
        axis(request.rows) +
        ",\n"
        "    cols: " +
        axis(request.columns) +
        ",\n"
        "    vals: [" +
        measure +
        "],\n"
        "    hiddenFromDragDrop: [" +
        hours + "," + rounded + "," + amount +
        "],\n"
        "    aggregatorName: \"Sum\",\n"
        "    rendererName: \"Table\"\n"
        "  });\n});\n</script>\n</body>\n</html>\n";
    return page;
}

void writePivotHtml(const std::filesystem::path& file, const CubeContent& data,
                    const PivotSpec& request, const ExportTexts& texts) {
    reporting::writeFileReplacing(file, pivotHtmlPage(data, request, texts));
}

}  // namespace hb::statistics
