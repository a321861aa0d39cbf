// The dispatch client and the event sinks against real COM under Wine: an
// automation server of the test's own with a connection point, Windows' own
// Scripting.Dictionary, and oleaut32's conversions as the oracle for the
// VARIANT types the run time has no subtype for.
#include "platform/win32/Win32Platform.h"
#include "win/com/DispatchClient.h"
#include "win/com/EventSinks.h"

#include <gtest/gtest.h>

#include "ComTestSupport.h"
#include "HBAddin_h.h"
#include "win/com/ComVariant.h"

namespace hb {
namespace {

using com::ComPtr;
using test::refCount;
using test::TestServer;

class ComApartment : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr))); }
    void TearDown() override { OleUninitialize(); }
};

// A server with "Echo" (returns its argument), "Value" (a property that
// records how it was called), "SetArg" (writes 42 into a by-reference
// argument) and "Fail" (fails as the test says).
struct EchoServer {
    EchoServer() {
        server->member(
            L"Echo", 1, [](WORD, std::vector<VARIANT*>& args, VARIANT* result, EXCEPINFO*) {
                return args.empty() ? DISP_E_BADPARAMCOUNT : VariantCopyInd(result, args[0]);
            });
        server->member(L"Value", 2,
                       [this](WORD flags, std::vector<VARIANT*>&, VARIANT* result, EXCEPINFO*) {
                           lastFlags = flags;
                           if (result) V_VT(result) = VT_EMPTY;
                           return S_OK;
                       });
        server->member(L"SetArg", 3, [](WORD, std::vector<VARIANT*>& args, VARIANT*, EXCEPINFO*) {
            VARIANT* target = V_VARIANTREF(args[0]);
            VariantClear(target);
            V_VT(target) = VT_I4;
            V_I4(target) = 42;
            return S_OK;
        });
        server->member(L"Fail", 4, [this](WORD, std::vector<VARIANT*>&, VARIANT*, EXCEPINFO* e) {
            if (failure == DISP_E_EXCEPTION && e) *e = exception;
            return failure;
        });
        server->member(L"Kinds", 5,
                       [this](WORD, std::vector<VARIANT*>& args, VARIANT* result, EXCEPINFO*) {
                           kinds.clear();
                           for (VARIANT* a : args)
                               kinds.push_back(V_VT(a));
                           V_VT(result) = VT_I4;
                           V_I4(result) = static_cast<LONG>(args.size());
                           return S_OK;
                       });
    }
    ObjectPtr client() { return com::DispatchClient::wrap(server.get()); }

    ComPtr<TestServer> server = TestServer::create();
    WORD lastFlags = 0;
    HRESULT failure = S_OK;
    EXCEPINFO exception{};
    std::vector<VARTYPE> kinds;
};

TEST_F(ComApartment, EveryValueTypeCrossesBothWays) {
    EchoServer echo;
    ObjectPtr client = echo.client();
    const Str withNul(u"a\0b\U0001F600", 4);
    const Variant values[] = {
        Variant(),
        Variant::null(),
        Variant(std::int16_t{-32768}),
        Variant(std::int32_t{2147483647}),
        Variant(-1.5e300),
        Variant(Currency{922337203685477LL * 10000 + 5807}),
        Variant(Date{36526.75}),
        Variant(withNul),
        Variant(Str()),
        Variant(true),
        Variant(false),
        Variant::nothing(),
        Variant::error(MAKE_HRESULT(1, FACILITY_CONTROL, 2042)),
    };
    for (const Variant& v : values) {
        Args args{v};
        EXPECT_EQ(client->call(u"Echo", args), v) << debugString(v);
    }
    // An object comes back as the same object, seen through a new client.
    const Variant self = client->call(u"Echo", {Variant(client)});
    EXPECT_TRUE(sameObject(self, Variant(client)));
    EXPECT_EQ(self.toObject()->identity(), client->identity());
}

