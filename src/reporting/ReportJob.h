#pragma once
// The whole road from the calendar to a report: read the period's entries,
// make the time records by the settings' rules, store them (replacing the
// user's records of that period), read the period back and aggregate it.
#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "common/Session.h"
#include "reporting/CalendarSource.h"
#include "reporting/RecordStore.h"

namespace hb::reporting {

// The personal settings' rules for time records.
struct RecordRules {
    bool filterEvents = false;     // leave out all-day events
    bool filterPrivate = false;    // leave out private appointments
    bool filterRecurring = false;  // leave out occurrences of recurring series
    bool convert24 = false;        // an all-day (fully covered) day counts convert24Seconds
    std::int64_t convert24Seconds = 8 * 3600;
    bool removeLunch = false;  // removeLunchSeconds come off each worked day
    std::int64_t removeLunchSeconds = 45 * 60;
    Currency personalRate;
};

// The rules of the session's personal settings (s.oPersonalSettings).
RecordRules rulesFromSettings(const Session& s);

// Writes the local cube: the records just stored for the user's period,
// into the cube folder, with the lists' captions. Raises StoreError.
using LocalCubeWriter = std::function<void(const Str& folder, const Str& user, const Period& period,
                                           const std::vector<TimeRecord>& records,
                                           const std::array<Str, kReportLists>& captions)>;

// Runs the report for the session's user (s.strCurrentUser). The billing
// values are read from each entry's categories by the add-in's markings
// code, with the session's metadata lists and list separator. Raises
// AutomationError (Outlook) or StoreError (the database); a failure leaves
// the stored records as they were. With "create local cube" on
// (blnCreateLocalCube) the stored records also go to `localCube`, with the
// cube folder (fncGetLocalCubePath), after the store took them.
Report runReport(Session& s, CalendarSource& calendar, RecordStore& store,
                 const ReportOptions& options, const LocalCubeWriter& localCube = {});

}  // namespace hb::reporting
