#pragma once
// The number of the automation error a call raises, for tests that compare
// it with the number the run time would raise.
#include <cstdint>

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

}  // namespace hb
