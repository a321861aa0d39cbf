#include <xlsxwriter.h>

#include <algorithm>
#include <stdexcept>

#include "reporting/XlsxExport.h"
#include "statistics/PivotExport.h"

namespace hb::statistics {

namespace {

// The most series the chart shows (the innermost columns, in order).
constexpr std::size_t kMaxSeries = 64;

double measureValue(const PivotFigures& f, Measure m) {
    switch (m) {
        case Measure::Hours:
            return static_cast<double>(f.seconds) / 3600.0;
        case Measure::RoundedHours:
            return static_cast<double>(f.roundedSeconds) / 3600.0;
        case Measure::Amount:
            return f.amount.toDouble();
    }
    return 0;
}

void text(lxw_worksheet* sheet, lxw_row_t row, lxw_col_t col, const Str& value,
          lxw_format* format) {
    const lxw_error e = worksheet_write_string(sheet, row, col, toUtf8(value).c_str(), format);
    if (e != LXW_NO_ERROR) throw std::runtime_error(lxw_strerror(e));
}

}  // namespace

void writePivotXlsx(const std::filesystem::path& file, const PivotTable& t,
                    const ListCaptions& captions, const ExportTexts& texts) {
    reporting::writeWorkbook(file, [&](lxw_workbook* book) {
        const std::string title = toUtf8(texts.title);
        lxw_doc_properties properties{};
        properties.title = const_cast<char*>(title.c_str());
        workbook_set_properties(book, &properties);

        const char* picture = t.request.measure == Measure::Amount ? "#,##0.00" : "0.00";
        lxw_format* header = workbook_add_format(book);
        format_set_bold(header);
        lxw_format* number = workbook_add_format(book);
        format_set_num_format(number, picture);
        lxw_format* total = workbook_add_format(book);
        format_set_num_format(total, picture);
        format_set_bold(total);

        const std::size_t nr = t.request.rows.size(), nc = t.request.columns.size();
        const std::size_t labelColumns = std::max<std::size_t>(nr, 1);
        lxw_worksheet* sheet = workbook_add_worksheet(book, "Pivot");
        if (!sheet) throw std::runtime_error("the sheet could not be added");
        for (std::size_t l = 0; l < nr; ++l)
            text(sheet, 0, static_cast<lxw_col_t>(l),
                 pivotDimensionCaption(t.request.rows[l], captions, texts), header);
        if (nr == 0) text(sheet, 0, 0, measureCaption(t.request.measure, texts), header);
        for (std::size_t c = 0; c < t.columns.size(); ++c)
            text(sheet, 0, static_cast<lxw_col_t>(labelColumns + c),
                 pivotHeaderText(t.columns[c], nc, texts), header);
        for (std::size_t r = 0; r < t.rows.size(); ++r) {
            const PivotHeader& h = t.rows[r];
            const bool isTotal = h.level < nr || nr == 0;
            const auto row = static_cast<lxw_row_t>(r + 1);
            for (std::size_t l = 0; l < labelColumns; ++l) {
                if (l < h.level) {
                    text(sheet, row, static_cast<lxw_col_t>(l),
                         h.labels[l].empty() ? texts.none : h.labels[l], nullptr);
                } else if (l == h.level) {
                    text(sheet, row, static_cast<lxw_col_t>(l), texts.total, header);
                }
            }
            for (std::size_t c = 0; c < t.columns.size(); ++c) {
                const PivotFigures& f = t.at(r, c);
                if (!f.records) continue;
                const bool bold = isTotal || t.columns[c].level < nc || nc == 0;
                worksheet_write_number(sheet, row, static_cast<lxw_col_t>(labelColumns + c),
                                       measureValue(f, t.request.measure), bold ? total : number);
            }
        }
        worksheet_set_column(sheet, 0, static_cast<lxw_col_t>(labelColumns - 1), 24, nullptr);
        worksheet_freeze_panes(sheet, 1, static_cast<lxw_col_t>(labelColumns));

        // The chart's data: the innermost rows by the innermost columns,
        // without totals, on a sheet of its own (the table's are interleaved).
        std::vector<std::size_t> rows, columns;
        for (std::size_t r = 0; r < t.rows.size(); ++r)
            if (t.rows[r].level == nr && nr > 0) rows.push_back(r);
        for (std::size_t c = 0; c < t.columns.size(); ++c)
            if ((t.columns[c].level == nc && nc > 0) || (nc == 0 && c + 1 == t.columns.size()))
                columns.push_back(c);
        if (columns.size() > kMaxSeries) columns.resize(kMaxSeries);
        if (rows.empty() || columns.empty()) return;
        const char* dataName = "Chart data";
        lxw_worksheet* data = workbook_add_worksheet(book, dataName);
        for (std::size_t k = 0; k < columns.size(); ++k)
            text(data, 0, static_cast<lxw_col_t>(k + 1),
                 pivotHeaderText(t.columns[columns[k]], nc, texts), header);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const auto row = static_cast<lxw_row_t>(i + 1);
            text(data, row, 0, pivotHeaderText(t.rows[rows[i]], nr, texts), nullptr);
            for (std::size_t k = 0; k < columns.size(); ++k)
                worksheet_write_number(data, row, static_cast<lxw_col_t>(k + 1),
                                       measureValue(t.at(rows[i], columns[k]), t.request.measure),
                                       number);
        }
        lxw_chart* chart = workbook_add_chart(book, LXW_CHART_COLUMN_STACKED);
        const auto last = static_cast<lxw_row_t>(rows.size());
        for (std::size_t k = 0; k < columns.size(); ++k) {
            const auto col = static_cast<lxw_col_t>(k + 1);
            lxw_chart_series* series = chart_add_series(chart, nullptr, nullptr);
            chart_series_set_categories(series, dataName, 1, 0, last, 0);
            chart_series_set_values(series, dataName, 1, col, last, col);
            chart_series_set_name_range(series, dataName, 0, col);
        }
        chart_title_set_name(chart, toUtf8(measureCaption(t.request.measure, texts)).c_str());
        worksheet_insert_chart(sheet, 1,
                               static_cast<lxw_col_t>(labelColumns + t.columns.size() + 1), chart);
    });
}

}  // namespace hb::statistics