TEST_F(ComApartment, TypesWithoutASubtypeBecomeTheNearestOneAsWindowsConvertsThem) {
    // A Long where oleaut32 can make one of the value, else its Double.
    struct Case {
        VARTYPE vt;
        LONGLONG value;
    };
    const Case cases[] = {{VT_UI1, 200},        {VT_I1, -100},         {VT_UI2, 65535},
                          {VT_UI4, 4000000000}, {VT_I8, 5000000000LL}, {VT_I8, -7},
                          {VT_UI8, 123456}};
    for (const Case& c : cases) {
        VARIANT in;
        VariantInit(&in);
        V_VT(&in) = VT_I8;
        V_I8(&in) = c.value;
        ASSERT_EQ(VariantChangeType(&in, &in, 0, c.vt), S_OK);
        const Variant got = com::fromVARIANT(in);
        VARIANT asLong;
        VariantInit(&asLong);
        if (SUCCEEDED(VariantChangeType(&asLong, &in, 0, VT_I4))) {
            EXPECT_EQ(got, Variant(static_cast<std::int32_t>(V_I4(&asLong)))) << c.vt;
        } else {
            VARIANT asDouble;
            VariantInit(&asDouble);
            ASSERT_EQ(VariantChangeType(&asDouble, &in, 0, VT_R8), S_OK);
            EXPECT_EQ(got, Variant(V_R8(&asDouble))) << c.vt;
        }
    }
    VARIANT single;
    VariantInit(&single);
    V_VT(&single) = VT_R4;
    V_R4(&single) = 0.1f;
    EXPECT_EQ(com::fromVARIANT(single), Variant(static_cast<double>(0.1f)));
    // A reference is read through.
    LONG target = 7;
    VARIANT ref;
    V_VT(&ref) = VT_I4 | VT_BYREF;
    V_I4REF(&ref) = &target;
    EXPECT_EQ(com::fromVARIANT(ref), Variant(std::int32_t{7}));
}

// Decimals keep their value: as Currency where it holds them exactly (four
// decimals at most, within its range), else as the nearest Double, which
// oleaut32 gives as the oracle.
TEST_F(ComApartment, DecimalsKeepTheirValueAsCurrencyOrElseDouble) {
    struct Case {
        const wchar_t* text;
        std::int64_t currency;  // scaled by 10000; 0: the Double
    };
    const Case cases[] = {{L"0.75", 7500},
                          {L"-0.75", -7500},
                          {L"2.5", 25000},
                          {L"0.1", 1000},
                          {L"5", 50000},
                          {L"0.0001", 1},
                          {L"922337203685477.5807", 922337203685477LL * 10000 + 5807},
                          {L"-922337203685477.5808", -922337203685477LL * 10000 - 5808},
                          {L"0.00005", 0},
                          {L"922337203685477.5808", 0},
                          {L"0.3333333333333333333333333333", 0},
                          {L"79228162514264337593543950335", 0}};
    for (const Case& c : cases) {
        VARIANT in;
        VariantInit(&in);
        ASSERT_EQ(VarDecFromStr(const_cast<OLECHAR*>(c.text), 0x0409, 0, &V_DECIMAL(&in)), S_OK);
        V_VT(&in) = VT_DECIMAL;
        const Variant got = com::fromVARIANT(in);
        if (c.currency) {
            EXPECT_EQ(got, Variant(Currency{c.currency})) << c.text;
        } else {
            double nearest = 0;
            ASSERT_EQ(VarR8FromDec(&V_DECIMAL(&in), &nearest), S_OK);
            EXPECT_EQ(got, Variant(nearest)) << c.text;
        }
        DECIMAL* ref = &V_DECIMAL(&in);
        VARIANT byRef;
        V_VT(&byRef) = VT_DECIMAL | VT_BYREF;
        V_DECIMALREF(&byRef) = ref;
        EXPECT_EQ(com::fromVARIANT(byRef), got) << c.text;
    }
}

// An error value other than "parameter not found" stays an error value with
// its status code, goes back to COM as the same VT_ERROR, and converts to
// nothing else (13), as in oleaut32.
TEST_F(ComApartment, ErrorValuesKeepTheirCodeBothWays) {
    const SCODE codes[] = {MAKE_HRESULT(1, FACILITY_CONTROL, 2042), E_FAIL, DISP_E_TYPEMISMATCH,
                           S_OK};
    for (SCODE sc : codes) {
        VARIANT in;
        VariantInit(&in);
        V_VT(&in) = VT_ERROR;
        V_ERROR(&in) = sc;
        const Variant got = com::fromVARIANT(in);
        EXPECT_EQ(got, Variant::error(sc));
        EXPECT_FALSE(isNumeric(got)) << std::hex << sc;
        VARIANT back;
        VariantInit(&back);
        com::toVARIANT(got, back);
        EXPECT_EQ(V_VT(&back), VT_ERROR) << std::hex << sc;
        EXPECT_EQ(V_ERROR(&back), sc) << std::hex << sc;
        VARIANT asLong;
        VariantInit(&asLong);
        EXPECT_EQ(VariantChangeType(&asLong, &in, 0, VT_I4), DISP_E_TYPEMISMATCH);
        for (auto convert :
             {+[](const Variant& v) { v.toLong(); }, +[](const Variant& v) { v.toDouble(); },
              +[](const Variant& v) { v.toStr(); }, +[](const Variant& v) { v.toBool(); }}) {
            const auto e = test::raisedBy([&] { convert(got); });
            ASSERT_TRUE(e) << std::hex << sc;
            EXPECT_EQ(e->number(), 13);
        }
    }
}

