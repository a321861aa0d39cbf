#pragma once
// Helpers of the Windows tests that talk COM: a small automation server of
// the test's own (members by name, connection points by interface ID, a
// reference count the test can read), and a watcher that answers and counts
// the message boxes a test provokes.
#include <windows.h>
// windows.h first: the COM headers rely on its types.
#include <ocidl.h>
#include <oleauto.h>
#include <olectl.h>

#include <cstdio>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "common/AutomationError.h"
#include "../support/ErrorOf.h"
#include "win/com/ComObject.h"

namespace hb::test {

// The current reference count of a COM object (AddRef then Release).
template <class T>
ULONG refCount(T* object) {
    object->AddRef();
    return object->Release();
}

class TestServer;

// One connection point of a TestServer: keeps the advised sinks.
class TestConnectionPoint : public com::ComObject<TestConnectionPoint, IConnectionPoint> {
  public:
    TestConnectionPoint(IConnectionPointContainer* owner, const IID& iid)
        : owner_(owner), iid_(iid) {}

    STDMETHODIMP GetConnectionInterface(IID* iid) override {
        *iid = iid_;
        return S_OK;
    }
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** c) override {
        *c = owner_;
        owner_->AddRef();
        return S_OK;
    }
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override {
        // As Office's connection points do: the sink must answer the event
        // interface itself.
        IDispatch* d = nullptr;
        if (FAILED(sink->QueryInterface(iid_, reinterpret_cast<void**>(&d))))
            return CONNECT_E_CANNOTCONNECT;
        sinks_[++next_] = d;
        *cookie = next_;
        ++advised;
        return S_OK;
    }
    STDMETHODIMP Unadvise(DWORD cookie) override {
        auto it = sinks_.find(cookie);
        if (it == sinks_.end()) return CONNECT_E_NOCONNECTION;
        it->second->Release();
        sinks_.erase(it);
        ++unadvised;
        return S_OK;
    }
    STDMETHODIMP EnumConnections(IEnumConnections**) override { return E_NOTIMPL; }

    // Calls every sink's Invoke with the arguments in call order (stored
    // last to first, as IDispatch::Invoke takes them).
    void fire(DISPID id, std::vector<VARIANT> args) {
        std::vector<VARIANT> reversed(args.rbegin(), args.rend());
        DISPPARAMS params{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        const auto sinks = sinks_;
        for (auto& [cookie, sink] : sinks)
            sink->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, nullptr,
                         nullptr, nullptr);
    }
    std::size_t sinkCount() const { return sinks_.size(); }

    int advised = 0;
    int unadvised = 0;

  private:
    IConnectionPointContainer* owner_;  // not held: the container holds its points
    IID iid_;
    std::map<DWORD, IDispatch*> sinks_;
    DWORD next_ = 0;
};

