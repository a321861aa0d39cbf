// What only the SQLite file has: where the file is, and the ways opening it
// can fail.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <fstream>

#include "StoreTestSupport.h"
#include "reporting/SqliteStore.h"

namespace hb::reporting {
namespace {

using namespace testing;
using ::testing::HasSubstr;
namespace fs = std::filesystem;

TEST(SqliteStoreOpen, BadPlacesGiveAStoreErrorThatSaysWhatIsWrong) {
    struct Case {
        const char* what;
        void (*prepare)(const fs::path& file);
        const char* message;
    };
    const Case cases[] = {
        {"missing folder", [](const fs::path&) {}, "does not exist"},
        {"text file",
         [](const fs::path& f) {
             std::ofstream(f) << "Company;Hours\nAcme;7.5\n" << std::string(5000, 'x');
         },
         "is not a database"},
        {"read-only database",
         [](const fs::path& f) {
             { SqliteStore store(f.u16string()); }
             fs::permissions(
                 f, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
         },
         "is read-only"},
        {"folder in the file's place", [](const fs::path& f) { fs::create_directory(f); },
         "not a file"},
    };
    for (const auto& c : cases) {
        TempFolder folder;
        fs::path file = folder.path() / "Hourbook.sqlite";
        if (std::string(c.what) == "missing folder") {
            file = folder.path() / "no such folder" / "Hourbook.sqlite";
        }
        c.prepare(file);
        try {
            SqliteStore store(file.u16string());
            ADD_FAILURE() << c.what << ": opened";
        } catch (const StoreError& e) {
            EXPECT_THAT(e.what(), HasSubstr(c.message)) << c.what;
            EXPECT_THAT(e.what(), HasSubstr("Hourbook.sqlite")) << c.what;
        }
    }
}

TEST(SqliteStoreOpen, TheReportFolderChoiceKeepsHourbookSqliteInTheFolder) {
    TempFolder folder;
    const Str withSpace = (folder.path() / "Time reports \u00e5r").u16string();
    fs::create_directory(fs::path(withSpace));
    {
        auto store = openRecordStore(kReportChoiceFolder, withSpace);
        store->replacePeriod(u"anna", {45000, 45000}, {testing::record(u"A", 45000, 9, 1)});
    }
    EXPECT_TRUE(fs::exists(fs::path(withSpace) / "Hourbook.sqlite"));
    EXPECT_EQ(
        openRecordStore(kReportChoiceFolder, withSpace + u"/")->load(u"", {45000, 45000}).size(),
        1u);
    for (int choice : {0, 1, 4}) {
        EXPECT_THROW(openRecordStore(choice, withSpace), StoreError) << choice;
    }
    EXPECT_THROW(openRecordStore(kReportChoiceFolder, u""), StoreError);
}

// A file a version 0 program left: just a version table at 0 and a table of
// its own. Opening it builds version 1 and keeps the foreign table.
TEST(SqliteStoreOpen, AVersionZeroFileIsMigratedToTheCurrentSchema) {
    TempFolder folder;
    const std::string file = (folder.path() / "Hourbook.sqlite").string();
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db,
                           "CREATE TABLE schema_version(version INTEGER NOT NULL);"
                           "INSERT INTO schema_version VALUES(0);"
                           "CREATE TABLE notes(body TEXT); INSERT INTO notes VALUES('kept');",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(db);
    {
        SqliteStore store(fromUtf8(file));
        EXPECT_EQ(store.schemaVersion(), 1);
    }
    ASSERT_EQ(sqlite3_open(file.c_str(), &db), SQLITE_OK);
    auto scalar = [&](const char* sql) {
        sqlite3_stmt* s = nullptr;
        sqlite3_prepare_v2(db, sql, -1, &s, nullptr);
        std::string v = sqlite3_step(s) == SQLITE_ROW
                            ? reinterpret_cast<const char*>(sqlite3_column_text(s, 0))
                            : "";
        sqlite3_finalize(s);
        return v;
    };
    EXPECT_EQ(scalar("SELECT group_concat(version) FROM schema_version"), "1");
    EXPECT_EQ(scalar("SELECT body FROM notes"), "kept");
    EXPECT_EQ(scalar("PRAGMA journal_mode"), "wal");
    EXPECT_EQ(scalar("SELECT count(*) FROM sqlite_master WHERE name = 'entry_rates'"), "1");
    sqlite3_close(db);
}

}  // namespace
}  // namespace hb::reporting

namespace hb::reporting {
namespace {

// Another program holding the file's write lock longer than the store
// waits: the export fails with a StoreError and leaves the records as they
// were; once the lock is gone it goes through.
TEST(SqliteStoreBusy, AnExportThatWaitsTooLongFailsAndChangesNothing) {
    TempFolder folder;
    const Str file = folder.file("Hourbook.sqlite");
    SqliteStore store(file, SqliteStore::schema(), 200);
    store.replacePeriod(u"anna", {45000, 45000}, {testing::record(u"A", 45000, 9, 1)});
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(toUtf8(file).c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    try {
        store.replacePeriod(u"anna", {45000, 45000}, {testing::record(u"B", 45000, 9, 1)});
        ADD_FAILURE() << "stored past another writer's lock";
    } catch (const StoreError& e) {
        EXPECT_THAT(e.what(), HasSubstr("stayed busy for 200 ms"));
    }
    sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close(other);
    auto left = store.load(u"anna", {45000, 45000});
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left[0].entryId, u"A");
    store.replacePeriod(u"anna", {45000, 45000}, {testing::record(u"B", 45000, 9, 1)});
    EXPECT_EQ(store.load(u"anna", {45000, 45000})[0].entryId, u"B");
}

}  // namespace
}  // namespace hb::reporting
