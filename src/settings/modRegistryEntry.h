#pragma once
// One REG_SZ value per settings key below
// HKEY_CURRENT_USER\Software\Brindlewood\<application>\<section>, where the
// application name is fixed to "Hourbook for Outlook". Errors are raised as
// AutomationError in two ranges above the interface error base: 1000 + n
// for an empty name, 2000 + the registry's result code for a failed call.
#include <cstdint>
#include <optional>

#include "common/Session.h"

namespace hb {

namespace regerr {
// The interface error base 0x80040000 as a signed 32-bit number.
constexpr std::int32_t kBase = static_cast<std::int32_t>(0x80040000u);
constexpr std::int32_t kAppNameEmpty = kBase + 1000;  // "AppName may not be empty"
constexpr std::int32_t kSectionEmpty = kBase + 1001;  // "Section may not be empty"
constexpr std::int32_t kKeyEmpty = kBase + 1002;      // "Key may not be empty"
constexpr std::int32_t kRegistry = kBase + 2000;      // + the registry result code
}  // namespace regerr

// Writes one value (the key is created on the first write).
void SaveSettingString(Platform& p, const Str& strSection, const Str& strKey, const Str& strValue);
// Reads one value; a missing key or value gives the default.
Str GetSettingString(Platform& p, const Str& strSection, const Str& strKey, const Str& strDefault);

// The section's last write time: changes whenever any program sets or
// deletes one of its values. Nothing when the section does not exist or
// cannot be read; never raises.
std::optional<std::uint64_t> GetSectionWriteTime(Platform& p, const Str& strSection) noexcept;

inline void SaveSettingString(Session& s, const Str& strSection, const Str& strKey,
                              const Str& strValue) {
    SaveSettingString(s.platform, strSection, strKey, strValue);
}
inline Str GetSettingString(Session& s, const Str& strSection, const Str& strKey,
                            const Str& strDefault) {
    return GetSettingString(s.platform, strSection, strKey, strDefault);
}

}  // namespace hb