TEST_F(ComApartment, CallsUseTheRunTimesFlagsNamedPutArgumentAndMissingArguments) {
    EchoServer echo;
    ObjectPtr client = echo.client();
    client->get(u"Value");
    EXPECT_EQ(echo.lastFlags, DISPATCH_METHOD | DISPATCH_PROPERTYGET);
    EXPECT_TRUE(echo.server->lastNamedArgs.empty());
    client->put(u"value", Variant(std::int32_t{1}));  // names ignore letter case
    EXPECT_EQ(echo.lastFlags, DISPATCH_PROPERTYPUT);
    EXPECT_EQ(echo.server->lastNamedArgs, std::vector<DISPID>{DISPID_PROPERTYPUT});
    client->putRef(u"Value", Variant(client));
    EXPECT_EQ(echo.lastFlags, DISPATCH_PROPERTYPUTREF);

    EXPECT_EQ(client->call(u"Kinds", {Variant(Str(u"x")), Variant::missing(), Variant(true)}),
              Variant(std::int32_t{3}));
    EXPECT_EQ(echo.kinds, (std::vector<VARTYPE>{VT_BSTR, VT_ERROR, VT_BOOL}));
    EXPECT_TRUE(client->call(u"Echo", {Variant::missing()}).isMissing());

    auto slot = std::make_shared<Variant>(Str(u"before"));
    Args args{Variant::byRef(slot)};
    client->call(u"SetArg", args);
    EXPECT_EQ(*slot, Variant(std::int32_t{42}));
}

TEST_F(ComApartment, FailuresBecomeTheRunTimesErrors) {
    struct Case {
        HRESULT hr;
        SCODE scode;
        WORD wCode;
        const wchar_t* description;
        std::int32_t number;
        Str expected;
    };
    const Case cases[] = {
        // An Outlook error: the number is the exception's scode.
        {DISP_E_EXCEPTION, E_FAIL, 0, L"The operation failed.", static_cast<std::int32_t>(E_FAIL),
         u"The operation failed."},
        // A run-time error raised by a server: the low word of 0x800A....
        {DISP_E_EXCEPTION, MAKE_HRESULT(1, FACILITY_CONTROL, 424), 0, nullptr, 424,
         u"Object required"},
        {DISP_E_EXCEPTION, 0, 1001, L"Custom", 1001, u"Custom"},
        {DISP_E_MEMBERNOTFOUND, 0, 0, nullptr, 438,
         u"Object doesn't support this property or method"},
        {DISP_E_TYPEMISMATCH, 0, 0, nullptr, 13, u"Type mismatch"},
        {DISP_E_OVERFLOW, 0, 0, nullptr, 6, u"Overflow"},
        {DISP_E_BADPARAMCOUNT, 0, 0, nullptr, 450,
         u"Wrong number of arguments or invalid property assignment"},
        {MAKE_HRESULT(1, FACILITY_CONTROL, 91), 0, 0, nullptr, 91,
         u"Object variable or With block variable not set"},
    };
    EchoServer echo;
    ObjectPtr client = echo.client();
    for (const Case& c : cases) {
        echo.failure = c.hr;
        echo.exception = EXCEPINFO{};
        echo.exception.scode = c.scode;
        echo.exception.wCode = c.wCode;
        echo.exception.bstrDescription = c.description ? SysAllocString(c.description) : nullptr;
        const auto e = test::raisedBy([&] { client->call(u"Fail"); });
        ASSERT_TRUE(e) << std::hex << c.hr;
        EXPECT_EQ(e->number(), c.number) << std::hex << c.hr;
        EXPECT_EQ(e->description(), c.expected) << std::hex << c.hr;
    }
    // A name the server does not know is no member (438).
    const auto unknown = test::raisedBy([&] { client->call(u"NoSuchThing"); });
    ASSERT_TRUE(unknown);
    EXPECT_EQ(unknown->number(), 438);
}

