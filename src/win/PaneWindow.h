#pragma once
// The task pane control's window: three labels, three drop-down lists and
// the logo, drawn with Win32 controls in the system's message font at the
// monitor's DPI. It is the PaneView of the portable Pane: what the pane's
// logic sets is kept here while there is no window (a host may hand the
// control its settings before it activates it) and applied to the controls
// when the window is made; while the window exists, the controls themselves
// are read, so a user's choice is what the logic sees.
#include <windows.h>

#include <array>
#include <functional>
#include <vector>

#include "inspector/Pane.h"

namespace hb::win {

// Where the pieces of the pane go for a client area of a given size.
struct PaneLayout {
    RECT logo{};
    std::array<RECT, 3> labels{};
    std::array<RECT, 3> combos{};  // the closed box, without its drop-down list
    bool labelsBeside = false;
};

// The layout rule: the logo in the top left corner, below it the three
// lists, each under its caption; when the pane is wide enough, the captions
// stand in a column to the left of the boxes. Boxes take the width that is
// left and never less than one pixel. Lengths are pixels at the given DPI;
// textHeight and comboHeight are those of the font in use, labelWidth the
// widest caption.
PaneLayout layoutPane(int width, int dpi, int textHeight, int comboHeight, int labelWidth);

class PaneWindow : public PaneView {
  public:
    static constexpr int kBoxes = 3;

    // onPick(index): the user chose an entry in box index. onFocus: one of
    // the boxes got the keyboard focus. Either may end with this window's
    // owner, and so this window, destroyed: nothing of the window is touched
    // after them.
    PaneWindow(std::function<void(int)> onPick, std::function<void()> onFocus);
    ~PaneWindow() override;
    PaneWindow(const PaneWindow&) = delete;
    PaneWindow& operator=(const PaneWindow&) = delete;

    // Makes the window as a child of parent at bounds (parent coordinates)
    // with the state kept so far. False when Windows refused.
    bool create(HWND parent, const RECT& bounds);
    void destroy();
    HWND hwnd() const { return hwnd_; }
    void setBounds(const RECT& bounds);
    void show(bool visible);
    // Tab and Shift+Tab between the boxes: true when msg was used.
    bool translateTab(MSG& msg);
    // The pane as it would look at bounds, into any device context (a
    // container's IViewObject::Draw: print preview, design views).
    void draw(HDC dc, const RECT& bounds) const;

    // PaneView
    void setLabel(int index, bool visible, const Str& caption) override;
    void setComboVisible(int index, bool visible) override;
    bool comboVisible(int index) const override;
    void comboAddItem(int index, const Str& item) override;
    int comboListCount(int index) const override;
    Str comboList(int index, int item) const override;
    void setComboListIndex(int index, int item) override;
    Str comboText(int index) const override;
    void layout() override;

  private:
    struct Box {
        bool labelVisible = false;
        Str caption = u"META";  // the labels' design-time caption
        bool visible = false;
        std::vector<Str> items;
        int index = -1;
    };

    static LRESULT CALLBACK windowProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);
    LRESULT handle(UINT msg, WPARAM wp, LPARAM lp);
    void createChildren();
    void updateFont();
    PaneLayout currentLayout(int width) const;
    int dpi() const;
    void paint(HDC dc, const RECT& client) const;
    void selectionChanged(int index);

    std::function<void(int)> onPick_;
    std::function<void()> onFocus_;
    std::array<Box, kBoxes> boxes_;
    HWND hwnd_ = nullptr;
    std::array<HWND, kBoxes> labels_{};
    std::array<HWND, kBoxes> combos_{};
    HFONT font_ = nullptr;
    int textHeight_ = 16;
    int comboHeight_ = 24;
};

}  // namespace hb::win
