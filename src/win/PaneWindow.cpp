#include "win/PaneWindow.h"

#include <algorithm>

#include "win/Module.h"
#include "win/com/ComVariant.h"

namespace hb::win {

namespace {

constexpr wchar_t kClassName[] = L"HBAddinPaneWindow";
constexpr int kLabelId = 100;
constexpr int kComboId = 200;
// Entries the open list shows before it scrolls.
constexpr int kDropDownItems = 12;

int scaled(int pixels, int dpi) {
    return MulDiv(pixels, dpi, 96);
}

int screenDpi() {
    HDC screen = GetDC(nullptr);
    const int dpi = screen ? GetDeviceCaps(screen, LOGPIXELSY) : 96;
    if (screen) ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : 96;
}

// Functions of newer Windows versions, looked up where they exist.
template <class F>
F user32Function(const char* name) {
    HMODULE user32 = GetModuleHandleW(L"user32.dll");
    if (!user32) return nullptr;
    return reinterpret_cast<F>(reinterpret_cast<void (*)()>(GetProcAddress(user32, name)));
}

// The window class lives as long as a pane window does: a class left
// registered after the library is unloaded would point at code that is
// gone when a later load registers it again.
int g_windows = 0;

bool registerClass() {
    if (g_windows++ > 0) return true;
    WNDCLASSEXW wc{};
    wc.cbSize = sizeof(wc);
    wc.style = CS_HREDRAW | CS_VREDRAW;
    wc.lpfnWndProc = DefWindowProcW;  // replaced per window in create()
    wc.hInstance = moduleInstance();
    wc.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));  // IDC_ARROW
    wc.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1));
    wc.lpszClassName = kClassName;
    if (RegisterClassExW(&wc) || GetLastError() == ERROR_CLASS_ALREADY_EXISTS) return true;
    --g_windows;
    return false;
}

void unregisterClass() {
    if (--g_windows == 0) UnregisterClassW(kClassName, moduleInstance());
}

int textWidth(HDC dc, const Str& text) {
    SIZE size{};
    const std::wstring w = com::wide(text);
    GetTextExtentPoint32W(dc, w.c_str(), static_cast<int>(w.size()), &size);
    return size.cx;
}

// The product's picture: a clock face over a page, drawn rather than
// loaded so that it is sharp at every DPI.
void drawLogo(HDC dc, const RECT& r) {
    const int w = r.right - r.left;
    if (w <= 0) return;
    HPEN pen = CreatePen(PS_SOLID, std::max(1, w / 16), RGB(0x1F, 0x4E, 0x79));
    HBRUSH page = CreateSolidBrush(RGB(0xFF, 0xFF, 0xFF));
    HBRUSH face = CreateSolidBrush(RGB(0xD6, 0xE6, 0xF5));
    HGDIOBJ oldPen = SelectObject(dc, pen);
    HGDIOBJ oldBrush = SelectObject(dc, page);
    Rectangle(dc, r.left, r.top + w / 8, r.left + w * 5 / 8, r.bottom);
    SelectObject(dc, face);
    const int cx = r.left + w * 5 / 8;
    const int cy = r.top + w * 3 / 8;
    const int radius = w * 3 / 8 - 1;
    Ellipse(dc, cx - radius, cy - radius, cx + radius, cy + radius);
    // The hands at ten past nine... of the working day.
    MoveToEx(dc, cx, cy, nullptr);
    LineTo(dc, cx, cy - radius * 3 / 4);
    MoveToEx(dc, cx, cy, nullptr);
    LineTo(dc, cx - radius / 2, cy);
    SelectObject(dc, oldBrush);
    SelectObject(dc, oldPen);
    DeleteObject(face);
    DeleteObject(page);
    DeleteObject(pen);
}

}  // namespace

