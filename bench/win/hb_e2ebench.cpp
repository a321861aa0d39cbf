// hb_e2ebench.exe: the add-in end to end under Wine (or Windows), as the
// stand-in Outlook loads it: HBAddin.dll registered with regsvr32, created
// by its ProgID, connected and driven over real COM with the simulated
// Outlook served by the dispatch server, the settings holding three
// metadata lists of 10,000 entries each. Timed with the performance counter
// (Debian ships Google Benchmark only for Linux):
//
//  - start-up: from CoCreateInstance to the first toolbar filled (the
//    calendar window's bar with its three boxes, filled with their entries
//    when the first appointment is selected), a fresh load of the DLL each
//    time;
//  - a selection change in the calendar, with the number of object-model
//    calls (each one an IDispatch call, as across Outlook's process) it
//    makes.
//
//   build/win64/wine-run.sh build/win64/hb_e2ebench.exe
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "ComTestSupport.h"
#include "common/Constants.h"
#include "sim/Instruments.h"
#include "sim/Scenario.h"
#include "standin/HostSetup.h"
#include "standin/LoadedAddins.h"
#include "win/com/ComVariant.h"
#include "win/com/DispatchServer.h"

namespace {

using standin::LoadedAddins;

constexpr int kEntries = 10000;
constexpr int kStartups = 15;
constexpr int kSelections = 200;

std::wstring folderOfThisProgram() {
    wchar_t path[MAX_PATH * 4] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH * 4);
    std::wstring p = path;
    return p.substr(0, p.find_last_of(L"\\/"));
}

// Three lists of kEntries entries each, as the settings store keeps them.
std::wstring bigLists() {
    std::wstring text;
    for (const wchar_t* list : {L"Company", L"Person", L"Extra Field"}) {
        text += list;
        text += L':';
        for (int i = 1; i <= kEntries; ++i) {
            text += list[0];
            text += std::to_wstring(100000 + i);
            text += L';';
        }
        text += L"\r\n";
    }
    return text;
}

// The entries of the boxes of the calendar window's bar.
std::size_t entriesShown(const sim::Explorer& explorer) {
    auto bar = sim::Scenario::bar(explorer, hb::kProductCaption);
    std::size_t n = 0;
    if (bar)
        for (const auto& c : bar->controls->list)
            if (!c->deleted && c->isComboBox()) n += c->entries.size();
    return n;
}

struct Figures {
    double median = 0, best = 0;
};

Figures figuresOf(std::vector<double> ms) {
    std::sort(ms.begin(), ms.end());
    return {ms[ms.size() / 2], ms.front()};
}

}  // namespace

int main() {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    if (FAILED(OleInitialize(nullptr))) return 1;
    standin::serveSimulatedOutlook();
    const std::wstring dll = L"\"" + folderOfThisProgram() + L"\\HBAddin.dll\"";
    if (hb::test::runProgram(L"regsvr32.exe /s " + dll) != 0) {
        std::printf("regsvr32 HBAddin.dll failed\n");
        return 1;
    }
    int rc = 0;
    {
        standin::MachineState machine;
        standin::writeSettings(bigLists());
        std::printf("HBAddin.dll end to end, Outlook 12, 3 lists x %d entries\n", kEntries);

        std::vector<double> startups;
        std::uint64_t startupCalls = 0;
        std::size_t shown = 0;
        std::vector<double> selections;
        std::uint64_t selectionCalls = 0;
        for (int run = 0; run < kStartups; ++run) {
            sim::Scenario sc;
            standin::furnishOutlook(sc.outlook(), 12);
            sc.instruments().setLogging(false);
            auto addins = std::make_shared<LoadedAddins>();
            {
                standin::RunningOutlook running(sc);
                LARGE_INTEGER start;
                QueryPerformanceCounter(&start);
                addins->load();
                sc.startOutlook(addins->empty() ? nullptr : addins, sim::ol::FolderCalendar);
                auto calendar = sc.outlook().calendar();
                const std::shared_ptr<sim::Item> items[] = {
                    calendar->findBySubject(u"Project kickoff"),
                    calendar->findBySubject(u"Client call")};
                if (sc.addinLoaded()) sc.select(sc.explorer(), {items[1]});
                startups.push_back(standin::millisecondsSince(start));
                startupCalls = sc.instruments().callCount();
                shown = entriesShown(*sc.explorer());
                // Selection changes in the first load only: the DLL is warm.
                if (run == 0 && sc.addinLoaded()) {
                    for (int i = 0; i < kSelections; ++i) {
                        const std::uint64_t before = sc.instruments().callCount();
                        LARGE_INTEGER s;
                        QueryPerformanceCounter(&s);
                        sc.select(sc.explorer(), {items[i % 2]});
                        selections.push_back(standin::millisecondsSince(s));
                        selectionCalls = sc.instruments().callCount() - before;
                    }
                }
                sc.quit();
                addins->release();
            }
            CoFreeUnusedLibraries();
            if (!sc.addinErrors.empty() || !addins->failures().empty()) rc = 1;
        }
        const Figures up = figuresOf(startups);
        std::printf(
            "%-54s %8.1f ms median, best %.1f ms (target < 100 ms); %llu calls, "
            "%zu entries in the boxes\n",
            "start-up: CoCreateInstance to the first toolbar filled", up.median, up.best,
            static_cast<unsigned long long>(startupCalls), shown);
        if (!selections.empty()) {
            const Figures sel = figuresOf(selections);
            std::printf("%-54s %8.3f ms median, best %.3f ms; %llu calls\n",
                        "selection change in the calendar", sel.median, sel.best,
                        static_cast<unsigned long long>(selectionCalls));
        }
        if (shown < 3u * kEntries) {
            std::printf("the boxes do not hold every entry\n");
            rc = 1;
        }
    }
    hb::test::runProgram(L"regsvr32.exe /s /u " + dll);
    hb::com::setObjectExporter({});
    OleUninitialize();
    return rc;
}
