#pragma once
// Path helpers, the one shared file-system object with its
// self-repair, and the launching of the companion programs and links.
#include <vector>

#include "common/Session.h"

namespace hb {

// The text without one trailing "/" or "\" (only the last character is
// examined; one character is removed at most).
Str fncNoTrailingSlash(StrView path);

// Makes sure the shared file-system object exists (Session::blnFSAvailable).
// Creation failing even after the one repair of the session is reported
// under "subSetupFS".
void subSetupFS(Session& s) noexcept;

// The shared file-system object's members as the settings and the
// toolbar's commands use them.
// Without the object (subSetupFS failed) they raise 91, as a call on
// Nothing would.
bool fsFileExists(Session& s, const Str& path);
bool fsFolderExists(Session& s, const Str& path);
// OpenTextFile(path, ForReading, no creation, system default).ReadAll;
// a missing or unreadable file raises 53 "File not found".
Str fsReadAll(Session& s, const Str& path);

// Starts a program of the add-in's folder with the given arguments (each
// quoted as the command line needs) in the given folder as its working
// folder, or hands a link (text beginning with HTTP or MAIL, any case) to the
// shell. Errors are reported under "modFileHandling.subExecute".
void subExecute(Session& s, const Str& program, const std::vector<Str>& arguments,
                const Str& folder) noexcept;

// The text with every "'" removed.
Str fncRemoveQuotes(StrView text);

}  // namespace hb
