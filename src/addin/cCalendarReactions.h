#pragma once
// The session object: hears Outlook's Application, Explorers and
// Inspectors, builds the working state at start-up and wraps every Explorer
// and appointment Inspector.
#include <memory>
#include <vector>

#include "common/Object.h"
#include "common/Session.h"

namespace hb {

class cExplorerEvents;
class cInspectorEvents;

class cCalendarReactions : public std::enable_shared_from_this<cCalendarReactions> {
  public:
    explicit cCalendarReactions(Session& s);
    ~cCalendarReactions();
    cCalendarReactions(const cCalendarReactions&) = delete;
    cCalendarReactions& operator=(const cCalendarReactions&) = delete;

    const Variant& ouaMyOutlook() const { return ouaMyOutlook_; }
    void setOuaMyOutlook(const Variant& application);
    void setOuesMyExplorers(const Variant& explorers);
    void setOuisMyInspectors(const Variant& inspectors);

    void ouaMyOutlook_Startup();
    void ouaMyOutlook_Quit();
    void ouesMyExplorers_NewExplorer(const Variant& explorer);
    void AddExplorer(const Variant& explorer);
    void ouisMyInspectors_NewInspector(const Variant& inspector);
    // Connected while Outlook runs already: the start-up sequence, then
    // every other Explorer already open is wrapped (its toolbar comes when
    // it is activated) and so is every appointment Inspector already open,
    // once the task pane factory is there where Outlook offers one.
    void StartAfterStartup();
    // The appointment Inspectors open before the connection, when they are
    // still waiting for the task pane factory.
    void AddPendingInspectors();

    std::vector<std::shared_ptr<cExplorerEvents>> colExplorers;
    std::vector<std::shared_ptr<cInspectorEvents>> colInspectors;

  private:
    void AddOpenInspectors();

    Session& s_;
    bool blnInspectorsPending_ = false;
    Variant ouaMyOutlook_, ouesMyExplorers_, ouisMyInspectors_;
    EventConnection appEvents_, explorersEvents_, inspectorsEvents_;
};

}  // namespace hb
