// The session's one toolbar holder: builds or re-binds the add-in's command
// bar, shows and writes the billing information of the current appointment,
// runs the three buttons' commands and hosts the task pane of appointment
// windows under Outlook 2007 and later.
#include "explorer/cToolBarItem.h"

#include <algorithm>

#include "addin/cCalendarReactions.h"
#include "common/Constants.h"
#include "common/ErrorTrap.h"
#include "common/ScopeExit.h"
#include "common/Text.h"
#include "diagnostics/modErroHandling.h"
#include "explorer/cExplorerEvents.h"
#include "inspector/Pane.h"
#include "metadata/cMarking.h"
#include "settings/cPersonalSettings.h"
#include "settings/modFileHandling.h"
#include "settings/modGetDefaultFolders.h"

namespace hb {

namespace {

constexpr std::int32_t kControlButton = 1;     // msoControlButton
constexpr std::int32_t kControlComboBox = 4;   // msoControlComboBox
constexpr std::int32_t kStyleLabelOrIcon = 1;  // msoComboLabel / msoButtonIcon
constexpr std::int32_t kComboWidths[3] = {300, 175, 175};
constexpr std::int32_t kButtonWidth = 20;
constexpr std::int32_t kFaceReport = 790;
constexpr std::int32_t kFaceSettings = 1556;
constexpr std::int32_t kFaceStatistics = 1957;

constexpr std::int16_t kDockLeft = 0;
constexpr std::int16_t kDockTop = 1;
constexpr std::int16_t kDockRight = 2;
constexpr std::int16_t kDockBottom = 3;
constexpr std::int16_t kDockFloating = 4;

Variant sessionApplication(Session& s) {
    if (s.oCalendarReactions && isSet(s.oCalendarReactions->ouaMyOutlook())) {
        return s.oCalendarReactions->ouaMyOutlook();
    }
    return s.olApp;
}

cPersonalSettings& settingsOf(Session& s) {
    if (!s.oPersonalSettings) raise(err::ObjectVariableNotSet);
    return *s.oPersonalSettings;
}

std::size_t listCount(Session& s) {
    return settingsOf(s).MetaDataLists.size();
}

// Events of one control or pane, handed to the holder while it lives; the
// holder stays alive for the whole handler.
template <class H>
std::shared_ptr<EventSink> sinkFor(const std::weak_ptr<cToolBarItem>& weak, Str eventName,
                                   H handler) {
    return std::make_shared<FunctionSink>(
        [weak, eventName = std::move(eventName), handler](const Str& member, Args& args) {
            if (member != eventName) return;
            if (const std::shared_ptr<cToolBarItem> self = weak.lock()) {
                try {
                    handler(*self, args);
                } catch (...) {
                }
            }
        });
}

}  // namespace

cToolBarItem::cToolBarItem(Session& s) : s_(s), model_(s) {}

// The event connections end with their members.
cToolBarItem::~cToolBarItem() = default;

void cToolBarItem::releaseControls() noexcept {
    cmb1Events_.disconnect();
    cmb2Events_.disconnect();
    cmb3Events_.disconnect();
    cmdReportEvents_.disconnect();
    cmdSettingsEvents_.disconnect();
    cmdStatisticsEvents_.disconnect();
    cmb1Meta_ = cmb2Meta_ = cmb3Meta_ = Variant();
    cmdReport_ = cmdSettings_ = cmdStatistics_ = Variant();
    colCombos_.clear();
    for (Filled& f : filled_)
        f = Filled{};
}

const Variant& cToolBarItem::cmbMeta(int n) const {
    static const Variant none;
    switch (n) {
        case 1:
            return cmb1Meta_;
        case 2:
            return cmb2Meta_;
        case 3:
            return cmb3Meta_;
        default:
            return none;
    }
}

// ---------------------------------------------------------------------------
// Toolbar

void cToolBarItem::setOfbCurrCommandBar(const Variant& bar) {
    ofbCurrCommandBar_ = bar;
}

void cToolBarItem::subAddButtons() {
    Session& s = s_;
    trap(s, u"cToolBarItem.subAddButtons", [&] {
        cPersonalSettings& settings = settingsOf(s);

        // 1. After the settings program saved: one full rebuild. What counts
        // is that the stored settings changed, not that the program was
        // started: a window activated while its dialog is still open must
        // not use up the rebuild before OK wrote anything, and a script's
        // import changes the settings without any button pressed. Settings
        // read again for a selection or a pane since the bar was built
        // rebuild it too.
        const bool stored = settings.fncStoreChanged();
        if (stored || blnRebuildPending_) {
            subTrace(s, u"Rebuilding toolbar after changing settings");
            blnRebuildPending_ = false;
            if (stored) settings.GetValuesFromSettings();
            RemoveToolbar();
            const Variant explorer = sessionApplication(s).call(u"ActiveExplorer");
            setOfbCurrCommandBar(fncGetToolbar(s, explorer));
            s.blnSettingsChanged = false;
        }

        const std::size_t lists = settings.MetaDataLists.size();
        const auto bindCombo = [&](Variant& member, EventConnection& events, const Variant& control,
                                   void (cToolBarItem::*handler)()) {
            events.disconnect();
            member = control;
            events = control.obj().subscribe(
                u"_CommandBarComboBoxEvents",
                sinkFor(weak_from_this(), u"Change",
                        [handler](cToolBarItem& self, Args&) { (self.*handler)(); }));
            colCombos_.push_back(control);
        };
        const auto bindButton = [&](Variant& member, EventConnection& events,
                                    const Variant& control, void (cToolBarItem::*handler)()) {
            events.disconnect();
            member = control;
            events = control.obj().subscribe(
                u"_CommandBarButtonEvents",
                sinkFor(weak_from_this(), u"Click",
                        [handler](cToolBarItem& self, Args&) { (self.*handler)(); }));
        };
        Variant* const combos[3] = {&cmb1Meta_, &cmb2Meta_, &cmb3Meta_};
        EventConnection* const comboEvents[3] = {&cmb1Events_, &cmb2Events_, &cmb3Events_};
        void (cToolBarItem::*const comboHandlers[3])() = {&cToolBarItem::cmb1Meta_Change,
                                                          &cToolBarItem::cmb2Meta_Change,
                                                          &cToolBarItem::cmb3Meta_Change};

        // 2. A bar built before (two controls or more) is re-bound, never
        // duplicated. A bar with a single control counts as empty.
        if (isSet(ofbCurrCommandBar_)) {
            const Variant controls = ofbCurrCommandBar_.get(u"Controls");
            if (controls.get(u"Count").toLong() >= 2) {
                colCombos_.clear();
                std::int32_t index = 1;
                for (std::size_t n = 0; n < 3 && n < lists; ++n, ++index) {
                    bindCombo(*combos[n], *comboEvents[n], controls.call(u"Item", {Variant(index)}),
                              comboHandlers[n]);
                }
                bindButton(cmdReport_, cmdReportEvents_, controls.call(u"Item", {Variant(index)}),
                           &cToolBarItem::cmdReport_Click);
                ++index;
                bindButton(cmdSettings_, cmdSettingsEvents_,
                           controls.call(u"Item", {Variant(index)}),
                           &cToolBarItem::cmdSettings_Click);
                ++index;
                if (model_.statisticsShown()) {
                    bindButton(cmdStatistics_, cmdStatisticsEvents_,
                               controls.call(u"Item", {Variant(index)}),
                               &cToolBarItem::cmdStatistics_Click);
                }
                return;
            }
        }

        // 3. to 6. A new build.
        subTrace(s, u"Adding buttons to Hourbook for Outlook toolbar");
        colCombos_.clear();
        const Variant controls = ofbCurrCommandBar_.get(u"Controls");
        const auto addControl = [&](std::int32_t type) {
            return controls.call(u"Add", {Variant(type), Variant(std::int32_t{1}),
                                          Variant::missing(), Variant::missing(), Variant(true)});
        };
        for (std::size_t n = 0; n < 3 && n < lists; ++n) {
            const Variant combo = addControl(kControlComboBox);
            combo.put(u"Width", Variant(kComboWidths[n]));
            combo.put(u"Style", Variant(kStyleLabelOrIcon));
            combo.put(u"Caption", Variant(settings.MetaDataLists[n]->Caption));
            bindCombo(*combos[n], *comboEvents[n], combo, comboHandlers[n]);
        }
        const auto addButton = [&](Variant& member, EventConnection& events, const Str& caption,
                                   const Str& tooltip, std::int32_t faceId, bool beginGroup,
                                   void (cToolBarItem::*handler)()) {
            const Variant button = addControl(kControlButton);
            button.put(u"Width", Variant(kButtonWidth));
            button.put(u"Style", Variant(kStyleLabelOrIcon));
            button.put(u"Caption", Variant(caption));
            button.put(u"TooltipText", Variant(tooltip));
            button.put(u"FaceId", Variant(faceId));
            if (beginGroup) button.put(u"BeginGroup", Variant(true));
            bindButton(member, events, button, handler);
        };
        addButton(cmdReport_, cmdReportEvents_, s.phrases.LNGREPORT, s.phrases.LNGREPORTTT,
                  kFaceReport, true, &cToolBarItem::cmdReport_Click);
        addButton(cmdSettings_, cmdSettingsEvents_, s.phrases.LNGSETTINGS, s.phrases.LNGSETTINGSTT,
                  kFaceSettings, false, &cToolBarItem::cmdSettings_Click);
        if (model_.statisticsShown()) {
            addButton(cmdStatistics_, cmdStatisticsEvents_, s.phrases.LNGSTATISTICS,
                      s.phrases.LNGSTATSTT, kFaceStatistics, false,
                      &cToolBarItem::cmdStatistics_Click);
        }
        // The boxes are filled by FillDropDowns when an appointment is shown.
    });
}

void cToolBarItem::RemoveToolbar() {
    Session& s = s_;
    trap(s, u"cToolBarItem.RemoveToolbar", [&] {
        if (blnInInspector_ || !isSet(ofbCurrCommandBar_)) return;
        ofbCurrCommandBar_.call(u"Delete");
        // The bar and its controls are gone: let go of them and their events,
        // so that a second removal (one per window at shutdown) finds nothing.
        ofbCurrCommandBar_ = Variant::nothing();
        releaseControls();
    });
}

void cToolBarItem::setBlnButtonsEnabled(bool value) {
    Session& s = s_;
    trap(s, u"cToolBarItem.blnButtonsEnabled", [&] {
        if (!isSet(cmb1Meta_)) return;
        subTrace(s, u"Disabling buttons " + cmb1Meta_.obj().typeName());
        // A disabled box shows no list and no text. The buttons stay enabled.
        if (!value) {
            for (const Variant& combo : colCombos_)
                combo.call(u"Clear");
            for (Filled& f : filled_)
                f = Filled{};
        }
        for (const Variant& combo : colCombos_)
            combo.put(u"Enabled", Variant(value));
    });
}

void cToolBarItem::setOuiCurrItem(const Variant& item) {
    Session& s = s_;
    trap(s, u"cToolBarItem.ouiCurrItem", [&] {
        ouiCurrItem_ = item;
        if (!isSet(item)) {
            for (const Variant* combo : {&cmb1Meta_, &cmb2Meta_, &cmb3Meta_}) {
                if (isSet(*combo)) combo->put(u"Text", Variant(Str()));
            }
            return;
        }
        // Watch the folder that holds the item (the series of an exception
        // or occurrence lives one level further up).
        const Variant items = fncIsSeriesMember(item, item.get(u"MessageClass").toStr())
                                  ? item.get(u"Parent").get(u"Parent").get(u"Items")
                                  : item.get(u"Parent").get(u"Items");
        ouiItemsEvents_.disconnect();
        ouiItems_ = items;
        ouiItemsEvents_ = items.obj().subscribe(
            u"ItemsEvents",
            sinkFor(weak_from_this(), u"ItemAdd", [](cToolBarItem& self, Args& args) {
                self.ouiItems_ItemAdd(args.empty() ? Variant() : args[0].deref());
            }));
    });
    s.err.clear();
}

void cToolBarItem::FillDropDowns() {
    Session& s = s_;
    trap(s, u"cToolBarItem.FillDropDowns", [&] {
        const cPersonalSettings& settings = settingsOf(s);
        const Variant* const combos[3] = {&cmb1Meta_, &cmb2Meta_, &cmb3Meta_};
        // A box still holding what it was last filled with (the same
        // control, lists unchanged since, and as many entries as were added,
        // so Outlook has not emptied it) keeps its list: only its text and
        // state change. The trace reads as for a full fill.
        bool keep[3] = {false, false, false};
        for (std::size_t n = 0; n < 3; ++n) {
            const Variant& combo = *combos[n];
            const Filled& f = filled_[n];
            keep[n] = isSet(combo) && f.count >= 0 && f.control == combo.obj().identity() &&
                      f.generation == settings.generation() &&
                      combo.get(u"ListCount").toLong() == f.count;
        }
        subTrace(s, u"Clearing the values from the comboboxes");
        for (std::size_t n = 0; n < 3; ++n) {
            if (isSet(*combos[n]) && !keep[n]) {
                filled_[n] = Filled{};
                combos[n]->call(u"Clear");
                filled_[n] = Filled{combos[n]->obj().identity(), settings.generation(), 0};
            }
        }
        for (std::size_t n = 0; n < model_.shownLists(); ++n) {
            // Lists 1 and 2 need a name to be shown.
            if (!model_.listFilled(n)) continue;
            subTrace(s, u"Adding meta list " + toStr(static_cast<long long>(n + 1)) +
                            u" from collection into combobox");
            if (!isSet(*combos[n]) || keep[n]) continue;
            const std::size_t entries = model_.entryCount(n);
            const std::int32_t count = filled_[n].count;
            filled_[n].count = -1;  // a fill that stops half way is done again
            std::int32_t added = count;
            for (std::size_t i = 0; i < entries; ++i) {
                combos[n]->call(u"AddItem", {Variant(model_.entry(n, i))});
                ++added;
            }
            filled_[n].count = added;
        }
    });
}

// ---------------------------------------------------------------------------
// Billing entry

// The three boxes' Change handlers differ only in their names and traces:
// a value picked from the list (not a typed text) is written and shown again.
void cToolBarItem::comboChanged(const Variant& combo, const Str& procedure, const Str& trace) {
    Session& s = s_;
    trap(s, procedure, [&] {
        subTrace(s, trace);
        if (combo.get(u"ListIndex").toLong() > 0 && !combo.get(u"Text").toStr().empty()) {
            SaveValues();
            GetCurrentValues();
        }
    });
}

void cToolBarItem::cmb1Meta_Change() {
    comboChanged(cmb1Meta_, u"cToolBarItem.cmb1Meta_Change", u"Working with Company Change-event");
}

void cToolBarItem::cmb2Meta_Change() {
    // This handler has always reported under the explorer's name.
    comboChanged(cmb2Meta_, u"cExplorerEvents.cmb2Meta_Change",
                 u"Working with Person Change-event");
}

void cToolBarItem::cmb3Meta_Change() {
    comboChanged(cmb3Meta_, u"cToolBarItem.cmb3Meta_Change",
                 u"Working with Extra Field Change-event");
}

void cToolBarItem::SaveValues() {
    Session& s = s_;
    trap(s, u"SaveValues", [&] {
        subTrace(s, u"Saving all the comboboxes into BillingInformation");
        const std::size_t lists = listCount(s);
        const auto marking = std::make_shared<cMarking>(s);
        marking->setMetaName(1, cmb1Meta_.get(u"Text").toStr());
        if (lists >= 2) marking->setMetaName(2, cmb2Meta_.get(u"Text").toStr());
        if (lists >= 3) marking->setMetaName(3, cmb3Meta_.get(u"Text").toStr());
        marking_ = marking;

        if (marking->IsEmpty() || !isSet(ouiCurrItem_)) return;

        const Variant item = ouiCurrItem_;
        strEntryID_ = item.get(u"Subject").toStr() + item.get(u"Start").toStr();

        model_.write(item, *marking, blnInInspector_);
    });
}

void cToolBarItem::GetCurrentValues() {
    Session& s = s_;
    trap(s, u"cToolBarItem.GetCurrentValues", [&] {
        // Read again once the settings program (or an import) has saved.
        if (model_.refreshSettings(u"Getting the new values because the user has changed settings"))
            blnRebuildPending_ = true;
        subTrace(s, u"Checking Billing Information -property");
        // An exception or occurrence shows its series' values.
        marking_ = std::make_shared<cMarking>(s);
        const std::shared_ptr<cMarking> marking = model_.valuesOf(ouiCurrItem_);
        marking_ = marking;

        FillDropDowns();

        const std::size_t lists = listCount(s);
        const Variant* const combos[3] = {&cmb1Meta_, &cmb2Meta_, &cmb3Meta_};
        for (std::int16_t n = 1; n <= 3; ++n) {
            const Variant& combo = *combos[n - 1];
            if (!isSet(combo) || lists < static_cast<std::size_t>(n) || marking->Count() < n) {
                continue;
            }
            combo.put(u"Text", Variant(marking->MetaName(n)));
            combo.put(u"Visible", Variant(true));
        }
    });
}

// No error trap of its own: SaveValues calls it with errors ignored, so a
// subject that Outlook refuses to change stays as it was and nothing is
// shown to the user, as for every other write into the item.
void cToolBarItem::subWriteSubject(const Variant& item) {
    model_.writeSubject(item);
}

bool cToolBarItem::fncIsHourbookData(const Str& text) {
    return hb::fncIsHourbookData(s_, text);
}

void cToolBarItem::ouiItems_ItemAdd(const Variant& item) {
    Session& s = s_;
    trap(s, u"cToolBarItem.ouiItems_ItemAdd", [&] {
        if (strEntryID_.empty()) {
            strEntryID_ = item.get(u"Subject").toStr() + item.get(u"Start").toStr();
        }
    });
}

// ---------------------------------------------------------------------------
// Commands

void cToolBarItem::cmdReport_Click() {
    trap(s_, u"cToolBarItem.cmdReport_Click", [&] { model_.runReport(); });
}

void cToolBarItem::cmdSettings_Click() {
    trap(s_, u"cToolBarItem.cmdSettings_Click", [&] { subLaunchSettings(false); });
}

void cToolBarItem::subLaunchSettings(bool flag) {
    trap(s_, u"cToolBarItem.subLaunchSettings", [&] { model_.runSettings(flag); });
}

void cToolBarItem::cmdStatistics_Click() {
    trap(s_, u"cToolBarItem.cmdStatistics_Click", [&] { model_.runStatistics(); });
}

// ---------------------------------------------------------------------------
// Task pane

void cToolBarItem::subAddCTP(const Variant& inspector) {
    Session& s = s_;
    trap(s, u"cToolBarItem.subAddCTP", [&] {
        subTrace(s, u"Loading custom task pane in new inspector window");
        blnLoadingCTP_ = true;
        // Down again however the set-up ends: a set-up that fails half way
        // must not stop every later dock change from being kept.
        const ScopeExit loaded([this] { blnLoadingCTP_ = false; });
        const Str version = fncGetAddinVersion(s);
        const Variant pane = s.oCTPFactory.call(
            u"CreateCTP",
            {Variant(kPaneProgId), Variant(u"Hourbook for Outlook (" + version + u")"), inspector});
        objCTPEvents_.disconnect();
        objCTP_ = pane;
        objCTPEvents_ = pane.obj().subscribe(
            u"_CustomTaskPaneEvents", sinkFor(weak_from_this(), u"DockPositionStateChange",
                                              [](cToolBarItem& self, Args& args) {
                                                  self.objCTP_DockPositionStateChange(
                                                      args.empty() ? self.objCTP_ : args[0].deref(),
                                                      true);
                                              }));

        cPersonalSettings& settings = settingsOf(s);
        // The pane shows the lists as stored now, also when the settings
        // program saved since the calendar last read them.
        if (model_.refreshSettings()) blnRebuildPending_ = true;
        ctpSetUp_.emplace();
        pane.put(u"DockPosition", Variant(settings.intPaneDockPos));
        // A docked pane gets only the size across its dock side, a floating
        // one both.
        std::int32_t dock = pane.get(u"DockPosition").toLong();
        ctpSetUp_->dock = dock;
        if (dock == kDockFloating || dock == kDockRight || dock == kDockLeft) {
            const auto width = static_cast<std::int32_t>(settings.intPaneWidth);
            ctpSetUp_->width = width;
            pane.put(u"Width", Variant(width));
        }
        dock = pane.get(u"DockPosition").toLong();
        ctpSetUp_->dock = dock;
        if (dock == kDockFloating || dock == kDockBottom || dock == kDockTop) {
            const auto height = static_cast<std::int32_t>(settings.intPaneHeight);
            ctpSetUp_->height = height;
            pane.put(u"Height", Variant(height));
        }
        pane.put(u"Visible", Variant(true));

        const Variant control = pane.get(u"ContentControl");
        control.obj().putRef(u"objAppointment", ouiCurrItem_);
        control.put(u"Settings", Variant(settings.fncBuildBody()));
    });
}

void cToolBarItem::objCTP_DockPositionStateChange(const Variant& pane, bool fromEvent) {
    Session& s = s_;
    // The pane's own changes while it is being set up are not saved.
    if (!blnLoadingCTP_) {
        const auto dock = tryGet(s, [&] { return pane.get(u"DockPosition").toInteger(); });
        const auto height = tryGet(s, [&] { return pane.get(u"Height").toInteger(); });
        const auto width = tryGet(s, [&] { return pane.get(u"Width").toInteger(); });
        resumeNext(s, [&] {
            if (!dock || !height || !width) return;
            if (fromEvent && ctpSetUp_) {
                // An event of the set-up, delivered late: the pane is as
                // subAddCTP left it. The first change of the user's ends
                // the watch.
                const PaneSetUp& set = *ctpSetUp_;
                if (*dock == set.dock && (!set.width || *set.width == *width) &&
                    (!set.height || *set.height == *height)) {
                    return;
                }
                ctpSetUp_.reset();
            }
            cPersonalSettings& settings = settingsOf(s);
            if (settings.intPaneDockPos == *dock && settings.intPaneHeight == *height &&
                settings.intPaneWidth == *width) {
                return;
            }
            // Closing or collapsing: nothing worth keeping.
            if (*height == 0 || *width == 0) return;
            settings.intPaneDockPos = *dock;
            settings.intPaneHeight = *height;
            settings.intPaneWidth = *width;
            settings.SavePaneSettings();
        });
    }
    s.err.clear();
}

void cToolBarItem::releaseItem(const Variant& item) noexcept {
    try {
        if (isSet(item) && sameObject(ouiCurrItem_, item)) ouiCurrItem_ = Variant::nothing();
    } catch (...) {
    }
}

void cToolBarItem::releaseCTP() {
    ctpSetUp_.reset();
    objCTPEvents_.disconnect();
    objCTP_ = Variant();
}

}  // namespace hb
