// Cubelens.exe: the statistics program the add-in's Statistics button
// starts, with the database folder (report choice 2) or the local cube
// folder. With options (StatsCommandLine.h) it pivots the records without a
// window for scripts, writes the files asked for, says what went wrong on
// stderr and ends with the report program's exit codes. It only ever reads
// the database, the server and the cube.
//
// The pivot window is not built yet: started with a folder alone, the
// program says so and ends with exit code 1.
#include <windows.h>

#include <memory>
#include <vector>

#include "languages/modMultiLanguage.h"
#include "platform/win32/ConsolePlatform.h"
#include "platform/win32/ProgramStart.h"
#include "reporting/ExportFormat.h"
#include "reporting/RecordStores.h"
#include "settings/cPersonalSettings.h"
#include "statistics/StatsRun.h"

namespace {

using hb::Str;
using namespace hb::statistics;

int commandLine(const StatsCommand& command) {
    hb::ConsolePlatform platform;
    hb::Session s(platform);
    try {
        hb::LoadLanguages(s, hb::fncGetlocalLanguage(s));
    } catch (const std::exception&) {
        // English captions then.
    }
    // The personal settings give the server's connection text (report
    // choice 3) and the lists' captions; reading them reaches no Outlook.
    s.oPersonalSettings = std::make_shared<hb::cPersonalSettings>(s);
    const hb::cPersonalSettings& settings = *s.oPersonalSettings;
    const Str connection = settings.lngReportChoice == hb::reporting::kReportChoiceServer
                               ? settings.strReportValue
                               : Str();
    hb::reporting::ExportTexts texts = hb::reporting::exportTexts(s.phrases);
    texts.title = u"Hours statistics";
    hb::Locale loc = platform.userLocale();
    if (!s.strListSeparator.empty()) loc.listSeparator = s.strListSeparator;

    StatsSteps steps = statsSteps(connection, loc, texts);
    std::array<Str, kReportLists> captions;
    for (std::size_t i = 0; i < kReportLists && i < settings.MetaDataLists.size(); ++i)
        if (settings.MetaDataLists[i]) captions[i] = settings.MetaDataLists[i]->Caption;
    steps.load = [load = steps.load, captions](const StatsCommand& c, const Period& p) {
        CubeContent data = load(c, p);
        for (std::size_t i = 0; i < kReportLists; ++i)
            if (data.captions[i].empty()) data.captions[i] = captions[i];
        return data;
    };
    const RunOutcome outcome = runStatsCommand(
        command, statsPeriod(command, hb::localToday(), hb::userFirstWeekday()), steps, loc);
    for (const Str& message : outcome.messages)
        hb::writeErrorLine(message);
    return static_cast<int>(outcome.code);
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
    const std::vector<Str> args = hb::programArguments();

    const ParsedStatsCommand parsed = parseStatsCommand(args);
    if (!parsed.command) {
        hb::writeErrorLine(u"Cubelens: " + parsed.error);
        hb::writeErrorLine(u"Cubelens.exe /? shows the options.");
        return static_cast<int>(ExitCode::BadArguments);
    }
    try {
        switch (parsed.command->mode) {
            case RunMode::Help:
                hb::writeErrorLine(statsUsage());
                return static_cast<int>(ExitCode::Ok);
            case RunMode::Report:
                return commandLine(*parsed.command);
            case RunMode::Window:
                hb::writeErrorLine(
                    u"Cubelens: the pivot window is not built yet; give the files to write "
                    u"(Cubelens.exe /? shows the options).");
                return static_cast<int>(ExitCode::Failed);
        }
    } catch (const std::exception& e) {
        hb::writeErrorLine(u"Cubelens failed: " + hb::fromUtf8(e.what()));
    } catch (...) {
        hb::writeErrorLine(u"Cubelens failed.");
    }
    return static_cast<int>(ExitCode::Failed);
}
