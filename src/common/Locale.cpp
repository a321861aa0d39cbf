#include "common/Locale.h"

namespace hb {

namespace {
thread_local Locale t_current{};
}  // namespace

const Locale& Locale::enUS() {
    static const Locale locale{};
    return locale;
}

const Locale& Locale::current() {
    return t_current;
}

void Locale::setCurrent(const Locale& locale) {
    t_current = locale;
}

}  // namespace hb
