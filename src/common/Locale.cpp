#include "common/Locale.h"

namespace hb {

namespace {
// A pointer, not an object: a thread_local object with a destructor keeps
// the module that holds it loaded until its thread ends (the C++ run time
// pins the module for the destructor), and the add-in's DLL must unload when
// COM frees it. The one copy a thread sets is left to the process's end.
thread_local Locale* t_current = nullptr;
}  // namespace

const Locale& Locale::enUS() {
    static const Locale locale{};
    return locale;
}

const Locale& Locale::current() {
    return t_current ? *t_current : enUS();
}

void Locale::setCurrent(const Locale& locale) {
    if (t_current)
        *t_current = locale;
    else
        t_current = new Locale(locale);
}

}  // namespace hb
