// Looking up an entry's own rate in the table a store returns.
#include <gtest/gtest.h>

#include "reporting/RecordStores.h"

namespace hb::reporting {
namespace {

TEST(EntryRate, FindsTheEntryOfItsListIgnoringLetterCase) {
    const RateTable rates{{{0, u"Acme"}, Currency{1200000}},
                          {{1, u"acme"}, Currency{800000}},
                          {{1, u"\u00c5sa"}, Currency{15}}};
    struct Case {
        std::size_t list;
        Str name;
        std::optional<std::int64_t> rate;
    };
    const Case cases[] = {
        {0, u"Acme", 1200000}, {0, u"ACME", 1200000}, {1, u"Acme", 800000}, {1, u"\u00e5SA", 15},
        {2, u"Acme", {}},      {0, u"Acm", {}},       {0, u"Acme Ltd", {}}, {1, u"", {}},
    };
    for (const auto& c : cases) {
        auto got = entryRate(rates, c.list, c.name);
        ASSERT_EQ(got.has_value(), c.rate.has_value()) << c.list << " " << toUtf8(c.name);
        if (got) {
            EXPECT_EQ(got->scaled, *c.rate) << c.list << " " << toUtf8(c.name);
        }
    }
}

}  // namespace
}  // namespace hb::reporting
