#include "apps/reporting/ReportParts.h"

#include <memory>

#include "reporting/Exports.h"
#include "reporting/OutlookCalendar.h"
#include "reporting/RecordStores.h"
#include "reporting/ReportJob.h"
#include "reporting/ReportSession.h"
#include "settings/cPersonalSettings.h"

namespace hb::reporting {

namespace {

constexpr std::int32_t kReportChoiceFolder = 2;

}  // namespace

ReportSteps reportSteps(Session& s, const Str& folder) {
    ReportSteps steps;
    steps.calendar = [&s]() -> std::unique_ptr<CalendarSource> {
        prepareReportSession(s, reachOutlook(s.platform));
        return std::make_unique<OutlookCalendar>(s.olApp, s);
    };
    steps.store = [&s, folder] {
        if (!folder.empty()) return openRecordStore(kReportChoiceFolder, folder);
        const cPersonalSettings& settings = *s.oPersonalSettings;
        return openRecordStore(settings.lngReportChoice, settings.strReportValue);
    };
    steps.report = [&s](CalendarSource& calendar, RecordStore& store,
                        const ReportOptions& options) {
        return runReport(s, calendar, store, options);
    };
    steps.write = [&s](const Report& report, ExportFormat format, const Str& file) {
        switch (format) {
            case ExportFormat::Csv:
                writeCsv(report, file, s.strListSeparator);
                break;
            case ExportFormat::Xlsx:
                writeXlsx(report, file);
                break;
            case ExportFormat::Html:
                writeHtml(report, file);
                break;
        }
    };
    return steps;
}

}  // namespace hb::reporting
