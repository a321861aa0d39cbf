#include "standin/HostWindows.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "common/AutomationError.h"
#include "common/Constants.h"
#include "sim/Scenario.h"
#include "win/com/ComVariant.h"
#include "win/com/DispatchClient.h"

namespace standin {

namespace {

constexpr wchar_t kFrameClass[] = L"HbStandinFrame";
constexpr wchar_t kPaneClass[] = L"HbStandinPane";
constexpr int kBarHeight = 28;

using AtlAxWinInitFn = BOOL(WINAPI*)();
using AtlAxCreateControlExFn = HRESULT(WINAPI*)(LPCOLESTR, HWND, IStream*, IUnknown**, IUnknown**,
                                                REFIID, IUnknown*);

template <class F>
F procedure(HMODULE module, const char* name) {
    return module ? reinterpret_cast<F>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)))
                  : nullptr;
}

void registerClasses(WNDPROC frameProc) {
    static bool done = false;
    if (done) return;
    done = true;
    for (const wchar_t* name : {kFrameClass, kPaneClass}) {
        WNDCLASSW wc{};
        wc.lpfnWndProc = name == kFrameClass ? frameProc : DefWindowProcW;
        wc.hInstance = GetModuleHandleW(nullptr);
        wc.hCursor = LoadCursor(nullptr, IDC_ARROW);
        wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
        wc.lpszClassName = name;
        RegisterClassW(&wc);
    }
}

HWND makeChild(const wchar_t* cls, const std::wstring& text, DWORD style, int x, int y, int w,
               int h, HWND parent) {
    HWND hwnd = CreateWindowExW(0, cls, text.c_str(), WS_CHILD | WS_VISIBLE | style, x, y, w, h,
                                parent, nullptr, GetModuleHandleW(nullptr), nullptr);
    SendMessageW(hwnd, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)),
                 TRUE);
    return hwnd;
}

// A ribbon button's image as Office draws it: the picture getImage gave
// (a bitmap of 32 bits with premultiplied alpha, or an opaque one) laid over
// the button face, scaled to `size`. Null when there is no picture; the
// bitmap made is the caller's.
HBITMAP faceImage(const hb::Variant& picture, int size) {
    if (!picture.isObject() || picture.isNothing()) return nullptr;
    HBITMAP source = nullptr;
    try {
        // OLE_HANDLE is 32 bits; a GDI handle widens with its sign.
        source =
            reinterpret_cast<HBITMAP>(static_cast<std::intptr_t>(picture.get(u"Handle").toLong()));
    } catch (...) {
        return nullptr;
    }
    BITMAP bm{};
    if (!source || GetObjectW(source, sizeof bm, &bm) != static_cast<int>(sizeof bm) ||
        bm.bmWidth <= 0 || bm.bmHeight <= 0)
        return nullptr;
    const int w = bm.bmWidth, h = bm.bmHeight;
    // The picture's pixels as 32-bit rows, each laid over the button face:
    // out = colour + (1 - alpha) * face, the colour being premultiplied. A
    // picture without alpha is opaque.
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = w;
    info.bmiHeader.biHeight = -h;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h));
    HDC screen = GetDC(nullptr);
    const bool read = GetDIBits(screen, source, 0, static_cast<UINT>(h), pixels.data(), &info,
                                DIB_RGB_COLORS) == h;
    const COLORREF face = GetSysColor(COLOR_BTNFACE);
    const std::uint32_t faceBgr[3] = {GetBValue(face), GetGValue(face), GetRValue(face)};
    for (std::uint32_t& p : pixels) {
        const std::uint32_t alpha = bm.bmBitsPixel == 32 ? p >> 24 : 255;
        std::uint32_t out = 0;
        for (int c = 0; c < 3; ++c) {
            const std::uint32_t colour = (p >> (8 * c)) & 0xFF;
            out |= std::min<std::uint32_t>(255, colour + (255 - alpha) * faceBgr[c] / 255)
                   << (8 * c);
        }
        p = out;
    }
    HBITMAP image = nullptr;
    if (read) {
        HDC to = CreateCompatibleDC(screen);
        image = CreateCompatibleBitmap(screen, size, size);
        HGDIOBJ old = SelectObject(to, image);
        SetStretchBltMode(to, HALFTONE);
        StretchDIBits(to, 0, 0, size, size, 0, 0, w, h, pixels.data(), &info, DIB_RGB_COLORS,
                      SRCCOPY);
        SelectObject(to, old);
        DeleteDC(to);
    }
    ReleaseDC(nullptr, screen);
    return image;
}

