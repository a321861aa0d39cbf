#pragma once
// The stand-in Outlook as other programs reach it: its Application in the
// running object table as "Outlook.Application" (GetActiveObject,
// GetObject) and its class's local server (CoCreateInstance, CreateObject),
// marshalled by COM across the process boundary.
//
// Started by COM (LocalServer32 with -Embedding) it is an Outlook started by
// automation: no window, no add-in loaded, and it quits when the last client
// lets go of the last object it holds (or when a client calls
// Application.Quit, or when no client comes within a minute of the start).
#include <windows.h>

#include <string>

#include "sim/Scenario.h"
#include "win/ClassFactory.h"

namespace standin {

// Outlook.Application's class id, as Office registers it.
inline constexpr wchar_t kOutlookClsid[] = L"{0006F03A-0000-0000-C000-000000000046}";
inline constexpr wchar_t kOutlookProgId[] = L"Outlook.Application";

// Writes the ProgID and class keys under HKEY_CLASSES_ROOT that make
// `program` Outlook's local server (started with -Embedding); false when
// the registry refused a key.
bool registerOutlookServer(const std::wstring& program);
// Removes those keys again.
void unregisterOutlookServer();
// The local server's command line as registered, empty when none is.
std::wstring registeredOutlookServer();

// Outlook's class id, parsed.
CLSID outlookClassId();

// The scenario's Application as a COM object, as a client gets it (its
// calls counted as the add-in's are, `origin` naming how it was had); the
// dispatch server keeps one COM object per simulated one.
hb::com::ComPtr<IDispatch> servedApplication(sim::Scenario& sc, const hb::Str& origin);

// Serves the scenario's Application to other processes while it lives:
// registered in the running object table and as the class object of
// Outlook.Application; both are revoked when it goes.
class OutlookServer {
  public:
    explicit OutlookServer(sim::Scenario& sc);
    ~OutlookServer();
    OutlookServer(const OutlookServer&) = delete;
    OutlookServer& operator=(const OutlookServer&) = delete;

    // Both registrations were made.
    bool serving() const { return activeCookie_ != 0 && classCookie_ != 0; }

    // Runs the apartment's message loop (clients' calls arrive through it)
    // until the last client let go, Application.Quit was called, or no
    // client came within firstClientMs. True when a client came.
    bool serveUntilReleased(DWORD firstClientMs);

  private:
    sim::Scenario& sc_;
    hb::com::ComPtr<hb::win::InstanceFactory> factory_;
    bool quit_ = false;
    DWORD activeCookie_ = 0;
    DWORD classCookie_ = 0;
};

}  // namespace standin
