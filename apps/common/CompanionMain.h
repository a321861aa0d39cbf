#pragma once
// The entry of a companion program (HBReporting.exe, Cubelens.exe) after its
// command line is parsed: a mistake in the arguments, the help, a run for
// scripts or the window. Whatever goes wrong ends as a line on stderr and
// an exit code, never as an exception out of wWinMain.
#include <exception>

#include "platform/win32/ConsolePlatform.h"
#include "reporting/ReportCommandLine.h"

namespace hb {

// `Parsed` has `command` (an optional with `mode`) and `error`; `run` and
// `window` take the command and return the exit code.
template <class Parsed, class Run, class Window>
int companionMain(const Str& program, const Parsed& parsed, const Str& usage, Run run,
                  Window window) {
    using reporting::ExitCode;
    using reporting::RunMode;
    if (!parsed.command) {
        writeErrorLine(program + u": " + parsed.error);
        writeErrorLine(program + u".exe /? shows the options.");
        return static_cast<int>(ExitCode::BadArguments);
    }
    try {
        switch (parsed.command->mode) {
            case RunMode::Help:
                writeErrorLine(usage);
                return static_cast<int>(ExitCode::Ok);
            case RunMode::Report:
                return run(*parsed.command);
            case RunMode::Window:
                return window(*parsed.command);
        }
    } catch (const std::exception& e) {
        writeErrorLine(program + u" failed: " + fromUtf8(e.what()));
    } catch (...) {
        writeErrorLine(program + u" failed.");
    }
    return static_cast<int>(ExitCode::Failed);
}

}  // namespace hb
