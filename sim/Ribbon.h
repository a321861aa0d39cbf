#pragma once
// The ribbon of Office 2010 and later as it hosts one add-in's
// customization, in the simulated Outlook's explorers.
//
// Modelled behaviour the add-in relies on:
//  - From version 14 on, right after OnConnection, Office asks the add-in
//    (its IRibbonExtensibility) for GetCustomUI("Microsoft.Outlook.Explorer")
//    and reads the XML. XML that Office refuses (not well formed, another
//    namespace than the 2006 or 2009 customUI one, an unknown element, an
//    id used twice, a callback the add-in's IDispatch does not have) shows
//    nothing at all; the reason is kept (loadError). Otherwise onLoad gets
//    the IRibbonUI.
//  - The calendar's Home tab (idMso TabCalendarHome) shows while an
//    explorer shows a calendar folder. Whenever the driver is idle, Office
//    asks every control of a shown tab that it has not asked since its last
//    invalidation: the group's getVisible first (a hidden group's controls
//    are not asked), then per control getVisible, getEnabled, getLabel,
//    getScreentip, getImage and for a drop-down getItemCount, getItemLabel
//    and getItemID for every item, getSelectedItemIndex. Every callback is
//    called by name through the add-in's dispatch with Office's arguments
//    (an IRibbonControl with Id, Tag and Context, the window's Explorer;
//    32-bit indexes) and must return the type Office expects.
//  - IRibbonUI.Invalidate asks everything again; InvalidateControl(id) only
//    that control (an unknown id raises 5).
//  - A drop-down holds at most 1,000 items (more is refused and counted).
//  - A callback that raises is swallowed by Office (counted in
//    callbackErrors): the add-in must not let it happen.
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "sim/Outlook.h"

namespace sim {

class Ribbon;

// The IRibbonUI handed to onLoad.
class RibbonUI : public SimObject {
  public:
    RibbonUI(Outlook& world, std::weak_ptr<Ribbon> ribbon);
    std::weak_ptr<Ribbon> ribbon;
};

// The IRibbonControl of one control in one window.
class RibbonControl : public SimObject {
  public:
    RibbonControl(Outlook& world, Str id, Str tag, std::weak_ptr<Window> context);
    Str id, tag;
    std::weak_ptr<Window> context;
};

// One element of the ribbon XML.
struct XmlElement {
    Str name;
    std::vector<std::pair<Str, Str>> attributes;
    std::vector<XmlElement> children;
    const Str* attribute(StrView key) const;
};
// Parses XML (elements, attributes, comments, the declaration; text is
// ignored); nullopt with the reason in `error` when it is not well formed.
std::optional<XmlElement> parseXml(const Str& text, Str& error);
// Whether Office's customUI schema has an element of that name.
bool isRibbonElement(const Str& name);

class Ribbon : public std::enable_shared_from_this<Ribbon> {
  public:
    explicit Ribbon(Outlook& world);

    // Asks the add-in for its explorer ribbon and loads it; false (nothing
    // shown) when the XML is refused, with the reason in loadError.
    bool load(hb::ObjectPtr addin);
    void unload();
    bool loaded() const { return static_cast<bool>(addin_); }
    Str xml;
    Str loadError;
    // A host that reaches the add-in over real COM checks what this one
    // cannot see: whether the add-in's IDispatch knows a callback's name
    // (else the add-in's own member table is asked), and the XML with a
    // parser of its own (the reason Office would give, empty when good).
    std::function<bool(const Str& member)> hasCallback;
    std::function<Str(const Str& xml)> checkXml;

    // What one control shows in one explorer.
    struct ControlView {
        Str id, kind;  // "group", "dropDown", "button"
        bool asked = false;
        bool visible = true;
        bool enabled = true;
        Str label, screentip;
        Variant image;
        std::vector<std::pair<Str, Str>> items;  // id, label
        std::int32_t selected = -1;
    };
    // Asks what is not known yet in every explorer that shows the calendar
    // tab.
    void refresh();
    // The control as shown in an explorer (null when never asked there).
    const ControlView* view(const Explorer& explorer, StrView id) const;
    // The group is on screen in that explorer.
    bool groupShown(const Explorer& explorer) const;
    // The user picks item `index` of a drop-down / presses a button: the
    // control must be shown and enabled (else ScenarioError).
    void pick(const std::shared_ptr<Explorer>& explorer, StrView id, std::int32_t index);
    void press(const std::shared_ptr<Explorer>& explorer, StrView id);

    void invalidateAll();
    void invalidateControl(StrView id);

    // ---- measurements ----
    std::uint64_t callbacks = 0;  // every callback made
    std::map<Str, std::uint64_t> callbackCounts;
    std::uint64_t callbackErrors = 0;  // callbacks that raised into Office
    std::uint64_t typeErrors = 0;      // callbacks that returned a wrong type
    std::uint64_t invalidateAllCalls = 0;
    std::vector<Str> invalidatedControls;  // InvalidateControl's ids, in order
    std::uint64_t tooManyItems = 0;        // drop-downs handed more than 1,000 items

  private:
    struct Control {
        Str id, kind, tag;
        std::map<Str, Str> callbacks;  // attribute -> member name
        Str label;                     // a fixed label
    };
    Variant call(const Str& member, Args args);
    Variant callFor(const Control& c, const std::shared_ptr<Explorer>& e, const char16_t* attribute,
                    Args more = {});
    void ask(Control& c, const std::shared_ptr<Explorer>& e, ControlView& v);
    bool showsCalendarTab(const Explorer& e) const;
    const Control* find(StrView id) const;
    ControlView& usable(const std::shared_ptr<Explorer>& e, StrView id);
    Str validate(const XmlElement& root, const hb::ObjectPtr& addin);

    Outlook& world_;
    hb::ObjectPtr addin_;
    std::shared_ptr<RibbonUI> ui_;
    Str tab_;
    std::vector<Control> controls_;  // the group first
    std::map<const Window*, std::map<Str, ControlView>> views_;
};

}  // namespace sim
