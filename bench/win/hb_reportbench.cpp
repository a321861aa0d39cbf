// hb_reportbench.exe: the report program end to end under Wine (or
// Windows), across the process boundary, over a calendar of 100,000
// appointments (bench/support/BigCalendar.h). This program is the Outlook:
// it serves the simulated Outlook's Application as the running
// Outlook.Application, then runs
// HBReporting.exe from its folder as a scheduler does, once per period and
// repetition, timing the whole run from the start of the process to its
// end: Outlook reached, the calendar read call by call through COM's
// marshalling, the time rules, the records stored in the SQLite file, the
// CSV written. Beside the time it gives the records written and the
// object-model calls per record, counted by the simulated Outlook. A run of
// "HBReporting.exe /?" gives what starting a program costs alone. It runs
// twice: Outlook without the add-in (the program reads the calendar call by
// call), then with HBAddin.dll loaded as Outlook loads it (the add-in reads
// the period inside Outlook and hands it over in one call).
// Timed with the performance counter (Debian ships Google Benchmark only
// for Linux).
//
//   build/win64/wine-run.sh build/win64/hb_reportbench.exe [--runs N] [--addin-only]
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "ComTestSupport.h"
#include "bench/support/BigCalendar.h"
#include "sim/Scenario.h"
#include "standin/ChildProgram.h"
#include "standin/HostSetup.h"
#include "standin/LoadedAddins.h"
#include "win/com/ComVariant.h"
#include "win/com/DispatchServer.h"

