#include "sim/Scenario.h"

namespace sim {

using namespace detail;

namespace {}  // namespace

Scenario::Scenario() : outlook_(std::make_unique<Outlook>()) {
    outlook_->onQuit = [this] { quit(); };
    outlook_->onIdle = [this] {
        if (ribbon_) ribbon_->refresh();
    };
}

Scenario::~Scenario() {
    outlook_->onQuit = nullptr;
    outlook_->onIdle = nullptr;
}

void Scenario::ribbonPick(const std::shared_ptr<Explorer>& explorer, StrView id,
                          std::int32_t index) {
    if (!ribbon_) throw ScenarioError("no ribbon");
    ribbon_->pick(explorer, id, index);
    outlook_->pump();
}

void Scenario::ribbonPress(const std::shared_ptr<Explorer>& explorer, StrView id) {
    if (!ribbon_) throw ScenarioError("no ribbon");
    ribbon_->press(explorer, id);
    outlook_->pump();
}

void Scenario::guarded(const char* what, const std::function<void()>& call) {
    try {
        call();
    } catch (const std::exception& e) {
        addinErrors.push_back(hb::fromUtf8(what) + u": " + hb::fromUtf8(e.what()));
    } catch (...) {
        addinErrors.push_back(hb::fromUtf8(what) + u": unknown exception");
    }
}

void Scenario::startOutlook(std::shared_ptr<Addin> addin, std::int32_t startFolder) {
    if (outlook_->running) throw ScenarioError("Outlook runs already");
    Outlook& o = *outlook_;
    o.running = true;
    std::shared_ptr<Explorer> first;
    if (startFolder != 0) first = o.openExplorer(o.defaultFolder(startFolder));
    if (addin && connect(std::move(addin), ext::ConnectStartup)) {
        Args custom;
        guarded("OnStartupComplete", [&] { addin_->onStartupComplete(custom); });
    }
    o.application()->raiseEvent(u"ApplicationEvents", u"Startup", {});
    o.pump();
    if (first && first->open) o.activate(first);
    o.pump();
}

bool Scenario::connect(std::shared_ptr<Addin> addin, std::int32_t connectMode) {
    Outlook& o = *outlook_;
    Instruments& instr = o.instruments();
    addin_ = std::move(addin);
    if (!comAddIn_) {
        comAddIn_ = o.make<ComAddIn>(Str(hb::kAddinProgId), Str(hb::kFriendlyName));
        o.comAddIns.push_back(comAddIn_);
    }
    comAddIn_->connect = true;
    Args custom;
    try {
        Variant app = instr.toAddin(obj(o.application()), u"OnConnection");
        Variant inst = instr.toAddin(obj(comAddIn_), u"OnConnection");
        addin_->onConnection(app, connectMode, inst, custom);
    } catch (const std::exception& e) {
        // Office unloads an add-in whose connection fails.
        addinErrors.push_back(u"OnConnection: " + hb::fromUtf8(e.what()));
        addin_.reset();
        comAddIn_->connect = false;
        return false;
    }
    // Office 2010 and later ask for the explorer's ribbon next.
    if (o.majorVersion() >= 14) {
        if (hb::ObjectPtr extensibility = addin_->ribbonExtensibility()) {
            ribbon_ = std::make_shared<Ribbon>(o);
            addin_->prepareRibbon(*ribbon_, extensibility);
            ribbon_->load(std::move(extensibility));
        }
    }
    if (o.majorVersion() >= 12) {
        guarded("CTPFactoryAvailable", [&] {
            addin_->ctpFactoryAvailable(
                instr.toAddin(obj(o.taskPaneFactory()), u"CTPFactoryAvailable"));
        });
    }
    return true;
}

void Scenario::connectAddin(std::shared_ptr<Addin> addin) {
    if (!outlook_->running) throw ScenarioError("Outlook does not run");
    if (addin_) throw ScenarioError("the add-in is loaded already");
    connect(std::move(addin), ext::ConnectAfterStartup);
    outlook_->pump();
}

void Scenario::quit() {
    Outlook& o = *outlook_;
    if (!o.running || o.quitting) return;
    o.quitting = true;
    while (!o.inspectors().empty())
        o.closeWindow(o.inspectors().back());
    while (!o.explorers().empty())
        o.closeWindow(o.explorers().back());
    o.application()->raiseEvent(u"ApplicationEvents", u"Quit", {});
    o.pump();
    if (addin_) {
        Args custom;
        guarded("OnBeginShutdown", [&] { addin_->onBeginShutdown(custom); });
        guarded("OnDisconnection",
                [&] { addin_->onDisconnection(ext::DisconnectHostShutdown, custom); });
        if (ribbon_) ribbon_->unload();
        addin_.reset();  // Office releases the add-in
    }
    if (comAddIn_) comAddIn_->object = Variant();
    o.shutDown();
}

void Scenario::disconnectAddin() {
    if (!addin_) return;
    Args custom;
    guarded("OnDisconnection", [&] { addin_->onDisconnection(ext::DisconnectUserClosed, custom); });
    if (ribbon_) ribbon_->unload();
    addin_.reset();
    if (comAddIn_) {
        comAddIn_->connect = false;
        comAddIn_->object = Variant();
    }
    // Office removes the task panes of an add-in it unloads, with their
    // controls (one add-in is loaded here, so every pane goes).
    for (const auto& w : outlook_->explorers())
        w->removePanes();
    for (const auto& w : outlook_->inspectors())
        w->removePanes();
    outlook_->pump();
}

std::shared_ptr<Explorer> Scenario::explorer() const {
    const auto& list = outlook_->explorers();
    return list.empty() ? nullptr : list.front();
}

std::shared_ptr<Explorer> Scenario::openExplorer(std::shared_ptr<Folder> folder) {
    auto e = outlook_->openExplorer(std::move(folder));
    outlook_->pump();
    if (e->open) outlook_->activate(e);
    outlook_->pump();
    return e;
}

std::shared_ptr<Inspector> Scenario::openInspector(std::shared_ptr<Item> item) {
    auto i = outlook_->openInspector(std::move(item));
    outlook_->pump();
    return i;
}

void Scenario::activate(const std::shared_ptr<Window>& window) {
    if (!window || !window->open) throw ScenarioError("activating a closed window");
    outlook_->activate(window);
    outlook_->pump();
}

void Scenario::leaveOutlook() {
    outlook_->loseFocus();
    outlook_->pump();
}

void Scenario::returnToOutlook(const std::shared_ptr<Window>& window) {
    if (window && !window->open) throw ScenarioError("returning to a closed window");
    outlook_->regainFocus(window);
    outlook_->pump();
}

void Scenario::saveItem(const std::shared_ptr<Inspector>& inspector) {
    if (!inspector || !inspector->open || !inspector->currentItem) {
        throw ScenarioError("saving in a closed window");
    }
    inspector->currentItem->save();
    outlook_->pump();
}

void Scenario::close(const std::shared_ptr<Window>& window) {
    if (!window || !window->open) throw ScenarioError("closing a closed window");
    outlook_->closeWindow(window);
    outlook_->pump();
}

bool Scenario::switchFolder(const std::shared_ptr<Explorer>& explorer,
                            std::shared_ptr<Folder> folder) {
    if (!explorer || !explorer->open) throw ScenarioError("switching folders in a closed window");
    bool switched = outlook_->switchFolder(explorer, std::move(folder));
    outlook_->pump();
    return switched;
}

void Scenario::select(const std::shared_ptr<Explorer>& explorer,
                      std::vector<std::shared_ptr<Item>> items) {
    if (!explorer || !explorer->open) throw ScenarioError("selecting in a closed window");
    outlook_->select(explorer, std::move(items));
    outlook_->pump();
}

std::shared_ptr<CommandBar> Scenario::bar(const Window& window, StrView name) {
    return window.commandBars ? window.commandBars->find(name) : nullptr;
}

void Scenario::requireUsable(const CommandBarControl& c) const {
    if (c.deleted) throw ScenarioError("the control has been deleted");
    if (!c.enabled || !c.visible) throw ScenarioError("the control is disabled or hidden");
}

void Scenario::typeInCombo(const std::shared_ptr<CommandBarControl>& combo, const Str& text) {
    requireUsable(*combo);
    if (!combo->isComboBox()) throw ScenarioError("not a combo box");
    combo->setText(text);
    combo->raiseEvent(u"_CommandBarComboBoxEvents", u"Change", {obj(combo)});
    outlook_->pump();
}

void Scenario::pickInCombo(const std::shared_ptr<CommandBarControl>& combo, std::int32_t index) {
    requireUsable(*combo);
    if (!combo->isComboBox()) throw ScenarioError("not a combo box");
    if (index < 1 || static_cast<std::size_t>(index) > combo->entries.size()) {
        throw ScenarioError("no such entry in the combo box");
    }
    combo->setListIndex(index);
    combo->raiseEvent(u"_CommandBarComboBoxEvents", u"Change", {obj(combo)});
    outlook_->pump();
}

void Scenario::pickInCombo(const std::shared_ptr<CommandBarControl>& combo, const Str& entry) {
    for (std::size_t i = 0; i < combo->entries.size(); ++i) {
        if (combo->entries[i] == entry) {
            pickInCombo(combo, static_cast<std::int32_t>(i + 1));
            return;
        }
    }
    throw ScenarioError("no such entry in the combo box: " + hb::toUtf8(entry));
}

bool Scenario::click(const std::shared_ptr<CommandBarControl>& button) {
    requireUsable(*button);
    if (button->type != mso::ControlButton) throw ScenarioError("not a button");
    auto cancel = std::make_shared<Variant>(false);
    std::vector<std::shared_ptr<CommandBarControl>> reached{button};
    if (!button->tag.empty()) {
        for (const auto& w : outlook_->allWindows()) {
            if (!w->open || !w->commandBars) continue;
            w->commandBars->forEachControl([&](const std::shared_ptr<CommandBarControl>& c) {
                if (c != button && !c->deleted && c->tag == button->tag) reached.push_back(c);
            });
        }
    }
    for (const auto& c : reached) {
        c->raiseEvent(u"_CommandBarButtonEvents", u"Click", {obj(button), Variant::byRef(cancel)});
    }
    outlook_->pump();
    return cancel->toBool();
}

void Scenario::dockPane(const std::shared_ptr<CustomTaskPane>& pane, std::int32_t position) {
    if (pane->deleted) throw ScenarioError("the pane has been deleted");
    pane->setDockPosition(position);
    outlook_->pump();
}

void Scenario::resizePane(const std::shared_ptr<CustomTaskPane>& pane, std::int32_t width,
                          std::int32_t height) {
    if (pane->deleted) throw ScenarioError("the pane has been deleted");
    bool changed = false;
    auto take = [&](std::int32_t& slot, std::int32_t v) {
        if (slot != v) {
            slot = v;
            changed = true;
        }
    };
    switch (pane->dockPosition) {
        case mso::DockLeft:
        case mso::DockRight:
            take(pane->sideWidth, width);
            break;
        case mso::DockTop:
        case mso::DockBottom:
            take(pane->sideHeight, height);
            break;
        default:
            take(pane->floatWidth, width);
            take(pane->floatHeight, height);
    }
    if (changed) {
        ++pane->dockEvents;
        pane->raiseEvent(u"_CustomTaskPaneEvents", u"DockPositionStateChange", {obj(pane)});
    }
    outlook_->pump();
}

void Scenario::closePane(const std::shared_ptr<CustomTaskPane>& pane) {
    if (pane->deleted) throw ScenarioError("the pane has been deleted");
    pane->setVisible(false);
    outlook_->pump();
}

std::shared_ptr<Item> Scenario::copyItem(const std::shared_ptr<Item>& item,
                                         std::shared_ptr<Folder> folder) {
    if (!folder) folder = outlook_->calendar();
    auto c = item->copy();
    folder->insert(c, true);
    outlook_->pump();
    return c;
}

std::uint64_t faultSweep(const std::function<void(Scenario&)>& scenario,
                         const std::function<void(Scenario&, std::uint64_t k)>& check) {
    std::uint64_t n = 0;
    {
        Scenario clean;
        scenario(clean);
        n = clean.instruments().callCount();
    }
    for (std::uint64_t k = 1; k <= n; ++k) {
        Scenario sc;
        sc.instruments().failCall(k);
        scenario(sc);
        check(sc, k);
    }
    return n;
}

}  // namespace sim
