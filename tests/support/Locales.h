#pragma once
// Regional settings that tests use besides en-US (hb::Locale's default).
#include "common/Locale.h"

namespace hb::test {

// German (Germany): comma decimals, semicolon lists, "dd.MM.yyyy" dates and
// a 24-hour clock.
inline Locale germanLocale() {
    Locale l;
    l.decimalSeparator = u",";
    l.thousandSeparator = u".";
    l.listSeparator = u";";
    l.shortDate = u"dd.MM.yyyy";
    l.longTime = u"HH:mm:ss";
    return l;
}

}  // namespace hb::test