// "Mon 06.05.2024 09:00-10:00", in a fixed form: the screenshots do not
// depend on the prefix's locale.
std::wstring timeText(const sim::Item& item) {
    SYSTEMTIME from{}, to{};
    VariantTimeToSystemTime(item.start.days, &from);
    VariantTimeToSystemTime(item.end.days, &to);
    static const wchar_t* days[] = {L"Sun", L"Mon", L"Tue", L"Wed", L"Thu", L"Fri", L"Sat"};
    wchar_t text[64];
    swprintf(text, 64, L"%ls %02u.%02u.%04u %02u:%02u-%02u:%02u", days[from.wDayOfWeek % 7],
             from.wDay, from.wMonth, from.wYear, from.wHour, from.wMinute, to.wHour, to.wMinute);
    return text;
}

// Picks an entry in a real combo box as the user does with the mouse: the
// selection changes, then the box tells its parent (CBN_SELCHANGE).
bool pickInCombo(HWND combo, const std::wstring& entry) {
    const LRESULT item = SendMessageW(combo, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                      reinterpret_cast<LPARAM>(entry.c_str()));
    if (item == CB_ERR) return false;
    SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(item), 0);
    SendMessageW(GetParent(combo), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(combo), CBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(combo));
    return true;
}

BOOL CALLBACK collectCombos(HWND hwnd, LPARAM list) {
    wchar_t cls[32] = {};
    GetClassNameW(hwnd, cls, 32);
    if (_wcsicmp(cls, L"ComboBox") == 0)
        reinterpret_cast<std::vector<HWND>*>(list)->push_back(hwnd);
    return TRUE;
}

}  // namespace

HostWindows::HostWindows(sim::Outlook& outlook) : outlook_(outlook) {
    registerClasses(&HostWindows::frameProc);
    atl_ = LoadLibraryW(L"atl.dll");
    if (auto init = procedure<AtlAxWinInitFn>(atl_, "AtlAxWinInit")) init();
}

HostWindows::~HostWindows() {
    for (auto& [window, shown] : shown_)
        DestroyWindow(shown.frame);
    for (auto& [control, hwnd] : controls_)
        if (IsWindow(hwnd)) DestroyWindow(hwnd);
    pumpMessages();
    // atl.dll stays loaded: controls it hosted may still be unwinding.
}