namespace {

double seconds(LARGE_INTEGER from, LARGE_INTEGER to) {
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(to.QuadPart - from.QuadPart) /
           static_cast<double>(frequency.QuadPart);
}

// The CSV's rows, its heading not counted.
long rowsOf(const std::wstring& file) {
    long rows = -1;
    if (FILE* f = _wfopen(file.c_str(), L"rb")) {
        for (int c; (c = std::fgetc(f)) != EOF;)
            if (c == '\n') ++rows;
        std::fclose(f);
    }
    return std::max(rows, 0L);
}

struct Run {
    const char* name;
    const wchar_t* arguments;
    int runs;
};

// Runs the report program once per repetition and prints a line of figures;
// false when a run failed.
bool measure(sim::Scenario& sc, const Run& run, const std::wstring& folder) {
    const bool report = std::wstring(run.arguments) != L"/?";
    const std::wstring csv = folder + L"\\report.csv";
    const std::wstring program = L"\"" + hb::test::exeFolder() + L"\\HBReporting.exe\" ";
    std::vector<double> times;
    long records = 0;
    unsigned long long calls = 0;
    for (int r = 0; r < run.runs; ++r) {
        DeleteFileW(csv.c_str());
        sc.instruments().resetCounts();
        const std::wstring line =
            program + (report ? L"\"" + folder + L"\" " + run.arguments + L" /csv:\"" + csv + L"\""
                              : std::wstring(run.arguments));
        LARGE_INTEGER from, to;
        QueryPerformanceCounter(&from);
        const long code = standin::ChildProgram::runToEnd(line, 900000);
        QueryPerformanceCounter(&to);
        if (code != 0) {
            std::printf("   %-44s exit code %ld\n", run.name, code);
            return false;
        }
        times.push_back(seconds(from, to));
        calls = sc.instruments().callCount();
        if (report) records = rowsOf(csv);
    }
    std::sort(times.begin(), times.end());
    const double perRecord =
        records > 0 ? static_cast<double>(calls) / static_cast<double>(records) : 0.0;
    std::printf("   %-44s %8ld %9.3f %9.3f %13.2f\n", run.name, records, times[times.size() / 2],
                times.front(), perRecord);
    return true;
}

// The add-in's own part: its ReadCalendar called in Outlook's process, as
// the call from the report program arrives.
void insideOutlook(sim::Scenario& sc) {
    try {
        hb::Variant service = sc.outlook().comAddIns.at(0)->object;
        LARGE_INTEGER from, to;
        QueryPerformanceCounter(&from);
        sc.instruments().resetCounts();
        const hb::Str text = service.toObject()
                                 ->call(u"ReadCalendar", {hb::Variant(std::int32_t{46327}),
                                                          hb::Variant(std::int32_t{46356})})
                                 .toStr();
        QueryPerformanceCounter(&to);
        std::printf(
            "   the add-in's ReadCalendar of November 2026 inside Outlook: %.3f s, %llu "
            "calls, %zu characters\n",
            seconds(from, to), static_cast<unsigned long long>(sc.instruments().callCount()),
            text.size());
    } catch (const std::exception& e) {
        std::printf("   the add-in's ReadCalendar inside Outlook failed: %s\n", e.what());
    }
}

void heading() {
    std::printf("   %-44s %8s %9s %9s %13s\n", "run", "records", "median s", "best s",
                "calls/record");
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    int runs = 3;
    bool direct = true;
    for (int i = 1; i < argc; ++i) {
        if (std::wstring(argv[i]) == L"--runs" && i + 1 < argc)
            runs = std::max(1, _wtoi(argv[++i]));
        if (std::wstring(argv[i]) == L"--addin-only") direct = false;
    }
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    if (FAILED(OleInitialize(nullptr))) return 1;
    standin::serveSimulatedOutlook();
    const std::wstring dll = L"\"" + hb::test::exeFolder() + L"\\HBAddin.dll\"";
    if (hb::test::runProgram(L"regsvr32.exe /s " + dll) != 0) {
        std::printf("regsvr32 HBAddin.dll failed\n");
        return 1;
    }
    bool ok = true;
    {
        standin::MachineState machine;
        standin::writeSettings();
        wchar_t temp[MAX_PATH] = {};
        GetTempPathW(MAX_PATH, temp);
        const std::wstring folder = std::wstring(temp) + L"hb_reportbench";
        CreateDirectoryW(folder.c_str(), nullptr);
        std::printf(
            "HBReporting.exe against a calendar of 100,000 appointments served across the\n"
            "process boundary; wall time from the program's start to its end\n\n");

        // Outlook without the add-in: the program reads the calendar call by
        // call across the boundary.
        if (direct) {
            sim::Scenario sc;
            standin::furnishOutlook(sc.outlook(), 16);
            bench::furnishBigCalendar(sc.outlook());
            sc.instruments().setLogging(false);
            standin::RunningOutlook running(sc);
            std::printf(
                "Outlook without the add-in (the program reads every appointment itself):\n");
            heading();
            for (const Run& run :
                 {Run{"start-up only (HBReporting /?)", L"/?", runs},
                  Run{"one month (November 2026)", L"/from:2026-11-01 /to:2026-11-30", runs},
                  Run{"one year (2026), once", L"/from:2026-01-01 /to:2026-12-31", 1}})
                ok = measure(sc, run, folder) && ok;
        }
        // Outlook with the add-in loaded: the add-in reads the period inside
        // Outlook and hands it over in one call.
        {
            sim::Scenario sc;
            standin::furnishOutlook(sc.outlook(), 16);
            bench::furnishBigCalendar(sc.outlook());
            sc.instruments().setLogging(false);
            auto addins = std::make_shared<standin::LoadedAddins>();
            {
                standin::RunningOutlook running(sc);
                addins->load();
                sc.startOutlook(addins->empty() ? nullptr : addins, sim::ol::FolderCalendar);
                std::printf(
                    "\nOutlook with the add-in loaded (it reads the period inside Outlook):\n");
                heading();
                if (!sc.addinLoaded()) {
                    std::printf("   the add-in did not load\n");
                    ok = false;
                } else {
                    insideOutlook(sc);
                    for (const Run& run :
                         {Run{"one month (November 2026)", L"/from:2026-11-01 /to:2026-11-30",
                              runs},
                          Run{"one year (2026)", L"/from:2026-01-01 /to:2026-12-31", runs}})
                        ok = measure(sc, run, folder) && ok;
                }
                sc.quit();
                addins->release();
            }
            CoFreeUnusedLibraries();
        }
    }
    hb::test::runProgram(L"regsvr32.exe /s /u " + dll);
    hb::com::setObjectExporter({});
    OleUninitialize();
    return ok ? 0 : 1;
}
