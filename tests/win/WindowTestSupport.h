#pragma once
// What the window tests of the companion programs do alike: handle this
// thread's messages, wait until a window's worker is done, pick in a
// drop-down as the user does and read a status line.
#include <windows.h>
// windows.h first.
#include <commctrl.h>

#include <string>

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

}  // namespace hb::test
