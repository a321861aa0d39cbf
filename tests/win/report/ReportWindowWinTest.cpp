// The report window under Wine with a hand-made report (three companies,
// three persons, a week of November and a day of October) and a stand-in
// model: the rows of its summary tree and detailed list read back through
// the controls (TVM_/LVM_ messages), what its choices hand to the model,
// new rows when the grouping and the hours format change, a failing model
// shown in a message box with the window still usable, the calendar read
// off the window's thread, exports handed to the model, and a screenshot
// (build/screenshots/report.png).
//
// Wine draws windows only with a display: without one, ReportWindowXvfb runs
// the ReportWindow tests again in a second Wine process under an Xvfb server
// of its own.
#include <gtest/gtest.h>
#include <windows.h>
// windows.h first.
#include <commctrl.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <stdexcept>

#include "apps/reporting/ReportWindow.h"
#include "common/AutomationError.h"
#include "common/DateTime.h"
#include "common/Session.h"
#include "languages/modMultiLanguage.h"
#include "platform/win32/Win32Platform.h"
#include "win/ComTestSupport.h"
#include "win/WindowTestSupport.h"

namespace hb::reportapp {
namespace {

using namespace hb::reporting;

constexpr wchar_t kChildVariable[] = L"HB_REPORT_WINDOW_DISPLAY_CHILD";

DayNumber day(int y, int m, int d) {
    return static_cast<DayNumber>(dt::serial(y, m, d));
}

Str iso(DayNumber d) {
    const dt::Parts p = dt::toParts(d);
    wchar_t text[16];
    swprintf(text, 16, L"%04d-%02d-%02d", p.year, p.month, p.day);
    return Str(text, text + wcslen(text));
}

TimeRecord record(DayNumber d, int fromHour, int fromMinute, int minutes, const char16_t* subject,
                  std::array<Str, kReportLists> values) {
    TimeRecord r;
    r.user = u"ann";
    r.entryId = Str(u"ID-") + subject;
    r.day = d;
    r.start = Date{d + dt::timeFraction(fromHour, fromMinute, 0)};
    r.occurrenceStart = r.start;
    r.end = Date{r.start.days + minutes / 1440.0};
    r.subject = subject;
    r.values = std::move(values);
    r.billed = !r.values[0].empty() || !r.values[1].empty() || !r.values[2].empty();
    r.seconds = r.roundedSeconds = minutes * 60;
    r.rate = Currency::fromUnits(100);
    r.amount = Currency{r.rate.scaled * r.roundedSeconds / 3600};
    return r;
}

// A stand-in for the report program: the report of its records by the
// options' period and grouping (labels: the values, ISO days and months), a
// run it may hold until the test lets it go, failures on demand.
class FakeModel : public ReportWindowModel {
  public:
    FakeModel() {
        records_ = {
            record(day(2026, 10, 30), 9, 0, 180, u"October work", {u"Acme", u"Ann", u"Design"}),
            record(day(2026, 11, 2), 9, 0, 90, u"Design review", {u"Acme", u"Ann", u"Design"}),
            record(day(2026, 11, 2), 13, 0, 240, u"Support hotline",
                   {u"Globex", u"Bob", u"Support"}),
            record(day(2026, 11, 3), 8, 0, 240, u"Workshop", {u"Acme", u"Cleo", u"Design"}),
            record(day(2026, 11, 4), 10, 0, 75, u"Status call", {u"Initech", u"Ann", u""}),
            record(day(2026, 11, 5), 14, 0, 150, u"Migration", {u"Globex", u"Bob", u"Support"}),
            record(day(2026, 11, 6), 9, 0, 45, u"Inbox", {u"", u"", u""}),
        };
    }
    ~FakeModel() override {
        if (gate) CloseHandle(gate);
    }

    Report run(const ReportOptions& options) override {
        runThread = GetCurrentThreadId();
        APTTYPE type{};
        APTTYPEQUALIFIER qualifier{};
        runInMta = SUCCEEDED(CoGetApartmentType(&type, &qualifier)) && type == APTTYPE_MTA;
        if (gate) WaitForSingleObject(gate, 30000);
        std::lock_guard<std::mutex> lock(mutex_);
        ++runs;
        lastOptions = options;
        if (runFailure) std::rethrow_exception(runFailure);
        Report r;
        r.options = options;
        r.listCaptions = {u"Company", u"Person", u"Project"};
        for (const TimeRecord& rec : records_)
            if (options.period.contains(rec.day)) r.records.push_back(rec);
        r.total = group(r.records, options.grouping, 0);
        return r;
    }

