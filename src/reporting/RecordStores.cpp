#include "reporting/RecordStores.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "common/Text.h"
#include "reporting/OdbcStore.h"
#include "reporting/SqliteStore.h"

namespace hb::reporting {

std::unique_ptr<RecordStore> openRecordStore(int choice, const Str& value, StoreAccess access) {
    switch (choice) {
        case kReportChoiceFolder: {
            if (value.empty()) {
                throw StoreError("no report folder is set for the database file");
            }
            Str file = value;
            if (file.back() != u'/' && file.back() != u'\\') {
                file += u'/';
            }
            file += kSqliteFileName;
            return std::make_unique<SqliteStore>(file, SqliteStore::schema(),
                                                 SqliteStore::kBusyTimeoutMs, access);
        }
        case kReportChoiceServer:
            return std::make_unique<OdbcStore>(value, OdbcStore::schema(), access);
        default:
            throw StoreError("report data source " + std::to_string(choice) +
                             " keeps no database (2: a folder, 3: a server connection)");
    }
}

[[noreturn]] void refuseReadOnlyWrite(const std::string& database) {
    throw StoreError(database + " is opened to read only: nothing is written to it");
}

void checkReadOnlyVersion(int version, const std::vector<Migration>& steps,
                          const std::string& database) {
    const int latest = latestVersion(steps);
    if (version > latest) {
        throw StoreError(database + " was made by a newer version of the program (schema " +
                         std::to_string(version) + ", this one knows " + std::to_string(latest) +
                         ")");
    }
    if (version < latest) {
        throw StoreError(database + " has no records of this version yet (schema " +
                         std::to_string(version) + " of " + std::to_string(latest) +
                         "): export a report into it first");
    }
}

namespace sql {

const char* const kRecordColumns =
    "user_name, entry_id, occurrence_start, day, start_time, end_time, subject, value1, value2, "
    "value3, billed, all_day, is_private, recurring, seconds, rounded_seconds, rate, amount";
const char* const kDeletePeriod =
    "DELETE FROM time_records WHERE user_name = ? AND day BETWEEN ? AND ?";
const char* const kSelectRates = "SELECT list_number, entry_name, rate FROM entry_rates";
const char* const kUpsertRate =
    "INSERT INTO entry_rates(list_number, entry_name, rate) VALUES(?, ?, ?)"
    " ON CONFLICT (list_number, lower(entry_name)) DO UPDATE"
    " SET entry_name = excluded.entry_name, rate = excluded.rate";

std::string insertRecords(std::size_t rows) {
    std::string out = std::string("INSERT INTO time_records(") + kRecordColumns + ") VALUES";
    for (std::size_t i = 0; i < rows; ++i) {
        out += i ? ", " : " ";
        out += "(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
    }
    return out;
}

std::string selectPeriod(bool oneUser) {
    // The indexes hold this order, so that neither database sorts.
    return std::string("SELECT ") + kRecordColumns +
           " FROM time_records WHERE day BETWEEN ? AND ?" + (oneUser ? " AND user_name = ?" : "") +
           " ORDER BY day, start_time, user_name, entry_id, occurrence_start";
}

}  // namespace sql

const std::vector<Migration>& recordSchema() {
    static const std::vector<Migration> steps{
        {1,
         {"CREATE TABLE time_records("
          " user_name text NOT NULL, entry_id text NOT NULL,"
          " occurrence_start bigint NOT NULL, day integer NOT NULL,"
          " start_time bigint NOT NULL, end_time bigint NOT NULL,"
          " subject text NOT NULL DEFAULT '',"
          " value1 text NOT NULL DEFAULT '', value2 text NOT NULL DEFAULT '',"
          " value3 text NOT NULL DEFAULT '',"
          " billed integer NOT NULL DEFAULT 0 CHECK (billed IN (0, 1)),"
          " all_day integer NOT NULL DEFAULT 0 CHECK (all_day IN (0, 1)),"
          " is_private integer NOT NULL DEFAULT 0 CHECK (is_private IN (0, 1)),"
          " recurring integer NOT NULL DEFAULT 0 CHECK (recurring IN (0, 1)),"
          " seconds bigint NOT NULL DEFAULT 0, rounded_seconds bigint NOT NULL DEFAULT 0,"
          " rate bigint NOT NULL DEFAULT 0, amount bigint NOT NULL DEFAULT 0,"
          " PRIMARY KEY (user_name, entry_id, occurrence_start, day))",
          "CREATE INDEX time_records_by_user_day"
          " ON time_records(user_name, day, start_time, entry_id, occurrence_start)",
          "CREATE INDEX time_records_by_day"
          " ON time_records(day, start_time, user_name, entry_id, occurrence_start)",
          "CREATE TABLE entry_rates("
          " list_number integer NOT NULL CHECK (list_number BETWEEN 1 AND 3),"
          " entry_name text NOT NULL, rate bigint NOT NULL)",
          "CREATE UNIQUE INDEX entry_rates_by_name ON entry_rates(list_number, "
          "lower(entry_name))"}},
    };
    return steps;
}

int latestVersion(const std::vector<Migration>& migrations) {
    int v = 0;
    for (const auto& m : migrations) {
        v = std::max(v, m.version);
    }
    return v;
}

int applyMigrations(int current, const std::vector<Migration>& steps, const std::string& database,
                    const ExecSql& exec) {
    const int latest = latestVersion(steps);
    if (current > latest) {
        throw StoreError(database + " has schema version " + std::to_string(current) +
                         ", made by a newer Hourbook (this one knows " + std::to_string(latest) +
                         ")");
    }
    if (current == latest) {
        return current;
    }
    for (const auto& m : steps) {
        if (m.version > current) {
            for (const auto& sql : m.statements) {
                exec(sql, "migrating the schema to version " + std::to_string(m.version));
            }
        }
    }
    exec("DELETE FROM schema_version", "writing the schema version");
    exec("INSERT INTO schema_version(version) VALUES(" + std::to_string(latest) + ")",
         "writing the schema version");
    return latest;
}

std::int64_t storedSeconds(Date d) {
    return std::llround(d.days * 86400.0);
}

Date storedDate(std::int64_t seconds) {
    return Date{static_cast<double>(seconds) / 86400.0};
}

void checkPeriodRecords(const Str& user, const Period& period,
                        const std::vector<TimeRecord>& records) {
    if (user.empty()) {
        throw StoreError("the records to store name no user");
    }
    for (const auto& r : records) {
        if (!period.contains(r.day)) {
            throw StoreError("a record of day " + std::to_string(r.day) +
                             " lies outside the period " + std::to_string(period.first) + ".." +
                             std::to_string(period.last) + " it was to be stored with");
        }
    }
}

std::optional<Currency> entryRate(const RateTable& rates, std::size_t list, StrView name) {
    if (auto it = rates.find({list, Str(name)}); it != rates.end()) {
        return it->second;
    }
    // Tables are short (the entries someone gave a rate of their own).
    for (auto it = rates.lower_bound({list, Str()}); it != rates.end() && it->first.first == list;
         ++it) {
        if (text::equalsNoCase(it->first.second, name)) {
            return it->second;
        }
    }
    return std::nullopt;
}

int storedListNumber(std::size_t list) {
    if (list >= kReportLists) {
        throw StoreError("a rate names list " + std::to_string(list + 1) + "; there are " +
                         std::to_string(kReportLists));
    }
    return static_cast<int>(list) + 1;
}

}  // namespace hb::reporting
