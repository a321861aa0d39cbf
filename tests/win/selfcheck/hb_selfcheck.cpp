// hb_selfcheck.exe: the Windows self-checks of the main job. Loads
// HBAddin.dll from its own folder, reads its version record, checks its COM
// entry points and its LANGUAGE resource, and exercises the read-only
// services of the Win32 platform. Further arguments name other builds of the
// DLL (the x86 one, which Debian's wine64 cannot load as code): their
// machine type, version record and LANGUAGE resource are read as data.
// Prints what it verified; the exit code is the number of failed checks
// (0: all passed).

// The platform headers before windows.h: Platform.h's hb::win constants
// carry the names of Windows macros. Below, the Windows macros are used.
#include "hb_build.h"
#include "platform/win32/Win32Platform.h"

#include <windows.h>

#include <shellapi.h>

#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace {

int passed = 0;
int failed = 0;

void out(const std::string& line) {
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

void check(bool ok, const std::string& what, const std::string& detail = std::string()) {
    (ok ? passed : failed) += 1;
    out(std::string(ok ? "  [ok]   " : "  [FAIL] ") + what + (detail.empty() ? "" : ": " + detail));
}

std::string u8(const hb::Str& s) {
    return hb::toUtf8(s);
}

std::string num(long long v) {
    return std::to_string(v);
}

std::string hex(unsigned long v) {
    char b[16];
    std::snprintf(b, sizeof b, "0x%lX", v);
    return b;
}

// The machine type of a PE file: "x64", "x86" or what was found.
std::string machineOf(const std::wstring& file) {
    HANDLE h = CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0,
                           nullptr);
    if (h == INVALID_HANDLE_VALUE) return "unreadable";
    unsigned char head[4096] = {};
    DWORD got = 0;
    ReadFile(h, head, sizeof head, &got, nullptr);
    CloseHandle(h);
    if (got < 0x40 || head[0] != 'M' || head[1] != 'Z') return "no PE file";
    const DWORD pe = head[0x3C] | (head[0x3D] << 8) | (head[0x3E] << 16) | (head[0x3F] << 24);
    if (pe + 6 > got || std::memcmp(head + pe, "PE\0\0", 4) != 0) return "no PE file";
    const unsigned machine = head[pe + 4] | (head[pe + 5] << 8);
    if (machine == 0x8664) return "x64";
    if (machine == 0x14C) return "x86";
    return hex(machine);
}

// The version record of a module file: fixed file version and product name.
bool versionOf(const std::wstring& file, hb::ModuleVersion& version, std::wstring& product) {
    DWORD handle = 0;
    const DWORD size = GetFileVersionInfoSizeW(file.c_str(), &handle);
    if (size == 0) return false;
    std::vector<char> data(size);
    if (!GetFileVersionInfoW(file.c_str(), 0, size, data.data())) return false;
    void* block = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(data.data(), L"\\", &block, &length) || length < sizeof(VS_FIXEDFILEINFO))
        return false;
    VS_FIXEDFILEINFO info;
    std::memcpy(&info, block, sizeof info);
    version.major = HIWORD(info.dwFileVersionMS);
    version.minor = LOWORD(info.dwFileVersionMS);
    version.revision = HIWORD(info.dwFileVersionLS);
    if (VerQueryValueW(data.data(), L"\\StringFileInfo\\040904B0\\ProductName", &block, &length))
        product = static_cast<const wchar_t*>(block);
    return true;
}

std::string versionText(const hb::ModuleVersion& v) {
    return num(v.major) + "." + num(v.minor) + "." + num(v.revision);
}