    void exportTo(ExportFormat format, const Str& path, const Report& report) override {
        std::lock_guard<std::mutex> lock(mutex_);
        if (exportFailure) std::rethrow_exception(exportFailure);
        exports.push_back({format, path, report.records.size(), report.options.hoursFormat});
    }

    struct Export {
        ExportFormat format;
        Str path;
        std::size_t records;
        HoursFormat hoursFormat;
    };
    std::atomic<int> runs{0};
    std::atomic<DWORD> runThread{0};
    std::atomic<bool> runInMta{false};  // the worker entered COM's multithreaded apartment
    ReportOptions lastOptions;
    std::exception_ptr runFailure, exportFailure;
    std::vector<Export> exports;
    HANDLE gate = nullptr;  // set: run waits for it

  private:
    static Str labelOf(const TimeRecord& r, Dimension d) {
        switch (d) {
            case Dimension::List1:
            case Dimension::List2:
            case Dimension::List3:
                return r.values[static_cast<std::size_t>(d)];
            case Dimension::Month:
                return iso(r.day).substr(0, 7);
            case Dimension::Week:
                return u"Week of " + iso(r.day - (r.day + 5) % 7);
            default:
                return iso(r.day);
        }
    }
    static SummaryNode group(const std::vector<TimeRecord>& records,
                             const std::vector<Dimension>& grouping, std::size_t level) {
        SummaryNode node;
        for (const TimeRecord& r : records) {
            node.seconds += r.seconds;
            node.roundedSeconds += r.roundedSeconds;
            node.amount.scaled += r.amount.scaled;
            ++node.records;
        }
        if (level >= grouping.size()) return node;
        std::map<Str, std::vector<TimeRecord>> groups;
        for (const TimeRecord& r : records)
            groups[labelOf(r, grouping[level])].push_back(r);
        for (const auto& [label, members] : groups) {
            SummaryNode child = group(members, grouping, level + 1);
            child.dimension = grouping[level];
            child.label = label;
            node.children.push_back(std::move(child));
        }
        return node;
    }

