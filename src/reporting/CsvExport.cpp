#include "reporting/CsvExport.h"

#include <algorithm>

namespace hb::reporting {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr StrView kLineEnd = u"\r\n";

// Digits with an optional sign and one decimal part, as "-12", "3.5", "-0,25".
bool isPlainNumber(StrView text) {
    std::size_t i = 0;
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) ++i;
    bool digits = false, point = false;
    for (; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c >= u'0' && c <= u'9') {
            digits = true;
        } else if ((c == u'.' || c == u',') && !point && digits) {
            point = true;
        } else {
            return false;
        }
    }
    return digits && (text.back() != u'.' && text.back() != u',');
}

bool startsFormula(StrView text) {
    if (text.empty()) return false;
    switch (text.front()) {
        case u'=':
        case u'+':
        case u'-':
        case u'@':
        case u'\t':
        case u'\r':
            return !isPlainNumber(text);
        default:
            return false;
    }
}

Str quotedCell(StrView text) {
    Str out = u"\"";
    for (char16_t c : text) {
        if (c == u'"') out += u'"';
        out += c;
    }
    out += u'"';
    return out;
}

// A number or date cell: written as is unless it holds something a reader
// would split on (a short date with the separator in it).
Str valueCell(StrView text, StrView separator) {
    if (text.find(separator) != StrView::npos) return quotedCell(text);
    return Str(text);
}

void addRow(Str& out, const std::vector<Str>& cells, StrView separator) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (i) out += separator;
        out += cells[i];
    }
    out += kLineEnd;
}

Str hoursCell(std::int64_t seconds, const Locale& loc) {
    return decimalText(scaledHours(seconds), 2, 4, loc);
}

std::string finish(const Str& text) {
    std::string out(kByteOrderMark);
    out += toUtf8(text);
    return out;
}

}  // namespace

void csvAddRow(Str& out, const std::vector<Str>& cells, StrView separator) {
    addRow(out, cells, separator);
}

std::string csvBytes(const Str& text) {
    return finish(text);
}

Str csvSeparator(const Locale& loc) {
    if (!loc.listSeparator.empty() && loc.listSeparator != loc.decimalSeparator) {
        return loc.listSeparator;
    }
    return loc.decimalSeparator == u"," ? u";" : u",";
}

Str csvTextCell(StrView text, StrView separator) {
    if (startsFormula(text)) {
        Str defused(1, u'\'');
        defused.append(text);
        return quotedCell(defused);
    }
    const bool needsQuotes =
        text.find(separator) != StrView::npos || text.find_first_of(u"\"\r\n") != StrView::npos;
    return needsQuotes ? quotedCell(text) : Str(text);
}

std::string csvRecords(const Report& report, const Locale& loc, const ExportTexts& texts) {
    const Str sep = csvSeparator(loc);
    Str out;
    std::vector<Str> header{texts.date, texts.start, texts.end, texts.subject};
    for (const Str& caption : report.listCaptions)
        header.push_back(caption);
    header.insert(header.end(), {texts.hours, texts.roundedHours, texts.amount});
    for (Str& cell : header)
        cell = csvTextCell(cell, sep);
    addRow(out, header, sep);

    for (const TimeRecord& r : report.records) {
        std::vector<Str> row{valueCell(dayText(r.day, loc), sep),
                             valueCell(timeText(r.start, loc), sep),
                             valueCell(timeText(r.end, loc), sep), csvTextCell(r.subject, sep)};
        for (const Str& value : r.values)
            row.push_back(csvTextCell(value, sep));
        row.push_back(hoursCell(r.seconds, loc));
        row.push_back(hoursCell(r.roundedSeconds, loc));
        row.push_back(decimalText(r.amount.scaled, 2, 4, loc));
        addRow(out, row, sep);
    }
    return finish(out);
}

std::string csvSummary(const Report& report, const Locale& loc, const ExportTexts& texts) {
    const Str sep = csvSeparator(loc);
    const std::vector<SummaryRow> rows = flattenSummary(report.total);
    std::size_t depth = report.options.grouping.size();
    for (const SummaryRow& row : rows)
        depth = std::max(depth, std::size_t(row.level) + 1);
    if (depth == 0) depth = 1;

    Str out;
    std::vector<Str> header{csvTextCell(texts.level, sep)};
    for (std::size_t level = 0; level < depth; ++level) {
        const Str caption = level < report.options.grouping.size()
                                ? dimensionCaption(report.options.grouping[level], report, texts)
                                : texts.group;
        header.push_back(csvTextCell(caption, sep));
    }
    for (const Str* caption : {&texts.hours, &texts.roundedHours, &texts.amount, &texts.records}) {
        header.push_back(csvTextCell(*caption, sep));
    }
    addRow(out, header, sep);

    auto totals = [&](std::vector<Str>& row, const SummaryNode& node) {
        row.push_back(hoursCell(node.seconds, loc));
        row.push_back(hoursCell(node.roundedSeconds, loc));
        row.push_back(decimalText(node.amount.scaled, 2, 4, loc));
        row.push_back(toStr(static_cast<long long>(node.records)));
    };
    std::vector<Str> path(depth);
    for (const SummaryRow& r : rows) {
        path[r.level] = csvTextCell(groupLabel(*r.node, texts), sep);
        std::vector<Str> row{toStr(r.level + 1)};
        for (std::size_t level = 0; level < depth; ++level) {
            row.push_back(level <= std::size_t(r.level) ? path[level] : Str());
        }
        totals(row, *r.node);
        addRow(out, row, sep);
    }
    std::vector<Str> total{u"0", csvTextCell(texts.total, sep)};
    total.resize(depth + 1);
    totals(total, report.total);
    addRow(out, total, sep);
    return finish(out);
}

std::filesystem::path summaryCsvPath(const std::filesystem::path& recordsFile) {
    std::filesystem::path name = recordsFile.stem();
    name += "-summary";
    name += recordsFile.extension();
    return recordsFile.parent_path() / name;
}

void writeCsv(const std::filesystem::path& recordsFile, const Report& report, const Locale& loc,
              const ExportTexts& texts) {
    writeFileReplacing(recordsFile, csvRecords(report, loc, texts));
    writeFileReplacing(summaryCsvPath(recordsFile), csvSummary(report, loc, texts));
}

}  // namespace hb::reporting
