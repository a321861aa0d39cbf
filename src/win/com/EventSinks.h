#pragma once
// Outlook's and Office's event interfaces as the add-in hears them: a table
// of each event set's interface ID and its members' dispatch IDs, and one
// generic sink that subscribes to a source's connection point and hands
// every Invoke to a portable EventSink by member name.
#include <windows.h>
// windows.h first: ocidl.h relies on its types.
#include <ocidl.h>

#include <memory>
#include <vector>

#include "common/Object.h"

namespace hb::com {

struct EventMember {
    DISPID id;
    const char16_t* name;
};

struct EventSet {
    const char16_t* name;  // the event interface's name ("ExplorerEvents")
    GUID iid;
    std::vector<EventMember> members;

    const char16_t* memberName(DISPID id) const;
    DISPID memberId(StrView name) const;  // DISPID_UNKNOWN when there is none
};

// Every event set the add-in subscribes to.
const std::vector<EventSet>& eventSets();
// By name (letter case ignored), or by interface ID; nullptr when unknown.
const EventSet* findEventSet(StrView name);
const EventSet* findEventSet(REFIID iid);

// Subscribes sink to source's event set: the connection point of the set's
// interface ID, or else one whose interface the source's type library names
// after the set with a version suffix ("ExplorerEvents_10"), since later
// Outlooks add such variants with the same dispatch IDs. Raises 438 when the
// source has no such event set. Dropping the connection unadvises.
EventConnection adviseEvents(IDispatch* source, const Str& eventInterface,
                             std::shared_ptr<EventSink> sink);

// Connection point subscriptions alive now (for leak checks).
long liveEventSubscriptions();

}  // namespace hb::com
