#pragma once
// The default calendar as the report program reads it: through the add-in
// inside Outlook's process when Outlook has it loaded (one call across the
// process boundary for a whole period, addin/CalendarService.h), else call
// by call through the object model (OutlookCalendar). An add-in that is not
// loaded, offers nothing, or fails its call leaves the reading to
// OutlookCalendar, which then reads every later period too.
#include <memory>

#include "common/Locale.h"
#include "reporting/OutlookCalendar.h"

namespace hb::reporting {

class AddinCalendar : public CalendarSource {
  public:
    AddinCalendar(Variant application, Locale locale);

    std::vector<CalendarEntry> read(const Period& period) override;

    // Whether the last read came through the add-in.
    bool lastReadThroughAddin() const { return throughAddin_; }

  private:
    Variant service();

    Variant application_;
    OutlookCalendar direct_;
    bool addinFailed_ = false;
    bool throughAddin_ = false;
};

}  // namespace hb::reporting
