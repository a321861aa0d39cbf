#pragma once
// The two error-handling shapes of the add-in's procedures:
//  - trap: run the body; on an error hand it to the error reporter with the
//    procedure's literal name and leave the procedure;
//  - resumeNext: run one statement; on an error note it in Session::err and
//    go on with the next statement.
// Neither lets an exception escape.
#include <exception>
#include <optional>
#include <type_traits>

#include "common/AutomationError.h"
#include "common/Session.h"

namespace hb {

// Defined by the diagnostics module.
void subErrorHandler(Session& s, const Str& description, std::int32_t number, std::int32_t line,
                     const Str& procedure) noexcept;

// Maps any exception to an automation error number and description.
void describeCurrentException(std::int32_t& number, Str& description) noexcept;

// Runs body; an error is reported under procedure and swallowed. Returns
// true when the body ran to its end.
template <class F>
bool trap(Session& s, const Str& procedure, F&& body) noexcept {
    try {
        body();
        return true;
    } catch (...) {
        std::int32_t number = 0;
        Str description;
        describeCurrentException(number, description);
        subErrorHandler(s, description, number, 0, procedure);
        return false;
    }
}

// Runs one statement with errors ignored; a failure is noted in s.err (as
// the run time's Err object would hold it). Returns true when it succeeded.
template <class F>
bool resumeNext(Session& s, F&& statement) noexcept {
    try {
        statement();
        return true;
    } catch (...) {
        describeCurrentException(s.err.number, s.err.description);
        return false;
    }
}

// As resumeNext, for an expression: its value, or nullopt after an error.
template <class F>
auto tryGet(Session& s, F&& expression) noexcept -> std::optional<std::invoke_result_t<F>> {
    try {
        return expression();
    } catch (...) {
        describeCurrentException(s.err.number, s.err.description);
        return std::nullopt;
    }
}

}  // namespace hb
