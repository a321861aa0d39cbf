#pragma once
// A statistics run from the command line: the records read, the pivot
// made, the files asked for written, and the exit code and messages it
// ends with. The steps are handed in, so that the program and the tests
// share the road.
//   1. load   the records of the period from the source   (StoreError: 4)
//   2. pivot  the table                                     (PivotError: 2)
//   3. write  each file asked for, CSV, XLSX, HTML          (any failure: 5)
// A file that cannot be written does not keep the others from being written.
#include <functional>
#include <vector>

#include "reporting/ExportFormat.h"
#include "reporting/ReportRun.h"
#include "statistics/StatsCommandLine.h"

namespace hb::statistics {

using reporting::RunOutcome;

struct StatsSteps {
    std::function<CubeContent(const StatsCommand&, const Period&)> load;
    std::function<void(const CubeContent&, const PivotTable&, reporting::ExportFormat,
                       const Str& file)>
        write;
};

// The steps of the program: the source as the command says (the server's
// connection text given), the exports in the locale with the texts.
StatsSteps statsSteps(const Str& connection, const Locale& loc,
                      const reporting::ExportTexts& texts);

// Runs the command (mode Report) over the period; never raises.
RunOutcome runStatsCommand(const StatsCommand& command, const Period& period,
                           const StatsSteps& steps, const Locale& loc) noexcept;

}  // namespace hb::statistics