PaneLayout layoutPane(int width, int dpi, int textHeight, int comboHeight, int labelWidth) {
    const int margin = scaled(8, dpi);
    const int captionGap = scaled(3, dpi);
    const int groupGap = scaled(10, dpi);
    const int logoSize = scaled(32, dpi);
    const int narrowestBesideBox = scaled(150, dpi);
    const int labelColumn = labelWidth + scaled(8, dpi);

    PaneLayout l;
    l.logo = {margin, margin, margin + logoSize, margin + logoSize};
    l.labelsBeside = width >= margin + labelColumn + narrowestBesideBox + margin;
    int y = l.logo.bottom + groupGap;
    for (int i = 0; i < 3; ++i) {
        if (l.labelsBeside) {
            const int left = margin + labelColumn;
            l.combos[i] = {left, y, std::max(left + 1, width - margin), y + comboHeight};
            const int top = y + (comboHeight - textHeight) / 2;
            l.labels[i] = {margin, top, margin + labelWidth, top + textHeight};
            y += comboHeight + groupGap;
        } else {
            const int right = std::max(margin + 1, width - margin);
            l.labels[i] = {margin, y, right, y + textHeight};
            y += textHeight + captionGap;
            l.combos[i] = {margin, y, right, y + comboHeight};
            y += comboHeight + groupGap;
        }
    }
    return l;
}

PaneWindow::PaneWindow(std::function<void(int)> onPick, std::function<void()> onFocus)
    : onPick_(std::move(onPick)), onFocus_(std::move(onFocus)) {}

PaneWindow::~PaneWindow() {
    destroy();
    if (font_) DeleteObject(font_);
}

bool PaneWindow::create(HWND parent, const RECT& bounds) {
    if (hwnd_) return true;
    if (!registerClass()) return false;
    HWND hwnd = CreateWindowExW(WS_EX_CONTROLPARENT, kClassName, L"",
                                WS_CHILD | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, bounds.left,
                                bounds.top, bounds.right - bounds.left, bounds.bottom - bounds.top,
                                parent, nullptr, moduleInstance(), nullptr);
    if (!hwnd) {
        unregisterClass();
        return false;
    }
    hwnd_ = hwnd;
    SetWindowLongPtrW(hwnd_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    SetWindowLongPtrW(hwnd_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&PaneWindow::windowProc));
    updateFont();
    createChildren();
    layout();
    return true;
}

void PaneWindow::destroy() {
    // WM_NCDESTROY forgets the handles and the class.
    if (hwnd_) DestroyWindow(hwnd_);
}

