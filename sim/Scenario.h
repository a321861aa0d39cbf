#pragma once
// The scenario driver: acts as the user and as Outlook around one simulated
// Outlook. It loads the add-in (Office's connection calls), raises
// Outlook's events as the user's actions cause them, one at a time and
// synchronously, and after every action delivers the events that the
// add-in's own calls caused (Outlook::pump).
//
//   sim::Scenario sc;
//   auto cal = sc.outlook().calendar();
//   auto appt = cal->addAppointment(u"Review", sim::makeDate(2024, 5, 6, 9),
//                                   sim::makeDate(2024, 5, 6, 10));
//   sc.startOutlook(myAddin, sim::ol::FolderCalendar);
//   sc.select(sc.explorer(), {appt});
//   sc.quit();
//   EXPECT_TRUE(sc.instruments().census().empty());
#include <functional>
#include <memory>
#include <stdexcept>

#include "sim/Office.h"
#include "sim/Outlook.h"
#include "sim/Ribbon.h"

namespace sim {

// ext_ConnectMode and ext_DisconnectMode.
namespace ext {
constexpr std::int32_t ConnectAfterStartup = 0;
constexpr std::int32_t ConnectStartup = 1;
constexpr std::int32_t DisconnectHostShutdown = 0;
constexpr std::int32_t DisconnectUserClosed = 1;
}  // namespace ext

// What Office calls on a COM add-in (_IDTExtensibility2 and, from Office
// 12 on, ICustomTaskPaneConsumer), in Office's order: OnConnection,
// CTPFactoryAvailable, OnStartupComplete; at the end OnBeginShutdown and
// OnDisconnection. The add-in's designer object plugs in through this.
class Addin {
  public:
    virtual ~Addin() = default;
    virtual void onConnection(const Variant& application, std::int32_t connectMode,
                              const Variant& addInInst, Args& custom) = 0;
    virtual void ctpFactoryAvailable(const Variant& factory) { (void)factory; }
    virtual void onStartupComplete(Args& custom) { (void)custom; }
    virtual void onBeginShutdown(Args& custom) { (void)custom; }
    virtual void onDisconnection(std::int32_t removeMode, Args& custom) = 0;
    // What Office's QueryInterface for IRibbonExtensibility finds (Office
    // 14 on asks): the add-in's dispatch, whose GetCustomUI and callbacks
    // it calls by name; null when the add-in has no ribbon.
    virtual hb::ObjectPtr ribbonExtensibility() { return nullptr; }
    // Sets up the ribbon before it asks for the XML (a host over real COM
    // plugs its checks in).
    virtual void prepareRibbon(Ribbon& ribbon, const hb::ObjectPtr& extensibility) {
        (void)ribbon;
        (void)extensibility;
    }
};

// An Addin made of functions; any may be left empty.
class CallbackAddin : public Addin {
  public:
    std::function<void(const Variant& application, std::int32_t connectMode,
                       const Variant& addInInst)>
        connection;
    std::function<void(const Variant& factory)> factoryAvailable;
    std::function<void()> startupComplete;
    std::function<void()> beginShutdown;
    std::function<void(std::int32_t removeMode)> disconnection;

    void onConnection(const Variant& application, std::int32_t connectMode,
                      const Variant& addInInst, Args&) override {
        if (connection) connection(application, connectMode, addInInst);
    }
    void ctpFactoryAvailable(const Variant& factory) override {
        if (factoryAvailable) factoryAvailable(factory);
    }
    void onStartupComplete(Args&) override {
        if (startupComplete) startupComplete();
    }
    void onBeginShutdown(Args&) override {
        if (beginShutdown) beginShutdown();
    }
    void onDisconnection(std::int32_t removeMode, Args&) override {
        if (disconnection) disconnection(removeMode);
    }
};

// A driver action that the user could not take (a disabled control, a
// closed window) or a scenario that does not make sense.
class ScenarioError : public std::logic_error {
  public:
    using std::logic_error::logic_error;
};

class Scenario {
  public:
    Scenario();
    ~Scenario();
    Scenario(const Scenario&) = delete;
    Scenario& operator=(const Scenario&) = delete;

    Outlook& outlook() { return *outlook_; }
    Instruments& instruments() { return outlook_->instruments(); }

    // ---- Outlook's life ----
    // Starts Outlook with its first explorer on a default folder (Outlook
    // opens on the Inbox unless told otherwise) and loads the add-in:
    // OnConnection(Application, ext_cm_Startup, the COMAddIn), from version
    // 12 on CTPFactoryAvailable(the task pane factory), OnStartupComplete,
    // then Application's Startup event; then the explorer is shown
    // (Activate). startFolder 0: Outlook runs without any window, as when
    // an automation client started it (ActiveExplorer is Nothing). A
    // connection call that raises is recorded in addinErrors and the add-in
    // is not loaded (as Office does).
    void startOutlook(std::shared_ptr<Addin> addin = nullptr,
                      std::int32_t startFolder = ol::FolderInbox);
    // The user exits Outlook (also what happens when the last window
    // closes): every inspector, then every explorer closes (Close), then
    // Application's Quit event, OnBeginShutdown, OnDisconnection(
    // ext_dm_HostShutdown); Office releases the add-in; temporary command
    // bars and controls vanish, task panes and their controls go.
    void quit();
    // The user unloads the add-in in the COM add-ins dialog:
    // OnDisconnection(ext_dm_UserClosed); Office releases it; Outlook runs on.
    void disconnectAddin();
    // The user loads the add-in into a running Outlook (ticks it in the COM
    // add-ins dialog, or enables it again from the disabled items):
    // OnConnection(Application, ext_cm_AfterStartup, the COMAddIn), from
    // version 12 on CTPFactoryAvailable; no OnStartupComplete and no Startup
    // event follow. The windows open stay as they are.
    void connectAddin(std::shared_ptr<Addin> addin);
    bool addinLoaded() const { return static_cast<bool>(addin_); }
    std::vector<Str> addinErrors;

