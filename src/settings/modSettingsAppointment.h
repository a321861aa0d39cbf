#pragma once
// The hidden settings appointment on 1 January 2050 in the default
// calendar (Session::ofCalendar), long texts stored as numbered user
// properties of at most 1000 characters plus a count property, and single
// typed user properties read with a default.
#include <cstdint>

#include "common/Session.h"

namespace hb {

namespace olprop {
constexpr std::int32_t olText = 1;
constexpr std::int32_t olNumber = 3;
}  // namespace olprop

// The expected types of fncGetProperty (the run time's VarType codes).
namespace vbtype {
constexpr std::int16_t vbInteger = 2;
constexpr std::int16_t vbDate = 7;
constexpr std::int16_t vbString = 8;
constexpr std::int16_t vbBoolean = 11;
}  // namespace vbtype

// Day numbers of the settings appointment (1 January 2050, 00:01 to 00:02).
constexpr double kSettingsDay = 54789.0;

// The settings appointment, created when missing; Nothing when it can be
// neither found nor created (errors are ignored throughout). Only a lookup
// that Outlook answers with "not found" counts as missing: when the lookup
// itself fails, Nothing is returned and *blnUnreadable set, and no second
// settings appointment is made beside the one that could not be read.
Variant fncGetSettingsAppointment(Session& s, bool* blnUnreadable = nullptr) noexcept;
// Creates and saves a new settings appointment. Raises on failure.
Variant fncAddSettingsAppointment(Session& s);
// Stores strValue as the long property strName of item (pieces strName0..k
// and strName + "Count" = k); does not save the item. Failures are reported
// with the text "Failed to save " + strName.
void subFixLongProperty(Session& s, const Variant& item, const Str& strValue,
                        const Str& strName) noexcept;
// Reads a long property back (pieces 0..count; a missing count reads piece 0).
Str fncGetLongProperty(Session& s, const Variant& item, const Str& strName) noexcept;
// Reads one user property shaped to intType (2 integer, 7 date, 8 text,
// 11 boolean), or the default shaped likewise when it is missing.
Variant fncGetProperty(Session& s, const Variant& item, const Str& strName, std::int16_t intType,
                       const Variant& varDefault) noexcept;

}  // namespace hb
