#pragma once
// Trace log and the one error reporter of the add-in.
#include "common/Session.h"

namespace hb {

// Remembers the text as the last trace; appends it to the log when tracing is on.
void subTrace(Session& s, const Str& text) noexcept;
Str fncGetLastTrace(const Session& s);
// Declared in common/ErrorTrap.h as well:
void subErrorHandler(Session& s, const Str& description, std::int32_t number, std::int32_t line,
                     const Str& procedure) noexcept;
Str fncGetWindowsVersion(Session& s) noexcept;
Str fncGetAddinVersion(Session& s) noexcept;
void subSendErrorMail(Session& s) noexcept;
void subExitApplication(Session& s) noexcept;

}  // namespace hb
