// The calendar's ribbon group of Outlook 2010 and later: its XML, Office's
// callbacks answered from the billing model, and the invalidation of what a
// selection or a settings change altered.
#include "explorer/cRibbon.h"

#include <algorithm>

#include "addin/cCalendarReactions.h"
#include "common/DispatchObject.h"
#include "common/ErrorTrap.h"
#include "common/Text.h"
#include "diagnostics/modErroHandling.h"
#include "explorer/cExplorerEvents.h"
#include "explorer/cToolBarItem.h"
#include "metadata/cMarking.h"
#include "settings/cPersonalSettings.h"

namespace hb {

namespace {

constexpr char16_t kExplorerRibbon[] = u"Microsoft.Outlook.Explorer";
constexpr char16_t kGroupId[] = u"hbGroup";
constexpr char16_t kReportId[] = u"hbReport";
constexpr char16_t kSettingsId[] = u"hbSettings";
constexpr char16_t kStatisticsId[] = u"hbStatistics";
constexpr char16_t kMoreId[] = u"hbMore";
const Str kListIds[3] = {u"hbList1", u"hbList2", u"hbList3"};

// The drop-downs' items are named by their position: ids stay valid XML
// names whatever the entries hold.
Str itemId(std::size_t list, std::size_t index) {
    Str id;
    id.reserve(kListIds[list].size() + 6);
    id += kListIds[list];
    id += u'_';
    id += toStr(static_cast<long long>(index));
    return id;
}

}  // namespace

cRibbon::cRibbon(Session& s) : s_(s), model_(s) {}

cRibbon::~cRibbon() {
    release();
}

Str cRibbon::fncRibbonXml() {
    // Every control asks for what depends on the settings or the window;
    // nothing shown is fixed in the XML but the group's name.
    Str xml =
        u"<customUI xmlns=\"http://schemas.microsoft.com/office/2009/07/customui\" "
        u"onLoad=\"onLoad\">"
        u"<ribbon><tabs><tab idMso=\"TabCalendarHome\">"
        u"<group id=\"hbGroup\" label=\"Hourbook\" getVisible=\"getVisible\">";
    for (const Str& id : kListIds) {
        xml += u"<dropDown id=\"" + id +
               u"\" sizeString=\"WWWWWWWWWWWWWWWWWWWW\" getLabel=\"getLabel\" "
               u"getScreentip=\"getScreentip\" getVisible=\"getVisible\" "
               u"getEnabled=\"getEnabled\" getItemCount=\"getItemCount\" "
               u"getItemLabel=\"getItemLabel\" getItemID=\"getItemID\" "
               u"getSelectedItemIndex=\"getSelectedItemIndex\" onAction=\"onAction\"/>";
    }
    for (const char16_t* id : {kReportId, kSettingsId, kStatisticsId}) {
        xml += Str(u"<button id=\"") + id +
               u"\" size=\"large\" getLabel=\"getLabel\" getScreentip=\"getScreentip\" "
               u"getImage=\"getImage\" getVisible=\"getVisible\" onAction=\"onAction\"/>";
    }
    xml += u"</group></tab></tabs></ribbon></customUI>";
    return xml;
}

Str cRibbon::GetCustomUI(const Str& ribbonId) noexcept {
    Str xml;
    trap(s_, u"cRibbon.GetCustomUI", [&] {
        if (ribbonId != kExplorerRibbon) return;
        // Office shows the group from now on: the calendar windows get no
        // command bar. Loaded into a running Outlook, the session started
        // before Office asked (it asks after the connection): the bars it
        // made go.
        s_.blnRibbon = true;
        xml = fncRibbonXml();
        subRemoveBars();
    });
    return xml;
}

void cRibbon::subRemoveBars() {
    Session& s = s_;
    if (const std::shared_ptr<cToolBarItem> toolbar = s.objToolBar) toolbar->RemoveToolbar();
    const std::shared_ptr<cCalendarReactions> reactions = s.oCalendarReactions;
    if (!reactions) return;
    for (const auto& wrapper : std::vector(reactions->colExplorers)) {
        if (!wrapper || !isSet(wrapper->oueMyExplorer())) continue;
        resumeNext(s,
                   [&] { subRemoveCommandBar(s, wrapper->oueMyExplorer().get(u"CommandBars")); });
    }
    s.err.clear();
}

// ---------------------------------------------------------------------------
// What a control stands for

cRibbon::Target cRibbon::targetOf(const Str& id) {
    // Most callbacks are a drop-down's: its id is told by its last letter.
    if (id.size() == kListIds[0].size() &&
        id.compare(0, id.size() - 1, kListIds[0], 0, id.size() - 1) == 0) {
        const char16_t last = id.back();
        if (last >= u'1' && last <= u'3')
            return {Kind::List, static_cast<std::size_t>(last - u'1')};
        return {};
    }
    if (id == kGroupId) return {Kind::Group, 0};
    if (id == kReportId) return {Kind::Report, 0};
    if (id == kSettingsId) return {Kind::Settings, 0};
    if (id == kStatisticsId) return {Kind::Statistics, 0};
    return {};
}

cRibbon::Target cRibbon::target(const Variant& control) const {
    return targetOf(control.get(u"Id").toStr());
}

bool cRibbon::showsCalendar(const Variant& explorer) const {
    if (s_.strCalendarEntryID.empty() || !isSet(explorer)) return false;
    const Variant folder = explorer.get(u"CurrentFolder");
    return isSet(folder) && folder.get(u"EntryID").toStr() == s_.strCalendarEntryID;
}

Variant cRibbon::selectedItem(const Variant& explorer) {
    if (!showsCalendar(explorer)) return Variant::nothing();
    const Variant selection = explorer.get(u"Selection");
    if (selection.get(u"Count").toLong() != 1) return Variant::nothing();
    Variant item = selection.call(u"Item", {Variant(std::int32_t{1})});
    if (!isSet(item)) return Variant::nothing();
    if (!fncIsAppointmentClass(s_, item.get(u"MessageClass").toStr())) return Variant::nothing();
    return item;
}

cRibbon::Selection cRibbon::readSelection(const Variant& explorer) {
    Selection read;
    read.explorer = explorer;
    const Variant item = selectedItem(explorer);
    read.enabled = isSet(item);
    if (!read.enabled) return read;
    const std::shared_ptr<cMarking> values = model_.valuesOf(item);
    for (std::size_t n = 0; n < read.values.size(); ++n) {
        if (values->Count() > static_cast<std::int32_t>(n))
            read.values[n] = values->MetaName(static_cast<std::int16_t>(n + 1));
    }
    return read;
}

const cRibbon::Selection& cRibbon::selectionOf(const Variant& explorer) {
    if (!selection_ || !sameObject(selection_->explorer, explorer))
        selection_ = readSelection(explorer);
    return *selection_;
}

Str cRibbon::valueOf(const Variant& explorer, std::size_t n) {
    return n < 3 ? selectionOf(explorer).values[n] : Str();
}

bool cRibbon::longList(std::size_t n) const {
    return model_.entryCount(n) >= kMaxItems;
}

std::vector<Str> cRibbon::shortList(std::size_t n, const Str& value) const {
    std::vector<Str> items;
    const std::size_t count = model_.entryCount(n);
    if (!longList(n)) {
        items.reserve(count);
        for (std::size_t i = 0; i < count; ++i)
            items.push_back(model_.entry(n, i));
        return items;
    }
    // The selected appointment's value first (the drop-down shows it), then
    // the entries added last: the ones a user is most likely to need next.
    const std::int32_t at = model_.indexOf(n, value);
    if (at >= 0) items.push_back(model_.entry(n, static_cast<std::size_t>(at)));
    for (std::size_t i = count; i > 0 && items.size() < kRecentItems; --i) {
        if (static_cast<std::int32_t>(i - 1) == at) continue;
        items.push_back(model_.entry(n, i - 1));
    }
    return items;
}

// ---------------------------------------------------------------------------
// Callbacks

void cRibbon::onLoad(const Variant& ribbonUI) noexcept {
    trap(s_, u"cRibbon.onLoad", [&] { ribbonUI_ = ribbonUI; });
}

bool cRibbon::getVisible(const Variant& control) noexcept {
    bool result = false;
    trap(s_, u"cRibbon.getVisible", [&] {
        const Target t = target(control);
        switch (t.kind) {
            case Kind::Group:
                result = showsCalendar(control.get(u"Context"));
                break;
            case Kind::List:
                result = s_.oPersonalSettings && model_.listFilled(t.list);
                break;
            case Kind::Report:
            case Kind::Settings:
                result = true;
                break;
            case Kind::Statistics:
                result = s_.oPersonalSettings && model_.statisticsShown();
                break;
            case Kind::None:
                break;
        }
    });
    return result;
}

bool cRibbon::getEnabled(const Variant& control) noexcept {
    bool result = false;
    trap(s_, u"cRibbon.getEnabled", [&] {
        const Target t = target(control);
        if (t.kind != Kind::List) {
            result = t.kind != Kind::None;
            return;
        }
        result = selectionOf(control.get(u"Context")).enabled;
        std::vector<bool>& answers = shown_[t.list].enabled;
        if (std::find(answers.begin(), answers.end(), result) == answers.end())
            answers.push_back(result);
    });
    return result;
}

// A button's caption, tip and image: the phrase table's, as on the toolbar.
std::optional<cRibbon::Face> cRibbon::faceOf(Kind kind) const {
    const Phrases& p = s_.phrases;
    switch (kind) {
        case Kind::Report:
            return Face{p.LNGREPORT, p.LNGREPORTTT, u"REPORT"};
        case Kind::Settings:
            return Face{p.LNGSETTINGS, p.LNGSETTINGSTT, u"SETTINGS"};
        case Kind::Statistics:
            return Face{p.LNGSTATISTICS, p.LNGSTATSTT, u"STATISTICS"};
        default:
            return std::nullopt;
    }
}

Str cRibbon::getLabel(const Variant& control) noexcept {
    Str result;
    trap(s_, u"cRibbon.getLabel", [&] {
        const Target t = target(control);
        if (t.kind == Kind::List) {
            if (s_.oPersonalSettings && t.list < model_.shownLists())
                result = model_.caption(t.list);
        } else if (const auto face = faceOf(t.kind)) {
            result = face->caption;
        }
    });
    return result;
}

Str cRibbon::getScreentip(const Variant& control) noexcept {
    Str result;
    trap(s_, u"cRibbon.getScreentip", [&] {
        if (const auto face = faceOf(target(control).kind)) result = face->tip;
    });
    // A drop-down's tip is its caption.
    if (result.empty()) result = getLabel(control);
    return result;
}

Variant cRibbon::getImage(const Variant& control) noexcept {
    Variant result = Variant::nothing();
    trap(s_, u"cRibbon.getImage", [&] {
        if (const auto face = faceOf(target(control).kind))
            result = s_.platform.picture(face->image);
    });
    return result;
}

std::int32_t cRibbon::getItemCount(const Variant& control) noexcept {
    std::int32_t result = 0;
    trap(s_, u"cRibbon.getItemCount", [&] {
        const Target t = target(control);
        if (t.kind != Kind::List || !s_.oPersonalSettings || t.list >= model_.shownLists()) return;
        handed_ = model_.generation();
        if (!longList(t.list)) {
            result = static_cast<std::int32_t>(model_.entryCount(t.list));
            return;
        }
        longItems_[t.list] = shortList(t.list, valueOf(control.get(u"Context"), t.list));
        result = static_cast<std::int32_t>(longItems_[t.list].size() + 1);
    });
    return result;
}

Str cRibbon::getItemLabel(const Variant& control, std::int32_t index) noexcept {
    Str result;
    trap(s_, u"cRibbon.getItemLabel", [&] {
        const Target t = target(control);
        if (t.kind != Kind::List || index < 0) return;
        const auto i = static_cast<std::size_t>(index);
        if (!longList(t.list)) {
            result = model_.entry(t.list, i);
        } else if (i < longItems_[t.list].size()) {
            result = longItems_[t.list][i];
        } else if (i == longItems_[t.list].size()) {
            result = kMoreLabel;
        }
    });
    return result;
}

Str cRibbon::getItemID(const Variant& control, std::int32_t index) noexcept {
    Str result;
    trap(s_, u"cRibbon.getItemID", [&] {
        const Target t = target(control);
        if (t.kind != Kind::List || index < 0) return;
        const auto i = static_cast<std::size_t>(index);
        result =
            longList(t.list) && i == longItems_[t.list].size() ? Str(kMoreId) : itemId(t.list, i);
    });
    return result;
}

std::int32_t cRibbon::getSelectedItemIndex(const Variant& control) noexcept {
    std::int32_t result = -1;
    trap(s_, u"cRibbon.getSelectedItemIndex", [&] {
        const Target t = target(control);
        if (t.kind != Kind::List || !s_.oPersonalSettings || t.list >= model_.shownLists()) return;
        const Str value = valueOf(control.get(u"Context"), t.list);
        if (!longList(t.list)) {
            result = model_.indexOf(t.list, value);
        } else {
            const std::vector<Str>& items = longItems_[t.list];
            for (std::size_t i = 0; i < items.size(); ++i) {
                if (!value.empty() && text::lower(items[i]) == text::lower(value)) {
                    result = static_cast<std::int32_t>(i);
                    break;
                }
            }
        }
        std::vector<Str>& answers = shown_[t.list].values;
        const Str folded = text::lower(value);
        if (std::find(answers.begin(), answers.end(), folded) == answers.end())
            answers.push_back(folded);
    });
    return result;
}

void cRibbon::onAction(const Variant& control, const std::optional<Str>& selectedId,
                       std::int32_t selectedIndex) noexcept {
    trap(s_, u"cRibbon.onAction", [&] {
        const Target t = target(control);
        switch (t.kind) {
            case Kind::Report:
                model_.runReport();
                return;
            case Kind::Settings:
                model_.runSettings(false);
                return;
            case Kind::Statistics:
                model_.runStatistics();
                return;
            case Kind::List:
                break;
            default:
                return;
        }
        if (!selectedId || selectedIndex < 0) return;
        // The pick changes what the selection shows: read it again when asked.
        selection_.reset();
        const Variant explorer = control.get(u"Context");
        const Variant item = selectedItem(explorer);
        if (!isSet(item)) return;
        const auto i = static_cast<std::size_t>(selectedIndex);
        Str value;
        if (!longList(t.list)) {
            value = model_.entry(t.list, i);
        } else if (*selectedId == kMoreId || i >= longItems_[t.list].size()) {
            // The whole list, searchable, in a window of its own.
            const std::optional<Str> picked =
                s_.platform.pickFromList(model_.caption(t.list), model_.entries(t.list));
            if (!picked) {
                // The drop-down shows "More…" now: back to the value.
                invalidate(kListIds[t.list]);
                return;
            }
            value = *picked;
        } else {
            value = longItems_[t.list][i];
        }
        subTrace(s_, u"Saving the ribbon's choice into BillingInformation");
        // The same writing as the toolbar's, with the values its boxes
        // would hold: the item's own for the other shown lists (those of
        // later lists stay in the categories as they are).
        const std::shared_ptr<cMarking> current = model_.valuesOf(item);
        cMarking choice(s_);
        for (std::size_t n = 0; n < model_.shownLists(); ++n) {
            const auto number = static_cast<std::int16_t>(n + 1);
            choice.setMetaName(number, n == t.list ? value
                                       : current->Count() > static_cast<std::int32_t>(n)
                                           ? current->MetaName(number)
                                           : Str());
        }
        if (choice.IsEmpty()) return;
        model_.write(item, choice, false);
        // A long list shows the value it now has among its first items.
        if (longList(t.list)) invalidate(kListIds[t.list]);
    });
}

// ---------------------------------------------------------------------------
// Refresh

bool cRibbon::Shown::showsOnly(bool state, const Str& folded) const {
    const bool states = enabled.empty() || (enabled.size() == 1 && enabled.front() == state);
    return states && values.size() == 1 && values.front() == folded;
}

void cRibbon::invalidate(const Str& id) {
    if (!isSet(ribbonUI_)) return;
    for (std::size_t n = 0; n < 3; ++n) {
        if (kListIds[n] == id) shown_[n].clear();
    }
    ribbonUI_.call(u"InvalidateControl", {Variant(id)});
}

void cRibbon::refreshSettings() {
    const bool reread = model_.refreshSettings(u"Getting the new values for the ribbon");
    if (!reread && handed_ == model_.generation()) return;
    // The lists, their captions and the Statistics button follow the
    // settings; the group itself stays.
    handed_ = model_.generation();
    selection_.reset();
    for (const Str& id : kListIds)
        invalidate(id);
    invalidate(kStatisticsId);
}

void cRibbon::subSelectionChange(const Variant& explorer) noexcept {
    trap(s_, u"cRibbon.subSelectionChange", [&] {
        selection_.reset();
        if (!isSet(ribbonUI_) || !s_.oPersonalSettings) return;
        const std::uint64_t before = handed_;
        refreshSettings();
        if (before != handed_) return;  // every list asks again anyway
        // Read once here; the drop-downs invalidated below are answered
        // from it.
        const Selection& now = selectionOf(explorer);
        for (std::size_t n = 0; n < model_.shownLists() && n < now.values.size(); ++n) {
            const Shown& shown = shown_[n];
            if (shown.values.empty()) continue;
            if (!shown.showsOnly(now.enabled, text::lower(now.values[n]))) invalidate(kListIds[n]);
        }
    });
}

void cRibbon::subFolderSwitch() noexcept {
    trap(s_, u"cRibbon.subFolderSwitch", [&] {
        selection_.reset();
        if (!isSet(ribbonUI_)) return;
        ribbonUI_.call(u"InvalidateControl", {Variant(Str(kGroupId))});
    });
}

void cRibbon::subExplorerClose() noexcept {
    try {
        selection_.reset();
    } catch (...) {
    }
}

void cRibbon::release() noexcept {
    try {
        selection_.reset();
        ribbonUI_ = Variant();
    } catch (...) {
    }
}

// ---------------------------------------------------------------------------
// The dispatch members Office calls

namespace {

class RibbonDispatch : public DispatchObject {
  public:
    explicit RibbonDispatch(Session& s) : DispatchObject(u"OHBAddinDesigner", table()), s_(s) {}

