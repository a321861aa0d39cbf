#include "addin/OHBAddinDesigner.h"

#include "addin/CalendarService.h"
#include "addin/cCalendarReactions.h"
#include "common/ErrorTrap.h"
#include "explorer/cRibbon.h"

namespace hb {

namespace {

// ext_ConnectMode: the host connects the add-in while it runs already.
constexpr std::int32_t kConnectAfterStartup = 0;

// The run time converts numbers and dates to and from text in the user's
// regional settings, as on Outlook's thread.
void useUserLocale(Platform& platform) noexcept {
    try {
        Locale::setCurrent(platform.userLocale());
    } catch (...) {
    }
}

}  // namespace

OHBAddinDesigner::OHBAddinDesigner(Platform& platform)
    : owned_(std::make_unique<Session>(platform)), session_(owned_.get()) {
    useUserLocale(platform);
}

OHBAddinDesigner::OHBAddinDesigner(Session& session) : session_(&session) {
    useUserLocale(session.platform);
}

OHBAddinDesigner::~OHBAddinDesigner() {
    AddinInstance_Terminate();
}

// The report program reads the calendar through the add-in when it can
// (addin/CalendarService.h); without it the program reads the calendar
// itself, only slower, so a refusal is no error of the add-in's.
void OHBAddinDesigner::offerCalendar(const Variant& addInInst) noexcept {
    try {
        withdrawCalendar();
        // A host may connect without an add-in entry (Nothing).
        const ObjectPtr entry = addInInst.isObject() ? addInInst.toObject() : nullptr;
        if (!entry) return;
        calendarService_ = std::make_shared<CalendarService>(*session_);
        entry->put(u"Object", Variant(ObjectPtr(calendarService_)));
    } catch (...) {
        withdrawCalendar();
    }
}

void OHBAddinDesigner::withdrawCalendar() noexcept {
    if (calendarService_) calendarService_->detach();
    calendarService_.reset();
}

void OHBAddinDesigner::AddinInstance_OnBeginShutdown(Args& /*custom*/) noexcept {
    subCloseDown(*session_);
}

void OHBAddinDesigner::AddinInstance_OnConnection(const Variant& application,
                                                  std::int32_t connectMode,
                                                  const Variant& addInInst, Args& /*custom*/) {
    Session& s = *session_;
    const std::shared_ptr<cCalendarReactions> reactions = std::make_shared<cCalendarReactions>(s);
    s.oCalendarReactions = reactions;
    // Handing over the application hooks its events; an object that is no
    // Outlook Application fails here and the host hears of it.
    reactions->setOuaMyOutlook(application);
    s.blnConnected = true;
    // Loaded into a running Outlook (the COM Add-ins dialog, or enabled again
    // from the disabled items): no Startup event follows, so the session
    // starts now, on the windows already open. Its errors are its own.
    if (connectMode == kConnectAfterStartup) reactions->StartAfterStartup();
    offerCalendar(addInInst);
}

void OHBAddinDesigner::AddinInstance_OnDisconnection(std::int32_t /*removeMode*/,
                                                     Args& /*custom*/) noexcept {
    withdrawCalendar();
    subCloseDown(*session_);
}

void OHBAddinDesigner::AddinInstance_Terminate() noexcept {
    withdrawCalendar();
    subCloseDown(*session_);
}

Variant OHBAddinDesigner::ICTPFactory_CreateCTP(const Str& /*progId*/, const Str& /*title*/,
                                                const Variant& /*parentWindow*/) noexcept {
    return Variant::nothing();
}

void OHBAddinDesigner::ICustomTaskPaneConsumer_CTPFactoryAvailable(
    const Variant& factory) noexcept {
    try {
        session_->oCTPFactory = factory;
        // A session started after Outlook's start-up gives its appointment
        // windows their panes once the factory is there.
        if (const std::shared_ptr<cCalendarReactions> reactions = session_->oCalendarReactions) {
            reactions->AddPendingInspectors();
        }
    } catch (...) {
    }
}

Str OHBAddinDesigner::IRibbonExtensibility_GetCustomUI(const Str& ribbonId) noexcept {
    try {
        return fncRibbon(*session_).GetCustomUI(ribbonId);
    } catch (...) {
        return Str();
    }
}

ObjectPtr OHBAddinDesigner::ribbonCallbacks() noexcept {
    try {
        return makeRibbonDispatch(*session_);
    } catch (...) {
        return nullptr;
    }
}

}  // namespace hb