TEST_F(ComApartment, NamesAreResolvedOncePerTypeAndTypeNamesComeFromTheTypeInformation) {
    ComPtr<ITypeLib> library;
    ASSERT_EQ(
        LoadTypeLibEx((test::exeFolder() + L"\\HBAddin.dll").c_str(), REGKIND_NONE, library.put()),
        S_OK);
    ComPtr<ITypeInfo> paneType;
    ASSERT_EQ(library->GetTypeInfoOfGuid(IID__CustomTaskPane, paneType.put()), S_OK);

    EchoServer a, b, untyped;
    a.server->typeInfo = paneType;
    b.server->typeInfo = paneType;
    {
        ObjectPtr ca = a.client(), cb = b.client(), cu = untyped.client();
        for (int i = 0; i < 3; ++i) {
            ca->call(u"Echo", {Variant(i)});
            cb->call(u"ECHO", {Variant(i)});
            cu->call(u"Echo", {Variant(i)});
        }
        EXPECT_EQ(a.server->nameLookups + b.server->nameLookups, 1) << "one lookup per type";
        EXPECT_EQ(untyped.server->nameLookups, 1) << "one per object without type information";
        EXPECT_EQ(a.server->invokes + b.server->invokes, 6);
        EXPECT_EQ(ca->typeName(), u"CustomTaskPane");
        EXPECT_EQ(cu->typeName(), u"Object");
    }
    // Once no client of the type is left, a new one asks again.
    ObjectPtr again = a.client();
    again->call(u"Echo", {Variant(1)});
    EXPECT_EQ(a.server->nameLookups + b.server->nameLookups, 2);
}

TEST_F(ComApartment, EventsArriveByNameWithCancelWrittenBackUntilUnadvised) {
    ComPtr<TestServer> server = TestServer::create();
    const com::EventSet* explorer = com::findEventSet(u"ExplorerEvents");
    ASSERT_NE(explorer, nullptr);
    ComPtr<test::TestConnectionPoint> point = server->addConnectionPoint(explorer->iid);
    const ULONG before = refCount(server.get());

    std::vector<Str> heard;
    Variant folderSeen;
    {
        ObjectPtr client = com::DispatchClient::wrap(server.get());
        EventConnection connection = client->subscribe(
            u"ExplorerEvents", std::make_shared<FunctionSink>([&](const Str& member, Args& args) {
                heard.push_back(member);
                if (member == u"BeforeFolderSwitch") {
                    folderSeen = args.at(0);
                    args.at(1).assign(Variant(true));  // Cancel
                }
            }));
        EXPECT_EQ(point->advised, 1);

        VARIANT folder, cancel;
        V_VT(&folder) = VT_DISPATCH;
        V_DISPATCH(&folder) = server.get();
        VARIANT_BOOL cancelValue = VARIANT_FALSE;
        V_VT(&cancel) = VT_BOOL | VT_BYREF;
        V_BOOLREF(&cancel) = &cancelValue;
        point->fire(explorer->memberId(u"BeforeFolderSwitch"), {folder, cancel});
        EXPECT_EQ(cancelValue, VARIANT_TRUE);
        EXPECT_TRUE(sameObject(folderSeen, Variant(client)));
        point->fire(explorer->memberId(u"SelectionChange"), {});
        point->fire(0x7777, {});  // a member the add-in does not hear
        connection.disconnect();
        EXPECT_EQ(point->unadvised, 1);
        EXPECT_EQ(point->sinkCount(), 0u);
        point->fire(explorer->memberId(u"Activate"), {});
    }
    folderSeen = Variant();
    EXPECT_EQ(heard, (std::vector<Str>{u"BeforeFolderSwitch", u"SelectionChange"}));
    EXPECT_EQ(refCount(server.get()), before) << "every reference the client took is given back";
    EXPECT_EQ(com::liveEventSubscriptions(), 0);

    // No such event set, or a source without connection points: 438.
    ObjectPtr client = com::DispatchClient::wrap(server.get());
    for (const char16_t* set : {u"NoSuchEvents", u"InspectorEvents"}) {
        const auto e = test::raisedBy(
            [&] { client->subscribe(set, std::make_shared<FunctionSink>(nullptr)); });
        EXPECT_EQ(e ? e->number() : 0, 438) << toUtf8(set);
    }
}