    std::vector<TimeRecord> records_;
    std::mutex mutex_;
};

bool displayReady() {
    static const bool ready = test::windowsPossible(kChildVariable, L"HBReportTest");
    return ready;
}

class ReportWindow : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!displayReady())
            GTEST_SKIP() << "no X display for Wine's windows; ReportWindowXvfb runs these tests "
                            "under an Xvfb server of its own";
        setup_.today = day(2026, 11, 25);
        setup_.listCaptions = {u"Company", u"Person", u"Project"};
        setup_.form.period = PeriodChoice::ThisMonth;
        setup_.form.grouping = {Dimension::List1, Dimension::List2, std::nullopt};
    }
    void TearDown() override {
        if (window_ && IsWindow(window_)) DestroyWindow(window_);
        pump();
    }

    void open() {
        window_ = openReportWindow(GetModuleHandleW(nullptr), model_, setup_);
        ASSERT_NE(window_, nullptr);
        SetWindowPos(window_, HWND_TOP, 0, 0, 1000, 640, SWP_SHOWWINDOW);
        settle();
    }
    // Opens while the model holds its first run.
    void openHeld() {
        window_ = openReportWindow(GetModuleHandleW(nullptr), model_, setup_);
        ASSERT_NE(window_, nullptr);
        ShowWindow(window_, SW_SHOW);
        pump();
    }
    void pump() { test::pumpMessages(); }
    // Until the model's work is done and its result shown.
    void settle() {
        ASSERT_TRUE(test::settleWhile([this] { return reportWindowBusy(window_); }))
            << "the model's work did not end";
    }

    HWND item(int id) { return GetDlgItem(window_, id); }
    void choose(int id, int index) { test::chooseInCombo(window_, id, index); }
    void click(int id) {
        SendMessageW(item(id), BM_CLICK, 0, 0);
        pump();
    }
    void pick(int id, DayNumber d) {
        const dt::Parts p = dt::toParts(d);
        SYSTEMTIME st{};
        st.wYear = static_cast<WORD>(p.year);
        st.wMonth = static_cast<WORD>(p.month);
        st.wDay = static_cast<WORD>(p.day);
        SendMessageW(item(id), DTM_SETSYSTEMTIME, GDT_VALID, reinterpret_cast<LPARAM>(&st));
    }
    std::wstring status() { return test::statusBarText(item(IDC_RW_STATUS)); }

    // The tree's rows in order, two blanks of indent per level.
    std::vector<std::wstring> treeRows() {
        std::vector<std::wstring> rows;
        HWND tree = item(IDC_RW_TREE);
        walk(tree, TreeView_GetRoot(tree), 0, rows);
        return rows;
    }
    void walk(HWND tree, HTREEITEM node, int depth, std::vector<std::wstring>& rows) {
        for (; node; node = TreeView_GetNextSibling(tree, node)) {
            wchar_t text[512] = {};
            TVITEMW it{};
            it.mask = TVIF_TEXT;
            it.hItem = node;
            it.pszText = text;
            it.cchTextMax = 512;
            SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&it));
            rows.push_back(std::wstring(static_cast<std::size_t>(depth) * 2, L' ') + text);
            walk(tree, TreeView_GetChild(tree, node), depth + 1, rows);
        }
    }
    int listCount() { return ListView_GetItemCount(item(IDC_RW_LIST)); }
    std::vector<std::wstring> listRow(int row) {
        HWND list = item(IDC_RW_LIST);
        const int columns = Header_GetItemCount(ListView_GetHeader(list));
        std::vector<std::wstring> cells;
        for (int c = 0; c < columns; ++c) {
            wchar_t text[512] = {};
            LVITEMW it{};
            it.iSubItem = c;
            it.pszText = text;
            it.cchTextMax = 512;
            SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                         reinterpret_cast<LPARAM>(&it));
            cells.emplace_back(text);
        }
        return cells;
    }
    std::wstring header(int column) {
        wchar_t text[128] = {};
        HDITEMW hd{};
        hd.mask = HDI_TEXT;
        hd.pszText = text;
        hd.cchTextMax = 128;
        Header_GetItem(ListView_GetHeader(item(IDC_RW_LIST)), column, &hd);
        return text;
    }

    FakeModel model_;
    ReportWindowSetup setup_;
    HWND window_ = nullptr;
};

TEST_F(ReportWindow, OpensWithTheSummaryAndTheRecordsOfTheChosenPeriod) {
    open();
    EXPECT_EQ(model_.runs, 1);
    EXPECT_EQ(model_.lastOptions.period, (Period{day(2026, 11, 1), day(2026, 11, 30)}));
    EXPECT_EQ(model_.lastOptions.grouping,
              (std::vector<Dimension>{Dimension::List1, Dimension::List2}));
    EXPECT_EQ(treeRows(), (std::vector<std::wstring>{
                              L"Total: 14.00 h, rounded 14.00 h, 1,400.00",
                              L"  (not billed): 0.75 h, rounded 0.75 h, 75.00",
                              L"    (not billed): 0.75 h, rounded 0.75 h, 75.00",
                              L"  Acme: 5.50 h, rounded 5.50 h, 550.00",
                              L"    Ann: 1.50 h, rounded 1.50 h, 150.00",
                              L"    Cleo: 4.00 h, rounded 4.00 h, 400.00",
                              L"  Globex: 6.50 h, rounded 6.50 h, 650.00",
                              L"    Bob: 6.50 h, rounded 6.50 h, 650.00",
                              L"  Initech: 1.25 h, rounded 1.25 h, 125.00",
                              L"    Ann: 1.25 h, rounded 1.25 h, 125.00",
                          }));
    ASSERT_EQ(listCount(), 6);
    const std::vector<std::wstring> headers = {L"Date",          L"Start",  L"End",     L"Subject",
                                               L"Company",       L"Person", L"Project", L"Hours",
                                               L"Rounded hours", L"Amount"};
    for (int c = 0; c < 10; ++c)
        EXPECT_EQ(header(c), headers[static_cast<std::size_t>(c)]);
    EXPECT_EQ(listRow(0),
              (std::vector<std::wstring>{L"11/2/2026", L"9:00 AM", L"10:30 AM", L"Design review",
                                         L"Acme", L"Ann", L"Design", L"1.50", L"1.50", L"150.00"}));
    EXPECT_EQ(listRow(5)[3], L"Inbox");
    EXPECT_EQ(listRow(5)[4], L"");
    EXPECT_EQ(status(), L"6 records, 11/1/2026 - 11/30/2026, 14.00 h, 1,400.00");
    EXPECT_NE(model_.runThread.load(), GetCurrentThreadId()) << "run on the window's thread";
    EXPECT_TRUE(model_.runInMta) << "the model reaches Outlook from an apartment";
}

