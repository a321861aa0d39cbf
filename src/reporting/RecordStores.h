#pragma once
// The record stores the report can keep its records in, and what they share:
// the schema's migration steps, how times and money are kept, the checks a
// period's records pass before anything is written.
//
// Both stores keep one schema, one SQL text that both databases run:
//   schema_version(version)            the schema's version, one row
//   time_records(user_name, entry_id, occurrence_start, day, start_time,
//                end_time, subject, value1, value2, value3, billed, all_day,
//                is_private, recurring, seconds, rounded_seconds, rate, amount)
//       keyed by (user_name, entry_id, occurrence_start, day)
//   entry_rates(list_number, entry_name, rate)
//       list_number 1..3, entry_name unique per list ignoring letter case
// Times (occurrence_start, start_time, end_time) are whole seconds since
// 30 December 1899 00:00 local time, integers: exact, and a key compares
// equal however the same minute was computed. day is the local day number
// (days since 30 December 1899). Money (rate, amount) is integer units of
// 1/10000 (the Currency's own scaled value), so 95.50 is 955000. Flags are
// 0 or 1.
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "reporting/RecordStore.h"

namespace hb::reporting {

// The report data source of the personal settings.
inline constexpr int kReportChoiceFolder = 2;  // an SQLite file in a folder
inline constexpr int kReportChoiceServer = 3;  // an ODBC connection text

// The database file's name in the report folder.
inline constexpr char16_t kSqliteFileName[] = u"Hourbook.sqlite";

// How a store is opened. ReadWrite: to export into, the schema brought up
// to date. ReadOnly: for the statistics, which must never change the
// database: the file is opened read-only (never created, no migration, its
// journal mode left alone), the server only sees SELECTs, and a database
// that is not at the schema's latest version is refused rather than
// migrated. replacePeriod and putEntryRates then raise StoreError.
enum class StoreAccess : std::uint8_t { ReadWrite, ReadOnly };

// Opens the store of a report choice: 2, the SQLite file kSqliteFileName in
// the folder `value` (created when missing; the folder must exist); 3, the
// server database the ODBC connection text `value` names. Raises StoreError
// for any other choice and when the database cannot be opened.
std::unique_ptr<RecordStore> openRecordStore(int choice, const Str& value,
                                             StoreAccess access = StoreAccess::ReadWrite);

// The SQL both stores run: the same text serves SQLite and PostgreSQL
// (bigint and integer columns, lower() for the rates' letter case, '?'
// parameters).
namespace sql {
// The columns of time_records in the order every statement names them.
extern const char* const kRecordColumns;
extern const char* const kDeletePeriod;  // ? user, ? first day, ? last day
extern const char* const kSelectRates;
extern const char* const kUpsertRate;  // ? list number, ? entry name, ? rate
// INSERT INTO time_records of `rows` rows of parameters.
std::string insertRecords(std::size_t rows);
// SELECT kRecordColumns of a period (? first day, ? last day), of one user
// (a third ?) or all, in the report's order.
std::string selectPeriod(bool oneUser);
}  // namespace sql

// One step of the schema: the statements that take a database from the
// version before to `version`. A database is migrated by running, in one
// transaction, every step above its version.
struct Migration {
    int version = 0;
    std::vector<std::string> statements;
};

// The schema's steps (both stores).
const std::vector<Migration>& recordSchema();

// The latest version of a list of steps.
int latestVersion(const std::vector<Migration>& migrations);

// The message of a write to a store opened with StoreAccess::ReadOnly.
[[noreturn]] void refuseReadOnlyWrite(const std::string& database);

// The version a read-only store accepts: the latest of the steps; raises
// StoreError naming the database otherwise.
void checkReadOnlyVersion(int version, const std::vector<Migration>& steps,
                          const std::string& database);

// Brings a database at version `current` up to the latest of `steps`: runs
// the statements of every step above it, then records the new version in
// schema_version, each through `exec(sql, what)` in the caller's
// transaction. Raises StoreError for a database newer than the steps
// (`database` names it in the message). Returns the version it is then at.
using ExecSql = std::function<void(const std::string& sql, const std::string& what)>;
int applyMigrations(int current, const std::vector<Migration>& steps, const std::string& database,
                    const ExecSql& exec);

// Times as kept: whole seconds since 30 December 1899 (rounded to the
// nearest second), and back.
std::int64_t storedSeconds(Date d);
Date storedDate(std::int64_t seconds);

// Checks a period's records before they replace the stored ones: the period
// is not reversed unless there are no records, every record's day lies in
// it (a record outside would survive the next replacement of its own
// period), the user is named. Raises StoreError.
void checkPeriodRecords(const Str& user, const Period& period,
                        const std::vector<TimeRecord>& records);

// An entry's own rate: the rate of `name` in `list` (0-based), letter case
// ignored as the add-in ignores it when it compares entries; none when the
// table holds no rate for it.
std::optional<Currency> entryRate(const RateTable& rates, std::size_t list, StrView name);

// The list number kept in entry_rates (1-based) of a RateTable list
// (0-based); raises StoreError past the report's lists.
int storedListNumber(std::size_t list);

}  // namespace hb::reporting
