#include "platform/win32/ConsolePlatform.h"

#include <windows.h>

#include <string>

namespace hb {

namespace {

// The handle lines go to, looked up once: a program started from a console
// with nothing redirected has no standard error of its own and writes to
// the console it attaches to.
HANDLE errorHandle() {
    static const HANDLE handle = [] {
        HANDLE h = GetStdHandle(STD_ERROR_HANDLE);
        if ((h == nullptr || h == INVALID_HANDLE_VALUE) && AttachConsole(ATTACH_PARENT_PROCESS))
            h = CreateFileW(L"CONOUT$", GENERIC_WRITE, FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                            nullptr);
        return h;
    }();
    return handle;
}

}  // namespace

bool writeErrorLine(const Str& text) {
    const HANDLE h = errorHandle();
    if (h == nullptr || h == INVALID_HANDLE_VALUE) return false;
    const Str line = text + u"\r\n";
    DWORD written = 0;
    if (GetFileType(h) == FILE_TYPE_CHAR &&
        WriteConsoleW(h, line.c_str(), static_cast<DWORD>(line.size()), &written, nullptr))
        return true;
    const std::string bytes = toUtf8(line);
    return WriteFile(h, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) != 0;
}

std::int32_t ConsolePlatform::messageBox(const Str& text, const Str&, std::uint32_t flags) {
    writeErrorLine(text);
    return (flags & win::MbYesNo) ? win::IdNo : win::IdOk;
}

}  // namespace hb
