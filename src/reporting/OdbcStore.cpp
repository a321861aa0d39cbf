#include "reporting/OdbcStore.h"

// The ODBC headers: unixODBC's natively, Windows' (which need its types
// declared first) in the Windows build.
#ifdef _WIN32
#include "platform/win32/OdbcApi.h"
#else
#include <sql.h>
#include <sqlext.h>
#endif

#include <algorithm>
#include <deque>
#include <memory>
#include <string>

namespace hb::reporting {

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t), "ODBC's wide texts must be UTF-16");

namespace {

// Serialises the connections that bring the schema up to date (any number
// unique to this program would do).
constexpr long long kMigrationLock = 0x48425354;  // "HBST"

// Rows one INSERT carries (18 parameters each; PostgreSQL takes up to 65535).
constexpr std::size_t kRowsPerInsert = 200;

SQLWCHAR* wide(Str& s) {
    return reinterpret_cast<SQLWCHAR*>(s.data());
}

bool ok(SQLRETURN rc) {
    return rc == SQL_SUCCESS || rc == SQL_SUCCESS_WITH_INFO;
}

// The diagnostic records of a handle: "SQLSTATE message; ..." and the first state.
std::string diagnostics(SQLSMALLINT type, SQLHANDLE handle, std::string* firstState = nullptr) {
    std::string out;
    for (SQLSMALLINT i = 1; i <= 5; ++i) {
        char16_t state[6] = {};
        char16_t msg[1024] = {};
        SQLINTEGER native = 0;
        SQLSMALLINT len = 0;
        SQLRETURN rc = SQLGetDiagRecW(type, handle, i, reinterpret_cast<SQLWCHAR*>(state), &native,
                                      reinterpret_cast<SQLWCHAR*>(msg), 1023, &len);
        if (!ok(rc)) {
            break;
        }
        std::string s = toUtf8(Str(state, 5));
        if (i == 1 && firstState) {
            *firstState = s;
        }
        if (!out.empty()) {
            out += "; ";
        }
        std::string text = toUtf8(Str(msg, static_cast<std::size_t>(std::max<SQLSMALLINT>(
                                               0, std::min<SQLSMALLINT>(len, 1023)))));
        while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) {
            text.pop_back();
        }
        out += s + " " + text;
    }
    return out.empty() ? "no details from the driver" : out;
}

}  // namespace

struct OdbcStore::Impl {
    SQLHENV env = SQL_NULL_HENV;
    SQLHDBC dbc = SQL_NULL_HDBC;
    bool connected = false;
    std::string where;  // the connection text without password, for messages
    int version = 0;
    bool readOnly = false;

    ~Impl() {
        if (connected) {
            SQLEndTran(SQL_HANDLE_DBC, dbc, SQL_ROLLBACK);
            SQLDisconnect(dbc);
        }
        if (dbc != SQL_NULL_HDBC) {
            SQLFreeHandle(SQL_HANDLE_DBC, dbc);
        }
        if (env != SQL_NULL_HENV) {
            SQLFreeHandle(SQL_HANDLE_ENV, env);
        }
    }

    [[noreturn]] void fail(const std::string& what, SQLSMALLINT type, SQLHANDLE h) const {
        throw StoreError("the server database (" + where + "): " + what +
                         " failed: " + diagnostics(type, h));
    }

    // One statement with its parameters, which must stay where they are
    // until it has run.
    struct Stmt {
        Impl& impl;
        SQLHSTMT h = SQL_NULL_HSTMT;
        std::deque<Str> texts;
        std::deque<SQLBIGINT> ints;
        std::deque<SQLLEN> lengths;
        SQLUSMALLINT next = 1;

        Stmt(Impl& i, const std::string& sql) : impl(i) {
            if (!ok(SQLAllocHandle(SQL_HANDLE_STMT, impl.dbc, &h))) {
                impl.fail("making a statement", SQL_HANDLE_DBC, impl.dbc);
            }
            Str text = fromUtf8(sql);
            if (!ok(SQLPrepareW(h, wide(text), SQL_NTS))) {
                impl.fail("preparing \"" + sql.substr(0, 60) + "\"", SQL_HANDLE_STMT, h);
            }
        }
        ~Stmt() { SQLFreeHandle(SQL_HANDLE_STMT, h); }
        Stmt(const Stmt&) = delete;
        Stmt& operator=(const Stmt&) = delete;

