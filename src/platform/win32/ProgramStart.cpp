#include "platform/win32/ProgramStart.h"

#include <windows.h>
// windows.h first: shellapi.h relies on its types.
#include <shellapi.h>

#include "common/DateTime.h"

namespace hb {

std::vector<Str> programArguments() {
    int argc = 0;
    LPWSTR* argv = CommandLineToArgvW(GetCommandLineW(), &argc);
    std::vector<Str> args;
    for (int i = 1; argv && i < argc; ++i)
        args.emplace_back(reinterpret_cast<const char16_t*>(argv[i]));
    LocalFree(argv);
    return args;
}

std::int32_t localToday() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return static_cast<std::int32_t>(dt::serial(now.wYear, now.wMonth, now.wDay));
}

int userFirstWeekday() {
    wchar_t text[4] = {};
    if (GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_IFIRSTDAYOFWEEK, text, 4) == 0) return 0;
    const int day = text[0] - L'0';
    return day >= 0 && day <= 6 ? day : 0;
}

}  // namespace hb
