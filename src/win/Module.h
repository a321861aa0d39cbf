#pragma once
// What exists once per load of HBAddin.dll: the module handle, the Win32
// platform and the add-in's session state (the one-shot error report, the
// phrase table, the cached versions, the Outlook objects). Every designer
// and every pane control of the process shares them, as module-level
// variables are shared by every object of a loaded library.
#include <windows.h>

#include "common/Session.h"

namespace hb::win {

HINSTANCE moduleInstance();
void setModuleInstance(HINSTANCE instance);
// The full path of HBAddin.dll.
std::wstring modulePath();

Platform& modulePlatform();
Session& moduleSession();
// Frees the session when the library is unloaded with nothing alive.
void releaseModuleState();

}  // namespace hb::win