// The texts as the program gets them: the phrase table's column of the
// user's language, read from the resource.
TEST_F(ReportWindow, OpensInTheUsersLanguage) {
    Win32Platform platform;
    Session s(platform);
    LoadLanguages(s, lang::German);
    setup_.texts = reportTextsFrom(s.phrases);
    open();
    wchar_t caption[128] = {};
    GetWindowTextW(window_, caption, 128);
    EXPECT_STREQ(caption, L"Hourbook for Outlook - Bericht");
    EXPECT_EQ(header(0), L"Datum");
    EXPECT_EQ(header(3), L"Betreff");
    EXPECT_EQ(header(7), L"Stunden");
    EXPECT_EQ(header(8), L"Rounded hours") << "no phrase: English";
    EXPECT_EQ(treeRows()[0], L"Summe: 14.00 h, rounded 14.00 h, 1,400.00");
    wchar_t label[64] = {};
    GetWindowTextW(GetWindow(window_, GW_CHILD), label, 64);
    EXPECT_STREQ(label, L"Datumsbereich");
}

TEST_F(ReportWindow, GroupingAndHoursFormatChangeTheRows) {
    open();
    choose(IDC_RW_GROUP1, 3);  // Day
    choose(IDC_RW_GROUP2, 0);  // (none)
    settle();
    EXPECT_EQ(model_.lastOptions.grouping, (std::vector<Dimension>{Dimension::Day}));
    EXPECT_EQ(treeRows(), (std::vector<std::wstring>{
                              L"Total: 14.00 h, rounded 14.00 h, 1,400.00",
                              L"  2026-11-02: 5.50 h, rounded 5.50 h, 550.00",
                              L"  2026-11-03: 4.00 h, rounded 4.00 h, 400.00",
                              L"  2026-11-04: 1.25 h, rounded 1.25 h, 125.00",
                              L"  2026-11-05: 2.50 h, rounded 2.50 h, 250.00",
                              L"  2026-11-06: 0.75 h, rounded 0.75 h, 75.00",
                          }));
    choose(IDC_RW_GROUP1, 1);  // Person, then Company
    choose(IDC_RW_GROUP2, 1);
    settle();
    EXPECT_EQ(model_.lastOptions.grouping,
              (std::vector<Dimension>{Dimension::List2, Dimension::List1}));
    std::vector<std::wstring> rows = treeRows();
    ASSERT_GE(rows.size(), 5u);
    EXPECT_EQ(rows[3], L"  Ann: 2.75 h, rounded 2.75 h, 275.00");
    EXPECT_EQ(rows[4], L"    Acme: 1.50 h, rounded 1.50 h, 150.00");

    const int runs = model_.runs;
    choose(IDC_RW_HOURS, 1);  // h:mm: the same report in other words
    pump();
    EXPECT_EQ(model_.runs, runs) << "the hours format needs no new run";
    rows = treeRows();
    EXPECT_EQ(rows[0], L"Total: 14:00 h, rounded 14:00 h, 1,400.00");
    EXPECT_EQ(rows[3], L"  Ann: 2:45 h, rounded 2:45 h, 275.00");
    EXPECT_EQ(listRow(0)[7], L"1:30");
    EXPECT_EQ(listRow(4)[8], L"2:30");
}

