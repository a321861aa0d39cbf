// The Platform services on Windows. Every call uses the wide-character (W)
// API: texts cross as UTF-16 both ways, so registry values, paths and
// messages round-trip exactly whatever the system's ANSI code page is. Only
// text files are read and written in the system default (ANSI) code page, as
// the scripting run time's text streams do.
#include "platform/win32/Win32Platform.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// windows.h first: the headers below rely on its types.
#include <oleauto.h>
#include <olectl.h>
#include <shellapi.h>
#include <shlobj.h>
#include <winver.h>

#include <cstring>
#include <string>

#include "common/AutomationError.h"
#include "common/Text.h"
#include "win/com/DispatchClient.h"

namespace hb {

namespace {

static_assert(sizeof(wchar_t) == sizeof(char16_t), "Windows wide characters are UTF-16 code units");

std::wstring wide(StrView text) {
    return std::wstring(text.begin(), text.end());
}

Str fromWide(const wchar_t* text, std::size_t length) {
    return Str(text, text + length);
}

Str fromWide(const std::wstring& text) {
    return fromWide(text.data(), text.size());
}

HKEY hkey(RegKey key) {
    return reinterpret_cast<HKEY>(key);
}

// The system's description of a Win32 error code, without the final CR LF.
Str systemMessage(DWORD code) {
    wchar_t* buffer = nullptr;
    const DWORD n = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, code, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    Str text;
    if (n != 0 && buffer != nullptr) {
        text = fromWide(buffer, n);
        while (!text.empty() &&
               (text.back() == u'\r' || text.back() == u'\n' || text.back() == u' '))
            text.pop_back();
    }
    if (buffer != nullptr) LocalFree(buffer);
    if (text.empty()) text = u"Automation error";
    return text;
}

// Raises the automation error that the shell's Run raises for a failed start:
// the HRESULT of the Win32 error as the number.
[[noreturn]] void raiseWin32(DWORD code) {
    if (code == 0) code = ERROR_FILE_NOT_FOUND;
    raise(static_cast<std::int32_t>(HRESULT_FROM_WIN32(code)), systemMessage(code));
}

// Any address inside this module, to find the module that holds this code.
void moduleAnchor() {}

HMODULE moduleHoldingThisCode() {
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            reinterpret_cast<LPCWSTR>(reinterpret_cast<void*>(&moduleAnchor)), &module))
        return nullptr;
    return module;
}

// Multi-byte text in the system default ANSI code page to UTF-16.
Str fromAnsi(const char* data, std::size_t size) {
    if (size == 0) return Str();
    const int n = MultiByteToWideChar(CP_ACP, 0, data, static_cast<int>(size), nullptr, 0);
    if (n <= 0) return Str();
    std::wstring buffer(static_cast<std::size_t>(n), L'\0');
    MultiByteToWideChar(CP_ACP, 0, data, static_cast<int>(size), buffer.data(), n);
    return fromWide(buffer);
}

std::string toAnsi(StrView text) {
    if (text.empty()) return std::string();
    const std::wstring w = wide(text);
    const int n = WideCharToMultiByte(CP_ACP, 0, w.data(), static_cast<int>(w.size()), nullptr, 0,
                                      nullptr, nullptr);
    if (n <= 0) return std::string();
    std::string buffer(static_cast<std::size_t>(n), '\0');
    WideCharToMultiByte(CP_ACP, 0, w.data(), static_cast<int>(w.size()), buffer.data(), n, nullptr,
                        nullptr);
    return buffer;
}

// Closes a file handle at the end of a scope.
struct FileHandle {
    HANDLE h;
    explicit FileHandle(HANDLE handle) : h(handle) {}
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle() {
        if (ok()) CloseHandle(h);
    }
    bool ok() const { return h != INVALID_HANDLE_VALUE && h != nullptr; }
};

bool startsWithNoCase(StrView text, StrView prefix) {
    if (text.size() < prefix.size()) return false;
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        char16_t c = text[i];
        if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - u'a' + u'A');
        if (c != prefix[i]) return false;
    }
    return true;
}

}  // namespace

Win32Platform::Win32Platform(void* module)
    : module_(module != nullptr ? module : static_cast<void*>(moduleHoldingThisCode())) {}

// ---------------------------------------------------------------- registry

