// The local cube file: what it holds, replacing a user's period, a failed
// write leaving it as it was, and the read-only reader's answers to files
// that are missing, damaged or no cube.
#include <sqlite3.h>

#include <fstream>

#include "StatsTestSupport.h"
#include "reporting/ExportTestSupport.h"
#include "statistics/CubeFile.h"

namespace hb::statistics::test {
namespace {

namespace fs = std::filesystem;
using reporting::Period;
using reporting::test::readFile;
using reporting::test::scratchFolder;

const Period kNovember{dayOf(2026, 11, 1), dayOf(2026, 11, 30)};

std::vector<TimeRecord> novemberRecords() {
    return {rec(u"john", dayOf(2026, 11, 2), u"Acme", u"Smith", 3600, 9550),
            rec(u"john", dayOf(2026, 11, 3), u"Zenith", u"", 5400, 1),
            rec(u"john", dayOf(2026, 11, 30), u"", u"Jones", 60)};
}

// One row per line: user|day|value1|value2|value3|seconds|rounded|amount.
std::vector<std::string> rows(const std::vector<TimeRecord>& records) {
    std::vector<std::string> out;
    for (const TimeRecord& r : records)
        out.push_back(toUtf8(r.user) + "|" + std::to_string(r.day) + "|" + toUtf8(r.values[0]) +
                      "|" + toUtf8(r.values[1]) + "|" + toUtf8(r.values[2]) + "|" +
                      std::to_string(r.seconds) + "|" + std::to_string(r.roundedSeconds) + "|" +
                      std::to_string(r.amount.scaled));
    return out;
}

// The first row of a query on the file, its columns joined by "|".
std::string query(const fs::path& file, const std::string& sql) {
    sqlite3* db = nullptr;
    sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_stmt* s = nullptr;
    std::string out;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &s, nullptr) == SQLITE_OK &&
        sqlite3_step(s) == SQLITE_ROW) {
        for (int i = 0; i < sqlite3_column_count(s); ++i) {
            const auto* t = sqlite3_column_text(s, i);
            out += (i ? "|" : "") + std::string(t ? reinterpret_cast<const char*>(t) : "");
        }
    }
    sqlite3_finalize(s);
    sqlite3_close(db);
    return out;
}

TEST(CubeFile, KeepsTheRecordsAndTheirCalendarColumns) {
    const fs::path dir = scratchFolder();
    const Str file = cubeFilePath(dir.u16string());
    EXPECT_EQ(fs::path(file).filename(), "Hourbook cube.sqlite");
    writeCube(file, u"john", kNovember, novemberRecords(), {u"Company", u"Person", u"Extra"});

    const CubeContent c = readCube(file);
    EXPECT_EQ(c.captions[0], u"Company");
    EXPECT_EQ(c.captions[2], u"Extra");
    EXPECT_EQ(rows(c.records), rows(novemberRecords()));
    EXPECT_TRUE(c.records[0].billed);

    // The calendar columns other tools group by, the money exact; around
    // New Year the ISO week belongs to the other year.
    struct Case {
        DayNumber day;
        const char* expected;  // date|week|month|year|hours|amount
    };
    const Case cases[] = {
        {dayOf(2026, 11, 2), "2026-11-02|2026-W45|2026-11|2026|1.0|955000"},
        {dayOf(2027, 1, 1), "2027-01-01|2026-W53|2027-01|2027|1.0|955000"},
        {dayOf(2024, 12, 30), "2024-12-30|2025-W01|2024-12|2024|1.0|955000"},
    };
    for (const Case& k : cases) {
        writeCube(file, u"ann", {k.day, k.day}, {rec(u"ann", k.day, u"A", u"", 3600, 9550)}, {});
        EXPECT_EQ(query(dir / "Hourbook cube.sqlite",
                        "SELECT date, week, month, year, hours, amount FROM cube_records"
                        " WHERE user_name = 'ann' AND day = " +
                            std::to_string(k.day)),
                  k.expected);
    }
    // Captions left empty keep the ones the file has.
    EXPECT_EQ(readCube(file).captions[1], u"Person");
}

TEST(CubeFile, ReplacesTheUsersPeriodWithoutDoubling) {
    const fs::path dir = scratchFolder();
    const Str file = cubeFilePath(dir.u16string());
    const DayNumber october = dayOf(2026, 10, 31);
    writeCube(file, u"ann", kNovember, {rec(u"ann", dayOf(2026, 11, 2), u"Acme", u"", 600)}, {});
    writeCube(file, u"john", {october, october}, {rec(u"john", october, u"Acme", u"", 60)}, {});
    writeCube(file, u"john", kNovember, novemberRecords(), {});
    writeCube(file, u"john", kNovember, novemberRecords(), {});
    EXPECT_EQ(readCube(file, kNovember).records.size(), 4U);

    // Fewer records: the gone ones go; ann's and October's stay.
    writeCube(file, u"john", kNovember, {novemberRecords()[1]}, {});
    const auto all = readCube(file).records;
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[0].day, october);
    EXPECT_EQ(all[1].user, u"ann");
    EXPECT_EQ(all[2].values[0], u"Zenith");
    // A period selects by day.
    EXPECT_EQ(readCube(file, {october, october}).records.size(), 1U);
}

