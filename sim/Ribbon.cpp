#include "sim/Ribbon.h"

#include <set>

#include "common/DispatchObject.h"
#include "common/Text.h"
#include "sim/Scenario.h"

namespace sim {

using namespace detail;
using hb::Members;

namespace {

constexpr char16_t kNamespace2009[] = u"http://schemas.microsoft.com/office/2009/07/customui";
constexpr char16_t kNamespace2006[] = u"http://schemas.microsoft.com/office/2006/01/customui";
constexpr std::size_t kMaxItems = 1000;

std::shared_ptr<const hb::MemberTable> ribbonUITable() {
    static const auto t = Members<RibbonUI>()
                              .method(u"Invalidate",
                                      [](RibbonUI& r) {
                                          if (auto ribbon = r.ribbon.lock())
                                              ribbon->invalidateAll();
                                      })
                              .method(u"InvalidateControl",
                                      [](RibbonUI& r, Args& args) {
                                          const Str id = hb::requiredArg(args, 0).toStr();
                                          if (auto ribbon = r.ribbon.lock())
                                              ribbon->invalidateControl(id);
                                      })
                              .method(u"InvalidateControlMso", [](RibbonUI&, Args&) {})
                              .method(u"ActivateTab", [](RibbonUI&, Args&) {})
                              .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> ribbonControlTable() {
    static const auto t = Members<RibbonControl>()
                              .get(u"Id", [](RibbonControl& c) { return c.id; })
                              .get(u"Tag", [](RibbonControl& c) { return c.tag; })
                              .get(u"Context",
                                   [](RibbonControl& c) {
                                       const auto window = c.context.lock();
                                       return window ? obj(window) : Variant::nothing();
                                   })
                              .build();
    return t;
}

// ---- a small XML reader ----

class XmlReader {
  public:
    explicit XmlReader(const Str& text) : t_(text) {}

    std::optional<XmlElement> document(Str& error) {
        try {
            skipMisc();
            XmlElement root = element();
            skipMisc();
            if (p_ != t_.size()) fail(u"text after the root element");
            return root;
        } catch (const Str& e) {
            error = e;
            return std::nullopt;
        }
    }

  private:
    [[noreturn]] void fail(const Str& what) {
        throw what + u" at " + hb::toStr(static_cast<long long>(p_));
    }
    bool at(StrView s) const { return t_.compare(p_, s.size(), s) == 0; }
    void expect(StrView s) {
        if (!at(s)) fail(u"expected " + Str(s));
        p_ += s.size();
    }
    void skipSpace() {
        while (p_ < t_.size() &&
               (t_[p_] == u' ' || t_[p_] == u'\t' || t_[p_] == u'\r' || t_[p_] == u'\n'))
            ++p_;
    }
    void skipUntil(StrView end) {
        const std::size_t q = t_.find(end, p_);
        if (q == Str::npos) fail(u"unterminated " + Str(end));
        p_ = q + end.size();
    }
    void skipMisc() {
        for (;;) {
            skipSpace();
            if (at(u"<?")) {
                skipUntil(u"?>");
            } else if (at(u"<!--")) {
                skipUntil(u"-->");
            } else {
                return;
            }
        }
    }
    static bool nameChar(char16_t c) {
        return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
               c == u'_' || c == u':' || c == u'-' || c == u'.';
    }
    Str name() {
        const std::size_t start = p_;
        while (p_ < t_.size() && nameChar(t_[p_]))
            ++p_;
        if (p_ == start) fail(u"expected a name");
        return t_.substr(start, p_ - start);
    }
    Str value() {
        if (p_ >= t_.size() || (t_[p_] != u'"' && t_[p_] != u'\'')) fail(u"expected a quote");
        const char16_t quote = t_[p_++];
        Str out;
        while (p_ < t_.size() && t_[p_] != quote) {
            if (t_[p_] == u'<') fail(u"'<' in an attribute");
            if (t_[p_] == u'&') {
                static const std::pair<const char16_t*, char16_t> entities[] = {{u"&amp;", u'&'},
                                                                                {u"&lt;", u'<'},
                                                                                {u"&gt;", u'>'},
                                                                                {u"&quot;", u'"'},
                                                                                {u"&apos;", u'\''}};
                bool known = false;
                for (const auto& [text, c] : entities) {
                    if (at(text)) {
                        out += c;
                        p_ += Str(text).size();
                        known = true;
                        break;
                    }
                }
                if (!known) fail(u"unknown entity");
                continue;
            }
            out += t_[p_++];
        }
        if (p_ >= t_.size()) fail(u"unterminated attribute");
        ++p_;
        return out;
    }
    XmlElement element() {
        expect(u"<");
        XmlElement e;
        e.name = name();
        std::set<Str> seen;
        for (;;) {
            skipSpace();
            if (at(u"/>")) {
                p_ += 2;
                return e;
            }
            if (at(u">")) {
                ++p_;
                break;
            }
            Str key = name();
            if (!seen.insert(key).second) fail(u"attribute " + key + u" twice");
            skipSpace();
            expect(u"=");
            skipSpace();
            e.attributes.emplace_back(std::move(key), value());
        }
        for (;;) {
            // Text between elements is not part of a ribbon.
            while (p_ < t_.size() && t_[p_] != u'<')
                ++p_;
            if (p_ >= t_.size()) fail(u"unterminated element " + e.name);
            if (at(u"<!--")) {
                skipUntil(u"-->");
            } else if (at(u"</")) {
                p_ += 2;
                if (name() != e.name) fail(u"mismatched end of " + e.name);
                skipSpace();
                expect(u">");
                return e;
            } else {
                e.children.push_back(element());
            }
        }
    }

    const Str& t_;
    std::size_t p_ = 0;
};

bool isCallbackAttribute(const Str& key) {
    return key == u"loadImage" ||
           (key.size() > 2 && (key.starts_with(u"get") || key.starts_with(u"on")));
}

}  // namespace

const Str* XmlElement::attribute(StrView key) const {
    for (const auto& [k, v] : attributes) {
        if (k == key) return &v;
    }
    return nullptr;
}

std::optional<XmlElement> parseXml(const Str& text, Str& error) {
    return XmlReader(text).document(error);
}

RibbonUI::RibbonUI(Outlook& world, std::weak_ptr<Ribbon> ribbon_)
    : SimObject(world, u"IRibbonUI", ribbonUITable()), ribbon(std::move(ribbon_)) {}

RibbonControl::RibbonControl(Outlook& world, Str id_, Str tag_, std::weak_ptr<Window> context_)
    : SimObject(world, u"IRibbonControl", ribbonControlTable()),
      id(std::move(id_)),
      tag(std::move(tag_)),
      context(std::move(context_)) {}

Ribbon::Ribbon(Outlook& world) : world_(world) {}

bool isRibbonElement(const Str& name) {
    // clang-format off
    static const std::set<Str> known = {
        u"customUI", u"ribbon", u"tabs", u"tab", u"group", u"dropDown", u"button", u"item",
        u"separator", u"box", u"buttonGroup", u"comboBox", u"checkBox", u"editBox", u"gallery",
        u"labelControl", u"menu", u"splitButton", u"toggleButton", u"dynamicMenu",
        u"dialogBoxLauncher", u"commands", u"command", u"contextualTabs", u"tabSet", u"qat",
        u"sharedControls", u"documentControls", u"backstage", u"contextMenus", u"contextMenu",
        u"control", u"menuSeparator"};
    // clang-format on
    return known.count(name) != 0;
}

Str Ribbon::validate(const XmlElement& root, const hb::ObjectPtr& addin) {
    if (root.name != u"customUI") return u"the root element is " + root.name + u", not customUI";
    const Str* ns = root.attribute(u"xmlns");
    if (!ns || (*ns != kNamespace2009 && *ns != kNamespace2006))
        return u"wrong namespace " + (ns ? *ns : Str(u"(none)"));
    const auto* table = dynamic_cast<const hb::DispatchObject*>(addin.get());
    std::set<Str> ids;
    Str error;
    std::function<void(const XmlElement&)> walk = [&](const XmlElement& e) {
        if (!error.empty()) return;
        if (!isRibbonElement(e.name)) {
            error = u"unknown element " + e.name;
            return;
        }
        for (const auto& [key, value] : e.attributes) {
            if (key == u"id" && !ids.insert(value).second) {
                error = u"duplicate id " + value;
                return;
            }
            const bool known = hasCallback ? hasCallback(value)
                                           : !table || table->members().find(value) != nullptr;
            if (isCallbackAttribute(key) && !known) {
                error = u"missing callback " + value + u" (" + key + u")";
                return;
            }
        }
        for (const XmlElement& c : e.children)
            walk(c);
    };
    walk(root);
    return error;
}

bool Ribbon::load(hb::ObjectPtr addin) {
    unload();
    Args args{Variant(Str(u"Microsoft.Outlook.Explorer"))};
    try {
        ++callbacks;
        ++callbackCounts[u"GetCustomUI"];
        xml = addin->invoke(hb::CallKind::Method, u"GetCustomUI", args).toStr();
    } catch (...) {
        ++callbackErrors;
        loadError = u"GetCustomUI raised";
        return false;
    }
    if (xml.empty()) {
        loadError = u"no ribbon";
        return false;
    }
    if (checkXml) {
        loadError = checkXml(xml);
        if (!loadError.empty()) return false;
    }
    Str error;
    const std::optional<XmlElement> root = parseXml(xml, error);
    if (!root) {
        loadError = u"not well formed: " + error;
        return false;
    }
    loadError = validate(*root, addin);
    if (!loadError.empty()) return false;

    // The groups of the tabs: their controls, the group first.
    controls_.clear();
    for (const XmlElement& ribbon : root->children) {
        for (const XmlElement& tabs : ribbon.children) {
            for (const XmlElement& tab : tabs.children) {
                if (const Str* idMso = tab.attribute(u"idMso")) tab_ = *idMso;
                for (const XmlElement& group : tab.children) {
                    if (group.name != u"group") continue;
                    const auto control = [](const XmlElement& e, Str kind) {
                        Control c;
                        c.kind = std::move(kind);
                        for (const auto& [key, value] : e.attributes) {
                            if (key == u"id")
                                c.id = value;
                            else if (key == u"tag")
                                c.tag = value;
                            else if (key == u"label")
                                c.label = value;
                            else if (isCallbackAttribute(key))
                                c.callbacks[key] = value;
                        }
                        return c;
                    };
                    controls_.push_back(control(group, u"group"));
                    for (const XmlElement& child : group.children)
                        controls_.push_back(control(child, child.name));
                }
            }
        }
    }
    addin_ = std::move(addin);
    const Str* onLoad = root->attribute(u"onLoad");
    if (onLoad) {
        ui_ = world_.make<RibbonUI>(weak_from_this());
        call(*onLoad, {obj(ui_)});
    }
    return true;
}

void Ribbon::unload() {
    addin_.reset();
    ui_.reset();
    views_.clear();
    controls_.clear();
}

Variant Ribbon::call(const Str& member, Args args) {
    ++callbacks;
    ++callbackCounts[member];
    Args passed = world_.instruments().toAddin(args, u"ribbon " + member);
    try {
        return addin_->invoke(hb::CallKind::Method, member, passed);
    } catch (...) {
        ++callbackErrors;
        return Variant();
    }
}

Variant Ribbon::callFor(const Control& c, const std::shared_ptr<Explorer>& e,
                        const char16_t* attribute, Args more) {
    const auto it = c.callbacks.find(attribute);
    if (it == c.callbacks.end()) return Variant::missing();
    auto control = world_.make<RibbonControl>(c.id, c.tag, e);
    Args args{obj(control)};
    for (Variant& v : more)
        args.push_back(std::move(v));
    return call(it->second, std::move(args));
}

bool Ribbon::showsCalendarTab(const Explorer& e) const {
    return tab_ == u"TabCalendarHome" && e.open && e.currentFolder &&
           e.currentFolder->defaultItemType == ol::AppointmentItem;
}

void Ribbon::ask(Control& c, const std::shared_ptr<Explorer>& e, ControlView& v) {
    using T = Variant::Type;
    const auto expect = [&](const Variant& r, T type) {
        if (r.isMissing()) return false;
        if (r.type() != type) {
            ++typeErrors;
            return false;
        }
        return true;
    };
    v.id = c.id;
    v.kind = c.kind;
    v.asked = true;
    v.label = c.label;
    Variant r = callFor(c, e, u"getVisible");
    v.visible = expect(r, T::Boolean) ? r.toBool() : true;
    if (c.kind == u"group") {
        if (const auto l = callFor(c, e, u"getLabel"); expect(l, T::String)) v.label = l.toStr();
        return;
    }
    r = callFor(c, e, u"getEnabled");
    v.enabled = expect(r, T::Boolean) ? r.toBool() : true;
    if (r = callFor(c, e, u"getLabel"); expect(r, T::String)) v.label = r.toStr();
    if (r = callFor(c, e, u"getScreentip"); expect(r, T::String)) v.screentip = r.toStr();
    if (r = callFor(c, e, u"getImage"); !r.isMissing()) {
        if (!r.isObject() && r.type() != T::String) ++typeErrors;
        v.image = r;
    }
    if (c.kind != u"dropDown") return;
    v.items.clear();
    r = callFor(c, e, u"getItemCount");
    std::int32_t count = 0;
    if (expect(r, T::Long)) count = r.toLong();
    if (count < 0) count = 0;
    if (static_cast<std::size_t>(count) > kMaxItems) {
        ++tooManyItems;
        count = static_cast<std::int32_t>(kMaxItems);
    }
    for (std::int32_t i = 0; i < count; ++i) {
        const Variant label = callFor(c, e, u"getItemLabel", {Variant(i)});
        const Variant id = callFor(c, e, u"getItemID", {Variant(i)});
        v.items.emplace_back(expect(id, T::String) ? id.toStr() : Str(),
                             expect(label, T::String) ? label.toStr() : Str());
    }
    r = callFor(c, e, u"getSelectedItemIndex");
    v.selected = expect(r, T::Long) ? r.toLong() : -1;
}

void Ribbon::refresh() {
    if (!addin_) return;
    for (const auto& e : world_.explorers()) {
        if (!showsCalendarTab(*e)) continue;
        auto& views = views_[e.get()];
        bool groupVisible = true;
        for (Control& c : controls_) {
            if (c.kind != u"group" && !groupVisible) continue;
            ControlView& v = views[c.id];
            if (!v.asked) ask(c, e, v);
            if (!addin_) return;  // unloaded by a callback
            if (c.kind == u"group") groupVisible = v.visible;
        }
    }
}

const Ribbon::ControlView* Ribbon::view(const Explorer& explorer, StrView id) const {
    const auto w = views_.find(&explorer);
    if (w == views_.end()) return nullptr;
    const auto c = w->second.find(Str(id));
    return c == w->second.end() ? nullptr : &c->second;
}

bool Ribbon::groupShown(const Explorer& explorer) const {
    if (!addin_ || !showsCalendarTab(explorer) || controls_.empty()) return false;
    const ControlView* v = view(explorer, controls_.front().id);
    return v && v->asked && v->visible;
}

const Ribbon::Control* Ribbon::find(StrView id) const {
    for (const Control& c : controls_) {
        if (c.id == id) return &c;
    }
    return nullptr;
}

Ribbon::ControlView& Ribbon::usable(const std::shared_ptr<Explorer>& e, StrView id) {
    refresh();
    if (!e || !groupShown(*e)) throw ScenarioError("the ribbon group is not shown");
    auto& views = views_[e.get()];
    const auto it = views.find(Str(id));
    if (it == views.end() || !it->second.visible || !it->second.enabled)
        throw ScenarioError("the ribbon control is not usable");
    return it->second;
}

void Ribbon::pick(const std::shared_ptr<Explorer>& explorer, StrView id, std::int32_t index) {
    ControlView& v = usable(explorer, id);
    if (index < 0 || static_cast<std::size_t>(index) >= v.items.size())
        throw ScenarioError("no such item in the drop-down");
    const Str itemId = v.items[static_cast<std::size_t>(index)].first;
    // Office shows the pick at once; the add-in's answer comes when asked.
    v.selected = index;
    callFor(*find(id), explorer, u"onAction", {Variant(itemId), Variant(index)});
}

void Ribbon::press(const std::shared_ptr<Explorer>& explorer, StrView id) {
    usable(explorer, id);
    callFor(*find(id), explorer, u"onAction");
}

void Ribbon::invalidateAll() {
    ++invalidateAllCalls;
    for (auto& [window, views] : views_) {
        for (auto& [id, v] : views)
            v.asked = false;
    }
}

void Ribbon::invalidateControl(StrView id) {
    if (!find(id)) hb::raise(hb::err::InvalidProcedureCall);
    invalidatedControls.emplace_back(id);
    for (auto& [window, views] : views_) {
        const auto it = views.find(Str(id));
        if (it != views.end()) it->second.asked = false;
    }
}

}  // namespace sim
