#include "apps/reporting/ReportWindow.h"

#include <commctrl.h>
#include <objbase.h>
#include <process.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/common/WindowKit.h"
#include "common/DateTime.h"

namespace hb::reportapp {

using namespace hb::reporting;
using namespace hb::winui;

namespace {

constexpr wchar_t kClassName[] = L"HourbookReportWindow";
// The worker's result: lParam is the Job, owned by the message from then on.
constexpr UINT WM_RW_DONE = WM_APP + 1;

// Sizes at 96 dpi (layout scales them).
constexpr int kMargin = 10;
constexpr int kRowHeight = 24;
constexpr int kButtonWidth = 110;

// A piece of work for the model on the worker thread, and what came of it.
struct Job {
    enum class Kind { Run, Export } kind = Kind::Run;
    ReportWindowModel* model = nullptr;
    HWND window = nullptr;
    ReportOptions options;
    ExportFormat format = ExportFormat::Csv;
    Str path;
    std::shared_ptr<const Report> report;  // to export
    std::optional<Report> result;          // of a run
    std::exception_ptr failure;
};

struct State {
    State(ReportWindowModel& m, const ReportWindowSetup& s) : model(m), setup(s) {}
    ReportWindowModel& model;
    ReportWindowSetup setup;
    HFONT font = nullptr;
    HFONT bold = nullptr;                         // the captions of the tree and the list
    HANDLE worker = nullptr;                      // the thread at work, or null
    bool runAgain = false;                        // the options changed while the model was at work
    std::shared_ptr<const Report> report;         // the one shown
    std::vector<std::vector<std::wstring>> rows;  // the list's texts (a virtual list)
    int sortColumn = -1;                          // the report's order
    bool sortAscending = true;
    HWND summaryLabel = nullptr, detailsLabel = nullptr;
    std::vector<std::pair<HWND, int>> labels;  // the labels of the top rows, by row
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

// --- making the controls ------------------------------------------------------

SYSTEMTIME systemTime(DayNumber day) {
    const dt::Parts p = dt::toParts(day);
    SYSTEMTIME st{};
    st.wYear = static_cast<WORD>(p.year);
    st.wMonth = static_cast<WORD>(p.month);
    st.wDay = static_cast<WORD>(p.day);
    return st;
}

DayNumber pickedDay(HWND window, int id) {
    SYSTEMTIME st{};
    if (SendMessageW(item(window, id), DTM_GETSYSTEMTIME, 0, reinterpret_cast<LPARAM>(&st)) !=
        GDT_VALID)
        return 0;
    return static_cast<DayNumber>(dt::serial(st.wYear, st.wMonth, st.wDay));
}

int groupingIndex(std::optional<Dimension> d, bool offersNone) {
    for (std::size_t i = 0; i < kGroupingChoices.size(); ++i)
        if (d && kGroupingChoices[i] == *d) return static_cast<int>(i) + (offersNone ? 1 : 0);
    return 0;
}

void makeControls(HWND window, State& st) {
    const ReportTexts& t = st.setup.texts;
    const ReportForm& f = st.setup.form;
    auto label = [&](const Str& text, int row) {
        st.labels.emplace_back(makeControl(window, WC_STATICW, text, SS_RIGHT | SS_CENTERIMAGE, -1),
                               row);
    };

    label(t.period, 0);
    makeComboBox(window, IDC_RW_PERIOD, {t.periods.begin(), t.periods.end()},
                 static_cast<int>(f.period));
    label(t.from, 0);
    makeControl(window, DATETIMEPICK_CLASSW, u"", DTS_SHORTDATEFORMAT | WS_TABSTOP, IDC_RW_FROM);
    label(t.to, 0);
    makeControl(window, DATETIMEPICK_CLASSW, u"", DTS_SHORTDATEFORMAT | WS_TABSTOP, IDC_RW_TO);
    const Period custom =
        f.custom.empty() ? periodOf(PeriodChoice::ThisMonth, st.setup.today, f.custom) : f.custom;
    SYSTEMTIME from = systemTime(custom.first), to = systemTime(custom.last);
    SendMessageW(item(window, IDC_RW_FROM), DTM_SETSYSTEMTIME, GDT_VALID,
                 reinterpret_cast<LPARAM>(&from));
    SendMessageW(item(window, IDC_RW_TO), DTM_SETSYSTEMTIME, GDT_VALID,
                 reinterpret_cast<LPARAM>(&to));
    makeControl(window, WC_BUTTONW, t.run, BS_DEFPUSHBUTTON | WS_TABSTOP, IDC_RW_RUN);

    label(t.groupBy, 1);
    std::vector<Str> levels;
    for (Dimension d : kGroupingChoices)
        levels.push_back(dimensionCaption(d, st.setup.listCaptions, t));
    std::vector<Str> optionalLevels = levels;
    optionalLevels.insert(optionalLevels.begin(), t.none);
    makeComboBox(window, IDC_RW_GROUP1, levels, groupingIndex(f.grouping[0], false));
    makeComboBox(window, IDC_RW_GROUP2, optionalLevels, groupingIndex(f.grouping[1], true));
    makeComboBox(window, IDC_RW_GROUP3, optionalLevels, groupingIndex(f.grouping[2], true));
    label(t.hours, 1);
    makeComboBox(window, IDC_RW_HOURS, {t.decimal, t.hoursMinutes},
                 f.hoursFormat == HoursFormat::Decimal ? 0 : 1);

    label(t.rounding, 2);
    int roundingIndex = 0;
    for (std::size_t i = 0; i < kRoundingMinutes.size(); ++i)
        if (kRoundingMinutes[i] == f.rounding.minutes) roundingIndex = static_cast<int>(i);
    makeComboBox(window, IDC_RW_ROUNDING, roundingChoices(t), roundingIndex);
    makeComboBox(window, IDC_RW_DIRECTION, {t.directions.begin(), t.directions.end()},
                 static_cast<int>(f.rounding.direction));
    makeControl(window, WC_BUTTONW, t.overlapOnce, BS_AUTOCHECKBOX | WS_TABSTOP, IDC_RW_OVERLAP);
    CheckDlgButton(window, IDC_RW_OVERLAP, f.overlapOnce ? BST_CHECKED : BST_UNCHECKED);

    st.summaryLabel = makeControl(window, WC_STATICW, t.summary, SS_LEFT, -1);
    st.detailsLabel = makeControl(window, WC_STATICW, t.details, SS_LEFT, -1);
    makeControl(window, WC_TREEVIEWW, u"",
                TVS_HASLINES | TVS_HASBUTTONS | TVS_LINESATROOT | TVS_SHOWSELALWAYS | WS_TABSTOP,
                IDC_RW_TREE, WS_EX_CLIENTEDGE);
    HWND list = makeControl(window, WC_LISTVIEWW, u"",
                            LVS_REPORT | LVS_OWNERDATA | LVS_SHOWSELALWAYS | WS_TABSTOP,
                            IDC_RW_LIST, WS_EX_CLIENTEDGE);
    ListView_SetExtendedListViewStyle(
        list, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_GRIDLINES | LVS_EX_LABELTIP);
    const int exportIds[] = {IDC_RW_CSV, IDC_RW_XLSX, IDC_RW_HTML};
    for (std::size_t i = 0; i < kExportFormats; ++i)
        makeControl(window, WC_BUTTONW, t.exports[i], BS_PUSHBUTTON | WS_TABSTOP, exportIds[i]);
    makeControl(window, STATUSCLASSNAMEW, t.ready, SBARS_SIZEGRIP, IDC_RW_STATUS);

    // The message font of the system, as dialogs have it.
    st.font = useMessageFont(window);
    HFONT font = st.font ? st.font : static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT));
    LOGFONTW bold{};
    if (GetObjectW(font, sizeof bold, &bold)) {
        bold.lfWeight = FW_BOLD;
        st.bold = CreateFontIndirectW(&bold);
        for (HWND caption : {st.summaryLabel, st.detailsLabel})
            SendMessageW(caption, WM_SETFONT, reinterpret_cast<WPARAM>(st.bold), FALSE);
    }
}

// --- layout ---------------------------------------------------------------------

// Places the controls. Sizes are given at 96 dpi and scaled to the screen's;
// labels are as wide as their texts (translations differ in length).
void layout(HWND window) {
    State& st = *stateOf(window);
    Placer placer(window, IDC_RW_STATUS, 32);
    const int width = placer.width, height = placer.height, statusHeight = placer.statusHeight;
    auto units = [&](int pixels) { return placer.units(pixels); };
    auto place = [&](HWND h, int x, int y, int cx, int cy) { placer.place(h, x, y, cx, cy); };
    auto placeId = [&](int id, int x, int y, int cx, int cy) { placer.place(id, x, y, cx, cy); };
    // The labels of the top rows in the order made: period, from, to; group
    // by, hours; rounding. The first of each row share a column.
    std::vector<HWND> rowLabels[3];
    for (const auto& [h, row] : st.labels)
        rowLabels[row].push_back(h);
    auto labelWidth = [&](HWND h) { return units(textWidth(h)) + 4; };
    int firstColumn = 60;
    for (const auto& row : rowLabels)
        if (!row.empty()) firstColumn = std::max(firstColumn, labelWidth(row[0]));
    const int comboDrop = 200;  // a drop-down's height includes its open list
    auto rowY = [](int row) { return kMargin + row * (kRowHeight + 6); };
    // A label and the control after it; returns where the next one goes.
    auto labelled = [&](HWND label, int labelW, int id, int x, int row, int cx, int cy) {
        place(label, x, rowY(row), labelW, kRowHeight);
        x += labelW + 6;
        placeId(id, x, rowY(row), cx, cy);
        return x + cx + 12;
    };

    int x = labelled(rowLabels[0].size() > 0 ? rowLabels[0][0] : nullptr, firstColumn,
                     IDC_RW_PERIOD, kMargin, 0, 150, comboDrop);
    for (std::size_t i = 1; i < 3 && i < rowLabels[0].size(); ++i)
        x = labelled(rowLabels[0][i], labelWidth(rowLabels[0][i]), i == 1 ? IDC_RW_FROM : IDC_RW_TO,
                     x, 0, 120, kRowHeight);
    placeId(IDC_RW_RUN, width - kMargin - kButtonWidth, rowY(0), kButtonWidth, kRowHeight + 2);

    x = labelled(rowLabels[1].size() > 0 ? rowLabels[1][0] : nullptr, firstColumn, IDC_RW_GROUP1,
                 kMargin, 1, 130, comboDrop) -
        6;
    for (int id : {IDC_RW_GROUP2, IDC_RW_GROUP3}) {
        placeId(id, x, rowY(1), 130, comboDrop);
        x += 136;
    }
    if (rowLabels[1].size() > 1)
        labelled(rowLabels[1][1], labelWidth(rowLabels[1][1]), IDC_RW_HOURS, x + 6, 1, 90,
                 comboDrop);

    x = labelled(rowLabels[2].size() > 0 ? rowLabels[2][0] : nullptr, firstColumn, IDC_RW_ROUNDING,
                 kMargin, 2, 130, comboDrop) -
        6;
    placeId(IDC_RW_DIRECTION, x, rowY(2), 130, comboDrop);
    x += 148;
    placeId(IDC_RW_OVERLAP, x, rowY(2), units(textWidth(item(window, IDC_RW_OVERLAP))) + 30,
            kRowHeight);

    // The tree and the list share the middle, a third and two thirds; the
    // export buttons sit above the status line on the right.
    const int top = rowY(3) + 4;
    const int buttonsY = height - statusHeight - kMargin - kRowHeight;
    const int bottom = buttonsY - 8;
    const int treeWidth = (width - 3 * kMargin) / 3;
    place(st.summaryLabel, kMargin, top, treeWidth, 18);
    place(st.detailsLabel, 2 * kMargin + treeWidth, top, width - 3 * kMargin - treeWidth, 18);
    const int boxTop = top + 20;
    placeId(IDC_RW_TREE, kMargin, boxTop, treeWidth, bottom - boxTop);
    placeId(IDC_RW_LIST, 2 * kMargin + treeWidth, boxTop, width - 3 * kMargin - treeWidth,
            bottom - boxTop);
    x = width - kMargin - 3 * kButtonWidth - 2 * 6;
    for (int id : {IDC_RW_CSV, IDC_RW_XLSX, IDC_RW_HTML}) {
        placeId(id, x, buttonsY, kButtonWidth, kRowHeight + 2);
        x += kButtonWidth + 6;
    }
}

// --- showing a report ---------------------------------------------------------

HoursFormat chosenHoursFormat(HWND window) {
    return selected(window, IDC_RW_HOURS) == 1 ? HoursFormat::HoursMinutes : HoursFormat::Decimal;
}

void setStatus(HWND window, const Str& text) {
    SendMessageW(item(window, IDC_RW_STATUS), SB_SETTEXTW, 0,
                 reinterpret_cast<LPARAM>(wtext(text)));
}

void insertTree(HWND tree, HTREEITEM parent, const TreeRow& row, int depth) {
    std::wstring text = wide(row.text);
    TVINSERTSTRUCTW ins{};
    ins.hParent = parent;
    ins.hInsertAfter = TVI_LAST;
    ins.item.mask = TVIF_TEXT;
    ins.item.pszText = text.data();
    if (depth == 0) {  // the grand total stands out
        ins.item.mask |= TVIF_STATE;
        ins.item.state = ins.item.stateMask = TVIS_BOLD;
    }
    auto node = reinterpret_cast<HTREEITEM>(
        SendMessageW(tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&ins)));
    for (const TreeRow& child : row.children)
        insertTree(tree, node, child, depth + 1);
    // The total and the first level open; deeper levels on demand.
    if (depth < 2 && !row.children.empty())
        SendMessageW(tree, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(node));
}

