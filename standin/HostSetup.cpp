#include "standin/HostSetup.h"

#include <shlobj.h>

#include <cstring>
#include <cwchar>
#include <map>

#include "common/Text.h"
#include "sim/Instruments.h"
#include "sim/SimObject.h"
#include "standin/OutlookServer.h"
#include "win/com/ComVariant.h"
#include "win/com/DispatchServer.h"

namespace standin {

namespace {

constexpr wchar_t kSettingsKey[] = L"Software\\Brindlewood\\Hourbook for Outlook\\Settings";

bool keyExists(HKEY root, const wchar_t* path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

void setSetting(const wchar_t* name, const std::wstring& value) {
    RegSetKeyValueW(HKEY_CURRENT_USER, kSettingsKey, name, REG_SZ, value.c_str(),
                    static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

hb::Str listSeparator() {
    wchar_t text[8] = {};
    GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SLIST, text, 8);
    return hb::com::fromWide(text, wcslen(text));
}

// ---- message boxes ----

struct Boxes {
    int count = 0;
    std::vector<std::wstring> texts;
};

Boxes& boxes() {
    static Boxes b;
    return b;
}

int WINAPI countedMessageBox(HWND, LPCWSTR text, LPCWSTR, UINT flags) {
    ++boxes().count;
    boxes().texts.emplace_back(text ? text : L"");
    const UINT buttons = flags & MB_TYPEMASK;
    return buttons == MB_YESNO || buttons == MB_YESNOCANCEL ? IDNO : IDOK;
}

}  // namespace

void serveSimulatedOutlook() {
    hb::com::installDispatchServer([](const hb::Object& object) {
        if (const auto* handle = dynamic_cast<const sim::Handle*>(&object))
            return handle->target()->members().memberNames();
        return std::vector<hb::Str>{};
    });
}

void writeSettings(const std::wstring& metadataList) {
    wchar_t documents[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, 0, documents);
    // The report program keeps its records in a database file in this
    // folder; a user's report folder exists (the settings program makes it).
    const std::wstring reports = std::wstring(documents) + L"\\My Hourbooks\\";
    CreateDirectoryW(reports.c_str(), nullptr);
    setSetting(L"ReportChoice", L"2");
    setSetting(L"ReportValue", reports);
    setSetting(L"PersonalRate", L"85");
    for (const wchar_t* name : {L"FilterEvents", L"FilterPrivate", L"FilterRecurring", L"Convert24",
                                L"RemoveLunch", L"CreateLocalCube", L"StartGrid", L"WriteSubject"})
        setSetting(name, L"False");
    setSetting(L"Convert24Hours", L"8");
    setSetting(L"RemoveLunchHours", L"0.75");
    setSetting(L"MetadataList", metadataList);
}

MachineState::MachineState()
    : hadSettings_(keyExists(HKEY_CURRENT_USER, L"Software\\Brindlewood")),
      hadOutlookClass_(keyExists(HKEY_CLASSES_ROOT, L"Outlook.Application")) {}

MachineState::~MachineState() {
    if (!hadSettings_) {
        RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Brindlewood");
        RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\Brindlewood");
    }
    if (!hadOutlookClass_) {
        RegDeleteTreeW(HKEY_CLASSES_ROOT, L"Outlook.Application");
        RegDeleteKeyW(HKEY_CLASSES_ROOT, L"Outlook.Application");
    }
}

hb::Str versionText(int major) {
    static const std::map<int, const char16_t*> builds = {
        {9, u"9.0.0.2711"},      {10, u"10.0.0.2627"},    {11, u"11.0.8217"},
        {12, u"12.0.4518.1014"}, {14, u"14.0.4760.1000"}, {15, u"15.0.4420.1017"},
        {16, u"16.0.4266.1001"}};
    auto it = builds.find(major);
    return it != builds.end() ? hb::Str(it->second)
                              : hb::fromUtf8(std::to_string(major) + ".0.0.0");
}

void furnishOutlook(sim::Outlook& o, int version) {
    o.version = versionText(version);
    o.listSeparator = listSeparator();
    o.addStore(u"Mailbox - John Smith");
    auto calendar = o.calendar();
    (void)o.inbox();
    // Today's work: the report program's window opens on this month.
    SYSTEMTIME now{};
    GetLocalTime(&now);
    const auto at = [&now](int hour) {
        return sim::makeDate(now.wYear, now.wMonth, now.wDay, hour);
    };
    calendar->addAppointment(u"Project kickoff", at(9), at(10));
    calendar->addAppointment(u"Client call", at(11), at(12), u"Globex, Jones");
    calendar->addAppointment(u"Code review", at(14), at(15));
}

RunningOutlook::RunningOutlook(sim::Scenario& sc) {
    RegSetKeyValueW(HKEY_CLASSES_ROOT, (std::wstring(kOutlookProgId) + L"\\CLSID").c_str(), nullptr,
                    REG_SZ, kOutlookClsid, sizeof kOutlookClsid);
    RegisterActiveObject(servedApplication(sc, u"GetObject").get(), outlookClassId(),
                         ACTIVEOBJECT_STRONG, &cookie_);
}

RunningOutlook::~RunningOutlook() {
    if (cookie_) RevokeActiveObject(cookie_, nullptr);
}

bool MessageBoxCounter::attach(HMODULE module) {
    if (!module) return false;
    auto* base = reinterpret_cast<BYTE*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& imports =
        nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (!imports.VirtualAddress) return false;
    for (auto* d = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
         d->Name; ++d) {
        if (_stricmp(reinterpret_cast<const char*>(base + d->Name), "user32.dll") != 0) continue;
        auto* names = reinterpret_cast<IMAGE_THUNK_DATA*>(
            base + (d->OriginalFirstThunk ? d->OriginalFirstThunk : d->FirstThunk));
        auto* slots = reinterpret_cast<IMAGE_THUNK_DATA*>(base + d->FirstThunk);
        for (; names->u1.AddressOfData; ++names, ++slots) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
            const auto* byName =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(byName->Name), "MessageBoxW") != 0)
                continue;
            DWORD protection = 0;
            if (!VirtualProtect(&slots->u1.Function, sizeof slots->u1.Function, PAGE_READWRITE,
                                &protection))
                return false;
            slots->u1.Function = reinterpret_cast<ULONG_PTR>(&countedMessageBox);
            VirtualProtect(&slots->u1.Function, sizeof slots->u1.Function, protection, &protection);
            return true;
        }
    }
    return false;
}

int MessageBoxCounter::count() {
    return boxes().count;
}

const std::vector<std::wstring>& MessageBoxCounter::texts() {
    return boxes().texts;
}

void MessageBoxCounter::reset() {
    boxes() = Boxes{};
}

Census takeCensus(sim::Scenario& sc) {
    return Census{hb::com::liveExportedObjects(), hb::com::liveServerConnections(),
                  sc.instruments().census()};
}

double millisecondsSince(const LARGE_INTEGER& start) {
    LARGE_INTEGER now, frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return 1000.0 * static_cast<double>(now.QuadPart - start.QuadPart) /
           static_cast<double>(frequency.QuadPart);
}

HRESULT addinCanUnloadNow() {
    using CanUnloadFn = HRESULT(STDAPICALLTYPE*)();
    HMODULE dll = GetModuleHandleW(L"HBAddin.dll");
    if (!dll) return S_OK;
    auto canUnload = reinterpret_cast<CanUnloadFn>(
        reinterpret_cast<void (*)()>(GetProcAddress(dll, "DllCanUnloadNow")));
    return canUnload ? canUnload() : E_FAIL;
}

}  // namespace standin
