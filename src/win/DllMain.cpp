// The entry points of the COM in-process server HBAddin.dll. The class
// factory, the registration and the designer object come with a later issue;
// until then the server offers no class and registers nothing.
#include <windows.h>
// windows.h first: objbase.h relies on its types.
#include <objbase.h>

namespace {
HINSTANCE g_module = nullptr;
}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        g_module = instance;
        DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID /*clsid*/, REFIID /*iid*/, LPVOID* object) {
    if (object != nullptr) *object = nullptr;
    return CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() {
    return S_OK;
}

STDAPI DllRegisterServer() {
    return S_OK;
}

STDAPI DllUnregisterServer() {
    return S_OK;
}
