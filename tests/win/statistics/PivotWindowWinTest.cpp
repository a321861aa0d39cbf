// Cubelens's pivot window under Wine over a cube file written here: the
// rows of its list read back through the control (LVM_GETITEMTEXTW), new
// rows when the row or column dimension or the measure changes, totals
// equal to the core's, the records read off the window's thread and only
// again when the period changes, a filter, an export handed to the model,
// the chart's kind switched without reading again, and a screenshot (build/screenshots/pivot.png).
//
// Wine draws windows only with a display (HB_WINE_DISPLAY): without one the
// tests are skipped.
#include <gtest/gtest.h>
#include <windows.h>
// windows.h first.
#include <commctrl.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <tuple>

#include "ComTestSupport.h"
#include "WindowTestSupport.h"
#include "apps/statistics/PivotWindow.h"
#include "common/DateTime.h"
#include "statistics/CubeFile.h"

namespace hb::statsapp {
namespace {

using namespace hb::statistics;
using reporting::ExportFormat;
using reporting::Period;

DayNumber day(int y, int m, int d) {
    return static_cast<DayNumber>(dt::serial(y, m, d));
}

TimeRecord record(Str user, DayNumber d, Str company, Str person, std::int64_t minutes,
                  std::int64_t units) {
    TimeRecord r;
    r.user = std::move(user);
    r.day = d;
    r.values = {std::move(company), std::move(person), u""};
    r.billed = !r.values[0].empty() || !r.values[1].empty();
    r.seconds = minutes * 60;
    r.roundedSeconds = (r.seconds + 899) / 900 * 900;
    r.amount = Currency::fromUnits(units);
    return r;
}

std::wstring tempFolder() {
    wchar_t temp[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, temp);
    std::wstring folder = std::wstring(temp) + L"hb-pivot-window";
    CreateDirectoryW(folder.c_str(), nullptr);
    return folder;
}

// The model as the program's: the cube file's records of the period,
// counting the readings and the thread they ran on.
class CubeModel : public PivotWindowModel {
  public:
    explicit CubeModel(Str file) : file_(std::move(file)) {}
    CubeContent load(const Period& period) override {
        loadThread = GetCurrentThreadId();
        ++loads;
        return readCube(file_, period);
    }
    void exportTo(ExportFormat format, const Str& path, const CubeContent& data,
                  const PivotTable& table) override {
        std::lock_guard<std::mutex> lock(mutex_);
        exports.push_back({format, path, data.records.size(), table.rows.size()});
    }
    struct Export {
        ExportFormat format;
        Str path;
        std::size_t records, rows;
    };
    std::atomic<int> loads{0};
    std::atomic<DWORD> loadThread{0};
    std::vector<Export> exports;

  private:
    Str file_;
    std::mutex mutex_;
};

bool displayReady() {
    static const bool ready = test::windowsPossible(L"HB_PIVOT_WINDOW_CHILD", L"HBPivotTest");
    return ready;
}

class PivotWindowTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        const std::wstring folder = tempFolder();
        file_ = cubeFilePath(Str(folder.begin(), folder.end()));
        DeleteFileW(reinterpret_cast<const wchar_t*>(file_.c_str()));
        records_ = {record(u"ann", day(2026, 10, 30), u"Acme", u"Ann", 180, 300),
                    record(u"ann", day(2026, 11, 2), u"Acme", u"Bob", 90, 150),
                    record(u"ann", day(2026, 11, 2), u"Globex", u"Bob", 240, 400),
                    record(u"ann", day(2026, 11, 3), u"", u"", 45, 0)};
        std::vector<TimeRecord> bob = {record(u"bob", day(2026, 11, 4), u"Acme", u"Cleo", 60, 100)};
        writeCube(file_, u"ann", {day(2026, 10, 1), day(2026, 11, 30)}, records_,
                  {u"Company", u"Person", u"Project"});
        writeCube(file_, u"bob", {day(2026, 10, 1), day(2026, 11, 30)}, bob, {});
        records_.push_back(bob[0]);
    }
    void SetUp() override {
        if (!displayReady()) GTEST_SKIP() << "no X display for Wine's windows (HB_WINE_DISPLAY)";
        setup_.today = day(2026, 11, 25);
        setup_.locale.decimalSeparator = Str(1, u'.');
    }
    void TearDown() override {
        if (window_ && IsWindow(window_)) DestroyWindow(window_);
        pump();
    }

