// The calendar text the add-in hands the report program: every field reads
// back exactly (texts with the separators in them, dates to the last bit),
// and a text of another kind is refused with the line that is wrong.
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

#include "reporting/CalendarTransfer.h"

namespace {

using hb::Date;
using hb::Str;
using hb::reporting::CalendarEntry;
using hb::reporting::decodeEntries;
using hb::reporting::encodeEntries;

bool sameBits(Date a, Date b) {
    return std::memcmp(&a.days, &b.days, sizeof a.days) == 0;
}

TEST(CalendarTransfer, EveryFieldReadsBackExactly) {
    const std::vector<CalendarEntry> entries = {
        {u"00000000ABCD", Date{46350.375}, Date{46350.375}, Date{46350.4375}, u"Review",
         u"Acme, Smith", false, false, false},
        // Separators and escapes inside the texts.
        {u"E\\1", Date{46351.0 + 1.0 / 3}, Date{46351.0 + 1.0 / 3}, Date{46352.0 + 2.0 / 7},
         u"a\tb\\tc\r\nd\\", u"\\n, Globex\t", true, true, true},
        // Empty texts, letters beyond ASCII and beyond the BMP, date zero
        // and dates before it.
        {u"", Date{0.0}, Date{-1.25}, Date{1e-300}, u"", u"Überstunden, 😀", false, true, false},
    };
    const Str text = encodeEntries(entries);
    EXPECT_TRUE(text.starts_with(u"HBCAL 1\n"));
    const auto back = decodeEntries(text);
    ASSERT_EQ(back.size(), entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(back[i].entryId, entries[i].entryId);
        EXPECT_TRUE(sameBits(back[i].occurrenceStart, entries[i].occurrenceStart));
        EXPECT_TRUE(sameBits(back[i].start, entries[i].start));
        EXPECT_TRUE(sameBits(back[i].end, entries[i].end));
        EXPECT_EQ(back[i].subject, entries[i].subject);
        EXPECT_EQ(back[i].categories, entries[i].categories);
        EXPECT_EQ(back[i].allDay, entries[i].allDay);
        EXPECT_EQ(back[i].isPrivate, entries[i].isPrivate);
        EXPECT_EQ(back[i].recurring, entries[i].recurring);
    }
    EXPECT_TRUE(decodeEntries(encodeEntries({})).empty());
}

TEST(CalendarTransfer, ATextOfAnotherKindIsRefusedWithItsLine) {
    const struct {
        const char16_t* text;
        const char* message;
    } cases[] = {
        {u"", "line 1: not a calendar text of this version"},
        {u"HBCAL 2\n", "line 1: not a calendar text of this version"},
        {u"HBCAL 1\nid\t1\t1\t1\ts\tc\t0\t0\n", "line 2: fewer than nine fields"},
        {u"HBCAL 1\nid\t1\t1\t1\ts\tc\t0\t0\t0\tx\n", "line 2: more than nine fields"},
        {u"HBCAL 1\nid\t1\t1\t1\ts\tc\t0\t0\t0\nid\t1\tnoon\t1\ts\tc\t0\t0\t0\n",
         "line 3: a date is no number"},
        {u"HBCAL 1\nid\t1\t1\t1.5x\ts\tc\t0\t0\t0\n", "line 2: a date is no number"},
        {u"HBCAL 1\nid\t1\t1\t1\ts\tc\t0\t2\t0\n", "line 2: a flag is neither 0 nor 1"},
        {u"HBCAL 1\nid\t1\t1\t1\ts\\q\tc\t0\t0\t0\n", "line 2: an unknown escape"},
        {u"HBCAL 1\nid\t1\t1\t1\ts\\\tc\t0\t0\t0\n", "line 2: a backslash ends a text"},
        {u"HBCAL 1\nid\t1\t1\t1\ts\tc\t0\t0\t0", "line 2: the last line has no end"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        try {
            decodeEntries(c.text);
            ADD_FAILURE() << "accepted";
        } catch (const std::invalid_argument& e) {
            EXPECT_NE(std::string(e.what()).find(c.message), std::string::npos) << e.what();
        }
    }
}

}  // namespace
