#pragma once
// What the add-in's companion programs (HBReporting.exe, Cubelens.exe) read
// when they start: their arguments, today's local date and the user's first
// day of the week.
#include <cstdint>
#include <vector>

#include "common/Str.h"

namespace hb {

// The program's arguments after its own name, as CommandLineToArgvW splits
// the command line.
std::vector<Str> programArguments();
// Today's local date as a day number (days since 30 December 1899).
std::int32_t localToday();
// The user's first day of the week: 0 Monday ... 6 Sunday, as Windows
// numbers LOCALE_IFIRSTDAYOFWEEK.
int userFirstWeekday();

}  // namespace hb
