#pragma once
// The COM add-ins Outlook loads at start-up, loaded as Outlook loads them:
// every ProgID under Software\Microsoft\Office\Outlook\Addins of the
// current user and of the machine (the user's first; a ProgID listed in both
// is the user's) whose LoadBehavior is 3 is created by its ProgID (CLSIDFromProgID,
// CoCreateInstance) and connected through _IDTExtensibility2; from Office
// 12 on it is offered the task pane factory (ICustomTaskPaneConsumer).
// An add-in that cannot be created or whose connection fails is not loaded:
// its LoadBehavior is rewritten to 2 where it was registered and the failure
// reported, and Outlook goes on without it.
//
// Plugged into the scenario driver as its add-in: the driver makes
// Office's calls in Office's order, and they reach every loaded add-in
// over real COM, the simulated objects served by the dispatch server.
#include <functional>
#include <string>
#include <vector>

#include "HBAddin_h.h"
#include "sim/Scenario.h"
#include "win/com/ComPtr.h"

namespace standin {

class LoadedAddins : public sim::Addin {
  public:
    struct Entry {
        std::wstring progId;
        hb::com::ComPtr<_IDTExtensibility2> addin;
        HKEY hive = nullptr;  // where it is registered
    };
    struct Failure {
        std::wstring progId;
        std::wstring what;
        HKEY hive = nullptr;
    };

    // Creates every add-in registered to load at start-up.
    void load();
    const std::vector<Entry>& loaded() const { return loaded_; }
    const std::vector<Failure>& failures() const { return failures_; }
    bool empty() const { return loaded_.empty(); }
    // Drops every add-in (Office's release after OnDisconnection).
    void release() { loaded_.clear(); }

    void onConnection(const hb::Variant& application, std::int32_t connectMode,
                      const hb::Variant& addInInst, hb::Args& custom) override;
    void ctpFactoryAvailable(const hb::Variant& factory) override;
    void onStartupComplete(hb::Args& custom) override;
    void onBeginShutdown(hb::Args& custom) override;
    void onDisconnection(std::int32_t removeMode, hb::Args& custom) override;
    // From Office 14 on: the first loaded add-in with a ribbon, as Office
    // reaches it, and the checks Office makes of its XML.
    hb::ObjectPtr ribbonExtensibility() override;
    void prepareRibbon(sim::Ribbon& ribbon, const hb::ObjectPtr& extensibility) override;

  private:
    void fail(std::size_t index, const std::wstring& what);
    // Makes one connection call on every loaded add-in; failures are noted.
    void each(const wchar_t* what,
              const std::function<HRESULT(_IDTExtensibility2&, SAFEARRAY**)>& call);

    std::vector<Entry> loaded_;
    std::vector<Failure> failures_;
};

// The add-ins key of Outlook, in the user's and in the machine's hive.
inline constexpr wchar_t kAddinsKey[] = L"Software\\Microsoft\\Office\\Outlook\\Addins";

}  // namespace standin
