#include "addin/cCalendarReactions.h"

#include "addin/OHBAddinDesigner.h"
#include "addin/modOutlookCode.h"
#include "common/Constants.h"
#include "common/ErrorTrap.h"
#include "diagnostics/modErroHandling.h"
#include "explorer/cExplorerEvents.h"
#include "explorer/cToolBarItem.h"
#include "inspector/cInspectorEvents.h"
#include "languages/modMultiLanguage.h"
#include "metadata/cAppointments.h"
#include "settings/cPersonalSettings.h"

namespace hb {

namespace {

constexpr std::int32_t kFolderCalendar = 9;
constexpr std::int16_t kOutlook2007 = 12;

// Events of one source, handed to the session object while it lives. The
// handler holds the object for its whole run: a shutdown raised from inside
// an event releases the session's reference to it.
template <class H>
std::shared_ptr<EventSink> sinkFor(const std::weak_ptr<cCalendarReactions>& weak, H handler) {
    return std::make_shared<FunctionSink>([weak, handler](const Str& member, Args& args) {
        if (const std::shared_ptr<cCalendarReactions> self = weak.lock()) {
            try {
                handler(*self, member, args);
            } catch (...) {
            }
        }
    });
}

Variant firstArg(const Args& args) {
    return args.empty() ? Variant() : args.front().deref();
}

}  // namespace

cCalendarReactions::cCalendarReactions(Session& s) : s_(s) {}

cCalendarReactions::~cCalendarReactions() {
    try {
        appEvents_.disconnect();
        ouaMyOutlook_ = Variant();
        inspectorsEvents_.disconnect();
        ouisMyInspectors_ = Variant();
        explorersEvents_.disconnect();
        ouesMyExplorers_ = Variant();
        colExplorers.clear();
        colInspectors.clear();
    } catch (...) {
    }
}

void cCalendarReactions::setOuaMyOutlook(const Variant& application) {
    appEvents_.disconnect();
    ouaMyOutlook_ = Variant();
    if (!isSet(application)) {
        (void)application.toObject();  // a value that is no object: 424
        ouaMyOutlook_ = Variant::nothing();
        return;
    }
    EventConnection events = application.obj().subscribe(
        u"ApplicationEvents",
        sinkFor(weak_from_this(), [](cCalendarReactions& self, const Str& member, Args&) {
            if (member == u"Startup") {
                self.ouaMyOutlook_Startup();
            } else if (member == u"Quit") {
                self.ouaMyOutlook_Quit();
            }
        }));
    ouaMyOutlook_ = application;
    appEvents_ = std::move(events);
}

void cCalendarReactions::setOuesMyExplorers(const Variant& explorers) {
    explorersEvents_.disconnect();
    ouesMyExplorers_ = Variant();
    if (!isSet(explorers)) {
        (void)explorers.toObject();
        ouesMyExplorers_ = Variant::nothing();
        return;
    }
    EventConnection events = explorers.obj().subscribe(
        u"ExplorersEvents",
        sinkFor(weak_from_this(), [](cCalendarReactions& self, const Str& member, Args& args) {
            if (member == u"NewExplorer") self.ouesMyExplorers_NewExplorer(firstArg(args));
        }));
    ouesMyExplorers_ = explorers;
    explorersEvents_ = std::move(events);
}

void cCalendarReactions::setOuisMyInspectors(const Variant& inspectors) {
    inspectorsEvents_.disconnect();
    ouisMyInspectors_ = Variant();
    if (!isSet(inspectors)) {
        (void)inspectors.toObject();
        ouisMyInspectors_ = Variant::nothing();
        return;
    }
    EventConnection events = inspectors.obj().subscribe(
        u"InspectorsEvents",
        sinkFor(weak_from_this(), [](cCalendarReactions& self, const Str& member, Args& args) {
            if (member == u"NewInspector") self.ouisMyInspectors_NewInspector(firstArg(args));
        }));
    ouisMyInspectors_ = inspectors;
    inspectorsEvents_ = std::move(events);
}

void cCalendarReactions::ouaMyOutlook_Startup() {
    Session& s = s_;
    trap(s, u"cCalendarReactions.ouaMyOutlook_Startup", [&] {
        s.strListSeparator = fncGetListSeparator(s);

        subTrace(s, u"Creating a new object for holding buttons");
        s.objToolBar = std::make_shared<cToolBarItem>(s);

        LoadLanguages(s, fncGetlocalLanguage(s));

        subTrace(s, u"Setting reference to the default Outlook Calendar");
        s.ofCalendar = ouaMyOutlook_.call(u"GetNamespace", {Variant(u"MAPI")})
                           .call(u"GetDefaultFolder", {Variant(kFolderCalendar)});
        s.strCalendarEntryID = s.ofCalendar.get(u"EntryID").toStr();
        s.strCalendarStoreID = s.ofCalendar.get(u"StoreID").toStr();

        s.strCurrentUser = fncGetUserName(s);

        s.oPersonalSettings = std::make_shared<cPersonalSettings>(s);
        if (s.oPersonalSettings->GetValuesFromSettings()) {
            s.strSettingsValue = s.oPersonalSettings->fncBuildBody();
            if (s.oPersonalSettings->MetaDataLists.empty()) {
                // A first start: let the user set up the lists.
                s.objToolBar->subLaunchSettings(true);
            }
            subTrace(s, Str(u"Setting a reference to the explorers collection ") +
                            (s.oCalendarReactions ? Str(u"cCalendarReactions") : Str(u"Nothing")));
            if (const std::shared_ptr<cCalendarReactions> reactions = s.oCalendarReactions) {
                reactions->setOuesMyExplorers(ouaMyOutlook_.get(u"Explorers"));
                reactions->setOuisMyInspectors(ouaMyOutlook_.get(u"Inspectors"));
                s.oAppointments = std::make_shared<cAppointments>(s);
                reactions->AddExplorer(ouaMyOutlook_.call(u"ActiveExplorer"));
            }
            if (!s.blnConnected) {
                const Variant bar = fncGetToolbar(s, ouaMyOutlook_.call(u"ActiveExplorer"));
                if (!s.objToolBar) raise(err::ObjectVariableNotSet);
                s.objToolBar->setOfbCurrCommandBar(bar);
            }
            // (The add-in has no hidden form to load.)
        } else {
            resumeNext(s, [&] {
                s.platform.messageBox(
                    Str(u"Failed to save settings appointment in current folder") + kCrLf +
                        s.phrases.LNGCHECKPERM + kCrLf + s.err.description,
                    kProductCaption, win::MbOk);
            });
            subCloseDown(s);
        }
    });
}

void cCalendarReactions::ouaMyOutlook_Quit() {
    subCloseDown(s_);
    subExitApplication(s_);
}

void cCalendarReactions::ouesMyExplorers_NewExplorer(const Variant& explorer) {
    trap(s_, u"cCalendarReactions.ouesMyExplorers_NewExplorer", [&] { AddExplorer(explorer); });
}

void cCalendarReactions::AddExplorer(const Variant& explorer) {
    Session& s = s_;
    trap(s, u"cCalendarReactions.AddExplorer", [&] {
        subTrace(s, u"Adding the new explorer to the collection");
        colExplorers.push_back(std::make_shared<cExplorerEvents>(s));
        // The wrapper just added is the collection's last item.
        const std::shared_ptr<cExplorerEvents> last = colExplorers.back();
        last->setOueMyExplorer(explorer);
        explorer.call(u"Activate");
    });
}

void cCalendarReactions::StartAfterStartup() {
    Session& s = s_;
    ouaMyOutlook_Startup();
    // A start-up that failed has closed the session down.
    if (!s.oCalendarReactions || !s.objToolBar || !isSet(ouesMyExplorers_)) return;
    trap(s, u"cCalendarReactions.StartAfterStartup", [&] {
        // The window that has the focus already hears no Activate from the
        // start-up's Activate call: it is set up as that event would.
        if (!colExplorers.empty() && !colExplorers.back()->blnActive &&
            isSet(colExplorers.back()->oueMyExplorer())) {
            colExplorers.back()->oueMyExplorer_Activate();
        }
        const Variant active = ouaMyOutlook_.call(u"ActiveExplorer");
        for (const Variant& explorer : ouesMyExplorers_.obj().enumerate()) {
            if (sameObject(explorer, active)) continue;
            subTrace(s, u"Adding the new explorer to the collection");
            colExplorers.push_back(std::make_shared<cExplorerEvents>(s));
            colExplorers.back()->setOueMyExplorer(explorer);
        }
    });
    // Outlook 2007 and later hand over the task pane factory after the
    // connection: the windows wait for it.
    blnInspectorsPending_ = true;
    if (!s.oCTPFactory.isEmpty() ||
        tryGet(s, [&] { return fncOutlookVersion(s) < kOutlook2007; }).value_or(true)) {
        AddPendingInspectors();
    }
    s.err.clear();
}

void cCalendarReactions::AddPendingInspectors() {
    if (!blnInspectorsPending_) return;
    blnInspectorsPending_ = false;
    AddOpenInspectors();
}

void cCalendarReactions::AddOpenInspectors() {
    Session& s = s_;
    trap(s, u"cCalendarReactions.AddOpenInspectors", [&] {
        if (!isSet(ouisMyInspectors_)) return;
        for (const Variant& inspector : ouisMyInspectors_.obj().enumerate()) {
            ouisMyInspectors_NewInspector(inspector);
        }
    });
}

void cCalendarReactions::ouisMyInspectors_NewInspector(const Variant& inspector) {
    Session& s = s_;
    trap(s, u"cCalendarReactions.ouisMyInspectors_NewInspector", [&] {
        subTrace(s, u"Adding the new inspector object to the collection");
        const Variant item = inspector.get(u"CurrentItem");
        const Str messageClass = item.get(u"MessageClass").toStr();
        const Str storeID = fncItemStoreID(item);
        // Without a connection through the host only the default calendar's
        // store counts.
        if (!s.blnConnected && storeID != s.strCalendarStoreID) return;
        if (!fncIsAppointmentClass(s, messageClass)) return;

        colInspectors.push_back(std::make_shared<cInspectorEvents>(s));
        const std::shared_ptr<cInspectorEvents> last = colInspectors.back();
        last->setOuiMyInspector(inspector);

        if (!s.objToolBar) raise(err::ObjectVariableNotSet);
        if (fncOutlookVersion(s) < kOutlook2007 || !s.blnConnected) {
            s.objToolBar->setOfbCurrCommandBar(fncGetToolbar(s, inspector));
        } else {
            last->subShowItem(*s.objToolBar, item);
            s.objToolBar->subAddCTP(inspector);
        }
    });
}

}  // namespace hb
