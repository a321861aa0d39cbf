#include "sim/Office.h"

#include <algorithm>

#include "common/Text.h"

namespace sim {

using namespace detail;

using hb::Members;

namespace {

// How Office reports a member that failed.
[[noreturn]] void failed(const char16_t* member, const Str& typeName) {
    hb::raise(kOfficeErrorNumber,
              u"Method '" + Str(member) + u"' of object '" + typeName + u"' failed");
}

std::int32_t optLong(const Args& args, std::size_t i, std::int32_t dflt) {
    return hb::hasArg(args, i) ? args[i].toLong() : dflt;
}

bool optBool(const Args& args, std::size_t i, bool dflt) {
    return hb::hasArg(args, i) ? args[i].toBool() : dflt;
}

// ---- command bars ----

std::shared_ptr<const hb::MemberTable> commandBarsTable() {
    static const auto t =
        Members<CommandBars>()
            .get(u"Count", [](CommandBars& c) { return static_cast<std::int32_t>(c.bars.size()); })
            .method(u"Item",
                    [](CommandBars& c, Args& args) {
                        const Variant& key = hb::requiredArg(args, 0);
                        if (isText(key)) {
                            auto bar = c.find(key.toStr());
                            if (!bar) hb::raise(hb::err::InvalidProcedureCall);
                            return obj(bar);
                        }
                        std::int32_t i = key.toLong();
                        if (i < 1 || static_cast<std::size_t>(i) > c.bars.size()) {
                            hb::raise(hb::err::InvalidProcedureCall);
                        }
                        return obj(c.bars[static_cast<std::size_t>(i - 1)]);
                    })
            .defaultMember(u"Item")
            .method(
                u"Add",
                [](CommandBars& c, Args& args) {
                    Str name;
                    if (hb::hasArg(args, 0)) {
                        name = args[0].toStr();
                    } else {
                        int n = 1;
                        do {
                            name = u"Custom " + hb::toStr(n++);
                        } while (c.find(name));
                    }
                    return obj(c.addBar(std::move(name), optLong(args, 1, mso::BarLeft),
                                        optBool(args, 2, false), optBool(args, 3, false), false));
                })
            .get(u"ActiveMenuBar", [](CommandBars& c) { return obj(c.menuBar()); })
            .get(u"Parent",
                 [](CommandBars& c) {
                     if (auto w = c.window.lock()) return obj(w);
                     return Variant::nothing();
                 })
            .get(u"Application", [](CommandBars& c) { return obj(c.world().application()); })
            .enumerable([](CommandBars& c) {
                std::vector<Variant> out;
                for (const auto& b : c.bars)
                    out.push_back(obj(b));
                return out;
            })
            .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> commandBarTable() {
    static const auto t =
        Members<CommandBar>()
            .prop(
                u"Name", [](CommandBar& b) { return b.name; },
                [](CommandBar& b, const Variant& v) { b.name = v.toStr(); })
            .get(u"NameLocal", [](CommandBar& b) { return b.name; })
            .prop(
                u"Visible", [](CommandBar& b) { return b.visible; },
                [](CommandBar& b, const Variant& v) { b.visible = v.toBool(); })
            .prop(
                u"Enabled", [](CommandBar& b) { return b.enabled; },
                [](CommandBar& b, const Variant& v) { b.enabled = v.toBool(); })
            .prop(
                u"Position", [](CommandBar& b) { return b.position; },
                [](CommandBar& b, const Variant& v) { b.position = v.toLong(); })
            .get(u"Type", [](CommandBar& b) { return std::int32_t{b.menuBar ? 1 : 0}; })
            .get(u"BuiltIn", [](CommandBar& b) { return b.builtIn; })
            .get(u"Controls", [](CommandBar& b) { return obj(b.controls); })
            .get(u"Index",
                 [](CommandBar& b) {
                     auto o = b.owner.lock();
                     if (!o) return std::int32_t{0};
                     auto it = std::find(o->bars.begin(), o->bars.end(), self(b));
                     return static_cast<std::int32_t>(it - o->bars.begin() + 1);
                 })
            .get(u"Parent",
                 [](CommandBar& b) {
                     if (auto o = b.owner.lock()) {
                         if (auto w = o->window.lock()) return obj(w);
                     }
                     return Variant::nothing();
                 })
            .get(u"Application", [](CommandBar& b) { return obj(b.world().application()); })
            .method(u"Delete",
                    [](CommandBar& b) {
                        if (b.builtIn) failed(u"Delete", b.typeName());
                        b.remove();
                    })
            .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> controlsTable() {
    static const auto t =
        Members<CommandBarControls>()
            .get(u"Count",
                 [](CommandBarControls& c) { return static_cast<std::int32_t>(c.list.size()); })
            .method(u"Item",
                    [](CommandBarControls& c, Args& args) {
                        const Variant& key = hb::requiredArg(args, 0);
                        if (isText(key)) {
                            Str caption = key.toStr();
                            for (const auto& x : c.list) {
                                if (hb::text::equalsNoCase(x->caption, caption)) return obj(x);
                            }
                            hb::raise(hb::err::InvalidProcedureCall);
                        }
                        std::int32_t i = key.toLong();
                        if (i < 1 || static_cast<std::size_t>(i) > c.list.size()) {
                            hb::raise(hb::err::InvalidProcedureCall);
                        }
                        return obj(c.list[static_cast<std::size_t>(i - 1)]);
                    })
            .defaultMember(u"Item")
            .method(u"Add",
                    [](CommandBarControls& c, Args& args) {
                        // Add(Type, Id, Parameter, Before, Temporary)
                        std::int32_t type = optLong(args, 0, mso::ControlButton);
                        std::int32_t id = optLong(args, 1, 1);
                        std::int32_t before = optLong(args, 3, 0);
                        bool temporary = optBool(args, 4, false);
                        switch (type) {
                            case mso::ControlButton:
                            case mso::ControlEdit:
                            case mso::ControlDropdown:
                            case mso::ControlComboBox:
                            case mso::ControlPopup:
                                break;
                            default:
                                failed(u"Add", c.typeName());
                        }
                        if (before < 0 || static_cast<std::size_t>(before) > c.list.size() + 1) {
                            failed(u"Add", c.typeName());
                        }
                        auto x = c.add(type, id, temporary, before);
                        if (hb::hasArg(args, 2)) x->parameter = args[2].toStr();
                        return obj(x);
                    })
            .get(u"Parent",
                 [](CommandBarControls& c) {
                     if (auto p = c.parent.lock()) return obj(p);
                     return Variant::nothing();
                 })
            .get(u"Application", [](CommandBarControls& c) { return obj(c.world().application()); })
            .enumerable([](CommandBarControls& c) {
                std::vector<Variant> out;
                for (const auto& x : c.list)
                    out.push_back(obj(x));
                return out;
            })
            .build();
    return t;
}

template <class Tbl>
Tbl& commonControlMembers(Tbl& t) {
    using C = CommandBarControl;
    t.prop(
         u"Caption", [](C& c) { return c.caption; },
         [](C& c, const Variant& v) { c.caption = v.toStr(); })
        .prop(
            u"TooltipText", [](C& c) { return c.tooltipText; },
            [](C& c, const Variant& v) { c.tooltipText = v.toStr(); })
        .prop(
            u"Tag", [](C& c) { return c.tag; }, [](C& c, const Variant& v) { c.tag = v.toStr(); })
        .prop(
            u"Parameter", [](C& c) { return c.parameter; },
            [](C& c, const Variant& v) { c.parameter = v.toStr(); })
        .prop(
            u"OnAction", [](C& c) { return c.onAction; },
            [](C& c, const Variant& v) { c.onAction = v.toStr(); })
        .prop(
            u"DescriptionText", [](C& c) { return c.descriptionText; },
            [](C& c, const Variant& v) { c.descriptionText = v.toStr(); })
        .prop(
            u"Width", [](C& c) { return c.width; },
            [](C& c, const Variant& v) { c.width = v.toLong(); })
        .prop(
            u"Enabled", [](C& c) { return c.enabled; },
            [](C& c, const Variant& v) { c.enabled = v.toBool(); })
        .prop(
            u"Visible", [](C& c) { return c.visible; },
            [](C& c, const Variant& v) { c.visible = v.toBool(); })
        .prop(
            u"BeginGroup", [](C& c) { return c.beginGroup; },
            [](C& c, const Variant& v) { c.beginGroup = v.toBool(); })
        .get(u"Type", [](C& c) { return c.type; })
        .get(u"Id", [](C& c) { return c.id; })
        .get(u"BuiltIn", [](C& c) { return c.builtIn; })
        .get(u"Index",
             [](C& c) {
                 auto o = c.owner.lock();
                 if (!o) return std::int32_t{0};
                 auto it = std::find(o->list.begin(), o->list.end(), self(c));
                 return static_cast<std::int32_t>(it - o->list.begin() + 1);
             })
        .get(u"Parent",
             [](C& c) {
                 if (auto o = c.owner.lock()) {
                     if (auto p = o->parent.lock()) return obj(p);
                 }
                 return Variant::nothing();
             })
        .get(u"Application", [](C& c) { return obj(c.world().application()); })
        .method(u"Delete", [](C& c) { c.remove(); });
    return t;
}

std::shared_ptr<const hb::MemberTable> buttonTable() {
    static const auto t = [] {
        using C = CommandBarControl;
        Members<C> m;
        commonControlMembers(m)
            .prop(
                u"FaceId", [](C& c) { return c.faceId; },
                [](C& c, const Variant& v) { c.faceId = v.toLong(); })
            .prop(
                u"Style", [](C& c) { return c.style; },
                [](C& c, const Variant& v) { c.style = v.toLong(); })
            .prop(
                u"State", [](C& c) { return c.state; },
                [](C& c, const Variant& v) { c.state = v.toLong(); })
            .events(u"_CommandBarButtonEvents");
        return m.build();
    }();
    return t;
}

std::shared_ptr<const hb::MemberTable> comboTable() {
    static const auto t = [] {
        using C = CommandBarControl;
        Members<C> m;
        commonControlMembers(m)
            .prop(
                u"Style", [](C& c) { return c.style; },
                [](C& c, const Variant& v) { c.style = v.toLong(); })
            .prop(
                u"Text", [](C& c) { return c.text; },
                [](C& c, const Variant& v) { c.setText(v.toStr()); })
            .prop(
                u"ListIndex", [](C& c) { return c.listIndex; },
                [](C& c, const Variant& v) { c.setListIndex(v.toLong()); })
            .get(u"ListCount", [](C& c) { return static_cast<std::int32_t>(c.entries.size()); })
            .prop(
                u"List",
                [](C& c, Args& args) {
                    std::int32_t i = hb::requiredArg(args, 0).toLong();
                    if (i < 1 || static_cast<std::size_t>(i) > c.entries.size()) {
                        failed(u"List", c.typeName());
                    }
                    return c.entries[static_cast<std::size_t>(i - 1)];
                },
                [](C& c, Args& args, const Variant& v) {
                    std::int32_t i = hb::requiredArg(args, 0).toLong();
                    if (i < 1 || static_cast<std::size_t>(i) > c.entries.size()) {
                        failed(u"List", c.typeName());
                    }
                    c.entries[static_cast<std::size_t>(i - 1)] = v.toStr();
                })
            .method(u"AddItem",
                    [](C& c, Args& args) {
                        Str text = hb::requiredArg(args, 0).toStr();
                        std::int32_t at = optLong(args, 1, 0);
                        if (at < 0 || static_cast<std::size_t>(at) > c.entries.size() + 1) {
                            failed(u"AddItem", c.typeName());
                        }
                        if (at == 0) {
                            c.entries.push_back(std::move(text));
                        } else {
                            c.entries.insert(c.entries.begin() + (at - 1), std::move(text));
                            if (c.listIndex >= at) ++c.listIndex;
                        }
                    })
            .method(u"RemoveItem",
                    [](C& c, Args& args) {
                        std::int32_t i = hb::requiredArg(args, 0).toLong();
                        if (i < 1 || static_cast<std::size_t>(i) > c.entries.size()) {
                            failed(u"RemoveItem", c.typeName());
                        }
                        c.entries.erase(c.entries.begin() + (i - 1));
                        if (c.listIndex == i)
                            c.listIndex = 0;
                        else if (c.listIndex > i)
                            --c.listIndex;
                    })
            .method(u"Clear",
                    [](C& c) {
                        c.entries.clear();
                        c.text.clear();
                        c.listIndex = 0;
                    })
            .prop(
                u"DropDownLines", [](C& c) { return c.dropDownLines; },
                [](C& c, const Variant& v) { c.dropDownLines = v.toLong(); })
            .prop(
                u"DropDownWidth", [](C& c) { return c.dropDownWidth; },
                [](C& c, const Variant& v) { c.dropDownWidth = v.toLong(); })
            .events(u"_CommandBarComboBoxEvents");
        return m.build();
    }();
    return t;
}

std::shared_ptr<const hb::MemberTable> popupTable() {
    static const auto t = [] {
        using C = CommandBarControl;
        Members<C> m;
        commonControlMembers(m).get(u"Controls", [](C& c) { return obj(c.controls); });
        return m.build();
    }();
    return t;
}

std::shared_ptr<const hb::MemberTable> controlTableFor(std::int32_t type) {
    switch (type) {
        case mso::ControlEdit:
        case mso::ControlDropdown:
        case mso::ControlComboBox:
            return comboTable();
        case mso::ControlPopup:
            return popupTable();
        default:
            return buttonTable();
    }
}

const char16_t* controlTypeName(std::int32_t type) {
    switch (type) {
        case mso::ControlEdit:
        case mso::ControlDropdown:
        case mso::ControlComboBox:
            return u"CommandBarComboBox";
        case mso::ControlPopup:
            return u"CommandBarPopup";
        default:
            return u"CommandBarButton";
    }
}

// ---- task panes ----

std::shared_ptr<const hb::MemberTable> factoryTable() {
    static const auto t = Members<TaskPaneFactory>()
                              .method(u"CreateCTP",
                                      [](TaskPaneFactory& f, Args& args) {
                                          Str progId = hb::requiredArg(args, 0).toStr();
                                          Str title = hb::requiredArg(args, 1).toStr();
                                          std::shared_ptr<Window> window;
                                          if (hb::hasArg(args, 2)) {
                                              window = std::dynamic_pointer_cast<Window>(
                                                  Instruments::simObject(args[2]));
                                              if (!window) hb::raise(hb::err::TypeMismatch);
                                          } else {
                                              window = f.world().activeWindow();
                                          }
                                          if (!window || !window->open)
                                              failed(u"CreateCTP", f.typeName());
                                          auto content = f.world().createControl(progId);
                                          auto pane = f.world().make<CustomTaskPane>(
                                              std::move(title), window, std::move(content));
                                          window->panes.push_back(pane);
                                          return obj(pane);
                                      })
                              .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> paneTable() {
    static const auto t =
        Members<CustomTaskPane>()
            .get(u"Title", [](CustomTaskPane& p) { return p.title; })
            .get(u"Application", [](CustomTaskPane& p) { return obj(p.world().application()); })
            .get(u"Window", [](CustomTaskPane& p) { return obj(p.window.lock()); })
            .prop(
                u"Visible", [](CustomTaskPane& p) { return p.visible; },
                [](CustomTaskPane& p, const Variant& v) { p.setVisible(v.toBool()); })
            .get(u"ContentControl",
                 [](CustomTaskPane& p) {
                     if (!p.content) return Variant::nothing();
                     return Variant(p.content);
                 })
            .prop(
                u"Height", [](CustomTaskPane& p) { return p.height(); },
                [](CustomTaskPane& p, const Variant& v) { p.setHeight(v.toLong()); })
            .prop(
                u"Width", [](CustomTaskPane& p) { return p.width(); },
                [](CustomTaskPane& p, const Variant& v) { p.setWidth(v.toLong()); })
            .prop(
                u"DockPosition", [](CustomTaskPane& p) { return p.dockPosition; },
                [](CustomTaskPane& p, const Variant& v) { p.setDockPosition(v.toLong()); })
            .prop(
                u"DockPositionRestrict", [](CustomTaskPane& p) { return p.dockPositionRestrict; },
                [](CustomTaskPane& p, const Variant& v) {
                    std::int32_t r = v.toLong();
                    if (r < 0 || r > 3) hb::raise(hb::err::InvalidProcedureCall);
                    p.dockPositionRestrict = r;
                })
            .method(u"Delete", [](CustomTaskPane& p) { p.remove(); })
            .events(u"_CustomTaskPaneEvents")
            .build();
    return t;
}

}  // namespace

// ======================= CommandBars =======================

CommandBars::CommandBars(Outlook& world, std::weak_ptr<Window> window_)
    : SimObject(world, u"CommandBars", commandBarsTable()), window(std::move(window_)) {}

std::shared_ptr<CommandBar> CommandBars::addBar(Str name, std::int32_t position, bool menu,
                                                bool temporary, bool builtIn) {
    if (find(name)) hb::raise(hb::err::InvalidProcedureCall);
    if (position < mso::BarLeft || position > mso::BarPopup) {
        hb::raise(hb::err::InvalidProcedureCall);
    }
    auto bar = world().make<CommandBar>(std::move(name));
    bar->position = position;
    bar->menuBar = menu;
    bar->temporary = temporary;
    bar->builtIn = builtIn;
    bar->owner = self(*this);
    bar->controls = world().make<CommandBarControls>();
    bar->controls->parent = bar;
    bars.push_back(bar);
    return bar;
}

std::shared_ptr<CommandBar> CommandBars::find(StrView name) const {
    for (const auto& b : bars) {
        if (hb::text::equalsNoCase(b->name, name)) return b;
    }
    return nullptr;
}

std::shared_ptr<CommandBar> CommandBars::menuBar() const {
    for (const auto& b : bars) {
        if (b->menuBar) return b;
    }
    return nullptr;
}

void CommandBars::dropTemporary() {
    std::vector<std::shared_ptr<CommandBar>> keep;
    for (const auto& b : bars) {
        if (b->temporary) {
            b->deleted = true;
            b->controls->dropTemporary();
        } else {
            b->controls->dropTemporary();
            keep.push_back(b);
        }
    }
    bars = std::move(keep);
}

void CommandBars::forEachControl(
    const std::function<void(const std::shared_ptr<CommandBarControl>&)>& f) const {
    std::vector<std::shared_ptr<CommandBarControls>> todo;
    for (const auto& b : bars)
        todo.push_back(b->controls);
    while (!todo.empty()) {
        auto list = todo.back();
        todo.pop_back();
        if (!list) continue;
        for (const auto& c : list->list) {
            f(c);
            if (c->controls) todo.push_back(c->controls);
        }
    }
}

CommandBar::CommandBar(Outlook& world, Str name_)
    : SimObject(world, u"CommandBar", commandBarTable()), name(std::move(name_)) {}

void CommandBar::remove() {
    deleted = true;
    if (auto o = owner.lock()) {
        std::erase_if(o->bars, [this](const auto& b) { return b.get() == this; });
    }
    for (const auto& c : controls->list)
        c->deleted = true;
}

Str CommandBar::unusableReason() const {
    return deleted ? u"Method of object '" + typeName() + u"' failed" : Str();
}

CommandBarControls::CommandBarControls(Outlook& world)
    : SimObject(world, u"CommandBarControls", controlsTable()) {}

std::shared_ptr<CommandBarControl> CommandBarControls::add(std::int32_t type, std::int32_t id,
                                                           bool temporary, std::int32_t before) {
    auto c = world().make<CommandBarControl>(type);
    c->id = id;
    c->temporary = temporary;
    c->owner = self(*this);
    if (type == mso::ControlPopup) {
        c->controls = world().make<CommandBarControls>();
        c->controls->parent = c;
    }
    if (c->isComboBox())
        c->width = 100;
    else
        c->width = 23;
    if (before >= 1 && static_cast<std::size_t>(before) <= list.size()) {
        list.insert(list.begin() + (before - 1), c);
    } else {
        list.push_back(c);
    }
    return c;
}

void CommandBarControls::dropTemporary() {
    std::vector<std::shared_ptr<CommandBarControl>> keep;
    for (const auto& c : list) {
        if (c->temporary) {
            c->deleted = true;
            if (c->controls) {
                for (const auto& x : c->controls->list)
                    x->deleted = true;
            }
        } else {
            if (c->controls) c->controls->dropTemporary();
            keep.push_back(c);
        }
    }
    list = std::move(keep);
}

CommandBarControl::CommandBarControl(Outlook& world, std::int32_t type_)
    : SimObject(world, controlTypeName(type_), controlTableFor(type_)), type(type_) {}

bool CommandBarControl::isComboBox() const {
    return type == mso::ControlEdit || type == mso::ControlDropdown || type == mso::ControlComboBox;
}

void CommandBarControl::setText(const Str& t) {
    text = t;
    listIndex = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i] == t) {
            listIndex = static_cast<std::int32_t>(i + 1);
            break;
        }
    }
}

void CommandBarControl::setListIndex(std::int32_t i) {
    if (i < 0 || static_cast<std::size_t>(i) > entries.size()) failed(u"ListIndex", typeName());
    listIndex = i;
    text = i == 0 ? Str() : entries[static_cast<std::size_t>(i - 1)];
}

void CommandBarControl::remove() {
    deleted = true;
    if (auto o = owner.lock()) {
        std::erase_if(o->list, [this](const auto& c) { return c.get() == this; });
    }
    if (controls) {
        for (const auto& x : controls->list)
            x->deleted = true;
    }
}

Str CommandBarControl::unusableReason() const {
    return deleted ? u"Method of object '" + typeName() + u"' failed" : Str();
}

// ======================= task panes =======================

TaskPaneFactory::TaskPaneFactory(Outlook& world)
    : SimObject(world, u"ICTPFactory", factoryTable()) {}

CustomTaskPane::CustomTaskPane(Outlook& world, Str title_, std::weak_ptr<Window> window_,
                               hb::ObjectPtr content_)
    : SimObject(world, u"CustomTaskPane", paneTable()),
      title(std::move(title_)),
      window(std::move(window_)),
      content(std::move(content_)) {}

std::int32_t CustomTaskPane::width() const {
    switch (dockPosition) {
        case mso::DockLeft:
        case mso::DockRight:
            return sideWidth;
        case mso::DockTop:
        case mso::DockBottom:
            return kWindowWidth;
        default:
            return floatWidth;
    }
}

std::int32_t CustomTaskPane::height() const {
    switch (dockPosition) {
        case mso::DockLeft:
        case mso::DockRight:
            return kWindowHeight;
        case mso::DockTop:
        case mso::DockBottom:
            return sideHeight;
        default:
            return floatHeight;
    }
}

namespace {
// A pane's event arrives after the call that caused it (posted); a pane
// deleted by then raises nothing.
void postPaneEvent(CustomTaskPane& p, const char16_t* member) {
    std::weak_ptr<CustomTaskPane> weak = self(p);
    p.world().post([weak, member] {
        auto pane = weak.lock();
        if (!pane || pane->deleted || !pane->attached()) return;
        pane->raiseEvent(u"_CustomTaskPaneEvents", member, {obj(pane)});
    });
}

void dockEvent(CustomTaskPane& p) {
    ++p.dockEvents;
    postPaneEvent(p, u"DockPositionStateChange");
}
}  // namespace

void CustomTaskPane::setDockPosition(std::int32_t position) {
    if (position < mso::DockLeft || position > mso::DockFloating) {
        hb::raise(hb::err::InvalidProcedureCall);
    }
    bool horizontal = position == mso::DockLeft || position == mso::DockRight;
    bool vertical = position == mso::DockTop || position == mso::DockBottom;
    // msoCTPDockPositionRestrictNoChange 1, NoHorizontal 2, NoVertical 3
    if ((dockPositionRestrict == 1 && position != dockPosition) ||
        (dockPositionRestrict == 2 && horizontal) || (dockPositionRestrict == 3 && vertical)) {
        failed(u"DockPosition", typeName());
    }
    if (position == dockPosition) return;
    dockPosition = position;
    dockEvent(*this);
}

void CustomTaskPane::setWidth(std::int32_t w) {
    if (dockPosition == mso::DockTop || dockPosition == mso::DockBottom || w < 0) {
        failed(u"Width", typeName());
    }
    std::int32_t& slot = dockPosition == mso::DockFloating ? floatWidth : sideWidth;
    if (slot == w) return;
    slot = w;
    dockEvent(*this);
}

void CustomTaskPane::setHeight(std::int32_t h) {
    if (dockPosition == mso::DockLeft || dockPosition == mso::DockRight || h < 0) {
        failed(u"Height", typeName());
    }
    std::int32_t& slot = dockPosition == mso::DockFloating ? floatHeight : sideHeight;
    if (slot == h) return;
    slot = h;
    dockEvent(*this);
}

void CustomTaskPane::setVisible(bool v) {
    if (visible == v) return;
    visible = v;
    postPaneEvent(*this, u"VisibleStateChange");
}

void CustomTaskPane::remove() {
    if (deleted) return;
    deleted = true;
    visible = false;
    if (auto w = window.lock()) {
        std::erase_if(w->panes, [this](const auto& p) { return p.get() == this; });
    }
    content.reset();  // the control goes with its pane
}

Str CustomTaskPane::unusableReason() const {
    return deleted ? Str(u"The taskpane has been deleted or is otherwise no longer valid.") : Str();
}

void CustomTaskPane::detach() {
    content.reset();
    SimObject::detach();
}

}  // namespace sim
