#include "statistics/StatsRun.h"

#include <exception>

#include "statistics/PivotExport.h"

namespace hb::statistics {

namespace {

using reporting::ExportFormat;

std::filesystem::path pathOf(const Str& file) {
    return std::filesystem::path(std::u16string(file));
}

}  // namespace

StatsSteps statsSteps(const Str& connection, const Locale& loc,
                      const reporting::ExportTexts& texts) {
    StatsSteps steps;
    steps.load = [connection](const StatsCommand& command, const Period& period) {
        return loadStatistics(command.source, command.folder, connection, period);
    };
    steps.write = [loc, texts](const CubeContent& data, const PivotTable& table,
                               ExportFormat format, const Str& file) {
        switch (format) {
            case ExportFormat::Csv:
                writePivotCsv(pathOf(file), table, data.captions, loc, texts);
                break;
            case ExportFormat::Xlsx:
                writePivotXlsx(pathOf(file), table, data.captions, texts);
                break;
            case ExportFormat::Html:
                writePivotHtml(pathOf(file), data, table.request, texts);
                break;
        }
    };
    return steps;
}

RunOutcome runStatsCommand(const StatsCommand& command, const Period& period,
                           const StatsSteps& steps, const Locale& loc) noexcept {
    CubeContent data;
    try {
        data = steps.load(command, period);
    } catch (const std::exception& e) {
        const bool store = dynamic_cast<const reporting::StoreError*>(&e) != nullptr;
        return {store ? ExitCode::DatabaseUnreachable : ExitCode::Failed,
                {u"The records cannot be read: " + fromUtf8(e.what())}};
    } catch (...) {
        return {ExitCode::Failed, {u"The records cannot be read"}};
    }
    PivotTable table;
    try {
        table = pivot(data.records, command.request, loc);
    } catch (const PivotError& e) {
        return {ExitCode::BadArguments, {u"The pivot cannot be made: " + fromUtf8(e.what())}};
    } catch (const std::exception& e) {
        return {ExitCode::Failed, {u"The pivot cannot be made: " + fromUtf8(e.what())}};
    }
    return reporting::writeFiles(
        command.csv, command.xlsx, command.html,
        [&](ExportFormat format, const Str& file) { steps.write(data, table, format, file); });
}

}  // namespace hb::statistics
