#include "reporting/HtmlExport.h"

#include <algorithm>

namespace hb::reporting {

namespace {

// Printed on A4 portrait: the tables fit the page's width, a table's header
// repeats on every page, a row never breaks across pages.
constexpr StrView kStyle =
    uR"(
body { font-family: "Segoe UI", Arial, Helvetica, sans-serif; font-size: 10pt; color: #222; margin: 2em; }
h1 { font-size: 16pt; margin: 0 0 0.3em 0; }
h2 { font-size: 12pt; margin: 1.5em 0 0.5em 0; border-bottom: 1px solid #999; }
dl.facts { display: grid; grid-template-columns: max-content auto; gap: 0.2em 1em; margin: 0; }
dl.facts dt { font-weight: bold; }
dl.facts dd { margin: 0; }
table { border-collapse: collapse; width: 100%; }
th, td { padding: 0.25em 0.5em; border-bottom: 1px solid #ddd; text-align: left; vertical-align: top; }
th { background: #eef1f5; }
td { white-space: pre-line; }
td.num, th.num { text-align: right; white-space: nowrap; }
td.when { white-space: nowrap; }
table.summary { width: auto; min-width: 60%; }
tr.level0 td { font-weight: bold; }
tr.total td { font-weight: bold; border-top: 2px solid #333; border-bottom: none; }
svg.chart { max-width: 100%; height: auto; }
svg.chart text { font-family: inherit; font-size: 11px; fill: #222; }
svg.chart rect.bar { fill: #4a78b0; }
@media print {
  @page { size: A4 portrait; margin: 15mm; }
  body { margin: 0; font-size: 9pt; }
  th { -webkit-print-color-adjust: exact; print-color-adjust: exact; }
  svg.chart rect.bar { -webkit-print-color-adjust: exact; print-color-adjust: exact; }
  thead { display: table-header-group; }
  tr { break-inside: avoid; page-break-inside: avoid; }
  h2 { break-after: avoid; page-break-after: avoid; }
}
)";

Str cell(StrView tag, StrView text, StrView cls = {}) {
    Str out = u"<";
    out += tag;
    if (!cls.empty()) {
        out += u" class=\"";
        out += cls;
        out += u"\"";
    }
    out += u">";
    out += htmlEscape(text);
    out += u"</";
    out += tag;
    out += u">";
    return out;
}

// A label for the chart, shortened so that it stays left of its bar.
Str chartLabel(const Str& label) {
    constexpr std::size_t kMax = 28;
    if (label.size() <= kMax) return label;
    return label.substr(0, kMax - 1) + u"\u2026";
}

Str chart(const Report& report, const Locale& loc, const ExportTexts& texts) {
    const auto& groups = report.total.children;
    constexpr int kLabelWidth = 190, kBarWidth = 420, kValueWidth = 80, kRow = 24, kTop = 8;
    const int width = kLabelWidth + kBarWidth + kValueWidth;
    const int height = kTop * 2 + kRow * static_cast<int>(std::max<std::size_t>(groups.size(), 1));
    std::int64_t largest = 0;
    for (const SummaryNode& g : groups)
        largest = std::max(largest, g.seconds);

    Str out = u"<svg class=\"chart\" role=\"img\" width=\"" + toStr(width) + u"\" height=\"" +
              toStr(height) + u"\" viewBox=\"0 0 " + toStr(width) + u" " + toStr(height) + u"\">";
    out += cell(u"title", texts.chartTitle);
    int y = kTop;
    for (const SummaryNode& g : groups) {
        const int bar = largest > 0 ? static_cast<int>(g.seconds * kBarWidth / largest) : 0;
        const Str middle = toStr(y + kRow / 2 + 4);
        out += u"<text x=\"" + toStr(kLabelWidth - 8) + u"\" y=\"" + middle +
               u"\" text-anchor=\"end\">" + htmlEscape(chartLabel(groupLabel(g, texts))) +
               u"</text>";
        out += u"<rect class=\"bar\" x=\"" + toStr(kLabelWidth) + u"\" y=\"" + toStr(y + 3) +
               u"\" width=\"" + toStr(std::max(bar, 1)) + u"\" height=\"" + toStr(kRow - 6) +
               u"\"/>";
        out += u"<text x=\"" + toStr(kLabelWidth + bar + 6) + u"\" y=\"" + middle + u"\">" +
               htmlEscape(formatHours(g.seconds, report.options.hoursFormat, loc)) + u"</text>";
        y += kRow;
    }
    out += u"</svg>";
    return out;
}

Str totalsCells(const SummaryNode& node, const Report& report, const Locale& loc) {
    const HoursFormat f = report.options.hoursFormat;
    return cell(u"td", formatHours(node.seconds, f, loc), u"num") +
           cell(u"td", formatHours(node.roundedSeconds, f, loc), u"num") +
           cell(u"td", amountText(node.amount, loc), u"num") +
           cell(u"td", toStr(static_cast<long long>(node.records)), u"num");
}

Str summaryTable(const Report& report, const Locale& loc, const ExportTexts& texts) {
    Str out = u"<table class=\"summary\"><thead><tr>";
    out += cell(u"th", texts.group) + cell(u"th", texts.hours, u"num") +
           cell(u"th", texts.roundedHours, u"num") + cell(u"th", texts.amount, u"num") +
           cell(u"th", texts.records, u"num");
    out += u"</tr></thead><tbody>";
    for (const SummaryRow& row : flattenSummary(report.total)) {
        out += u"<tr class=\"level" + toStr(row.level) + u"\"><td style=\"padding-left: " +
               toStr(8 + 20 * row.level) + u"px\">" + htmlEscape(groupLabel(*row.node, texts)) +
               u"</td>";
        out += totalsCells(*row.node, report, loc) + u"</tr>";
    }
    out += u"<tr class=\"total\">" + cell(u"td", texts.total) +
           totalsCells(report.total, report, loc) + u"</tr>";
    out += u"</tbody></table>";
    return out;
}

Str recordsTable(const Report& report, const Locale& loc, const ExportTexts& texts) {
    const HoursFormat f = report.options.hoursFormat;
    Str out = u"<table class=\"records\"><thead><tr>";
    out += cell(u"th", texts.date) + cell(u"th", texts.start) + cell(u"th", texts.end) +
           cell(u"th", texts.subject);
    for (const Str& caption : report.listCaptions)
        out += cell(u"th", caption);
    out += cell(u"th", texts.hours, u"num") + cell(u"th", texts.roundedHours, u"num") +
           cell(u"th", texts.amount, u"num");
    out += u"</tr></thead><tbody>";
    for (const TimeRecord& r : report.records) {
        out += u"<tr>" + cell(u"td", dayText(r.day, loc), u"when") +
               cell(u"td", timeText(r.start, loc), u"when") +
               cell(u"td", timeText(r.end, loc), u"when") + cell(u"td", r.subject);
        for (const Str& value : r.values)
            out += cell(u"td", value);
        out += cell(u"td", formatHours(r.seconds, f, loc), u"num") +
               cell(u"td", formatHours(r.roundedSeconds, f, loc), u"num") +
               cell(u"td", amountText(r.amount, loc), u"num") + u"</tr>";
    }
    out += u"</tbody></table>";
    return out;
}

}  // namespace

Str htmlEscape(StrView text) {
    Str out;
    out.reserve(text.size());
    for (char16_t c : text) {
        switch (c) {
            case u'&':
                out += u"&amp;";
                break;
            case u'<':
                out += u"&lt;";
                break;
            case u'>':
                out += u"&gt;";
                break;
            case u'"':
                out += u"&quot;";
                break;
            case u'\'':
                out += u"&#39;";
                break;
            default:
                // Control characters other than tab and line breaks are not
                // allowed in HTML (nor XML) text: they become a blank.
                out += (c < 0x20 && c != u'\t' && c != u'\n' && c != u'\r') ? u' ' : c;
        }
    }
    return out;
}

std::string htmlPage(const Report& report, const Locale& loc, const ExportTexts& texts) {
    Str grouping;
    for (Dimension d : report.options.grouping) {
        if (!grouping.empty()) grouping += u" \u203A ";
        grouping += dimensionCaption(d, report, texts);
    }
    const Str period = periodText(report.options.period, loc);

    Str page = u"<!DOCTYPE html>\n<html lang=\"" + htmlEscape(texts.language) +
               u"\">\n<head>\n<meta charset=\"utf-8\"/>\n<title>" + htmlEscape(texts.title) +
               u"</title>\n<style>" + Str(kStyle) + u"</style>\n</head>\n<body>\n";
    page += cell(u"h1", texts.title) + u"\n<dl class=\"facts\">";
    page += cell(u"dt", texts.period) + cell(u"dd", period);
    page += cell(u"dt", texts.grouping) + cell(u"dd", grouping);
    if (!report.user.empty()) page += cell(u"dt", texts.user) + cell(u"dd", report.user);
    page += cell(u"dt", texts.total) +
            cell(u"dd", formatHours(report.total.seconds, report.options.hoursFormat, loc) + u" " +
                            texts.hours + u", " + amountText(report.total.amount, loc) + u" " +
                            texts.amount);
    page += u"</dl>\n";
    page += cell(u"h2", texts.chartTitle) + u"\n" + chart(report, loc, texts) + u"\n";
    page += cell(u"h2", texts.summaryHeading) + u"\n" + summaryTable(report, loc, texts) + u"\n";
    page += cell(u"h2", texts.records) + u"\n" + recordsTable(report, loc, texts) + u"\n";
    page += u"</body>\n</html>\n";
    return toUtf8(page);
}

void writeHtml(const std::filesystem::path& file, const Report& report, const Locale& loc,
               const ExportTexts& texts) {
    writeFileReplacing(file, htmlPage(report, loc, texts));
}

}  // namespace hb::reporting
