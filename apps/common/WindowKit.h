#pragma once
// What the companion programs' windows (the report window, the pivot
// window) do alike with Win32: controls made in code with the system's
// message font, text widths for the layout, the Save dialog of an export,
// the text of a virtual list's cell, the modeless message loop.
#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "common/Str.h"

namespace hb::winui {

inline const wchar_t* wtext(const Str& text) {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}
inline std::wstring wide(const Str& text) {
    return std::wstring(text.begin(), text.end());
}

// A visible child control at the origin (the layout places it).
HWND makeControl(HWND parent, const wchar_t* cls, const Str& text, DWORD style, int id,
                 DWORD exStyle = 0);
// A drop-down list of the choices with one chosen.
HWND makeComboBox(HWND parent, int id, const std::vector<Str>& choices, int chosen);

// The system's message font, as dialogs have it, set on every child of the
// window; the caller deletes it (null: the stock GUI font was set).
HFONT useMessageFont(HWND window);
// The width in pixels of a control's text in its font.
int textWidth(HWND control);
// The window's dots per inch, at least 96.
int dpiOf(HWND window);

// Places a window's controls in one deferred move (EndDeferWindowPos when
// it goes): positions and sizes at 96 dpi, scaled to the screen's. The
// client area and the status bar's height are in the same units.
class Placer {
  public:
    Placer(HWND window, int statusBarId, int controls);
    ~Placer();
    Placer(const Placer&) = delete;
    Placer& operator=(const Placer&) = delete;
    int units(int pixels) const { return MulDiv(pixels, 96, dpi_); }
    void place(HWND control, int x, int y, int cx, int cy);
    void place(int id, int x, int y, int cx, int cy) {
        place(GetDlgItem(window_, id), x, y, cx, cy);
    }
    int width = 0, height = 0, statusHeight = 0;

  private:
    HWND window_;
    int dpi_;
    HDWP moves_;
};

// Sets the list's columns to the width of their widest text (captions and
// the first 500 rows), at most `maxWidth` pixels.
void fitListColumns(HWND list, const std::vector<std::vector<std::wstring>>& rows,
                    const std::vector<std::wstring>& captions, int maxWidth);

// Copies a virtual list's cell text into the buffer the list gave.
void putItemText(NMHDR* dispInfo, const wchar_t* text, std::size_t length);

// The Save dialog of an export: the file type's name, its extension
// ("csv"), the suggested name and the dialog's title; the chosen path, or
// nothing when the user cancelled.
std::optional<Str> askSavePath(HWND owner, const Str& fileType, const Str& extension,
                               const Str& suggested, const Str& title);

// Registers a window class once (the arrow pointer, the application's
// icon, the background given; null: the window paints it all).
bool registerWindowClass(HINSTANCE instance, const wchar_t* name, WNDPROC proc, HBRUSH background);

// The messages a companion window answers as the others do: the smallest
// size (at 96 dpi), the busy pointer while its worker is at work (the
// window still answers), labels on the window's background. True when the
// message was one of them, with its result.
bool answerFrameMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam, SIZE minimum,
                        bool busy, LRESULT& result);

// Waits for a worker thread to end and closes it (null afterwards); then
// takes `doneMessage`s the worker posted and nobody will handle off the
// queue, handing each lParam to `drop`.
void joinWorker(HANDLE& worker);
void dropPosted(HWND window, UINT doneMessage, void (*drop)(LPARAM));

// Shows the window and handles messages (dialog keys included) until it is
// destroyed.
int runWindowLoop(HWND window, int show);

}  // namespace hb::winui
