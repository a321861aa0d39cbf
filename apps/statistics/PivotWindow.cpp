#include "apps/statistics/PivotWindow.h"

#include <commctrl.h>
#include <process.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/common/WindowKit.h"
#include "reporting/ReportView.h"

namespace hb::statsapp {

using namespace hb::statistics;
using reporting::ExportFormat;
using reporting::Period;
using namespace hb::winui;

namespace {

constexpr wchar_t kChartClass[] = L"HourbookPivotChart";
// The worker's result: lParam is the Job, owned by the message from then on.
constexpr UINT WM_PW_DONE = WM_APP + 1;

// Sizes at 96 dpi (layout scales them).
constexpr int kMargin = 10;
constexpr int kRowHeight = 24;
constexpr int kButtonWidth = 110;
// The chart shows at most so many bars (the first ones), so each keeps a
// readable width.
constexpr std::size_t kMaxBars = 40;

// A piece of work on the worker thread, and what came of it. A run reads
// the records only when the period changed; other choices pivot the
// records already read.
struct Job {
    enum class Kind { Run, Export } kind = Kind::Run;
    PivotWindowModel* model = nullptr;
    HWND window = nullptr;
    Period period;
    PivotSpec request;
    Locale locale;
    std::shared_ptr<const CubeContent> data;  // read before, or null
    ExportFormat format = ExportFormat::Csv;
    Str path;
    std::shared_ptr<const PivotTable> table;  // to export; of a run
    std::exception_ptr failure;
};

struct State {
    State(PivotWindowModel& m, const PivotWindowSetup& s) : model(m), setup(s) {}
    PivotWindowModel& model;
    PivotWindowSetup setup;
    HFONT font = nullptr;
    HANDLE worker = nullptr;
    bool runAgain = false;
    std::optional<Period> period;  // of the records read
    std::shared_ptr<const CubeContent> data;
    std::shared_ptr<const PivotTable> table;
    PivotGrid grid;
    PivotChart chart;
    std::vector<HWND> labels;  // rows, columns, measure, period, filter, chart
};

State* stateOf(HWND window) {
    return reinterpret_cast<State*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

HWND item(HWND window, int id) {
    return GetDlgItem(window, id);
}

int selected(HWND window, int id) {
    return static_cast<int>(SendMessageW(item(window, id), CB_GETCURSEL, 0, 0));
}

ListCaptions captionsOf(const State& st) {
    ListCaptions captions = st.setup.listCaptions;
    if (st.data)
        for (std::size_t i = 0; i < kReportLists; ++i)
            if (!st.data->captions[i].empty()) captions[i] = st.data->captions[i];
    return captions;
}

// --- making the controls ------------------------------------------------------

// A dimension's place in a drop-down (after "(none)" where it offers one).
int dimensionIndex(std::optional<Dimension> d, bool offersNone) {
    for (std::size_t i = 0; i < kPivotDimensions.size(); ++i)
        if (d && kPivotDimensions[i] == *d) return static_cast<int>(i) + (offersNone ? 1 : 0);
    return 0;
}

std::optional<Dimension> chosenDimension(HWND window, int id, bool offersNone) {
    int index = selected(window, id) - (offersNone ? 1 : 0);
    if (index < 0 || static_cast<std::size_t>(index) >= kPivotDimensions.size())
        return offersNone ? std::nullopt : std::optional(kPivotDimensions[0]);
    return kPivotDimensions[static_cast<std::size_t>(index)];
}

// The choices of the dimension drop-downs: with "(none)" first or without.
void fillDimensionBoxes(HWND window, const State& st) {
    const std::vector<Str> dims = dimensionChoices(captionsOf(st), st.setup.texts);
    std::vector<Str> optional = dims;
    optional.insert(optional.begin(), st.setup.texts.none);
    const PivotForm& f = st.setup.form;
    struct Box {
        int id;
        std::optional<Dimension> chosen;
        bool offersNone;
    };
    for (const Box& b :
         {Box{IDC_PW_ROWS1, f.rows[0], false}, Box{IDC_PW_ROWS2, f.rows[1], true},
          Box{IDC_PW_COLUMN, f.column, true}, Box{IDC_PW_FILTERDIM, f.filterDimension, true}}) {
        HWND box = item(window, b.id);
        const int keep =
            box && SendMessageW(box, CB_GETCOUNT, 0, 0) > 0 ? selected(window, b.id) : -1;
        if (!box) box = makeComboBox(window, b.id, {}, 0);
        SendMessageW(box, CB_RESETCONTENT, 0, 0);
        for (const Str& c : b.offersNone ? optional : dims)
            SendMessageW(box, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(wtext(c)));
        SendMessageW(box, CB_SETCURSEL,
                     static_cast<WPARAM>(keep >= 0 ? keep : dimensionIndex(b.chosen, b.offersNone)),
                     0);
    }
}

void makeControls(HWND window, State& st) {
    const PivotTexts& t = st.setup.texts;
    const PivotForm& f = st.setup.form;
    auto label = [&](const Str& text) {
        st.labels.push_back(makeControl(window, WC_STATICW, text, SS_RIGHT | SS_CENTERIMAGE, -1));
    };
    label(t.rows);
    makeComboBox(window, IDC_PW_ROWS1, {}, 0);
    makeComboBox(window, IDC_PW_ROWS2, {}, 0);
    label(t.columns);
    makeComboBox(window, IDC_PW_COLUMN, {}, 0);
    label(t.measure);
    makeComboBox(window, IDC_PW_MEASURE, measureChoices(t), static_cast<int>(f.measure));
    label(t.period);
    makeComboBox(window, IDC_PW_PERIOD, {t.periods.begin(), t.periods.end()},
                 static_cast<int>(std::min(f.period, kPivotPeriods.size() - 1)));
    label(t.filter);
    makeComboBox(window, IDC_PW_FILTERDIM, {}, 0);
    makeControl(window, WC_EDITW, f.filterValue, ES_AUTOHSCROLL | WS_TABSTOP, IDC_PW_FILTERVALUE,
                WS_EX_CLIENTEDGE);
    makeControl(window, WC_BUTTONW, t.filter, BS_DEFPUSHBUTTON | WS_TABSTOP, IDC_PW_APPLY);
    fillDimensionBoxes(window, st);
    label(t.chart);
    makeComboBox(window, IDC_PW_CHARTKIND, {t.chartKinds.begin(), t.chartKinds.end()},
                 f.chart == ChartKind::Shares ? 1 : 0);

    HWND list = makeControl(window, WC_LISTVIEWW, u"",
                            LVS_REPORT | LVS_OWNERDATA | LVS_SHOWSELALWAYS | WS_TABSTOP,
                            IDC_PW_LIST, WS_EX_CLIENTEDGE);
    ListView_SetExtendedListViewStyle(
        list, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_GRIDLINES | LVS_EX_LABELTIP);
    makeControl(window, kChartClass, u"", 0, IDC_PW_CHART, WS_EX_CLIENTEDGE);
    makeControl(window, PROGRESS_CLASSW, u"", PBS_MARQUEE, IDC_PW_PROGRESS);
    ShowWindow(item(window, IDC_PW_PROGRESS), SW_HIDE);
    const int exportIds[] = {IDC_PW_CSV, IDC_PW_XLSX, IDC_PW_HTML};
    for (std::size_t i = 0; i < kPivotExportFormats; ++i)
        makeControl(window, WC_BUTTONW, t.exports[i], BS_PUSHBUTTON | WS_TABSTOP, exportIds[i]);
    makeControl(window, STATUSCLASSNAMEW, t.ready, SBARS_SIZEGRIP, IDC_PW_STATUS);

    st.font = useMessageFont(window);
}

void layout(HWND window) {
    State& st = *stateOf(window);
    Placer placer(window, IDC_PW_STATUS, 24);
    const int width = placer.width, height = placer.height, statusHeight = placer.statusHeight;
    auto units = [&](int pixels) { return placer.units(pixels); };
    auto place = [&](HWND h, int x, int y, int cx, int cy) { placer.place(h, x, y, cx, cy); };
    auto placeId = [&](int id, int x, int y, int cx, int cy) { placer.place(id, x, y, cx, cy); };
    const int comboDrop = 220;  // a drop-down's height includes its open list
    auto rowY = [](int row) { return kMargin + row * (kRowHeight + 6); };
    int x = kMargin;
    // Labels by their text; each drop-down after its label.
    auto labelled = [&](std::size_t label, int row) {
        const int lw = label < st.labels.size() ? units(textWidth(st.labels[label])) + 4 : 40;
        if (label < st.labels.size()) place(st.labels[label], x, rowY(row), lw, kRowHeight);
        x += lw + 6;
    };
    labelled(0, 0);
    for (int id : {IDC_PW_ROWS1, IDC_PW_ROWS2}) {
        placeId(id, x, rowY(0), 130, comboDrop);
        x += 136;
    }
    labelled(1, 0);
    placeId(IDC_PW_COLUMN, x, rowY(0), 130, comboDrop);
    x += 142;
    labelled(2, 0);
    placeId(IDC_PW_MEASURE, x, rowY(0), 120, comboDrop);

    x = kMargin;
    labelled(3, 1);
    placeId(IDC_PW_PERIOD, x, rowY(1), 130, comboDrop);
    x += 142;
    labelled(4, 1);
    placeId(IDC_PW_FILTERDIM, x, rowY(1), 130, comboDrop);
    x += 136;
    placeId(IDC_PW_FILTERVALUE, x, rowY(1), 160, kRowHeight);
    x += 166;
    placeId(IDC_PW_APPLY, x, rowY(1), 90, kRowHeight + 2);
    x += 102;
    labelled(5, 1);
    placeId(IDC_PW_CHARTKIND, x, rowY(1), 130, comboDrop);

    const int top = rowY(2) + 4;
    const int buttonsY = height - statusHeight - kMargin - kRowHeight;
    const int bottom = buttonsY - 8;
    const int listWidth = (width - 3 * kMargin) * 3 / 5;
    placeId(IDC_PW_LIST, kMargin, top, listWidth, bottom - top);
    placeId(IDC_PW_CHART, 2 * kMargin + listWidth, top, width - 3 * kMargin - listWidth,
            bottom - top);
    placeId(IDC_PW_PROGRESS, kMargin, buttonsY + 4, 200, kRowHeight - 8);
    x = width - kMargin - 3 * kButtonWidth - 2 * 6;
    for (int id : {IDC_PW_CSV, IDC_PW_XLSX, IDC_PW_HTML}) {
        placeId(id, x, buttonsY, kButtonWidth, kRowHeight + 2);
        x += kButtonWidth + 6;
    }
}

// --- showing the pivot ----------------------------------------------------------

void setStatus(HWND window, const Str& text) {
    SendMessageW(item(window, IDC_PW_STATUS), SB_SETTEXTW, 0,
                 reinterpret_cast<LPARAM>(wtext(text)));
}

ChartKind chosenChartKind(HWND window) {
    const int index = selected(window, IDC_PW_CHARTKIND);
    return index > 0 && static_cast<std::size_t>(index) < kPivotChartKinds.size()
               ? kPivotChartKinds[static_cast<std::size_t>(index)]
               : ChartKind::BarsOverTime;
}

// The chart of the pivot at hand in the chosen kind: a change of kind
// only draws anew, the records and the pivot stay.
void showChart(HWND window) {
    State& st = *stateOf(window);
    st.chart = st.table
                   ? pivotChart(*st.table, chosenChartKind(window), st.setup.texts, st.setup.locale)
                   : PivotChart{};
    InvalidateRect(item(window, IDC_PW_CHART), nullptr, TRUE);
}

void show(HWND window) {
    State& st = *stateOf(window);
    HWND list = item(window, IDC_PW_LIST);
    SendMessageW(list, WM_SETREDRAW, FALSE, 0);
    ListView_SetItemCountEx(list, 0, 0);
    while (ListView_DeleteColumn(list, 0)) {
    }
    st.grid = {};
    if (st.table) {
        st.grid = pivotGrid(*st.table, captionsOf(st), st.setup.texts, st.setup.locale);
        int index = 0;
        for (const PivotGridColumn& c : st.grid.columns) {
            std::wstring caption = wide(c.caption);
            LVCOLUMNW col{};
            col.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT;
            col.fmt = c.number && index > 0 ? LVCFMT_RIGHT : LVCFMT_LEFT;
            col.pszText = caption.data();
            col.cx = 60;
            ListView_InsertColumn(list, index++, &col);
        }
        std::vector<std::wstring> captions;
        for (const PivotGridColumn& c : st.grid.columns)
            captions.push_back(wide(c.caption));
        std::vector<std::vector<std::wstring>> sample;
        for (std::size_t r = 0; r < st.grid.rows.size() && r < 500; ++r) {
            sample.emplace_back();
            for (const Str& cell : st.grid.rows[r].cells)
                sample.back().push_back(wide(cell));
        }
        fitListColumns(list, sample, captions, 260);
        ListView_SetItemCountEx(list, static_cast<int>(st.grid.rows.size()), 0);
    }
    SendMessageW(list, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(list, nullptr, TRUE);
    showChart(window);
}

constexpr COLORREF kColours[] = {RGB(68, 114, 196), RGB(237, 125, 49), RGB(165, 165, 165),
                                 RGB(255, 192, 0),  RGB(91, 155, 213), RGB(112, 173, 71),
                                 RGB(38, 68, 120),  RGB(158, 72, 14),  RGB(99, 99, 99),
                                 RGB(153, 115, 0),  RGB(37, 94, 145),  RGB(67, 104, 43)};

COLORREF colourOf(std::size_t index) {
    return kColours[index % std::size(kColours)];
}

// The shares: a pie beside a legend of one line per slice (its percentage
// with it), the first slice from twelve o'clock on, clockwise.
void paintShares(HDC dc, const RECT& rc, const PivotChart& c, int line) {
    if (c.slices.empty()) return;
    int legendWidth = 0;
    for (const PivotChart::Slice& s : c.slices) {
        SIZE size{};
        GetTextExtentPoint32W(dc, wtext(s.legend), static_cast<int>(s.legend.size()), &size);
        legendWidth = std::max(legendWidth, static_cast<int>(size.cx) + 14);
    }
    legendWidth = std::min(legendWidth, static_cast<int>(rc.right) / 2);
    int y = 6;
    for (std::size_t i = 0; i < c.slices.size() && y + line <= rc.bottom - 4; ++i, y += line) {
        HBRUSH brush = CreateSolidBrush(colourOf(i));
        RECT box{8, y + 2, 18, y + 12};
        FillRect(dc, &box, brush);
        DeleteObject(brush);
        RECT text{22, y, 8 + legendWidth, y + line};
        DrawTextW(dc, wtext(c.slices[i].legend), static_cast<int>(c.slices[i].legend.size()), &text,
                  DT_LEFT | DT_SINGLELINE | DT_END_ELLIPSIS | DT_NOPREFIX);
    }
    const int left = 8 + legendWidth + 16;
    const int size =
        std::min(static_cast<int>(rc.right) - left - 8, static_cast<int>(rc.bottom) - 16);
    if (size < 20) return;
    const RECT pie{left, 8, left + size, 8 + size};
    const double cx = (pie.left + pie.right) / 2.0, cy = (pie.top + pie.bottom) / 2.0;
    const double radius = size;  // the radials only give directions; outside the pie is fine
    constexpr double kTurn = 6.283185307179586;
    auto point = [&](double turned) {
        // Clockwise from the top, in device coordinates (y downwards).
        return POINT{static_cast<LONG>(std::lround(cx + radius * std::sin(turned * kTurn))),
                     static_cast<LONG>(std::lround(cy - radius * std::cos(turned * kTurn)))};
    };
    HGDIOBJ oldPen = SelectObject(dc, GetStockObject(WHITE_PEN));
    double start = 0;
    for (std::size_t i = 0; i < c.slices.size(); ++i) {
        const double end = start + c.slices[i].share;
        HBRUSH brush = CreateSolidBrush(colourOf(i));
        HGDIOBJ oldBrush = SelectObject(dc, brush);
        if (c.slices[i].share >= 0.9999) {
            Ellipse(dc, pie.left, pie.top, pie.right, pie.bottom);
        } else {
            // Pie runs counter-clockwise from its first radial to its second,
            // so the slice's end comes first. Equal radials would draw the
            // whole ellipse: a slice too thin to see is left out.
            const POINT a = point(end), b = point(start);
            if (a.x != b.x || a.y != b.y)
                Pie(dc, pie.left, pie.top, pie.right, pie.bottom, a.x, a.y, b.x, b.y);
        }
        SelectObject(dc, oldBrush);
        DeleteObject(brush);
        start = end;
    }
    SelectObject(dc, oldPen);
}

// The chart: the shares as a pie, or one bar per column group stacked of
// the outer row groups with a legend of those at the top.
void paintChart(HWND chart, HDC dc, const State& st) {
    RECT rc{};
    GetClientRect(chart, &rc);
    FillRect(dc, &rc, GetSysColorBrush(COLOR_WINDOW));
    const PivotChart& c = st.chart;
    if (c.kind == ChartKind::BarsOverTime && (c.bars.empty() || c.largest <= 0)) return;
    HGDIOBJ oldFont = SelectObject(dc, st.font ? st.font : GetStockObject(DEFAULT_GUI_FONT));
    SetBkMode(dc, TRANSPARENT);
    TEXTMETRICW tm{};
    GetTextMetricsW(dc, &tm);
    const int line = tm.tmHeight + 2;
    if (c.kind == ChartKind::Shares) {
        paintShares(dc, rc, c, line);
        SelectObject(dc, oldFont);
        return;
    }
    // The legend: as many entries as fit in three lines.
    int x = 8, y = 6;
    for (std::size_t s = 0; s < c.series.size(); ++s) {
        SIZE size{};
        const Str& text = c.series[s];
        GetTextExtentPoint32W(dc, wtext(text), static_cast<int>(text.size()), &size);
        if (x + 16 + size.cx > rc.right - 4 && x > 8) {
            x = 8;
            y += line;
            if (y > 6 + 2 * line) break;
        }
        HBRUSH brush = CreateSolidBrush(colourOf(s));
        RECT box{x, y + 2, x + 10, y + 12};
        FillRect(dc, &box, brush);
        DeleteObject(brush);
        TextOutW(dc, x + 14, y, wtext(text), static_cast<int>(text.size()));
        x += 14 + size.cx + 12;
    }
    const int top = y + line + 6;
    const int bottom = rc.bottom - line - 8;
    const std::size_t n = std::min(c.bars.size(), kMaxBars);
    if (bottom - top < 20) {
        SelectObject(dc, oldFont);
        return;
    }
    const int slot = std::max(4, static_cast<int>((rc.right - 16) / static_cast<long>(n)));
    const int barWidth = std::max(2, slot * 2 / 3);
    HPEN axis = CreatePen(PS_SOLID, 1, GetSysColor(COLOR_GRAYTEXT));
    HGDIOBJ oldPen = SelectObject(dc, axis);
    MoveToEx(dc, 6, bottom, nullptr);
    LineTo(dc, rc.right - 6, bottom);
    for (std::size_t b = 0; b < n; ++b) {
        const PivotChart::Bar& bar = c.bars[b];
        const int left = 8 + static_cast<int>(b) * slot + (slot - barWidth) / 2;
        double base = 0;
        for (std::size_t s = 0; s < bar.parts.size(); ++s) {
            if (bar.parts[s] <= 0) continue;
            const int y0 = bottom - static_cast<int>(base / c.largest * (bottom - top));
            base += bar.parts[s];
            const int y1 = bottom - static_cast<int>(base / c.largest * (bottom - top));
            HBRUSH brush = CreateSolidBrush(colourOf(s));
            RECT part{left, y1, left + barWidth, y0};
            FillRect(dc, &part, brush);
            DeleteObject(brush);
        }
        RECT label{left - (slot - barWidth) / 2, bottom + 3,
                   left + barWidth + (slot - barWidth) / 2, bottom + 3 + line};
        DrawTextW(dc, wtext(bar.label), static_cast<int>(bar.label.size()), &label,
                  DT_CENTER | DT_SINGLELINE | DT_END_ELLIPSIS | DT_NOPREFIX);
    }
    SelectObject(dc, oldPen);
    DeleteObject(axis);
    SelectObject(dc, oldFont);
}

LRESULT CALLBACK chartProc(HWND chart, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_PAINT) {
        PAINTSTRUCT ps;
        HDC dc = BeginPaint(chart, &ps);
        if (const State* st = stateOf(GetParent(chart))) paintChart(chart, dc, *st);
        EndPaint(chart, &ps);
        return 0;
    }
    if (message == WM_ERASEBKGND) return 1;  // WM_PAINT fills it all
    if (message == WM_SIZE) InvalidateRect(chart, nullptr, FALSE);
    return DefWindowProcW(chart, message, wParam, lParam);
}

// --- the work ---------------------------------------------------------------------

unsigned __stdcall work(void* parameter) {
    auto* job = static_cast<Job*>(parameter);
    try {
        if (job->kind == Job::Kind::Run) {
            if (!job->data)
                job->data = std::make_shared<const CubeContent>(job->model->load(job->period));
            job->table = std::make_shared<const PivotTable>(
                pivot(job->data->records, job->request, job->locale));
        } else {
            job->model->exportTo(job->format, job->path, *job->data, *job->table);
        }
    } catch (...) {
        job->failure = std::current_exception();
    }
    if (!PostMessageW(job->window, WM_PW_DONE, 0, reinterpret_cast<LPARAM>(job))) delete job;
    return 0;
}

void enableWork(HWND window, bool enable) {
    for (int id : {IDC_PW_CSV, IDC_PW_XLSX, IDC_PW_HTML})
        EnableWindow(item(window, id), enable && stateOf(window)->table);
    HWND progress = item(window, IDC_PW_PROGRESS);
    ShowWindow(progress, enable ? SW_HIDE : SW_SHOWNA);
    SendMessageW(progress, PBM_SETMARQUEE, enable ? FALSE : TRUE, 40);
}

bool start(HWND window, std::unique_ptr<Job> job) {
    State& st = *stateOf(window);
    if (st.worker) return false;
    job->model = &st.model;
    job->window = window;
    job->locale = st.setup.locale;
    const bool run = job->kind == Job::Kind::Run;
    Job* raw = job.release();
    const auto handle = _beginthreadex(nullptr, 0, &work, raw, 0, nullptr);
    if (!handle) {
        delete raw;
        return false;
    }
    st.worker = reinterpret_cast<HANDLE>(handle);
    enableWork(window, false);
    setStatus(window, run ? st.setup.texts.working : st.setup.texts.exporting);
    return true;
}

PivotForm formOf(HWND window) {
    PivotForm f;
    f.rows[0] = chosenDimension(window, IDC_PW_ROWS1, false);
    f.rows[1] = chosenDimension(window, IDC_PW_ROWS2, true);
    f.column = chosenDimension(window, IDC_PW_COLUMN, true);
    const int measure = std::max(0, selected(window, IDC_PW_MEASURE));
    f.measure = kPivotMeasures[std::min<std::size_t>(measure, kPivotMeasures.size() - 1)];
    f.period = static_cast<std::size_t>(std::max(0, selected(window, IDC_PW_PERIOD)));
    f.filterDimension = chosenDimension(window, IDC_PW_FILTERDIM, true);
    f.chart = chosenChartKind(window);
    HWND edit = item(window, IDC_PW_FILTERVALUE);
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(edit)) + 1, L'\0');
    GetWindowTextW(edit, text.data(), static_cast<int>(text.size()));
    f.filterValue =
        Str(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(wcslen(text.c_str())));
    return f;
}

void requestRun(HWND window) {
    State& st = *stateOf(window);
    if (st.worker) {
        st.runAgain = true;
        return;
    }
    const PivotForm form = formOf(window);
    auto job = std::make_unique<Job>();
    job->period = periodFrom(form, st.setup.today, st.setup.firstWeekday);
    job->request = specFrom(form);
    if (st.period && st.period->first == job->period.first && st.period->last == job->period.last)
        job->data = st.data;
    start(window, std::move(job));
}

bool requestExport(HWND window, ExportFormat format, const Str& path) {
    State& st = *stateOf(window);
    if (st.worker || !st.table || !st.data) return false;
    auto job = std::make_unique<Job>();
    job->kind = Job::Kind::Export;
    job->format = format;
    job->path = path;
    job->data = st.data;
    job->table = st.table;
    return start(window, std::move(job));
}

void exportWithDialog(HWND window, ExportFormat format) {
    State& st = *stateOf(window);
    if (!st.table) return;
    const PivotTexts& t = st.setup.texts;
    const Str extension = reporting::exportExtension(format);
    if (const std::optional<Str> path =
            askSavePath(window, t.fileTypes[static_cast<std::size_t>(format)], extension,
                        u"Hourbook statistics." + extension, t.save))
        requestExport(window, format, *path);
}

void finished(HWND window, Job* done) {
    std::unique_ptr<Job> job(done);
    State& st = *stateOf(window);
    joinWorker(st.worker);
    const PivotTexts& t = st.setup.texts;
    const bool run = job->kind == Job::Kind::Run;
    if (run && !job->failure) {
        const bool newCaptions = !st.data || st.data->captions != job->data->captions;
        st.period = job->period;
        st.data = job->data;
        st.table = job->table;
        if (newCaptions) fillDimensionBoxes(window, st);
    }
    enableWork(window, true);
    if (job->failure) {
        const Str& what = run ? t.failed : t.exportFailed;
        setStatus(window, what);
        // A failed reading shows nothing rather than the pivot of other choices.
        if (run) {
            st.table.reset();
            show(window);
            enableWork(window, true);
        }
        MessageBoxW(window, wtext(reporting::failureText(what, job->failure)), wtext(t.caption),
                    MB_OK | MB_ICONWARNING);
    } else if (run) {
        show(window);
        setStatus(window, pivotStatus(*st.table, t, st.setup.locale));
    } else {
        setStatus(window, t.exported + u": " + job->path);
    }
    if (st.runAgain) {
        st.runAgain = false;
        requestRun(window);
    }
}

void stopWorker(HWND window) {
    State& st = *stateOf(window);
    if (!st.worker) return;
    joinWorker(st.worker);
    dropPosted(window, WM_PW_DONE, [](LPARAM job) { delete reinterpret_cast<Job*>(job); });
}

void onCommand(HWND window, int id, int code) {
    switch (id) {
        case IDOK:  // Enter, in the filter's box too
        case IDC_PW_APPLY:
            if (code == BN_CLICKED) requestRun(window);
            break;
        case IDC_PW_CSV:
        case IDC_PW_XLSX:
        case IDC_PW_HTML:
            if (code == BN_CLICKED)
                exportWithDialog(window, static_cast<ExportFormat>(id - IDC_PW_CSV));
            break;
        case IDC_PW_ROWS1:
        case IDC_PW_ROWS2:
        case IDC_PW_COLUMN:
        case IDC_PW_MEASURE:
        case IDC_PW_PERIOD:
        case IDC_PW_FILTERDIM:
            if (code == CBN_SELCHANGE) requestRun(window);
            break;
        case IDC_PW_CHARTKIND:
            if (code == CBN_SELCHANGE) showChart(window);
            break;
        case IDCANCEL:
            DestroyWindow(window);
            break;
        default:
            break;
    }
}

LRESULT onNotify(HWND window, NMHDR* header) {
    State& st = *stateOf(window);
    if (header->idFrom != IDC_PW_LIST) return 0;
    if (header->code == LVN_GETDISPINFOW) {
        const auto* info = reinterpret_cast<NMLVDISPINFOW*>(header);
        const auto row = static_cast<std::size_t>(info->item.iItem);
        const auto column = static_cast<std::size_t>(info->item.iSubItem);
        if (row < st.grid.rows.size() && column < st.grid.rows[row].cells.size()) {
            const Str& text = st.grid.rows[row].cells[column];
            putItemText(header, wtext(text), text.size());
        }
        return 0;
    }
    if (header->code == NM_CUSTOMDRAW) {
        // Subtotal and total rows on a shaded ground, as spreadsheets show them.
        auto* draw = reinterpret_cast<NMLVCUSTOMDRAW*>(header);
        if (draw->nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
        if (draw->nmcd.dwDrawStage == CDDS_ITEMPREPAINT) {
            const auto row = static_cast<std::size_t>(draw->nmcd.dwItemSpec);
            if (row < st.grid.rows.size() && st.grid.rows[row].total)
                draw->clrTextBk =
                    st.grid.rows[row].level == 0 ? RGB(214, 220, 228) : RGB(234, 238, 243);
            return CDRF_DODEFAULT;
        }
    }
    return 0;
}

LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT answer = 0;
    if (answerFrameMessage(window, message, wParam, lParam, SIZE{860, 420},
                           stateOf(window) && stateOf(window)->worker, answer))
        return answer;
    switch (message) {
        case WM_NCCREATE: {
            auto* cs = reinterpret_cast<CREATESTRUCTW*>(lParam);
            SetWindowLongPtrW(window, GWLP_USERDATA,
                              reinterpret_cast<LONG_PTR>(cs->lpCreateParams));
            break;
        }
        case WM_CREATE:
            makeControls(window, *stateOf(window));
            layout(window);
            enableWork(window, true);
            requestRun(window);
            return 0;
        case WM_SIZE:
            layout(window);
            return 0;
        case WM_COMMAND:
            if (stateOf(window)) onCommand(window, LOWORD(wParam), HIWORD(wParam));
            return 0;
        case WM_NOTIFY:
            if (stateOf(window)) return onNotify(window, reinterpret_cast<NMHDR*>(lParam));
            return 0;
        case WM_PW_DONE:
            finished(window, reinterpret_cast<Job*>(lParam));
            return 0;
        case WM_DESTROY:
            if (State* st = stateOf(window)) {
                stopWorker(window);
                if (st->font) DeleteObject(st->font);
                st->font = nullptr;
            }
            return 0;
        case WM_NCDESTROY: {
            std::unique_ptr<State> st(stateOf(window));
            SetWindowLongPtrW(window, GWLP_USERDATA, 0);
            break;
        }
        default:
            break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

bool registerClasses(HINSTANCE instance) {
    return registerWindowClass(instance, kChartClass, chartProc, nullptr) &&
           registerWindowClass(instance, kPivotWindowClass, windowProc,
                               GetSysColorBrush(COLOR_BTNFACE));
}

}  // namespace

HWND openPivotWindow(HINSTANCE instance, PivotWindowModel& model, const PivotWindowSetup& setup) {
    INITCOMMONCONTROLSEX icc{sizeof icc, ICC_LISTVIEW_CLASSES | ICC_BAR_CLASSES |
                                             ICC_PROGRESS_CLASS | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&icc);
    if (!registerClasses(instance)) return nullptr;
    // From WM_NCCREATE on the window owns its state and frees it at
    // WM_NCDESTROY, a failed creation included.
    auto* state = new State(model, setup);
    return CreateWindowExW(WS_EX_CONTROLPARENT, kPivotWindowClass, wtext(setup.texts.caption),
                           WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, CW_USEDEFAULT, CW_USEDEFAULT,
                           1100, 660, nullptr, nullptr, instance, state);
}

int runPivotWindow(HINSTANCE instance, PivotWindowModel& model, const PivotWindowSetup& setup,
                   int show) {
    return runWindowLoop(openPivotWindow(instance, model, setup), show);
}

bool pivotWindowBusy(HWND window) {
    const State* st = stateOf(window);
    return st && st->worker;
}

PivotChart shownPivotChart(HWND window) {
    const State* st = stateOf(window);
    return st ? st->chart : PivotChart{};
}

bool exportShownPivot(HWND window, ExportFormat format, const Str& path) {
    return stateOf(window) && requestExport(window, format, path);
}

}  // namespace hb::statsapp
