#include "settings/modGetDefaultFolders.h"

namespace hb {

namespace {

Str documentsSubfolder(Session& s, const Str& name, bool create) {
    const Str path = fncGetSpecialFolder(s, win::CsidlPersonal, 0) + name;
    // With a file-system object of their own.
    if (!s.platform.createComponent(ScriptComponent::FileSystemObject)) raise(429);
    if (!s.platform.folderExists(path) && create) {
        if (!s.platform.createFolder(path)) raise(76, u"Path not found");
    }
    return path;
}

}  // namespace

Str fncGetSpecialFolder(Session& s, int csidl, std::int32_t /*flags*/) {
    // The Windows platform asks SHGetFolderPathW(no owner, csidl |
    // CSIDL_FLAG_PER_USER_INIT, no token, SHGFP_TYPE_CURRENT); the flags
    // argument is not passed on. The text up to its first zero, or an empty
    // text when the call fails.
    std::optional<Str> folder = s.platform.specialFolder(csidl);
    if (!folder) return Str();
    const auto zero = folder->find(u'\0');
    if (zero != Str::npos) folder->resize(zero);
    return *folder;
}

Str fncGetLocalCubePath(Session& s, bool create) {
    return documentsSubfolder(s, u"\\OLAP Cubes", create);
}

Str fncGetLocalOLAPPath(Session& s, bool create) {
    return documentsSubfolder(s, u"\\My OLAP", create);
}

}  // namespace hb