hb::ObjectPtr HostWindows::createControl(const std::wstring& progId) {
    auto create = procedure<AtlAxCreateControlExFn>(atl_, "AtlAxCreateControlEx");
    if (!create) hb::raise(429, u"ActiveX component can't create object (no ATL container)");
    HWND host = CreateWindowExW(0, kPaneClass, L"", WS_POPUP | WS_CLIPCHILDREN, 0, 0, 300, 600,
                                nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    hb::com::ComPtr<IUnknown> container, control;
    const HRESULT hr =
        create(progId.c_str(), host, nullptr, container.put(), control.put(), IID_NULL, nullptr);
    hb::com::ComPtr<IDispatch> dispatch = control.as<IDispatch>();
    if (FAILED(hr) || !dispatch) {
        DestroyWindow(host);
        hb::com::raiseFailure(FAILED(hr) ? hr : E_NOINTERFACE, nullptr);
    }
    hb::ObjectPtr object = hb::com::DispatchClient::wrap(dispatch.get());
    controls_[object.get()] = host;
    return object;
}

HWND HostWindows::windowOf(const sim::Window& window) const {
    auto it = shown_.find(&window);
    return it == shown_.end() ? nullptr : it->second.frame;
}

HWND HostWindows::paneWindowOf(const sim::CustomTaskPane& pane) const {
    auto it = controls_.find(pane.content.get());
    return it == controls_.end() ? nullptr : it->second;
}

void HostWindows::render() {
    // Windows closed in the simulation go.
    for (auto it = shown_.begin(); it != shown_.end();) {
        bool open = false;
        for (const auto& w : outlook_.allWindows())
            if (w.get() == it->first && w->open) open = true;
        if (open) {
            ++it;
            continue;
        }
        // Office destroys a closed window's panes, and with them the
        // controls' windows (the container lets go of the control).
        std::erase_if(controls_, [&](const auto& entry) {
            if (!IsWindow(entry.second) || GetParent(entry.second) != it->second.frame)
                return false;
            DestroyWindow(entry.second);
            return true;
        });
        DestroyWindow(it->second.frame);
        for (HBITMAP image : it->second.ribbonImages)
            DeleteObject(image);
        it = shown_.erase(it);
    }
    int offset = 0;
    for (const auto& w : outlook_.allWindows()) {
        if (!w->open) continue;
        Shown& shown = shown_[w.get()];
        const std::wstring caption = hb::com::wide(w->caption());
        if (!shown.frame) {
            shown.frame =
                CreateWindowExW(0, kFrameClass, caption.c_str(),
                                WS_OVERLAPPED | WS_CAPTION | WS_THICKFRAME | WS_CLIPCHILDREN,
                                offset, offset, sim::kWindowWidth, sim::kWindowHeight, nullptr,
                                nullptr, GetModuleHandleW(nullptr), nullptr);
            SetWindowLongPtrW(shown.frame, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
            ShowWindow(shown.frame, SW_SHOWNORMAL);
        }
        offset += 40;
        SetWindowTextW(shown.frame, caption.c_str());
        drawBar(*w, shown);
        drawRibbon(*w, shown);
        drawContent(*w, shown);
        RECT client{};
        GetClientRect(shown.frame, &client);
        for (const auto& pane : w->panes) {
            HWND hwnd = paneWindowOf(*pane);
            if (!hwnd) continue;
            if (pane->deleted) {
                DestroyWindow(hwnd);
                controls_.erase(pane->content.get());
                continue;
            }
            if (GetParent(hwnd) != shown.frame) {
                SetWindowLongPtrW(hwnd, GWL_STYLE, WS_CHILD | WS_CLIPCHILDREN | WS_BORDER);
                SetParent(hwnd, shown.frame);
            }
            const int width = pane->width();
            const int top = kBarHeight;
            MoveWindow(hwnd, client.right - width, top, width, client.bottom - top, TRUE);
            // The control fills its container window.
            if (HWND inner = GetWindow(hwnd, GW_CHILD))
                MoveWindow(inner, 0, 0, width, client.bottom - top, TRUE);
            ShowWindow(hwnd, pane->visible ? SW_SHOW : SW_HIDE);
        }
        if (outlook_.activeWindow() == w)
            SetWindowPos(shown.frame, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    }
    pumpMessages();
}

void HostWindows::drawBar(const sim::Window& window, Shown& shown) {
    for (auto& [hwnd, control] : shown.barControls)
        DestroyWindow(hwnd);
    shown.barControls.clear();
    auto bar = sim::Scenario::bar(window, hb::kProductCaption);
    if (!bar || bar->deleted || !bar->visible) return;
    int x = 4;
    for (const auto& c : bar->controls->list) {
        if (c->deleted || !c->visible) continue;
        if (c->isComboBox()) {
            const int width = c->width > 0 ? c->width : 150;
            HWND combo = makeChild(L"ComboBox", L"", CBS_DROPDOWNLIST | WS_VSCROLL, x, 2, width,
                                   200, shown.frame);
            for (const hb::Str& entry : c->entries)
                SendMessageW(combo, CB_ADDSTRING, 0,
                             reinterpret_cast<LPARAM>(hb::com::wide(entry).c_str()));
            SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(c->listIndex - 1), 0);
            shown.barControls.emplace(combo, c);
            x += width + 4;
        } else if (c->type == sim::mso::ControlButton) {
            const std::wstring caption = hb::com::wide(c->caption);
            const int width = 16 + 7 * static_cast<int>(caption.size());
            shown.barControls.emplace(makeChild(L"Button", caption, BS_PUSHBUTTON, x, 2, width,
                                                kBarHeight - 4, shown.frame),
                                      c);
            x += width + 4;
        }
    }
}

void HostWindows::drawRibbon(const sim::Window& window, Shown& shown) {
    for (auto& [hwnd, id] : shown.ribbonControls)
        DestroyWindow(hwnd);
    shown.ribbonControls.clear();
    for (HWND label : shown.ribbonLabels)
        DestroyWindow(label);
    shown.ribbonLabels.clear();
    for (HBITMAP image : shown.ribbonImages)
        DeleteObject(image);
    shown.ribbonImages.clear();
    const auto* explorer = dynamic_cast<const sim::Explorer*>(&window);
    if (!ribbon || !explorer || !ribbon->groupShown(*explorer)) return;
    const auto label = [&](const std::wstring& text, int x, int width) {
        shown.ribbonLabels.push_back(makeChild(L"Static", text, SS_RIGHT | SS_CENTERIMAGE, x, 2,
                                               width, kBarHeight - 4, shown.frame));
    };
    int x = 4;
    label(L"Hourbook |", x, 70);
    x += 74;
    for (const hb::Str& id : {hb::Str(u"hbList1"), hb::Str(u"hbList2"), hb::Str(u"hbList3")}) {
        const auto* v = ribbon->view(*explorer, id);
        if (!v || !v->visible) continue;
        const std::wstring caption = hb::com::wide(v->label);
        const int captionWidth = 8 + 7 * static_cast<int>(caption.size());
        label(caption, x, captionWidth);
        x += captionWidth + 4;
        HWND combo =
            makeChild(L"ComboBox", L"", CBS_DROPDOWNLIST | WS_VSCROLL, x, 2, 150, 200, shown.frame);
        for (const auto& [itemId, itemLabel] : v->items)
            SendMessageW(combo, CB_ADDSTRING, 0,
                         reinterpret_cast<LPARAM>(hb::com::wide(itemLabel).c_str()));
        SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(v->selected), 0);
        EnableWindow(combo, v->enabled);
        shown.ribbonControls.emplace(combo, id);
        x += 154;
    }
    for (const hb::Str& id :
         {hb::Str(u"hbReport"), hb::Str(u"hbSettings"), hb::Str(u"hbStatistics")}) {
        const auto* v = ribbon->view(*explorer, id);
        if (!v || !v->visible) continue;
        const std::wstring caption = hb::com::wide(v->label);
        // The button's image (getImage) beside its caption, which is kept
        // narrow so that the group fits the window with its images.
        const int width = 12 + 6 * static_cast<int>(caption.size());
        constexpr int kImage = kBarHeight - 6;
        if (HBITMAP image = faceImage(v->image, kImage)) {
            HWND picture = makeChild(L"Static", L"", SS_BITMAP, x, 3, kImage, kImage, shown.frame);
            SendMessageW(picture, STM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(image));
            shown.ribbonLabels.push_back(picture);
            shown.ribbonImages.push_back(image);
            x += kImage + 2;
        }
        HWND button =
            makeChild(L"Button", caption, BS_PUSHBUTTON, x, 2, width, kBarHeight - 4, shown.frame);
        EnableWindow(button, v->enabled);
        shown.ribbonControls.emplace(button, id);
        x += width + 4;
    }
}

bool HostWindows::pickInRibbon(const sim::Window& window, const hb::Str& id,
                               const std::wstring& entry) {
    auto it = shown_.find(&window);
    if (it == shown_.end()) return false;
    for (auto& [hwnd, control] : it->second.ribbonControls)
        if (control == id) return IsWindowEnabled(hwnd) && pickInCombo(hwnd, entry);
    return false;
}

bool HostWindows::clickInRibbon(const sim::Window& window, const hb::Str& id) {
    auto it = shown_.find(&window);
    if (it == shown_.end()) return false;
    for (auto& [hwnd, control] : it->second.ribbonControls) {
        if (control != id || !IsWindowEnabled(hwnd)) continue;
        SendMessageW(hwnd, BM_CLICK, 0, 0);
        return true;
    }
    return false;
}

void HostWindows::drawContent(const sim::Window& window, Shown& shown) {
    RECT client{};
    GetClientRect(shown.frame, &client);
    const int top = kBarHeight + 4;
    if (const auto* explorer = dynamic_cast<const sim::Explorer*>(&window)) {
        if (!shown.content)
            shown.content =
                makeChild(L"ListBox", L"", WS_BORDER | WS_VSCROLL | LBS_NOINTEGRALHEIGHT, 4, top,
                          client.right - 8, client.bottom - top - 4, shown.frame);
        SendMessageW(shown.content, LB_RESETCONTENT, 0, 0);
        if (!explorer->currentFolder) return;
        for (const auto& item : explorer->currentFolder->items) {
            std::wstring line = timeText(*item) + L"   " + hb::com::wide(item->subject);
            if (!item->categories.empty() && item->categories.find(u'\n') == hb::Str::npos)
                line += L"   [" + hb::com::wide(item->categories) + L"]";
            const LRESULT at = SendMessageW(shown.content, LB_ADDSTRING, 0,
                                            reinterpret_cast<LPARAM>(line.c_str()));
            for (const auto& selected : explorer->selection)
                if (selected == item) SendMessageW(shown.content, LB_SETCURSEL, at, 0);
        }
    } else if (const auto* inspector = dynamic_cast<const sim::Inspector*>(&window)) {
        if (!shown.content)
            shown.content = makeChild(L"Static", L"", SS_LEFT, 12, top + 8, 560, 120, shown.frame);
        const sim::Item* item = inspector->currentItem.get();
        if (!item) return;
        const std::wstring text = L"Subject:  " + hb::com::wide(item->subject) + L"\r\nWhen:  " +
                                  timeText(*item) + L"\r\nCategories:  " +
                                  hb::com::wide(item->categories);
        SetWindowTextW(shown.content, text.c_str());
    }
}

LRESULT CALLBACK HostWindows::frameProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    auto* self = reinterpret_cast<HostWindows*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    if (msg == WM_COMMAND && self && lp)
        self->command(hwnd, reinterpret_cast<HWND>(lp), HIWORD(wp));
    return DefWindowProcW(hwnd, msg, wp, lp);
}

