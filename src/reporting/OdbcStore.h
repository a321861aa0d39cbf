#pragma once
// The record store in a shared server database reached through ODBC (report
// choice 3): a workgroup's members export into one database and report
// across it. The server is PostgreSQL (its advisory locks serialise
// migrations and each user's exports). Only the ODBC functions with the W suffix
// are called (texts are UTF-16 throughout; Wine's odbc32 has no A functions).
#include <memory>
#include <vector>

#include "reporting/RecordStores.h"

namespace hb::reporting {

class OdbcStore : public RecordStore {
  public:
    // Connects with the ODBC connection text (the content of
    // HourbookConnection.txt, e.g. "Driver={PostgreSQL Unicode};
    // Server=127.0.0.1;Port=5432;Database=hourbook;Uid=hb;") and brings the
    // schema up to date. Raises StoreError: no driver, the server cannot be
    // reached, the login is refused, a newer schema, a failed migration.
    // With StoreAccess::ReadOnly the connection is set to read-only mode and
    // only SELECTs are sent (no migration, each read rolled back).
    explicit OdbcStore(const Str& connection, const std::vector<Migration>& migrations = schema(),
                       StoreAccess access = StoreAccess::ReadWrite);
    ~OdbcStore() override;
    OdbcStore(const OdbcStore&) = delete;
    OdbcStore& operator=(const OdbcStore&) = delete;

    int schemaVersion() override;
    void replacePeriod(const Str& user, const Period& period,
                       const std::vector<TimeRecord>& records) override;
    std::vector<TimeRecord> load(const Str& user, const Period& period) override;
    RateTable entryRates() override;
    void putEntryRates(const RateTable& rates) override;

    // The schema's steps (recordSchema()).
    static const std::vector<Migration>& schema();

    // The connection text as messages may show it: a password's value
    // (Pwd=, Password=) replaced by "***".
    static Str withoutPassword(const Str& connection);

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace hb::reporting
