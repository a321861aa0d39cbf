#pragma once
// How the report program joins Outlook and the user's settings, as any
// other program does: the running Outlook.Application (GetActiveObject),
// else a new one (CreateObject); then the session the report's parts read
// (the default calendar, the user, the list separator, the phrases, the
// personal settings through cPersonalSettings). Nothing is written to the
// mailbox: the settings come from the registry, and the settings
// appointment is only read when the registry was never written.
#include "common/Session.h"

namespace hb::reporting {

// Outlook's Application, running or started. Raises AutomationError 429
// ("ActiveX component can't create object") when there is none.
Variant reachOutlook(Platform& platform);

// Fills the session over that Application. Raises AutomationError when
// Outlook refuses a call it needs (the namespace, the default calendar).
void prepareReportSession(Session& s, const Variant& application);

}  // namespace hb::reporting
