// The statistics read the report's database without changing it: opened
// read-only, the file's bytes and its folder stay as they were, writes are
// refused, and a missing or foreign file is never created or migrated.
#include <sqlite3.h>

#include <fstream>
#include <set>

#include "StatsTestSupport.h"
#include "reporting/ExportTestSupport.h"
#include "reporting/RecordStores.h"
#include "reporting/SqliteStore.h"

namespace hb::statistics::test {
namespace {

namespace fs = std::filesystem;
using reporting::openRecordStore;
using reporting::StoreAccess;
using reporting::StoreError;
using reporting::test::readFile;
using reporting::test::scratchFolder;

const reporting::Period kNovember{dayOf(2026, 11, 1), dayOf(2026, 11, 30)};

std::set<std::string> listing(const fs::path& dir) {
    std::set<std::string> out;
    for (const auto& e : fs::directory_iterator(dir))
        out.insert(e.path().filename().string() + " " + std::to_string(fs::file_size(e.path())));
    return out;
}

TEST(ReadOnlySource, ReadsTheDatabaseAndChangesNoByte) {
    const fs::path dir = scratchFolder();
    {
        auto store = openRecordStore(reporting::kReportChoiceFolder, dir.u16string());
        store->replacePeriod(u"john", kNovember,
                             {rec(u"john", dayOf(2026, 11, 2), u"Acme", u"", 3600, 100)});
    }
    const fs::path file = dir / "Hourbook.sqlite";
    const std::string before = readFile(file);
    const auto files = listing(dir);

    {
        auto store =
            openRecordStore(reporting::kReportChoiceFolder, dir.u16string(), StoreAccess::ReadOnly);
        const auto records = store->load(u"", kNovember);
        ASSERT_EQ(records.size(), 1U);
        EXPECT_EQ(records[0].values[0], u"Acme");
        EXPECT_EQ(records[0].amount.scaled, 10000);
        EXPECT_THROW(store->replacePeriod(u"john", kNovember, {}), StoreError);
        EXPECT_THROW(store->putEntryRates({}), StoreError);
        EXPECT_EQ(store->entryRates().size(), 0U);
    }
    EXPECT_EQ(readFile(file), before);
    // A reader of a WAL database may leave SQLite's shared-memory index and
    // an empty log beside it (as every reader does); nothing is in the log
    // that a later open would write into the database.
    for (const std::string& f : listing(dir)) {
        if (files.count(f)) continue;
        EXPECT_TRUE(f == "Hourbook.sqlite-wal 0" || f.rfind("Hourbook.sqlite-shm ", 0) == 0) << f;
    }
}

TEST(ReadOnlySource, RefusesWhatItWouldHaveToCreateOrMigrate) {
    const fs::path dir = scratchFolder();
    struct Case {
        const char* name;
        const char* sql;  // run on a new file; none: no file
        const char* message;
    };
    const Case cases[] = {
        {"missing", nullptr, "does not exist"},
        {"foreign", "CREATE TABLE t(x)", "holds no time records"},
        {"older",
         "CREATE TABLE schema_version(version INTEGER); INSERT INTO schema_version "
         "VALUES(0)",
         "export a report into it first"},
        {"newer",
         "CREATE TABLE schema_version(version INTEGER); INSERT INTO schema_version "
         "VALUES(999)",
         "newer version"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const fs::path folder = dir / c.name;
        fs::create_directories(folder);
        const fs::path file = folder / "Hourbook.sqlite";
        if (c.sql) {
            sqlite3* db = nullptr;
            sqlite3_open(file.c_str(), &db);
            sqlite3_exec(db, c.sql, nullptr, nullptr, nullptr);
            sqlite3_close(db);
        }
        const std::string before = c.sql ? readFile(file) : "";
        try {
            openRecordStore(reporting::kReportChoiceFolder, folder.u16string(),
                            StoreAccess::ReadOnly);
            ADD_FAILURE() << "opened";
        } catch (const StoreError& e) {
            EXPECT_NE(std::string(e.what()).find(c.message), std::string::npos) << e.what();
        }
        EXPECT_EQ(fs::exists(file), c.sql != nullptr);
        if (c.sql) {
            EXPECT_EQ(readFile(file), before);
        }
    }
    // Garbage is no database, and stays garbage.
    const fs::path file = dir / "Hourbook.sqlite";
    std::ofstream(file, std::ios::binary) << std::string(2048, 'x');
    EXPECT_THROW(
        openRecordStore(reporting::kReportChoiceFolder, dir.u16string(), StoreAccess::ReadOnly),
        StoreError);
    EXPECT_EQ(readFile(file), std::string(2048, 'x'));
}

}  // namespace
}  // namespace hb::statistics::test