void PaneWindow::setBounds(const RECT& bounds) {
    if (!hwnd_) return;
    SetWindowPos(hwnd_, nullptr, bounds.left, bounds.top, bounds.right - bounds.left,
                 bounds.bottom - bounds.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void PaneWindow::show(bool visible) {
    if (hwnd_) ShowWindow(hwnd_, visible ? SW_SHOWNA : SW_HIDE);
}

bool PaneWindow::translateTab(MSG& msg) {
    if (!hwnd_ || msg.message != WM_KEYDOWN || msg.wParam != VK_TAB) return false;
    if (msg.hwnd != hwnd_ && !IsChild(hwnd_, msg.hwnd)) return false;
    // The dialog manager moves the focus along the WS_TABSTOP children,
    // skipping the hidden boxes, as in a dialog.
    return IsDialogMessageW(hwnd_, &msg) != FALSE;
}

void PaneWindow::draw(HDC dc, const RECT& bounds) const {
    const int saved = SaveDC(dc);
    SetViewportOrgEx(dc, bounds.left, bounds.top, nullptr);
    const RECT client{0, 0, bounds.right - bounds.left, bounds.bottom - bounds.top};
    IntersectClipRect(dc, 0, 0, client.right, client.bottom);
    FillRect(dc, &client, GetSysColorBrush(COLOR_BTNFACE));
    paint(dc, client);
    HGDIOBJ oldFont = font_ ? SelectObject(dc, font_) : nullptr;
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(COLOR_BTNTEXT));
    const PaneLayout l = currentLayout(client.right);
    for (int i = 0; i < kBoxes; ++i) {
        const Box& b = boxes_[static_cast<std::size_t>(i)];
        if (b.labelVisible) {
            RECT r = l.labels[static_cast<std::size_t>(i)];
            const std::wstring caption = com::wide(b.caption);
            DrawTextW(dc, caption.c_str(), static_cast<int>(caption.size()), &r,
                      DT_LEFT | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
        }
        if (b.visible) {
            RECT r = l.combos[static_cast<std::size_t>(i)];
            FillRect(dc, &r, GetSysColorBrush(COLOR_WINDOW));
            DrawEdge(dc, &r, EDGE_SUNKEN, BF_RECT | BF_ADJUST);
            RECT button = r;
            button.left = std::max(r.left, r.right - GetSystemMetrics(SM_CXVSCROLL));
            DrawFrameControl(dc, &button, DFC_SCROLL, DFCS_SCROLLCOMBOBOX);
            r.right = button.left;
            InflateRect(&r, -2, 0);
            const Str text = comboText(i);
            const std::wstring w = com::wide(text);
            SetTextColor(dc, GetSysColor(COLOR_WINDOWTEXT));
            DrawTextW(dc, w.c_str(), static_cast<int>(w.size()), &r,
                      DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
            SetTextColor(dc, GetSysColor(COLOR_BTNTEXT));
        }
    }
    if (oldFont) SelectObject(dc, oldFont);
    RestoreDC(dc, saved);
}

// ---------------------------------------------------------------- PaneView

void PaneWindow::setLabel(int index, bool visible, const Str& caption) {
    Box& b = boxes_.at(static_cast<std::size_t>(index));
    b.labelVisible = visible;
    b.caption = caption;
    if (HWND label = labels_[static_cast<std::size_t>(index)]) {
        SetWindowTextW(label, com::wide(caption).c_str());
        ShowWindow(label, visible ? SW_SHOWNA : SW_HIDE);
    }
}

void PaneWindow::setComboVisible(int index, bool visible) {
    boxes_.at(static_cast<std::size_t>(index)).visible = visible;
    if (HWND combo = combos_[static_cast<std::size_t>(index)])
        ShowWindow(combo, visible ? SW_SHOWNA : SW_HIDE);
}

bool PaneWindow::comboVisible(int index) const {
    return boxes_.at(static_cast<std::size_t>(index)).visible;
}

void PaneWindow::comboAddItem(int index, const Str& item) {
    boxes_.at(static_cast<std::size_t>(index)).items.push_back(item);
    if (HWND combo = combos_[static_cast<std::size_t>(index)])
        SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(com::wide(item).c_str()));
}

int PaneWindow::comboListCount(int index) const {
    if (HWND combo = combos_.at(static_cast<std::size_t>(index)))
        return static_cast<int>(SendMessageW(combo, CB_GETCOUNT, 0, 0));
    return static_cast<int>(boxes_[static_cast<std::size_t>(index)].items.size());
}

Str PaneWindow::comboList(int index, int item) const {
    if (HWND combo = combos_.at(static_cast<std::size_t>(index))) {
        const LRESULT length = SendMessageW(combo, CB_GETLBTEXTLEN, static_cast<WPARAM>(item), 0);
        if (length == CB_ERR) return Str();
        std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
        const LRESULT got = SendMessageW(combo, CB_GETLBTEXT, static_cast<WPARAM>(item),
                                         reinterpret_cast<LPARAM>(text.data()));
        return got == CB_ERR ? Str() : com::fromWide(text.c_str(), static_cast<std::size_t>(got));
    }
    const auto& items = boxes_[static_cast<std::size_t>(index)].items;
    return item >= 0 && item < static_cast<int>(items.size())
               ? items[static_cast<std::size_t>(item)]
               : Str();
}

void PaneWindow::setComboListIndex(int index, int item) {
    boxes_.at(static_cast<std::size_t>(index)).index = item;
    // CB_SETCURSEL sends no CBN_SELCHANGE: setting a selection is no pick.
    if (HWND combo = combos_[static_cast<std::size_t>(index)])
        SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(item), 0);
}

Str PaneWindow::comboText(int index) const {
    int item = boxes_.at(static_cast<std::size_t>(index)).index;
    if (HWND combo = combos_[static_cast<std::size_t>(index)])
        item = static_cast<int>(SendMessageW(combo, CB_GETCURSEL, 0, 0));
    return item < 0 ? Str() : comboList(index, item);
}

void PaneWindow::layout() {
    if (!hwnd_) return;
    RECT client{};
    GetClientRect(hwnd_, &client);
    const PaneLayout l = currentLayout(client.right);
    const int listHeight = comboHeight_ + textHeight_ * kDropDownItems;
    HDWP batch = BeginDeferWindowPos(2 * kBoxes);
    for (std::size_t i = 0; i < kBoxes; ++i) {
        const RECT& lr = l.labels[i];
        const RECT& cr = l.combos[i];
        if (batch)
            batch = DeferWindowPos(batch, labels_[i], nullptr, lr.left, lr.top, lr.right - lr.left,
                                   lr.bottom - lr.top, SWP_NOZORDER | SWP_NOACTIVATE);
        if (batch)
            batch = DeferWindowPos(batch, combos_[i], nullptr, cr.left, cr.top, cr.right - cr.left,
                                   listHeight, SWP_NOZORDER | SWP_NOACTIVATE);
    }
    if (batch) EndDeferWindowPos(batch);
    InvalidateRect(hwnd_, nullptr, TRUE);
}

// ---------------------------------------------------------------- the window

LRESULT CALLBACK PaneWindow::windowProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    auto* self = reinterpret_cast<PaneWindow*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    if (!self) return DefWindowProcW(hwnd, msg, wp, lp);
    // Nothing thrown may leave a window procedure.
    try {
        return self->handle(msg, wp, lp);
    } catch (...) {
        return DefWindowProcW(hwnd, msg, wp, lp);
    }
}

