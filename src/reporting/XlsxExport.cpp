#include "reporting/XlsxExport.h"

#include <xlsxwriter.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <stdexcept>
#include <string>
#include <system_error>

namespace hb::reporting {

namespace {

// Excel's built-in short date format: shown in the reader's own regional
// date format.
constexpr std::uint8_t kExcelShortDate = 14;
// Sheet names: at most 31 characters.
constexpr std::size_t kSheetNameMax = 31;

std::string utf8(StrView text) {
    return toUtf8(text);
}

std::string sheetName(const Str& name) {
    Str cleaned;
    for (char16_t c : name) {
        cleaned += (c == u'[' || c == u']' || c == u':' || c == u'*' || c == u'?' || c == u'/' ||
                    c == u'\\')
                       ? u'_'
                       : c;
    }
    return utf8(cleaned.substr(0, kSheetNameMax));
}

bool isAscii(const std::filesystem::path& path) {
    for (auto c : path.native()) {
        if (static_cast<std::uint32_t>(c) > 0x7F) return false;
    }
    return true;
}

// libxlsxwriter opens its file by a narrow name, which Windows reads in the
// ANSI code page: a folder named beyond ASCII ("Berichte für Kunden") would
// not be found. Such a workbook is written in the temporary folder first,
// when that one's name is ASCII, and copied beside the target.
// The user's temporary folder when its name is ASCII, else empty.
std::filesystem::path asciiTemporaryFolder() {
    std::error_code ec;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(ec);
    return ec || !isAscii(folder) ? std::filesystem::path() : folder;
}

std::filesystem::path scratchFor(const std::filesystem::path& beside) {
    if (isAscii(beside)) return beside;
    const std::filesystem::path folder = asciiTemporaryFolder();
    if (folder.empty()) return beside;
    static std::atomic<unsigned> counter{0};
    const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
    return folder /
           ("hb-report-" + std::to_string(stamp) + "-" + std::to_string(++counter) + ".xlsx");
}

// A worksheet; libxlsxwriter refuses a name twice (or an invalid one).
lxw_worksheet* addSheet(lxw_workbook* book, const Str& caption) {
    const std::string name = sheetName(caption);
    lxw_worksheet* sheet = workbook_add_worksheet(book, name.empty() ? nullptr : name.c_str());
    if (!sheet) throw std::runtime_error("the worksheet \"" + name + "\" cannot be added");
    return sheet;
}

class Workbook {
  public:
    Workbook(const std::filesystem::path& temporary, const std::string& scratchFolder)
        : temporary_(temporary), book_(open(temporary, scratchFolder)) {}
    Workbook(const Workbook&) = delete;
    Workbook& operator=(const Workbook&) = delete;
    // Still open only when the export failed half-way: the file is dropped.
    ~Workbook() {
        if (!book_) return;
        workbook_close(book_);
        std::error_code ec;
        std::filesystem::remove(temporary_, ec);
    }
    lxw_workbook* get() const { return book_; }
    lxw_error close() {
        lxw_workbook* book = book_;
        book_ = nullptr;
        return workbook_close(book);
    }

  private:
    // libxlsxwriter keeps each part of the workbook in a temporary file of
    // its own until it zips them: in the user's temporary folder (empty:
    // the library's choice).
    static lxw_workbook* open(const std::filesystem::path& file, const std::string& folder) {
        lxw_workbook_options options{};
        options.tmpdir = folder.empty() ? nullptr : const_cast<char*>(folder.c_str());
        return workbook_new_opt(file.string().c_str(), &options);
    }

