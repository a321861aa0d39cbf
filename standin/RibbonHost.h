#pragma once
// Office's side of the ribbon for the stand-in Outlook 14 to 16: the loaded
// add-in reached as Office reaches it (GetCustomUI through its
// IRibbonExtensibility vtable, every callback by name through its
// IDispatch: GetIDsOfNames, then Invoke with Office's argument types), and
// the ribbon XML read by Windows' own XML parser (MSXML's DOMDocument), so
// that XML Office would refuse shows nothing, with the parser's reason.
#include "HBAddin_h.h"
#include "common/Object.h"
#include "sim/Ribbon.h"
#include "win/com/ComPtr.h"

namespace standin {

// The add-in as the simulated ribbon calls it; null when the add-in has no
// IRibbonExtensibility.
hb::ObjectPtr ribbonOf(IUnknown* addin);
// Whether the add-in's IDispatch knows a member (GetIDsOfNames).
bool addinHasMember(const hb::ObjectPtr& ribbon, const hb::Str& member);
// What MSXML makes of the XML: empty when Office would take it, else why
// not (not well formed, another namespace, an unknown element).
hb::Str checkRibbonXml(const hb::Str& xml);
// Sets a ribbon up to reach the add-in over COM.
void useComChecks(sim::Ribbon& ribbon, hb::ObjectPtr addin);

}  // namespace standin
