#include "apps/common/WindowKit.h"

#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>

namespace hb::winui {

HWND makeControl(HWND parent, const wchar_t* cls, const Str& text, DWORD style, int id,
                 DWORD exStyle) {
    return CreateWindowExW(exStyle, cls, wtext(text), WS_CHILD | WS_VISIBLE | style, 0, 0, 10, 10,
                           parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                           reinterpret_cast<HINSTANCE>(GetWindowLongPtrW(parent, GWLP_HINSTANCE)),
                           nullptr);
}

HWND makeComboBox(HWND parent, int id, const std::vector<Str>& choices, int chosen) {
    HWND box =
        makeControl(parent, WC_COMBOBOXW, u"", CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP, id);
    for (const Str& c : choices)
        SendMessageW(box, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(wtext(c)));
    SendMessageW(box, CB_SETCURSEL, static_cast<WPARAM>(chosen), 0);
    return box;
}

HFONT useMessageFont(HWND window) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    HFONT made = nullptr;
    if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0))
        made = CreateFontIndirectW(&metrics.lfMessageFont);
    HFONT font = made ? made : static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT));
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    return made;
}

int textWidth(HWND control) {
    const int length = GetWindowTextLengthW(control);
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    GetWindowTextW(control, text.data(), length + 1);
    HDC dc = GetDC(control);
    auto font = reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
    HGDIOBJ old = font ? SelectObject(dc, font) : nullptr;
    SIZE size{};
    GetTextExtentPoint32W(dc, text.c_str(), length, &size);
    if (old) SelectObject(dc, old);
    ReleaseDC(control, dc);
    return static_cast<int>(size.cx);
}

int dpiOf(HWND window) {
    HDC screen = GetDC(window);
    const int dpi = std::max(96, GetDeviceCaps(screen, LOGPIXELSY));
    ReleaseDC(window, screen);
    return dpi;
}

Placer::Placer(HWND window, int statusBarId, int controls)
    : window_(window), dpi_(dpiOf(window)), moves_(BeginDeferWindowPos(controls)) {
    RECT client{};
    GetClientRect(window, &client);
    width = units(client.right);
    height = units(client.bottom);
    HWND status = GetDlgItem(window, statusBarId);
    SendMessageW(status, WM_SIZE, 0, 0);  // the status bar sizes itself
    RECT sr{};
    GetWindowRect(status, &sr);
    statusHeight = units(sr.bottom - sr.top);
}

Placer::~Placer() {
    if (moves_) EndDeferWindowPos(moves_);
}

void Placer::place(HWND control, int x, int y, int cx, int cy) {
    auto px = [this](int u) { return MulDiv(u, dpi_, 96); };
    if (control && moves_)
        moves_ = DeferWindowPos(moves_, control, nullptr, px(x), px(y), px(cx), px(cy),
                                SWP_NOZORDER | SWP_NOACTIVATE);
}

void fitListColumns(HWND list, const std::vector<std::vector<std::wstring>>& rows,
                    const std::vector<std::wstring>& captions, int maxWidth) {
    HDC dc = GetDC(list);
    auto font = reinterpret_cast<HFONT>(SendMessageW(list, WM_GETFONT, 0, 0));
    HGDIOBJ old = font ? SelectObject(dc, font) : nullptr;
    auto widthOf = [&](const std::wstring& text) {
        SIZE size{};
        GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
        return static_cast<int>(size.cx);
    };
    for (std::size_t c = 0; c < captions.size(); ++c) {
        int width = widthOf(captions[c]);
        for (std::size_t r = 0; r < rows.size() && r < 500; ++r)
            if (c < rows[r].size()) width = std::max(width, widthOf(rows[r][c]));
        ListView_SetColumnWidth(list, static_cast<int>(c), std::min(width + 16, maxWidth));
    }
    if (old) SelectObject(dc, old);
    ReleaseDC(list, dc);
}

