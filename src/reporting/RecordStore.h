#pragma once
// Where time records are kept: an SQLite file in the report folder (report
// choice 2) or a shared server database reached through ODBC (choice 3).
// One schema for both, versioned, with migrations.
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "reporting/ReportTypes.h"

namespace hb::reporting {

// Hourly rates that entries of the metadata lists have of their own: by list
// (0-based) and entry name (letter case ignored by the store's lookup).
using RateTable = std::map<std::pair<std::size_t, Str>, Currency>;

// A database failure: the message says what failed, in words for the user
// ("the database file ... is not a database", "cannot reach the server ...").
class StoreError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class RecordStore {
  public:
    virtual ~RecordStore() = default;
    // The schema version the database is at after opening (migrated).
    virtual int schemaVersion() = 0;
    // Replaces the user's records whose day lies in the period by these, in
    // one transaction: running it twice never doubles, an appointment gone
    // from Outlook goes from the database, and a failure leaves the old
    // records as they were. Raises StoreError.
    virtual void replacePeriod(const Str& user, const Period& period,
                               const std::vector<TimeRecord>& records) = 0;
    // The records whose day lies in the period, of one user (empty: of
    // every user), in order of day, start and user.
    virtual std::vector<TimeRecord> load(const Str& user, const Period& period) = 0;
    // The rates entries have of their own.
    virtual RateTable entryRates() = 0;
    // Sets these entries' own rates (others are kept), in one transaction.
    // Raises StoreError; a store that keeps no rates raises it always.
    virtual void putEntryRates(const RateTable& rates);
};

inline void RecordStore::putEntryRates(const RateTable&) {
    throw StoreError("this record store keeps no rates of its own");
}

}  // namespace hb::reporting