TEST(CubeFile, AFailedWriteLeavesTheFileAsItWas) {
    const fs::path dir = scratchFolder();
    const Str file = cubeFilePath(dir.u16string());
    writeCube(file, u"john", kNovember, novemberRecords(), {u"Company", u"", u""});
    const std::string before = readFile(dir / "Hourbook cube.sqlite");

    auto outside = novemberRecords();
    outside.push_back(rec(u"john", dayOf(2026, 12, 1), u"Acme", u"", 60));
    EXPECT_THROW(writeCube(file, u"john", kNovember, outside, {}), CubeError);
    EXPECT_THROW(writeCube(file, u"", kNovember, {}, {}), CubeError);
    EXPECT_EQ(readFile(dir / "Hourbook cube.sqlite"), before);

    // A failure inside the transaction (a cube of a newer format, found
    // after the tables were made sure of) rolls everything back.
    sqlite3* db = nullptr;
    sqlite3_open((dir / "Hourbook cube.sqlite").c_str(), &db);
    sqlite3_exec(db, "UPDATE cube_info SET value = '9' WHERE name = 'format'", nullptr, nullptr,
                 nullptr);
    sqlite3_close(db);
    const std::string newer = readFile(dir / "Hourbook cube.sqlite");
    EXPECT_THROW(writeCube(file, u"john", kNovember, {}, {u"Other", u"", u""}), CubeError);
    EXPECT_EQ(readFile(dir / "Hourbook cube.sqlite"), newer);
    EXPECT_THROW(writeCube(cubeFilePath((dir / "missing").u16string()), u"john", kNovember,
                           novemberRecords(), {}),
                 CubeError);
    EXPECT_FALSE(fs::exists(dir / "missing"));
}

TEST(CubeFile, ReadingChangesNothing) {
    const fs::path dir = scratchFolder();
    const Str file = cubeFilePath(dir.u16string());
    writeCube(file, u"john", kNovember, novemberRecords(), {});
    const std::string before = readFile(dir / "Hourbook cube.sqlite");
    for (int i = 0; i < 3; ++i)
        readCube(file, kNovember);
    EXPECT_EQ(readFile(dir / "Hourbook cube.sqlite"), before);
    EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 1);
}

TEST(CubeFile, ClearErrorsForFilesThatAreNoCube) {
    const fs::path dir = scratchFolder();
    const Str good = cubeFilePath(dir.u16string());
    writeCube(good, u"john", kNovember, novemberRecords(), {});
    const std::string cube = readFile(dir / "Hourbook cube.sqlite");
    std::string header = cube.substr(0, 100);

    struct Case {
        const char* name;
        std::string bytes;  // none: no file at all
        const char* message;
    };
    const Case cases[] = {
        {"missing", "", "does not exist"},
        {"garbage", std::string(4096, '\x5A'), "is not a cube"},
        {"text", "date;hours\r\n2026-11-02;1\r\n", "is not a cube"},
        {"truncated", cube.substr(0, cube.size() / 2), "damaged"},
        {"header only", header, "damaged"},
        {"empty", std::string(), "is not a cube"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const fs::path file = dir / (std::string(c.name) + ".sqlite");
        if (std::string(c.name) != "missing") std::ofstream(file, std::ios::binary) << c.bytes;
        try {
            readCube(file.u16string());
            ADD_FAILURE() << "no error";
        } catch (const CubeError& e) {
            EXPECT_NE(std::string(e.what()).find(c.message), std::string::npos) << e.what();
            EXPECT_NE(std::string(e.what()).find(c.name), std::string::npos) << e.what();
        }
    }
    // Another program's SQLite database is no cube either.
    sqlite3* db = nullptr;
    const fs::path other = dir / "other.sqlite";
    sqlite3_open(other.c_str(), &db);
    sqlite3_exec(db, "CREATE TABLE t(x)", nullptr, nullptr, nullptr);
    sqlite3_close(db);
    EXPECT_THROW(readCube(other.u16string()), CubeError);
    // A folder is no file.
    EXPECT_THROW(readCube(dir.u16string()), CubeError);
}

}  // namespace
}  // namespace hb::statistics::test