        void clear() {
            SQLFreeStmt(h, SQL_CLOSE);
            SQLFreeStmt(h, SQL_RESET_PARAMS);
            texts.clear();
            ints.clear();
            lengths.clear();
            next = 1;
        }
        Stmt& text(const Str& v) {
            Str& s = texts.emplace_back(v);
            SQLLEN& len = lengths.emplace_back(static_cast<SQLLEN>(s.size() * sizeof(char16_t)));
            SQLBindParameter(h, next++, SQL_PARAM_INPUT, SQL_C_WCHAR, SQL_WVARCHAR,
                             std::max<SQLULEN>(s.size(), 1), 0, wide(s), len, &len);
            return *this;
        }
        Stmt& integer(long long v) {
            SQLBIGINT& x = ints.emplace_back(v);
            SQLLEN& len = lengths.emplace_back(0);
            SQLBindParameter(h, next++, SQL_PARAM_INPUT, SQL_C_SBIGINT, SQL_BIGINT, 0, 0, &x, 0,
                             &len);
            return *this;
        }
        void run(const std::string& what) {
            SQLRETURN rc = SQLExecute(h);
            if (!ok(rc) && rc != SQL_NO_DATA) {
                impl.fail(what, SQL_HANDLE_STMT, h);
            }
        }
        bool fetch(const std::string& what) {
            SQLRETURN rc = SQLFetch(h);
            if (rc == SQL_NO_DATA) {
                return false;
            }
            if (!ok(rc)) {
                impl.fail(what, SQL_HANDLE_STMT, h);
            }
            return true;
        }
        long long getInteger(SQLUSMALLINT col) {
            SQLBIGINT v = 0;
            SQLLEN ind = 0;
            if (!ok(SQLGetData(h, col, SQL_C_SBIGINT, &v, 0, &ind))) {
                impl.fail("reading a number", SQL_HANDLE_STMT, h);
            }
            return ind == SQL_NULL_DATA ? 0 : v;
        }
        Str getText(SQLUSMALLINT col) {
            Str out;
            char16_t buf[512];
            for (;;) {
                SQLLEN ind = 0;
                SQLRETURN rc = SQLGetData(h, col, SQL_C_WCHAR, buf, sizeof buf, &ind);
                if (rc == SQL_NO_DATA || ind == SQL_NULL_DATA) {
                    break;
                }
                if (!ok(rc)) {
                    impl.fail("reading a text", SQL_HANDLE_STMT, h);
                }
                // Truncated: the buffer is full but for the terminator.
                std::size_t got = (ind == SQL_NO_TOTAL || ind >= static_cast<SQLLEN>(sizeof buf))
                                      ? std::size(buf) - 1
                                      : static_cast<std::size_t>(ind) / sizeof(char16_t);
                out.append(buf, got);
                if (rc == SQL_SUCCESS) {
                    break;
                }
            }
            return out;
        }
    };

    void commit(const std::string& what) {
        if (!ok(SQLEndTran(SQL_HANDLE_DBC, dbc, SQL_COMMIT))) {
            fail(what, SQL_HANDLE_DBC, dbc);
        }
    }
    void rollback() { SQLEndTran(SQL_HANDLE_DBC, dbc, SQL_ROLLBACK); }

    // Rolls back the open transaction unless committed.
    struct Transaction {
        Impl& impl;
        bool done = false;
        explicit Transaction(Impl& i) : impl(i) {}
        void commit(const std::string& what) {
            impl.commit(what);
            done = true;
        }
        ~Transaction() {
            if (!done) {
                impl.rollback();
            }
        }
    };

    void exec(const std::string& sql, const std::string& what) {
        Stmt s(*this, sql);
        s.run(what);
    }

    // The schema version, read in a transaction that is rolled back: a
    // read-only store sends nothing but SELECTs.
    void checkVersion(const std::vector<Migration>& steps) {
        Transaction t(*this);
        Stmt q(*this, "SELECT coalesce(max(version), 0) FROM schema_version");
        q.run("reading the schema version");
        version = q.fetch("reading the schema version") ? static_cast<int>(q.getInteger(1)) : 0;
        q.clear();
        checkReadOnlyVersion(version, steps, "the server database (" + where + ")");
    }

    void migrate(const std::vector<Migration>& steps) {
        Transaction t(*this);
        exec("SELECT pg_advisory_xact_lock(" + std::to_string(kMigrationLock) + ")",
             "waiting for another program bringing the schema up to date");
        exec("CREATE TABLE IF NOT EXISTS schema_version(version integer NOT NULL)",
             "making the schema version table");
        Stmt q(*this, "SELECT coalesce(max(version), 0) FROM schema_version");
        q.run("reading the schema version");
        const int current =
            q.fetch("reading the schema version") ? static_cast<int>(q.getInteger(1)) : 0;
        q.clear();
        version = applyMigrations(
            current, steps, "the server database (" + where + ")",
            [this](const std::string& sql, const std::string& what) { exec(sql, what); });
        t.commit("bringing the schema up to date");
    }
};

