// Markings and the billing information text.
#include "SettingsTestSupport.h"
#include "metadata/cMarking.h"
#include "settings/cPersonalSettings.h"

namespace hb::test {
namespace {

struct MarkingEnv : Env {
    // Lists given as metadata list text lines ("Company:Acme;Zenith;").
    explicit MarkingEnv(const std::vector<Str>& lines, Str separator = u",") {
        s.strListSeparator = separator;
        s.oPersonalSettings = std::make_shared<cPersonalSettings>(s);
        Str text;
        for (const Str& l : lines)
            text += l + u"\r\n";
        s.oPersonalSettings->subPopulateMetadataList(text);
    }
    std::vector<Str> values(const cMarking& m) {
        std::vector<Str> v;
        for (const auto& x : m.colMarkings)
            v.push_back(x->MetaName);
        return v;
    }
};

const std::vector<Str> kLists = {u"Company:Acme;Zenith;", u"Person:Smith;", u"Extra:Travel;"};

TEST(Marking, OneMarkingPerList) {
    MarkingEnv e(kLists);
    cMarking m(e.s);
    EXPECT_EQ(m.Count(), 3);
    EXPECT_EQ(e.values(m), (std::vector<Str>{u"", u"", u""}));
    EXPECT_FALSE(m.IsComplete());
    MarkingEnv none({});
    cMarking empty(none.s);
    EXPECT_EQ(empty.Count(), 0);
    EXPECT_TRUE(empty.IsComplete());
    EXPECT_EQ(empty.MarkingCategories(), u"");
}

TEST(Marking, WithoutPersonalSettingsCreationFails) {
    Env e;
    try {
        cMarking m(e.s);
        FAIL();
    } catch (const AutomationError& err) {
        EXPECT_EQ(err.number(), 91);
    }
}

TEST(Marking, BillingToMarkingsTrimsAndMatchesExactly) {
    MarkingEnv e(kLists);
    cMarking m(e.s);
    m.BillingToMarkings(u"Acme, Smith ,Travel");
    EXPECT_EQ(e.values(m), (std::vector<Str>{u"Acme", u"Smith", u"Travel"}));
    EXPECT_TRUE(m.IsComplete());
    m.BillingToMarkings(u"Unknown");
    EXPECT_EQ(e.values(m), (std::vector<Str>{u"Acme", u"Smith", u"Travel"}));
    m.BillingToMarkings(u"");
    EXPECT_EQ(e.values(m), (std::vector<Str>{u"Acme", u"Smith", u"Travel"}));
    // Case-sensitive: "zenith" names no entry although the list's keys
    // ignore letter case.
    m.BillingToMarkings(u"zenith,SMITH");
    EXPECT_EQ(e.values(m), (std::vector<Str>{u"Acme", u"Smith", u"Travel"}));
    EXPECT_TRUE(e.noReport());
    EXPECT_EQ(e.s.diag.strLastTrace, u"Splitting the categories string zenith,SMITH");
}

TEST(Marking, LaterPieceWinsAndMarkingsAreNeverCleared) {
    MarkingEnv e(kLists);
    cMarking m(e.s);
    m.BillingToMarkings(u",Acme,Zenith,");
    EXPECT_EQ(e.values(m), (std::vector<Str>{u"Zenith", u"", u""}));
    m.BillingToMarkings(u"Travel");
    EXPECT_EQ(e.values(m), (std::vector<Str>{u"Zenith", u"", u"Travel"}));
}

TEST(Marking, NameInTwoListsMarksBoth) {
    MarkingEnv e({u"Company:Acme;Both;", u"Person:Smith;", u"Extra:Both;Travel;"});
    cMarking m(e.s);
    m.BillingToMarkings(u"Both");
    EXPECT_EQ(e.values(m), (std::vector<Str>{u"Both", u"", u"Both"}));
    EXPECT_EQ(m.MarkingCategories(), u",Both,Both");
}

TEST(Marking, SemicolonSeparator) {
    MarkingEnv e(kLists, u";");
    cMarking m(e.s);
    m.BillingToMarkings(u"Acme; Smith;Travel");
    EXPECT_EQ(e.values(m), (std::vector<Str>{u"Acme", u"Smith", u"Travel"}));
    EXPECT_EQ(m.MarkingCategories(), u";Acme;Smith;Travel");
    m.setMetaName(2, u"");
    EXPECT_EQ(m.MarkingCategories(), u";Acme;Travel");
    // A comma is then part of a name, not a separator.
    m.BillingToMarkings(u"Acme,Smith");
    EXPECT_EQ(e.values(m), (std::vector<Str>{u"Acme", u"", u"Travel"}));
}

TEST(Marking, MarkingCategoriesLeadingSeparatorAndGaps) {
    MarkingEnv e(kLists);
    cMarking m(e.s);
    EXPECT_EQ(m.MarkingCategories(), u"");
    m.setMetaName(1, u"Acme");
    m.setMetaName(3, u"Travel");
    EXPECT_EQ(m.MarkingCategories(), u",Acme,Travel");
    m.setMetaName(2, u"Smith");
    EXPECT_EQ(m.MarkingCategories(), u",Acme,Smith,Travel");
    EXPECT_EQ(e.s.diag.strLastTrace,
              u"Building a categories string from the currently selected markings");
}

TEST(Marking, TrailingSeparatorDroppedOnlyAtTheEnd) {
    MarkingEnv e(kLists);
    cMarking m(e.s);
    m.setMetaName(1, u"Acme,");
    m.setMetaName(2, u"Smith");
    // ",Acme," + ",Smith": the doubled separator vanishes with both commas.
    EXPECT_EQ(m.MarkingCategories(), u",AcmeSmith");
    m.setMetaName(2, u"");
    // The last non-empty marking loses its last character.
    EXPECT_EQ(m.MarkingCategories(), u",Acme");
    m.setMetaName(3, u"Travel,");
    EXPECT_EQ(m.MarkingCategories(), u",AcmeTravel");
}

TEST(Marking, DoubledSeparatorsVanishTogether) {
    MarkingEnv e(kLists, u";");
    cMarking m(e.s);
    m.setMetaName(1, u";Acme");
    EXPECT_EQ(m.MarkingCategories(), u"Acme");
    m.setMetaName(1, u"A;;B");
    EXPECT_EQ(m.MarkingCategories(), u";AB");
    m.setMetaName(1, u"A;;;B");
    EXPECT_EQ(m.MarkingCategories(), u";A;B");
}

TEST(Marking, MetaNameIndexOutOfRange) {
    MarkingEnv e(kLists);
    cMarking m(e.s);
    EXPECT_EQ(m.MetaName(1), u"");
    try {
        m.setMetaName(4, u"x");
        FAIL();
    } catch (const AutomationError& err) {
        EXPECT_EQ(err.number(), 9);
    }
    EXPECT_THROW(m.MetaName(0), AutomationError);
}

TEST(Marking, MoreListsThanMarkingsIsReportedKeepingEarlierMarkings) {
    MarkingEnv e({u"Company:Acme;", u"Person:Smith;"});
    cMarking m(e.s);
    // The lists are reloaded with a third one after the marking was made.
    e.s.oPersonalSettings->subPopulateMetadataList(
        u"Company:Acme;\r\nPerson:Smith;\r\nExtra:Travel;\r\n");
    m.BillingToMarkings(u"Acme,Travel,Smith");
    EXPECT_EQ(e.values(m), (std::vector<Str>{u"Acme", u""}));
    auto r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"BillingToMarkings");
    EXPECT_EQ(r->number, 9);
}

TEST(Marking, BigListsUseTheIndexWithTheSameOutcome) {
    Str company = u"Company:", person = u"Person:", extra = u"Extra:";
    for (int i = 0; i < 2000; ++i) {
        company += u"C" + toStr(i) + u";";
        person += u"P" + toStr(i) + u";";
        extra += u"E" + toStr(i) + u";";
    }
    extra += u"C7;";
    MarkingEnv e({company, person, extra});
    cMarking m(e.s);
    m.BillingToMarkings(u"C1999, P0 ,E5,C7");
    EXPECT_EQ(e.values(m), (std::vector<Str>{u"C7", u"P0", u"C7"}));
}

}  // namespace
}  // namespace hb::test
