#include "reporting/RecordStores.h"

#include <algorithm>
#include <cmath>

#include "common/Text.h"
#include "reporting/OdbcStore.h"
#include "reporting/SqliteStore.h"

namespace hb::reporting {

std::unique_ptr<RecordStore> openRecordStore(int choice, const Str& value) {
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
            return std::make_unique<SqliteStore>(file);
        }
        case kReportChoiceServer:
            return std::make_unique<OdbcStore>(value);
        default:
            throw StoreError("report data source " + std::to_string(choice) +
                             " keeps no database (2: a folder, 3: a server connection)");
    }
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
