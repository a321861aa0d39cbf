// Metadata entries and lists.
#include "SettingsTestSupport.h"
#include "metadata/cMetaDictionary.h"

namespace hb::test {
namespace {

std::vector<Str> keys(const cMetaDictionary& d) {
    return d.MetaDic->Keys();
}

// Also: a combo box lists disabled entries too, in insertion order.
TEST(MetaDictionary, AddMetaFirstEntryOfANameWins) {
    Env e;
    cMetaDictionary d(e.s);
    d.AddMeta(u"A", u"CatA", Currency::fromUnits(10), 1, u"SupA");
    d.AddMeta(u"B", u"CatB", Currency::fromUnits(20), 2, u"SupB", false);
    d.AddMeta(u"A", u"Other", Currency::fromUnits(99), 3, u"Other", false);
    d.AddMeta(u"a", u"Lower", Currency::fromUnits(98), 4, u"Lower");  // no regard to case
    d.AddMeta(u"", u"Empty", Currency::fromUnits(1), 5, u"Empty");
    EXPECT_EQ(keys(d), (std::vector<Str>{u"A", u"B"}));
    const auto& a = *d.MetaDic->Item(u"A");
    EXPECT_EQ(a.MetaName, u"A");
    EXPECT_EQ(a.Category, u"CatA");
    EXPECT_EQ(a.SuperCategory, u"SupA");
    EXPECT_EQ(a.HourlyRate, Currency::fromUnits(10));
    EXPECT_EQ(a.MetaID, 1);
    EXPECT_TRUE(a.Enabled);  // True when not given
    EXPECT_FALSE(d.MetaDic->Item(u"b")->Enabled);

    auto combo = std::make_shared<FakeCombo>();
    combo->items = {u"stale"};
    d.FillCombo(Variant(combo));
    EXPECT_EQ(combo->items, (std::vector<Str>{u"A", u"B"}));
    EXPECT_EQ(combo->clearCalls, 1);
}

TEST(MetaDictionary, FillComboFailureIsReportedAndKeepsWhatWasAdded) {
    Env e;
    cMetaDictionary d(e.s);
    for (Str n : {u"A", u"B", u"C"})
        d.AddMeta(n, u"", Currency{}, 0, u"");
    auto combo = std::make_shared<FakeCombo>();
    combo->failAtAddItem = 2;
    d.FillCombo(Variant(combo));
    EXPECT_EQ(combo->items, (std::vector<Str>{u"A", u"B"}));
    auto r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"cMetaDictionary.subFillcombo");
    EXPECT_EQ(r->description, u"Method 'AddItem' failed");
    // A control without the members is reported too.
    d.FillCombo(Variant(
        std::make_shared<FakeRecordset>(std::vector<Str>{}, std::vector<std::vector<Variant>>{})));
    r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->number, 438);
}

TEST(MetaDictionary, SafeValue) {
    Env e;
    cMetaDictionary d(e.s);
    bool numeric = true;
    bool text = false;
    EXPECT_EQ(d.fncSafeValue(Variant::null(), numeric), Variant(std::int16_t{0}));
    EXPECT_EQ(d.fncSafeValue(Variant(12.5), numeric), Variant(12.5));
    EXPECT_EQ(d.fncSafeValue(Variant(Str(u"x")), numeric), Variant(Str(u"x")));
    EXPECT_EQ(d.fncSafeValue(Variant::null(), text), Variant(Str()));
    EXPECT_EQ(d.fncSafeValue(Variant(std::int32_t{42}), text), Variant(Str(u"42")));
    EXPECT_EQ(d.fncSafeValue(Variant(true), text), Variant(Str(u"True")));
}

TEST(MetaDictionary, RecordsetWithAllFields) {
    Env e;
    cMetaDictionary d(e.s);
    auto rs = std::make_shared<FakeRecordset>(
        std::vector<Str>{u"lngID", u"strName", u"strCategory", u"strSuperCategory", u"curRate",
                         u"blnEnabled"},
        std::vector<std::vector<Variant>>{
            {Variant(std::int32_t{7}), Variant(u"Acme"), Variant(u"Industry"), Variant(u"Clients"),
             Variant(Currency{1234500}), Variant(true)},
            {Variant(std::int32_t{9}), Variant(u"Globex"), Variant::null(), Variant(u"Clients"),
             Variant::null(), Variant(false)},
            {Variant(std::int32_t{11}), Variant::null(), Variant(u"x"), Variant(u"y"), Variant(1.0),
             Variant(true)},
            {Variant(std::int32_t{12}), Variant(u"acme"), Variant(u"dup"), Variant(u"dup"),
             Variant(1.0), Variant(true)},
        });
    d.ReadFromRecordset(Variant(rs));
    EXPECT_EQ(keys(d), (std::vector<Str>{u"Acme", u"Globex"}));
    const auto& acme = *d.MetaDic->Item(u"Acme");
    EXPECT_EQ(acme.MetaID, 7);
    EXPECT_EQ(acme.Category, u"Industry");
    EXPECT_EQ(acme.SuperCategory, u"Clients");
    EXPECT_EQ(acme.HourlyRate, Currency{1234500});
    EXPECT_TRUE(acme.Enabled);
    const auto& globex = *d.MetaDic->Item(u"Globex");
    EXPECT_EQ(globex.MetaID, 9);
    EXPECT_EQ(globex.Category, u"");           // Null category
    EXPECT_EQ(globex.HourlyRate, Currency{});  // Null rate
    EXPECT_FALSE(globex.Enabled);
    EXPECT_EQ(rs->moveNextCalls, 4);
}

