#include "win/Registration.h"

#include <string>
#include <vector>

#include <olectl.h>

#include "HBAddin_h.h"
#include "common/Constants.h"
#include "win/Module.h"

namespace hb::win {

namespace {

constexpr DWORD kLoadAtStartup = 3;
// OLEMISC_RECOMPOSEONRESIZE | CANTLINKINSIDE | INSIDEOUT | ACTIVATEWHENVISIBLE
// | SETCLIENTSITEFIRST: a control that is active whenever it is shown.
constexpr wchar_t kPaneMiscStatus[] = L"131473";
constexpr wchar_t kOleAutomationProxy[] = L"{00020424-0000-0000-C000-000000000046}";
// This build's platform below a type library version's locale key.
#ifdef _WIN64
constexpr wchar_t kTypeLibPlatform[] = L"\\win64";
#else
constexpr wchar_t kTypeLibPlatform[] = L"\\win32";
#endif

std::wstring guidText(REFGUID guid) {
    wchar_t text[64] = {};
    StringFromGUID2(guid, text, 64);
    return text;
}

std::wstring wideText(const char16_t* s) {
    return std::wstring(s, s + std::char_traits<char16_t>::length(s));
}

// One value to write: key below the root, value name (empty: the default
// value), and its data.
struct Value {
    std::wstring key;
    std::wstring name;
    std::wstring text;
    bool isDword = false;
    DWORD dword = 0;
};

LONG writeValue(HKEY root, const Value& v) {
    HKEY key = nullptr;
    LONG rc = RegCreateKeyExW(root, v.key.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                              KEY_SET_VALUE, nullptr, &key, nullptr);
    if (rc != ERROR_SUCCESS) return rc;
    if (v.isDword) {
        rc = RegSetValueExW(key, v.name.empty() ? nullptr : v.name.c_str(), 0, REG_DWORD,
                            reinterpret_cast<const BYTE*>(&v.dword), sizeof v.dword);
    } else if (!v.name.empty() || !v.text.empty()) {
        rc = RegSetValueExW(key, v.name.empty() ? nullptr : v.name.c_str(), 0, REG_SZ,
                            reinterpret_cast<const BYTE*>(v.text.c_str()),
                            static_cast<DWORD>((v.text.size() + 1) * sizeof(wchar_t)));
    }
    RegCloseKey(key);
    return rc;
}

// Deletes a key when it has neither subkeys nor values; true when the key
// is gone (or was never there).
bool deleteIfEmpty(HKEY root, const std::wstring& path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return true;
    DWORD subkeys = 0, values = 0;
    const LONG rc = RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr,
                                     &values, nullptr, nullptr, nullptr, nullptr);
    RegCloseKey(key);
    return rc == ERROR_SUCCESS && subkeys == 0 && values == 0 &&
           RegDeleteKeyW(root, path.c_str()) == ERROR_SUCCESS;
}

std::wstring parentOf(const std::wstring& path) {
    const auto slash = path.rfind(L'\\');
    return slash == std::wstring::npos ? std::wstring() : path.substr(0, slash);
}

// The folder of a file, ending in a backslash as Windows Installer writes a
// folder: the MSI package writes the same help folder as this registration.
std::wstring folderOf(const std::wstring& path) {
    const auto slash = path.rfind(L'\\');
    return slash == std::wstring::npos ? std::wstring() : path.substr(0, slash + 1);
}

// The class registration, relative to the classes root.
std::vector<Value> classValues() {
    const std::wstring dll = modulePath();
    const std::wstring designer = L"CLSID\\" + guidText(CLSID_OHBAddinDesigner);
    const std::wstring pane = L"CLSID\\" + guidText(CLSID_Pane);
    const std::wstring libid = guidText(LIBID_HBAddin);
    const std::wstring library = L"TypeLib\\" + libid + L"\\1.0";
    const std::wstring paneInterface = L"Interface\\" + guidText(IID_IHBPane);
    const std::wstring designerName = wideText(kFriendlyName);
    const std::wstring paneName = designerName + L" task pane";
    const std::wstring designerProgId = kDesignerProgId;
    const std::wstring paneProgId = kPaneProgIdW;
    return {
        {designer, L"", designerName},
        {designer + L"\\InprocServer32", L"", dll},
        {designer + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
        {designer + L"\\ProgID", L"", designerProgId},
        {designer + L"\\TypeLib", L"", libid},
        {designer + L"\\Version", L"", L"1.0"},
        {designerProgId, L"", designerName},
        {designerProgId + L"\\CLSID", L"", guidText(CLSID_OHBAddinDesigner)},
        {pane, L"", paneName},
        {pane + L"\\InprocServer32", L"", dll},
        {pane + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
        {pane + L"\\ProgID", L"", paneProgId},
        {pane + L"\\TypeLib", L"", libid},
        {pane + L"\\Version", L"", L"1.0"},
        {pane + L"\\Control", L"", L""},
        {pane + L"\\MiscStatus", L"", L"0"},
        {pane + L"\\MiscStatus\\1", L"", kPaneMiscStatus},
        {paneProgId, L"", paneName},
        {paneProgId + L"\\CLSID", L"", guidText(CLSID_Pane)},
        {library, L"", designerName},
        {library + L"\\0" + kTypeLibPlatform, L"", dll},
        {library + L"\\FLAGS", L"", L"0"},
        {library + L"\\HELPDIR", L"", folderOf(dll)},
        {paneInterface, L"", L"IHBPane"},
        {paneInterface + L"\\ProxyStubClsid32", L"", kOleAutomationProxy},
        {paneInterface + L"\\TypeLib", L"", libid},
        {paneInterface + L"\\TypeLib", L"Version", L"1.0"},
    };
}

// The keys whose whole tree belongs to the add-in, relative to the classes
// root. The type library's key is not among them: the x86 and x64 builds
// share it (see removeTypeLibrary).
std::vector<std::wstring> ownedClassKeys() {
    return {
        L"CLSID\\" + guidText(CLSID_OHBAddinDesigner),
        L"CLSID\\" + guidText(CLSID_Pane),
        kDesignerProgId,
        kPaneProgIdW,
        L"Interface\\" + guidText(IID_IHBPane),
    };
}

// Removes this build's entry of the type library. The library's key is
// shared by both builds of the DLL (Windows keeps TypeLib in one view for
// 32-bit and 64-bit programs): it holds version\0\win32 beside
// version\0\win64, so only this build's platform subkey goes here, and the
// version's other values and the key itself only once no platform is left,
// so that unregistering one build never unregisters the other.
void removeTypeLibrary(HKEY root) {
    const std::wstring library = L"TypeLib\\" + guidText(LIBID_HBAddin);
    const std::wstring version = library + L"\\1.0";
    const std::wstring platforms = version + L"\\0";
    RegDeleteTreeW(root, (platforms + kTypeLibPlatform).c_str());
    if (!deleteIfEmpty(root, platforms)) return;  // the other build's is still there
    RegDeleteTreeW(root, version.c_str());
    deleteIfEmpty(root, library);
}

std::wstring addinKey() {
    return std::wstring(kOutlookAddinsKey) + L"\\" + kDesignerProgId;
}

std::wstring addinDescription() {
    return wideText(kFriendlyName) + L"\r\nFor more information please see \r\n" +
           wideText(kVendorWebAddress);
}

std::vector<Value> addinValues() {
    Value loadBehavior{addinKey(), L"LoadBehavior", L""};
    loadBehavior.isDword = true;
    loadBehavior.dword = kLoadAtStartup;
    return {
        {addinKey(), L"FriendlyName", wideText(kFriendlyName)},
        {addinKey(), L"Description", addinDescription()},
        loadBehavior,
    };
}

// The hive of the scope: the machine's for every user, or the current
// user's. Outlook reads its add-in keys from both, so a registration for the
// machine loads the add-in for every user, not only the administrator who
// registered it.
HKEY hiveOf(RegistrationScope scope) {
    return scope == RegistrationScope::Machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

// Opens the classes root of the scope (created for the user's, which a
// fresh profile may lack).
LONG openClassesRoot(RegistrationScope scope, HKEY& root) {
    return RegCreateKeyExW(hiveOf(scope), L"Software\\Classes", 0, nullptr, REG_OPTION_NON_VOLATILE,
                           KEY_ALL_ACCESS, nullptr, &root, nullptr);
}

// Removes a value of the add-in key only while it still holds what the
// add-in wrote: a load behaviour the user changed stays.
void removeAddinValue(HKEY key, const Value& v) {
    DWORD type = 0, size = 0;
    if (RegQueryValueExW(key, v.name.c_str(), nullptr, &type, nullptr, &size) != ERROR_SUCCESS)
        return;
    std::vector<BYTE> data(size + sizeof(wchar_t));
    if (RegQueryValueExW(key, v.name.c_str(), nullptr, &type, data.data(), &size) != ERROR_SUCCESS)
        return;
    bool ours = false;
    if (v.isDword) {
        ours = type == REG_DWORD && size == sizeof(DWORD) &&
               *reinterpret_cast<const DWORD*>(data.data()) == v.dword;
    } else if (type == REG_SZ) {
        const auto* text = reinterpret_cast<const wchar_t*>(data.data());
        ours = std::wstring(text, wcsnlen(text, size / sizeof(wchar_t))) == v.text;
    }
    if (ours) RegDeleteValueW(key, v.name.c_str());
}

}  // namespace

HRESULT registerServer(RegistrationScope scope) noexcept {
    try {
        if (modulePath().empty()) return SELFREG_E_CLASS;
        HKEY root = nullptr;
        if (openClassesRoot(scope, root) != ERROR_SUCCESS) return SELFREG_E_CLASS;
        LONG rc = ERROR_SUCCESS;
        for (const Value& v : classValues()) {
            rc = writeValue(root, v);
            if (rc != ERROR_SUCCESS) break;
        }
        RegCloseKey(root);
        if (rc != ERROR_SUCCESS) {
            unregisterServer(scope);
            return SELFREG_E_CLASS;
        }
        for (const Value& v : addinValues()) {
            if (writeValue(hiveOf(scope), v) != ERROR_SUCCESS) {
                unregisterServer(scope);
                return SELFREG_E_CLASS;
            }
        }
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT unregisterServer(RegistrationScope scope) noexcept {
    try {
        HKEY root = nullptr;
        const HKEY hive = hiveOf(scope);
        if (RegOpenKeyExW(hive, L"Software\\Classes", 0, KEY_ALL_ACCESS, &root) == ERROR_SUCCESS) {
            for (const std::wstring& key : ownedClassKeys())
                RegDeleteTreeW(root, key.c_str());
            removeTypeLibrary(root);
            RegCloseKey(root);
            // A user's classes keys that registration had to create (a
            // fresh profile has none); they go only when empty.
            if (scope == RegistrationScope::User) {
                for (const wchar_t* key :
                     {L"Software\\Classes\\CLSID", L"Software\\Classes\\TypeLib",
                      L"Software\\Classes\\Interface", L"Software\\Classes"})
                    deleteIfEmpty(hive, key);
            }
        }
        HKEY addin = nullptr;
        if (RegOpenKeyExW(hive, addinKey().c_str(), 0, KEY_ALL_ACCESS, &addin) == ERROR_SUCCESS) {
            for (const Value& v : addinValues())
                removeAddinValue(addin, v);
            RegCloseKey(addin);
            // The add-in's key and the Outlook keys above it go only when
            // nothing is left in them.
            for (std::wstring path = addinKey(); path != L"Software\\Microsoft";
                 path = parentOf(path))
                deleteIfEmpty(hive, path);
        }
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace hb::win