    void open() {
        window_ = openPivotWindow(GetModuleHandleW(nullptr), model_, setup_);
        ASSERT_NE(window_, nullptr);
        SetWindowPos(window_, HWND_TOP, 0, 0, 1100, 660, SWP_SHOWWINDOW);
        settle();
    }
    void pump() { test::pumpMessages(); }
    void settle() {
        ASSERT_TRUE(test::settleWhile([this] { return pivotWindowBusy(window_); }))
            << "the model's work did not end";
    }
    HWND item(int id) { return GetDlgItem(window_, id); }
    void choose(int id, int index) {
        test::chooseInCombo(window_, id, index);
        settle();
    }
    std::wstring status() { return test::statusBarText(item(IDC_PW_STATUS)); }
    // The list's rows, cells joined by "|".
    std::vector<std::wstring> rows() {
        HWND list = item(IDC_PW_LIST);
        const int columns = Header_GetItemCount(ListView_GetHeader(list));
        std::vector<std::wstring> out;
        for (int r = 0; r < ListView_GetItemCount(list); ++r) {
            std::wstring line;
            for (int c = 0; c < columns; ++c) {
                wchar_t text[256] = {};
                ListView_GetItemText(list, r, c, text, 256);
                if (c) line += L'|';
                line += text;
            }
            out.push_back(line);
        }
        return out;
    }
    // What the core makes of the records of the form's period: the grid's lines.
    std::vector<std::wstring> expected(const PivotForm& form) {
        const Period period = periodFrom(form, setup_.today, setup_.firstWeekday);
        std::vector<TimeRecord> chosen;
        for (const TimeRecord& r : records_)
            if (period.empty() || period.contains(r.day)) chosen.push_back(r);
        const PivotTable table = pivot(chosen, specFrom(form), setup_.locale);
        std::vector<std::wstring> out;
        for (const PivotGridRow& row :
             pivotGrid(table, {u"Company", u"Person", u"Project"}, PivotTexts{}, setup_.locale)
                 .rows) {
            std::wstring line;
            for (std::size_t c = 0; c < row.cells.size(); ++c) {
                if (c) line += L'|';
                line.append(row.cells[c].begin(), row.cells[c].end());
            }
            out.push_back(line);
        }
        return out;
    }

    static Str file_;
    static std::vector<TimeRecord> records_;
    CubeModel model_{file_};
    PivotWindowSetup setup_;
    HWND window_ = nullptr;
};

Str PivotWindowTest::file_;
std::vector<TimeRecord> PivotWindowTest::records_;

TEST_F(PivotWindowTest, OpensWithThePivotOfTheCubeOffTheWindowsThread) {
    open();
    EXPECT_EQ(model_.loads, 1);
    EXPECT_NE(model_.loadThread, GetCurrentThreadId());
    const std::vector<std::wstring> shown = rows();
    EXPECT_EQ(shown, expected(PivotForm{}));
    ASSERT_FALSE(shown.empty());
    // Company by month, the grand total row last: 10.25 h in all.
    EXPECT_EQ(shown.back(), L"Total|3.00|7.25|10.25");
    EXPECT_EQ(status(), L"5 records, Hours 10.25");
    EXPECT_TRUE(IsWindowEnabled(item(IDC_PW_CSV)));
    EXPECT_FALSE(IsWindowVisible(item(IDC_PW_PROGRESS)));
}

// Each change of a choice gives the core's table of the new choices; only
// a new period reads the records again.
TEST_F(PivotWindowTest, ChoicesChangeTheRows) {
    open();
    struct Step {
        const char* name;
        int control, index;
        PivotForm form;
        int loads;
        const wchar_t* lastRow;
    };
    PivotForm byUser;
    byUser.rows[0] = Dimension::User;
    PivotForm userPerson = byUser;
    userPerson.rows[1] = Dimension::List2;
    PivotForm noColumn = userPerson;
    noColumn.column.reset();
    PivotForm amount = noColumn;
    amount.measure = Measure::Amount;
    PivotForm thisMonth = amount;
    thisMonth.period = 3;
    const Step steps[] = {
        {"rows by user", IDC_PW_ROWS1, 3, byUser, 1, L"Total|3.00|7.25|10.25"},
        {"and person", IDC_PW_ROWS2, 2, userPerson, 1, L"Total||3.00|7.25|10.25"},
        {"no column", IDC_PW_COLUMN, 0, noColumn, 1, L"Total||10.25"},
        {"amount", IDC_PW_MEASURE, 2, amount, 1, L"Total||950.00"},
        {"this month", IDC_PW_PERIOD, 3, thisMonth, 2, L"Total||650.00"},
    };
    std::vector<std::wstring> before = rows();
    for (const Step& s : steps) {
        SCOPED_TRACE(s.name);
        choose(s.control, s.index);
        const std::vector<std::wstring> now = rows();
        EXPECT_NE(now, before);
        EXPECT_EQ(now, expected(s.form));
        ASSERT_FALSE(now.empty());
        EXPECT_EQ(now.back(), s.lastRow);
        EXPECT_EQ(model_.loads, s.loads);
        before = now;
    }
}