LRESULT PaneWindow::handle(UINT msg, WPARAM wp, LPARAM lp) {
    HWND hwnd = hwnd_;
    switch (msg) {
        case WM_SIZE:
            layout();
            return 0;
        case WM_PAINT: {
            PAINTSTRUCT ps;
            HDC dc = BeginPaint(hwnd, &ps);
            RECT client{};
            GetClientRect(hwnd, &client);
            paint(dc, client);
            EndPaint(hwnd, &ps);
            return 0;
        }
        case WM_COMMAND: {
            const int id = LOWORD(wp);
            const int index = id - kComboId;
            if (index >= 0 && index < kBoxes) {
                if (HIWORD(wp) == CBN_SELCHANGE) {
                    selectionChanged(index);
                } else if (HIWORD(wp) == CBN_SETFOCUS && onFocus_) {
                    // A copy: the call may destroy this window and its callbacks.
                    const auto onFocus = onFocus_;
                    onFocus();
                }
            }
            return 0;
        }
        case WM_SETTINGCHANGE:
        case 0x02E3:  // WM_DPICHANGED_AFTERPARENT
            updateFont();
            layout();
            break;
        case WM_NCDESTROY:
            SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0);
            hwnd_ = nullptr;
            labels_ = {};
            combos_ = {};
            unregisterClass();
            break;
        default:
            break;
    }
    return DefWindowProcW(hwnd, msg, wp, lp);
}