// The detailed list in the chosen sort order, an arrow on the sorted
// column's header.
void fillList(HWND window) {
    State& st = *stateOf(window);
    HWND list = item(window, IDC_RW_LIST);
    SendMessageW(list, WM_SETREDRAW, FALSE, 0);
    ListView_SetItemCountEx(list, 0, 0);
    while (ListView_DeleteColumn(list, 0)) {
    }
    st.rows.clear();
    if (st.report) {
        int index = 0;
        const std::vector<ListColumn> columns = listColumns(*st.report, st.setup.texts);
        for (const ListColumn& c : columns) {
            std::wstring caption = wide(c.caption);
            LVCOLUMNW col{};
            col.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT;
            col.fmt = c.number ? LVCFMT_RIGHT : LVCFMT_LEFT;
            col.pszText = caption.data();
            col.cx = 60;
            ListView_InsertColumn(list, index++, &col);
        }
        const auto rows = listRows(*st.report, chosenHoursFormat(window), st.setup.locale);
        std::vector<std::size_t> order;
        if (st.sortColumn >= 0)
            order =
                sortedOrder(*st.report, static_cast<std::size_t>(st.sortColumn), st.sortAscending);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            std::vector<std::wstring> cells;
            for (const Str& cell : rows[order.empty() ? i : order[i]])
                cells.push_back(wide(cell));
            st.rows.push_back(std::move(cells));
        }
        std::vector<std::wstring> captions;
        for (const ListColumn& c : columns)
            captions.push_back(wide(c.caption));
        fitListColumns(list, st.rows, captions, 320);
        if (st.sortColumn >= 0) {
            HWND header = ListView_GetHeader(list);
            HDITEMW hd{};
            hd.mask = HDI_FORMAT;
            if (Header_GetItem(header, st.sortColumn, &hd)) {
                hd.fmt |= st.sortAscending ? HDF_SORTUP : HDF_SORTDOWN;
                Header_SetItem(header, st.sortColumn, &hd);
            }
        }
        ListView_SetItemCountEx(list, static_cast<int>(st.rows.size()), 0);
    }
    SendMessageW(list, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(list, nullptr, TRUE);
}

