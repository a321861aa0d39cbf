#pragma once
// The stand-in Outlook's real windows: one top-level window per open
// explorer and inspector of the simulated Outlook, the add-in's command bar
// drawn in it as Win32 combo boxes and buttons, and custom task panes as
// real ActiveX controls (created by ProgID in Wine's ATL container) docked
// to the right of their window at the pane's width. render() brings the
// windows in line with the simulation after every step of a scenario.
#include <windows.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/Object.h"
#include "sim/Office.h"

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
    // Saves what the screen shows of a window as a 24-bit BMP file.
    bool capture(HWND window, const std::wstring& path);
    // Handles the window messages waiting.
    static void pumpMessages();

  private:
    struct Shown {
        HWND frame = nullptr;
        std::vector<HWND> barControls;
        HWND content = nullptr;  // the folder's items, or the item's fields
    };
    void drawBar(const sim::Window& window, Shown& shown);
    void drawContent(const sim::Window& window, Shown& shown);

    sim::Outlook& outlook_;
    std::map<const sim::Window*, Shown> shown_;
    std::map<const hb::Object*, HWND> controls_;  // content control -> its window
    HMODULE atl_ = nullptr;
};

}  // namespace standin
