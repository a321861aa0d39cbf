#pragma once
// The simulated Office parts Outlook's windows carry: command bars with
// their controls, and custom task panes (Office 12 and later) with the
// factory that makes them.
//
// Modelled behaviour the add-in relies on:
//  - Every explorer and inspector has its own CommandBars, with a built-in
//    menu bar ("Menu Bar", ActiveMenuBar) and built-in toolbars. Adding a
//    bar whose name is already in the collection raises, as Office does.
//  - Temporary bars and controls vanish when Outlook quits; the others stay
//    (inspectable through Outlook::allWindows()).
//  - A deleted bar or control, like a closed window, raises at every call.
//  - A combo box's ListIndex is the 1-based position of the picked entry, 0
//    when nothing is picked or the text is not an entry of the list.
//    Setting Text or ListIndex from code raises no Change; only the user
//    (the driver) does.
//  - A task pane raises DockPositionStateChange when its DockPosition,
//    Width or Height changes, from code as well as from the user. A pane
//    docked left or right refuses a new Height, one docked top or bottom a
//    new Width (Office raises); a floating pane takes both.
//  - The task pane's events (DockPositionStateChange, VisibleStateChange)
//    arrive after the call that caused them returns: they are posted.
//  - A click on a button raises Click on every control, in every window,
//    that has the same Tag (see Scenario::click).
// Not modelled: built-in controls' actions.
#include "sim/Outlook.h"

namespace sim {

class CommandBars : public SimObject {
  public:
    CommandBars(Outlook& world, std::weak_ptr<Window> window);
    std::weak_ptr<Window> window;
    std::vector<std::shared_ptr<CommandBar>> bars;  // the menu bar first
    // Adds a bar (set-up and Add); raises when the name is taken.
    std::shared_ptr<CommandBar> addBar(Str name, std::int32_t position, bool menuBar,
                                       bool temporary, bool builtIn);
    std::shared_ptr<CommandBar> find(StrView name) const;  // first of that name
    std::shared_ptr<CommandBar> menuBar() const;
    // Outlook quits: temporary bars and controls go.
    void dropTemporary();
    // Every control of every bar, popups' controls too.
    void forEachControl(
        const std::function<void(const std::shared_ptr<CommandBarControl>&)>& f) const;
};

class CommandBar : public SimObject {
  public:
    CommandBar(Outlook& world, Str name);
    Str name;
    bool visible = false;
    bool enabled = true;
    std::int32_t position = mso::BarTop;
    bool menuBar = false;
    bool temporary = false;
    bool builtIn = false;
    bool deleted = false;
    std::shared_ptr<CommandBarControls> controls;
    std::weak_ptr<CommandBars> owner;
    void remove();  // Delete
    Str unusableReason() const override;
};

class CommandBarControls : public SimObject {
  public:
    explicit CommandBarControls(Outlook& world);
    std::vector<std::shared_ptr<CommandBarControl>> list;
    std::weak_ptr<SimObject> parent;  // the bar or popup
    // Adds a control at a 1-based position (0: at the end).
    std::shared_ptr<CommandBarControl> add(std::int32_t type, std::int32_t id, bool temporary,
                                           std::int32_t before = 0);
    void dropTemporary();
};

class CommandBarControl : public SimObject {
  public:
    CommandBarControl(Outlook& world, std::int32_t type);
    std::int32_t type;
    std::int32_t id = 1;
    Str caption, tooltipText, tag, parameter, onAction, descriptionText;
    std::int32_t width = 0;
    std::int32_t style = 0;
    std::int32_t faceId = 0;
    std::int32_t state = 0;
    bool beginGroup = false;
    bool enabled = true;
    bool visible = true;
    bool temporary = false;
    bool builtIn = false;
    bool deleted = false;
    // Combo boxes.
    Str text;
    std::vector<Str> entries;
    std::int32_t listIndex = 0;  // 0: nothing picked
    std::int32_t dropDownLines = 0, dropDownWidth = 0;
    // Popups.
    std::shared_ptr<CommandBarControls> controls;
    std::weak_ptr<CommandBarControls> owner;

    bool isComboBox() const;
    void setText(const Str& t);         // ListIndex follows the text
    void setListIndex(std::int32_t i);  // Text follows the entry
    void remove();                      // Delete
    Str unusableReason() const override;
};

class TaskPaneFactory : public SimObject {
  public:
    explicit TaskPaneFactory(Outlook& world);
};

class CustomTaskPane : public SimObject {
  public:
    CustomTaskPane(Outlook& world, Str title, std::weak_ptr<Window> window, hb::ObjectPtr content);
    Str title;
    std::weak_ptr<Window> window;
    hb::ObjectPtr content;  // the control made by CreateCTP
    bool visible = false;
    std::int32_t dockPosition = mso::DockRight;
    std::int32_t dockPositionRestrict = 0;
    // The size across the dock side (left/right: width, top/bottom: height)
    // and a floating pane's size.
    std::int32_t sideWidth = 150, sideHeight = 150, floatWidth = 200, floatHeight = 400;
    bool deleted = false;
    int dockEvents = 0;  // DockPositionStateChange raised

    std::int32_t width() const;
    std::int32_t height() const;
    // Changes as code or the user makes them (raise the dock event on change).
    void setDockPosition(std::int32_t position);
    void setWidth(std::int32_t width);
    void setHeight(std::int32_t height);
    void setVisible(bool visible);
    void remove();  // Delete
    Str unusableReason() const override;
    void detach() override;
};

// The window size panes are measured against.
constexpr std::int32_t kWindowWidth = 1024;
constexpr std::int32_t kWindowHeight = 700;

}  // namespace sim