  private:
    cRibbon& ribbon() { return fncRibbon(s_); }
    static Variant control(Args& args) { return argAt(args, 0).deref(); }
    static std::int32_t index(Args& args) {
        try {
            return argAt(args, 1).deref().toLong();
        } catch (...) {
            return -1;
        }
    }

    static std::shared_ptr<const MemberTable> table() {
        static const auto t =
            Members<RibbonDispatch>()
                .method(u"GetCustomUI",
                        [](RibbonDispatch& d, Args& args) {
                            Str id;
                            resumeNext(d.s_, [&] { id = argAt(args, 0).deref().toStr(); });
                            d.s_.err.clear();
                            return d.ribbon().GetCustomUI(id);
                        })
                .method(u"onLoad",
                        [](RibbonDispatch& d, Args& args) { d.ribbon().onLoad(control(args)); })
                .method(u"getVisible",
                        [](RibbonDispatch& d, Args& args) {
                            return d.ribbon().getVisible(control(args));
                        })
                .method(u"getEnabled",
                        [](RibbonDispatch& d, Args& args) {
                            return d.ribbon().getEnabled(control(args));
                        })
                .method(u"getLabel", [](RibbonDispatch& d,
                                        Args& args) { return d.ribbon().getLabel(control(args)); })
                .method(u"getScreentip",
                        [](RibbonDispatch& d, Args& args) {
                            return d.ribbon().getScreentip(control(args));
                        })
                .method(u"getImage", [](RibbonDispatch& d,
                                        Args& args) { return d.ribbon().getImage(control(args)); })
                .method(u"getItemCount",
                        [](RibbonDispatch& d, Args& args) {
                            return d.ribbon().getItemCount(control(args));
                        })
                .method(u"getItemLabel",
                        [](RibbonDispatch& d, Args& args) {
                            return d.ribbon().getItemLabel(control(args), index(args));
                        })
                .method(u"getItemID",
                        [](RibbonDispatch& d, Args& args) {
                            return d.ribbon().getItemID(control(args), index(args));
                        })
                .method(u"getSelectedItemIndex",
                        [](RibbonDispatch& d, Args& args) {
                            return d.ribbon().getSelectedItemIndex(control(args));
                        })
                .method(u"onAction",
                        [](RibbonDispatch& d, Args& args) {
                            std::optional<Str> selectedId;
                            std::int32_t selectedIndex = -1;
                            if (args.size() >= 3) {
                                resumeNext(d.s_, [&] {
                                    selectedId = argAt(args, 1).deref().toStr();
                                    selectedIndex = argAt(args, 2).deref().toLong();
                                });
                                d.s_.err.clear();
                            }
                            d.ribbon().onAction(control(args), selectedId, selectedIndex);
                        })
                .build();
        return t;
    }

    Session& s_;
};

}  // namespace

cRibbon& fncRibbon(Session& s) {
    if (!s.objRibbon) s.objRibbon = std::make_shared<cRibbon>(s);
    return *s.objRibbon;
}

ObjectPtr makeRibbonDispatch(Session& s) {
    return std::make_shared<RibbonDispatch>(s);
}

}  // namespace hb