void HostWindows::command(HWND frame, HWND control, WORD code) {
    for (auto& [window, shown] : shown_) {
        if (shown.frame != frame) continue;
        if (auto r = shown.ribbonControls.find(control); r != shown.ribbonControls.end()) {
            // Held: what Office calls may redraw the group.
            const hb::Str id = r->second;
            const sim::Window* simWindow = window;
            if (code == CBN_SELCHANGE && onRibbonPick) {
                const LRESULT item = SendMessageW(control, CB_GETCURSEL, 0, 0);
                if (item != CB_ERR) onRibbonPick(*simWindow, id, static_cast<int>(item));
            } else if (code == BN_CLICKED && onRibbonPress) {
                onRibbonPress(*simWindow, id);
            }
            return;
        }
        auto it = shown.barControls.find(control);
        if (it == shown.barControls.end()) return;
        // Held: what the event causes may redraw the bar.
        const std::shared_ptr<sim::CommandBarControl> target = it->second;
        if (code == CBN_SELCHANGE && onComboPick) {
            const LRESULT item = SendMessageW(control, CB_GETCURSEL, 0, 0);
            if (item != CB_ERR) onComboPick(target, static_cast<int>(item) + 1);
        } else if (code == BN_CLICKED && onButtonClick) {
            onButtonClick(target);
        }
        return;
    }
}

