#include "reporting/SqliteStore.h"

#include <sqlite3.h>

#include <filesystem>
#include <string>

namespace hb::reporting {

namespace fs = std::filesystem;

namespace {

struct Statement {
    sqlite3_stmt* s = nullptr;
    Statement() = default;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement() { sqlite3_finalize(s); }
};

}  // namespace

struct SqliteStore::Impl {
    sqlite3* db = nullptr;
    std::string file;  // UTF-8, for messages
    int version = 0;
    int busyMs = kBusyTimeoutMs;
    bool readOnly = false;
    Statement insert, removePeriod, loadUser, loadAll;

    // close_v2 lets the connection go once the statements (members, so
    // finalized after this) are.
    ~Impl() { sqlite3_close_v2(db); }

    [[noreturn]] void fail(const std::string& what, int rc) const {
        std::string detail = db ? sqlite3_errmsg(db) : sqlite3_errstr(rc);
        switch (rc & 0xFF) {
            case SQLITE_NOTADB:
                throw StoreError("the database file " + file + " is not a database (" + detail +
                                 ")");
            case SQLITE_READONLY:
                throw StoreError("the database file " + file + " is read-only: " + what +
                                 " needs to write to it");
            case SQLITE_BUSY:
            case SQLITE_LOCKED:
                throw StoreError("the database file " + file + " stayed busy for " +
                                 (busyMs % 1000 == 0 ? std::to_string(busyMs / 1000) + " s"
                                                     : std::to_string(busyMs) + " ms") +
                                 " (another export): " + what);
            case SQLITE_CORRUPT:
                throw StoreError("the database file " + file + " is damaged: " + detail);
            default:
                throw StoreError("the database file " + file + ": " + what + " failed: " + detail);
        }
    }

    void exec(const std::string& sql, const std::string& what) {
        int rc = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr);
        if (rc != SQLITE_OK) {
            fail(what, rc);
        }
    }

    void prepare(Statement& st, const std::string& sql) {
        if (st.s) {
            sqlite3_reset(st.s);
            sqlite3_clear_bindings(st.s);
            return;
        }
        int rc = sqlite3_prepare_v3(db, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &st.s, nullptr);
        if (rc != SQLITE_OK) {
            fail("preparing a statement", rc);
        }
    }

    void bindText(sqlite3_stmt* s, int i, const Str& v) {
        sqlite3_bind_text16(s, i, v.data(), static_cast<int>(v.size() * sizeof(char16_t)),
                            SQLITE_STATIC);
    }

    // A text column as kept (UTF-8): most texts are ASCII, which widens
    // unit for unit without SQLite converting it into a buffer of its own.
    static void text(sqlite3_stmt* s, int i, Str& out) {
        auto p = sqlite3_column_text(s, i);
        const auto n = static_cast<std::size_t>(sqlite3_column_bytes(s, i));
        if (!p) {
            out.clear();
            return;
        }
        out.resize(n);
        for (std::size_t k = 0; k < n; ++k) {
            if (p[k] >= 0x80) {
                out = fromUtf8(std::string_view(reinterpret_cast<const char*>(p), n));
                return;
            }
            out[k] = static_cast<char16_t>(p[k]);
        }
    }

    // Ends an open transaction: commits when all went well, rolls back when
    // the scope is left by an exception.
    struct Transaction {
        Impl& impl;
        bool done = false;
        Transaction(Impl& i, const std::string& what) : impl(i) {
            impl.exec("BEGIN IMMEDIATE", what);
        }
        void commit(const std::string& what) {
            impl.exec("COMMIT", what);
            done = true;
        }
        ~Transaction() {
            if (!done) {
                sqlite3_exec(impl.db, "ROLLBACK", nullptr, nullptr, nullptr);
            }
        }
    };

    // The schema version of a database opened to read only, which must be
    // the latest (a read-only store migrates nothing).
    void checkVersion(const std::vector<Migration>& steps) {
        Statement q;
        int rc =
            sqlite3_prepare_v2(db, "SELECT max(version) FROM schema_version", -1, &q.s, nullptr);
        if (rc == SQLITE_ERROR) {
            throw StoreError("the database file " + file + " holds no time records (" +
                             sqlite3_errmsg(db) + ")");
        }
        if (rc != SQLITE_OK) {
            fail("reading the schema version", rc);
        }
        rc = sqlite3_step(q.s);
        if (rc != SQLITE_ROW) {
            fail("reading the schema version", rc);
        }
        version = sqlite3_column_int(q.s, 0);
        checkReadOnlyVersion(version, steps, "the database file " + file);
    }

    void migrate(const std::vector<Migration>& steps) {
        Transaction t(*this, "bringing the schema up to date");
        exec("CREATE TABLE IF NOT EXISTS schema_version(version INTEGER NOT NULL)",
             "making the schema version table");
        Statement q;
        prepare(q, "SELECT max(version) FROM schema_version");
        int rc = sqlite3_step(q.s);
        if (rc != SQLITE_ROW) {
            fail("reading the schema version", rc);
        }
        const int current = sqlite3_column_int(q.s, 0);
        sqlite3_reset(q.s);
        version = applyMigrations(
            current, steps, "the database file " + file,
            [this](const std::string& sql, const std::string& what) { exec(sql, what); });
        if (version != current) {
            t.commit("bringing the schema up to date");
        }
    }
};