const std::vector<Migration>& OdbcStore::schema() {
    return recordSchema();
}

Str OdbcStore::withoutPassword(const Str& connection) {
    Str out;
    std::size_t i = 0;
    while (i < connection.size()) {
        std::size_t end = connection.find(u';', i);
        // A braced value may hold semicolons.
        std::size_t eq = connection.find(u'=', i);
        if (eq != Str::npos && (end == Str::npos || eq < end) && eq + 1 < connection.size() &&
            connection[eq + 1] == u'{') {
            std::size_t close = connection.find(u'}', eq + 1);
            end = close == Str::npos ? Str::npos : connection.find(u';', close);
        }
        Str part = connection.substr(i, end == Str::npos ? Str::npos : end - i);
        Str key = part.substr(0, part.find(u'='));
        Str lower;
        for (char16_t c : key) {
            if (c != u' ') {
                lower += (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
            }
        }
        if ((lower == u"pwd" || lower == u"password") && part.find(u'=') != Str::npos) {
            part = key + u"=***";
        }
        out += part;
        if (end == Str::npos) {
            break;
        }
        out += u';';
        i = end + 1;
    }
    return out;
}

OdbcStore::OdbcStore(const Str& connection, const std::vector<Migration>& migrations,
                     StoreAccess access)
    : impl_(std::make_unique<Impl>()) {
    Impl& d = *impl_;
    d.readOnly = access == StoreAccess::ReadOnly;
    d.where = toUtf8(withoutPassword(connection));
    if (connection.find_first_not_of(u" \t\r\n") == Str::npos) {
        throw StoreError("no connection text is set for the server database");
    }
    if (!ok(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &d.env)) ||
        !ok(SQLSetEnvAttr(d.env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3),
                          0)) ||
        !ok(SQLAllocHandle(SQL_HANDLE_DBC, d.env, &d.dbc))) {
        throw StoreError("the ODBC driver manager could not be used");
    }
    SQLSetConnectAttrW(d.dbc, SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(10), 0);
    // The connection text ends at its first line: HourbookConnection.txt may
    // end with a line break.
    Str text = connection.substr(0, connection.find_first_of(u"\r\n"));
    char16_t out[1024] = {};
    SQLSMALLINT outLen = 0;
    SQLRETURN rc =
        SQLDriverConnectW(d.dbc, nullptr, wide(text), SQL_NTS, reinterpret_cast<SQLWCHAR*>(out),
                          1023, &outLen, SQL_DRIVER_NOPROMPT);
    if (!ok(rc)) {
        std::string state;
        std::string detail = diagnostics(SQL_HANDLE_DBC, d.dbc, &state);
        std::string why;
        if (state.rfind("IM", 0) == 0 || detail.find("Can't open lib") != std::string::npos ||
            detail.find("not found") != std::string::npos) {
            why = "the ODBC driver or data source it names is not installed";
        } else if (state.rfind("28", 0) == 0 ||
                   detail.find("authentication") != std::string::npos ||
                   detail.find("role") != std::string::npos) {
            why = "the server refused the login";
        } else {
            why = "cannot reach the database server";
        }
        throw StoreError(why + " (" + d.where + "): " + detail);
    }
    d.connected = true;
    if (!ok(SQLSetConnectAttrW(d.dbc, SQL_ATTR_AUTOCOMMIT,
                               reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF),
                               SQL_IS_UINTEGER))) {
        d.fail("turning to manual commit", SQL_HANDLE_DBC, d.dbc);
    }
    if (d.readOnly) {
        // A hint the driver passes on (PostgreSQL: a read-only transaction);
        // the store sends only SELECTs either way.
        SQLSetConnectAttrW(d.dbc, SQL_ATTR_ACCESS_MODE,
                           reinterpret_cast<SQLPOINTER>(SQL_MODE_READ_ONLY), SQL_IS_UINTEGER);
        d.checkVersion(migrations);
        return;
    }
    d.migrate(migrations);
}

OdbcStore::~OdbcStore() = default;

int OdbcStore::schemaVersion() {
    return impl_->version;
}

