#pragma once
// One wrapper per Outlook Explorer window: reacts to its events, keeps the
// toolbar on the default calendar and shows the selected appointment.
#include <memory>

#include "common/Object.h"
#include "common/Session.h"

namespace hb {

class cExplorerEvents : public std::enable_shared_from_this<cExplorerEvents> {
  public:
    explicit cExplorerEvents(Session& s);
    ~cExplorerEvents();  // Class_Terminate
    cExplorerEvents(const cExplorerEvents&) = delete;
    cExplorerEvents& operator=(const cExplorerEvents&) = delete;

    const Variant& oueMyExplorer() const { return oueMyExplorer_; }
    void setOueMyExplorer(const Variant& explorer);  // holds it with its events

    bool blnClosed = false;
    bool blnCalendarFolder = false;
    bool blnActive = false;

    void oueMyExplorer_Activate();
    void oueMyExplorer_BeforeFolderSwitch(const Variant& newFolder, Variant& cancel);
    void oueMyExplorer_Close();
    void oueMyExplorer_Deactivate();
    void oueMyExplorer_FolderSwitch();
    void oueMyExplorer_SelectionChange();

  private:
    Session& s_;
    Variant oueMyExplorer_;
    EventConnection events_;
    // The add-in's bar last found in this window: while the holder still
    // serves that bar, a selection change does not walk the window's
    // command bars again.
    Variant lastBar_;
};

// The calendar tests the whole add-in uses.
bool CheckFolder(Session& s, const Variant& folder);
bool fncIsAppointmentClass(Session& s, const Str& messageClass);
// The StoreID of the folder that holds an item. An exception of a recurring
// series has its series as Parent, which has no StoreID: its store is that
// of the series' folder. No trap: errors go to the caller.
Str fncItemStoreID(const Variant& item);
// Whether an item of that message class belongs to a recurring series
// other than as its master: an exception (its class says so) or an
// occurrence (Outlook gives it the series' class; its RecurrenceState
// tells). Its Parent is the series, which carries the billing values.
bool fncIsSeriesMember(const Variant& item, const Str& messageClass);
// Finds or creates the add-in's command bar in an Explorer or Inspector.
Variant fncGetToolbar(Session& s, const Variant& window);
// Deletes every bar of the add-in's name from a CommandBars collection.
void subRemoveCommandBar(Session& s, const Variant& commandBars);
void subReattachInspectors(Session& s);

}  // namespace hb