// The connection points of a TestServer, one at a time.
class PointEnumerator : public com::ComObject<PointEnumerator, IEnumConnectionPoints> {
  public:
    explicit PointEnumerator(std::vector<com::ComPtr<TestConnectionPoint>> points)
        : points_(std::move(points)) {}
    STDMETHODIMP Next(ULONG count, IConnectionPoint** out, ULONG* fetched) override {
        ULONG n = 0;
        for (; n < count && next_ < points_.size(); ++n, ++next_)
            out[n] = com::ComPtr<TestConnectionPoint>(points_[next_]).detach();
        if (fetched) *fetched = n;
        return n == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG count) override {
        next_ += count;
        return next_ <= points_.size() ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() override {
        next_ = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(IEnumConnectionPoints**) override { return E_NOTIMPL; }

  private:
    std::vector<com::ComPtr<TestConnectionPoint>> points_;
    std::size_t next_ = 0;
};

// An automation object whose members the test defines: each member has a
// DISPID and a handler that sees the call's flags and arguments (in call
// order) and fills the result.
class TestServer : public com::ComObject<TestServer, IDispatch, IConnectionPointContainer> {
  public:
    using Handler = std::function<HRESULT(WORD flags, std::vector<VARIANT*>& args, VARIANT* result,
                                          EXCEPINFO* exception)>;

    void member(const std::wstring& name, DISPID id, Handler handler) {
        ids_[name] = id;
        handlers_[id] = std::move(handler);
    }
    com::ComPtr<TestConnectionPoint> addConnectionPoint(const IID& iid) {
        auto point =
            TestConnectionPoint::create(static_cast<IConnectionPointContainer*>(this), iid);
        points_.push_back(point);
        return point;
    }
    // The type information GetTypeInfo hands out (none by default).
    com::ComPtr<ITypeInfo> typeInfo;
    int nameLookups = 0;
    int invokes = 0;

    STDMETHODIMP GetTypeInfoCount(UINT* n) override {
        *n = typeInfo ? 1 : 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** info) override {
        *info = nullptr;
        if (!typeInfo) return E_NOTIMPL;
        *info = com::ComPtr<ITypeInfo>(typeInfo).detach();
        return S_OK;
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        ++nameLookups;
        if (count != 1) return E_INVALIDARG;
        for (const auto& [name, id] : ids_) {
            if (_wcsicmp(name.c_str(), names[0]) == 0) {
                *ids = id;
                return S_OK;
            }
        }
        *ids = DISPID_UNKNOWN;
        return DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params, VARIANT* result,
                        EXCEPINFO* exception, UINT*) override {
        ++invokes;
        auto it = handlers_.find(id);
        if (it == handlers_.end()) return DISP_E_MEMBERNOTFOUND;
        std::vector<VARIANT*> args;
        for (UINT i = params->cArgs; i > 0; --i)
            args.push_back(&params->rgvarg[i - 1]);
        lastNamedArgs.assign(params->rgdispidNamedArgs,
                             params->rgdispidNamedArgs + params->cNamedArgs);
        return it->second(flags, args, result, exception);
    }

    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** out) override {
        *out = PointEnumerator::create(points_).detach();
        return S_OK;
    }
    STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** point) override {
        *point = nullptr;
        for (auto& p : points_) {
            IID pointIid{};
            p->GetConnectionInterface(&pointIid);
            if (IsEqualIID(pointIid, iid)) {
                *point = com::ComPtr<TestConnectionPoint>(p).detach();
                return S_OK;
            }
        }
        return CONNECT_E_NOCONNECTION;
    }

    std::vector<DISPID> lastNamedArgs;

  private:
    std::map<std::wstring, DISPID> ids_;
    std::map<DISPID, Handler> handlers_;
    std::vector<com::ComPtr<TestConnectionPoint>> points_;
};

// The folder of this program, without a trailing backslash.
inline std::wstring exeFolder() {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring p(path);
    return p.substr(0, p.rfind(L'\\'));
}

// A file's bytes; empty when it cannot be read.
inline std::string readFile(const std::wstring& path) {
    std::string bytes;
    if (FILE* f = _wfopen(path.c_str(), L"rb")) {
        char buffer[4096];
        std::size_t n = 0;
        while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0)
            bytes.append(buffer, n);
        std::fclose(f);
    }
    return bytes;
}

inline std::wstring guidText(REFGUID guid) {
    wchar_t text[64] = {};
    StringFromGUID2(guid, text, 64);
    return text;
}

// Copies a registry key with everything below it (nothing when `from` is
// missing).
inline void copyKey(HKEY fromRoot, const std::wstring& from, HKEY toRoot, const std::wstring& to) {
    HKEY source = nullptr, target = nullptr;
    if (RegOpenKeyExW(fromRoot, from.c_str(), 0, KEY_READ, &source) != ERROR_SUCCESS) return;
    if (RegCreateKeyExW(toRoot, to.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &target,
                        nullptr) == ERROR_SUCCESS) {
        RegCopyTreeW(source, nullptr, target);
        RegCloseKey(target);
    }
    RegCloseKey(source);
}

// Runs a command line and returns its exit code (-1 when it did not start
// or did not end within the time given). With `output`, what the program
// writes to stdout and stderr is collected there.
inline DWORD runProgram(std::wstring command, DWORD timeoutMs = 60000,
                        std::string* output = nullptr) {
    SECURITY_ATTRIBUTES sa{sizeof sa, nullptr, TRUE};
    HANDLE readEnd = nullptr, writeEnd = nullptr;
    STARTUPINFOW si{};
    si.cb = sizeof si;
    if (output && CreatePipe(&readEnd, &writeEnd, &sa, 0)) {
        SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
        si.dwFlags = STARTF_USESTDHANDLES;
        si.hStdError = si.hStdOutput = writeEnd;
        si.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    }
    PROCESS_INFORMATION pi{};
    const BOOL started = CreateProcessW(nullptr, command.data(), nullptr, nullptr,
                                        writeEnd != nullptr, 0, nullptr, nullptr, &si, &pi);
    if (writeEnd) CloseHandle(writeEnd);
    DWORD code = static_cast<DWORD>(-1);
    if (started) {
        char buffer[4096];
        DWORD n = 0;
        while (readEnd && ReadFile(readEnd, buffer, sizeof buffer, &n, nullptr) && n > 0)
            output->append(buffer, n);
        if (WaitForSingleObject(pi.hProcess, timeoutMs) == WAIT_OBJECT_0)
            GetExitCodeProcess(pi.hProcess, &code);
        CloseHandle(pi.hThread);
        CloseHandle(pi.hProcess);
    }
    if (readEnd) CloseHandle(readEnd);
    return code;
}

