#include "statistics/StatsSource.h"

#include <filesystem>

#include "reporting/RecordStores.h"

namespace hb::statistics {

namespace {

// Every day a record can have: 1 January 1900 to 31 December 9999.
constexpr Period kAllDays{2, 2958465};

CubeContent fromStore(int choice, const Str& value, const Period& period) {
    auto store = reporting::openRecordStore(choice, value, reporting::StoreAccess::ReadOnly);
    CubeContent out;
    out.records = store->load(Str(), period.empty() ? kAllDays : period);
    return out;
}

}  // namespace

CubeContent loadStatistics(StatsSource source, const Str& folder, const Str& connection,
                           const Period& period) {
    if (source == StatsSource::Auto) {
        Str database = folder;
        if (!database.empty() && database.back() != u'/' && database.back() != u'\\')
            database += u'/';
        database += reporting::kSqliteFileName;
        std::error_code ec;
        source =
            std::filesystem::is_regular_file(std::filesystem::path(std::u16string(database)), ec)
                ? StatsSource::Database
                : StatsSource::Cube;
    }
    switch (source) {
        case StatsSource::Database:
            return fromStore(reporting::kReportChoiceFolder, folder, period);
        case StatsSource::Server:
            return fromStore(reporting::kReportChoiceServer, connection, period);
        default:
            return readCube(cubeFilePath(folder), period);
    }
}

}  // namespace hb::statistics