TEST_F(ReportWindow, AClickOnAColumnSortsTheList) {
    open();
    auto clickHeader = [&](int column) {
        NMLISTVIEW nm{};
        nm.hdr.hwndFrom = item(IDC_RW_LIST);
        nm.hdr.idFrom = IDC_RW_LIST;
        nm.hdr.code = LVN_COLUMNCLICK;
        nm.iItem = -1;
        nm.iSubItem = column;
        SendMessageW(window_, WM_NOTIFY, IDC_RW_LIST, reinterpret_cast<LPARAM>(&nm));
    };
    auto column = [&](int c) {
        std::vector<std::wstring> cells;
        for (int row = 0; row < listCount(); ++row)
            cells.push_back(listRow(row)[static_cast<std::size_t>(c)]);
        return cells;
    };
    clickHeader(7);  // hours, smallest first
    EXPECT_EQ(column(7),
              (std::vector<std::wstring>{L"0.75", L"1.25", L"1.50", L"2.50", L"4.00", L"4.00"}));
    EXPECT_EQ(column(3)[4], L"Support hotline") << "equal hours keep the date order";
    clickHeader(7);  // and the other way round
    EXPECT_EQ(column(7).front(), L"4.00");
    EXPECT_EQ(column(7).back(), L"0.75");
    clickHeader(3);
    EXPECT_EQ(column(3),
              (std::vector<std::wstring>{L"Design review", L"Inbox", L"Migration", L"Status call",
                                         L"Support hotline", L"Workshop"}));
    // Ctrl+C copies the selected rows, in the shown order, with the captions.
    ListView_SetItemState(item(IDC_RW_LIST), 1, LVIS_SELECTED, LVIS_SELECTED);
    NMLVKEYDOWN key{};
    key.hdr.hwndFrom = item(IDC_RW_LIST);
    key.hdr.idFrom = IDC_RW_LIST;
    key.hdr.code = LVN_KEYDOWN;
    key.wVKey = 'C';
    BYTE keys[256] = {};
    GetKeyboardState(keys);
    keys[VK_CONTROL] = 0x80;
    SetKeyboardState(keys);
    SendMessageW(window_, WM_NOTIFY, IDC_RW_LIST, reinterpret_cast<LPARAM>(&key));
    keys[VK_CONTROL] = 0;
    SetKeyboardState(keys);
    std::wstring copied;
    ASSERT_TRUE(OpenClipboard(window_));
    if (HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
        copied = static_cast<const wchar_t*>(GlobalLock(data));
        GlobalUnlock(data);
    }
    CloseClipboard();
    EXPECT_EQ(copied,
              L"Date\tStart\tEnd\tSubject\tCompany\tPerson\tProject\tHours\tRounded hours\t"
              L"Amount\r\n11/6/2026\t9:00 AM\t9:45 AM\tInbox\t\t\t\t0.75\t0.75\t75.00\r\n");

    choose(IDC_RW_HOURS, 1);  // the order stays with other hours texts
    EXPECT_EQ(column(3).front(), L"Design review");
    EXPECT_EQ(column(7).front(), L"1:30");
}

// Resizing keeps every control inside the window: the tree and the list take
// the room between the choices and the export buttons, which stay at the
// bottom right above the status line.
TEST_F(ReportWindow, TheLayoutFollowsTheWindowsSize) {
    open();
    auto rectOf = [&](int id) {
        RECT r{};
        GetWindowRect(item(id), &r);
        MapWindowPoints(nullptr, window_, reinterpret_cast<POINT*>(&r), 2);
        return r;
    };
    const SIZE sizes[] = {{820, 420}, {1000, 640}, {1400, 900}};
    for (const SIZE& size : sizes) {
        SetWindowPos(window_, nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER);
        pump();
        RECT client{};
        GetClientRect(window_, &client);
        const RECT tree = rectOf(IDC_RW_TREE), list = rectOf(IDC_RW_LIST);
        const RECT html = rectOf(IDC_RW_HTML), csv = rectOf(IDC_RW_CSV);
        const RECT status = rectOf(IDC_RW_STATUS), overlap = rectOf(IDC_RW_OVERLAP);
        const RECT run = rectOf(IDC_RW_RUN), to = rectOf(IDC_RW_TO);
        const std::string at = std::to_string(size.cx) + "x" + std::to_string(size.cy);
        EXPECT_LT(tree.right, list.left) << at;
        EXPECT_GT(tree.top, overlap.bottom) << at;
        EXPECT_EQ(tree.bottom, list.bottom) << at;
        EXPECT_LT(list.bottom, csv.top) << at;
        EXPECT_LE(html.right, client.right) << at;
        EXPECT_GE(html.right, client.right - 20) << at;
        EXPECT_LE(html.bottom, status.top) << at;
        EXPECT_EQ(status.bottom, client.bottom) << at;
        EXPECT_LT(to.right, run.left) << at;
        EXPECT_GT(list.right - list.left, tree.right - tree.left) << at;
    }
}

