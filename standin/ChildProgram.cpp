#include "standin/ChildProgram.h"

#include <tlhelp32.h>
#include <winternl.h>

#include <algorithm>

namespace standin {

namespace {

using QueryProcessFn = NTSTATUS(NTAPI*)(HANDLE, PROCESSINFOCLASS, PVOID, ULONG, PULONG);

// The command line a process was started with, read from its process
// parameters (where Windows keeps it for GetCommandLine).
std::wstring commandLineOf(HANDLE process) {
    auto query = reinterpret_cast<QueryProcessFn>(reinterpret_cast<void (*)()>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryInformationProcess")));
    PROCESS_BASIC_INFORMATION basic{};
    if (!query || query(process, ProcessBasicInformation, &basic, sizeof basic, nullptr) != 0)
        return {};
    PEB peb{};
    RTL_USER_PROCESS_PARAMETERS parameters{};
    if (!ReadProcessMemory(process, basic.PebBaseAddress, &peb, sizeof peb, nullptr) ||
        !ReadProcessMemory(process, peb.ProcessParameters, &parameters, sizeof parameters, nullptr))
        return {};
    std::wstring text(parameters.CommandLine.Length / sizeof(wchar_t), L'\0');
    if (!ReadProcessMemory(process, parameters.CommandLine.Buffer, text.data(),
                           parameters.CommandLine.Length, nullptr))
        return {};
    return text;
}

// A process this one started, by its file name; 0 when there is none.
DWORD childNamed(const std::wstring& exeName) {
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return 0;
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    DWORD found = 0;
    for (BOOL more = Process32FirstW(snapshot, &entry); more && !found;
         more = Process32NextW(snapshot, &entry))
        if (entry.th32ParentProcessID == GetCurrentProcessId() &&
            _wcsicmp(entry.szExeFile, exeName.c_str()) == 0)
            found = entry.th32ProcessID;
    CloseHandle(snapshot);
    return found;
}

struct DialogSearch {
    DWORD processId;
    const wchar_t* windowClass;
    HWND found;
};

BOOL CALLBACK findDialog(HWND hwnd, LPARAM lp) {
    auto* search = reinterpret_cast<DialogSearch*>(lp);
    DWORD owner = 0;
    GetWindowThreadProcessId(hwnd, &owner);
    wchar_t cls[64] = {};
    GetClassNameW(hwnd, cls, 64);
    if (owner != search->processId || !IsWindowVisible(hwnd) ||
        wcscmp(cls, search->windowClass) != 0)
        return TRUE;
    search->found = hwnd;
    return FALSE;
}

// Waits a moment, handling this thread's windows meanwhile; a message
// (a call from the other program among them) ends the wait at once.
void pause(HANDLE process = nullptr) {
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
    MsgWaitForMultipleObjects(process ? 1 : 0, process ? &process : nullptr, FALSE, 50,
                              QS_ALLINPUT);
}

}  // namespace

ChildProgram::~ChildProgram() {
    if (!process_) return;
    // A dialog left open: the program is ended rather than left running.
    if (WaitForSingleObject(process_, 0) == WAIT_TIMEOUT) TerminateProcess(process_, 1);
    CloseHandle(process_);
}

bool ChildProgram::waitForDialog(const std::wstring& exeName, DWORD timeoutMs,
                                 const std::wstring& windowClass) {
    const DWORD start = GetTickCount();
    while (!processId_ && GetTickCount() - start < timeoutMs) {
        processId_ = childNamed(exeName);
        if (!processId_) pause();
    }
    if (!processId_) return false;
    process_ =
        OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ | SYNCHRONIZE | PROCESS_TERMINATE,
                    FALSE, processId_);
    if (!process_) return false;
    const std::wstring command = commandLineOf(process_);
    const std::size_t end = command.starts_with(L'"') ? command.find(L'"', 1) : command.find(L' ');
    path_ = command.substr(
        command.starts_with(L'"') ? 1 : 0,
        end == std::wstring::npos ? std::wstring::npos : end - (command.starts_with(L'"') ? 1 : 0));
    if (end != std::wstring::npos) {
        const std::size_t from = command.find_first_not_of(L' ', end + 1);
        if (from != std::wstring::npos) arguments_ = command.substr(from);
    }
    while (!dialog_ && GetTickCount() - start < timeoutMs &&
           WaitForSingleObject(process_, 0) == WAIT_TIMEOUT) {
        DialogSearch search{processId_, windowClass.c_str(), nullptr};
        EnumWindows(findDialog, reinterpret_cast<LPARAM>(&search));
        dialog_ = search.found;
        if (!dialog_) pause();
    }
    return dialog_ != nullptr;
}

bool ChildProgram::send(UINT msg, WPARAM wp, LPARAM lp, LRESULT* result) {
    DWORD_PTR answer = 0;
    // A message box the program raises would hold the call: not forever.
    const bool sent =
        SendMessageTimeoutW(dialog_, msg, wp, lp, SMTO_ABORTIFHUNG, 10000, &answer) != 0;
    if (result) *result = static_cast<LRESULT>(answer);
    return sent;
}

bool ChildProgram::pickRow(int listBox, int row) {
    HWND list = GetDlgItem(dialog_, listBox);
    DWORD_PTR answer = 0;
    if (!list ||
        !SendMessageTimeoutW(list, LB_SETCURSEL, static_cast<WPARAM>(row), 0, SMTO_ABORTIFHUNG,
                             10000, &answer) ||
        static_cast<LRESULT>(answer) == LB_ERR)
        return false;
    return send(WM_COMMAND, MAKEWPARAM(listBox, LBN_SELCHANGE), reinterpret_cast<LPARAM>(list));
}

bool ChildProgram::type(int field, const std::wstring& text) {
    HWND edit = GetDlgItem(dialog_, field);
    DWORD_PTR answer = 0;
    return edit && SendMessageTimeoutW(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()),
                                       SMTO_ABORTIFHUNG, 10000, &answer) != 0;
}