TEST(MetaDictionary, OneFieldRecordsetIsReadFromWhereItStandsAndRunsTheMetaId) {
    Env e;
    cMetaDictionary d(e.s);
    auto rs = std::make_shared<FakeRecordset>(std::vector<Str>{u"strName"},
                                              std::vector<std::vector<Variant>>{{Variant(u"Read")},
                                                                                {Variant(u"Ann")},
                                                                                {Variant::null()},
                                                                                {Variant(u"")},
                                                                                {Variant(u"Bob")},
                                                                                {Variant(u"ann")},
                                                                                {Variant(u"Cy")}});
    rs->position = 1;
    d.ReadFromRecordset(Variant(rs));
    EXPECT_EQ(keys(d), (std::vector<Str>{u"Ann", u"Bob", u"Cy"}));
    // A Null or empty name adds nothing but still advances the count.
    EXPECT_EQ(d.MetaDic->Item(u"Ann")->MetaID, 1);
    EXPECT_EQ(d.MetaDic->Item(u"Bob")->MetaID, 4);
    EXPECT_EQ(d.MetaDic->Item(u"Cy")->MetaID, 6);
    for (const auto& [k, m] : *d.MetaDic) {
        EXPECT_TRUE(m->Enabled);
        EXPECT_EQ(m->Category, u"");
        EXPECT_EQ(m->SuperCategory, u"");
        EXPECT_EQ(m->HourlyRate, Currency{});
    }
}

TEST(MetaDictionary, RecordsetErrorsGoToTheCallerAndKeepEarlierRows) {
    Env e;
    cMetaDictionary d(e.s);
    // A Null "blnEnabled" becomes "", whose conversion to Boolean fails.
    auto rs = std::make_shared<FakeRecordset>(
        std::vector<Str>{u"lngID", u"strName", u"strCategory", u"strSuperCategory", u"curRate",
                         u"blnEnabled"},
        std::vector<std::vector<Variant>>{{Variant(std::int32_t{1}), Variant(u"A"), Variant(u""),
                                           Variant(u""), Variant(1.0), Variant(true)},
                                          {Variant(std::int32_t{2}), Variant(u"B"), Variant(u""),
                                           Variant(u""), Variant(1.0), Variant::null()},
                                          {Variant(std::int32_t{3}), Variant(u"C"), Variant(u""),
                                           Variant(u""), Variant(1.0), Variant(true)}});
    EXPECT_EQ(errorOf([&] { d.ReadFromRecordset(Variant(rs)); }), 13);
    EXPECT_EQ(keys(d), (std::vector<Str>{u"A"}));
    EXPECT_TRUE(e.noReport());

    // A missing field name.
    cMetaDictionary d2(e.s);
    auto rs2 = std::make_shared<FakeRecordset>(
        std::vector<Str>{u"lngID", u"Name"},
        std::vector<std::vector<Variant>>{{Variant(std::int32_t{1}), Variant(u"A")}});
    EXPECT_THROW(d2.ReadFromRecordset(Variant(rs2)), AutomationError);
    EXPECT_EQ(d2.MetaDic->Count(), 0);
}

TEST(MetaDictionary, WithoutDictionaryComponentCallsFailAsOnNothing) {
    Env e;
    e.platform.failComponent(ScriptComponent::Dictionary);
    cMetaDictionary d(e.s);
    EXPECT_FALSE(d.MetaDic);
    auto r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"modScriptingDic.fncCreateDic");
    EXPECT_EQ(errorOf([&] { d.AddMeta(u"A", u"", Currency{}, 0, u""); }), 91);
    d.AddMeta(u"", u"", Currency{}, 0, u"");  // an empty name is ignored first
    auto combo = std::make_shared<FakeCombo>();
    d.FillCombo(Variant(combo));
    r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"cMetaDictionary.subFillcombo");
    EXPECT_EQ(combo->clearCalls, 1);
}

}  // namespace
}  // namespace hb::test
