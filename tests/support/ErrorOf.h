#pragma once
// The automation error a call raises, for tests that compare its number
// (and description) with what the run time or Outlook would raise.
#include <cstdint>
#include <optional>

#include "common/AutomationError.h"

namespace hb {

// 0 when f raises nothing.
template <class F>
std::int32_t errorOf(F&& f) {
    try {
        f();
    } catch (const AutomationError& e) {
        return e.number();
    }
    return 0;
}

namespace test {

// The automation error `f` raises, if any.
template <class F>
std::optional<AutomationError> raisedBy(F&& f) {
    try {
        f();
    } catch (const AutomationError& e) {
        return e;
    }
    return std::nullopt;
}

}  // namespace test

}  // namespace hb