    std::filesystem::path temporary_;
    lxw_workbook* book_;
};

struct Formats {
    lxw_format* header;
    lxw_format* date;
    lxw_format* time;
    lxw_format* hours;
    lxw_format* amount;
    lxw_format* bold;
    lxw_format* boldHours;
    lxw_format* boldAmount;
    lxw_format* count;
    lxw_format* boldCount;
    lxw_format* decimalHours;
};

Formats makeFormats(lxw_workbook* book, HoursFormat hoursFormat) {
    const char* hoursPicture = hoursFormat == HoursFormat::Decimal ? "0.00" : "[h]:mm";
    Formats f{};
    f.header = workbook_add_format(book);
    format_set_bold(f.header);
    format_set_bottom(f.header, LXW_BORDER_THIN);
    f.date = workbook_add_format(book);
    format_set_num_format_index(f.date, kExcelShortDate);
    f.time = workbook_add_format(book);
    format_set_num_format(f.time, "hh:mm");
    f.hours = workbook_add_format(book);
    format_set_num_format(f.hours, hoursPicture);
    f.amount = workbook_add_format(book);
    format_set_num_format(f.amount, "#,##0.00");
    f.bold = workbook_add_format(book);
    format_set_bold(f.bold);
    f.boldHours = workbook_add_format(book);
    format_set_bold(f.boldHours);
    format_set_num_format(f.boldHours, hoursPicture);
    f.boldAmount = workbook_add_format(book);
    format_set_bold(f.boldAmount);
    format_set_num_format(f.boldAmount, "#,##0.00");
    f.count = workbook_add_format(book);
    format_set_num_format(f.count, "0");
    f.boldCount = workbook_add_format(book);
    format_set_bold(f.boldCount);
    format_set_num_format(f.boldCount, "0");
    f.decimalHours = workbook_add_format(book);
    format_set_num_format(f.decimalHours, "0.00");
    return f;
}

// The number a cell holds for a number of seconds: hours, or days when the
// cell shows h:mm.
double hoursValue(std::int64_t seconds, HoursFormat format) {
    return static_cast<double>(seconds) / (format == HoursFormat::Decimal ? 3600.0 : 86400.0);
}

double timeOfDay(Date value) {
    return value.days - std::floor(value.days);
}

void writeText(lxw_worksheet* sheet, lxw_row_t row, lxw_col_t col, StrView text,
               lxw_format* format = nullptr) {
    if (text.empty()) return;
    worksheet_write_string(sheet, row, col, utf8(text).c_str(), format);
}

std::string columnRange(lxw_col_t col, lxw_row_t first, lxw_row_t last) {
    char from[16], to[16];
    lxw_rowcol_to_cell(from, first, col);
    lxw_rowcol_to_cell(to, last, col);
    return std::string(from) + ":" + to;
}

void recordsSheet(lxw_workbook* book, const Formats& f, const Report& report,
                  const ExportTexts& texts) {
    // The records, the header and the totals row must fit in a worksheet.
    if (report.records.size() + 2 > LXW_ROW_MAX) {
        throw std::runtime_error("more records than a worksheet has rows");
    }
    lxw_worksheet* sheet = addSheet(book, texts.recordsSheet);
    const HoursFormat hf = report.options.hoursFormat;
    constexpr lxw_col_t kHours = 7, kRounded = 8, kAmount = 9;

    lxw_col_t col = 0;
    for (const Str* caption : {&texts.date, &texts.start, &texts.end, &texts.subject}) {
        writeText(sheet, 0, col++, *caption, f.header);
    }
    for (const Str& caption : report.listCaptions)
        writeText(sheet, 0, col++, caption, f.header);
    for (const Str* caption : {&texts.hours, &texts.roundedHours, &texts.amount}) {
        writeText(sheet, 0, col++, *caption, f.header);
    }

    lxw_row_t row = 1;
    for (const TimeRecord& r : report.records) {
        worksheet_write_number(sheet, row, 0, static_cast<double>(r.day), f.date);
        worksheet_write_number(sheet, row, 1, timeOfDay(r.start), f.time);
        worksheet_write_number(sheet, row, 2, timeOfDay(r.end), f.time);
        writeText(sheet, row, 3, r.subject);
        for (std::size_t i = 0; i < kReportLists; ++i) {
            writeText(sheet, row, static_cast<lxw_col_t>(4 + i), r.values[i]);
        }
        worksheet_write_number(sheet, row, kHours, hoursValue(r.seconds, hf), f.hours);
        worksheet_write_number(sheet, row, kRounded, hoursValue(r.roundedSeconds, hf), f.hours);
        worksheet_write_number(sheet, row, kAmount, r.amount.toDouble(), f.amount);
        ++row;
    }

    // The totals: formulas, so that a correction in the sheet updates them,
    // with the report's own totals as the values shown before recalculation.
    writeText(sheet, row, 0, texts.total, f.bold);
    auto sum = [&](lxw_col_t c, double value, lxw_format* format) {
        const std::string formula =
            row > 1 ? "=SUM(" + columnRange(c, 1, row - 1) + ")" : std::string("=0");
        worksheet_write_formula_num(sheet, row, c, formula.c_str(), format, value);
    };
    double seconds = 0, rounded = 0;
    std::int64_t amount = 0;
    for (const TimeRecord& r : report.records) {
        seconds += static_cast<double>(r.seconds);
        rounded += static_cast<double>(r.roundedSeconds);
        amount += r.amount.scaled;
    }
    const double unit = hf == HoursFormat::Decimal ? 3600.0 : 86400.0;
    sum(kHours, seconds / unit, f.boldHours);
    sum(kRounded, rounded / unit, f.boldHours);
    sum(kAmount, Currency{amount}.toDouble(), f.boldAmount);

    worksheet_set_column(sheet, 0, 2, 11, nullptr);
    worksheet_set_column(sheet, 3, 3, 36, nullptr);
    worksheet_set_column(sheet, 4, 6, 16, nullptr);
    worksheet_set_column(sheet, kHours, kAmount, 13, nullptr);
    worksheet_freeze_panes(sheet, 1, 0);
    worksheet_autofilter(sheet, 0, 0, row > 1 ? row - 1 : 0, kAmount);
}

void summarySheet(lxw_workbook* book, const Formats& f, const Report& report,
                  const ExportTexts& texts) {
    lxw_worksheet* sheet = addSheet(book, texts.summarySheet);
    const std::string name = sheet->name;
    const HoursFormat hf = report.options.hoursFormat;

    lxw_col_t col = 0;
    for (const Str* caption :
         {&texts.group, &texts.hours, &texts.roundedHours, &texts.amount, &texts.records}) {
        writeText(sheet, 0, col++, *caption, f.header);
    }

    auto totals = [&](lxw_row_t row, const SummaryNode& node, bool bold) {
        worksheet_write_number(sheet, row, 1, hoursValue(node.seconds, hf),
                               bold ? f.boldHours : f.hours);
        worksheet_write_number(sheet, row, 2, hoursValue(node.roundedSeconds, hf),
                               bold ? f.boldHours : f.hours);
        worksheet_write_number(sheet, row, 3, node.amount.toDouble(),
                               bold ? f.boldAmount : f.amount);
        worksheet_write_number(sheet, row, 4, static_cast<double>(node.records),
                               bold ? f.boldCount : f.count);
    };

    // One indented format per level (libxlsxwriter keeps formats per workbook).
    std::vector<lxw_format*> indents;
    lxw_row_t row = 1;
    for (const SummaryRow& r : flattenSummary(report.total)) {
        while (indents.size() <= std::size_t(r.level)) {
            lxw_format* indent = workbook_add_format(book);
            format_set_indent(indent,
                              static_cast<std::uint8_t>(std::min<std::size_t>(indents.size(), 15)));
            if (indents.empty()) format_set_bold(indent);
            indents.push_back(indent);
        }
        worksheet_write_string(sheet, row, 0, utf8(groupLabel(*r.node, texts)).c_str(),
                               indents[r.level]);
        totals(row, *r.node, r.level == 0);
        ++row;
    }
    writeText(sheet, row, 0, texts.total, f.header);
    totals(row, report.total, true);
    worksheet_set_column(sheet, 0, 0, 36, nullptr);
    worksheet_set_column(sheet, 1, 4, 13, nullptr);

    // The chart's data: the first-level groups in decimal hours, beside the tree.
    const auto& groups = report.total.children;
    if (groups.empty()) return;
    constexpr lxw_col_t kLabels = 6, kValues = 7;
    writeText(sheet, 0, kLabels, texts.group, f.header);
    writeText(sheet, 0, kValues, texts.hours, f.header);
    lxw_row_t dataRow = 1;
    for (const SummaryNode& g : groups) {
        worksheet_write_string(sheet, dataRow, kLabels, utf8(groupLabel(g, texts)).c_str(),
                               nullptr);
        worksheet_write_number(sheet, dataRow, kValues, static_cast<double>(g.seconds) / 3600.0,
                               f.decimalHours);
        ++dataRow;
    }
    worksheet_set_column(sheet, kLabels, kLabels, 24, nullptr);

    lxw_chart* chart = workbook_add_chart(book, LXW_CHART_COLUMN);
    lxw_chart_series* series = chart_add_series(chart, nullptr, nullptr);
    chart_series_set_categories(series, name.c_str(), 1, kLabels, dataRow - 1, kLabels);
    chart_series_set_values(series, name.c_str(), 1, kValues, dataRow - 1, kValues);
    chart_series_set_name(series, utf8(texts.hours).c_str());
    chart_title_set_name(chart, utf8(texts.chartTitle).c_str());
    chart_legend_set_position(chart, LXW_CHART_LEGEND_NONE);
    chart_axis_set_name(chart->y_axis, utf8(texts.hours).c_str());
    worksheet_insert_chart(sheet, dataRow + 1, kLabels, chart);
}

// The document's properties: the title, the period as its subject, the
// user as its author.
void setProperties(lxw_workbook* book, const Report& report, const Locale& loc,
                   const ExportTexts& texts) {
    const std::string title = utf8(texts.title);
    const std::string subject = utf8(periodText(report.options.period, loc));
    const std::string author = utf8(report.user);
    lxw_doc_properties properties{};
    properties.title = const_cast<char*>(title.c_str());
    properties.subject = const_cast<char*>(subject.c_str());
    properties.author = author.empty() ? nullptr : const_cast<char*>(author.c_str());
    workbook_set_properties(book, &properties);
}

}  // namespace

void writeWorkbook(const std::filesystem::path& file,
                   const std::function<void(lxw_workbook*)>& fill) {
    const std::filesystem::path beside = temporaryBeside(file);
    const std::filesystem::path scratch = scratchFor(beside);
    auto fail = [&](const std::string& why) {
        std::error_code ec;
        std::filesystem::remove(scratch, ec);
        std::filesystem::remove(beside, ec);
        throw std::runtime_error("cannot write the file " + file.string() + ": " + why);
    };
    {
        Workbook book(scratch, asciiTemporaryFolder().string());
        if (!book.get()) fail("the workbook could not be created");
        try {
            fill(book.get());
        } catch (const std::runtime_error& e) {
            fail(e.what());
        }
        const lxw_error error = book.close();
        if (error != LXW_NO_ERROR) fail(lxw_strerror(error));
    }
    if (scratch != beside) {
        std::error_code ec;
        std::filesystem::copy_file(scratch, beside,
                                   std::filesystem::copy_options::overwrite_existing, ec);
        if (ec) fail(ec.message());
        std::filesystem::remove(scratch, ec);
    }
    replaceWith(beside, file);
}

void writeXlsx(const std::filesystem::path& file, const Report& report, const Locale& loc,
               const ExportTexts& texts) {
    writeWorkbook(file, [&](lxw_workbook* book) {
        setProperties(book, report, loc, texts);
        const Formats formats = makeFormats(book, report.options.hoursFormat);
        recordsSheet(book, formats, report, texts);
        summarySheet(book, formats, report, texts);
    });
}

}  // namespace hb::reporting