bool ChildProgram::press(int button) {
    HWND control = GetDlgItem(dialog_, button);
    return control &&
           send(WM_COMMAND, MAKEWPARAM(button, BN_CLICKED), reinterpret_cast<LPARAM>(control));
}

bool ChildProgram::lists(int listBox, const std::wstring& entry) {
    HWND list = GetDlgItem(dialog_, listBox);
    DWORD_PTR answer = 0;
    return list &&
           SendMessageTimeoutW(list, LB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                               reinterpret_cast<LPARAM>(entry.c_str()), SMTO_ABORTIFHUNG, 10000,
                               &answer) != 0 &&
           static_cast<LRESULT>(answer) != LB_ERR;
}

long ChildProgram::okAndWait(int okButton, DWORD timeoutMs) {
    if (!process_) return -1;
    // Posted: OK ends the dialog's loop, and the program with it.
    PostMessageW(dialog_, WM_COMMAND, MAKEWPARAM(okButton, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(dialog_, okButton)));
    return waitForEnd(timeoutMs);
}

long ChildProgram::closeAndWait(DWORD timeoutMs) {
    if (!process_) return -1;
    PostMessageW(dialog_, WM_CLOSE, 0, 0);
    return waitForEnd(timeoutMs);
}

long ChildProgram::waitForEnd(DWORD timeoutMs) {
    const DWORD start = GetTickCount();
    while (WaitForSingleObject(process_, 0) == WAIT_TIMEOUT && GetTickCount() - start < timeoutMs)
        pause(process_);
    DWORD code = 0;
    if (WaitForSingleObject(process_, 0) == WAIT_TIMEOUT || !GetExitCodeProcess(process_, &code))
        return -1;
    return static_cast<long>(code);
}

std::wstring ChildProgram::text(int control) {
    HWND hwnd = GetDlgItem(dialog_, control);
    wchar_t buffer[1024] = {};
    DWORD_PTR answer = 0;
    if (!hwnd || !SendMessageTimeoutW(hwnd, WM_GETTEXT, 1024, reinterpret_cast<LPARAM>(buffer),
                                      SMTO_ABORTIFHUNG, 10000, &answer))
        return {};
    return std::wstring(buffer, std::min<std::size_t>(answer, 1023));
}

LRESULT ChildProgram::ask(int control, UINT msg, WPARAM wp, LPARAM lp, LRESULT fallback) {
    HWND hwnd = GetDlgItem(dialog_, control);
    DWORD_PTR answer = 0;
    if (!hwnd || !SendMessageTimeoutW(hwnd, msg, wp, lp, SMTO_ABORTIFHUNG, 10000, &answer))
        return fallback;
    return static_cast<LRESULT>(answer);
}

void ChildProgram::serveFor(DWORD ms) {
    const DWORD start = GetTickCount();
    while (GetTickCount() - start < ms)
        pause();
}

long ChildProgram::runToEnd(const std::wstring& commandLine, DWORD timeoutMs) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION info{};
    std::wstring line = commandLine;
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &info))
        return -1;
    CloseHandle(info.hThread);
    ChildProgram program;
    program.process_ = info.hProcess;
    program.processId_ = info.dwProcessId;
    return program.waitForEnd(timeoutMs);
}

}  // namespace standin
