#pragma once
// The billing controls as a group "Hourbook" on the calendar's Home tab of
// Outlook 2010 and later, a view over the billing model. Office asks the
// add-in for the group's XML (IRibbonExtensibility::GetCustomUI) and then
// calls the callbacks the XML names, by name, through the add-in's
// IDispatch, each with the IRibbonControl whose Context is the window's
// Explorer. Every callback traps its own errors: nothing raises into
// Office.
//
// Office facts relied on (Office's documentation of the ribbon's
// extensibility):
//  - IRibbonExtensibility {000C0396-0000-0000-C000-000000000046}:
//    GetCustomUI(RibbonID) -> BSTR, DISPID 1; Outlook asks with
//    "Microsoft.Outlook.Explorer" for its main windows from version 14 on.
//  - IRibbonUI {000C03A7-0000-0000-C000-000000000046}: Invalidate (1),
//    InvalidateControl(ControlID) (2). An invalidated control has every
//    callback of its own called again when it is next shown (a drop-down's
//    items too); nothing else is asked again.
//  - IRibbonControl {000C0395-0000-0000-C000-000000000046}: Id (1),
//    Context (2, the window: an Explorer), Tag (3).
//  - Callback signatures: onLoad(ribbon); getVisible, getEnabled, getLabel,
//    getScreentip, getImage, getItemCount, getSelectedItemIndex(control);
//    getItemLabel, getItemID(control, index); a drop-down's
//    onAction(control, selectedId, selectedIndex); a button's
//    onAction(control).
//  - A drop-down holds at most 1,000 items.
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "common/Object.h"
#include "common/Session.h"
#include "explorer/BillingModel.h"

namespace hb {

class cRibbon {
  public:
    explicit cRibbon(Session& s);
    ~cRibbon();
    cRibbon(const cRibbon&) = delete;
    cRibbon& operator=(const cRibbon&) = delete;

    // The ribbon of the window kind Office asks for: the Explorer's gets
    // the group (and from then on the add-in adds no command bar); every
    // other kind gets none (empty text).
    Str GetCustomUI(const Str& ribbonId) noexcept;
    static Str fncRibbonXml();

    // ---- Office's callbacks ----
    void onLoad(const Variant& ribbonUI) noexcept;
    bool getVisible(const Variant& control) noexcept;
    bool getEnabled(const Variant& control) noexcept;
    Str getLabel(const Variant& control) noexcept;
    Str getScreentip(const Variant& control) noexcept;
    Variant getImage(const Variant& control) noexcept;
    std::int32_t getItemCount(const Variant& control) noexcept;
    Str getItemLabel(const Variant& control, std::int32_t index) noexcept;
    Str getItemID(const Variant& control, std::int32_t index) noexcept;
    std::int32_t getSelectedItemIndex(const Variant& control) noexcept;
    // A drop-down's pick (selectedId given) or a button's press.
    void onAction(const Variant& control, const std::optional<Str>& selectedId,
                  std::int32_t selectedIndex) noexcept;

    // ---- the add-in's own events ----
    // The selection of an Explorer changed: the controls whose state or
    // value changes are invalidated, one by one; all lists only after the
    // settings changed.
    void subSelectionChange(const Variant& explorer) noexcept;
    // A window moved to another folder: the group's visibility is asked
    // again.
    void subFolderSwitch() noexcept;
    // A window closed: what its selection showed is let go of, and with it
    // the window.
    void subExplorerClose() noexcept;
    // Lets go of Office's IRibbonUI (the add-in is being unloaded).
    void release() noexcept;

    // The text shown as the last item of a list too long for a drop-down.
    static constexpr char16_t kMoreLabel[] = u"More\u2026";
    // A drop-down shows at most this many items of a longer list (the
    // selected appointment's value and the newest entries), then "More…".
    static constexpr std::size_t kMaxItems = 1000;
    static constexpr std::size_t kRecentItems = 25;

  private:
    // What a drop-down was answered since its last invalidation, in every
    // window that asked (Office keeps one answer per window; an
    // invalidation reaches them all): its states and its selected values
    // (letter case folded). Nothing answered: nothing shown to correct.
    struct Shown {
        std::vector<bool> enabled;
        std::vector<Str> values;
        void clear() {
            enabled.clear();
            values.clear();
        }
        // Every window shows this state and value.
        bool showsOnly(bool state, const Str& folded) const;
    };
    // Which control an id names: a list (0..2), a button, the group.
    enum class Kind { None, Group, List, Report, Settings, Statistics };
    struct Target {
        Kind kind = Kind::None;
        std::size_t list = 0;
    };
    static Target targetOf(const Str& id);
    // A button's caption, tip and image name (none for other controls).
    struct Face {
        Str caption, tip;
        const char16_t* image;
    };
    std::optional<Face> faceOf(Kind kind) const;
    Target target(const Variant& control) const;
    // The one appointment, meeting or occurrence selected in the control's
    // window, or Nothing.
    Variant selectedItem(const Variant& explorer);
    // What a window's selection shows: the drop-downs' state and values.
    // Office asks each invalidated drop-down for them several times (its
    // state, its items, its selected one); they are read once per window
    // and kept until the next selection change, pick, folder switch or
    // settings change, after which Office asks again.
    struct Selection {
        Variant explorer;
        bool enabled = false;
        std::array<Str, 3> values;
    };
    const Selection& selectionOf(const Variant& explorer);
    Selection readSelection(const Variant& explorer);
    bool showsCalendar(const Variant& explorer) const;
    // The items list n shows: every entry, or for a long list the value
    // given and the newest entries (without "More…").
    std::vector<Str> shortList(std::size_t n, const Str& value) const;
    bool longList(std::size_t n) const;
    Str valueOf(const Variant& explorer, std::size_t n);
    void invalidate(const Str& id);
    void refreshSettings();
    // Removes the command bars a session that started before Office asked
    // for the ribbon made.
    void subRemoveBars();

    Session& s_;
    BillingModel model_;
    Variant ribbonUI_;
    std::array<Shown, 3> shown_;
    std::optional<Selection> selection_;
    // The lists' generation the drop-downs were handed.
    std::uint64_t handed_ = 0;
    // The items of each long list as last handed, so that a pick's index
    // names what the user saw.
    std::array<std::vector<Str>, 3> longItems_;
};

// The add-in's dispatch members that Office calls for the ribbon
// (GetCustomUI and every callback, by name, with Office's arguments), over
// a session's ribbon. What a COM layer or a simulated Office calls.
ObjectPtr makeRibbonDispatch(Session& s);
// The session's ribbon, made on first use.
cRibbon& fncRibbon(Session& s);

}  // namespace hb
