#include "settings/modRegistryEntry.h"

#include <algorithm>
#include <optional>

#include "common/Constants.h"
#include "common/Text.h"

namespace hb {

namespace {

// The checks both operations make, in the order application name, section,
// key, and the key path.
Str sectionPath(const Str& strSection) {
    Str appName = kRegistryAppName;  // the host's product name would stand in for an empty one
    if (appName.empty()) appName = u"Hourbook for Outlook";
    const Str app = text::trim(appName);
    const Str section = text::trim(strSection);
    if (app.empty()) raise(regerr::kAppNameEmpty, u"AppName may not be empty");
    if (section.empty()) raise(regerr::kSectionEmpty, u"Section may not be empty");
    return u"Software\\Brindlewood\\" + app + u"\\" + section;
}

Str checkedPath(const Str& strSection, const Str& strKey) {
    Str path = sectionPath(strSection);
    if (text::trim(strKey).empty()) raise(regerr::kKeyEmpty, u"Key may not be empty");
    return path;
}

}  // namespace

void SaveSettingString(Platform& p, const Str& strSection, const Str& strKey, const Str& strValue) {
    const Str path = checkedPath(strSection, strKey);
    const Str key = text::trim(strKey);

    RegKey handle = 0;
    std::optional<AutomationError> pending;
    const std::int32_t created = p.regCreateKey(path, handle);
    if (created != win::ErrorSuccess) {
        pending.emplace(regerr::kRegistry + created, u"Could not open/create registry section");
    } else {
        // REG_SZ. The Windows platform stores the text as UTF-16 with its
        // terminating zero counted in the data size, so that every reader
        // (this add-in, the settings program, regedit) gets the text back
        // whole.
        const std::int32_t set = p.regSetString(handle, key, strValue);
        if (set != win::ErrorSuccess) {
            pending.emplace(regerr::kRegistry + set, u"Could not set key value");
        }
    }
    // In every case close the key, ignoring errors of the close.
    try {
        if (created == win::ErrorSuccess) p.regCloseKey(handle);
    } catch (...) {
    }
    if (pending) throw *pending;
}

Str GetSettingString(Platform& p, const Str& strSection, const Str& strKey, const Str& strDefault) {
    const Str path = checkedPath(strSection, strKey);
    const Str key = text::trim(strKey);

    RegKey handle = 0;
    const std::int32_t opened = p.regOpenKey(path, handle);
    if (opened == win::ErrorFileNotFound) return strDefault;
    if (opened != win::ErrorSuccess) {
        raise(regerr::kRegistry + opened, u"Could not open registry section");
    }

    Str result;
    std::optional<AutomationError> pending;
    RegValue value;
    const std::int32_t queried = p.regQueryValue(handle, key, value);
    if (queried != win::ErrorSuccess) {
        result = strDefault;  // the value does not exist
    } else if (value.type != win::RegSz) {
        // The last registry result is 0 at this point.
        pending.emplace(regerr::kRegistry + queried, u"Registry data not a string");
    } else if (value.sizeBytes == 0) {
        result.clear();
    } else {
        // The reported size counts the terminating zero: at most size - 1
        // characters are kept. A written text reads back unchanged (its
        // size counts the zero, in characters or in bytes), an empty stored
        // text reads as empty, not as the default, and a value whose
        // reported size leaves out its zero loses its last character.
        const std::size_t keep = std::min<std::size_t>(value.text.size(), value.sizeBytes - 1);
        result = value.text.substr(0, keep);
    }
    try {
        p.regCloseKey(handle);
    } catch (...) {
    }
    if (pending) throw *pending;
    return result;
}

std::optional<std::uint64_t> GetSectionWriteTime(Platform& p, const Str& strSection) noexcept {
    try {
        RegKey handle = 0;
        if (p.regOpenKey(sectionPath(strSection), handle) != win::ErrorSuccess) return std::nullopt;
        std::uint64_t stamp = 0;
        const std::int32_t read = p.regKeyWriteTime(handle, stamp);
        p.regCloseKey(handle);
        if (read != win::ErrorSuccess) return std::nullopt;
        return stamp;
    } catch (...) {
        return std::nullopt;
    }
}

}  // namespace hb
