// The dispatch server under Wine: portable objects served as real
// IDispatch, reached back through the dispatch client and through raw COM
// (oleaut32's type information, connection points), as the stand-in host
// serves the simulated Outlook to the add-in's DLL.
#include "win/com/DispatchServer.h"

#include <gtest/gtest.h>

#include "ComTestSupport.h"
#include "common/AutomationError.h"
#include "common/DispatchObject.h"
#include "win/com/ComObject.h"
#include "win/com/ComVariant.h"
#include "win/com/DispatchClient.h"
#include "win/com/EventSinks.h"

namespace hb {
namespace {

using com::ComPtr;

// A small automation object: a property, an indexed default member, a
// method that raises, a collection, and the Explorer's event set.
class Folder : public DispatchObject {
  public:
    Folder() : DispatchObject(u"MAPIFolder", table()) {}
    Str name = u"Calendar";
    std::vector<Str> entries{u"a", u"b", u"c"};
    Variant lastPassed;

    void raise(const Str& member, Args args) { fire(u"ExplorerEvents", member, args); }

  private:
    static std::shared_ptr<const MemberTable> table() {
        static const auto t =
            Members<Folder>()
                .prop(
                    u"Name", [](Folder& f) { return f.name; },
                    [](Folder& f, const Variant& v) { f.name = v.toStr(); })
                .get(u"Item",
                     [](Folder& f, Args& a) {
                         const auto i = static_cast<std::size_t>(requiredArg(a, 0).toLong());
                         if (i < 1 || i > f.entries.size()) hb::raise(err::SubscriptOutOfRange);
                         return f.entries[i - 1];
                     })
                .method(u"Fail", [](Folder&) { hb::raise(-2147221233, u"Not found here"); })
                .method(u"Self", [](Folder& f) { return ObjectPtr(f.shared_from_this()); })
                .method(u"Take",
                        [](Folder& f, Args& a) {
                            f.lastPassed = argAt(a, 0);
                            return sameObject(argAt(a, 0), Variant(f.shared_from_this()));
                        })
                .defaultMember(u"Item")
                .events(u"ExplorerEvents")
                .enumerable([](Folder& f) {
                    std::vector<Variant> out;
                    for (const Str& e : f.entries)
                        out.emplace_back(e);
                    return out;
                })
                .build();
        return t;
    }
};

class DispatchServer : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr)));
        com::installDispatchServer();
    }
    void TearDown() override {
        com::setObjectExporter({});
        OleUninitialize();
    }
};

TEST_F(DispatchServer, MembersTypeNameAndErrorsAsTheClientSeesThem) {
    auto folder = std::make_shared<Folder>();
    {
        ObjectPtr client = com::DispatchClient::wrap(com::exportObject(folder).get());
        EXPECT_EQ(client->typeName(), u"MAPIFolder");
        EXPECT_EQ(client->get(u"Name").toStr(), u"Calendar");
        client->put(u"name", Variant(Str(u"Work")));
        EXPECT_EQ(folder->name, u"Work");
        EXPECT_EQ(client->get(u"", {Variant(2)}).toStr(), u"b");
        EXPECT_EQ(client->get(u"Item", {Variant(3)}).toStr(), u"c");

        std::vector<Variant> items = client->enumerate();
        ASSERT_EQ(items.size(), 3u);
        EXPECT_EQ(items[2].toStr(), u"c");

        struct Case {
            const char16_t* member;
            Args args;
            std::int32_t number;
        } cases[] = {
            {u"Fail", {}, -2147221233},
            {u"Item", {Variant(9)}, err::SubscriptOutOfRange},
            {u"NoSuchThing", {}, err::NoSuchMember},
        };
        for (Case& c : cases) {
            const auto e = test::raisedBy([&] { client->call(c.member, c.args); });
            ASSERT_TRUE(e) << toUtf8(c.member);
            EXPECT_EQ(e->number(), c.number) << toUtf8(c.member);
        }
        EXPECT_EQ(test::raisedBy([&] { client->call(u"Fail"); })->description(), u"Not found here");

        // The same object comes back as the same COM object, and goes back
        // as the portable object it is.
        Variant self = client->call(u"Self");
        EXPECT_TRUE(sameObject(self, Variant(client)));
        EXPECT_TRUE(client->call(u"Take", {self}).toBool());
        EXPECT_EQ(folder->lastPassed.toObject().get(), folder.get());
        EXPECT_GT(com::liveExportedObjects(), 0);
    }
    EXPECT_EQ(com::liveExportedObjects(), 0);
}

TEST_F(DispatchServer, TypeInformationIsNamedAfterOutlooksInterface) {
    auto folder = std::make_shared<Folder>();
    ComPtr<IDispatch> d = com::exportObject(folder);
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(d->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.put()), S_OK);
    BSTR name = nullptr;
    ASSERT_EQ(info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(com::fromBstr(name), u"_MAPIFolder");
    SysFreeString(name);
    // One per type name, and the same DISPIDs for every object of the type.
    ComPtr<IDispatch> other = com::exportObject(std::make_shared<Folder>());
    ComPtr<ITypeInfo> again;
    ASSERT_EQ(other->GetTypeInfo(0, LOCALE_USER_DEFAULT, again.put()), S_OK);
    EXPECT_EQ(again.get(), info.get());
    wchar_t member[] = L"Name";
    LPOLESTR names[] = {member};
    DISPID a = 0, b = 0;
    ASSERT_EQ(d->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &a), S_OK);
    ASSERT_EQ(other->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &b), S_OK);
    EXPECT_EQ(a, b);
    wchar_t unknown[] = L"Nope";
    names[0] = unknown;
    EXPECT_EQ(d->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &a), DISP_E_UNKNOWNNAME);
}

TEST_F(DispatchServer, EventsReachAdvisedSinksWithCancelWrittenBack) {
    auto folder = std::make_shared<Folder>();
    {
        ObjectPtr client = com::DispatchClient::wrap(com::exportObject(folder).get());
        std::vector<Str> heard;
        auto sink = std::make_shared<FunctionSink>([&](const Str& member, Args& args) {
            heard.push_back(member);
            if (member == u"BeforeFolderSwitch") {
                EXPECT_EQ(args.size(), 2u);
                EXPECT_EQ(args[0].toObject()->typeName(), u"MAPIFolder");
                args[1].assign(Variant(true));
            }
        });
        EventConnection connection = client->subscribe(u"ExplorerEvents", sink);
        EXPECT_EQ(com::liveServerConnections(), 1);

        auto cancel = std::make_shared<Variant>(false);
        folder->raise(u"BeforeFolderSwitch", {Variant(ObjectPtr(folder)), Variant::byRef(cancel)});
        folder->raise(u"SelectionChange", {});
        EXPECT_TRUE(cancel->toBool());
        EXPECT_EQ(heard, (std::vector<Str>{u"BeforeFolderSwitch", u"SelectionChange"}));

        connection.disconnect();
        folder->raise(u"SelectionChange", {});
        EXPECT_EQ(heard.size(), 2u);
        EXPECT_EQ(com::liveServerConnections(), 0);
        // An event set the object lacks cannot be advised.
        EXPECT_THROW(client->subscribe(u"ItemsEvents", sink), AutomationError);
    }
    EXPECT_EQ(folder->sinkCount(), 0u);
    EXPECT_EQ(com::liveExportedObjects(), 0);
}

}  // namespace
}  // namespace hb
