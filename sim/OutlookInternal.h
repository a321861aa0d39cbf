#pragma once
// What the parts of the simulated Outlook (sim/Outlook.cpp, FolderItems.cpp,
// Restrict.cpp, Recurrence.cpp) share and nothing outside them uses.
#include <memory>

#include "sim/Outlook.h"

namespace sim::detail {

// Outlook's "not found" error.
[[noreturn]] void notFound();
// A 1-based index argument (numbers) into a list of n; raises as Outlook.
std::size_t indexArg(const Variant& v, std::size_t n);
// An object's value was changed (unsaved).
inline void changed(Item& i) {
    i.dirty = true;
}
// The values of an item that a lookup copies and a Save stores (not where
// it is, its identity or its counters).
void copyValues(Item& to, const Item& from, bool withDates = true);
// The user properties of `from` as new objects of `to`.
void copyProperties(Item& to, const Item& from);
// The day of a date (its whole part) and the date's whole seconds, which
// comparisons use so that fractions of days never differ by rounding.
std::int32_t dayOf(hb::Date d);
std::int64_t secondsOf(hb::Date d);

// ---- Jet filters (Restrict.cpp) ----
// Parses a filter; `restrict` refuses the properties Restrict cannot use.
// Raises "Cannot parse condition. Error at ..." as Outlook.
std::shared_ptr<const FilterNode> parseFilter(const Str& text, const Outlook& world, bool restrict);
// Whether an item's values, on these dates, match a filter.
bool matchesFilter(const FilterNode& filter, const Item& values, hb::Date start, hb::Date end);
// Items.Find / FindNext from a position of the folder.
Variant findFrom(Items& items, std::size_t from);
// The Items members that sort, restrict and iterate (Restrict.cpp).
void addViewMembers(hb::Members<Items>& members);

// Folder.GetTable (Table.cpp).
Variant tableOf(Folder& folder, Args& args);

// ---- recurrence (Recurrence.cpp) ----
// The object of an occurrence of a series at its original start: the one
// the series has for that day (selected before), else a new one.
std::shared_ptr<Item> occurrenceRecord(Item& master, hb::Date originalStart);
// GetRecurrencePattern of an item.
Variant recurrencePatternOf(Item& item);

}  // namespace sim::detail
