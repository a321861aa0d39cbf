#pragma once
// The regional settings that the run-time conversions take their separators,
// symbols, formats and month names from. Default: English (United States).
#include <array>

#include "common/Str.h"

namespace hb {

struct Locale {
    Str decimalSeparator = u".";
    Str thousandSeparator = u",";
    Str listSeparator = u",";
    // Amounts: the currency symbol and the separators of monetary amounts,
    // which the number reading accepts besides the plain ones (empty: the
    // same as those).
    Str currencySymbol = u"$";
    Str currencyDecimalSeparator;
    Str currencyThousandSeparator;
    // Short date and long time patterns in the Windows picture syntax
    // (d, dd, M, MM, yy, yyyy, h, hh, H, HH, m, mm, s, ss, t, tt).
    Str shortDate = u"M/d/yyyy";
    Str longTime = u"h:mm:ss tt";
    Str amDesignator = u"AM";
    Str pmDesignator = u"PM";
    // Month names in the user's language, January first.
    std::array<Str, 12> monthNames = {u"January",   u"February", u"March",    u"April",
                                      u"May",       u"June",     u"July",     u"August",
                                      u"September", u"October",  u"November", u"December"};
    std::array<Str, 12> abbreviatedMonthNames = {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun",
                                                 u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"};

    static const Locale& enUS();
    // The locale the conversions use when none is given, like the run
    // time's thread locale. Starts as enUS(); the session sets the user's.
    static const Locale& current();
    static void setCurrent(const Locale& locale);
};

}  // namespace hb
