// Markings and the billing information text.
#include "SettingsTestSupport.h"
#include "metadata/cMarking.h"
#include "settings/cPersonalSettings.h"

namespace hb::test {
namespace {

using Values = std::vector<Str>;

struct MarkingEnv : Env {
    // Lists given as metadata list text lines ("Company:Acme;Zenith;").
    explicit MarkingEnv(const Values& lines, Str separator = u",") {
        s.strListSeparator = separator;
        s.oPersonalSettings = std::make_shared<cPersonalSettings>(s);
        Str text;
        for (const Str& l : lines)
            text += l + u"\r\n";
        s.oPersonalSettings->subPopulateMetadataList(text);
    }
    static Values values(const cMarking& m) {
        Values v;
        for (const auto& x : m.colMarkings)
            v.push_back(x->MetaName);
        return v;
    }
};

const Values kLists = {u"Company:Acme;Zenith;", u"Person:Smith;", u"Extra:Travel;"};

TEST(Marking, OneEmptyMarkingPerListAndNoneWithoutSettings) {
    MarkingEnv e(kLists);
    cMarking m(e.s);
    EXPECT_EQ(MarkingEnv::values(m), (Values{u"", u"", u""}));
    EXPECT_FALSE(m.IsComplete());
    MarkingEnv none({});
    cMarking empty(none.s);
    EXPECT_EQ(empty.Count(), 0);
    EXPECT_TRUE(empty.IsComplete());
    EXPECT_EQ(empty.MarkingCategories(), u"");
    Env bare;
    EXPECT_EQ(errorOf([&] { cMarking fails(bare.s); }), 91);
}

TEST(Marking, BillingTextIntoMarkings) {
    // Each step reads one text into the same marking; markings are never
    // cleared, and a later piece wins.
    struct Step {
        Str text;
        Values expected;
    };
    const std::pair<Str, std::vector<Step>> cases[] = {
        {u",",
         {{u"Acme, Smith ,Travel", {u"Acme", u"Smith", u"Travel"}},
          {u"Unknown", {u"Acme", u"Smith", u"Travel"}},
          {u"", {u"Acme", u"Smith", u"Travel"}},
          // Case-sensitive, although the lists' keys ignore letter case.
          {u"zenith,SMITH", {u"Acme", u"Smith", u"Travel"}},
          {u",Acme,Zenith,", {u"Zenith", u"Smith", u"Travel"}}}},
        // With ";" a comma is part of a name.
        {u";",
         {{u"Acme; Smith", {u"Acme", u"Smith", u""}},
          {u"Zenith,Travel", {u"Acme", u"Smith", u""}}}},
    };
    for (const auto& [separator, steps] : cases) {
        MarkingEnv e(kLists, separator);
        cMarking m(e.s);
        for (const Step& step : steps) {
            m.BillingToMarkings(step.text);
            EXPECT_EQ(MarkingEnv::values(m), step.expected) << u8(step.text);
        }
        EXPECT_TRUE(e.noReport());
        EXPECT_EQ(e.s.diag.strLastTrace, u"Splitting the categories string " + steps.back().text);
    }
}

TEST(Marking, ANameInTwoListsMarksBothAndBigListsGiveTheSameOutcome) {
    Str company = u"Company:", person = u"Person:", extra = u"Extra:";
    for (int i = 0; i < 2000; ++i) {
        company += u"C" + toStr(i) + u";";
        person += u"P" + toStr(i) + u";";
        extra += u"E" + toStr(i) + u";";
    }
    MarkingEnv e({company, person, extra + u"C7;"});
    cMarking m(e.s);
    m.BillingToMarkings(u"C1999, P0 ,E5,C7");
    EXPECT_EQ(MarkingEnv::values(m), (Values{u"C7", u"P0", u"C7"}));
    EXPECT_EQ(m.MarkingCategories(), u",C7,P0,C7");
}

TEST(Marking, CategoriesTextLeadingSeparatorGapsAndDoubledSeparators) {
    struct Case {
        Str separator;
        Values markings;
        Str text;
    };
    const Case cases[] = {
        {u",", {u"", u"", u""}, u""},
        {u",", {u"Acme", u"", u"Travel"}, u",Acme,Travel"},
        {u",", {u"Acme", u"Smith", u"Travel"}, u",Acme,Smith,Travel"},
        // ",Acme," + ",Smith": the doubled separator vanishes with both.
        {u",", {u"Acme,", u"Smith", u""}, u",AcmeSmith"},
        // A last character equal to the separator is dropped, once.
        {u",", {u"Acme,", u"", u""}, u",Acme"},
        {u",", {u"Acme,", u"", u"Travel,"}, u",AcmeTravel"},
        {u";", {u";Acme", u"", u""}, u"Acme"},
        {u";", {u"A;;B", u"", u""}, u";AB"},
        {u";", {u"A;;;B", u"", u""}, u";A;B"},
    };
    for (const Case& c : cases) {
        MarkingEnv e(kLists, c.separator);
        cMarking m(e.s);
        for (std::int16_t i = 1; i <= 3; ++i)
            m.setMetaName(i, c.markings[static_cast<std::size_t>(i - 1)]);
        EXPECT_EQ(m.MarkingCategories(), c.text) << u8(c.text);
        EXPECT_EQ(e.s.diag.strLastTrace,
                  u"Building a categories string from the currently selected markings");
    }
}

TEST(Marking, OutOfRangeListsRaiseOrAreReportedKeepingEarlierMarkings) {
    MarkingEnv e({u"Company:Acme;", u"Person:Smith;"});
    cMarking m(e.s);
    EXPECT_EQ(m.MetaName(1), u"");
    for (std::int16_t n : {0, 3}) {
        EXPECT_EQ(errorOf([&] { m.setMetaName(n, u"x"); }), 9) << n;
        EXPECT_THROW(m.MetaName(n), AutomationError);
    }
    // The lists are reloaded with a third one after the marking was made.
    e.s.oPersonalSettings->subPopulateMetadataList(
        u"Company:Acme;\r\nPerson:Smith;\r\nExtra:Travel;\r\n");
    m.BillingToMarkings(u"Acme,Travel,Smith");
    EXPECT_EQ(MarkingEnv::values(m), (Values{u"Acme", u""}));
    auto r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"BillingToMarkings");
    EXPECT_EQ(r->number, 9);
}

}  // namespace
}  // namespace hb::test