TEST_F(ReportWindow, ThePeriodChoicesAndTheOptionsReachTheModel) {
    open();
    choose(IDC_RW_PERIOD, static_cast<int>(PeriodChoice::LastMonth));
    settle();
    EXPECT_EQ(model_.lastOptions.period, (Period{day(2026, 10, 1), day(2026, 10, 31)}));
    ASSERT_EQ(listCount(), 1);
    EXPECT_EQ(listRow(0)[3], L"October work");

    // Custom: the pickers count from Run on.
    const int runs = model_.runs;
    pick(IDC_RW_FROM, day(2026, 11, 3));
    pick(IDC_RW_TO, day(2026, 11, 4));
    choose(IDC_RW_PERIOD, static_cast<int>(PeriodChoice::Custom));
    EXPECT_TRUE(IsWindowEnabled(item(IDC_RW_FROM)));
    EXPECT_EQ(model_.runs, runs);
    choose(IDC_RW_ROUNDING, 2);   // 15 minutes
    choose(IDC_RW_DIRECTION, 0);  // up
    click(IDC_RW_OVERLAP);
    settle();
    click(IDC_RW_RUN);
    settle();
    EXPECT_EQ(model_.lastOptions.period, (Period{day(2026, 11, 3), day(2026, 11, 4)}));
    EXPECT_EQ(model_.lastOptions.rounding.minutes, 15);
    EXPECT_EQ(model_.lastOptions.rounding.direction, RoundingDirection::Up);
    EXPECT_TRUE(model_.lastOptions.overlapOnce);
    EXPECT_EQ(listCount(), 2);

    // An end before the start is refused before the model hears of it.
    test::MessageBoxWatcher boxes;
    pick(IDC_RW_TO, day(2026, 11, 1));
    const int before = model_.runs;
    click(IDC_RW_RUN);
    settle();
    EXPECT_EQ(model_.runs, before);
    ASSERT_EQ(boxes.count(), 1);
    EXPECT_EQ(boxes.texts()[0], L"The end date lies before the start date.");
}

TEST_F(ReportWindow, AFailingModelIsShownAndTheWindowStaysUsable) {
    test::MessageBoxWatcher boxes;
    model_.runFailure = std::make_exception_ptr(AutomationError(429, u"Outlook is not available."));
    open();
    ASSERT_EQ(boxes.count(), 1);
    EXPECT_EQ(boxes.texts()[0],
              L"The report could not be made.\n\nOutlook is not available. (429)");
    EXPECT_EQ(status(), L"The report could not be made.");
    EXPECT_EQ(listCount(), 0);
    EXPECT_TRUE(IsWindowEnabled(item(IDC_RW_RUN)));
    EXPECT_FALSE(IsWindowEnabled(item(IDC_RW_CSV))) << "nothing to export yet";

    model_.runFailure = nullptr;
    click(IDC_RW_RUN);
    settle();
    EXPECT_EQ(listCount(), 6);
    EXPECT_TRUE(IsWindowEnabled(item(IDC_RW_CSV)));
    EXPECT_EQ(boxes.count(), 1);
}

TEST_F(ReportWindow, TheCalendarIsReadOffTheWindowsThread) {
    model_.gate = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    openHeld();
    // Here only because the run did not hold up this (the window's) thread.
    EXPECT_TRUE(reportWindowBusy(window_));
    EXPECT_EQ(status(), L"Reading the calendar...");
    EXPECT_FALSE(IsWindowEnabled(item(IDC_RW_RUN)));
    choose(IDC_RW_GROUP1, 4);  // Week: asked for while the first run is at work
    pump();
    SetEvent(model_.gate);
    settle();
    // The second run follows the first.
    for (int i = 0; i < 100 && model_.runs < 2; ++i) {
        settle();
        Sleep(10);
    }
    settle();
    EXPECT_EQ(model_.runs, 2);
    EXPECT_EQ(model_.lastOptions.grouping,
              (std::vector<Dimension>{Dimension::Week, Dimension::List2}));
    EXPECT_EQ(treeRows()[1], L"  Week of 2026-11-02: 14.00 h, rounded 14.00 h, 1,400.00");
    EXPECT_TRUE(IsWindowEnabled(item(IDC_RW_RUN)));
}