std::int32_t Win32Platform::regCreateKey(const Str& path, RegKey& key) {
    HKEY h = nullptr;
    const LONG r = RegCreateKeyExW(HKEY_CURRENT_USER, wide(path).c_str(), 0, nullptr,
                                   REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &h, nullptr);
    key = r == ERROR_SUCCESS ? reinterpret_cast<RegKey>(h) : RegKey{0};
    return r;
}

std::int32_t Win32Platform::regOpenKey(const Str& path, RegKey& key) {
    HKEY h = nullptr;
    const LONG r = RegOpenKeyExW(HKEY_CURRENT_USER, wide(path).c_str(), 0, KEY_READ, &h);
    key = r == ERROR_SUCCESS ? reinterpret_cast<RegKey>(h) : RegKey{0};
    return r;
}

std::int32_t Win32Platform::regQueryValue(RegKey key, const Str& name, RegValue& value) {
    value = RegValue{};
    const std::wstring wname = wide(name);
    // First without a buffer to learn the type and the size in bytes.
    DWORD type = 0;
    DWORD size = 0;
    LONG r = RegQueryValueExW(hkey(key), wname.c_str(), nullptr, &type, nullptr, &size);
    if (r != ERROR_SUCCESS) return r;
    std::vector<BYTE> data;
    for (int attempt = 0; attempt < 4; ++attempt) {
        data.assign(static_cast<std::size_t>(size) + sizeof(wchar_t), 0);
        DWORD got = size;
        r = RegQueryValueExW(hkey(key), wname.c_str(), nullptr, &type, data.data(), &got);
        if (r == ERROR_MORE_DATA) {
            size = got;
            continue;
        }
        if (r != ERROR_SUCCESS) return r;
        size = got;
        break;
    }
    if (r != ERROR_SUCCESS) return r;

    value.type = type;
    value.sizeBytes = size;
    if (type == REG_SZ || type == REG_EXPAND_SZ) {
        std::size_t chars = size / sizeof(wchar_t);
        Str text(chars, u'\0');
        std::memcpy(text.data(), data.data(), chars * sizeof(char16_t));
        // The data normally carries its terminating zero; a value written
        // without one reads back whole.
        if (!text.empty() && text.back() == u'\0') text.pop_back();
        value.text = std::move(text);
    } else if (type == REG_DWORD && size >= sizeof(DWORD)) {
        DWORD d = 0;
        std::memcpy(&d, data.data(), sizeof d);
        value.dword = d;
    }
    return ERROR_SUCCESS;
}

std::int32_t Win32Platform::regSetString(RegKey key, const Str& name, const Str& value) {
    const std::wstring data = wide(value);
    // The size counts the terminating zero, so the text reads back unchanged.
    const DWORD size = static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t));
    return RegSetValueExW(hkey(key), wide(name).c_str(), 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(data.c_str()), size);
}

std::int32_t Win32Platform::regSetDword(RegKey key, const Str& name, std::uint32_t value) {
    const DWORD d = value;
    return RegSetValueExW(hkey(key), wide(name).c_str(), 0, REG_DWORD,
                          reinterpret_cast<const BYTE*>(&d), sizeof d);
}

std::int32_t Win32Platform::regDeleteValue(RegKey key, const Str& name) {
    return RegDeleteValueW(hkey(key), wide(name).c_str());
}

std::int32_t Win32Platform::regDeleteTree(const Str& path) {
    // With a subkey named, RegDeleteTree removes that key itself too.
    if (path.empty()) return ERROR_INVALID_PARAMETER;  // never the whole HKEY_CURRENT_USER
    return RegDeleteTreeW(HKEY_CURRENT_USER, wide(path).c_str());
}

void Win32Platform::regCloseKey(RegKey key) {
    if (key != 0) RegCloseKey(hkey(key));
}

std::int32_t Win32Platform::regKeyWriteTime(RegKey key, std::uint64_t& stamp) {
    FILETIME written{};
    const LONG r = RegQueryInfoKeyW(hkey(key), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    nullptr, nullptr, nullptr, nullptr, &written);
    stamp = (static_cast<std::uint64_t>(written.dwHighDateTime) << 32) | written.dwLowDateTime;
    return r;
}

// ---------------------------------------------------------------- folders and files