void show(HWND window) {
    State& st = *stateOf(window);
    HWND tree = item(window, IDC_RW_TREE);
    SendMessageW(tree, WM_SETREDRAW, FALSE, 0);
    SendMessageW(tree, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    if (st.report)
        insertTree(
            tree, TVI_ROOT,
            summaryTree(*st.report, chosenHoursFormat(window), st.setup.texts, st.setup.locale), 0);
    SendMessageW(tree, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(tree, nullptr, TRUE);
    fillList(window);
}

void showStatus(HWND window) {
    State& st = *stateOf(window);
    setStatus(window, st.report ? statusText(*st.report, chosenHoursFormat(window), st.setup.texts,
                                             st.setup.locale)
                                : st.setup.texts.ready);
}

// --- the worker -------------------------------------------------------------------

unsigned __stdcall work(void* parameter) {
    auto* job = static_cast<Job*>(parameter);
    // The model may reach Outlook from here: the thread has an apartment.
    const HRESULT init = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    try {
        if (job->kind == Job::Kind::Run)
            job->result = job->model->run(job->options);
        else
            job->model->exportTo(job->format, job->path, *job->report);
    } catch (...) {
        job->failure = std::current_exception();
    }
    if (SUCCEEDED(init)) CoUninitialize();
    if (!PostMessageW(job->window, WM_RW_DONE, 0, reinterpret_cast<LPARAM>(job))) delete job;
    return 0;
}

void enableWork(HWND window, bool enable) {
    for (int id : {IDC_RW_RUN, IDC_RW_CSV, IDC_RW_XLSX, IDC_RW_HTML})
        EnableWindow(item(window, id), enable && (id == IDC_RW_RUN || stateOf(window)->report));
}

bool start(HWND window, std::unique_ptr<Job> job) {
    State& st = *stateOf(window);
    if (st.worker) return false;
    job->model = &st.model;
    job->window = window;
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

ReportForm formOf(HWND window) {
    ReportForm f;
    f.period = static_cast<PeriodChoice>(selected(window, IDC_RW_PERIOD));
    f.custom = {pickedDay(window, IDC_RW_FROM), pickedDay(window, IDC_RW_TO)};
    f.grouping[0] = kGroupingChoices[static_cast<std::size_t>(selected(window, IDC_RW_GROUP1))];
    const int levels[] = {IDC_RW_GROUP2, IDC_RW_GROUP3};
    for (std::size_t i = 0; i < 2; ++i) {
        const int chosen = selected(window, levels[i]);
        f.grouping[i + 1] = chosen > 0 ? std::optional(kGroupingChoices[chosen - 1]) : std::nullopt;
    }
    f.hoursFormat = chosenHoursFormat(window);
    f.rounding.minutes =
        kRoundingMinutes[static_cast<std::size_t>(selected(window, IDC_RW_ROUNDING))];
    f.rounding.direction = static_cast<RoundingDirection>(selected(window, IDC_RW_DIRECTION));
    f.overlapOnce = IsDlgButtonChecked(window, IDC_RW_OVERLAP) == BST_CHECKED;
    return f;
}

void say(HWND window, const Str& message) {
    MessageBoxW(window, wtext(message), wtext(stateOf(window)->setup.texts.caption),
                MB_OK | MB_ICONWARNING);
}

// Runs the report of the controls' choices; while a run is at work, once
// more when it is done.
void requestRun(HWND window) {
    State& st = *stateOf(window);
    if (st.worker) {
        st.runAgain = true;
        return;
    }
    const ReportForm form = formOf(window);
    if (const std::optional<Str> problem = formProblem(form, st.setup.texts)) {
        setStatus(window, *problem);
        say(window, *problem);
        return;
    }
    auto job = std::make_unique<Job>();
    job->options = optionsFrom(form, st.setup.today);
    start(window, std::move(job));
}

bool requestExport(HWND window, ExportFormat format, const Str& path) {
    State& st = *stateOf(window);
    if (st.worker || !st.report) return false;
    auto job = std::make_unique<Job>();
    job->kind = Job::Kind::Export;
    job->format = format;
    job->path = path;
    job->report = st.report;
    return start(window, std::move(job));
}

void exportWithDialog(HWND window, ExportFormat format) {
    State& st = *stateOf(window);
    if (!st.report) return;
    const ReportTexts& t = st.setup.texts;
    const Str extension = exportExtension(format);
    if (const std::optional<Str> path =
            askSavePath(window, t.fileTypes[static_cast<std::size_t>(format)], extension,
                        exportFileName(format, st.report->options.period), t.save))
        requestExport(window, format, *path);
}

void finished(HWND window, Job* done) {
    std::unique_ptr<Job> job(done);
    State& st = *stateOf(window);
    joinWorker(st.worker);
    const ReportTexts& t = st.setup.texts;
    const bool run = job->kind == Job::Kind::Run;
    if (run && !job->failure) st.report = std::make_shared<const Report>(std::move(*job->result));
    // Usable again before a message box holds the user's attention.
    enableWork(window, true);
    if (job->failure) {
        const Str& what = run ? t.runFailed : t.exportFailed;
        setStatus(window, what);
        say(window, failureText(what, job->failure));
    } else if (run) {
        show(window);
        showStatus(window);
    } else {
        setStatus(window, t.exported + u": " + job->path);
    }
    if (st.runAgain) {
        st.runAgain = false;
        requestRun(window);
    }
}

// The worker must not outlive the window: wait for it, then drop what it
// posted.
void stopWorker(HWND window) {
    State& st = *stateOf(window);
    if (!st.worker) return;
    joinWorker(st.worker);
    dropPosted(window, WM_RW_DONE, [](LPARAM job) { delete reinterpret_cast<Job*>(job); });
}

void enableCustomDates(HWND window) {
    const bool custom = selected(window, IDC_RW_PERIOD) == static_cast<int>(PeriodChoice::Custom);
    EnableWindow(item(window, IDC_RW_FROM), custom);
    EnableWindow(item(window, IDC_RW_TO), custom);
}

void onCommand(HWND window, int id, int code) {
    switch (id) {
        case IDOK:  // Enter
        case IDC_RW_RUN:
            if (code == BN_CLICKED) requestRun(window);
            break;
        case IDC_RW_CSV:
        case IDC_RW_XLSX:
        case IDC_RW_HTML:
            if (code == BN_CLICKED)
                exportWithDialog(window, static_cast<ExportFormat>(id - IDC_RW_CSV));
            break;
        case IDC_RW_HOURS:
            // Only the texts change: no new reading of the calendar. The
            // exports write hours as the window shows them.
            if (code == CBN_SELCHANGE) {
                State& st = *stateOf(window);
                if (st.report && st.report->options.hoursFormat != chosenHoursFormat(window)) {
                    auto copy = std::make_shared<Report>(*st.report);
                    copy->options.hoursFormat = chosenHoursFormat(window);
                    st.report = std::move(copy);
                }
                show(window);
                if (!stateOf(window)->worker) showStatus(window);
            }
            break;
        case IDC_RW_PERIOD:
            if (code == CBN_SELCHANGE) {
                enableCustomDates(window);
                if (selected(window, IDC_RW_PERIOD) != static_cast<int>(PeriodChoice::Custom))
                    requestRun(window);
            }
            break;
        case IDC_RW_GROUP1:
        case IDC_RW_GROUP2:
        case IDC_RW_GROUP3:
        case IDC_RW_ROUNDING:
        case IDC_RW_DIRECTION:
            if (code == CBN_SELCHANGE) requestRun(window);
            break;
        case IDC_RW_OVERLAP:
            if (code == BN_CLICKED) requestRun(window);
            break;
        case IDCANCEL:
            DestroyWindow(window);
            break;
        default:
            break;
    }
}

// Ctrl+C in the list: the selected rows (all when none is) with the
// captions, as tab-separated text.
void copyRows(HWND window) {
    State& st = *stateOf(window);
    if (!st.report) return;
    HWND list = item(window, IDC_RW_LIST);
    std::vector<std::vector<Str>> rows;
    auto take = [&](std::size_t r) {
        std::vector<Str> cells;
        for (const std::wstring& cell : st.rows[r])
            cells.emplace_back(cell.begin(), cell.end());
        rows.push_back(std::move(cells));
    };
    for (int r = ListView_GetNextItem(list, -1, LVNI_SELECTED); r >= 0;
         r = ListView_GetNextItem(list, r, LVNI_SELECTED))
        if (static_cast<std::size_t>(r) < st.rows.size()) take(static_cast<std::size_t>(r));
    if (rows.empty())
        for (std::size_t r = 0; r < st.rows.size(); ++r)
            take(r);
    const Str text = tabSeparated(listColumns(*st.report, st.setup.texts), rows);
    if (!OpenClipboard(window)) return;
    EmptyClipboard();
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    if (HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes)) {
        if (void* target = GlobalLock(memory)) {
            std::memcpy(target, text.c_str(), bytes);
            GlobalUnlock(memory);
            if (!SetClipboardData(CF_UNICODETEXT, memory)) GlobalFree(memory);
        } else {
            GlobalFree(memory);
        }
    }
    CloseClipboard();
}

LRESULT onNotify(HWND window, NMHDR* header) {
    State& st = *stateOf(window);
    if (header->idFrom == IDC_RW_LIST && header->code == LVN_KEYDOWN) {
        const WORD key = reinterpret_cast<NMLVKEYDOWN*>(header)->wVKey;
        if (key == 'C' && (GetKeyState(VK_CONTROL) & 0x8000)) copyRows(window);
        if (key == 'A' && (GetKeyState(VK_CONTROL) & 0x8000))
            ListView_SetItemState(item(window, IDC_RW_LIST), -1, LVIS_SELECTED, LVIS_SELECTED);
        return 0;
    }
    if (header->idFrom == IDC_RW_LIST && header->code == LVN_COLUMNCLICK) {
        // A click sorts by the column, a second one the other way round.
        const int column = reinterpret_cast<NMLISTVIEW*>(header)->iSubItem;
        st.sortAscending = column == st.sortColumn ? !st.sortAscending : true;
        st.sortColumn = column;
        fillList(window);
        return 0;
    }
    if (header->idFrom == IDC_RW_LIST && header->code == LVN_GETDISPINFOW) {
        const auto* info = reinterpret_cast<NMLVDISPINFOW*>(header);
        const auto row = static_cast<std::size_t>(info->item.iItem);
        const auto column = static_cast<std::size_t>(info->item.iSubItem);
        if (row < st.rows.size() && column < st.rows[row].size())
            putItemText(header, st.rows[row][column].c_str(), st.rows[row][column].size());
    }
    return 0;
}

LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT answer = 0;
    if (answerFrameMessage(window, message, wParam, lParam, SIZE{820, 420},
                           stateOf(window) && stateOf(window)->worker, answer))
        return answer;
    switch (message) {
        case WM_NCCREATE: {
            auto* cs = reinterpret_cast<CREATESTRUCTW*>(lParam);
            SetWindowLongPtrW(window, GWLP_USERDATA,
                              reinterpret_cast<LONG_PTR>(cs->lpCreateParams));
            break;
        }
        case WM_CREATE: {
            State& st = *stateOf(window);
            makeControls(window, st);
            enableCustomDates(window);
            layout(window);
            enableWork(window, true);
            if (st.setup.runAtOnce) requestRun(window);
            return 0;
        }
        case WM_SIZE:
            layout(window);
            return 0;
        case WM_COMMAND:
            if (stateOf(window)) onCommand(window, LOWORD(wParam), HIWORD(wParam));
            return 0;
        case WM_NOTIFY:
            if (stateOf(window)) return onNotify(window, reinterpret_cast<NMHDR*>(lParam));
            return 0;
        case WM_RW_DONE:
            finished(window, reinterpret_cast<Job*>(lParam));
            return 0;
        case WM_DESTROY:
            if (State* st = stateOf(window)) {
                stopWorker(window);
                if (st->font) DeleteObject(st->font);
                if (st->bold) DeleteObject(st->bold);
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

bool registerClass(HINSTANCE instance) {
    return registerWindowClass(instance, kClassName, windowProc, GetSysColorBrush(COLOR_BTNFACE));
}

}  // namespace

HWND openReportWindow(HINSTANCE instance, ReportWindowModel& model,
                      const ReportWindowSetup& setup) {
    INITCOMMONCONTROLSEX icc{sizeof icc, ICC_TREEVIEW_CLASSES | ICC_LISTVIEW_CLASSES |
                                             ICC_DATE_CLASSES | ICC_BAR_CLASSES |
                                             ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&icc);
    if (!registerClass(instance)) return nullptr;
    // From WM_NCCREATE on the window owns its state and frees it at
    // WM_NCDESTROY, a failed creation included.
    auto* state = new State(model, setup);
    return CreateWindowExW(WS_EX_CONTROLPARENT, kClassName, wtext(setup.texts.caption),
                           WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, CW_USEDEFAULT, CW_USEDEFAULT,
                           1000, 640, nullptr, nullptr, instance, state);
}

int runReportWindow(HINSTANCE instance, ReportWindowModel& model, const ReportWindowSetup& setup,
                    int show) {
    return runWindowLoop(openReportWindow(instance, model, setup), show);
}

bool reportWindowBusy(HWND window) {
    State* st = stateOf(window);
    return st && st->worker;
}

bool exportShownReport(HWND window, ExportFormat format, const Str& path) {
    return stateOf(window) && requestExport(window, format, path);
}

}  // namespace hb::reportapp
