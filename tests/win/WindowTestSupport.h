#pragma once
// What the window tests of the companion programs do alike: handle this
// thread's messages, wait until a window's worker is done, pick in a
// drop-down as the user does and read a status line.
#include <windows.h>
// windows.h first.
#include <commctrl.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "ComTestSupport.h"

namespace hb::test {

inline void pumpMessages() {
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
}

// Handles messages until `busy()` says the work is done (or about twenty
// seconds went by); whether it is done.
template <typename Busy>
bool settleWhile(Busy busy) {
    for (int i = 0; i < 1000 && busy(); ++i) {
        pumpMessages();
        if (!busy()) break;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
    }
    pumpMessages();
    return !busy();
}

// Picks an entry of a drop-down and tells its window, as a user's pick does.
inline void chooseInCombo(HWND window, int id, int index) {
    HWND box = GetDlgItem(window, id);
    SendMessageW(box, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
    SendMessageW(window, WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE), reinterpret_cast<LPARAM>(box));
}

inline std::wstring statusBarText(HWND statusBar) {
    wchar_t text[512] = {};
    SendMessageW(statusBar, SB_GETTEXTW, 0, reinterpret_cast<LPARAM>(text));
    return text;
}

enum class Shot { Taken, NoImport, NotDone };

// A picture of the window's part of the screen, by ImageMagick's import, as
// build/screenshots/`name`.png (beside the test program's folder). The x86
// programs may run in an i386 root without ImageMagick: the script then
// leaves the file `noImport`, and the picture is skipped. Wine does not wait
// for a Unix process: the script leaves `name`-shot.done when it is over,
// and this handles messages until then.
inline Shot importScreenshot(HWND window, const std::string& name, const std::wstring& noImport) {
    RECT r{};
    GetWindowRect(window, &r);
    const std::wstring done =
        exeFolder() + L"\\" + std::wstring(name.begin(), name.end()) + L"-shot.done";
    DeleteFileW(done.c_str());
    DeleteFileW(noImport.c_str());
    const std::string shots = unixPath(exeFolder()) + "/../screenshots";
    char geometry[64];
    std::snprintf(geometry, sizeof geometry, "%ldx%ld+%ld+%ld", r.right - r.left, r.bottom - r.top,
                  std::max(0L, static_cast<long>(r.left)), std::max(0L, static_cast<long>(r.top)));
    const std::string script = "if command -v import >/dev/null; then mkdir -p '" + shots +
                               "' && import -window root -crop " + geometry + " +repage '" + shots +
                               "/" + name + ".png'; else touch '" + unixPath(noImport) +
                               "'; fi; touch '" + unixPath(done) + "'";
    std::wstring command = L"/bin/sh -c \"" + std::wstring(script.begin(), script.end()) + L"\"";
    STARTUPINFOW si{};
    si.cb = sizeof si;
    PROCESS_INFORMATION pi{};
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si,
                        &pi))
        return Shot::NotDone;
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
    for (int i = 0; i < 300 && GetFileAttributesW(done.c_str()) == INVALID_FILE_ATTRIBUTES; ++i) {
        pumpMessages();
        Sleep(100);
    }
    const bool finished = GetFileAttributesW(done.c_str()) != INVALID_FILE_ATTRIBUTES;
    DeleteFileW(done.c_str());
    if (GetFileAttributesW(noImport.c_str()) != INVALID_FILE_ATTRIBUTES) return Shot::NoImport;
    return finished ? Shot::Taken : Shot::NotDone;
}

}  // namespace hb::test