void OdbcStore::replacePeriod(const Str& user, const Period& period,
                              const std::vector<TimeRecord>& records) {
    if (impl_->readOnly) refuseReadOnlyWrite("the server database (" + impl_->where + ")");
    checkPeriodRecords(user, period, records);
    Impl& d = *impl_;
    const std::string what = "storing the period's records";
    Impl::Transaction t(d);
    // One export per user at a time: a second one waits and then replaces
    // what the first stored, instead of both deleting and both inserting.
    Impl::Stmt lock(d, "SELECT pg_advisory_xact_lock(1, hashtext(?))");
    lock.text(user).run(what);
    Impl::Stmt del(d, sql::kDeletePeriod);
    del.text(user).integer(period.first).integer(period.last).run(what);
    // Many rows per statement: each statement is a round trip to the server.
    std::unique_ptr<Impl::Stmt> full, rest;
    for (std::size_t first = 0; first < records.size(); first += kRowsPerInsert) {
        const std::size_t rows = std::min(kRowsPerInsert, records.size() - first);
        auto& ins = rows == kRowsPerInsert ? full : rest;
        if (!ins) {
            ins = std::make_unique<Impl::Stmt>(d, sql::insertRecords(rows));
        }
        ins->clear();
        for (std::size_t i = first; i < first + rows; ++i) {
            const TimeRecord& r = records[i];
            ins->text(user)
                .text(r.entryId)
                .integer(storedSeconds(r.occurrenceStart))
                .integer(r.day)
                .integer(storedSeconds(r.start))
                .integer(storedSeconds(r.end))
                .text(r.subject)
                .text(r.values[0])
                .text(r.values[1])
                .text(r.values[2])
                .integer(r.billed)
                .integer(r.allDay)
                .integer(r.isPrivate)
                .integer(r.recurring)
                .integer(r.seconds)
                .integer(r.roundedSeconds)
                .integer(r.rate.scaled)
                .integer(r.amount.scaled);
        }
        ins->run(what + " (records " + std::to_string(first + 1) + " to " +
                 std::to_string(first + rows) + ")");
    }
    t.commit(what);
}

std::vector<TimeRecord> OdbcStore::load(const Str& user, const Period& period) {
    Impl& d = *impl_;
    const std::string what = "reading the period's records";
    Impl::Transaction t(d);
    Impl::Stmt q(d, sql::selectPeriod(!user.empty()));
    q.integer(period.first).integer(period.last);
    if (!user.empty()) {
        q.text(user);
    }
    q.run(what);
    std::vector<TimeRecord> out;
    while (q.fetch(what)) {
        TimeRecord r;
        r.user = q.getText(1);
        r.entryId = q.getText(2);
        r.occurrenceStart = storedDate(q.getInteger(3));
        r.day = static_cast<DayNumber>(q.getInteger(4));
        r.start = storedDate(q.getInteger(5));
        r.end = storedDate(q.getInteger(6));
        r.subject = q.getText(7);
        for (std::size_t i = 0; i < kReportLists; ++i) {
            r.values[i] = q.getText(static_cast<SQLUSMALLINT>(8 + i));
        }
        r.billed = q.getInteger(11) != 0;
        r.allDay = q.getInteger(12) != 0;
        r.isPrivate = q.getInteger(13) != 0;
        r.recurring = q.getInteger(14) != 0;
        r.seconds = q.getInteger(15);
        r.roundedSeconds = q.getInteger(16);
        r.rate.scaled = q.getInteger(17);
        r.amount.scaled = q.getInteger(18);
        out.push_back(std::move(r));
    }
    t.commit(what);
    return out;
}

RateTable OdbcStore::entryRates() {
    Impl& d = *impl_;
    const std::string what = "reading the entries' rates";
    Impl::Transaction t(d);
    Impl::Stmt q(d, sql::kSelectRates);
    q.run(what);
    RateTable out;
    while (q.fetch(what)) {
        long long list = q.getInteger(1);
        Str name = q.getText(2);
        long long rate = q.getInteger(3);
        if (list >= 1 && list <= static_cast<long long>(kReportLists)) {
            out[{static_cast<std::size_t>(list - 1), name}] = Currency{rate};
        }
    }
    t.commit(what);
    return out;
}

void OdbcStore::putEntryRates(const RateTable& rates) {
    Impl& d = *impl_;
    if (d.readOnly) refuseReadOnlyWrite("the server database (" + d.where + ")");
    const std::string what = "storing the entries' rates";
    Impl::Transaction t(d);
    Impl::Stmt q(d, sql::kUpsertRate);
    for (const auto& [key, rate] : rates) {
        q.clear();
        q.integer(storedListNumber(key.first)).text(key.second).integer(rate.scaled).run(what);
    }
    t.commit(what);
}

}  // namespace hb::reporting
