#pragma once
// Helpers that reach Outlook: find or start it, its major version, the
// current user's name, the list separator of the user's locale.
#include "common/Session.h"

namespace hb {

void fncStartOutlook(Session& s, std::int16_t& folder) noexcept;
std::int16_t fncOutlookVersion(Session& s);  // raises for a version text without "."
std::int16_t fncMajorFromVersion(Str& version);
Str fncGetUserName(Session& s) noexcept;
void subGetSafeMailboxName(Session& s) noexcept;
void subGetWindowsUser(Session& s) noexcept;
Str fncGetListSeparator(Session& s);

}  // namespace hb
