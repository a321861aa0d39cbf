#pragma once
#include <cstdint>
// Texts and names that several modules share.
#include "common/Str.h"

namespace hb {

// Caption of every message box, name of the add-in's command bar.
inline constexpr char16_t kProductCaption[] = u"Hourbook for Outlook Addin v4";
inline constexpr char16_t kFriendlyName[] = u"Hourbook for Outlook v4";
inline constexpr char16_t kRegistryAppName[] = u"Hourbook for Outlook";
inline constexpr char16_t kSettingsSubject[] = u"Outlook Hourbook 3 Personal Settings";
inline constexpr char16_t kRecurrenceExceptionClass[] =
    u"IPM.OLE.CLASS.{00061055-0000-0000-C000-000000000046}";
inline constexpr char16_t kPaneProgId[] = u"HBAddin.pane";
// The add-in's ProgID, under which Office lists it in COMAddIns.
inline constexpr char16_t kAddinProgId[] = u"HBAddin.Connect";
inline constexpr char16_t kCrLf[] = u"\r\n";

// Outlook's error for an item or folder that does not exist (MAPI_E_NOT_FOUND).
inline constexpr std::int32_t kOutlookNotFound = -2147221233;

// The vendor's addresses (fictional, of the product's own domain).
inline constexpr char16_t kSupportEmail[] = u"support@hourbook.invalid";
inline constexpr char16_t kVendorWebAddress[] = u"https://www.hourbook.invalid/";

}  // namespace hb
