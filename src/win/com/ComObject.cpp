#include "win/com/ComObject.h"

#include <map>
#include <mutex>

namespace hb::com {

namespace {

std::atomic<long> g_objects{0};
std::atomic<long> g_locks{0};

// The module whose code this is (HBAddin.dll in the product).
HMODULE thisModule() {
    HMODULE module = nullptr;
    GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(&thisModule), &module);
    return module;
}

struct TypeLibrary {
    std::mutex lock;
    bool loaded = false;
    ComPtr<ITypeLib> library;
    std::map<GUID, ComPtr<ITypeInfo>, bool (*)(const GUID&, const GUID&)> infos{
        [](const GUID& a, const GUID& b) { return memcmp(&a, &b, sizeof(GUID)) < 0; }};
};

TypeLibrary& typeLibrary() {
    // Never destroyed: releasing the type information while the module
    // unloads would call into oleaut32 from DllMain. DllCanUnloadNow lets
    // go of it instead (releaseModuleTypeInfo).
    static TypeLibrary* library = new TypeLibrary;
    return *library;
}

}  // namespace

void moduleObjectCreated() noexcept {
    ++g_objects;
}

void moduleObjectDestroyed() noexcept {
    --g_objects;
}

void moduleLock(bool lock) noexcept {
    lock ? ++g_locks : --g_locks;
}

long moduleObjectCount() noexcept {
    return g_objects.load();
}

bool moduleCanUnload() noexcept {
    return g_objects.load() == 0 && g_locks.load() == 0;
}

HRESULT moduleTypeInfo(REFGUID guid, ITypeInfo** info) noexcept {
    if (!info) return E_POINTER;
    *info = nullptr;
    TypeLibrary& tl = typeLibrary();
    std::lock_guard<std::mutex> guard(tl.lock);
    if (!tl.loaded) {
        tl.loaded = true;
        wchar_t path[MAX_PATH * 4] = {};
        const DWORD n = GetModuleFileNameW(thisModule(), path, static_cast<DWORD>(std::size(path)));
        if (n == 0 || n >= std::size(path)) return TYPE_E_CANTLOADLIBRARY;
        LoadTypeLibEx(path, REGKIND_NONE, tl.library.put());
    }
    if (!tl.library) return TYPE_E_CANTLOADLIBRARY;
    auto it = tl.infos.find(guid);
    if (it == tl.infos.end()) {
        ComPtr<ITypeInfo> ti;
        HRESULT hr = tl.library->GetTypeInfoOfGuid(guid, ti.put());
        if (FAILED(hr)) return hr;
        // A dual interface's own entry is its dispatch side; Invoke needs
        // the vtable side behind it.
        TYPEATTR* attr = nullptr;
        if (SUCCEEDED(ti->GetTypeAttr(&attr))) {
            const bool dualDispatch =
                attr->typekind == TKIND_DISPATCH && (attr->wTypeFlags & TYPEFLAG_FDUAL);
            ti->ReleaseTypeAttr(attr);
            if (dualDispatch) {
                HREFTYPE ref = 0;
                ComPtr<ITypeInfo> vtable;
                if (SUCCEEDED(ti->GetRefTypeOfImplType(static_cast<UINT>(-1), &ref)) &&
                    SUCCEEDED(ti->GetRefTypeInfo(ref, vtable.put()))) {
                    ti = vtable;
                }
            }
        }
        it = tl.infos.emplace(guid, ti).first;
    }
    *info = ComPtr<ITypeInfo>(it->second).detach();
    return S_OK;
}

void releaseModuleTypeInfo() noexcept {
    TypeLibrary& tl = typeLibrary();
    std::lock_guard<std::mutex> guard(tl.lock);
    tl.infos.clear();
    tl.library.reset();
    tl.loaded = false;
}

}  // namespace hb::com
