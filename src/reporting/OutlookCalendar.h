#pragma once
// Reads the default calendar of an Outlook (its Application, through the
// automation seam) into calendar entries: the period's appointments, the
// occurrences of recurring series expanded, as few calls per appointment as
// Outlook allows.
#include "common/Locale.h"
#include "reporting/CalendarSource.h"

namespace hb::reporting {

class OutlookCalendar : public CalendarSource {
  public:
    // `locale`: the user's regional settings, which Outlook reads the dates
    // of a filter with (the report program passes the platform's).
    explicit OutlookCalendar(Variant application, Locale locale = Locale::current());

    std::vector<CalendarEntry> read(const Period& period) override;

    // The Restrict filter of a period: a start before the midnight after its
    // last day and an end after the midnight that begins its first day,
    // both in the user's short date and a time without seconds.
    static Str restriction(const Period& period, const Locale& locale);
    // A date as Outlook reads it in a filter: short date, time without
    // seconds ("11/30/2026 11:59 PM", "30.11.2026 23:59").
    static Str filterDate(Date value, const Locale& locale);

  private:
    Variant application_;
    Locale locale_;
};

}  // namespace hb::reporting
