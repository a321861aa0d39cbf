#pragma once
// A whole add-in session on the simulated Outlook: the simulated Outlook
// with its scenario driver, the in-memory Windows (phrase table resource,
// registry, files), and the add-in's designer plugged into the driver as
// Office loads it. Tests set up the world, start Outlook with the add-in,
// act as the user through the driver and look at what the add-in left in
// Outlook, the registry and the message boxes.
//
//   hbtest::SessionHarness h;               // Outlook 12 by default
//   h.setLists({{u"Company", {u"Acme"}}, {u"Person", {u"Smith"}}});
//   auto appt = h.addAppointment(u"Review");
//   h.start();                              // on the calendar
//   h.sc().select(h.sc().explorer(), {appt});
//   h.sc().pickInCombo(h.combo(*h.sc().explorer(), 1), u"Acme");
//   h.sc().quit();
//   EXPECT_TRUE(h.census().empty());
//
// The task pane control "HBAddin.pane" is registered with the simulated
// Outlook: CreateCTP makes a PaneControl (the Pane logic with a recording
// view) bound to the loaded add-in's session.
#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "addin/OHBAddinDesigner.h"
#include "common/Constants.h"
#include "inspector/Pane.h"
#include "platform/memory/MemoryPlatform.h"
#include "sim/Scenario.h"

namespace hbtest {

using hb::Str;
using hb::Variant;

// What the pane control shows: three labels and three combo boxes.
class RecordingPaneView : public hb::PaneView {
  public:
    struct Label {
        bool visible = false;
        Str caption = u"META";  // the design-time caption
    };
    struct Combo {
        bool visible = false;
        std::vector<Str> items;
        int listIndex = -1;  // -1: nothing selected
        Str typed;           // a text typed when nothing is selected
    };
    std::array<Label, 3> labels;
    std::array<Combo, 3> combos;
    int layouts = 0;
    int doEventsCalls = 0;
    // A combo box raises Click when code changes its selection, as the
    // control's combo boxes do; set to the pane to hear it.
    hb::Pane* clickTarget = nullptr;

    void setLabel(int index, bool visible, const Str& caption) override;
    void setComboVisible(int index, bool visible) override;
    bool comboVisible(int index) const override;
    void comboAddItem(int index, const Str& item) override;
    int comboListCount(int index) const override;
    Str comboList(int index, int item) const override;
    void setComboListIndex(int index, int item) override;
    Str comboText(int index) const override;
    void layout() override { ++layouts; }
    void doEvents() override { ++doEventsCalls; }

    // The selected entry's text ("" when none).
    Str selected(int index) const { return comboText(index); }

  private:
    const Combo& at(int index) const;
    Combo& at(int index);
};

// The task pane's content control as Office hosts it: the Pane logic, its
// view, and the automation object its host talks to.
class PaneControl : public hb::Object {
  public:
    explicit PaneControl(hb::Session& s);
    ~PaneControl() override;

    RecordingPaneView view;
    hb::Pane pane;
    // The host's assignments, in order ("objAppointment", "Settings").
    std::vector<Str> assigned;

    Variant invoke(hb::CallKind kind, const Str& member, hb::Args& args) override;
    Str typeName() const override { return u"Pane"; }

    // The user picks an entry of combo box `index` (0..2): the selection
    // changes, then Click. Returns false when the entry is not listed.
    bool pick(int index, const Str& entry);
};

// Plugs the designer into the driver as Office's connection calls.
class DesignerAddin : public sim::Addin {
  public:
    explicit DesignerAddin(hb::Platform& platform) : designer(platform) {}
    hb::OHBAddinDesigner designer;

    void onConnection(const Variant& application, std::int32_t connectMode,
                      const Variant& addInInst, hb::Args& custom) override;
    void ctpFactoryAvailable(const Variant& factory) override;
    void onBeginShutdown(hb::Args& custom) override;
    void onDisconnection(std::int32_t removeMode, hb::Args& custom) override;
    hb::ObjectPtr ribbonExtensibility() override { return designer.ribbonCallbacks(); }
};

struct MetaList {
    Str caption;
    std::vector<Str> names;
};

// The three lists of the workgroup scenarios.
std::vector<MetaList> workgroupLists();

class SessionHarness {
  public:
    // Outlook of the given version ("11.0.8217", "12.0.4518.1014", ...).
    explicit SessionHarness(Str outlookVersion = u"12.0.4518.1014");
    ~SessionHarness();
    SessionHarness(const SessionHarness&) = delete;
    SessionHarness& operator=(const SessionHarness&) = delete;

