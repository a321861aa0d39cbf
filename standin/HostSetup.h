#pragma once
// What every run of the stand-in Outlook sets up around the add-in, shared
// by the session, the fault sweep and the end-to-end benchmark: the user's
// settings in the registry, the simulated Outlook with its calendar, the
// Application in the running object table, the message boxes the add-in
// shows, and the reference census after it was let go.
#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "common/Object.h"
#include "sim/Scenario.h"

namespace standin {

// The three lists the settings program leaves for a small workgroup.
inline constexpr wchar_t kWorkgroupLists[] =
    L"Company:Acme;Globex;Initech;\r\nPerson:Smith;Jones;\r\nExtra Field:Travel;Office;\r\n";

// Makes the dispatch server serve the simulated Outlook's objects, each
// type's DISPIDs seeded from the simulation's member table.
void serveSimulatedOutlook();

// Writes the user's settings as the settings program leaves them, with
// these metadata lists.
void writeSettings(const std::wstring& metadataList = kWorkgroupLists);

// What a run writes to the machine goes again at its end unless it was
// there before: the user's settings, Outlook's class name.
class MachineState {
  public:
    MachineState();
    ~MachineState();
    MachineState(const MachineState&) = delete;
    MachineState& operator=(const MachineState&) = delete;

  private:
    bool hadSettings_, hadOutlookClass_;
};

// The build number a given Outlook version reports.
hb::Str versionText(int major);

// Outlook of that version with a mailbox whose calendar holds the three
// appointments of the session: "Project kickoff", "Client call" (billed
// "Globex, Jones") and "Code review".
void furnishOutlook(sim::Outlook& outlook, int version);

// Outlook's Application in the running object table for as long as this
// lives, where the add-in finds it by ProgID (GetObject).
class RunningOutlook {
  public:
    explicit RunningOutlook(sim::Scenario& sc);
    ~RunningOutlook();
    RunningOutlook(const RunningOutlook&) = delete;
    RunningOutlook& operator=(const RunningOutlook&) = delete;

  private:
    DWORD cookie_ = 0;
};

// Counts the message boxes a loaded DLL shows, without showing them: its
// import of MessageBoxW is pointed here, and each box is answered at once
// (No where there is a No button, else OK). Set up again after every load
// of the DLL.
class MessageBoxCounter {
  public:
    // False when the module imports no MessageBoxW.
    static bool attach(HMODULE module);
    static int count();
    static const std::vector<std::wstring>& texts();
    static void reset();
};

// What the add-in still holds after it was let go: served objects and
// connections of the dispatch server, and the simulation's census.
struct Census {
    long objects = 0;
    long connections = 0;
    std::vector<hb::Str> held;
    bool empty() const { return objects == 0 && connections == 0 && held.empty(); }
};
Census takeCensus(sim::Scenario& sc);

// Milliseconds since a performance-counter reading.
double millisecondsSince(const LARGE_INTEGER& start);

// DllCanUnloadNow of the loaded HBAddin.dll (S_OK when it is not loaded).
HRESULT addinCanUnloadNow();

}  // namespace standin
