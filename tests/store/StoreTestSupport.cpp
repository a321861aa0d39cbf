#include "StoreTestSupport.h"

#include <sql.h>
#include <sqlext.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace hb::reporting::testing {

TimeRecord record(const Str& entry, DayNumber day, double startHour, double hours,
                  const Str& subject, Currency amount) {
    TimeRecord r;
    r.entryId = entry;
    r.day = day;
    r.occurrenceStart = Date{day + startHour / 24.0};
    r.start = r.occurrenceStart;
    r.end = Date{day + (startHour + hours) / 24.0};
    r.subject = subject;
    r.seconds = static_cast<std::int64_t>(hours * 3600);
    r.roundedSeconds = r.seconds;
    r.amount = amount;
    return r;
}

std::vector<std::string> describe(const std::vector<TimeRecord>& records) {
    std::vector<std::string> out;
    for (const auto& r : records) {
        std::ostringstream s;
        s << toUtf8(r.user) << '|' << toUtf8(r.entryId) << '|' << storedSeconds(r.occurrenceStart)
          << '|' << r.day << '|' << storedSeconds(r.start) << '|' << storedSeconds(r.end) << '|'
          << toUtf8(r.subject) << '|' << toUtf8(r.values[0]) << '|' << toUtf8(r.values[1]) << '|'
          << toUtf8(r.values[2]) << '|' << r.billed << r.allDay << r.isPrivate << r.recurring << '|'
          << r.seconds << '|' << r.roundedSeconds << '|' << r.rate.scaled << '|' << r.amount.scaled;
        out.push_back(s.str());
    }
    return out;
}

TempFolder::TempFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "hb-store-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        throw std::runtime_error("mkdtemp failed");
    }
    path_ = pattern;
}

TempFolder::~TempFolder() {
    std::error_code ec;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ec);
    std::filesystem::remove_all(path_, ec);
}

Str serverConnection() {
    const char* file = std::getenv("HB_PG_CONNECTION_FILE");
    if (!file || !*file) {
        return {};
    }
    std::ifstream in(file);
    std::string line;
    if (!in || !std::getline(in, line) || line.empty()) {
        ADD_FAILURE() << "HB_PG_CONNECTION_FILE=" << file
                      << " names no readable connection text (did the server start?)";
        return {};
    }
    return fromUtf8(line);
}

void serverExec(const Str& connection, const std::string& sql) {
    SQLHENV env = SQL_NULL_HENV;
    SQLHDBC dbc = SQL_NULL_HDBC;
    SQLHSTMT st = SQL_NULL_HSTMT;
    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env);
    SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    SQLAllocHandle(SQL_HANDLE_DBC, env, &dbc);
    Str conn = connection;
    Str text = fromUtf8(sql);
    bool ok =
        SQL_SUCCEEDED(SQLDriverConnectW(dbc, nullptr, reinterpret_cast<SQLWCHAR*>(conn.data()),
                                        SQL_NTS, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT));
    if (ok) {
        SQLAllocHandle(SQL_HANDLE_STMT, dbc, &st);
        ok = SQL_SUCCEEDED(SQLExecDirectW(st, reinterpret_cast<SQLWCHAR*>(text.data()), SQL_NTS));
        SQLFreeHandle(SQL_HANDLE_STMT, st);
        SQLDisconnect(dbc);
    }
    SQLFreeHandle(SQL_HANDLE_DBC, dbc);
    SQLFreeHandle(SQL_HANDLE_ENV, env);
    if (!ok) {
        throw std::runtime_error("the test server did not run: " + sql);
    }
}

ServerSchema::ServerSchema(const Str& base) : base_(base) {
    static std::atomic<int> counter{0};
    name_ = "t_" + std::to_string(getpid()) + "_" + std::to_string(++counter);
    serverExec(base_, "DROP SCHEMA IF EXISTS " + name_ + " CASCADE");
    serverExec(base_, "CREATE SCHEMA " + name_);
    Str sep = (!base_.empty() && base_.back() != u';') ? u";" : u"";
    connection_ = base_ + sep + u"ConnSettings={SET search_path TO " + fromUtf8(name_) + u"};";
}

ServerSchema::~ServerSchema() {
    try {
        serverExec(base_, "DROP SCHEMA IF EXISTS " + name_ + " CASCADE");
    } catch (...) {
    }
}

}  // namespace hb::reporting::testing

// psqlODBC keeps a few hundred bytes of a statement that failed to prepare
// past its release; that is the driver's, not the store's.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:psqlodbcw.so\n";
}
