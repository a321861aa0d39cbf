// HBReporting.exe: the report program the add-in's Report button starts.
// Without arguments, or with only a folder, it opens the report window; with
// options (ReportCommandLine.h) it runs the report for scripts and
// schedulers without a window, writes the files asked for, says what went
// wrong on stderr and ends with the exit code of ReportCommandLine.h.
//
// It reaches Outlook as any other program does (the running
// Outlook.Application, else a new one) and never writes to the mailbox.
#include <windows.h>

#include <array>
#include <vector>

#include "apps/common/CompanionMain.h"
#include "apps/reporting/ReportParts.h"
#include "apps/reporting/ReportWindow.h"
#include "common/DateTime.h"
#include "languages/modMultiLanguage.h"
#include "platform/win32/ConsolePlatform.h"
#include "platform/win32/ProgramStart.h"
#include "platform/win32/Win32Platform.h"
#include "reporting/ReportCommandLine.h"
#include "settings/modRegistryEntry.h"

namespace {

using hb::Str;
using namespace hb::reporting;

DayNumber today() {
    return hb::localToday();
}

int firstWeekday() {
    return hb::userFirstWeekday();
}

// COM for the program's thread; Outlook's objects are let go before it ends.
class Apartment {
  public:
    Apartment() : ok_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
    ~Apartment() {
        if (ok_) CoUninitialize();
    }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    bool ok() const { return ok_; }

  private:
    bool ok_;
};

int commandLine(const ReportCommand& command) {
    Apartment apartment;
    if (!apartment.ok()) {
        hb::writeErrorLine(u"COM could not be started: Outlook is not available.");
        return static_cast<int>(ExitCode::OutlookUnavailable);
    }
    RunOutcome outcome;
    {
        hb::ConsolePlatform platform;
        hb::Session s(platform);
        const ReportSteps steps = reportSteps(s, command.folder);
        outcome = runReportCommand(command, resolvePeriod(command, today(), firstWeekday()), steps);
    }
    for (const Str& message : outcome.messages)
        hb::writeErrorLine(message);
    return static_cast<int>(outcome.code);
}

// The captions of the user's first three lists, from the registry's list
// text ("Company:Acme;...\r\n" lines); the window opens before Outlook is
// reached, and lists not stored yet keep the usual captions.
std::array<Str, kReportLists> listCaptions(hb::Platform& platform) {
    std::array<Str, kReportLists> captions = {u"Company", u"Person", u"Extra field"};
    Str lists;
    try {
        lists = hb::GetSettingString(platform, u"Settings", u"MetadataList", Str());
    } catch (const std::exception&) {
        return captions;
    }
    std::size_t index = 0, from = 0;
    while (index < kReportLists && from < lists.size()) {
        std::size_t end = lists.find(u"\r\n", from);
        if (end == Str::npos) end = lists.size();
        const Str line = lists.substr(from, end - from);
        if (const std::size_t colon = line.find(u':'); colon != Str::npos && colon > 0)
            captions[index++] = line.substr(0, colon);
        from = end + 2;
    }
    return captions;
}

int window(HINSTANCE instance, const ReportCommand& command, int show) {
    Apartment apartment;
    hb::Win32Platform platform;
    hb::Session s(platform);
    hb::LoadLanguages(s, hb::fncGetlocalLanguage(s));
    hb::reportapp::ReportWindowSetup setup;
    setup.texts = reportTextsFrom(s.phrases);
    setup.locale = platform.userLocale();
    setup.listCaptions = listCaptions(platform);
    setup.today = today();
    ReportStepsModel model(reportSteps(s, command.folder));
    return hb::reportapp::runReportWindow(instance, model, setup, show);
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int show) {
    SetProcessDPIAware();
    return hb::companionMain(u"HBReporting", parseReportCommand(hb::programArguments()),
                             reportUsage(), commandLine,
                             [&](const auto& command) { return window(instance, command, show); });
}