// Checks the LANGUAGE resource's bytes: BOM, UTF-16LE, CR LF, 17 fields.
void checkLanguage(const std::optional<std::vector<std::uint8_t>>& language,
                   const std::string& who) {
    check(language.has_value(), who + "resource CUSTOM/LANGUAGE present",
          language ? num(static_cast<long long>(language->size())) + " bytes" : "");
    if (!language) return;
    const auto& b = *language;
    check(b.size() >= 2 && b[0] == 0xFF && b[1] == 0xFE, who + "LANGUAGE starts with FF FE");
    const std::size_t n = b.size();
    check(n % 2 == 0 && n >= 6 && b[n - 4] == '\r' && b[n - 3] == 0 && b[n - 2] == '\n' &&
              b[n - 1] == 0,
          who + "LANGUAGE is UTF-16LE ending with CR LF");
    hb::Str text;
    for (std::size_t i = 2; i + 1 < n; i += 2)
        text.push_back(static_cast<char16_t>(b[i] | (b[i + 1] << 8)));
    long lines = 0;
    long bad = 0;
    std::size_t start = 0;
    for (;;) {
        const auto end = text.find(u"\r\n", start);
        if (end == hb::Str::npos) break;
        long tabs = 0;
        for (std::size_t i = start; i < end; ++i)
            tabs += text[i] == u'\t';
        if (tabs != 16) ++bad;
        ++lines;
        start = end + 2;
    }
    check(lines > 0 && bad == 0 && start == text.size(),
          who + "LANGUAGE has 17 fields on every line", num(lines) + " phrases");
}