TEST_F(ReportWindow, ExportsHandTheShownReportToTheModel) {
    test::MessageBoxWatcher boxes;
    open();
    const Str path = u"C:\\reports\\november.xlsx";
    ASSERT_TRUE(exportShownReport(window_, ExportFormat::Xlsx, path));
    settle();
    ASSERT_EQ(model_.exports.size(), 1u);
    EXPECT_EQ(model_.exports[0].format, ExportFormat::Xlsx);
    EXPECT_EQ(model_.exports[0].path, path);
    EXPECT_EQ(model_.exports[0].records, 6u);
    EXPECT_EQ(status(), L"Saved: C:\\reports\\november.xlsx");
    EXPECT_EQ(model_.exports[0].hoursFormat, HoursFormat::Decimal);
    // Hours shown as h:mm are exported as h:mm, without a new run.
    choose(IDC_RW_HOURS, 1);
    ASSERT_TRUE(exportShownReport(window_, ExportFormat::Html, path));
    settle();
    ASSERT_EQ(model_.exports.size(), 2u);
    EXPECT_EQ(model_.exports[1].hoursFormat, HoursFormat::HoursMinutes);
    EXPECT_EQ(model_.runs, 1);

    model_.exportFailure = std::make_exception_ptr(std::runtime_error("disk full"));
    ASSERT_TRUE(exportShownReport(window_, ExportFormat::Csv, u"C:\\r.csv"));
    settle();
    ASSERT_EQ(boxes.count(), 1);
    EXPECT_EQ(boxes.texts()[0], L"The report could not be saved.\n\ndisk full");
    EXPECT_TRUE(IsWindowEnabled(item(IDC_RW_CSV)));
}

// The Save dialog as a user answers it: it suggests a file name after the
// period, and the name typed there reaches the model.
struct SaveAnswer {
    std::wstring suggested, typed;
    bool answered = false;
};
SaveAnswer& saveAnswer() {
    static SaveAnswer answer;
    return answer;
}
void CALLBACK answerSaveDialog(HWND, UINT, UINT_PTR id, DWORD) {
    HWND dialog = FindWindowW(L"#32770", L"Save");
    if (!dialog || saveAnswer().answered) return;
    HWND name = GetDlgItem(dialog, 0x47C);  // cmb13, the file name
    if (!name) name = GetDlgItem(dialog, 0x480);
    if (!name) return;
    wchar_t text[MAX_PATH] = {};
    GetWindowTextW(name, text, MAX_PATH);
    saveAnswer().suggested = text;
    SetWindowTextW(name, saveAnswer().typed.c_str());
    saveAnswer().answered = true;
    KillTimer(nullptr, id);
    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
}

TEST_F(ReportWindow, TheExportButtonsAskWhereToSave) {
    open();
    saveAnswer() = {};
    saveAnswer().typed = test::exeFolder() + L"\\report-export.html";
    DeleteFileW(saveAnswer().typed.c_str());
    const UINT_PTR timer = SetTimer(nullptr, 0, 200, &answerSaveDialog);
    click(IDC_RW_HTML);  // back when the dialog has closed
    KillTimer(nullptr, timer);
    settle();
    ASSERT_TRUE(saveAnswer().answered) << "no Save dialog";
    EXPECT_EQ(saveAnswer().suggested, L"Hourbook report 2026-11-01 to 2026-11-30.html");
    ASSERT_EQ(model_.exports.size(), 1u);
    EXPECT_EQ(model_.exports[0].format, ExportFormat::Html);
    EXPECT_EQ(model_.exports[0].path, Str(saveAnswer().typed.begin(), saveAnswer().typed.end()));
}

// The picture in the README: this month by company and person. Wine draws
// a window's frame itself only when its windows are not left to a window
// manager (X11 Driver "Managed" N, read when a process starts), so the
// picture is taken by a second process of this program started with that
// setting.
constexpr wchar_t kShotVariable[] = L"HB_REPORT_SHOT_CHILD";
constexpr wchar_t kX11Key[] = L"Software\\Wine\\X11 Driver";

