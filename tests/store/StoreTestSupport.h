#pragma once
// What the record store tests share: records made from a few values, a
// comparable description of records, a temporary folder, and a fresh
// place in the test server for each test (its own PostgreSQL schema).
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "reporting/RecordStores.h"

namespace hb::reporting::testing {

// A record of `entry` on `day` from `startHour` for `hours`.
TimeRecord record(const Str& entry, DayNumber day, double startHour, double hours,
                  const Str& subject = u"Work", Currency amount = Currency{0});

// One line per record with every stored field (times in whole seconds).
std::vector<std::string> describe(const std::vector<TimeRecord>& records);

// A folder that is removed with everything in it at the end of its scope.
class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    const std::filesystem::path& path() const { return path_; }
    Str file(const char* name) const { return (path_ / name).u16string(); }

  private:
    std::filesystem::path path_;
};

// The test server's connection text (from the file HB_PG_CONNECTION_FILE
// names, which the ctest fixture writes); empty when the variable is not
// set. Fails the test when it is set and the file cannot be read.
Str serverConnection();

// A schema of its own in the test server for one test, dropped at the end:
// connection() reaches the server with that schema as the search path.
class ServerSchema {
  public:
    explicit ServerSchema(const Str& base);
    ~ServerSchema();
    const Str& connection() const { return connection_; }

  private:
    Str base_;
    std::string name_;
    Str connection_;
};

// Runs one statement on the server outside any store (test set-up).
void serverExec(const Str& connection, const std::string& sql);

}  // namespace hb::reporting::testing
