#include "reporting/ReportSession.h"

#include <memory>

#include "addin/modOutlookCode.h"
#include "common/AutomationError.h"
#include "languages/modMultiLanguage.h"
#include "settings/cPersonalSettings.h"

namespace hb::reporting {

namespace {

constexpr char16_t kOutlookProgId[] = u"Outlook.Application";
constexpr std::int32_t kCantCreateObject = 429;
constexpr std::int32_t kFolderCalendar = 9;

// A platform's answer that holds an object (Win32 raises 429 for none; an
// answer of Nothing counts the same).
bool holdsObject(const Variant& v) {
    return v.isObject() && !v.isNothing();
}

}  // namespace

Variant reachOutlook(Platform& platform) {
    Variant app;
    try {
        app = platform.getActiveObject(kOutlookProgId);
    } catch (const AutomationError&) {
        // None running: start one, as CreateObject does.
    }
    if (!holdsObject(app)) app = platform.createObject(kOutlookProgId);
    if (!holdsObject(app)) raise(kCantCreateObject);
    return app;
}

void prepareReportSession(Session& s, const Variant& application) {
    s.olApp = application;
    s.onsMAPI = application.call(u"GetNamespace", {Variant(u"MAPI")});
    s.ofCalendar = s.onsMAPI.call(u"GetDefaultFolder", {Variant(kFolderCalendar)});
    s.strCalendarEntryID = s.ofCalendar.get(u"EntryID").toStr();
    s.strCalendarStoreID = s.ofCalendar.get(u"StoreID").toStr();
    s.strCurrentUser = fncGetUserName(s);
    s.strListSeparator = fncGetListSeparator(s);
    LoadLanguages(s, fncGetlocalLanguage(s));
    s.oPersonalSettings = std::make_shared<cPersonalSettings>(s);
    s.oPersonalSettings->GetValuesFromSettings();
}

}  // namespace hb::reporting
