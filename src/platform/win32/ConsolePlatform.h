#pragma once
// The command-line forms of the programs beside the add-in (the settings
// and report programs) are GUI programs that show no window: what they have
// to say goes to the standard error they were given.
#include "platform/win32/Win32Platform.h"

namespace hb {

// One line (CR LF added) on the program's standard error: the handle it was
// started with (a file or a pipe, UTF-8), else the console of the program
// that started it (attached, as text of the console's own). False when
// there is neither.
bool writeErrorLine(const Str& text);

// Message boxes become lines on standard error, answered No where there is
// a No button, else OK: an error report cannot wait for a click nobody
// sees.
class ConsolePlatform : public Win32Platform {
  public:
    std::int32_t messageBox(const Str& text, const Str& caption, std::uint32_t flags) override;
};

}  // namespace hb