// The Unix path of a file under Wine (for Unix programs started on it),
// empty when there is none.
inline std::string unixPath(const std::wstring& windowsPath) {
    using Convert = char*(CDECL*)(LPCWSTR);
    auto convert = reinterpret_cast<Convert>(reinterpret_cast<void (*)()>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    char* path = convert ? convert(windowsPath.c_str()) : nullptr;
    if (!path) return std::string();
    std::string out(path);
    HeapFree(GetProcessHeap(), 0, path);
    return out;
}

// Every key and value below a registry key, as "HKLM\\path" -> "(key)" and
// "HKLM\\path|name" -> "type:data" (HKCU for the user's hive).
using Snapshot = std::map<std::wstring, std::wstring>;

inline void snapshot(HKEY root, const std::wstring& path, Snapshot& out) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
    const std::wstring hive = root == HKEY_LOCAL_MACHINE ? L"HKLM\\" : L"HKCU\\";
    out[hive + path] = L"(key)";
    for (DWORD i = 0;; ++i) {
        wchar_t name[16384];
        DWORD nameLength = 16384, type = 0, size = 0;
        if (RegEnumValueW(key, i, name, &nameLength, nullptr, &type, nullptr, &size) !=
            ERROR_SUCCESS)
            break;
        std::wstring data(size / sizeof(wchar_t) + 1, L'\0');
        nameLength = 16384;
        DWORD dataSize = size;
        RegEnumValueW(key, i, name, &nameLength, nullptr, &type,
                      reinterpret_cast<BYTE*>(data.data()), &dataSize);
        out[hive + path + L"|" + name] = std::to_wstring(type) + L":" + data;
    }
    for (DWORD i = 0;; ++i) {
        wchar_t name[256];
        DWORD nameLength = 256;
        if (RegEnumKeyExW(key, i, name, &nameLength, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            break;
        snapshot(root, path.empty() ? name : path + L"\\" + name, out);
    }
    RegCloseKey(key);
}

// The entries that differ between two snapshots, one a line ("-" only in the
// first or changed, "+" only in the second or changed).
inline std::string differences(const Snapshot& a, const Snapshot& b) {
    std::wstring out;
    for (const auto& [k, v] : a)
        if (auto it = b.find(k); it == b.end() || it->second != v) out += L"- " + k + L"\n";
    for (const auto& [k, v] : b)
        if (auto it = a.find(k); it == a.end() || it->second != v) out += L"+ " + k + L"\n";
    return std::string(out.begin(), out.end());
}

// Whether windows can be made in this process. A test program started again
// under an Xvfb of its own (childVariable set in its environment) first moves
// to a desktop of its own made on that display, since the Wine desktop it
// inherits was made without one.
inline bool windowsPossible(const wchar_t* childVariable, const wchar_t* desktopName) {
    if (GetEnvironmentVariableW(childVariable, nullptr, 0) > 0) {
        HDESK desktop = CreateDesktopW(desktopName, nullptr, nullptr, 0, GENERIC_ALL, nullptr);
        if (desktop) SetThreadDesktop(desktop);
    }
    HWND probe = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                                 nullptr, nullptr);
    if (!probe) return false;
    DestroyWindow(probe);
    return true;
}

// Why this test program cannot run some of its tests again under an Xvfb
// server of their own (rerunUnderXvfb), or null when it can.
inline const char* xvfbRerunUnavailable(const wchar_t* childVariable) {
    if (GetEnvironmentVariableW(childVariable, nullptr, 0) > 0)
        return "this is the process running under Xvfb";
    if (GetFileAttributesW(L"Z:\\usr\\bin\\xvfb-run") == INVALID_FILE_ATTRIBUTES)
        return "no xvfb-run (Debian package xvfb): the window tests cannot run";
    return nullptr;
}

struct XvfbRun {
    int exitCode = -1;   // -1: it did not finish in time
    std::string output;  // what it printed
};

// Runs the tests `gtestFilter` of this test program again in a second Wine
// process of the same prefix, under xvfb-run, with childVariable=1 in its
// environment; then the shell command `afterwards` (may be empty). Its
// output goes to `log` (a Windows path). Wine does not wait for a Unix
// process: the script leaves its exit code in a file, and this waits for
// that file.
inline XvfbRun rerunUnderXvfb(const wchar_t* childVariable, const std::string& gtestFilter,
                              const std::wstring& log, const std::string& afterwards = {},
                              DWORD timeoutMs = 110000) {
    XvfbRun run;
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    const std::string exe = unixPath(self), logPath = unixPath(log);
    const std::wstring rcFile = log + L".rc";
    const std::string rc = unixPath(rcFile);
    if (exe.empty() || logPath.empty()) return run;
    DeleteFileW(rcFile.c_str());
    const std::wstring name(childVariable);
    const std::string script = std::string(name.begin(), name.end()) +
                               "=1 xvfb-run -a -s '-screen 0 1024x768x24' wine '" + exe +
                               "' --gtest_filter='" + gtestFilter + "' >'" + logPath +
                               "' 2>&1; rc=$?; " + (afterwards.empty() ? "" : afterwards + "; ") +
                               "echo $rc >'" + rc + ".tmp' && mv '" + rc + ".tmp' '" + rc + "'";
    std::wstring command = L"/bin/sh -c \"" + std::wstring(script.begin(), script.end()) + L"\"";
    STARTUPINFOW si{};
    si.cb = sizeof si;
    PROCESS_INFORMATION pi{};
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si,
                        &pi))
        return run;
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
    for (DWORD waited = 0; waited < timeoutMs && run.exitCode < 0; waited += 100) {
        if (FILE* f = _wfopen(rcFile.c_str(), L"rb")) {
            if (std::fscanf(f, "%d", &run.exitCode) != 1) run.exitCode = 99;
            std::fclose(f);
        } else {
            Sleep(100);
        }
    }
    DeleteFileW(rcFile.c_str());
    run.output = readFile(log);
    return run;
}

