#pragma once
// The local cube: a self-contained SQLite file in the cube folder (the
// user's documents folder + "\OLAP Cubes") holding a flat copy of the time
// records, so that the statistics work offline, on a laptop away from the
// shared database. One table, one row per record per day:
//
//   cube_records(user_name, day, date, week, month, year, value1, value2,
//                value3, seconds, rounded_seconds, hours, rounded_hours,
//                amount)
//     day             the local day number (days since 30 December 1899)
//     date            "2026-11-24"     week   "2026-W48" (ISO 8601)
//     month           "2026-11"        year   2026
//     value1..3       the billing value of each list ("" none)
//     seconds, rounded_seconds   whole seconds (exact)
//     hours, rounded_hours       the same in hours (REAL, for other tools)
//     amount          the Currency's scaled value (1/10000), exact
//   cube_info(name, value)   format ("1"), caption1..3 (the lists' captions)
//
// The file keeps a rollback journal (not WAL), so that it is one file that
// can be copied; a write is one transaction, so a failure leaves it as it was.
#include <array>
#include <stdexcept>
#include <vector>

#include "reporting/RecordStore.h"

namespace hb::statistics {

using reporting::DayNumber;
using reporting::kReportLists;
using reporting::Period;
using reporting::TimeRecord;

// The cube's file name in the cube folder.
inline constexpr char16_t kCubeFileName[] = u"Hourbook cube.sqlite";
// The cube folder below the documents folder.
inline constexpr char16_t kCubeFolderName[] = u"OLAP Cubes";

// A cube that cannot be written or read: the message says which file and
// why, in words for the user ("... does not exist", "... is damaged").
// A StoreError, so that the report's export and the statistics' command
// line end with the database's exit code.
class CubeError : public reporting::StoreError {
  public:
    using reporting::StoreError::StoreError;
};

// The cube file of a folder.
Str cubeFilePath(const Str& folder);

// What a cube holds: the lists' captions and the records (user, day, the
// list values, seconds, rounded seconds, amount; billed follows the values).
struct CubeContent {
    std::array<Str, kReportLists> captions;
    std::vector<TimeRecord> records;
};

// Replaces the user's rows whose day lies in the period by these records
// (creating the file when missing; the folder must exist), in one
// transaction: running it twice never doubles, and a failure leaves the
// file as it was. Captions that are not empty replace the kept ones.
// Raises CubeError.
void writeCube(const Str& file, const Str& user, const Period& period,
               const std::vector<TimeRecord>& records,
               const std::array<Str, kReportLists>& captions);

// Reads the cube's rows of the period (every user; an empty period: all
// rows) in order of day and user, the file opened read-only. Raises
// CubeError for a missing file, a file that is no cube or is damaged.
CubeContent readCube(const Str& file, const Period& period = {});

}  // namespace hb::statistics