std::optional<Str> Win32Platform::specialFolder(int csidl) {
    wchar_t buffer[MAX_PATH + 1] = {};
    const HRESULT hr = SHGetFolderPathW(nullptr, csidl | CSIDL_FLAG_PER_USER_INIT, nullptr,
                                        SHGFP_TYPE_CURRENT, buffer);
    if (hr != S_OK) return std::nullopt;
    return fromWide(buffer, lstrlenW(buffer));
}

bool Win32Platform::fileExists(const Str& path) {
    const DWORD a = GetFileAttributesW(wide(path).c_str());
    return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool Win32Platform::folderExists(const Str& path) {
    const DWORD a = GetFileAttributesW(wide(path).c_str());
    return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool Win32Platform::createFolder(const Str& path) {
    // Like the file-system object's CreateFolder: false when it cannot be
    // created, also when it exists already.
    return CreateDirectoryW(wide(path).c_str(), nullptr) != 0;
}

std::optional<Str> Win32Platform::readTextFile(const Str& path) {
    FileHandle f(CreateFileW(wide(path).c_str(), GENERIC_READ,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                             OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!f.ok()) return std::nullopt;
    std::string bytes;
    char chunk[8192];
    for (;;) {
        DWORD got = 0;
        if (!ReadFile(f.h, chunk, sizeof chunk, &got, nullptr)) return std::nullopt;
        if (got == 0) break;
        bytes.append(chunk, got);
    }
    return hb::fromAnsi(bytes.data(), bytes.size());
}

bool Win32Platform::appendLine(const Str& path, const Str& line) {
    FileHandle f(CreateFileW(wide(path).c_str(), FILE_APPEND_DATA,
                             FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                             FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!f.ok()) return false;
    const std::string bytes = toAnsi(line) + "\r\n";
    DWORD written = 0;
    return WriteFile(f.h, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
           written == bytes.size();
}

Str Win32Platform::modulePath() const {
    std::wstring buffer(MAX_PATH, L'\0');
    for (;;) {
        const DWORD n = GetModuleFileNameW(static_cast<HMODULE>(module_), buffer.data(),
                                           static_cast<DWORD>(buffer.size()));
        if (n == 0) return Str();
        if (n < buffer.size()) return fromWide(buffer.data(), n);
        buffer.resize(buffer.size() * 2);
    }
}

Str Win32Platform::fromAnsi(const std::vector<std::uint8_t>& bytes) {
    return hb::fromAnsi(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

Str Win32Platform::moduleFolder() {
    Str path = modulePath();
    const auto slash = path.find_last_of(u"\\/");
    if (slash == Str::npos) return Str();
    // A module in a drive's root keeps its backslash ("C:\"), as App.Path does.
    if (slash == 2 && path[1] == u':') return path.substr(0, 3);
    return path.substr(0, slash);
}

std::optional<std::vector<std::uint8_t>> Win32Platform::resource(const Str& type, const Str& name) {
    const HMODULE module = static_cast<HMODULE>(module_);
    const HRSRC found = FindResourceW(module, wide(name).c_str(), wide(type).c_str());
    if (found == nullptr) return std::nullopt;
    const DWORD size = SizeofResource(module, found);
    const HGLOBAL loaded = LoadResource(module, found);
    if (loaded == nullptr) return std::nullopt;
    const auto* data = static_cast<const std::uint8_t*>(LockResource(loaded));
    if (data == nullptr) {
        if (size != 0) return std::nullopt;
        return std::vector<std::uint8_t>();
    }
    return std::vector<std::uint8_t>(data, data + size);
}

// ---------------------------------------------------------------- components and objects

bool Win32Platform::createComponent(ScriptComponent) {
    // The scripting components (file-system object, dictionary, shell) are
    // native C++ in this add-in: they cannot go missing.
    return true;
}

// GetObject for a running server and CreateObject, by ProgID, as the run
// time makes them: the class from the ProgID, then the running object or a
// new one, as an automation object. A class that is not registered, or no
// running object, raises 429 as the run time does.
namespace {

CLSID classOf(const Str& progId) {
    CLSID clsid{};
    if (FAILED(CLSIDFromProgID(wide(progId).c_str(), &clsid))) raise(429);
    return clsid;
}

Variant automationObject(IUnknown* unknown) {
    com::ComPtr<IDispatch> dispatch = com::ComPtr<IUnknown>::adopt(unknown).as<IDispatch>();
    if (!dispatch)
        raise(430, u"Class does not support Automation or does not support expected interface");
    return Variant(com::DispatchClient::wrap(dispatch.get()));
}

}  // namespace

namespace {

// A 32 x 32 image of the command's initial in white on a colour of its own.
HBITMAP drawnImage(const Str& name) {
    constexpr int kSize = 32;
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = kSize;
    info.bmiHeader.biHeight = kSize;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (!bitmap) return nullptr;
    HDC dc = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(dc, bitmap);
    const COLORREF colour = name == u"REPORT"       ? RGB(43, 87, 154)
                            : name == u"STATISTICS" ? RGB(33, 115, 70)
                                                    : RGB(96, 96, 96);
    HBRUSH brush = CreateSolidBrush(colour);
    const RECT all{0, 0, kSize, kSize};
    FillRect(dc, &all, brush);
    DeleteObject(brush);
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, RGB(255, 255, 255));
    const std::wstring initial = name.empty() ? L"?" : std::wstring(1, name[0]);
    RECT text = all;
    DrawTextW(dc, initial.c_str(), 1, &text, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    SelectObject(dc, old);
    DeleteDC(dc);
    return bitmap;
}

}  // namespace

Variant Win32Platform::picture(const Str& name) {
    const std::wstring id = wide(name);
    HBITMAP bitmap = static_cast<HBITMAP>(LoadImageW(static_cast<HMODULE>(module_), id.c_str(),
                                                     IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION));
    if (!bitmap) bitmap = drawnImage(name);
    if (!bitmap) return Variant::nothing();
    PICTDESC desc{};
    desc.cbSizeofstruct = sizeof desc;
    desc.picType = PICTYPE_BITMAP;
    desc.bmp.hbitmap = bitmap;
    IUnknown* picture = nullptr;
    // The picture owns the bitmap from here on.
    if (FAILED(OleCreatePictureIndirect(&desc, IID_IPictureDisp, TRUE,
                                        reinterpret_cast<void**>(&picture))) ||
        !picture) {
        DeleteObject(bitmap);
        return Variant::nothing();
    }
    return automationObject(picture);
}

Variant Win32Platform::getActiveObject(const Str& progId) {
    IUnknown* unknown = nullptr;
    if (FAILED(GetActiveObject(classOf(progId), nullptr, &unknown)) || !unknown) raise(429);
    return automationObject(unknown);
}

Variant Win32Platform::createObject(const Str& progId) {
    IUnknown* unknown = nullptr;
    if (FAILED(CoCreateInstance(classOf(progId), nullptr,
                                CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER, IID_IUnknown,
                                reinterpret_cast<void**>(&unknown))) ||
        !unknown)
        raise(429);
    return automationObject(unknown);
}

// ---------------------------------------------------------------- user interface and processes

namespace {

constexpr int kPickerSearch = 101;
constexpr int kPickerList = 102;
constexpr wchar_t kPickerClass[] = L"HourbookPicker";

struct Picker {
    const std::vector<Str>* entries = nullptr;
    std::vector<std::size_t> shown;  // the entries listed, by position
    std::optional<Str> chosen;
    bool done = false;
    HWND search = nullptr, list = nullptr;

    void filter() {
        wchar_t typed[256] = {};
        GetWindowTextW(search, typed, 256);
        const Str needle = text::lower(Str(typed, typed + wcslen(typed)));
        SendMessageW(list, WM_SETREDRAW, FALSE, 0);
        SendMessageW(list, LB_RESETCONTENT, 0, 0);
        shown.clear();
        for (std::size_t i = 0; i < entries->size(); ++i) {
            const Str& entry = (*entries)[i];
            if (!needle.empty() && text::lower(entry).find(needle) == Str::npos) continue;
            shown.push_back(i);
            SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(wide(entry).c_str()));
        }
        SendMessageW(list, LB_SETCURSEL, 0, 0);
        SendMessageW(list, WM_SETREDRAW, TRUE, 0);
    }
    void pick() {
        const LRESULT at = SendMessageW(list, LB_GETCURSEL, 0, 0);
        if (at == LB_ERR || static_cast<std::size_t>(at) >= shown.size()) return;
        chosen = (*entries)[shown[static_cast<std::size_t>(at)]];
        done = true;
    }
};

LRESULT CALLBACK pickerProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    auto* picker = reinterpret_cast<Picker*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    if (picker && msg == WM_COMMAND) {
        const int id = LOWORD(wp);
        if (id == kPickerSearch && HIWORD(wp) == EN_CHANGE) picker->filter();
        if (id == IDOK || (id == kPickerList && HIWORD(wp) == LBN_DBLCLK)) picker->pick();
        if (id == IDCANCEL) picker->done = true;
        return 0;
    }
    if (picker && msg == WM_CLOSE) {
        picker->done = true;
        return 0;
    }
    return DefWindowProcW(hwnd, msg, wp, lp);
}

}  // namespace

std::optional<Str> Win32Platform::pickFromList(const Str& title, const std::vector<Str>& entries) {
    static const bool registered = [] {
        WNDCLASSW wc{};
        wc.lpfnWndProc = pickerProc;
        wc.hInstance = GetModuleHandleW(nullptr);
        wc.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
        wc.lpszClassName = kPickerClass;
        return RegisterClassW(&wc) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
    }();
    if (!registered) return std::nullopt;
    Picker picker;
    picker.entries = &entries;
    HWND owner = GetActiveWindow();
    HWND window = CreateWindowExW(WS_EX_DLGMODALFRAME, kPickerClass, wide(title).c_str(),
                                  WS_POPUP | WS_CAPTION | WS_SYSMENU, CW_USEDEFAULT, CW_USEDEFAULT,
                                  320, 420, owner, nullptr, GetModuleHandleW(nullptr), nullptr);
    if (!window) return std::nullopt;
    const auto child = [&](const wchar_t* cls, DWORD style, int id, int x, int y, int w, int h,
                           const wchar_t* text) {
        return CreateWindowExW(0, cls, text, WS_CHILD | WS_VISIBLE | WS_TABSTOP | style, x, y, w, h,
                               window, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                               GetModuleHandleW(nullptr), nullptr);
    };
    picker.search = child(L"Edit", WS_BORDER | ES_AUTOHSCROLL, kPickerSearch, 8, 8, 288, 22, L"");
    picker.list = child(L"ListBox", WS_BORDER | WS_VSCROLL | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT,
                        kPickerList, 8, 36, 288, 300, L"");
    child(L"Button", BS_DEFPUSHBUTTON, IDOK, 136, 344, 76, 26, L"OK");
    child(L"Button", BS_PUSHBUTTON, IDCANCEL, 220, 344, 76, 26, L"Cancel");
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&picker));
    picker.filter();
    if (owner) EnableWindow(owner, FALSE);
    ShowWindow(window, SW_SHOW);
    SetFocus(picker.search);
    MSG msg;
    while (!picker.done && GetMessageW(&msg, nullptr, 0, 0) > 0) {
        if (!IsDialogMessageW(window, &msg)) {
            TranslateMessage(&msg);
            DispatchMessageW(&msg);
        }
    }
    if (owner) EnableWindow(owner, TRUE);
    DestroyWindow(window);
    return picker.chosen;
}

std::int32_t Win32Platform::messageBox(const Str& text, const Str& caption, std::uint32_t flags) {
    return MessageBoxW(nullptr, wide(text).c_str(), wide(caption).c_str(), flags);
}

void Win32Platform::run(const Str& command, int windowStyle, const Str& workingFolder) {
    const std::wstring wcommand = wide(command);
    // Web and mail links go to the shell, which opens the registered program.
    if (startsWithNoCase(command, u"HTTP") || startsWithNoCase(command, u"MAIL")) {
        SetLastError(0);
        const HINSTANCE r =
            ShellExecuteW(nullptr, L"open", wcommand.c_str(), nullptr, nullptr, windowStyle);
        const auto code = reinterpret_cast<INT_PTR>(r);
        if (code <= 32) {
            const DWORD e = GetLastError();
            raiseWin32(e != 0 ? e : static_cast<DWORD>(code));
        }
        return;
    }
    STARTUPINFOW si = {};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESHOWWINDOW;
    si.wShowWindow = static_cast<WORD>(windowStyle);
    PROCESS_INFORMATION pi = {};
    std::wstring commandLine = wcommand;  // CreateProcessW may write into it
    commandLine.push_back(L'\0');
    const std::wstring folder = wide(workingFolder);
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                        folder.empty() ? nullptr : folder.c_str(), &si, &pi))
        raiseWin32(GetLastError());
    // Not waiting for it.
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
}

Str Win32Platform::expandEnvironment(const Str& text) {
    const std::wstring source = wide(text);
    DWORD n = ExpandEnvironmentStringsW(source.c_str(), nullptr, 0);
    for (int attempt = 0; attempt < 4 && n != 0; ++attempt) {
        std::wstring buffer(n, L'\0');
        const DWORD m = ExpandEnvironmentStringsW(source.c_str(), buffer.data(), n);
        if (m == 0) break;
        if (m <= n) return fromWide(buffer.data(), m - 1);  // m counts the terminating zero
        n = m;
    }
    return text;
}

// ---------------------------------------------------------------- locale and versions

std::int32_t Win32Platform::localeInfo(std::uint32_t lcid, std::uint32_t item, Str& out) {
    out.clear();
    const int n = GetLocaleInfoW(lcid, item, nullptr, 0);
    if (n <= 0) return 0;
    std::wstring buffer(static_cast<std::size_t>(n), L'\0');
    const int m = GetLocaleInfoW(lcid, item, buffer.data(), n);
    if (m <= 0) return 0;
    out = fromWide(buffer.data(), static_cast<std::size_t>(m - 1));
    return m;
}

std::uint32_t Win32Platform::systemDefaultLcid() {
    return GetSystemDefaultLCID();
}

Locale Win32Platform::userLocale() {
    return localeOf(LOCALE_USER_DEFAULT);
}

Locale Win32Platform::localeOf(std::uint32_t lcid) {
    Locale loc;  // English (United States) where the system says nothing
    auto take = [this, lcid](LCTYPE item, Str& field) {
        Str text;
        if (localeInfo(lcid, item, text) > 0) field = std::move(text);
    };
    take(LOCALE_SDECIMAL, loc.decimalSeparator);
    take(LOCALE_STHOUSAND, loc.thousandSeparator);
    take(LOCALE_SLIST, loc.listSeparator);
    take(LOCALE_SCURRENCY, loc.currencySymbol);
    take(LOCALE_SMONDECIMALSEP, loc.currencyDecimalSeparator);
    take(LOCALE_SMONTHOUSANDSEP, loc.currencyThousandSeparator);
    take(LOCALE_SSHORTDATE, loc.shortDate);
    take(LOCALE_STIMEFORMAT, loc.longTime);
    take(LOCALE_S1159, loc.amDesignator);
    take(LOCALE_S2359, loc.pmDesignator);
    for (std::size_t m = 0; m < 12; ++m) {
        const auto k = static_cast<LCTYPE>(m);
        take(LOCALE_SMONTHNAME1 + k, loc.monthNames[m]);
        take(LOCALE_SABBREVMONTHNAME1 + k, loc.abbreviatedMonthNames[m]);
    }
    return loc;
}

WindowsVersion Win32Platform::windowsVersion() {
    OSVERSIONINFOW info = {};
    info.dwOSVersionInfoSize = sizeof info;
    WindowsVersion v;
    if (!GetVersionExW(&info)) return v;
    v.ok = true;
    v.platformId = info.dwPlatformId;
    v.major = info.dwMajorVersion;
    v.minor = info.dwMinorVersion;
    return v;
}

ModuleVersion Win32Platform::addinVersion() {
    const std::wstring path = wide(modulePath());
    ModuleVersion v;
    if (path.empty()) return v;
    DWORD handle = 0;
    const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &handle);
    if (size == 0) return v;
    std::vector<BYTE> data(size);
    if (!GetFileVersionInfoW(path.c_str(), 0, size, data.data())) return v;
    void* block = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(data.data(), L"\\", &block, &length) || block == nullptr ||
        length < sizeof(VS_FIXEDFILEINFO))
        return v;
    VS_FIXEDFILEINFO info;
    std::memcpy(&info, block, sizeof info);
    v.major = HIWORD(info.dwFileVersionMS);
    v.minor = LOWORD(info.dwFileVersionMS);
    v.revision = HIWORD(info.dwFileVersionLS);
    return v;
}

double Win32Platform::now() {
    SYSTEMTIME st = {};
    GetLocalTime(&st);
    double date = 0.0;
    if (!SystemTimeToVariantTime(&st, &date)) return 0.0;
    return date;
}

}  // namespace hb
