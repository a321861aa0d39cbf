// hb_selfcheck.exe: the Windows self-checks of the main job. Loads
// HBAddin.dll from its own folder, reads its version record, checks its COM
// entry points and its LANGUAGE resource, and exercises the read-only
// services of the Win32 platform. Prints what it verified; the exit code is
// the number of failed checks (0: all passed).
// The platform headers before windows.h: Platform.h's hb::win constants
// carry the names of Windows macros. Below, the Windows macros are used.
#include "hb_build.h"
#include "platform/win32/Win32Platform.h"

#include <windows.h>

#include <cstdio>
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
    const std::string version = num(v.major) + "." + num(v.minor) + "." + num(v.revision);
    check(v.major == 4 && v.minor == 0 && v.revision == HB_VERSION_PATCH,
          "VERSIONINFO file version", version);
    {
        const std::wstring file = dllPath;
        DWORD handle = 0;
        const DWORD size = GetFileVersionInfoSizeW(file.c_str(), &handle);
        std::vector<char> data(size);
        void* text = nullptr;
        UINT length = 0;
        std::wstring product;
        if (size != 0 && GetFileVersionInfoW(file.c_str(), 0, size, data.data()) &&
            VerQueryValueW(data.data(), L"\\StringFileInfo\\040904B0\\ProductName", &text, &length))
            product = static_cast<const wchar_t*>(text);
        check(product == L"Hourbook for Outlook v4", "VERSIONINFO product name",
              u8(Str(product.begin(), product.end())));
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
    const auto language = addin.resource(u"CUSTOM", u"LANGUAGE");
    check(language.has_value(), "resource CUSTOM/LANGUAGE present",
          language ? num(static_cast<long long>(language->size())) + " bytes" : "");
    if (language) {
        const auto& b = *language;
        check(b.size() >= 2 && b[0] == 0xFF && b[1] == 0xFE, "LANGUAGE starts with FF FE");
        const std::size_t n = b.size();
        check(n % 2 == 0 && n >= 6 && b[n - 4] == '\r' && b[n - 3] == 0 && b[n - 2] == '\n' &&
                  b[n - 1] == 0,
              "LANGUAGE is UTF-16LE ending with CR LF");
        // Lines and fields.
        Str text;
        for (std::size_t i = 2; i + 1 < n; i += 2)
            text.push_back(static_cast<char16_t>(b[i] | (b[i + 1] << 8)));
        long lines = 0;
        long bad = 0;
        std::size_t start = 0;
        for (;;) {
            const auto end = text.find(u"\r\n", start);
            if (end == Str::npos) break;
            const Str line = text.substr(start, end - start);
            long tabs = 0;
            for (char16_t c : line)
                tabs += c == u'\t';
            if (tabs != 16) ++bad;
            ++lines;
            start = end + 2;
        }
        check(lines > 0 && bad == 0 && start == text.size(), "LANGUAGE has 17 fields on every line",
              num(lines) + " phrases");
    }

    // ---- read-only platform services
    Win32Platform p;
    check(!addin.moduleFolder().empty(), "module folder", u8(addin.moduleFolder()));
    const auto docs = p.specialFolder(win::CSIDL_PERSONAL);
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
    out("hb_selfcheck: " + num(passed) + " checks passed, " + num(failed) + " failed");
    return failed;
}
