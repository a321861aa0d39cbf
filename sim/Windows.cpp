// Explorers, inspectors, the selection, and the window operations of the
// simulated Outlook (opening, activating, closing, switching folders).
#include <algorithm>

#include "common/Text.h"
#include "sim/Office.h"
#include "sim/Outlook.h"

namespace sim {

using namespace detail;

using hb::Members;

namespace {

template <class T>
Variant itemAt(const std::vector<std::shared_ptr<T>>& list, const Args& args) {
    std::int32_t i = hb::requiredArg(args, 0).toLong();
    if (i < 1 || static_cast<std::size_t>(i) > list.size()) {
        hb::raise(kOutlookErrorNumber, u"Array index out of bounds.");
    }
    return obj(list[static_cast<std::size_t>(i - 1)]);
}

template <class T>
std::vector<Variant> all(const std::vector<std::shared_ptr<T>>& list) {
    std::vector<Variant> out;
    out.reserve(list.size());
    for (const auto& p : list)
        out.push_back(obj(p));
    return out;
}

std::shared_ptr<const hb::MemberTable> explorerTable() {
    static const auto t =
        Members<Explorer>()
            .prop(
                u"CurrentFolder", [](Explorer& e) { return obj(e.currentFolder); },
                [](Explorer& e, const Variant& v) {
                    auto f = std::dynamic_pointer_cast<Folder>(Instruments::simObject(v));
                    if (!f) hb::raise(hb::err::TypeMismatch);
                    e.world().switchFolder(self(e), f);
                })
            .get(u"Selection",
                 [](Explorer& e) { return obj(e.world().make<Selection>(self(e), e.selection)); })
            .get(u"CommandBars", [](Explorer& e) { return obj(e.commandBars); })
            .get(u"Caption", [](Explorer& e) { return e.caption(); })
            .get(u"Class", [](Explorer&) { return std::int32_t{34}; })
            .get(u"Application", [](Explorer& e) { return obj(e.world().application()); })
            .get(u"Parent", [](Explorer& e) { return obj(e.world().application()); })
            .get(u"Session", [](Explorer& e) { return obj(e.world().nameSpace()); })
            .method(u"Activate", [](Explorer& e) { e.world().activate(self(e)); })
            .method(u"Display", [](Explorer& e) { e.world().activate(self(e)); })
            .method(u"Close", [](Explorer& e) { e.world().closeWindow(self(e)); })
            .events(u"ExplorerEvents")
            .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> inspectorTable() {
    static const auto t =
        Members<Inspector>()
            .get(u"CurrentItem",
                 [](Inspector& i) {
                     return i.currentItem ? obj(i.currentItem->view()) : Variant::nothing();
                 })
            .get(u"CommandBars", [](Inspector& i) { return obj(i.commandBars); })
            .get(u"Caption", [](Inspector& i) { return i.caption(); })
            .get(u"Class", [](Inspector&) { return std::int32_t{35}; })
            .get(u"Application", [](Inspector& i) { return obj(i.world().application()); })
            .get(u"Parent", [](Inspector& i) { return obj(i.world().application()); })
            .get(u"Session", [](Inspector& i) { return obj(i.world().nameSpace()); })
            .method(u"Activate", [](Inspector& i) { i.world().activate(self(i)); })
            .method(u"Display", [](Inspector& i) { i.world().activate(self(i)); })
            .method(u"Close",
                    [](Inspector& i, Args& args) {
                        // olSave 0, olDiscard 1, olPromptForSave 2
                        if (hb::hasArg(args, 0) && args[0].toLong() == 0 && i.currentItem &&
                            i.currentItem->dirty) {
                            i.currentItem->save();
                        }
                        i.world().closeWindow(self(i));
                    })
            .events(u"InspectorEvents")
            .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> explorersTable() {
    static const auto t =
        Members<Explorers>()
            .get(u"Count",
                 [](Explorers& e) {
                     return static_cast<std::int32_t>(e.world().explorers().size());
                 })
            .method(u"Item",
                    [](Explorers& e, Args& args) { return itemAt(e.world().explorers(), args); })
            .defaultMember(u"Item")
            .method(u"Add",
                    [](Explorers& e, Args& args) {
                        auto f = std::dynamic_pointer_cast<Folder>(
                            Instruments::simObject(hb::requiredArg(args, 0)));
                        if (!f) hb::raise(hb::err::TypeMismatch);
                        return obj(e.world().openExplorer(f));
                    })
            .get(u"Application", [](Explorers& e) { return obj(e.world().application()); })
            .get(u"Parent", [](Explorers& e) { return obj(e.world().application()); })
            .enumerable([](Explorers& e) { return all(e.world().explorers()); })
            .events(u"ExplorersEvents")
            .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> inspectorsTable() {
    static const auto t =
        Members<Inspectors>()
            .get(u"Count",
                 [](Inspectors& i) {
                     return static_cast<std::int32_t>(i.world().inspectors().size());
                 })
            .method(u"Item",
                    [](Inspectors& i, Args& args) { return itemAt(i.world().inspectors(), args); })
            .defaultMember(u"Item")
            .method(u"Add",
                    [](Inspectors& i, Args& args) {
                        auto item = std::dynamic_pointer_cast<Item>(
                            Instruments::simObject(hb::requiredArg(args, 0)));
                        if (!item) hb::raise(hb::err::TypeMismatch);
                        return obj(i.world().openInspector(item->resolved()));
                    })
            .get(u"Application", [](Inspectors& i) { return obj(i.world().application()); })
            .get(u"Parent", [](Inspectors& i) { return obj(i.world().application()); })
            .enumerable([](Inspectors& i) { return all(i.world().inspectors()); })
            .events(u"InspectorsEvents")
            .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> selectionTable() {
    static const auto t =
        Members<Selection>()
            .get(u"Count", [](Selection& s) { return static_cast<std::int32_t>(s.items.size()); })
            .method(u"Item",
                    [](Selection& s, Args& args) {
                        std::int32_t i = hb::requiredArg(args, 0).toLong();
                        if (i < 1 || static_cast<std::size_t>(i) > s.items.size()) {
                            hb::raise(kOutlookErrorNumber, u"Array index out of bounds.");
                        }
                        return s.world().lookup(s.items[static_cast<std::size_t>(i - 1)]);
                    })
            .defaultMember(u"Item")
            .get(u"Application", [](Selection& s) { return obj(s.world().application()); })
            .get(u"Parent", [](Selection& s) { return obj(s.explorer.lock()); })
            .enumerable([](Selection& s) {
                std::vector<Variant> out;
                for (const auto& item : s.items)
                    out.push_back(s.world().lookup(item));
                return out;
            })
            .build();
    return t;
}

// The built-in bars of a new window.
void setUpBars(Outlook& world, const std::shared_ptr<Window>& w, bool explorer) {
    w->commandBars = world.make<CommandBars>(w);
    auto menu = w->commandBars->addBar(u"Menu Bar", mso::BarTop, true, false, true);
    menu->visible = true;
    const char16_t* menus[] = {u"&File",  u"&Edit",    u"&View", explorer ? u"&Go" : u"&Insert",
                               u"&Tools", u"&Actions", u"&Help"};
    for (const char16_t* m : menus) {
        auto c = menu->controls->add(mso::ControlPopup, 30002, false);
        c->builtIn = true;
        c->caption = m;
    }
    auto standard = w->commandBars->addBar(u"Standard", mso::BarTop, false, false, true);
    standard->visible = true;
    if (explorer) {
        w->commandBars->addBar(u"Advanced", mso::BarTop, false, false, true);
        w->commandBars->addBar(u"Web", mso::BarTop, false, false, true);
    } else {
        w->commandBars->addBar(u"Formatting", mso::BarTop, false, false, true);
    }
}

}  // namespace

Window::Window(Outlook& world, Str typeName, std::shared_ptr<const hb::MemberTable> members)
    : SimObject(world, std::move(typeName), std::move(members)) {}

bool Window::isExplorer() const {
    return dynamic_cast<const Explorer*>(this) != nullptr;
}

Str Window::unusableReason() const {
    if (open) return {};
    return u"The " + Str(isExplorer() ? u"Explorer" : u"Inspector") +
           u" has been closed and cannot be used for further operations. Review your code and "
           u"restart Outlook.";
}

void Window::removePanes() {
    auto gone = std::move(panes);
    panes.clear();
    for (auto& p : gone)
        p->remove();
}

void Window::detach() {
    for (auto& p : panes)
        p->detach();
    panes.clear();
    SimObject::detach();
}

Explorer::Explorer(Outlook& world) : Window(world, u"Explorer", explorerTable()) {}

Str Explorer::caption() const {
    return (currentFolder ? currentFolder->name : Str()) + u" - Microsoft Outlook";
}

Inspector::Inspector(Outlook& world) : Window(world, u"Inspector", inspectorTable()) {}

Str Inspector::caption() const {
    Str kind = u"Appointment";
    if (currentItem && currentItem->kind == ItemKind::Mail) kind = u"Message";
    if (currentItem && currentItem->kind == ItemKind::MeetingRequest) kind = u"Meeting";
    Str subject = currentItem ? currentItem->subject : Str();
    return (subject.empty() ? Str(u"Untitled") : subject) + u" - " + kind;
}

Explorers::Explorers(Outlook& world) : SimObject(world, u"Explorers", explorersTable()) {}

Inspectors::Inspectors(Outlook& world) : SimObject(world, u"Inspectors", inspectorsTable()) {}

Selection::Selection(Outlook& world, std::weak_ptr<Explorer> explorer_,
                     std::vector<std::shared_ptr<Item>> items_)
    : SimObject(world, u"Selection", selectionTable()),
      explorer(std::move(explorer_)),
      items(std::move(items_)) {}

// ======================= window operations =======================

std::shared_ptr<Window> Outlook::activeWindow() const {
    if (active_ && active_->open) return active_;
    return activeExplorer();
}

std::shared_ptr<Explorer> Outlook::activeExplorer() const {
    for (auto it = focusOrder_.rbegin(); it != focusOrder_.rend(); ++it) {
        auto w = it->lock();
        if (w && w->open) {
            if (auto e = std::dynamic_pointer_cast<Explorer>(w)) return e;
        }
    }
    return explorers_.empty() ? nullptr : explorers_.front();
}

std::shared_ptr<Inspector> Outlook::activeInspector() const {
    for (auto it = focusOrder_.rbegin(); it != focusOrder_.rend(); ++it) {
        auto w = it->lock();
        if (w && w->open) {
            if (auto i = std::dynamic_pointer_cast<Inspector>(w)) return i;
        }
    }
    return inspectors_.empty() ? nullptr : inspectors_.back();
}

std::shared_ptr<Explorer> Outlook::openExplorer(std::shared_ptr<Folder> folder) {
    auto e = make<Explorer>();
    e->currentFolder = std::move(folder);
    setUpBars(*this, e, true);
    explorers_.push_back(e);
    allWindows_.push_back(e);
    explorersCollection()->raiseEvent(u"ExplorersEvents", u"NewExplorer", {obj(e)});
    return e;
}

std::shared_ptr<Inspector> Outlook::openInspector(std::shared_ptr<Item> item) {
    for (const auto& in : inspectors_) {
        if (in->currentItem && &in->currentItem->record() == &item->record()) {
            activate(in);
            return in;
        }
    }
    auto in = make<Inspector>();
    // The window edits its own copy of a stored item; an object the add-in
    // displays is shown with what was written to it.
    in->currentItem = item->stored || item->target ? item->resolved() : item->workingCopy();
    setUpBars(*this, in, false);
    inspectors_.push_back(in);
    allWindows_.push_back(in);
    inspectorsCollection()->raiseEvent(u"InspectorsEvents", u"NewInspector", {obj(in)});
    if (in->open) activate(in);
    return in;
}

void Outlook::activate(const std::shared_ptr<Window>& window) {
    if (!window || !window->open || (active_ == window && !away_)) return;
    // Coming back from another program: the window left had its
    // Deactivate when the focus went.
    auto previous = away_ ? nullptr : active_;
    away_ = false;
    active_ = window;
    std::erase_if(focusOrder_, [&](const std::weak_ptr<Window>& w) {
        auto p = w.lock();
        return !p || p == window;
    });
    focusOrder_.push_back(window);
    ++window->activateCount;
    auto eventsOf = [](const Window& w) {
        return Str(w.isExplorer() ? u"ExplorerEvents" : u"InspectorEvents");
    };
    if (previous && previous->open) previous->raiseEvent(eventsOf(*previous), u"Deactivate", {});
    if (active_ == window && window->open) window->raiseEvent(eventsOf(*window), u"Activate", {});
}

void Outlook::loseFocus() {
    if (away_) return;
    away_ = true;
    if (active_ && active_->open) {
        active_->raiseEvent(active_->isExplorer() ? u"ExplorerEvents" : u"InspectorEvents",
                            u"Deactivate", {});
    }
}

void Outlook::regainFocus(const std::shared_ptr<Window>& window) {
    if (!away_) return;
    auto target = window ? window : activeWindow();
    if (target) activate(target);
    away_ = false;
}

bool Outlook::inStores(const Folder& folder) const {
    const Folder* f = &folder;
    while (auto p = f->parentFolder.lock())
        f = p.get();
    return std::any_of(stores_.begin(), stores_.end(),
                       [&](const Store& s) { return s.root.get() == f; });
}

std::shared_ptr<Folder> Outlook::outsideFolder(Str name) {
    return make<Folder>(std::move(name), Str(), ol::MailItem);
}

void Outlook::closeWindow(const std::shared_ptr<Window>& window) {
    if (!window || !window->open) return;
    window->raiseEvent(window->isExplorer() ? u"ExplorerEvents" : u"InspectorEvents", u"Close", {});
    if (!window->open) return;  // closed by a handler already
    forget(window);
    if (explorers_.empty() && inspectors_.empty()) {
        if (!quitting) requestQuit();
        return;
    }
    if (!active_ && !quitting) {
        // The focus goes to the topmost remaining window.
        for (auto it = focusOrder_.rbegin(); it != focusOrder_.rend(); ++it) {
            if (auto w = it->lock(); w && w->open) {
                activate(w);
                return;
            }
        }
        activate(explorers_.empty() ? std::shared_ptr<Window>(inspectors_.back())
                                    : std::shared_ptr<Window>(explorers_.back()));
    }
}

void Outlook::forget(const std::shared_ptr<Window>& window) {
    window->open = false;
    window->removePanes();  // a window's panes go with it
    std::erase_if(explorers_, [&](const auto& e) { return e == window; });
    std::erase_if(inspectors_, [&](const auto& i) { return i == window; });
    std::erase_if(focusOrder_, [&](const std::weak_ptr<Window>& w) {
        auto p = w.lock();
        return !p || p == window;
    });
    if (active_ == window) active_ = nullptr;
}

bool Outlook::switchFolder(const std::shared_ptr<Explorer>& explorer,
                           std::shared_ptr<Folder> folder) {
    auto cancel = std::make_shared<Variant>(false);
    // A folder outside the stores (a shortcut, a data file being closed)
    // reaches the event as Nothing.
    Variant newFolder = folder && inStores(*folder) ? obj(folder) : Variant::nothing();
    explorer->raiseEvent(u"ExplorerEvents", u"BeforeFolderSwitch",
                         {newFolder, Variant::byRef(cancel)});
    if (cancel->toBool()) return false;
    explorer->currentFolder = std::move(folder);
    explorer->selection.clear();
    explorer->raiseEvent(u"ExplorerEvents", u"FolderSwitch", {});
    explorer->raiseEvent(u"ExplorerEvents", u"SelectionChange", {});
    return true;
}

void Outlook::select(const std::shared_ptr<Explorer>& explorer,
                     std::vector<std::shared_ptr<Item>> items) {
    explorer->selection = std::move(items);
    explorer->raiseEvent(u"ExplorerEvents", u"SelectionChange", {});
}

void Outlook::shutDown() {
    posted_.clear();
    for (const auto& w : allWindows_) {
        if (w->commandBars) w->commandBars->dropTemporary();
        if (w->open) forget(w);
    }
    active_ = nullptr;
    away_ = false;
    running = false;
    quitting = false;
}

}  // namespace sim