TEST_F(PivotWindowTest, FilterAndExport) {
    open();
    SendMessageW(item(IDC_PW_FILTERDIM), CB_SETCURSEL, 4, 0);  // (none), then User
    SetWindowTextW(item(IDC_PW_FILTERVALUE), L"BOB");
    SendMessageW(item(IDC_PW_APPLY), BM_CLICK, 0, 0);
    settle();
    EXPECT_EQ(status(), L"1 record, Hours 1.00");
    EXPECT_EQ(rows().back(), L"Total|1.00|1.00");

    ASSERT_TRUE(exportShownPivot(window_, ExportFormat::Xlsx, u"C:\\out.xlsx"));
    settle();
    ASSERT_EQ(model_.exports.size(), 1u);
    EXPECT_EQ(model_.exports[0].format, ExportFormat::Xlsx);
    EXPECT_EQ(model_.exports[0].path, u"C:\\out.xlsx");
    EXPECT_EQ(model_.exports[0].rows, 2u);  // Acme and the total
    EXPECT_NE(status().find(L"C:\\out.xlsx"), std::wstring::npos);
}

// The chart drop-down: each kind gives the core's chart of the shown
// pivot, drawn anew without reading the records or pivoting again; a new
// pivot keeps the kind.
TEST_F(PivotWindowTest, ChartKindSwitchesWithoutReading) {
    open();
    const PivotTable table = pivot(records_, specFrom(PivotForm{}), setup_.locale);
    const std::vector<std::wstring> shownRows = rows();
    // Bars over time by month; shares of Acme, Globex and not billed.
    for (const auto& [index, bars, slices] :
         {std::tuple{-1, 2u, 0u}, std::tuple{1, 0u, 3u}, std::tuple{0, 2u, 0u}}) {
        SCOPED_TRACE(index);
        if (index >= 0) choose(IDC_PW_CHARTKIND, index);
        const PivotChart shown = shownPivotChart(window_);
        const PivotChart core =
            pivotChart(table, index == 1 ? ChartKind::Shares : ChartKind::BarsOverTime,
                       PivotTexts{}, setup_.locale);
        EXPECT_EQ(shown.kind, core.kind);
        ASSERT_EQ(shown.bars.size(), bars);
        ASSERT_EQ(shown.slices.size(), slices);
        for (std::size_t b = 0; b < bars; ++b)
            EXPECT_EQ(shown.bars[b].parts, core.bars[b].parts);
        for (std::size_t i = 0; i < slices; ++i)
            EXPECT_EQ(shown.slices[i].legend, core.slices[i].legend);
        EXPECT_EQ(model_.loads, 1);
        EXPECT_EQ(rows(), shownRows);
    }
    choose(IDC_PW_CHARTKIND, 1);
    choose(IDC_PW_MEASURE, 2);
    const PivotChart amounts = shownPivotChart(window_);
    // 550.00 of 950.00; the not billed group's amount is zero, left out.
    ASSERT_EQ(amounts.slices.size(), 2u);
    EXPECT_EQ(amounts.slices[0].legend, u"Acme 57.9%");
    EXPECT_EQ(amounts.slices[1].legend, u"Globex 42.1%");
}

// The picture in the README: company and person by month.
TEST_F(PivotWindowTest, SavesAScreenshot) {
    setup_.form.rows = {Dimension::List1, Dimension::List2};
    open();
    RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    pump();
    Sleep(300);
    pump();
    const std::wstring missing = test::exeFolder() + L"\\pivot-shot.noimport";
    const std::wstring png = test::exeFolder() + L"\\..\\screenshots\\pivot.png";
    DeleteFileW(png.c_str());
    const test::Shot shot = test::importScreenshot(window_, "pivot", missing);
    EXPECT_NE(shot, test::Shot::NotDone);
    if (shot == test::Shot::NoImport)
        GTEST_SKIP() << "ImageMagick's import is not installed beside this Wine";
    EXPECT_GT(test::readFile(png).size(), 1000u) << "no screenshot (ImageMagick's import)";
}

}  // namespace
}  // namespace hb::statsapp
