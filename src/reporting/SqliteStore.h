#pragma once
// The record store in an SQLite database file (report choice 2): WAL
// journal, each export one BEGIN IMMEDIATE transaction that waits up to 10 s
// for another writer, so that people exporting to one file at once all get
// through and nothing is lost or doubled.
#include <filesystem>
#include <memory>
#include <vector>

#include "reporting/RecordStores.h"

namespace hb::reporting {

class SqliteStore : public RecordStore {
  public:
    static constexpr int kBusyTimeoutMs = 10000;

    // Opens the database file (creating it when missing) and brings its
    // schema up to date with `migrations`. Raises StoreError: the folder
    // does not exist, the file is read-only or not a database, the file was
    // made by a newer schema, a migration failed (the file is then as it was).
    // `busyMs` is how long a write waits for another writer (10 s).
    // With StoreAccess::ReadOnly the file must exist and is opened read-only
    // (nothing written, not even the journal mode; see StoreAccess).
    explicit SqliteStore(const Str& file, const std::vector<Migration>& migrations = schema(),
                         int busyMs = kBusyTimeoutMs, StoreAccess access = StoreAccess::ReadWrite);
    ~SqliteStore() override;
    SqliteStore(const SqliteStore&) = delete;
    SqliteStore& operator=(const SqliteStore&) = delete;

    int schemaVersion() override;
    void replacePeriod(const Str& user, const Period& period,
                       const std::vector<TimeRecord>& records) override;
    std::vector<TimeRecord> load(const Str& user, const Period& period) override;
    RateTable entryRates() override;
    void putEntryRates(const RateTable& rates) override;

    // The schema's steps (recordSchema()).
    static const std::vector<Migration>& schema();

  private:
    void openReadOnly(const std::filesystem::file_status& st,
                      const std::vector<Migration>& migrations);
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace hb::reporting
