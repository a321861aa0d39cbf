#pragma once
// Where the statistics' records come from, always read only: the report's
// SQLite database of a folder (report choice 2), the server database
// (choice 3), or the local cube of a folder. The add-in's Statistics button
// passes the database folder for choice 2 and the cube folder otherwise.
#include <cstdint>

#include "statistics/CubeFile.h"

namespace hb::statistics {

enum class StatsSource : std::uint8_t {
    Auto,      // the folder's database when it has one, else its cube
    Database,  // the folder's database (kSqliteFileName)
    Cube,      // the folder's cube (kCubeFileName)
    Server,    // the server database of the connection text
};

// The records of the period (an empty period: all) and the lists'
// captions (a database keeps none: they stay empty). Raises StoreError
// (CubeError for the cube) when the source cannot be read; nothing is ever
// written to it.
CubeContent loadStatistics(StatsSource source, const Str& folder, const Str& connection,
                           const Period& period);

}  // namespace hb::statistics
