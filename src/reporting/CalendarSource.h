#pragma once
// Where calendar entries come from. OutlookCalendar reads the default
// calendar through the automation seam; tests may give entries of their own.
#include <vector>

#include "reporting/ReportTypes.h"

namespace hb::reporting {

class CalendarSource {
  public:
    virtual ~CalendarSource() = default;
    // Every entry that overlaps the period (any part of it on one of its
    // days), occurrences of recurring series expanded, each once; the
    // settings appointment of 1 January 2050 is never one of them.
    // Raises AutomationError when Outlook fails.
    virtual std::vector<CalendarEntry> read(const Period& period) = 0;
};

}  // namespace hb::reporting
