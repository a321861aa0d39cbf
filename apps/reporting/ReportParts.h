#pragma once
// The report's parts bound together for HBReporting.exe: Outlook reached
// and the session prepared (ReportSession.h), the calendar read through
// OutlookCalendar, the record store of the user's report choice, the
// report job and the CSV, XLSX and HTML writers. The command line and the
// window both run on these steps.
#include "common/Session.h"
#include "reporting/ReportRun.h"
#include "reporting/ReportView.h"

namespace hb::reporting {

// folder: the report folder given on the command line; it takes the place
// of the settings' report source (an SQLite database in that folder).
ReportSteps reportSteps(Session& s, const Str& folder);

// The report window's model over the same steps.
class ReportStepsModel : public ReportWindowModel {
  public:
    explicit ReportStepsModel(ReportSteps steps);
    Report run(const ReportOptions& options) override;
    void exportTo(ExportFormat format, const Str& path, const Report& report) override;

  private:
    ReportSteps steps_;
};

}  // namespace hb::reporting
