#pragma once
// The user's special folders.
#include <cstdint>

#include "common/Session.h"

namespace hb {

// SHGetFolderPath of the folder id (with CSIDL_FLAG_PER_USER_INIT added):
// the path, or an empty text when the system call fails.
Str fncGetSpecialFolder(Session& s, int csidl, std::int32_t flags);
// The documents folder + "\OLAP Cubes" (created when missing and create is
// True). Raises 429 when its own file-system object cannot be created.
Str fncGetLocalCubePath(Session& s, bool create);
// The documents folder + "\My OLAP", likewise.
Str fncGetLocalOLAPPath(Session& s, bool create);

}  // namespace hb
