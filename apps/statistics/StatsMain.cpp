// Cubelens.exe: the statistics program the add-in's Statistics button
// starts, with the database folder (report choice 2) or the local cube
// folder. With options (StatsCommandLine.h) it pivots the records without a
// window for scripts, writes the files asked for, says what went wrong on
// stderr and ends with the report program's exit codes. It only ever reads
// the database, the server and the cube.
//
// Started with no option or a folder alone (as the Statistics button starts
// it) it opens the pivot window over the same source.
#include <windows.h>

#include <memory>
#include <vector>

#include "apps/common/CompanionMain.h"
#include "apps/statistics/PivotWindow.h"
#include "languages/modMultiLanguage.h"
#include "platform/win32/ConsolePlatform.h"
#include "platform/win32/ProgramStart.h"
#include "platform/win32/Win32Platform.h"
#include "reporting/ExportFormat.h"
#include "reporting/RecordStores.h"
#include "settings/cPersonalSettings.h"
#include "statistics/StatsRun.h"

namespace {

using hb::Str;
using namespace hb::statistics;

// The program's steps in the session's language: the source's records
// with the lists' captions of the personal settings where the source keeps
// none, and the exports. Reading the settings reaches no Outlook.
StatsSteps programSteps(hb::Session& s, const hb::Locale& loc) {
    try {
        hb::LoadLanguages(s, hb::fncGetlocalLanguage(s));
    } catch (const std::exception&) {
        // English captions then.
    }
    // The personal settings give the server's connection text (report
    // choice 3) and the lists' captions.
    s.oPersonalSettings = std::make_shared<hb::cPersonalSettings>(s);
    const hb::cPersonalSettings& settings = *s.oPersonalSettings;
    const Str connection = settings.lngReportChoice == hb::reporting::kReportChoiceServer
                               ? settings.strReportValue
                               : Str();
    hb::reporting::ExportTexts texts = hb::reporting::exportTexts(s.phrases);
    texts.title = u"Hours statistics";
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
    return steps;
}

hb::Locale sessionLocale(hb::Platform& platform, const hb::Session& s) {
    hb::Locale loc = platform.userLocale();
    if (!s.strListSeparator.empty()) loc.listSeparator = s.strListSeparator;
    return loc;
}

int commandLine(const StatsCommand& command) {
    hb::ConsolePlatform platform;
    hb::Session s(platform);
    const hb::Locale loc = sessionLocale(platform, s);
    const StatsSteps steps = programSteps(s, loc);
    const RunOutcome outcome = runStatsCommand(
        command, statsPeriod(command, hb::localToday(), hb::userFirstWeekday()), steps, loc);
    for (const Str& message : outcome.messages)
        hb::writeErrorLine(message);
    return static_cast<int>(outcome.code);
}

// The window reads and writes through the command line's steps, so both
// read the same source the same way.
class StepsModel : public hb::statsapp::PivotWindowModel {
  public:
    StepsModel(StatsSteps steps, StatsCommand command)
        : steps_(std::move(steps)), command_(std::move(command)) {}
    CubeContent load(const Period& period) override { return steps_.load(command_, period); }
    void exportTo(hb::reporting::ExportFormat format, const Str& path, const CubeContent& data,
                  const PivotTable& table) override {
        steps_.write(data, table, format, path);
    }

  private:
    StatsSteps steps_;
    StatsCommand command_;
};

int window(HINSTANCE instance, const StatsCommand& command, int show) {
    hb::Win32Platform platform;
    hb::Session s(platform);
    const hb::Locale loc = sessionLocale(platform, s);
    StepsModel model(programSteps(s, loc), command);
    hb::statsapp::PivotWindowSetup setup;
    setup.texts = pivotTextsFrom(s.phrases);
    setup.texts.names.title = u"Hours statistics";
    setup.locale = loc;
    setup.today = hb::localToday();
    setup.firstWeekday = hb::userFirstWeekday();
    const int code = hb::statsapp::runPivotWindow(instance, model, setup, show);
    if (code != 0) hb::writeErrorLine(u"Cubelens: the pivot window could not be opened.");
    return code;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int show) {
    SetProcessDPIAware();
    return hb::companionMain(u"Cubelens", parseStatsCommand(hb::programArguments()), statsUsage(),
                             commandLine,
                             [&](const auto& command) { return window(instance, command, show); });
}
