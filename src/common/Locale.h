#pragma once
// The regional settings that the run-time conversions take their separators
// and formats from. Default: English (United States).
#include "common/Str.h"

namespace hb {

struct Locale {
    Str decimalSeparator = u".";
    Str thousandSeparator = u",";
    Str listSeparator = u",";
    // Short date and long time patterns in the Windows picture syntax
    // (d, dd, M, MM, yy, yyyy, h, hh, H, HH, m, mm, s, ss, t, tt).
    Str shortDate = u"M/d/yyyy";
    Str longTime = u"h:mm:ss tt";
    Str amDesignator = u"AM";
    Str pmDesignator = u"PM";

    static const Locale& enUS();
    // The locale the conversions use when none is given, like the run
    // time's thread locale. Starts as enUS(); the session sets the user's.
    static const Locale& current();
    static void setCurrent(const Locale& locale);
};

}  // namespace hb