bool HostWindows::pickInToolbar(const sim::Window& window, int box, const std::wstring& entry) {
    auto it = shown_.find(&window);
    auto bar = sim::Scenario::bar(window, hb::kProductCaption);
    if (it == shown_.end() || !bar) return false;
    int seen = 0;
    for (const auto& c : bar->controls->list) {
        if (!c->isComboBox() || c->deleted || !c->visible || ++seen != box) continue;
        for (auto& [hwnd, control] : it->second.barControls)
            if (control == c) return pickInCombo(hwnd, entry);
    }
    return false;
}

bool HostWindows::clickInToolbar(const sim::Window& window, int faceId) {
    auto it = shown_.find(&window);
    if (it == shown_.end()) return false;
    for (auto& [hwnd, control] : it->second.barControls) {
        if (control->type != sim::mso::ControlButton || control->faceId != faceId) continue;
        SendMessageW(hwnd, BM_CLICK, 0, 0);
        return true;
    }
    return false;
}

bool HostWindows::pickInPane(const sim::CustomTaskPane& pane, int index,
                             const std::wstring& entry) {
    HWND host = paneWindowOf(pane);
    if (!host) return false;
    std::vector<HWND> combos;
    EnumChildWindows(host, collectCombos, reinterpret_cast<LPARAM>(&combos));
    if (index < 0 || static_cast<std::size_t>(index) >= combos.size()) return false;
    return pickInCombo(combos[static_cast<std::size_t>(index)], entry);
}

