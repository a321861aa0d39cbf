// What only the server database has: the connection text and the ways
// connecting can fail.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "StoreTestSupport.h"
#include "reporting/OdbcStore.h"

namespace hb::reporting {
namespace {

using namespace testing;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(ConnectionText, PasswordsNeverReachAMessage) {
    struct Case {
        Str text;
        Str shown;
    };
    const Case cases[] = {
        {u"Driver={PostgreSQL Unicode};Server=db;Uid=hb;Pwd=s3cret;",
         u"Driver={PostgreSQL Unicode};Server=db;Uid=hb;Pwd=***;"},
        {u"DSN=hours;PASSWORD=a;b", u"DSN=hours;PASSWORD=***;b"},
        {u"Driver={x;y};pwd ={p;w}", u"Driver={x;y};pwd =***"},
        {u"Server=db;Uid=hb", u"Server=db;Uid=hb"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(toUtf8(OdbcStore::withoutPassword(c.text)), toUtf8(c.shown));
    }
}

TEST(ConnectionText, NoTextAndNoDriverAreStoreErrors) {
    EXPECT_THROW(openRecordStore(kReportChoiceServer, u"  \r\n"), StoreError);
    try {
        OdbcStore store(u"Driver={No Such Driver};Server=127.0.0.1;Pwd=topsecret;");
        FAIL() << "connected without a driver";
    } catch (const StoreError& e) {
        EXPECT_THAT(e.what(), HasSubstr("not installed"));
        EXPECT_THAT(e.what(), Not(HasSubstr("topsecret")));
    }
}

class OdbcServer : public ::testing::Test {
  protected:
    void SetUp() override {
        base_ = serverConnection();
        if (base_.empty()) {
            GTEST_SKIP() << "no test server (run through ctest, which starts one)";
        }
    }
    // The test server's text with one key's value replaced.
    Str with(const Str& key, const Str& value) const {
        auto at = base_.find(key + u"=");
        Str out = base_;
        if (at != Str::npos) {
            auto end = out.find(u';', at);
            out.replace(at, end - at, key + u"=" + value);
        }
        return out;
    }
    Str base_;
};

TEST_F(OdbcServer, AnUnreachableServerAndARefusedLoginSayWhich) {
    struct Case {
        const char* what;
        Str connection;
        const char* message;
    };
    const Case cases[] = {
        {"nothing listens on the port", with(u"Port", u"1"), "cannot reach the database server"},
        {"no such login", with(u"Uid", u"nobody_here"), "refused the login"},
    };
    for (const auto& c : cases) {
        try {
            auto store = openRecordStore(kReportChoiceServer, c.connection);
            ADD_FAILURE() << c.what << ": connected";
        } catch (const StoreError& e) {
            EXPECT_THAT(e.what(), HasSubstr(c.message)) << c.what;
        }
    }
}

TEST_F(OdbcServer, TheServerChoiceConnectsWithTheFilesText) {
    ServerSchema schema(base_);
    // HourbookConnection.txt as a text editor saves it, with a line break.
    auto store = openRecordStore(kReportChoiceServer, schema.connection() + u"\r\n");
    EXPECT_EQ(store->schemaVersion(), 1);
    store->replacePeriod(u"anna", {45000, 45000}, {record(u"A", 45000, 9, 1)});
    EXPECT_EQ(store->load(u"anna", {45000, 45000}).size(), 1u);
}

TEST_F(OdbcServer, AReadOnlyStoreReadsAndNeverWrites) {
    ServerSchema schema(base_);
    // A schema without the tables: refused, and nothing is made in it.
    EXPECT_THROW(openRecordStore(kReportChoiceServer, schema.connection(), StoreAccess::ReadOnly),
                 StoreError);
    {
        auto writer = openRecordStore(kReportChoiceServer, schema.connection());
        writer->replacePeriod(u"anna", {45000, 45001}, {record(u"A", 45000, 9, 1)});
    }
    auto store = openRecordStore(kReportChoiceServer, schema.connection(), StoreAccess::ReadOnly);
    EXPECT_EQ(store->schemaVersion(), 1);
    TimeRecord stored = record(u"A", 45000, 9, 1);
    stored.user = u"anna";
    EXPECT_EQ(describe(store->load(u"", {45000, 45001})), describe({stored}));
    EXPECT_THROW(store->replacePeriod(u"anna", {45000, 45001}, {}), StoreError);
    EXPECT_THROW(store->putEntryRates({{{0, u"Acme"}, Currency{1}}}), StoreError);
    EXPECT_EQ(store->load(u"anna", {45000, 45001}).size(), 1u);
    EXPECT_TRUE(store->entryRates().empty());
}

}  // namespace
}  // namespace hb::reporting
