// The entry points of the COM in-process server HBAddin.dll: the class
// objects of the designer and the pane control, unloading, and registration
// for the machine (regsvr32) or the current user (regsvr32 /n /i:user).
#include <windows.h>

#include "HBAddin_h.h"
#include "win/AddinDesigner.h"
#include "win/ClassFactory.h"
#include "win/Module.h"
#include "win/PaneControl.h"
#include "win/Registration.h"
#include "win/com/DispatchServer.h"

using namespace hb;
using namespace hb::win;

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    if (reason == DLL_PROCESS_ATTACH) {
        setModuleInstance(instance);
        DisableThreadLibraryCalls(instance);
    } else if (reason == DLL_PROCESS_DETACH && reserved == nullptr && com::moduleCanUnload()) {
        // Unloaded by FreeLibrary with no object alive: nothing of Outlook is
        // held any more, so the session's memory can go. At process exit it
        // is left to the system.
        releaseModuleState();
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    try {
        if (IsEqualCLSID(clsid, CLSID_OHBAddinDesigner))
            return ClassFactory<AddinDesigner>::create()->QueryInterface(iid, object);
        if (IsEqualCLSID(clsid, CLSID_Pane))
            return ClassFactory<PaneControl>::create()->QueryInterface(iid, object);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() {
    // Objects the add-in handed Office through the dispatch server count too.
    if (!com::moduleCanUnload() || com::liveExportedObjects() > 0) return S_FALSE;
    // COM frees the module next: the type library, read from this file,
    // would keep it loaded.
    com::releaseModuleTypeInfo();
    return S_OK;
}

STDAPI DllRegisterServer() {
    return registerServer(RegistrationScope::Machine);
}

STDAPI DllUnregisterServer() {
    return unregisterServer(RegistrationScope::Machine);
}

// regsvr32 /n /i:user registers for the current user only, without
// administrator rights; /u /n /i:user removes that registration.
STDAPI DllInstall(BOOL install, LPCWSTR commandLine) {
    if (!commandLine || _wcsicmp(commandLine, L"user") != 0) return E_INVALIDARG;
    return install ? registerServer(RegistrationScope::User)
                   : unregisterServer(RegistrationScope::User);
}