TEST_F(ReportWindow, SavesAScreenshot) {
    const std::wstring png = test::exeFolder() + L"\\..\\screenshots\\report.png";
    const std::wstring noImport = test::exeFolder() + L"\\report-shot.noimport";
    if (GetEnvironmentVariableW(kShotVariable, nullptr, 0) == 0) {
        wchar_t before[16] = {};
        DWORD size = sizeof before;
        const bool had = RegGetValueW(HKEY_CURRENT_USER, kX11Key, L"Managed", RRF_RT_REG_SZ,
                                      nullptr, before, &size) == ERROR_SUCCESS;
        RegSetKeyValueW(HKEY_CURRENT_USER, kX11Key, L"Managed", REG_SZ, L"N", 4);
        DeleteFileW(png.c_str());
        DeleteFileW(noImport.c_str());
        SetEnvironmentVariableW(kShotVariable, L"1");
        wchar_t self[MAX_PATH] = {};
        GetModuleFileNameW(nullptr, self, MAX_PATH);
        std::string output;
        const DWORD rc = test::runProgram(
            L"\"" + std::wstring(self) + L"\" --gtest_filter=ReportWindow.SavesAScreenshot", 60000,
            &output);
        SetEnvironmentVariableW(kShotVariable, nullptr);
        if (had)
            RegSetKeyValueW(HKEY_CURRENT_USER, kX11Key, L"Managed", REG_SZ, before,
                            static_cast<DWORD>((wcslen(before) + 1) * sizeof(wchar_t)));
        else
            RegDeleteKeyValueW(HKEY_CURRENT_USER, kX11Key, L"Managed");
        if (GetFileAttributesW(noImport.c_str()) != INVALID_FILE_ATTRIBUTES) {
            DeleteFileW(noImport.c_str());
            GTEST_SKIP() << "ImageMagick's import is not installed beside this Wine";
        }
        EXPECT_EQ(rc, 0u) << output;
        EXPECT_GT(test::readFile(png).size(), 1000u) << "no screenshot (ImageMagick's import)";
        return;
    }
    open();
    HWND tree = item(IDC_RW_TREE);
    TreeView_SelectItem(tree, TreeView_GetChild(tree, TreeView_GetRoot(tree)));
    ListView_SetItemState(item(IDC_RW_LIST), 1, LVIS_SELECTED, LVIS_SELECTED);
    SetFocus(item(IDC_RW_LIST));
    RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    pump();
    Sleep(300);
    pump();
    const test::Shot shot = test::importScreenshot(window_, "report", noImport);
    EXPECT_NE(shot, test::Shot::NotDone);
    if (GetFileAttributesW(noImport.c_str()) != INVALID_FILE_ATTRIBUTES)
        GTEST_SKIP() << "ImageMagick's import is not installed beside this Wine";
    EXPECT_GT(test::readFile(png).size(), 1000u) << "no screenshot (ImageMagick's import)";
}

// ---------------------------------------------------------------- under Xvfb

TEST(ReportWindowXvfb, RunsTheWindowTestsUnderAnXServerOfTheirOwn) {
    if (const char* why = test::xvfbRerunUnavailable(kChildVariable)) GTEST_SKIP() << why;
    if (displayReady())
        GTEST_SKIP() << "this process has a display: the ReportWindow tests run in it";
    const test::XvfbRun run = test::rerunUnderXvfb(kChildVariable, "ReportWindow.*",
                                                   test::exeFolder() + L"\\report-xvfb.log");
    std::printf("---- the ReportWindow tests under Xvfb ----\n%s----\n", run.output.c_str());
    // Wine picks a process's display driver by the desktop it starts on: a
    // second process of a prefix whose first one runs without a display may
    // get none (its tests then skip for want of windows).
    if (run.output.find("no X display for Wine's windows") != std::string::npos)
        GTEST_SKIP() << "Wine gave the process under Xvfb no display driver; run the tests "
                        "with a display (HB_WINE_DISPLAY) instead";
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_NE(run.output.find("[  PASSED  ] 11 tests"), std::string::npos);
    EXPECT_EQ(run.output.find("[  SKIPPED ]"), std::string::npos) << "every window test ran";
}

}  // namespace
}  // namespace hb::reportapp
