#include "statistics/CubeFile.h"

#include <sqlite3.h>

#include <filesystem>
#include <string>

#include "reporting/Periods.h"
#include "statistics/Pivot.h"

namespace hb::statistics {

namespace fs = std::filesystem;
using reporting::civilDate;

namespace {

constexpr int kFormat = 1;

const char* const kCreate =
    "CREATE TABLE IF NOT EXISTS cube_records("
    " user_name TEXT NOT NULL, day INTEGER NOT NULL, date TEXT NOT NULL, week TEXT NOT NULL,"
    " month TEXT NOT NULL, year INTEGER NOT NULL, value1 TEXT NOT NULL, value2 TEXT NOT NULL,"
    " value3 TEXT NOT NULL, seconds INTEGER NOT NULL, rounded_seconds INTEGER NOT NULL,"
    " hours REAL NOT NULL, rounded_hours REAL NOT NULL, amount INTEGER NOT NULL);"
    "CREATE INDEX IF NOT EXISTS cube_records_by_user_day ON cube_records(user_name, day);"
    "CREATE INDEX IF NOT EXISTS cube_records_by_day ON cube_records(day);"
    "CREATE TABLE IF NOT EXISTS cube_info(name TEXT PRIMARY KEY, value TEXT NOT NULL);";

struct Db {
    sqlite3* db = nullptr;
    std::string file;
    ~Db() { sqlite3_close_v2(db); }

