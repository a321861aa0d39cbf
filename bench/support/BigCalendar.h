#pragma once
// A large calendar for the report's benchmarks: 100,000 appointments in ten
// years (2017-2026), of them about 6,000 occurrences of 80 recurring series:
// singles spread evenly in working hours (every tenth all-day, some crossing
// midnight), weekly meetings with an exception and a deleted occurrence
// each, and daily stand-ups on working days. The native benchmark reads it
// in process; the Windows one serves it across the process boundary.
#include "sim/Outlook.h"

namespace bench {

void furnishBigCalendar(sim::Outlook& outlook);

}  // namespace bench