// Another build of the DLL, read as data only.
void checkOtherDll(const std::wstring& file) {
    const std::string name = u8(hb::Str(file.begin(), file.end()));
    out("Other build: " + name);
    const std::string machine = machineOf(file);
    check(machine == "x64" || machine == "x86", "machine type", machine);
    hb::ModuleVersion v;
    std::wstring product;
    const bool ok = versionOf(file, v, product);
    check(ok && v.major == 4 && v.minor == 0 && v.revision == HB_VERSION_PATCH,
          "VERSIONINFO file version", versionText(v));
    check(product == L"Hourbook for Outlook v4", "VERSIONINFO product name",
          u8(hb::Str(product.begin(), product.end())));
    HMODULE data = LoadLibraryExW(file.c_str(), nullptr,
                                  LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
    // A 32-bit Wine maps no 64-bit image, not even for its resources; the
    // file read flat as data serves resource lookups all the same.
    if (data == nullptr) data = LoadLibraryExW(file.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    check(data != nullptr, "loads as a resource file");
    if (data == nullptr) return;
    hb::Win32Platform resources(data);
    checkLanguage(resources.resource(u"CUSTOM", u"LANGUAGE"), "");
    FreeLibrary(data);
}

}  // namespace

int main() {
    using namespace hb;
    out("Hourbook for Outlook: Windows self-check (" +
        std::string(sizeof(void*) == 8 ? "x64" : "x86") + ")");

    // ---- HBAddin.dll from this program's folder
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    std::wstring dllPath(self);
    dllPath.resize(dllPath.find_last_of(L'\\') + 1);
    dllPath += L"HBAddin.dll";
    HMODULE dll = LoadLibraryW(dllPath.c_str());
    check(dll != nullptr, "HBAddin.dll loads", u8(Str(dllPath.begin(), dllPath.end())));
    if (dll == nullptr) {
        out("hb_selfcheck: " + num(passed) + " checks passed, " + num(failed) + " failed");
        return 1;
    }
    Win32Platform addin(dll);

    // ---- version record
    const ModuleVersion v = addin.addinVersion();
    check(v.major == 4 && v.minor == 0 && v.revision == HB_VERSION_PATCH,
          "VERSIONINFO file version (Platform::addinVersion)", versionText(v));
    {
        ModuleVersion fv;
        std::wstring product;
        versionOf(dllPath, fv, product);
        check(product == L"Hourbook for Outlook v4", "VERSIONINFO product name",
              u8(Str(product.begin(), product.end())));
        check(machineOf(dllPath) == (sizeof(void*) == 8 ? "x64" : "x86"), "machine type",
              machineOf(dllPath));
    }

    // ---- COM entry points
    const char* entries[] = {"DllGetClassObject", "DllCanUnloadNow", "DllRegisterServer",
                             "DllUnregisterServer"};
    for (const char* name : entries)
        check(GetProcAddress(dll, name) != nullptr, std::string("export ") + name);
    using CanUnload = HRESULT(__stdcall*)();
    using GetClassObject = HRESULT(__stdcall*)(REFCLSID, REFIID, void**);
    auto canUnload = reinterpret_cast<CanUnload>(
        reinterpret_cast<void*>(GetProcAddress(dll, "DllCanUnloadNow")));
    auto getClass = reinterpret_cast<GetClassObject>(
        reinterpret_cast<void*>(GetProcAddress(dll, "DllGetClassObject")));
    if (canUnload != nullptr) check(canUnload() == S_OK, "DllCanUnloadNow() is S_OK");
    if (getClass != nullptr) {
        void* factory = reinterpret_cast<void*>(1);
        const HRESULT hr = getClass(IID_IUnknown, IID_IClassFactory, &factory);
        check(hr == CLASS_E_CLASSNOTAVAILABLE && factory == nullptr,
              "DllGetClassObject(unknown class) is CLASS_E_CLASSNOTAVAILABLE",
              hex(static_cast<unsigned long>(hr)));
    }

    // ---- the LANGUAGE resource
    checkLanguage(addin.resource(u"CUSTOM", u"LANGUAGE"), "");
    check(addin.resource(u"custom", u"language").has_value() &&
              !addin.resource(u"CUSTOM", u"NOSUCH").has_value(),
          "resource names in any letter case; a missing one is none");

    // ---- read-only platform services
    Win32Platform p;
    check(addin.fileExists(addin.moduleFolder() + u"\\HBAddin.dll"), "module folder",
          u8(addin.moduleFolder()));
    const auto docs = p.specialFolder(win::CsidlPersonal);
    check(docs && !docs->empty() && p.folderExists(*docs), "documents folder (CSIDL 5)",
          docs ? u8(*docs) : "");
    Str sep;
    const auto len = p.localeInfo(LOCALE_USER_DEFAULT, LOCALE_SLIST, sep);
    check(len == static_cast<std::int32_t>(sep.size()) + 1 && !sep.empty(),
          "list separator (GetLocaleInfo 0x400, 12)", "\"" + u8(sep) + "\"");
    const auto lcid = p.systemDefaultLcid();
    check(lcid != 0, "system default locale", hex(lcid));
    const Locale loc = p.userLocale();
    check(!loc.decimalSeparator.empty() && !loc.shortDate.empty(), "user locale",
          "decimal \"" + u8(loc.decimalSeparator) + "\", thousands \"" + u8(loc.thousandSeparator) +
              "\", short date " + u8(loc.shortDate) + ", time " + u8(loc.longTime));
    const WindowsVersion w = p.windowsVersion();
    check(w.ok && w.platformId == 2, "Windows version (GetVersionEx)",
          "platform " + num(w.platformId) + ", " + num(w.major) + "." + num(w.minor));
    const double now = p.now();
    check(now > 36526.0, "clock as a date value", std::to_string(now));
    const Str windir = p.expandEnvironment(u"%WINDIR%");
    check(!windir.empty() && windir != u"%WINDIR%", "environment expansion",
          "%WINDIR% = " + u8(windir));

    FreeLibrary(dll);

    // ---- other builds named on the command line
    int argc = 0;
    wchar_t** argv = CommandLineToArgvW(GetCommandLineW(), &argc);
    for (int i = 1; argv != nullptr && i < argc; ++i)
        checkOtherDll(argv[i]);
    if (argv != nullptr) LocalFree(argv);

    out("hb_selfcheck: " + num(passed) + " checks passed, " + num(failed) + " failed");
    return failed;
}
