#pragma once
// The other side of the dispatch client: any portable automation object
// served as a real IDispatch, so that a COM client (the add-in's DLL) can be
// driven by objects that live in portable code, as a stand-in Outlook does
// with the simulated one. Written once for every type:
//
//  - names and DISPIDs: one table per type name, seeded from the object's
//    member names (sorted, from 1) and kept for the process, so every object
//    of a type answers the same DISPIDs; the default member is DISPID_VALUE
//    and DISPID_NEWENUM gives an IEnumVARIANT over a snapshot of enumerate();
//  - type information named as Outlook names its interfaces ("_" + the type
//    name, so that TypeName reads "AppointmentItem"), made at run time once
//    per type name;
//  - errors as DISP_E_EXCEPTION with EXCEPINFO, scode from the error number;
//  - IConnectionPointContainer with the event interfaces' real IDs: an
//    Advise subscribes to the object's event set and hands every event to
//    the advised sink's Invoke, a by-reference Boolean (Cancel) as
//    VT_BOOL|VT_BYREF written back after the call.
//
// An object handed out again while a client still holds it is the same COM
// object (COM identity follows the portable object's identity()); objects
// a client passes back come back as the portable objects they serve.
#include <windows.h>
// windows.h first: oaidl.h relies on its types.
#include <oaidl.h>

#include <functional>
#include <vector>

#include "common/Object.h"
#include "win/com/ComPtr.h"

namespace hb::com {

// The member names of an object (to seed its type's DISPIDs), or none when
// they are not known; then names get DISPIDs as clients ask for them.
using MemberNames = std::function<std::vector<Str>(const Object&)>;

// The IDispatch serving object (a new reference); null for null.
ComPtr<IDispatch> exportObject(const ObjectPtr& object);

// The portable object an IDispatch of this server serves, or null when it
// is none of them.
ObjectPtr exportedObjectOf(IUnknown* unknown);

// Makes toVARIANT export portable objects through this server. names tells
// the members of an object; by default those of a DispatchObject.
void installDispatchServer(MemberNames names = {});

// The reference census: served objects alive, and advised connections.
long liveExportedObjects();
long liveServerConnections();
// Served objects that a client in another apartment or process holds (a
// local server ends when this falls back to 0).
long externallyHeldObjects();

}  // namespace hb::com
