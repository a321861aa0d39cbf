#pragma once
// The object Outlook creates when it loads the add-in: receives the host's
// connection, shutdown and task pane calls. Owns the session of this loaded
// copy of the add-in.
#include <memory>

#include "common/Object.h"
#include "common/Session.h"

namespace hb {

class CalendarService;

class OHBAddinDesigner {
  public:
    // A designer with a session of its own.
    explicit OHBAddinDesigner(Platform& platform);
    // A designer over a session that outlives it and that every designer of
    // the loaded library shares (the COM server's).
    explicit OHBAddinDesigner(Session& session);
    ~OHBAddinDesigner();  // AddinInstance_Terminate
    OHBAddinDesigner(const OHBAddinDesigner&) = delete;
    OHBAddinDesigner& operator=(const OHBAddinDesigner&) = delete;

    Session& session() { return *session_; }

    void AddinInstance_OnBeginShutdown(Args& custom) noexcept;
    // No trap: a failure is reported to the host (raises).
    void AddinInstance_OnConnection(const Variant& application, std::int32_t connectMode,
                                    const Variant& addInInst, Args& custom);
    void AddinInstance_OnDisconnection(std::int32_t removeMode, Args& custom) noexcept;
    void AddinInstance_Terminate() noexcept;
    // Does nothing and returns no pane.
    Variant ICTPFactory_CreateCTP(const Str& progId, const Str& title,
                                  const Variant& parentWindow) noexcept;
    void ICustomTaskPaneConsumer_CTPFactoryAvailable(const Variant& factory) noexcept;
    // Outlook 2010 and later: the ribbon XML of a window kind, and the
    // object whose members Office calls by name for the ribbon's callbacks
    // (GetCustomUI among them).
    Str IRibbonExtensibility_GetCustomUI(const Str& ribbonId) noexcept;
    ObjectPtr ribbonCallbacks() noexcept;

  private:
    void offerCalendar(const Variant& addInInst) noexcept;
    void withdrawCalendar() noexcept;

    std::unique_ptr<Session> owned_;
    Session* session_;
    std::shared_ptr<CalendarService> calendarService_;
};

// The one shutdown clean-up, and the clean-up of closed explorer wrappers.
void subCloseDown(Session& s) noexcept;
void subClearExplorers(Session& s) noexcept;

}  // namespace hb
