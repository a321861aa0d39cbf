#pragma once
// The stand-in Outlook's real windows: one top-level window per open
// explorer and inspector of the simulated Outlook, the add-in's command bar
// drawn in it as Win32 combo boxes and buttons (from Outlook 14 on the
// add-in's ribbon group on the calendar's Home tab: a labelled combo box per
// drop-down and a button per button, as Office shows them), and custom task
// panes as
// real ActiveX controls (created by ProgID in Wine's ATL container) docked
// to the right of their window at the pane's width. render() brings the
// windows in line with the simulation after every step of a scenario.
#include <windows.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/Object.h"
#include "sim/Office.h"
#include "sim/Ribbon.h"

namespace standin {

class HostWindows {
  public:
    explicit HostWindows(sim::Outlook& outlook);
    ~HostWindows();
    HostWindows(const HostWindows&) = delete;
    HostWindows& operator=(const HostWindows&) = delete;

    // Creates an ActiveX control by ProgID in a window of its own (docked
    // into its inspector by render()); its IDispatch as a portable object.
    hb::ObjectPtr createControl(const std::wstring& progId);
    // Windows, command bars and panes as the simulation has them now;
    // then the window messages waiting are handled.
    void render();
    // The real window of a simulated one (null when it is not shown).
    HWND windowOf(const sim::Window& window) const;
    // The window a pane's content control lives in.
    HWND paneWindowOf(const sim::CustomTaskPane& pane) const;
    // The user picks an entry in combo box `index` (0..2) of a pane: the
    // control sees the selection change as from the mouse. False when the
    // entry is not in the list.
    bool pickInPane(const sim::CustomTaskPane& pane, int index, const std::wstring& entry);
    // The user picks `entry` in box `box` (1..3) of the add-in's bar of a
    // window, in the real combo box: onComboPick hears it. False when there
    // is no such box or entry.
    bool pickInToolbar(const sim::Window& window, int box, const std::wstring& entry);
    // The user clicks the button with face `faceId` on the add-in's bar of
    // a window, the real button: onButtonClick hears it. False when there
    // is no such button.
    bool clickInToolbar(const sim::Window& window, int faceId);
    // What the real command bar controls report: an entry picked (from 1),
    // a button clicked.
    std::function<void(const std::shared_ptr<sim::CommandBarControl>&, int index)> onComboPick;
    std::function<void(const std::shared_ptr<sim::CommandBarControl>&)> onButtonClick;
    // The ribbon Office loaded (null: none); drawn in the explorers that
    // show its group.
    const sim::Ribbon* ribbon = nullptr;
    // The user picks `entry` in the real combo box of drop-down `id` / presses
    // the real button of ribbon button `id`: onRibbonPick / onRibbonPress
    // hear it. False when the control or entry is not shown.
    bool pickInRibbon(const sim::Window& window, const hb::Str& id, const std::wstring& entry);
    bool clickInRibbon(const sim::Window& window, const hb::Str& id);
    std::function<void(const sim::Window&, const hb::Str& id, int index)> onRibbonPick;
    std::function<void(const sim::Window&, const hb::Str& id)> onRibbonPress;
    // Saves what the screen shows of a window as a 24-bit BMP file.
    bool capture(HWND window, const std::wstring& path);
    // Handles the window messages waiting.
    static void pumpMessages();

  private:
    struct Shown {
        HWND frame = nullptr;
        std::map<HWND, std::shared_ptr<sim::CommandBarControl>> barControls;
        std::map<HWND, hb::Str> ribbonControls;  // the real control -> the ribbon control's id
        std::vector<HWND> ribbonLabels;
        std::vector<HBITMAP> ribbonImages;  // the buttons' images as drawn, ours to delete
        HWND content = nullptr;             // the folder's items, or the item's fields
    };
    void drawBar(const sim::Window& window, Shown& shown);
    void drawRibbon(const sim::Window& window, Shown& shown);
    void drawContent(const sim::Window& window, Shown& shown);
    static LRESULT CALLBACK frameProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);
    void command(HWND frame, HWND control, WORD code);

    sim::Outlook& outlook_;
    std::map<const sim::Window*, Shown> shown_;
    std::map<const hb::Object*, HWND> controls_;  // content control -> its window
    HMODULE atl_ = nullptr;
};

}  // namespace standin