bool HostWindows::capture(HWND window, const std::wstring& path) {
    if (!window) return false;
    SetForegroundWindow(window);
    BringWindowToTop(window);
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    for (int i = 0; i < 10; ++i) {
        pumpMessages();
        Sleep(50);
    }
    // The whole window: its frame is Wine's own when the prefix's X11
    // driver leaves windows unmanaged (there is no window manager).
    RECT r{};
    GetWindowRect(window, &r);
    const int w = r.right - r.left, h = r.bottom - r.top;
    if (w <= 0 || h <= 0) return false;
    HDC screen = GetDC(nullptr);
    HDC mem = CreateCompatibleDC(screen);
    BITMAPINFO bi{};
    bi.bmiHeader.biSize = sizeof bi.bmiHeader;
    bi.bmiHeader.biWidth = w;
    bi.bmiHeader.biHeight = h;
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 24;
    void* bits = nullptr;
    HBITMAP bmp = CreateDIBSection(screen, &bi, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ old = SelectObject(mem, bmp);
    BitBlt(mem, 0, 0, w, h, screen, r.left, r.top, SRCCOPY);
    SelectObject(mem, old);
    const DWORD stride = ((static_cast<DWORD>(w) * 3 + 3) & ~3u);
    const DWORD size = stride * static_cast<DWORD>(h);
    BITMAPFILEHEADER fh{};
    fh.bfType = 0x4D42;
    fh.bfOffBits = sizeof fh + sizeof bi.bmiHeader;
    fh.bfSize = fh.bfOffBits + size;
    bool ok = false;
    if (FILE* f = _wfopen(path.c_str(), L"wb")) {
        ok = fwrite(&fh, sizeof fh, 1, f) == 1 &&
             fwrite(&bi.bmiHeader, sizeof bi.bmiHeader, 1, f) == 1 && fwrite(bits, size, 1, f) == 1;
        fclose(f);
    }
    DeleteObject(bmp);
    DeleteDC(mem);
    ReleaseDC(nullptr, screen);
    return ok;
}

void HostWindows::pumpMessages() {
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
}

}  // namespace standin
