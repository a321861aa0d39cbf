#pragma once
// The run time's text functions, with its semantics (1-based positions,
// Trim removing blanks only, Split of an empty text giving no fields).
#include <optional>
#include <vector>

#include "common/Str.h"

namespace hb::text {

enum class Compare { Binary, Text };  // Text: without regard to letter case

// Split: an empty text gives no fields (upper bound -1); otherwise the pieces
// between the delimiters, empty pieces included.
std::vector<Str> split(StrView text, StrView delimiter);
// split without copying: the pieces are views into text.
std::vector<StrView> splitViews(StrView text, StrView delimiter);
Str join(const std::vector<Str>& parts, StrView delimiter);
Str trim(StrView text);  // blanks (U+0020) only, both ends
Str ltrim(StrView text);
Str rtrim(StrView text);
// Replace every occurrence of find (an empty find returns the text unchanged).
Str replace(StrView text, StrView find, StrView with, Compare compare = Compare::Binary);
// InStr: 1-based position of find in text at or after start, 0 if absent.
// An empty find returns start (when start <= length + 1).
std::int32_t find(StrView text, StrView find, Compare compare = Compare::Binary,
                  std::int32_t start = 1);
Str left(StrView text, std::int32_t length);   // raises 5 for a negative length
Str right(StrView text, std::int32_t length);  // raises 5 for a negative length
// Mid: from 1-based start, length characters or to the end. Raises 5 for
// start < 1 or a negative length.
Str mid(StrView text, std::int32_t start, std::optional<std::int32_t> length = std::nullopt);
Str upper(StrView text);  // UCase (Latin, Greek, Cyrillic letters)
Str lower(StrView text);  // LCase
// Letter-case-insensitive equality and ordering key, as text comparison does.
bool equalsNoCase(StrView a, StrView b);
Str foldCase(StrView text);
// One code unit of foldCase. Letters beyond ASCII go through the case
// tables; ASCII, nearly every character of real names, is folded inline.
char16_t foldNonAscii(char16_t c);
inline char16_t foldChar(char16_t c) {
    if (c >= 0x80) return foldNonAscii(c);
    return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
}
// Position (0-based) of the first c in text at or after from, or npos: the
// settings and list texts run to hundreds of thousands of code units, so
// they are scanned several code units at a time.
std::size_t findChar(StrView text, char16_t c, std::size_t from = 0);
// AscW-style code of the first character (raises 5 for an empty text).
std::int32_t asc(StrView text);
Str repeat(char16_t c, std::size_t count);

// One argument of a Windows command line, written so that the started
// program's CommandLineToArgvW (or its C run time) gives back exactly this
// text: an argument with blanks, tabs or quotes goes in double quotes, an
// inner quote is escaped with a backslash, and backslashes are doubled where
// a quote follows them (the closing one included). An empty argument is "".
Str quoteArgument(StrView argument);

}  // namespace hb::text
