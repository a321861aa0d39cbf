#include "standin/LoadedAddins.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "common/Text.h"
#include "standin/RibbonHost.h"
#include "standin/TaskPaneFactory.h"
#include "win/com/ComVariant.h"

namespace standin {

namespace {

std::wstring hresultText(const wchar_t* call, HRESULT hr) {
    wchar_t text[64];
    swprintf(text, 64, L"%ls failed, 0x%08lX", call, static_cast<unsigned long>(hr));
    return text;
}

void setLoadBehavior(HKEY hive, const std::wstring& progId, DWORD value) {
    const std::wstring key = std::wstring(kAddinsKey) + L"\\" + progId;
    RegSetKeyValueW(hive, key.c_str(), L"LoadBehavior", REG_DWORD, &value, sizeof value);
}

// The ProgIDs of one hive's add-ins key with LoadBehavior 3, in the order
// the key lists them.
void startupAddins(HKEY hive, std::vector<std::pair<std::wstring, HKEY>>& out) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(hive, kAddinsKey, 0, KEY_READ, &key) != ERROR_SUCCESS) return;
    wchar_t name[256];
    for (DWORD i = 0;; ++i) {
        DWORD length = 256;
        if (RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            break;
        const bool listed = std::any_of(out.begin(), out.end(), [&](const auto& a) {
            return _wcsicmp(a.first.c_str(), name) == 0;
        });
        DWORD behavior = 0, size = sizeof behavior;
        if (!listed &&
            RegGetValueW(key, name, L"LoadBehavior", RRF_RT_REG_DWORD, nullptr, &behavior, &size) ==
                ERROR_SUCCESS &&
            behavior == 3)
            out.emplace_back(name, hive);
    }
    RegCloseKey(key);
}

// An empty custom array, as Office passes it.
struct CustomArray {
    CustomArray() : array(SafeArrayCreateVector(VT_VARIANT, 0, 0)) {}
    ~CustomArray() { SafeArrayDestroy(array); }
    SAFEARRAY* array;
};

}  // namespace

void LoadedAddins::load() {
    std::vector<std::pair<std::wstring, HKEY>> addins;
    startupAddins(HKEY_CURRENT_USER, addins);
    startupAddins(HKEY_LOCAL_MACHINE, addins);
    for (const auto& [progId, hive] : addins) {
        CLSID clsid{};
        HRESULT hr = CLSIDFromProgID(progId.c_str(), &clsid);
        hb::com::ComPtr<IUnknown> object;
        if (SUCCEEDED(hr))
            hr = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                  reinterpret_cast<void**>(object.put()));
        hb::com::ComPtr<_IDTExtensibility2> addin;
        if (SUCCEEDED(hr)) addin = object.as<_IDTExtensibility2>();
        if (!addin) {
            failures_.push_back(
                {progId,
                 hresultText(SUCCEEDED(hr) ? L"QueryInterface" : L"CoCreateInstance",
                             SUCCEEDED(hr) ? E_NOINTERFACE : hr),
                 hive});
            setLoadBehavior(hive, progId, 2);
            continue;
        }
        loaded_.push_back({progId, addin, hive});
    }
}

void LoadedAddins::fail(std::size_t index, const std::wstring& what) {
    const Entry& e = loaded_[index];
    failures_.push_back({e.progId, what, e.hive});
    setLoadBehavior(e.hive, e.progId, 2);
    loaded_.erase(loaded_.begin() + static_cast<std::ptrdiff_t>(index));
}

void LoadedAddins::onConnection(const hb::Variant& application, std::int32_t connectMode,
                                const hb::Variant& addInInst, hb::Args&) {
    hb::com::ComPtr<IDispatch> app = hb::com::dispatchOf(application.toObject());
    hb::com::ComPtr<IDispatch> inst = hb::com::dispatchOf(addInInst.toObject());
    for (std::size_t i = loaded_.size(); i-- > 0;) {
        CustomArray custom;
        const HRESULT hr = loaded_[i].addin->OnConnection(
            app.get(), static_cast<ext_ConnectMode>(connectMode), inst.get(), &custom.array);
        if (FAILED(hr)) fail(i, hresultText(L"OnConnection", hr));
    }
    // The driver unloads the add-in when nothing stayed connected.
    if (loaded_.empty()) throw std::runtime_error("no add-in connected");
}

void LoadedAddins::ctpFactoryAvailable(const hb::Variant& factory) {
    auto host = TaskPaneFactory::create(factory);
    for (Entry& e : loaded_) {
        if (auto consumer = e.addin.as<ICustomTaskPaneConsumer>()) {
            const HRESULT hr = consumer->CTPFactoryAvailable(host.get());
            if (FAILED(hr))
                failures_.push_back({e.progId, hresultText(L"CTPFactoryAvailable", hr)});
        }
    }
}

hb::ObjectPtr LoadedAddins::ribbonExtensibility() {
    for (Entry& e : loaded_) {
        if (hb::ObjectPtr ribbon = ribbonOf(e.addin.get())) return ribbon;
    }
    return nullptr;
}

void LoadedAddins::prepareRibbon(sim::Ribbon& ribbon, const hb::ObjectPtr& extensibility) {
    useComChecks(ribbon, extensibility);
}

void LoadedAddins::onStartupComplete(hb::Args&) {
    each(L"OnStartupComplete",
         [](_IDTExtensibility2& a, SAFEARRAY** c) { return a.OnStartupComplete(c); });
}

void LoadedAddins::onBeginShutdown(hb::Args&) {
    each(L"OnBeginShutdown",
         [](_IDTExtensibility2& a, SAFEARRAY** c) { return a.OnBeginShutdown(c); });
}

void LoadedAddins::onDisconnection(std::int32_t removeMode, hb::Args&) {
    each(L"OnDisconnection", [removeMode](_IDTExtensibility2& a, SAFEARRAY** c) {
        return a.OnDisconnection(static_cast<ext_DisconnectMode>(removeMode), c);
    });
}

void LoadedAddins::each(const wchar_t* what,
                        const std::function<HRESULT(_IDTExtensibility2&, SAFEARRAY**)>& call) {
    for (Entry& e : loaded_) {
        CustomArray custom;
        const HRESULT hr = call(*e.addin.get(), &custom.array);
        if (FAILED(hr)) failures_.push_back({e.progId, hresultText(what, hr), e.hive});
    }
}

}  // namespace standin