// Answers every message box shown on this thread while it lives (No where
// there is a No button, else OK) and counts them.
class MessageBoxWatcher {
  public:
    MessageBoxWatcher() {
        current() = this;
        hook_ = SetWindowsHookExW(WH_CALLWNDPROCRET, &MessageBoxWatcher::hook, nullptr,
                                  GetCurrentThreadId());
    }
    ~MessageBoxWatcher() {
        UnhookWindowsHookEx(hook_);
        current() = nullptr;
    }
    MessageBoxWatcher(const MessageBoxWatcher&) = delete;
    MessageBoxWatcher& operator=(const MessageBoxWatcher&) = delete;

    int count() const { return count_; }
    // Whether message boxes can be shown here at all (Wine without a display
    // fails them): shows one and forgets it.
    bool canShow() {
        const int before = count_;
        const bool shown = MessageBoxW(nullptr, L"probe", L"probe", MB_OK) == IDOK;
        count_ = before;
        if (shown) texts_.pop_back();
        return shown;
    }
    const std::vector<std::wstring>& texts() const { return texts_; }

  private:
    static MessageBoxWatcher*& current() {
        static MessageBoxWatcher* watcher = nullptr;
        return watcher;
    }
    static LRESULT CALLBACK hook(int code, WPARAM wParam, LPARAM lParam) {
        auto* msg = reinterpret_cast<CWPRETSTRUCT*>(lParam);
        if (code == HC_ACTION && msg->message == WM_INITDIALOG && current()) {
            MessageBoxWatcher& w = *current();
            ++w.count_;
            wchar_t text[4096] = {};
            HWND label = GetDlgItem(msg->hwnd, 0xFFFF);
            if (label) GetWindowTextW(label, text, 4096);
            w.texts_.emplace_back(text);
            const int answer = GetDlgItem(msg->hwnd, IDNO) ? IDNO : IDOK;
            PostMessageW(msg->hwnd, WM_COMMAND, MAKEWPARAM(answer, BN_CLICKED), 0);
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    HHOOK hook_ = nullptr;
    int count_ = 0;
    std::vector<std::wstring> texts_;
};

}  // namespace hb::test
