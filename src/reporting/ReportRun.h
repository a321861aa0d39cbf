#pragma once
// A report run from the command line, from Outlook to the files asked for,
// and the exit code and messages it ends with. The steps are handed in, so
// that the same road serves the program (Outlook over COM, the real store
// and writers) and the tests (the simulated Outlook, stores that fail).
//
// The order is fixed, and so is which failure gives which exit code:
//   1. calendar  Outlook reached, the session's settings read  (AutomationError: 3)
//   2. store     the record store opened                        (StoreError: 4)
//   3. report    records made, stored and aggregated            (AutomationError: 3, StoreError: 4)
//   4. write     each file asked for, CSV, XLSX, HTML           (any failure: 5)
// A file that cannot be written does not keep the others from being written.
#include <functional>
#include <memory>
#include <vector>

#include "reporting/CalendarSource.h"
#include "reporting/RecordStore.h"
#include "reporting/ReportCommandLine.h"

namespace hb::reporting {

struct ReportSteps {
    std::function<std::unique_ptr<CalendarSource>()> calendar;
    std::function<std::unique_ptr<RecordStore>()> store;
    std::function<Report(CalendarSource&, RecordStore&, const ReportOptions&)> report;
    std::function<void(const Report&, ExportFormat, const Str& file)> write;
};

struct RunOutcome {
    ExitCode code = ExitCode::Ok;
    std::vector<Str> messages;  // for stderr, one line each
};

// Writes each file named (empty: none), CSV, XLSX, HTML, through `write`: a
// file that fails gives ExportFailed and its message, and does not keep the
// others from being written. Never raises.
RunOutcome writeFiles(const Str& csv, const Str& xlsx, const Str& html,
                      const std::function<void(ExportFormat, const Str&)>& write) noexcept;

// Runs the command (mode Report) over the period given; never raises.
RunOutcome runReportCommand(const ReportCommand& command, const Period& period,
                            const ReportSteps& steps) noexcept;

}  // namespace hb::reporting
