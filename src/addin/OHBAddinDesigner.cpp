#include "addin/OHBAddinDesigner.h"

#include "addin/cCalendarReactions.h"
#include "common/ErrorTrap.h"

namespace hb {

namespace {

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

void OHBAddinDesigner::AddinInstance_OnBeginShutdown(Args& /*custom*/) noexcept {
    subCloseDown(*session_);
}

void OHBAddinDesigner::AddinInstance_OnConnection(const Variant& application,
                                                  std::int32_t /*connectMode*/,
                                                  const Variant& /*addInInst*/, Args& /*custom*/) {
    Session& s = *session_;
    s.oCalendarReactions = std::make_shared<cCalendarReactions>(s);
    // Handing over the application hooks its events; an object that is no
    // Outlook Application fails here and the host hears of it.
    s.oCalendarReactions->setOuaMyOutlook(application);
    s.blnConnected = true;
}

void OHBAddinDesigner::AddinInstance_OnDisconnection(std::int32_t /*removeMode*/,
                                                     Args& /*custom*/) noexcept {
    subCloseDown(*session_);
}

void OHBAddinDesigner::AddinInstance_Terminate() noexcept {
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
    } catch (...) {
    }
}

}  // namespace hb
