#pragma once
// The registration of HBAddin.dll: the designer and pane classes with their
// ProgIDs, the type library and the pane's interface, in the machine's
// classes (regsvr32) or the user's (regsvr32 /n /i:user), and Outlook's
// add-in key in the same hive: the machine's, which loads the add-in for
// every user, or the user's. Unregistering removes what registering wrote
// and nothing else.
#include <windows.h>

namespace hb::win {

enum class RegistrationScope { Machine, User };

HRESULT registerServer(RegistrationScope scope) noexcept;
HRESULT unregisterServer(RegistrationScope scope) noexcept;

// The ProgIDs and the add-in key.
inline constexpr wchar_t kDesignerProgId[] = L"HBAddin.Connect";
inline constexpr wchar_t kPaneProgIdW[] = L"HBAddin.pane";
inline constexpr wchar_t kOutlookAddinsKey[] = L"Software\\Microsoft\\Office\\Outlook\\Addins";

}  // namespace hb::win