    [[noreturn]] void fail(const std::string& what, int rc) const {
        const std::string detail = db ? sqlite3_errmsg(db) : sqlite3_errstr(rc);
        switch (rc & 0xFF) {
            case SQLITE_NOTADB:
                throw CubeError("the cube file " + file + " is not a cube (" + detail + ")");
            case SQLITE_CORRUPT:
                throw CubeError("the cube file " + file + " is damaged (" + detail + ")");
            case SQLITE_ERROR:
                // A database without the cube's tables: some other file.
                if (detail.rfind("no such table", 0) == 0)
                    throw CubeError("the cube file " + file + " is not a cube (" + detail + ")");
                break;
            case SQLITE_READONLY:
                throw CubeError("the cube file " + file + " is read-only: " + what +
                                " needs to write to it");
            default:
                break;
        }
        throw CubeError("the cube file " + file + ": " + what + " failed (" + detail + ")");
    }
    void exec(const char* sql, const std::string& what) {
        const int rc = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
        if (rc != SQLITE_OK) fail(what, rc);
    }
};

struct Statement {
    sqlite3_stmt* s = nullptr;
    Statement(Db& db, const char* sql, const std::string& what) {
        const int rc = sqlite3_prepare_v2(db.db, sql, -1, &s, nullptr);
        if (rc != SQLITE_OK) db.fail(what, rc);
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement() { sqlite3_finalize(s); }
    void text(int i, const Str& v) {
        sqlite3_bind_text16(s, i, v.data(), static_cast<int>(v.size() * sizeof(char16_t)),
                            SQLITE_TRANSIENT);
    }
    void text(int i, const std::string& v) {
        sqlite3_bind_text(s, i, v.data(), static_cast<int>(v.size()), SQLITE_TRANSIENT);
    }
    Str column(int i) const {
        const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(s, i));
        return p ? fromUtf8(
                       std::string_view(p, static_cast<std::size_t>(sqlite3_column_bytes(s, i))))
                 : Str();
    }
    // Runs a statement that returns no rows and makes it ready for the next.
    void done(Db& db, const std::string& what) {
        const int rc = sqlite3_step(s);
        sqlite3_reset(s);
        sqlite3_clear_bindings(s);
        if (rc != SQLITE_DONE) db.fail(what, rc);
    }
};

// Rolls the open transaction back unless it was committed.
struct Transaction {
    Db& db;
    bool done = false;
    Transaction(Db& d, const std::string& what) : db(d) { db.exec("BEGIN IMMEDIATE", what); }
    void commit(const std::string& what) {
        db.exec("COMMIT", what);
        done = true;
    }
    ~Transaction() {
        if (!done) sqlite3_exec(db.db, "ROLLBACK", nullptr, nullptr, nullptr);
    }
};

}  // namespace

Str cubeFilePath(const Str& folder) {
    Str file = folder;
    if (!file.empty() && file.back() != u'/' && file.back() != u'\\') file += u'/';
    return file + kCubeFileName;
}

void writeCube(const Str& file, const Str& user, const Period& period,
               const std::vector<TimeRecord>& records,
               const std::array<Str, kReportLists>& captions) {
    Db d;
    d.file = toUtf8(file);
    if (user.empty()) throw CubeError("the cube file " + d.file + ": no user is named");
    for (const TimeRecord& r : records) {
        if (!period.contains(r.day)) {
            throw CubeError("the cube file " + d.file + ": a record of day " +
                            std::to_string(r.day) + " lies outside the period");
        }
    }
    std::error_code ec;
    fs::path folder = fs::path(std::u16string(file)).parent_path();
    if (folder.empty()) folder = ".";
    if (!fs::is_directory(folder, ec)) {
        throw CubeError("cannot write the cube file " + d.file + ": the folder " +
                        toUtf8(folder.u16string()) + " does not exist");
    }
    const int rc =
        sqlite3_open_v2(d.file.c_str(), &d.db,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (rc != SQLITE_OK) d.fail("opening it", rc);
    sqlite3_extended_result_codes(d.db, 1);
    sqlite3_busy_timeout(d.db, 10000);
    const std::string what = "storing the records";
    // The first statement reads the file: one that is no database fails here.
    d.exec("PRAGMA journal_mode=DELETE", what);
    Transaction t(d, what);
    d.exec(kCreate, what);
    {
        Statement format(d, "SELECT value FROM cube_info WHERE name = 'format'", what);
        if (sqlite3_step(format.s) == SQLITE_ROW && sqlite3_column_int(format.s, 0) > kFormat) {
            throw CubeError("the cube file " + d.file +
                            " was made by a newer version of the program");
        }
    }
    Statement info(d, "INSERT OR REPLACE INTO cube_info(name, value) VALUES(?, ?)", what);
    info.text(1, std::string("format"));
    info.text(2, std::to_string(kFormat));
    info.done(d, what);
    for (std::size_t i = 0; i < kReportLists; ++i) {
        if (captions[i].empty()) continue;
        info.text(1, "caption" + std::to_string(i + 1));
        info.text(2, captions[i]);
        info.done(d, what);
    }
    Statement remove(d, "DELETE FROM cube_records WHERE user_name = ? AND day BETWEEN ? AND ?",
                     what);
    remove.text(1, user);
    sqlite3_bind_int(remove.s, 2, period.first);
    sqlite3_bind_int(remove.s, 3, period.last);
    remove.done(d, what);
    Statement insert(d,
                     "INSERT INTO cube_records(user_name, day, date, week, month, year, value1,"
                     " value2, value3, seconds, rounded_seconds, hours, rounded_hours, amount)"
                     " VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                     what);
    for (const TimeRecord& r : records) {
        insert.text(1, user);
        sqlite3_bind_int(insert.s, 2, r.day);
        insert.text(3, dimensionKey(r, Dimension::Day));
        insert.text(4, dimensionKey(r, Dimension::Week));
        insert.text(5, dimensionKey(r, Dimension::Month));
        sqlite3_bind_int(insert.s, 6, civilDate(r.day).year);
        for (std::size_t i = 0; i < kReportLists; ++i)
            insert.text(7 + static_cast<int>(i), r.values[i]);
        sqlite3_bind_int64(insert.s, 10, r.seconds);
        sqlite3_bind_int64(insert.s, 11, r.roundedSeconds);
        sqlite3_bind_double(insert.s, 12, static_cast<double>(r.seconds) / 3600.0);
        sqlite3_bind_double(insert.s, 13, static_cast<double>(r.roundedSeconds) / 3600.0);
        sqlite3_bind_int64(insert.s, 14, r.amount.scaled);
        insert.done(d, what);
    }
    t.commit(what);
}

CubeContent readCube(const Str& file, const Period& period) {
    Db d;
    d.file = toUtf8(file);
    std::error_code ec;
    const auto st = fs::status(fs::path(std::u16string(file)), ec);
    if (!fs::exists(st)) {
        throw CubeError("the cube file " + d.file +
                        " does not exist: export a report with \"create local cube\" on first");
    }
    if (!fs::is_regular_file(st)) throw CubeError("the cube file " + d.file + " is not a file");
    const int rc =
        sqlite3_open_v2(d.file.c_str(), &d.db, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
    if (rc != SQLITE_OK) d.fail("opening it", rc);
    sqlite3_extended_result_codes(d.db, 1);
    sqlite3_busy_timeout(d.db, 10000);
    const std::string what = "reading the records";
    CubeContent out;
    Statement info(d, "SELECT name, value FROM cube_info WHERE name LIKE 'caption_'", what);
    int step;
    while ((step = sqlite3_step(info.s)) == SQLITE_ROW) {
        const Str name = info.column(0);
        const int list = name.back() - u'1';
        if (list >= 0 && list < static_cast<int>(kReportLists))
            out.captions[static_cast<std::size_t>(list)] = info.column(1);
    }
    if (step != SQLITE_DONE) d.fail(what, step);
    const bool all = period.empty();
    Statement q(d,
                all ? "SELECT user_name, day, value1, value2, value3, seconds, rounded_seconds,"
                      " amount FROM cube_records ORDER BY day, user_name"
                    : "SELECT user_name, day, value1, value2, value3, seconds, rounded_seconds,"
                      " amount FROM cube_records WHERE day BETWEEN ? AND ? ORDER BY day, user_name",
                what);
    if (!all) {
        sqlite3_bind_int(q.s, 1, period.first);
        sqlite3_bind_int(q.s, 2, period.last);
    }
    while ((step = sqlite3_step(q.s)) == SQLITE_ROW) {
        TimeRecord& r = out.records.emplace_back();
        r.user = q.column(0);
        r.day = sqlite3_column_int(q.s, 1);
        for (std::size_t i = 0; i < kReportLists; ++i) {
            r.values[i] = q.column(2 + static_cast<int>(i));
            r.billed = r.billed || !r.values[i].empty();
        }
        r.seconds = sqlite3_column_int64(q.s, 5);
        r.roundedSeconds = sqlite3_column_int64(q.s, 6);
        r.amount.scaled = sqlite3_column_int64(q.s, 7);
    }
    if (step != SQLITE_DONE) d.fail(what, step);
    return out;
}

}  // namespace hb::statistics
