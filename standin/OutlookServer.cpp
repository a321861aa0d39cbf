#include "standin/OutlookServer.h"

#include <cwchar>

#include "sim/Instruments.h"
#include "win/com/ComVariant.h"
#include "win/com/DispatchServer.h"

namespace standin {

namespace {

const std::wstring kClassKey = std::wstring(L"CLSID\\") + kOutlookClsid;

bool setValue(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    return RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), name, REG_SZ, value.c_str(),
                           static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))) ==
           ERROR_SUCCESS;
}

void deleteTree(const std::wstring& key) {
    RegDeleteTreeW(HKEY_CLASSES_ROOT, key.c_str());
    RegDeleteKeyW(HKEY_CLASSES_ROOT, key.c_str());
}

}  // namespace

bool registerOutlookServer(const std::wstring& program) {
    const std::wstring progId = kOutlookProgId;
    // COM appends " -Embedding" to this command line when it starts the
    // server; the path is quoted for folders with blanks.
    return setValue(progId, nullptr, L"Outlook Application") &&
           setValue(progId + L"\\CLSID", nullptr, kOutlookClsid) &&
           setValue(kClassKey, nullptr, L"Outlook Application") &&
           setValue(kClassKey + L"\\ProgID", nullptr, progId) &&
           setValue(kClassKey + L"\\LocalServer32", nullptr, L"\"" + program + L"\"");
}

void unregisterOutlookServer() {
    deleteTree(kClassKey);
    deleteTree(kOutlookProgId);
}

std::wstring registeredOutlookServer() {
    wchar_t text[MAX_PATH * 2] = {};
    DWORD size = sizeof text;
    if (RegGetValueW(HKEY_CLASSES_ROOT, (kClassKey + L"\\LocalServer32").c_str(), nullptr,
                     RRF_RT_REG_SZ, nullptr, text, &size) != ERROR_SUCCESS)
        return {};
    return text;
}

CLSID outlookClassId() {
    CLSID clsid{};
    CLSIDFromString(kOutlookClsid, &clsid);
    return clsid;
}

hb::com::ComPtr<IDispatch> servedApplication(sim::Scenario& sc, const hb::Str& origin) {
    const hb::Variant app =
        sc.instruments().toAddin(hb::Variant(hb::ObjectPtr(sc.outlook().application())), origin);
    return hb::com::dispatchOf(app.toObject());
}

OutlookServer::OutlookServer(sim::Scenario& sc) : sc_(sc) {
    const CLSID clsid = outlookClassId();
    hb::com::ComPtr<IDispatch> dispatch = servedApplication(sc, u"GetActiveObject");
    if (!dispatch) return;
    // Registered weakly, as an application started by automation does: the
    // table alone does not keep it running, its clients do.
    if (FAILED(RegisterActiveObject(dispatch.get(), clsid, ACTIVEOBJECT_WEAK, &activeCookie_)))
        activeCookie_ = 0;
    factory_ = hb::win::InstanceFactory::create(dispatch.as<IUnknown>());
    if (FAILED(CoRegisterClassObject(clsid, factory_->unknown(), CLSCTX_LOCAL_SERVER,
                                     REGCLS_MULTIPLEUSE, &classCookie_)))
        classCookie_ = 0;
    sc.outlook().onQuit = [this] { quit_ = true; };
}

OutlookServer::~OutlookServer() {
    // No new client from here on; then the registrations go.
    if (factory_) factory_->stop();
    if (classCookie_) CoRevokeClassObject(classCookie_);
    if (activeCookie_) RevokeActiveObject(activeCookie_, nullptr);
    sc_.outlook().onQuit = nullptr;
    // What clients still hold is cut off: the process is about to end.
    sc_.outlook().pump();
}

bool OutlookServer::serveUntilReleased(DWORD firstClientMs) {
    const ULONGLONG started = GetTickCount64();
    bool came = false;
    // A timer wakes the loop to look at the clients' holds: COM tells the
    // served objects of each release inside a call, not by a message.
    const UINT_PTR timer = SetTimer(nullptr, 0, 50, nullptr);
    MSG msg;
    while (!quit_) {
        const BOOL got = GetMessageW(&msg, nullptr, 0, 0);
        if (got == 0 || got == -1) break;
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
        sc_.outlook().pump();
        const bool held = hb::com::externallyHeldObjects() > 0;
        came = came || held;
        if (came && !held) break;
        if (!came && GetTickCount64() - started > firstClientMs) break;
    }
    KillTimer(nullptr, timer);
    return came;
}

}  // namespace standin
