// The record stores in the Windows build under Wine: an SQLite file in a
// folder whose name has a space and non-ASCII letters, Windows' own
// read-only attribute, two processes exporting to one file at once, and the
// PostgreSQL test server reached through Wine's odbc32 (which hands the
// calls to the host's unixODBC and psqlODBC).
//
// The program is also its own second process: started with
// --hb-store-writer, it exports the period HB_STORE_ROUNDS times for
// HB_STORE_USER to the store of HB_STORE_CHOICE and HB_STORE_VALUE.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "reporting/RecordStores.h"

namespace hb::reporting {
namespace {

namespace fs = std::filesystem;

const Period kWeek{45000, 45006};

std::vector<TimeRecord> batch(int round, int perRound) {
    std::vector<TimeRecord> out;
    for (int i = 0; i < perRound - round % 3; ++i) {
        TimeRecord r;
        r.entryId = u"E" + toStr(i);
        r.day = kWeek.first + i % 7;
        r.occurrenceStart = r.start = Date{r.day + (8 + (i / 7) % 10) / 24.0};
        r.end = Date{r.start.days + 0.5 / 24};
        r.subject = u"M\u00f6te \u4f1a\u8bae";
        r.seconds = r.roundedSeconds = 1800;
        out.push_back(r);
    }
    return out;
}

Str env(const wchar_t* name) {
    wchar_t buf[2048];
    DWORD n = GetEnvironmentVariableW(name, buf, 2048);
    if (n == 0 || n >= 2048) {
        return {};
    }
    return Str(reinterpret_cast<const char16_t*>(buf), n);
}

// The child's part: returns the process's exit code.
int writer() {
    try {
        int choice = std::stoi(toUtf8(env(L"HB_STORE_CHOICE")));
        int rounds = std::stoi(toUtf8(env(L"HB_STORE_ROUNDS")));
        int perRound = std::stoi(toUtf8(env(L"HB_STORE_PER_ROUND")));
        auto store = openRecordStore(choice, env(L"HB_STORE_VALUE"));
        for (int round = 0; round < rounds; ++round) {
            store->replacePeriod(env(L"HB_STORE_USER"), kWeek, batch(round, perRound));
        }
        return 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "writer: %s\n", e.what());
        return 1;
    }
}

// Starts this program as a writer for each user at once and waits for all.
void runWriters(int choice, const Str& value, const std::vector<Str>& users, int rounds,
                int perRound) {
    wchar_t self[MAX_PATH];
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    SetEnvironmentVariableW(L"HB_STORE_CHOICE", std::to_wstring(choice).c_str());
    SetEnvironmentVariableW(L"HB_STORE_VALUE", reinterpret_cast<const wchar_t*>(value.c_str()));
    SetEnvironmentVariableW(L"HB_STORE_ROUNDS", std::to_wstring(rounds).c_str());
    SetEnvironmentVariableW(L"HB_STORE_PER_ROUND", std::to_wstring(perRound).c_str());
    std::vector<PROCESS_INFORMATION> children;
    for (const auto& user : users) {
        SetEnvironmentVariableW(L"HB_STORE_USER", reinterpret_cast<const wchar_t*>(user.c_str()));
        std::wstring cmd = L"\"" + std::wstring(self) + L"\" --hb-store-writer";
        STARTUPINFOW si{};
        si.cb = sizeof si;
        PROCESS_INFORMATION pi{};
        ASSERT_TRUE(CreateProcessW(self, cmd.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                   &si, &pi))
            << GetLastError();
        children.push_back(pi);
    }
    for (auto& pi : children) {
        EXPECT_EQ(WaitForSingleObject(pi.hProcess, 110000), WAIT_OBJECT_0);
        DWORD code = 99;
        GetExitCodeProcess(pi.hProcess, &code);
        EXPECT_EQ(code, 0u) << "a writer failed";
        CloseHandle(pi.hProcess);
        CloseHandle(pi.hThread);
    }
}

class TempFolder {
  public:
    TempFolder() {
        path_ = fs::temp_directory_path() /
                (u"hb store \u00e5r " + toStr(static_cast<long long>(GetCurrentProcessId())));
        fs::create_directories(path_);
    }
    ~TempFolder() {
        std::error_code ec;
        for (const auto& e : fs::recursive_directory_iterator(path_, ec)) {
            SetFileAttributesW(e.path().c_str(), FILE_ATTRIBUTE_NORMAL);
        }
        fs::remove_all(path_, ec);
    }
    Str folder() const { return path_.u16string(); }

