#pragma once
// What the report window shows and how its choices become ReportOptions,
// kept apart from the Win32 window so that it is tested natively: the
// choices of its drop-downs, the period of "this week" and the others, the
// rows of the summary tree and of the detailed list, hours as decimal or
// h:mm, and every text in the user's language where the add-in's phrase
// table has one. The window itself (apps/reporting/ReportWindow) only puts
// these into controls.
#include <array>
#include <exception>
#include <optional>
#include <vector>

#include "common/Locale.h"
#include "languages/Phrases.h"
#include "reporting/ExportFormat.h"
#include "reporting/Periods.h"
#include "reporting/ReportTypes.h"

namespace hb::reporting {

// The window's period choices are the named periods and a custom one.
using PeriodChoice = PeriodKind;
inline constexpr std::size_t kPeriodChoices = 6;

inline constexpr std::size_t kExportFormats = 3;

// What the report program gives the window: it runs a report and writes it
// out. The window calls both on a worker thread of its own (which has
// entered COM's multithreaded apartment), one call at a time, so that a long
// reading of the calendar never freezes it; both may raise (AutomationError
// when Outlook is not available, StoreError when the database cannot be
// reached, anything else), and the window shows the failure and stays usable.
class ReportWindowModel {
  public:
    virtual ~ReportWindowModel() = default;
    virtual Report run(const ReportOptions& options) = 0;
    virtual void exportTo(ExportFormat format, const Str& path, const Report& report) = 0;
};

// The levels of the grouping drop-downs offer the three lists (by their
// captions) and the day, week and month; the second and third level may be
// left empty.
inline constexpr std::array<Dimension, 6> kGroupingChoices = {Dimension::List1, Dimension::List2,
                                                              Dimension::List3, Dimension::Day,
                                                              Dimension::Week,  Dimension::Month};
inline constexpr std::array<std::int32_t, 5> kRoundingMinutes = {0, 6, 15, 30, 60};
inline constexpr std::size_t kGroupingLevels = 3;

// What the window's controls hold.
struct ReportForm {
    PeriodChoice period = PeriodChoice::ThisMonth;
    Period custom;  // the two date pickers (Custom)
    std::array<std::optional<Dimension>, kGroupingLevels> grouping = {
        Dimension::List1, Dimension::List2, std::nullopt};
    HoursFormat hoursFormat = HoursFormat::Decimal;
    Rounding rounding;
    bool overlapOnce = false;
};

// Every text of the window: English, replaced by the phrase table's where
// it has the phrase.
struct ReportTexts {
    Str caption = u"Hourbook for Outlook report";
    Str period = u"Period";
    std::array<Str, kPeriodChoices> periods = {u"This week",  u"Last week", u"This month",
                                               u"Last month", u"This year", u"Custom"};
    Str from = u"From";
    Str to = u"To";
    Str groupBy = u"Group by";
    Str none = u"(none)";
    Str day = u"Day";
    Str week = u"Week";
    Str month = u"Month";
    Str year = u"Year";
    Str user = u"User";
    Str hours = u"Hours";
    Str decimal = u"Decimal";
    Str hoursMinutes = u"h:mm";
    Str rounding = u"Rounding";
    Str noRounding = u"None";
    Str minutes = u"min";
    std::array<Str, 3> directions = {u"Up", u"Nearest", u"Down"};  // RoundingDirection order
    Str overlapOnce = u"Count overlapping time once";
    Str run = u"Run";
    std::array<Str, kExportFormats> exports = {u"Export CSV...", u"Export XLSX...",
                                               u"Export HTML..."};
    Str summary = u"Summary";
    Str details = u"Details";
    Str total = u"Total";
    Str notBilled = u"(not billed)";
    Str date = u"Date";
    Str start = u"Start";
    Str end = u"End";
    Str subject = u"Subject";
    Str roundedHours = u"Rounded hours";
    Str amount = u"Amount";
    Str rounded = u"rounded";
    Str record = u"record";
    Str records = u"records";
    Str working = u"Reading the calendar...";
    Str exporting = u"Exporting...";
    Str exported = u"Saved";
    Str noRecords = u"No appointments found.";
    Str ready = u"Ready";
    Str save = u"Save";
    Str runFailed = u"The report could not be made.";
    Str exportFailed = u"The report could not be saved.";
    Str endBeforeStart = u"The end date lies before the start date.";
    std::array<Str, kExportFormats> fileTypes = {u"CSV (comma separated values)", u"Excel workbook",
                                                 u"Web page"};
};

ReportTexts reportTextsFrom(const Phrases& p);

// --- the form ---------------------------------------------------------------

// The period a choice stands for on the day `today` (weeks from Monday to
// Sunday); Custom gives the form's custom range as it is.
Period periodOf(PeriodChoice choice, DayNumber today, const Period& custom);

// Why the form cannot run (the custom end before its start), or nullopt.
std::optional<Str> formProblem(const ReportForm& form, const ReportTexts& t);

// The options of a form: the chosen levels in order, empty levels and a
// level repeating an earlier one left out.
ReportOptions optionsFrom(const ReportForm& form, DayNumber today);

// The caption of a grouping level's choice.
Str dimensionCaption(Dimension d, const std::array<Str, kReportLists>& listCaptions,
                     const ReportTexts& t);
// The drop-down texts of the rounding steps ("None", "6 min", ...).
std::vector<Str> roundingChoices(const ReportTexts& t);

// --- texts of values ----------------------------------------------------------

// --- what the controls show ---------------------------------------------------

// One node of the summary tree as the tree control shows it: its text
// ("Acme: 7.50 h, rounded 7.75 h, 775.00") and its children.
struct TreeRow {
    Str text;
    std::vector<TreeRow> children;
};

// The summary tree: the grand total at the root ("Total: ..."), a group
// without a value labelled as not billed.
TreeRow summaryTree(const Report& report, HoursFormat format, const ReportTexts& t,
                    const Locale& loc);

struct ListColumn {
    Str caption;
    bool number = false;  // right-aligned
};
// The detailed list's columns: date, start, end, subject, the three lists,
// hours, rounded hours, amount.
std::vector<ListColumn> listColumns(const Report& report, const ReportTexts& t);
// Its rows, one per record, in the report's order.
std::vector<std::vector<Str>> listRows(const Report& report, HoursFormat format, const Locale& loc);

// The order of the records when the list is sorted by one of its columns
// (listColumns' order): dates and times by their value, texts ignoring
// letter case, numbers by their value; equal rows keep the report's order.
std::vector<std::size_t> sortedOrder(const Report& report, std::size_t column, bool ascending);

// Rows as text for the clipboard: the captions, then each row, cells
// separated by tabs, lines by CR LF (as spreadsheets paste them); a tab or
// line break inside a cell becomes a blank.
Str tabSeparated(const std::vector<ListColumn>& columns, const std::vector<std::vector<Str>>& rows);

// The status line after a run ("12 records, 21.50 h" or "No appointments
// found.").
Str statusText(const Report& report, HoursFormat format, const ReportTexts& t, const Locale& loc);

// The message for a failure of the model, for a message box: what failed
// (`what`, e.g. runFailed) and why (the error's own description).
Str failureText(const Str& what, const std::exception_ptr& failure);

// The Save dialog's file name suggestion ("Hourbook report 2026-11-01 to
// 2026-11-30.csv"), its extension ("csv") and filter text.
Str exportFileName(ExportFormat format, const Period& period);
Str exportExtension(ExportFormat format);

}  // namespace hb::reporting
