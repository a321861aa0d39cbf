#pragma once
// The pivot window of Cubelens.exe: the row dimensions, the column
// dimension, the measure and the period in drop-downs, a filter (dimension
// and value), the pivot in a list with subtotal and total rows, a chart of
// it beside (stacked bars over time or a pie of shares, by a drop-down), export buttons and a
// status line. It knows no database: a PivotWindowModel reads the records and writes the files, on
// a worker thread, so that the window answers while a large cube is read;
// a marquee bar runs meanwhile. What it shows comes from
// statistics/PivotView; this part only puts it into Win32 controls.
#include <windows.h>

#include "statistics/PivotView.h"

namespace hb::statsapp {

// What the program gives the window. Both are called on the window's
// worker thread, one call at a time, and may raise (StoreError when the
// source cannot be read, anything else): the window shows the failure and
// stays usable. Neither may write to the source.
class PivotWindowModel {
  public:
    virtual ~PivotWindowModel() = default;
    // The records of the period (an empty period: all) and the lists' captions.
    virtual statistics::CubeContent load(const reporting::Period& period) = 0;
    virtual void exportTo(reporting::ExportFormat format, const Str& path,
                          const statistics::CubeContent& data,
                          const statistics::PivotTable& table) = 0;
};

struct PivotWindowSetup {
    statistics::PivotTexts texts;
    Locale locale;
    // Used where the records' source keeps no captions.
    statistics::ListCaptions listCaptions = {u"Company", u"Person", u"Extra field"};
    statistics::PivotForm form;      // the choices it opens with
    reporting::DayNumber today = 0;  // the local date the periods count from
    int firstWeekday = 0;
};

// The controls, by their identifiers (the Windows tests reach them so).
enum PivotControl : int {
    IDC_PW_ROWS1 = 1101,
    IDC_PW_ROWS2,
    IDC_PW_COLUMN,
    IDC_PW_MEASURE,
    IDC_PW_PERIOD,
    IDC_PW_FILTERDIM,
    IDC_PW_FILTERVALUE,
    IDC_PW_APPLY,
    IDC_PW_LIST,
    IDC_PW_CHART,
    IDC_PW_PROGRESS,
    IDC_PW_CSV,
    IDC_PW_XLSX,
    IDC_PW_HTML,
    IDC_PW_STATUS,
    IDC_PW_CHARTKIND,  // bars over time or shares (kPivotChartKinds' order)
};

// The window's class name (the stand-in waits for it).
inline constexpr wchar_t kPivotWindowClass[] = L"HourbookPivotWindow";

// Makes the window (hidden; ShowWindow shows it) and starts reading the
// records of its opening choices. The model must outlive it. Returns null
// when the window could not be made.
HWND openPivotWindow(HINSTANCE instance, PivotWindowModel& model, const PivotWindowSetup& setup);

// Opens and shows the window and runs its message loop until it closes.
int runPivotWindow(HINSTANCE instance, PivotWindowModel& model, const PivotWindowSetup& setup,
                   int show);

// Whether the model is at work (reading or exporting).
bool pivotWindowBusy(HWND window);

// The chart as it is drawn now (empty before the first pivot).
statistics::PivotChart shownPivotChart(HWND window);

// Writes the shown pivot as the export buttons do after their Save dialog;
// false when there is none yet or the model is at work.
bool exportShownPivot(HWND window, reporting::ExportFormat format, const Str& path);

}  // namespace hb::statsapp