  private:
    fs::path path_;
};

// Exports a batch with one record of non-ASCII texts and money twice, then
// reads it back through a second connection: nothing doubled, every unit
// of the texts and the money as written.
void expectRoundTrip(int choice, const Str& value, const Str& user) {
    auto records = batch(0, 20);
    records[3].values = {u"\u00c5ngstr\u00f6m", u"", u"\u6771\u4eac"};
    records[3].rate = Currency{955000};
    records[3].amount = Currency{123456789};
    {
        auto store = openRecordStore(choice, value);
        EXPECT_EQ(store->schemaVersion(), 1);
        store->replacePeriod(user, kWeek, records);
        store->replacePeriod(user, kWeek, records);
    }
    auto loaded = openRecordStore(choice, value)->load(user, kWeek);
    ASSERT_EQ(loaded.size(), records.size());
    auto r = std::find_if(loaded.begin(), loaded.end(),
                          [](const TimeRecord& x) { return x.entryId == u"E3"; });
    ASSERT_NE(r, loaded.end());
    EXPECT_EQ(r->user, user);
    EXPECT_EQ(r->values, records[3].values);
    EXPECT_EQ(r->subject, u"M\u00f6te \u4f1a\u8bae");
    EXPECT_EQ(r->rate.scaled, 955000);
    EXPECT_EQ(r->amount.scaled, 123456789);
}

TEST(WineSqliteStore, AFileInAFolderWithSpacesAndLettersRoundTripsUtf16) {
    TempFolder tmp;
    expectRoundTrip(kReportChoiceFolder, tmp.folder(), u"J\u00f6rg");
    EXPECT_TRUE(fs::exists(fs::path(tmp.folder()) / u"Hourbook.sqlite"));
}

TEST(WineSqliteStore, WindowsReadOnlyAttributeIsAStoreError) {
    TempFolder tmp;
    { openRecordStore(kReportChoiceFolder, tmp.folder()); }
    const fs::path file = fs::path(tmp.folder()) / u"Hourbook.sqlite";
    ASSERT_TRUE(SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY));
    try {
        openRecordStore(kReportChoiceFolder, tmp.folder());
        FAIL() << "a read-only file was opened for export";
    } catch (const StoreError& e) {
        EXPECT_NE(std::string(e.what()).find("read-only"), std::string::npos) << e.what();
    }
    EXPECT_THROW(openRecordStore(kReportChoiceFolder, tmp.folder() + u"\\missing"), StoreError);
}

TEST(WineSqliteStore, TwoProcessesExportingToOneFileLoseAndDoubleNothing) {
    TempFolder tmp;
    const int rounds = 20, perRound = 300;
    runWriters(kReportChoiceFolder, tmp.folder(), {u"anna", u"bert"}, rounds, perRound);
    auto store = openRecordStore(kReportChoiceFolder, tmp.folder());
    const auto last = batch(rounds - 1, perRound).size();
    EXPECT_EQ(store->load(u"anna", kWeek).size(), last);
    EXPECT_EQ(store->load(u"bert", kWeek).size(), last);
    EXPECT_EQ(store->load(u"", kWeek).size(), 2 * last);
}

// The test server's connection text: the file HB_PG_CONNECTION_FILE names
// (the ctest fixture writes it).
Str serverConnection() {
    Str file = env(L"HB_PG_CONNECTION_FILE");
    if (file.empty()) {
        return {};
    }
    std::ifstream in{fs::path(file)};
    std::string line;
    if (!in || !std::getline(in, line) || line.empty()) {
        ADD_FAILURE() << "HB_PG_CONNECTION_FILE names no readable connection text";
        return {};
    }
    return fromUtf8(line);
}

TEST(WineOdbcStore, ThePostgresqlServerThroughWinesOdbc32) {
    Str conn = serverConnection();
    if (conn.empty()) {
        GTEST_SKIP() << "no test server (run through ctest, which starts one)";
    }
    const Str user = u"wine \u00c5sa " + toStr(static_cast<long long>(GetCurrentProcessId()));
    expectRoundTrip(kReportChoiceServer, conn, user);
    auto store = openRecordStore(kReportChoiceServer, conn);
    store->replacePeriod(user, kWeek, {});
    EXPECT_TRUE(store->load(user, kWeek).empty());
}

TEST(WineOdbcStore, AnUnreachableServerIsAStoreErrorNotAnAbort) {
    Str conn = serverConnection();
    if (conn.empty()) {
        GTEST_SKIP() << "no test server (run through ctest, which starts one)";
    }
    auto at = conn.find(u"Port=");
    ASSERT_NE(at, Str::npos);
    conn.replace(at, conn.find(u';', at) - at, u"Port=1");
    try {
        openRecordStore(kReportChoiceServer, conn);
        FAIL() << "connected to port 1";
    } catch (const StoreError& e) {
        EXPECT_NE(std::string(e.what()).find("cannot reach"), std::string::npos) << e.what();
    }
}

TEST(WineOdbcStore, TwoProcessesExportingToTheServerLoseAndDoubleNothing) {
    Str conn = serverConnection();
    if (conn.empty()) {
        GTEST_SKIP() << "no test server (run through ctest, which starts one)";
    }
    const Str a = u"wine-a-" + toStr(static_cast<long long>(GetCurrentProcessId()));
    const Str b = u"wine-b-" + toStr(static_cast<long long>(GetCurrentProcessId()));
    const int rounds = 8, perRound = 40;
    runWriters(kReportChoiceServer, conn, {a, b}, rounds, perRound);
    auto store = openRecordStore(kReportChoiceServer, conn);
    const auto last = batch(rounds - 1, perRound).size();
    EXPECT_EQ(store->load(a, kWeek).size(), last);
    EXPECT_EQ(store->load(b, kWeek).size(), last);
    store->replacePeriod(a, kWeek, {});
    store->replacePeriod(b, kWeek, {});
}

}  // namespace
}  // namespace hb::reporting

int main(int argc, char** argv) {
    if (argc == 2 && std::string(argv[1]) == "--hb-store-writer") {
        return hb::reporting::writer();
    }
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