    sim::Scenario& sc() { return *scenario_; }
    sim::Outlook& outlook() { return scenario_->outlook(); }
    sim::Instruments& instruments() { return scenario_->instruments(); }
    hb::MemoryPlatform& platform() { return *platform_; }

    // ---- set-up (before start) ----
    // The user's list separator, in Windows and in Outlook.
    void setListSeparator(const Str& separator);
    // Settings as the settings program leaves them in the registry: report
    // choice 2, every switch off, these lists.
    void setLists(const std::vector<MetaList>& lists);
    // One registry value of section "Settings".
    void setSetting(const Str& name, const Str& value);
    std::optional<Str> setting(const Str& name) const;
    // A program file in the add-in's folder ("HBPersonalSettings.exe").
    void addProgram(const Str& fileName);
    // An appointment in the default calendar, 6 May 2024 at 9 + n o'clock.
    std::shared_ptr<sim::Item> addAppointment(const Str& subject, const Str& categories = {},
                                              int hourOffset = 0);

    // Trace log on from the add-in's load (set before start).
    bool trace = false;
    // The texts of the trace log's lines, in order.
    std::vector<Str> traceLines() const;

    // ---- Outlook's life ----
    // Starts Outlook on a folder with the add-in loaded by Office.
    void start(std::int32_t startFolder = sim::ol::FolderCalendar);
    // Starts Outlook without the add-in; connectAfterStart then loads it
    // into the running Outlook (ext_cm_AfterStartup), as the COM add-ins
    // dialog does.
    void startWithoutAddin(std::int32_t startFolder = sim::ol::FolderCalendar);
    void connectAfterStart();
    // The loaded add-in (null once Office has released it).
    hb::OHBAddinDesigner* designer() const;
    bool loaded() const { return designer() != nullptr; }
    // The loaded add-in's session (throws when not loaded).
    hb::Session& session() const;

    // ---- what the add-in left ----
    // The add-in's command bar in a window (null when there is none).
    static std::shared_ptr<sim::CommandBar> addinBar(const sim::Window& window);
    // Combo box n (1..3) and the buttons of the add-in's bar in a window.
    std::shared_ptr<sim::CommandBarControl> combo(const sim::Window& window, int n) const;
    std::shared_ptr<sim::CommandBarControl> button(const sim::Window& window,
                                                   std::int32_t faceId) const;
    // Task panes made by the add-in, with their content (in order made).
    std::vector<std::shared_ptr<PaneControl>> paneControls() const;
    std::shared_ptr<sim::CustomTaskPane> paneOf(const sim::Window& window) const;
    // Message boxes that are error reports (Yes/No boxes of the product).
    std::size_t errorDialogs() const;
    // Every message box text, for failure messages.
    std::string messageBoxesText() const;
    // Objects and subscriptions of the simulated Outlook still held by the
    // add-in (the Application registered for GetObject is dropped first, so
    // only the add-in's own references count).
    std::vector<Str> census();
    std::string censusText();

  private:
    std::shared_ptr<DesignerAddin> makeAddin();

    std::unique_ptr<hb::MemoryPlatform> platform_;
    std::unique_ptr<sim::Scenario> scenario_;
    std::weak_ptr<DesignerAddin> addin_;
    std::vector<std::weak_ptr<PaneControl>> panes_;
};

// The calls a fault sweep makes fail, one run each, for a scenario that
// makes n calls: every call; with HB_SWEEP_SAMPLES=k in the environment
// (for quick local runs) about k calls spread evenly, the first and the last
// always included.
std::vector<std::uint64_t> callsToFail(std::uint64_t n);

}  // namespace hbtest