void PaneWindow::createChildren() {
    const auto id = [](int base, std::size_t i) {
        return reinterpret_cast<HMENU>(static_cast<INT_PTR>(base + static_cast<int>(i)));
    };
    // Created in tab order: caption, box, caption, box, ...
    for (std::size_t i = 0; i < kBoxes; ++i) {
        const Box& b = boxes_[i];
        labels_[i] = CreateWindowExW(
            0, L"STATIC", com::wide(b.caption).c_str(),
            WS_CHILD | SS_LEFT | SS_NOPREFIX | SS_ENDELLIPSIS | (b.labelVisible ? WS_VISIBLE : 0),
            0, 0, 0, 0, hwnd_, id(kLabelId, i), moduleInstance(), nullptr);
        combos_[i] = CreateWindowExW(
            0, L"COMBOBOX", L"",
            WS_CHILD | WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST | (b.visible ? WS_VISIBLE : 0), 0,
            0, 0, 0, hwnd_, id(kComboId, i), moduleInstance(), nullptr);
        if (font_) {
            SendMessageW(labels_[i], WM_SETFONT, reinterpret_cast<WPARAM>(font_), FALSE);
            SendMessageW(combos_[i], WM_SETFONT, reinterpret_cast<WPARAM>(font_), FALSE);
        }
        for (const Str& item : b.items)
            SendMessageW(combos_[i], CB_ADDSTRING, 0,
                         reinterpret_cast<LPARAM>(com::wide(item).c_str()));
        SendMessageW(combos_[i], CB_SETCURSEL, static_cast<WPARAM>(b.index), 0);
    }
    if (combos_[0]) {
        RECT r{};
        GetWindowRect(combos_[0], &r);  // the closed box's height for this font
        if (r.bottom > r.top) comboHeight_ = r.bottom - r.top;
    }
}

void PaneWindow::updateFont() {
    const int target = dpi();
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof(metrics);
    using ForDpi = BOOL(WINAPI*)(UINT, UINT, PVOID, UINT, UINT);
    bool ok = false;
    if (auto forDpi = user32Function<ForDpi>("SystemParametersInfoForDpi"))
        ok = forDpi(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0,
                    static_cast<UINT>(target)) != FALSE;
    if (!ok) {
        if (!SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0)) return;
        // The metrics are those of the system DPI.
        metrics.lfMessageFont.lfHeight =
            MulDiv(metrics.lfMessageFont.lfHeight, target, screenDpi());
    }
    HFONT font = CreateFontIndirectW(&metrics.lfMessageFont);
    if (!font) return;
    HDC dc = GetDC(hwnd_);
    HGDIOBJ old = SelectObject(dc, font);
    TEXTMETRICW tm{};
    if (GetTextMetricsW(dc, &tm)) {
        textHeight_ = tm.tmHeight;
        comboHeight_ = tm.tmHeight + scaled(8, target);
    }
    SelectObject(dc, old);
    ReleaseDC(hwnd_, dc);
    for (std::size_t i = 0; i < kBoxes; ++i) {
        if (labels_[i]) SendMessageW(labels_[i], WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
        if (combos_[i]) SendMessageW(combos_[i], WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
    }
    if (combos_[0]) {
        RECT r{};
        GetWindowRect(combos_[0], &r);
        if (r.bottom > r.top) comboHeight_ = r.bottom - r.top;
    }
    if (font_) DeleteObject(font_);
    font_ = font;
}

PaneLayout PaneWindow::currentLayout(int width) const {
    int widest = 0;
    HDC dc = GetDC(hwnd_);
    HGDIOBJ old = font_ ? SelectObject(dc, font_) : nullptr;
    for (const Box& b : boxes_) {
        if (b.labelVisible) widest = std::max(widest, textWidth(dc, b.caption));
    }
    if (old) SelectObject(dc, old);
    ReleaseDC(hwnd_, dc);
    return layoutPane(width, dpi(), textHeight_, comboHeight_, widest);
}

int PaneWindow::dpi() const {
    using ForWindow = UINT(WINAPI*)(HWND);
    if (hwnd_) {
        if (auto forWindow = user32Function<ForWindow>("GetDpiForWindow")) {
            const UINT dpi = forWindow(hwnd_);
            if (dpi > 0) return static_cast<int>(dpi);
        }
    }
    return screenDpi();
}

void PaneWindow::paint(HDC dc, const RECT& client) const {
    drawLogo(dc, currentLayout(client.right).logo);
}

void PaneWindow::selectionChanged(int index) {
    // The user's choice is also the state kept for a window made later.
    const auto i = static_cast<std::size_t>(index);
    boxes_[i].index = static_cast<int>(SendMessageW(combos_[i], CB_GETCURSEL, 0, 0));
    // A copy: the pick may destroy this window and its callbacks.
    if (const auto onPick = onPick_) onPick(index);
}

}  // namespace hb::win
