// The explorer wrapper: one per Outlook Explorer window. It decides, event by
// event, whether the window shows the default calendar, keeps the session's
// toolbar holder pointed at that window's command bar and shows the selected
// appointment. Also the calendar tests and the command bar helpers that the
// whole add-in uses.
#include "explorer/cExplorerEvents.h"

#include "addin/OHBAddinDesigner.h"
#include "addin/cCalendarReactions.h"
#include "common/Constants.h"
#include "common/ErrorTrap.h"
#include "common/Text.h"
#include "diagnostics/modErroHandling.h"
#include "explorer/cRibbon.h"
#include "explorer/cToolBarItem.h"
#include "inspector/cInspectorEvents.h"

namespace hb {

namespace {

constexpr std::int32_t kBarTop = 1;  // msoBarTop

// The Outlook Application the session object hears.
Variant sessionApplication(Session& s) {
    if (s.oCalendarReactions && isSet(s.oCalendarReactions->ouaMyOutlook())) {
        return s.oCalendarReactions->ouaMyOutlook();
    }
    return s.olApp;
}

Str boolText(bool value) {
    return value ? Str(u"True") : Str(u"False");
}

}  // namespace

// ---------------------------------------------------------------------------
// Calendar tests and command bar helpers

bool CheckFolder(Session& s, const Variant& folder) {
    bool result = false;
    trap(s, u"cExplorerEvents.CheckFolder", [&] {
        if (!isSet(folder)) return;
        result = folder.get(u"EntryID").toStr() == s.strCalendarEntryID;
    });
    return result;
}

bool fncIsAppointmentClass(Session& s, const Str& messageClass) {
    subTrace(s, u"Checking the messageclass " + messageClass);
    bool result = false;
    trap(s, u"cExplorerEvents.fncIsAppointmentClass", [&] {
        const Str upper = text::upper(messageClass);
        if (upper == u"IPM.APPOINTMENT" || upper == u"IPM.SCHEDULE.MEETING.REQUEST" ||
            upper == text::upper(kRecurrenceExceptionClass)) {
            result = true;
        }
        // Any class that begins with IPM.Appointment passes, whatever follows.
        if (text::upper(text::left(messageClass, 15)) == u"IPM.APPOINTMENT") result = true;
    });
    subTrace(s, u"Found this folder to be " + boolText(result));
    return result;
}

bool fncIsSeriesMember(const Variant& item, const Str& messageClass) {
    constexpr std::int32_t kApptOccurrence = 2;  // olApptOccurrence
    if (messageClass == kRecurrenceExceptionClass) return true;
    try {
        return item.get(u"RecurrenceState").toLong() == kApptOccurrence;
    } catch (...) {
        // Items other than appointments (meeting requests) have no
        // recurrence state: no occurrence.
        return false;
    }
}

Str fncItemStoreID(const Variant& item) {
    const Variant parent = item.get(u"Parent");
    // A series member's Parent is its series, whose Parent is the folder.
    if (fncIsSeriesMember(item, item.get(u"MessageClass").toStr()))
        return parent.get(u"Parent").get(u"StoreID").toStr();
    return parent.get(u"StoreID").toStr();
}

Variant fncGetToolbar(Session& s, const Variant& window) {
    Variant bar;
    trap(s, u"cExplorerEvents.fncGetToolbar", [&] {
        const Variant bars = window.get(u"CommandBars");
        for (const Variant& candidate : bars.obj().enumerate()) {
            if (candidate.get(u"Name").toStr() == kProductCaption) {
                bar = candidate;
                break;
            }
        }
        if (!isSet(bar)) {
            bar = bars.call(u"Add", {Variant(kProductCaption), Variant(kBarTop), Variant(false),
                                     Variant(true)});
        }
        bar.put(u"Visible", Variant(true));
    });
    return bar;
}

void subRemoveCommandBar(Session& s, const Variant& commandBars) {
    trap(s, u"cExplorerEvents.subRemoveCommandBar", [&] {
        subTrace(s, Str(u"Removing ") + kProductCaption + u" from the explorer window");
        // Every bar of the add-in's name goes, not only the first.
        for (const Variant& bar : commandBars.obj().enumerate()) {
            if (bar.get(u"Name").toStr() == kProductCaption) bar.call(u"Delete");
        }
    });
}

void subReattachInspectors(Session& s) {
    trap(s, u"cExplorerEvents.subReattachInspectors", [&] {
        const std::shared_ptr<cCalendarReactions> reactions = s.oCalendarReactions;
        if (!reactions) raise(err::ObjectVariableNotSet);
        const Variant inspectors = sessionApplication(s).get(u"Inspectors");
        for (const Variant& inspector : inspectors.obj().enumerate()) {
            const Variant item = inspector.get(u"CurrentItem");
            if (fncItemStoreID(item) != s.strCalendarStoreID) continue;
            if (!fncIsAppointmentClass(s, item.get(u"MessageClass").toStr())) continue;
            reactions->colInspectors.push_back(std::make_shared<cInspectorEvents>(s));
            reactions->colInspectors.back()->setOuiMyInspector(inspector);
        }
    });
}

// ---------------------------------------------------------------------------
// The wrapper

cExplorerEvents::cExplorerEvents(Session& s) : s_(s) {}

cExplorerEvents::~cExplorerEvents() {
    try {
        events_.disconnect();
        oueMyExplorer_ = Variant();
        lastBar_ = Variant();
    } catch (...) {
    }
}

void cExplorerEvents::setOueMyExplorer(const Variant& explorer) {
    events_.disconnect();
    oueMyExplorer_ = Variant();
    if (!isSet(explorer)) {
        (void)explorer.toObject();  // a value that is no object: 424
        oueMyExplorer_ = Variant::nothing();
        return;
    }
    const std::weak_ptr<cExplorerEvents> weak = weak_from_this();
    EventConnection events = explorer.obj().subscribe(
        u"ExplorerEvents", std::make_shared<FunctionSink>([weak](const Str& member, Args& args) {
            // The wrapper stays alive for its whole handler, even when the
            // handler drops it from the session's collection (Close).
            const std::shared_ptr<cExplorerEvents> self = weak.lock();
            if (!self) return;
            try {
                if (member == u"Activate") {
                    self->oueMyExplorer_Activate();
                } else if (member == u"BeforeFolderSwitch") {
                    const Variant newFolder = args.empty() ? Variant() : args[0].deref();
                    Variant spare(false);
                    Variant& cancel = args.size() > 1 ? args[1] : spare;
                    self->oueMyExplorer_BeforeFolderSwitch(newFolder, cancel);
                } else if (member == u"Close") {
                    self->oueMyExplorer_Close();
                } else if (member == u"Deactivate") {
                    self->oueMyExplorer_Deactivate();
                } else if (member == u"FolderSwitch") {
                    self->oueMyExplorer_FolderSwitch();
                } else if (member == u"SelectionChange") {
                    self->oueMyExplorer_SelectionChange();
                }
            } catch (...) {
            }
        }));
    oueMyExplorer_ = explorer;
    events_ = std::move(events);
}

void cExplorerEvents::oueMyExplorer_Activate() {
    Session& s = s_;
    trap(s, u"oueMyExplorer_Activate", [&] {
        subTrace(s, u"Reacting to Explorer Activate event");
        if (!s.oCalendarReactions) return;
        const Variant app = sessionApplication(s);
        if (!isSet(app)) return;
        if (!isSet(app.get(u"Inspectors"))) return;
        s.intInspectorCount = app.get(u"Inspectors").get(u"Count").toInteger();

        const Variant folder = oueMyExplorer_.get(u"CurrentFolder");
        if (!isSet(folder)) return;
        if (folder.get(u"EntryID").toStr() != s.strCalendarEntryID) return;

        // From Outlook 2010 on the ribbon group shows the billing controls:
        // no command bar.
        if (!s.blnRibbon) {
            const Variant bar = fncGetToolbar(s, oueMyExplorer_);
            if (!isSet(bar)) return;
            const std::shared_ptr<cToolBarItem> toolbar = s.objToolBar;
            if (!toolbar) return;
            toolbar->setOfbCurrCommandBar(bar);
            toolbar->subAddButtons();
        } else if (!s.objToolBar) {
            return;
        }

        // With no inspector open this finds nothing to do; kept as it is.
        if (app.get(u"Inspectors").get(u"Count").toLong() == 0) subReattachInspectors(s);

        subClearExplorers(s);

        blnActive = true;
        oueMyExplorer_SelectionChange();
    });
}

void cExplorerEvents::oueMyExplorer_BeforeFolderSwitch(const Variant& newFolder,
                                                       Variant& /*cancel*/) {
    Session& s = s_;
    trap(s, u"cExplorerEvents.oueMyExplorer_BeforeFolderSwitch", [&] {
        subTrace(s, u"Checking if the current folder is an appointment folder");
        // Outlook gives Nothing for a folder outside the stores (a
        // shortcut, a data file being closed): not the calendar.
        if (!isSet(newFolder) || newFolder.get(u"EntryID").toStr() != s.strCalendarEntryID) {
            // The holder's bar is the calendar window's. Only a window that
            // leaves the calendar takes it away; another window moving
            // between its mail folders leaves the calendar window its bar.
            const std::shared_ptr<cToolBarItem> toolbar = s.objToolBar;
            if (toolbar && CheckFolder(s, oueMyExplorer_.get(u"CurrentFolder")))
                toolbar->RemoveToolbar();
            blnCalendarFolder = false;
        } else {
            blnCalendarFolder = true;
        }
    });
}

void cExplorerEvents::oueMyExplorer_Close() {
    Session& s = s_;
    trap(s, u"oueMyExplorer_Close", [&] {
        blnClosed = true;
        subTrace(s, u"Closing down an explorer");
        if (s.objRibbon) s.objRibbon->subExplorerClose();
        const std::shared_ptr<cCalendarReactions> reactions = s.oCalendarReactions;
        if (!reactions) raise(err::ObjectVariableNotSet);
        if (reactions->colExplorers.size() == 1) {
            subTrace(s, u"This is the last explorer - so we shut everything down");
            subClearExplorers(s);
            subCloseDown(s);
        } else {
            subClearExplorers(s);
        }
    });
}

void cExplorerEvents::oueMyExplorer_Deactivate() {
    Session& s = s_;
    trap(s, u"cExplorerEvents.oueMyExplorer_Deactivate", [&] {
        blnActive = false;
        if (const std::shared_ptr<cToolBarItem> toolbar = s.objToolBar) {
            toolbar->setBlnButtonsEnabled(false);
            toolbar->setOuiCurrItem(Variant::nothing());
        }
    });
}

void cExplorerEvents::oueMyExplorer_FolderSwitch() {
    Session& s = s_;
    if (s.blnRibbon) {
        // Whether the group shows depends on the folder.
        if (s.objRibbon) s.objRibbon->subFolderSwitch();
        return;
    }
    Variant folder;
    if (resumeNext(s, [&] { folder = oueMyExplorer_.get(u"CurrentFolder"); }) &&
        CheckFolder(s, folder)) {
        Variant bar;
        if (resumeNext(s, [&] { bar = fncGetToolbar(s, oueMyExplorer_); })) {
            resumeNext(s, [&] {
                const std::shared_ptr<cToolBarItem> toolbar = s.objToolBar;
                if (!toolbar) raise(err::ObjectVariableNotSet);
                toolbar->setOfbCurrCommandBar(bar);
            });
        }
    }
    s.err.clear();
}

void cExplorerEvents::oueMyExplorer_SelectionChange() {
    Session& s = s_;
    const std::shared_ptr<cToolBarItem> toolbar = s.objToolBar;
    // The holder's own members trap their errors; a missing holder is the
    // run time's 91 on the statement that needs it.
    auto withToolbar = [&](auto&& statement) {
        return resumeNext(s, [&] {
            if (!toolbar) raise(err::ObjectVariableNotSet);
            statement(*toolbar);
        });
    };
    auto activeWindowIsExplorer = [&] {
        const std::optional<Str> type = tryGet(s, [&] {
            const Variant window = sessionApplication(s).call(u"ActiveWindow");
            return isSet(window) ? window.obj().typeName() : Str(u"Nothing");
        });
        return type && *type == u"Explorer";
    };
    auto disableAndClear = [&] {
        withToolbar([](cToolBarItem& t) { t.setBlnButtonsEnabled(false); });
        withToolbar([](cToolBarItem& t) { t.setOuiCurrItem(Variant::nothing()); });
    };

    // 1. Whether the window shows the calendar, worked out late.
    if (!blnCalendarFolder) {
        Variant folder;
        if (resumeNext(s, [&] { folder = oueMyExplorer_.get(u"CurrentFolder"); })) {
            blnCalendarFolder = CheckFolder(s, folder);
        }
    }

    // The ribbon group asks for what it shows; it hears what changed.
    if (s.blnRibbon) {
        if (s.objRibbon) s.objRibbon->subSelectionChange(oueMyExplorer_);
        s.err.clear();
        return;
    }

    // 2. The calendar: show the one selected appointment.
    if (blnCalendarFolder) {
        subTrace(s, u"Reacting to Selection Change in explorer object");
        Variant selection;
        std::optional<std::int32_t> count = tryGet(s, [&] {
            selection = oueMyExplorer_.get(u"Selection");
            return selection.get(u"Count").toLong();
        });
        if (count && *count != 1) {
            if (activeWindowIsExplorer()) disableAndClear();
        } else if (count) {
            Variant item;
            const std::optional<Str> messageClass = tryGet(s, [&] {
                item = selection.call(u"Item", {Variant(std::int32_t{1})});
                return item.get(u"MessageClass").toStr();
            });
            if (messageClass) {
                if (fncIsAppointmentClass(s, *messageClass)) {
                    // The selected item is always the one shown and written.
                    // Telling items apart by subject and start (the key the
                    // holder keeps of the item it last wrote) mistakes a
                    // copy for its original, and skipping the item last
                    // written left the boxes on another item, or empty after
                    // a Deactivate. Showing it again costs little: the boxes
                    // are refilled only when their lists changed.
                    if (toolbar) {
                        Variant bar;
                        const bool served =
                            isSet(lastBar_) &&
                            tryGet(s, [&] {
                                return sameObject(toolbar->ofbCurrCommandBar(), lastBar_);
                            }).value_or(false);
                        bool got = served;
                        if (served) {
                            bar = lastBar_;
                        } else if (resumeNext(s, [&] { bar = fncGetToolbar(s, oueMyExplorer_); })) {
                            lastBar_ = bar;
                            got = true;
                        }
                        if (got) {
                            withToolbar([&](cToolBarItem& t) { t.setOfbCurrCommandBar(bar); });
                            withToolbar([](cToolBarItem& t) { t.setBlnInInspector(false); });
                            withToolbar([](cToolBarItem& t) { t.setBlnButtonsEnabled(true); });
                            withToolbar([&](cToolBarItem& t) { t.setOuiCurrItem(item); });
                            withToolbar([](cToolBarItem& t) { t.GetCurrentValues(); });
                        }
                    }
                } else if (activeWindowIsExplorer()) {
                    disableAndClear();
                }
            }
        }
    }

    // 3. Elsewhere, with the session's remove-toolbar flag, the bar goes.
    if (!blnCalendarFolder && s.blnRemoveToolbar) {
        withToolbar([](cToolBarItem& t) { t.setOuiCurrItem(Variant::nothing()); });
        withToolbar([](cToolBarItem& t) { t.RemoveToolbar(); });
        Variant bars;
        if (resumeNext(s, [&] { bars = oueMyExplorer_.get(u"CommandBars"); })) {
            subRemoveCommandBar(s, bars);
        }
    }
    s.err.clear();
}

}  // namespace hb
