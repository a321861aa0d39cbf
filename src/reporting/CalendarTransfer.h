#pragma once
// Calendar entries as one text, the way the add-in hands a period's entries
// to the report program: read inside Outlook's process, where each
// object-model call costs microseconds, and carried across the process
// boundary in a single call instead of eight calls per appointment.
//
// The text: a first line "HBCAL 1", then one line per entry of nine fields
// separated by tabs: EntryID, original start, start, end (each a date's
// serial number, written so that it reads back bit for bit), subject,
// categories, and 0 or 1 for all-day, private and recurring. A backslash,
// tab, carriage return or line feed inside a text is written \\, \t, \r, \n.
#include <vector>

#include "reporting/ReportTypes.h"

namespace hb::reporting {

Str encodeEntries(const std::vector<CalendarEntry>& entries);
// Raises std::invalid_argument naming the line for a text that is not one
// encodeEntries wrote (another version, a field missing, a date that is no
// number).
std::vector<CalendarEntry> decodeEntries(const Str& text);

}  // namespace hb::reporting