void putItemText(NMHDR* dispInfo, const wchar_t* text, std::size_t length) {
    auto* info = reinterpret_cast<NMLVDISPINFOW*>(dispInfo);
    if (!(info->item.mask & LVIF_TEXT) || info->item.cchTextMax <= 0) return;
    const std::size_t n = std::min(length, static_cast<std::size_t>(info->item.cchTextMax - 1));
    std::copy_n(text, n, info->item.pszText);
    info->item.pszText[n] = L'\0';
}

std::optional<Str> askSavePath(HWND owner, const Str& fileType, const Str& extension,
                               const Str& suggested, const Str& title) {
    Str filter = fileType + u" (*." + extension + u")";
    filter += u'\0';
    filter += u"*." + extension;
    filter += u'\0';
    std::wstring file = wide(suggested);
    file.resize(MAX_PATH * 4, L'\0');
    const std::wstring ext = wide(extension);
    OPENFILENAMEW ofn{};
    ofn.lStructSize = sizeof ofn;
    ofn.hwndOwner = owner;
    ofn.lpstrFilter = wtext(filter);
    ofn.lpstrFile = file.data();
    ofn.nMaxFile = static_cast<DWORD>(file.size());
    ofn.lpstrTitle = wtext(title);
    ofn.lpstrDefExt = ext.c_str();
    ofn.Flags = OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_NOCHANGEDIR | OFN_EXPLORER;
    if (!GetSaveFileNameW(&ofn)) return std::nullopt;
    const std::wstring chosen(file.c_str());
    return Str(chosen.begin(), chosen.end());
}

bool registerWindowClass(HINSTANCE instance, const wchar_t* name, WNDPROC proc, HBRUSH background) {
    WNDCLASSEXW wc{};
    wc.cbSize = sizeof wc;
    if (GetClassInfoExW(instance, name, &wc)) return true;
    wc.lpfnWndProc = proc;
    wc.hInstance = instance;
    wc.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    wc.hbrBackground = background;
    wc.lpszClassName = name;
    wc.hIcon = LoadIconW(nullptr, reinterpret_cast<LPCWSTR>(IDI_APPLICATION));
    return RegisterClassExW(&wc) != 0;
}

bool answerFrameMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam, SIZE minimum,
                        bool busy, LRESULT& result) {
    switch (message) {
        case WM_GETMINMAXINFO: {
            auto* info = reinterpret_cast<MINMAXINFO*>(lParam);
            const int dpi = dpiOf(window);
            info->ptMinTrackSize = {MulDiv(minimum.cx, dpi, 96), MulDiv(minimum.cy, dpi, 96)};
            result = 0;
            return true;
        }
        case WM_SETCURSOR:
            if (LOWORD(lParam) != HTCLIENT || !busy) return false;
            SetCursor(LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_APPSTARTING)));
            result = TRUE;
            return true;
        case WM_CTLCOLORSTATIC:
            SetBkMode(reinterpret_cast<HDC>(wParam), TRANSPARENT);
            result = reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNFACE));
            return true;
        default:
            return false;
    }
}

void joinWorker(HANDLE& worker) {
    if (!worker) return;
    WaitForSingleObject(worker, INFINITE);
    CloseHandle(worker);
    worker = nullptr;
}

void dropPosted(HWND window, UINT doneMessage, void (*drop)(LPARAM)) {
    MSG msg;
    while (PeekMessageW(&msg, window, doneMessage, doneMessage, PM_REMOVE))
        drop(msg.lParam);
}

int runWindowLoop(HWND window, int show) {
    if (!window) return 1;
    ShowWindow(window, show);
    UpdateWindow(window);
    MSG msg;
    while (IsWindow(window) && GetMessageW(&msg, nullptr, 0, 0) > 0) {
        if (IsDialogMessageW(window, &msg)) continue;
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
    return 0;
}

}  // namespace hb::winui
