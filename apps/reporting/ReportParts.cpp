#include "apps/reporting/ReportParts.h"

#include <filesystem>
#include <memory>

#include "reporting/CsvExport.h"
#include "reporting/ExportFormat.h"
#include "reporting/HtmlExport.h"
#include "reporting/AddinCalendar.h"
#include "reporting/RecordStores.h"
#include "reporting/ReportJob.h"
#include "reporting/ReportSession.h"
#include "reporting/XlsxExport.h"
#include "settings/cPersonalSettings.h"
#include "statistics/CubeFile.h"

namespace hb::reporting {

namespace {

std::filesystem::path pathOf(const Str& file) {
    return std::filesystem::path(std::u16string(file));
}

}  // namespace

ReportSteps reportSteps(Session& s, const Str& folder) {
    ReportSteps steps;
    steps.calendar = [&s]() -> std::unique_ptr<CalendarSource> {
        prepareReportSession(s, reachOutlook(s.platform));
        return std::make_unique<AddinCalendar>(s.olApp, s.platform.userLocale());
    };
    steps.store = [&s, folder] {
        if (!folder.empty()) return openRecordStore(kReportChoiceFolder, folder);
        const cPersonalSettings& settings = *s.oPersonalSettings;
        return openRecordStore(settings.lngReportChoice, settings.strReportValue);
    };
    steps.report = [&s](CalendarSource& calendar, RecordStore& store,
                        const ReportOptions& options) {
        // With "create local cube" on, the stored records also go to the
        // cube file in the cube folder, for the statistics away from the database.
        return runReport(s, calendar, store, options,
                         [](const Str& folder, const Str& user, const Period& period,
                            const std::vector<TimeRecord>& records,
                            const std::array<Str, kReportLists>& captions) {
                             statistics::writeCube(statistics::cubeFilePath(folder), user, period,
                                                   records, captions);
                         });
    };
    steps.write = [&s](const Report& report, ExportFormat format, const Str& file) {
        // The list separator Outlook's categories use is the user's, which
        // is also the one a spreadsheet in that locale splits CSV cells at.
        Locale loc = s.platform.userLocale();
        if (!s.strListSeparator.empty()) loc.listSeparator = s.strListSeparator;
        const ExportTexts texts = exportTexts(s.phrases);
        switch (format) {
            case ExportFormat::Csv:
                writeCsv(pathOf(file), report, loc, texts);
                break;
            case ExportFormat::Xlsx:
                writeXlsx(pathOf(file), report, loc, texts);
                break;
            case ExportFormat::Html:
                writeHtml(pathOf(file), report, loc, texts);
                break;
        }
    };
    return steps;
}

ReportStepsModel::ReportStepsModel(ReportSteps steps) : steps_(std::move(steps)) {}

Report ReportStepsModel::run(const ReportOptions& options) {
    // Outlook and the database are reached again for every run, on the
    // thread that runs it: the window's thread never holds their objects.
    const std::unique_ptr<CalendarSource> calendar = steps_.calendar();
    const std::unique_ptr<RecordStore> store = steps_.store();
    return steps_.report(*calendar, *store, options);
}

void ReportStepsModel::exportTo(ExportFormat format, const Str& path, const Report& report) {
    steps_.write(report, format, path);
}

}  // namespace hb::reporting
