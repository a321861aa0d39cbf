#pragma once
// The state of one loaded copy of the add-in: what the original keeps in
// module-level variables lives here, once per session, and every module
// reaches it through the Session it is given.
#include <cstdint>
#include <memory>
#include <vector>

#include "common/Variant.h"
#include "languages/Phrases.h"
#include "platform/Platform.h"

namespace hb {

class cCalendarReactions;
class cToolBarItem;
class cRibbon;
class cPersonalSettings;
class cAppointments;
class cPhrase;
class PhraseCollection;

// The run time's Err object: the pending error after a statement that ran
// with errors ignored.
struct ErrState {
    std::int32_t number = 0;
    Str description;
    void clear() {
        number = 0;
        description.clear();
    }
    explicit operator bool() const { return number != 0; }
};

// Diagnostics state (trace log and error reporter).
struct DiagnosticsState {
#ifdef HB_TRACE
    bool blnTrace = true;  // built with -DHB_TRACE=ON: every trace text goes to the log
#else
    bool blnTrace = false;
#endif
    bool blnErrorOccurred = false;
    bool blnReported = false;
    Str strLastTrace;
    Str strErrorReport;
    std::uint32_t lngOSResult = 0, lngOSMajor = 0, lngOSPlatform = 0, lngOSMinor = 0;
};

struct Session {
    explicit Session(Platform& p) : platform(p) {}
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    Platform& platform;
    ErrState err;
    DiagnosticsState diag;

    // Outlook
    Variant olApp;        // Outlook Application
    Variant onsMAPI;      // the "MAPI" NameSpace
    Variant ofCalendar;   // the default calendar folder
    Variant oCTPFactory;  // the task pane factory (Office 2007 and later)
    Str strCalendarEntryID;
    Str strCalendarStoreID;
    Str strCurrentUser;
    Str strListSeparator;
    std::int16_t intOutlookVersion = 0;
    std::int16_t intInspectorCount = 0;

    // Session objects
    std::shared_ptr<cCalendarReactions> oCalendarReactions;
    std::shared_ptr<cToolBarItem> objToolBar;
    // The calendar's ribbon group (Outlook 2010 and later): made when Office
    // asks for the ribbon, which can be before the session starts.
    std::shared_ptr<cRibbon> objRibbon;
    std::shared_ptr<cPersonalSettings> oPersonalSettings;
    std::shared_ptr<cAppointments> oAppointments;
    Str strSettingsValue;

    // Flags
    bool blnConnected = false;
    bool blnClosingDown = false;
    bool blnSettingsChanged = false;
    bool blnRemoveToolbar = false;  // session's remove-toolbar flag, never set
    // Office asked for the Explorer's ribbon (Outlook 2010 and later): the
    // billing controls are the ribbon group's, and no command bar is added
    // to the calendar windows.
    bool blnRibbon = false;

    // Languages
    Phrases phrases;
    std::shared_ptr<PhraseCollection> colPhrases;

    // Files and scripting components
    bool blnFSAvailable = false;       // the shared file-system object exists
    bool blnFSRepairTried = false;     // the scripting runtime repair ran once
    bool blnShellRepairTried = false;  // the Windows Script Host repair ran once
};

}  // namespace hb