const std::vector<Migration>& SqliteStore::schema() {
    return recordSchema();
}

SqliteStore::SqliteStore(const Str& file, const std::vector<Migration>& migrations, int busyMs,
                         StoreAccess access)
    : impl_(std::make_unique<Impl>()) {
    impl_->busyMs = busyMs;
    impl_->readOnly = access == StoreAccess::ReadOnly;
    impl_->file = toUtf8(file);
    const fs::path path(file);
    std::error_code ec;
    fs::path folder = path.parent_path();
    if (folder.empty()) {
        folder = ".";
    }
    if (!fs::is_directory(folder, ec)) {
        throw StoreError("cannot open the database file " + impl_->file + ": the folder " +
                         toUtf8(folder.u16string()) + " does not exist");
    }
    auto st = fs::status(path, ec);
    if (impl_->readOnly) {
        openReadOnly(st, migrations);
        return;
    }
    if (!ec && fs::exists(st)) {
        if (!fs::is_regular_file(st)) {
            throw StoreError("cannot open the database file " + impl_->file + ": it is not a file");
        }
        // A file without write permission is read-only even to an account
        // that could write it anyway: exporting would change what its owner
        // protected.
        constexpr auto writable =
            fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
        if ((st.permissions() & writable) == fs::perms::none) {
            throw StoreError("the database file " + impl_->file +
                             " is read-only: the report needs to write to it");
        }
    }
    int rc =
        sqlite3_open_v2(impl_->file.c_str(), &impl_->db,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (rc != SQLITE_OK) {
        throw StoreError("cannot open the database file " + impl_->file + ": " +
                         (impl_->db ? sqlite3_errmsg(impl_->db) : sqlite3_errstr(rc)));
    }
    sqlite3_extended_result_codes(impl_->db, 1);
    sqlite3_busy_timeout(impl_->db, busyMs);
    if (sqlite3_db_readonly(impl_->db, "main") == 1) {
        throw StoreError("the database file " + impl_->file +
                         " is read-only: the report needs to write to it");
    }
    // The first statement reads the file: a file that is no database fails here.
    impl_->exec("PRAGMA journal_mode=WAL", "opening the database");
    impl_->exec("PRAGMA synchronous=NORMAL", "opening the database");
    // 32 MB of page cache: a year's export or report touches that much.
    impl_->exec("PRAGMA cache_size=-32768", "opening the database");
    impl_->migrate(migrations);
}

void SqliteStore::openReadOnly(const fs::file_status& st,
                               const std::vector<Migration>& migrations) {
    Impl& d = *impl_;
    if (!fs::exists(st)) {
        throw StoreError("the database file " + d.file + " does not exist");
    }
    if (!fs::is_regular_file(st)) {
        throw StoreError("cannot open the database file " + d.file + ": it is not a file");
    }
    // Read-only and no journal_mode pragma: a database in WAL mode stays
    // so, one in rollback mode stays so, and the file's bytes stay as they were.
    int rc =
        sqlite3_open_v2(d.file.c_str(), &d.db, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
    if (rc != SQLITE_OK) {
        throw StoreError("cannot open the database file " + d.file + ": " +
                         (d.db ? sqlite3_errmsg(d.db) : sqlite3_errstr(rc)));
    }
    sqlite3_extended_result_codes(d.db, 1);
    sqlite3_busy_timeout(d.db, d.busyMs);
    d.exec("PRAGMA cache_size=-32768", "opening the database");
    d.checkVersion(migrations);
}

SqliteStore::~SqliteStore() = default;

int SqliteStore::schemaVersion() {
    return impl_->version;
}

void SqliteStore::replacePeriod(const Str& user, const Period& period,
                                const std::vector<TimeRecord>& records) {
    Impl& d = *impl_;
    if (d.readOnly) refuseReadOnlyWrite("the database file " + d.file);
    checkPeriodRecords(user, period, records);
    const char* what = "storing the period's records";
    Impl::Transaction t(d, what);
    d.prepare(d.removePeriod, sql::kDeletePeriod);
    d.bindText(d.removePeriod.s, 1, user);
    sqlite3_bind_int(d.removePeriod.s, 2, period.first);
    sqlite3_bind_int(d.removePeriod.s, 3, period.last);
    int rc = sqlite3_step(d.removePeriod.s);
    sqlite3_reset(d.removePeriod.s);
    if (rc != SQLITE_DONE) {
        d.fail(what, rc);
    }
    d.prepare(d.insert, sql::insertRecords(1));
    sqlite3_stmt* s = d.insert.s;
    for (const auto& r : records) {
        d.bindText(s, 1, user);
        d.bindText(s, 2, r.entryId);
        sqlite3_bind_int64(s, 3, storedSeconds(r.occurrenceStart));
        sqlite3_bind_int(s, 4, r.day);
        sqlite3_bind_int64(s, 5, storedSeconds(r.start));
        sqlite3_bind_int64(s, 6, storedSeconds(r.end));
        d.bindText(s, 7, r.subject);
        for (std::size_t i = 0; i < kReportLists; ++i) {
            d.bindText(s, 8 + static_cast<int>(i), r.values[i]);
        }
        sqlite3_bind_int(s, 11, r.billed ? 1 : 0);
        sqlite3_bind_int(s, 12, r.allDay ? 1 : 0);
        sqlite3_bind_int(s, 13, r.isPrivate ? 1 : 0);
        sqlite3_bind_int(s, 14, r.recurring ? 1 : 0);
        sqlite3_bind_int64(s, 15, r.seconds);
        sqlite3_bind_int64(s, 16, r.roundedSeconds);
        sqlite3_bind_int64(s, 17, r.rate.scaled);
        sqlite3_bind_int64(s, 18, r.amount.scaled);
        rc = sqlite3_step(s);
        sqlite3_reset(s);
        if (rc != SQLITE_DONE) {
            if ((rc & 0xFF) == SQLITE_CONSTRAINT) {
                throw StoreError("the database file " + d.file + ": " + what +
                                 " failed: the record of " + toUtf8(r.entryId) + " on day " +
                                 std::to_string(r.day) + " is there twice (" +
                                 sqlite3_errmsg(d.db) + ")");
            }
            d.fail(what, rc);
        }
    }
    t.commit(what);
}

std::vector<TimeRecord> SqliteStore::load(const Str& user, const Period& period) {
    Impl& d = *impl_;
    Statement& st = user.empty() ? d.loadAll : d.loadUser;
    d.prepare(st, sql::selectPeriod(!user.empty()));
    if (!user.empty()) {
        d.bindText(st.s, 3, user);
    }
    sqlite3_bind_int(st.s, 1, period.first);
    sqlite3_bind_int(st.s, 2, period.last);
    std::vector<TimeRecord> out;
    sqlite3_stmt* s = st.s;
    int rc;
    while ((rc = sqlite3_step(s)) == SQLITE_ROW) {
        TimeRecord& r = out.emplace_back();
        Impl::text(s, 0, r.user);
        Impl::text(s, 1, r.entryId);
        r.occurrenceStart = storedDate(sqlite3_column_int64(s, 2));
        r.day = sqlite3_column_int(s, 3);
        r.start = storedDate(sqlite3_column_int64(s, 4));
        r.end = storedDate(sqlite3_column_int64(s, 5));
        Impl::text(s, 6, r.subject);
        for (std::size_t i = 0; i < kReportLists; ++i) {
            Impl::text(s, 7 + static_cast<int>(i), r.values[i]);
        }
        r.billed = sqlite3_column_int(s, 10) != 0;
        r.allDay = sqlite3_column_int(s, 11) != 0;
        r.isPrivate = sqlite3_column_int(s, 12) != 0;
        r.recurring = sqlite3_column_int(s, 13) != 0;
        r.seconds = sqlite3_column_int64(s, 14);
        r.roundedSeconds = sqlite3_column_int64(s, 15);
        r.rate.scaled = sqlite3_column_int64(s, 16);
        r.amount.scaled = sqlite3_column_int64(s, 17);
    }
    sqlite3_reset(s);
    if (rc != SQLITE_DONE) {
        d.fail("reading the period's records", rc);
    }
    return out;
}

RateTable SqliteStore::entryRates() {
    Impl& d = *impl_;
    Statement q;
    d.prepare(q, sql::kSelectRates);
    RateTable out;
    int rc;
    while ((rc = sqlite3_step(q.s)) == SQLITE_ROW) {
        int list = sqlite3_column_int(q.s, 0);
        if (list >= 1 && list <= static_cast<int>(kReportLists)) {
            Str name;
            Impl::text(q.s, 1, name);
            out[{static_cast<std::size_t>(list - 1), name}] =
                Currency{sqlite3_column_int64(q.s, 2)};
        }
    }
    if (rc != SQLITE_DONE) {
        d.fail("reading the entries' rates", rc);
    }
    return out;
}

void SqliteStore::putEntryRates(const RateTable& rates) {
    Impl& d = *impl_;
    if (d.readOnly) refuseReadOnlyWrite("the database file " + d.file);
    const char* what = "storing the entries' rates";
    Impl::Transaction t(d, what);
    Statement q;
    d.prepare(q, sql::kUpsertRate);
    for (const auto& [key, rate] : rates) {
        sqlite3_bind_int(q.s, 1, storedListNumber(key.first));
        d.bindText(q.s, 2, key.second);
        sqlite3_bind_int64(q.s, 3, rate.scaled);
        int rc = sqlite3_step(q.s);
        sqlite3_reset(q.s);
        if (rc != SQLITE_DONE) {
            d.fail(what, rc);
        }
    }
    t.commit(what);
}

}  // namespace hb::reporting
