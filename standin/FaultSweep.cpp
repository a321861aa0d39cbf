#include "standin/FaultSweep.h"

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/Text.h"
#include "sim/Instruments.h"
#include "sim/Scenario.h"
#include "standin/HostSetup.h"
#include "standin/LoadedAddins.h"
#include "win/com/ComVariant.h"

namespace standin {

namespace {

struct RunResult {
    std::uint64_t calls = 0;  // object-model calls the add-in made in the phase
    std::optional<sim::CallRecord> fault;
    int boxes = 0;
    std::vector<std::string> broken;  // the rules this run broke
};

std::string utf8(const hb::Str& s) {
    return hb::toUtf8(s);
}

std::string utf8(const std::wstring& s) {
    return hb::toUtf8(hb::com::fromWide(s.data(), s.size()));
}

// What a crash report names: the run under way.
char g_current[160] = "the reference run";

LONG WINAPI reportCrash(EXCEPTION_POINTERS* e) {
    std::printf("CRASH (exception 0x%08lX) in %s\n",
                static_cast<unsigned long>(e->ExceptionRecord->ExceptionCode), g_current);
    std::fflush(stdout);
    return EXCEPTION_EXECUTE_HANDLER;
}

// One load of the add-in through one phase, the call numbered failAt (from
// the phase's first call; 0: none) failing.
RunResult runOnce(SweepPhase phase, int version, std::uint64_t failAt) {
    RunResult r;
    MessageBoxCounter::reset();
    {
        sim::Scenario sc;
        furnishOutlook(sc.outlook(), version);
        sim::Instruments& calls = sc.instruments();
        calls.setLogging(false);
        auto addins = std::make_shared<LoadedAddins>();
        {
            RunningOutlook running(sc);
            addins->load();
            if (addins->empty())
                r.broken.push_back("no add-in was created");
            else if (!MessageBoxCounter::attach(GetModuleHandleW(L"HBAddin.dll")))
                r.broken.push_back("its message boxes could not be counted");
            if (phase == SweepPhase::Startup && failAt) calls.failCall(failAt);
            sc.startOutlook(addins->empty() ? nullptr : addins, sim::ol::FolderCalendar);
            if (phase == SweepPhase::Selection) {
                calls.resetCounts();
                if (failAt) calls.failCall(failAt);
                if (auto explorer = sc.explorer())
                    sc.select(explorer, {sc.outlook().calendar()->findBySubject(u"Client call")});
            }
            r.calls = calls.callCount();
            r.fault = calls.lastFault();
            // From Outlook 14 on the selection is shown by the ribbon's
            // callbacks: none may fail into Office.
            if (const sim::Ribbon* ribbon = sc.ribbon(); ribbon && ribbon->callbackErrors)
                r.broken.push_back(std::to_string(ribbon->callbackErrors) +
                                   " ribbon callbacks failed into Office");
            sc.quit();
            addins->release();
        }
        if (!addins->failures().empty()) {
            // The next load must find the add-in enabled again.
            DWORD three = 3;
            for (const auto& f : addins->failures()) {
                r.broken.push_back(utf8(f.what));
                if (f.progId == L"HBAddin.Connect")
                    RegSetKeyValueW(f.hive, (std::wstring(kAddinsKey) + L"\\" + f.progId).c_str(),
                                    L"LoadBehavior", REG_DWORD, &three, sizeof three);
            }
        }
        for (const hb::Str& e : sc.addinErrors)
            r.broken.push_back("connection failed: " + utf8(e));
        const Census census = takeCensus(sc);
        if (!census.empty()) {
            r.broken.push_back("still held after shutdown: " + std::to_string(census.objects) +
                               " objects, " + std::to_string(census.connections) + " connections");
            for (const hb::Str& line : census.held)
                r.broken.push_back("   held: " + utf8(line));
        }
    }
    if (addinCanUnloadNow() != S_OK) r.broken.push_back("DllCanUnloadNow S_FALSE");
    CoFreeUnusedLibraries();
    if (GetModuleHandleW(L"HBAddin.dll")) r.broken.push_back("HBAddin.dll still loaded");
    r.boxes = MessageBoxCounter::count();
    if (r.boxes > 1) {
        r.broken.push_back(std::to_string(r.boxes) + " message boxes:");
        for (const std::wstring& text : MessageBoxCounter::texts())
            r.broken.push_back("   | " + utf8(text.substr(0, text.find(L'\n'))));
    }
    return r;
}

void printBroken(const char* run, const RunResult& r) {
    std::printf("   %s:\n", run);
    for (const std::string& line : r.broken)
        std::printf("      %s\n", line.c_str());
}

}  // namespace

int runFaultSweep(SweepPhase phase, int version) {
    SetUnhandledExceptionFilter(reportCrash);
    MachineState machine;
    writeSettings();
    const char* phaseName = phase == SweepPhase::Startup ? "start-up" : "a selection change";
    LARGE_INTEGER started;
    QueryPerformanceCounter(&started);

    const RunResult reference = runOnce(phase, version, 0);
    int brokenRuns = reference.broken.empty() ? 0 : 1;
    if (!reference.broken.empty()) printBroken("without a fault", reference);
    std::printf(
        "Fault sweep, %s on Outlook %d: the add-in makes %llu object-model calls; each "
        "fails in turn (DISP_E_EXCEPTION), one load of HBAddin.dll per fault\n",
        phaseName, version, static_cast<unsigned long long>(reference.calls));
    int withBox = 0;
    for (std::uint64_t k = 1; k <= reference.calls; ++k) {
        std::snprintf(g_current, sizeof g_current, "the run failing call %llu",
                      static_cast<unsigned long long>(k));
        const RunResult r = runOnce(phase, version, k);
        if (r.boxes > 0) ++withBox;
        if (!r.fault || r.fault->number != k)
            std::printf("   call %llu: no fault reached it (the calls differ from run to run)\n",
                        static_cast<unsigned long long>(k));
        if (r.broken.empty()) continue;
        ++brokenRuns;
        const std::string what =
            "call " + std::to_string(k) +
            (r.fault ? " (" + utf8(r.fault->typeName) + "." + utf8(r.fault->member) + ")" : "");
        printBroken(what.c_str(), r);
    }
    std::printf("   error dialogs: %d of %llu faults showed one, none more than one per load%s\n",
                withBox, static_cast<unsigned long long>(reference.calls),
                brokenRuns ? " (unless listed above)" : "");
    std::printf(
        "   every run: no failing HRESULT from the add-in, census 0 after shutdown, "
        "DllCanUnloadNow S_OK, the DLL unloaded%s\n",
        brokenRuns ? " (unless listed above)" : "");
    std::printf("   %.1f s for %llu loads\n", millisecondsSince(started) / 1000.0,
                static_cast<unsigned long long>(reference.calls + 1));
    std::printf("Fault sweep: %s\n", brokenRuns == 0 ? "every rule held" : "RULES BROKEN");
    return brokenRuns == 0 ? 0 : 1;
}

}  // namespace standin