// Outlook 2002 and later name their event sources' interfaces
// "ExplorerEvents_10" and so on; a host that offers only such a variant is
// heard all the same, recognised by its name in the source's type library.
TEST_F(ComApartment, VersionedEventInterfacesAreFoundThroughTheSourcesTypeLibrary) {
    ComPtr<ICreateTypeLib2> library;
    ASSERT_EQ(CreateTypeLib2(sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32, L"C:\\outlook.tlb",
                             library.put()),
              S_OK);
    const GUID explorerIid{0x12345678, 1, 2, {1, 2, 3, 4, 5, 6, 7, 8}};
    const GUID variantIid{0x12345678, 1, 2, {1, 2, 3, 4, 5, 6, 7, 9}};
    ComPtr<ICreateTypeInfo> explorer, variant;
    ASSERT_EQ(
        library->CreateTypeInfo(const_cast<LPOLESTR>(L"_Explorer"), TKIND_DISPATCH, explorer.put()),
        S_OK);
    explorer->SetGuid(explorerIid);
    ASSERT_EQ(library->CreateTypeInfo(const_cast<LPOLESTR>(L"ExplorerEvents_10"), TKIND_DISPATCH,
                                      variant.put()),
              S_OK);
    variant->SetGuid(variantIid);
    ComPtr<ICreateTypeInfo> otherEvents;
    library->CreateTypeInfo(const_cast<LPOLESTR>(L"ExplorerEventsX_10"), TKIND_DISPATCH,
                            otherEvents.put());
    otherEvents->SetGuid(GUID{0x12345678, 1, 2, {1, 2, 3, 4, 5, 6, 7, 10}});
    ASSERT_EQ(explorer->LayOut(), S_OK);
    ASSERT_EQ(variant->LayOut(), S_OK);

    ComPtr<TestServer> server = TestServer::create();
    server->typeInfo = explorer.as<ITypeInfo>();
    ComPtr<test::TestConnectionPoint> unrelated =
        server->addConnectionPoint(GUID{0x12345678, 1, 2, {1, 2, 3, 4, 5, 6, 7, 10}});
    ComPtr<test::TestConnectionPoint> point = server->addConnectionPoint(variantIid);
    ObjectPtr client = com::DispatchClient::wrap(server.get());
    EXPECT_EQ(client->typeName(), u"Explorer");

    int activations = 0;
    EventConnection connection = client->subscribe(
        u"ExplorerEvents", std::make_shared<FunctionSink>([&](const Str& member, Args&) {
            if (member == u"Activate") ++activations;
        }));
    EXPECT_EQ(point->sinkCount(), 1u) << "the sink answers the variant's interface ID";
    EXPECT_EQ(unrelated->sinkCount(), 0u);
    point->fire(com::findEventSet(u"ExplorerEvents")->memberId(u"Activate"), {});
    EXPECT_EQ(activations, 1);
}

// Windows' own automation objects, created by ProgID as the run time's
// CreateObject does, are reached through the same client.
TEST_F(ComApartment, PlatformCreatesWindowsObjectsByProgIdAndRaises429ForUnknownOnes) {
    Win32Platform platform;
    const Variant dictionary = platform.createObject(u"Scripting.Dictionary");
    ASSERT_TRUE(isSet(dictionary));
    dictionary.call(u"Add", {Variant(Str(u"Acme")), Variant(std::int32_t{1})});
    dictionary.call(u"Add", {Variant(Str(u"Smith")), Variant(std::int32_t{2})});
    EXPECT_EQ(dictionary.get(u"Count"), Variant(std::int32_t{2}));
    EXPECT_EQ(dictionary.get(u"Item", {Variant(Str(u"Smith"))}), Variant(std::int32_t{2}));
    EXPECT_EQ(dictionary.obj().enumerate(),
              (std::vector<Variant>{Variant(Str(u"Acme")), Variant(Str(u"Smith"))}));
    dictionary.put(u"Item", Variant(std::int32_t{3}), {Variant(Str(u"Acme"))});
    EXPECT_EQ(dictionary.get(u"Item", {Variant(Str(u"Acme"))}), Variant(std::int32_t{3}));

    for (bool running : {false, true}) {
        const auto e = test::raisedBy([&] {
            running ? platform.getActiveObject(u"Hourbook.NoSuchClass")
                    : platform.createObject(u"Hourbook.NoSuchClass");
        });
        ASSERT_TRUE(e) << running;
        EXPECT_EQ(e->number(), 429);
        EXPECT_EQ(e->description(), u"ActiveX component can't create object");
    }
}

}  // namespace
}  // namespace hb
