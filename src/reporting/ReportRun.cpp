#include "reporting/ReportRun.h"

#include <exception>

#include "common/AutomationError.h"

namespace hb::reporting {

namespace {

Str textOf(const std::exception& e) {
    return fromUtf8(e.what());
}

// The message and exit code of the exception being handled.
RunOutcome failure(const Str& doing) {
    try {
        throw;
    } catch (const AutomationError& e) {
        return {ExitCode::OutlookUnavailable,
                {u"Outlook is not available (" + doing + u"): error " +
                 fromUtf8(std::to_string(e.number())) + u", " + e.description()}};
    } catch (const StoreError& e) {
        return {ExitCode::DatabaseUnreachable,
                {u"The database cannot be used (" + doing + u"): " + textOf(e)}};
    } catch (const std::exception& e) {
        return {ExitCode::Failed, {u"The report failed (" + doing + u"): " + textOf(e)}};
    } catch (...) {
        return {ExitCode::Failed, {u"The report failed (" + doing + u")"}};
    }
}

}  // namespace

RunOutcome runReportCommand(const ReportCommand& command, const Period& period,
                            const ReportSteps& steps) noexcept {
    std::unique_ptr<CalendarSource> calendar;
    std::unique_ptr<RecordStore> store;
    Report report;
    try {
        calendar = steps.calendar();
    } catch (...) {
        return failure(u"reaching Outlook");
    }
    try {
        store = steps.store();
    } catch (...) {
        return failure(u"opening the database");
    }
    try {
        ReportOptions options = command.options;
        options.period = period;
        report = steps.report(*calendar, *store, options);
    } catch (...) {
        return failure(u"making the report");
    }
    return writeFiles(
        command.csv, command.xlsx, command.html,
        [&](ExportFormat format, const Str& file) { steps.write(report, format, file); });
}

RunOutcome writeFiles(const Str& csv, const Str& xlsx, const Str& html,
                      const std::function<void(ExportFormat, const Str&)>& write) noexcept {
    RunOutcome outcome;
    const std::pair<ExportFormat, const Str*> files[] = {
        {ExportFormat::Csv, &csv},
        {ExportFormat::Xlsx, &xlsx},
        {ExportFormat::Html, &html},
    };
    for (const auto& [format, file] : files) {
        if (file->empty()) continue;
        try {
            write(format, *file);
        } catch (const std::exception& e) {
            outcome.code = ExitCode::ExportFailed;
            outcome.messages.push_back(u"Could not write " + *file + u": " + textOf(e));
        } catch (...) {
            outcome.code = ExitCode::ExportFailed;
            outcome.messages.push_back(u"Could not write " + *file);
        }
    }
    return outcome;
}

}  // namespace hb::reporting
