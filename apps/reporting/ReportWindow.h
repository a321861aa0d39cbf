#pragma once
// The report window of HBReporting.exe: the period, the grouping, hours as
// decimal or h:mm, the rounding and "count overlapping time once" at the
// top; the summary tree (subtotals and the grand total) and the detailed
// list below; export buttons and a status line at the bottom. It knows no
// Outlook and no database: a ReportWindowModel runs and writes the report,
// on a worker thread, so that the window answers while the calendar is read.
// What it shows comes from reporting/ReportView; this part only puts it into
// Win32 controls.
#include <windows.h>

#include "reporting/ReportView.h"

namespace hb::reportapp {

struct ReportWindowSetup {
    reporting::ReportTexts texts;
    Locale locale;
    std::array<Str, reporting::kReportLists> listCaptions = {u"Company", u"Person", u"Extra field"};
    reporting::ReportForm form;      // the choices it opens with
    reporting::DayNumber today = 0;  // the local date the periods count from
    bool runAtOnce = true;           // the report of the opening choices comes at once
};

// The controls, by their identifiers (the Windows tests reach them so).
enum ReportControl : int {
    IDC_RW_PERIOD = 1001,
    IDC_RW_FROM,
    IDC_RW_TO,
    IDC_RW_GROUP1,
    IDC_RW_GROUP2,
    IDC_RW_GROUP3,
    IDC_RW_HOURS,
    IDC_RW_ROUNDING,
    IDC_RW_DIRECTION,
    IDC_RW_OVERLAP,
    IDC_RW_RUN,
    IDC_RW_TREE,
    IDC_RW_LIST,
    IDC_RW_CSV,
    IDC_RW_XLSX,
    IDC_RW_HTML,
    IDC_RW_STATUS,
};

// Makes the window (hidden; ShowWindow shows it). The model must outlive
// it. Returns null when the window could not be made.
HWND openReportWindow(HINSTANCE instance, reporting::ReportWindowModel& model,
                      const ReportWindowSetup& setup);

// Opens and shows the window and runs its message loop until it closes.
int runReportWindow(HINSTANCE instance, reporting::ReportWindowModel& model,
                    const ReportWindowSetup& setup, int show);

// Whether the model is at work (a run or an export).
bool reportWindowBusy(HWND window);

// Writes the shown report as the export buttons do after their Save dialog;
// false when there is no report yet or the model is at work.
bool exportShownReport(HWND window, reporting::ExportFormat format, const Str& path);

}  // namespace hb::reportapp