    // ---- windows ----
    // The first open explorer (the main window).
    std::shared_ptr<Explorer> explorer() const;
    // Opens a folder in a new window: NewExplorer, then Activate.
    std::shared_ptr<Explorer> openExplorer(std::shared_ptr<Folder> folder);
    // Opens an item: NewInspector, then Activate.
    std::shared_ptr<Inspector> openInspector(std::shared_ptr<Item> item);
    void activate(const std::shared_ptr<Window>& window);
    // The user switches to another program (the active window gets
    // Deactivate) and back (Activate, on `window` when given).
    void leaveOutlook();
    void returnToOutlook(const std::shared_ptr<Window>& window = nullptr);
    // The user saves the item of an appointment window (what the window's
    // copy holds is stored).
    void saveItem(const std::shared_ptr<Inspector>& inspector);
    void close(const std::shared_ptr<Window>& window);
    // BeforeFolderSwitch then (unless the add-in cancels) FolderSwitch and
    // SelectionChange. Returns false when cancelled.
    bool switchFolder(const std::shared_ptr<Explorer>& explorer, std::shared_ptr<Folder> folder);
    void select(const std::shared_ptr<Explorer>& explorer,
                std::vector<std::shared_ptr<Item>> items);

    // ---- command bars ----
    // The first bar of that name in a window, or null.
    static std::shared_ptr<CommandBar> bar(const Window& window, StrView name);
    // Types a text into a combo box as the user does: Text (ListIndex
    // follows: 0 unless the text is an entry), then Change.
    void typeInCombo(const std::shared_ptr<CommandBarControl>& combo, const Str& text);
    // Picks entry i (from 1) of a combo box: ListIndex and Text, then Change.
    void pickInCombo(const std::shared_ptr<CommandBarControl>& combo, std::int32_t index);
    void pickInCombo(const std::shared_ptr<CommandBarControl>& combo, const Str& entry);
    // Clicks a button: Click(Ctrl, CancelDefault), raised as Office does
    // on every control in every window whose Tag is the button's (only the
    // button itself when it has no Tag). Returns CancelDefault.
    bool click(const std::shared_ptr<CommandBarControl>& button);

    // ---- task panes ----
    // The user docks a pane elsewhere (DockPositionStateChange).
    void dockPane(const std::shared_ptr<CustomTaskPane>& pane, std::int32_t position);
    // The user drags a pane's edge: a pane docked left or right takes the
    // width, one docked top or bottom the height, a floating one both; one
    // DockPositionStateChange when anything changed.
    void resizePane(const std::shared_ptr<CustomTaskPane>& pane, std::int32_t width,
                    std::int32_t height);
    // The user closes a pane with its close button (VisibleStateChange).
    void closePane(const std::shared_ptr<CustomTaskPane>& pane);

    // ---- items ----
    // Copies an item into a folder (the calendar when none is given), as
    // the user does by copy and paste: the copy enters the folder and
    // ItemAdd is raised. Returns the copy.
    std::shared_ptr<Item> copyItem(const std::shared_ptr<Item>& item,
                                   std::shared_ptr<Folder> folder = nullptr);

    // ---- the ribbon (Office 14 and later) ----
    // The ribbon Office loaded from the add-in (null before version 14 or
    // when the add-in has none).
    Ribbon* ribbon() const { return ribbon_.get(); }
    // The user picks item `index` (from 0) of a ribbon drop-down / presses
    // a ribbon button in an explorer.
    void ribbonPick(const std::shared_ptr<Explorer>& explorer, StrView id, std::int32_t index);
    void ribbonPress(const std::shared_ptr<Explorer>& explorer, StrView id);

    // Delivers the events the add-in's calls caused.
    void pump() { outlook_->pump(); }

  private:
    // OnConnection and, from version 12 on, CTPFactoryAvailable; false (and
    // the add-in unloaded) when the connection raised.
    bool connect(std::shared_ptr<Addin> addin, std::int32_t connectMode);
    void requireUsable(const CommandBarControl& control) const;
    void guarded(const char* what, const std::function<void()>& call);

    std::unique_ptr<Outlook> outlook_;
    std::shared_ptr<Addin> addin_;
    std::shared_ptr<ComAddIn> comAddIn_;
    std::shared_ptr<Ribbon> ribbon_;
};

// A fault sweep: runs a scenario once on a fresh Scenario to count the
// add-in's calls (N), then N more times, each on a fresh Scenario whose k-th
// call fails (k = 1..N), calling check(scenario, k) after each run.
// Returns N. A scenario must be deterministic (the simulation is).
std::uint64_t faultSweep(const std::function<void(Scenario&)>& scenario,
                         const std::function<void(Scenario&, std::uint64_t k)>& check);

}  // namespace sim
