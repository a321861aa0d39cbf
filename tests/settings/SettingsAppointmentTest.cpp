// The settings appointment, long properties and typed user
// properties, against the simulated Outlook.
#include <tuple>

#include "SimSupport.h"
#include "settings/modSettingsAppointment.h"

namespace hb::test {
namespace {

// The stored item behind an object the add-in got (Outlook gives a new
// object at every lookup).
const sim::Item* storedOf(const Variant& v) {
    return &std::dynamic_pointer_cast<sim::Item>(sim::Instruments::simObject(v))->record();
}

TEST(SettingsAppointment, CreatedWhenMissing) {
    SimEnv e;
    Variant item = fncGetSettingsAppointment(e.s);
    ASSERT_TRUE(item.isObject() && !item.isNothing());
    auto appt = e.settingsItem();
    ASSERT_TRUE(appt);
    EXPECT_EQ(storedOf(item), appt.get());
    EXPECT_EQ(appt->messageClass, u"IPM.Appointment");
    EXPECT_DOUBLE_EQ(appt->start.days, sim::makeDate(2050, 1, 1, 0, 1).days);
    EXPECT_DOUBLE_EQ(appt->end.days, sim::makeDate(2050, 1, 1, 0, 2).days);
    EXPECT_FALSE(appt->reminderSet);
    EXPECT_EQ(appt->saveCount, 1);
    auto count = appt->findUserProperty(u"SettingsCount");
    ASSERT_TRUE(count);
    EXPECT_EQ(count->type, sim::ol::Number);
    EXPECT_EQ(e.s.diag.strLastTrace, u"Adding a new appointmant at Jan 1 2050");

    // Found the next time, not created again.
    Variant again = fncGetSettingsAppointment(e.s);
    EXPECT_EQ(storedOf(again), appt.get());
    EXPECT_EQ(e.settingsItemCount(), 1u);
    EXPECT_EQ(e.s.diag.strLastTrace,
              u"Trying to find appointment Outlook Hourbook 3 Personal Settings");
    EXPECT_EQ(e.s.err.number, 0);
}

TEST(SettingsAppointment, SubjectInOtherCaseIsSearchedByFilter) {
    SimEnv e;
    auto other = e.cal->addAppointment(u"OUTLOOK HOURBOOK 3 PERSONAL SETTINGS",
                                       sim::makeDate(2050, 1, 1), sim::makeDate(2050, 1, 1, 1));
    e.sc.instruments().resetCounts();
    Variant item = fncGetSettingsAppointment(e.s);
    EXPECT_EQ(e.sc.instruments().count(u"Items", u"Find"), 1u);
    // The simulated Find matches the subject without regard to case too.
    ASSERT_TRUE(item.isObject() && !item.isNothing());
    EXPECT_EQ(storedOf(item), other.get());
    EXPECT_EQ(e.settingsItemCount(), 0u);
}

TEST(SettingsAppointment, NothingWithoutCalendarOrWhenAddingFails) {
    SimEnv e;
    Session bare(e.platform);
    EXPECT_TRUE(fncGetSettingsAppointment(bare).isNothing());
    EXPECT_EQ(bare.err.number, 0);

    e.sc.instruments().failMember(u"Add", u"Items");
    EXPECT_TRUE(fncGetSettingsAppointment(e.s).isNothing());
    EXPECT_EQ(e.settingsItemCount(), 0u);
    EXPECT_TRUE(e.noReport());
}

struct LongPropertyCase {
    std::size_t length;
    int k;
    std::vector<std::size_t> pieces;
};

TEST(LongProperty, PieceCounts) {
    const std::vector<LongPropertyCase> cases = {
        {0, 0, {0}},
        {999, 1, {999, 0}},
        {1000, 1, {1000, 0}},
        {1500, 2, {1000, 500, 0}},
        {2500, 2, {1000, 1000, 500}},
        {3500, 4, {1000, 1000, 1000, 500, 0}},
        {100000, 100, {}},
    };
    for (const auto& c : cases) {
        SimEnv e;
        auto appt =
            e.cal->addAppointment(u"x", sim::makeDate(2024, 1, 1), sim::makeDate(2024, 1, 2));
        Variant h = e.handle(appt);
        Str text;
        for (std::size_t i = 0; i < c.length; ++i)
            text += static_cast<char16_t>(u'a' + i % 26);
        subFixLongProperty(e.s, h, text, u"Settings");
        EXPECT_TRUE(e.noReport());
        auto count = appt->findUserProperty(u"SettingsCount");
        ASSERT_TRUE(count);
        EXPECT_EQ(count->type, sim::ol::Number);
        EXPECT_EQ(count->value.toLong(), c.k) << c.length;
        for (std::size_t i = 0; i < c.pieces.size(); ++i) {
            auto piece = appt->findUserProperty(u"Settings" + toStr(static_cast<long long>(i)));
            ASSERT_TRUE(piece) << c.length << " piece " << i;
            EXPECT_EQ(piece->type, sim::ol::Text);
            EXPECT_EQ(piece->value.toStr().size(), c.pieces[i]) << c.length << " piece " << i;
        }
        EXPECT_FALSE(appt->findUserProperty(u"Settings" + toStr(c.k + 1)));
        EXPECT_EQ(appt->saveCount, 0);  // the caller saves
        EXPECT_EQ(fncGetLongProperty(e.s, h, u"Settings"), text) << c.length;
    }
}

TEST(LongProperty, ASecondSaveReplacesEveryPieceAndAMissingCountReadsPieceZero) {
    SimEnv e;
    auto appt = e.cal->addAppointment(u"x", sim::makeDate(2024, 1, 1), sim::makeDate(2024, 1, 2));
    Variant h = e.handle(appt);
    subFixLongProperty(e.s, h, Str(3500, u'a'), u"Settings");
    subFixLongProperty(e.s, h, Str(1200, u'b'), u"Settings");
    EXPECT_TRUE(e.noReport());
    EXPECT_EQ(fncGetLongProperty(e.s, h, u"Settings"), Str(1200, u'b'));
    subFixLongProperty(e.s, h, u"", u"Settings");
    EXPECT_EQ(fncGetLongProperty(e.s, h, u"Settings"), u"");

    auto other = e.cal->addAppointment(u"y", sim::makeDate(2024, 1, 1), sim::makeDate(2024, 1, 2));
    EXPECT_EQ(fncGetLongProperty(e.s, e.handle(other), u"Settings"), u"");  // nothing at all
    other->addUserProperty(u"Settings0", sim::ol::Text, Variant(u"first"));
    other->addUserProperty(u"Settings1", sim::ol::Text, Variant(u"second"));
    EXPECT_EQ(fncGetLongProperty(e.s, e.handle(other), u"Settings"), u"first");
    other->addUserProperty(u"SettingsCount", sim::ol::Number, Variant(1));
    EXPECT_EQ(fncGetLongProperty(e.s, e.handle(other), u"Settings"), u"firstsecond");
    EXPECT_EQ(e.s.err.number, 0);
}

TEST(LongProperty, FailureIsReportedWithThePropertyName) {
    SimEnv e;
    auto appt = e.cal->addAppointment(u"x", sim::makeDate(2024, 1, 1), sim::makeDate(2024, 1, 2));
    e.sc.instruments().failMember(u"Add", u"UserProperties");
    subFixLongProperty(e.s, e.handle(appt), u"text", u"Settings");
    auto r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->description, u"Failed to save Settings");
    EXPECT_EQ(r->procedure, u"subFixLongProperty");
    EXPECT_EQ(r->number, sim::kInjectedErrorNumber);
}

TEST(GetProperty, TypedValuesAndDefaults) {
    SimEnv e;
    auto appt = e.cal->addAppointment(u"x", sim::makeDate(2024, 1, 1), sim::makeDate(2024, 1, 2));
    appt->addUserProperty(u"num", sim::ol::Number, Variant(0.75));
    appt->addUserProperty(u"txt", sim::ol::Text, Variant(u"abc"));
    appt->addUserProperty(u"numtext", sim::ol::Text, Variant(u"12"));
    appt->addUserProperty(u"yes", sim::ol::YesNo, Variant(true));
    appt->addUserProperty(u"when", sim::ol::DateTime, Variant(sim::makeDate(2024, 3, 1)));
    Variant h = e.handle(appt);
    using namespace vbtype;
    const Variant text{Str()}, empty, zero{std::int16_t{0}};
    const std::tuple<Str, std::int16_t, Variant, Variant> cases[] = {
        // clang-format off
        {u"num", vbInteger, text, Variant(0.75)}, {u"txt", vbInteger, text, zero},
        {u"numtext", vbInteger, text, Variant(u"12")}, {u"num", vbString, text, Variant(u"0.75")},
        {u"yes", vbBoolean, text, Variant(true)}, {u"numtext", vbBoolean, text, Variant(true)},
        {u"when", vbDate, text, Variant(sim::makeDate(2024, 3, 1))},
        {u"txt", vbDate, text, Variant(Date{0.0})}, {u"txt", 5, text, Variant(u"abc")},
        {u"txt", vbBoolean, text, empty},  // CBool fails
        // Missing: the default, converted.
        {u"none", vbInteger, text, zero}, {u"none", vbInteger, Variant(u"7"), Variant(std::int16_t{7})},
        {u"none", vbInteger, zero, zero}, {u"none", vbDate, text, Variant(Date{0.0})},
        {u"none", vbString, text, text}, {u"none", vbString, Variant(u"d"), Variant(u"d")},
        {u"none", vbBoolean, text, empty}, {u"none", vbBoolean, Variant(u"1"), Variant(true)},
        {u"none", 5, Variant(u"x"), empty},
        // clang-format on
    };
    for (const auto& [name, type, dflt, expected] : cases)
        EXPECT_EQ(fncGetProperty(e.s, h, name, type, dflt), expected) << u8(name) << " " << type;
    EXPECT_EQ(e.s.diag.strLastTrace, u"Reading the value of the Outlook property none");
    // An item that cannot be reached gives the default too.
    EXPECT_EQ(fncGetProperty(e.s, Variant(), u"num", vbInteger, Variant(Str())),
              Variant(std::int16_t{0}));
}

}  // namespace
}  // namespace hb::test
