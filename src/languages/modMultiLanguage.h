#pragma once
// The phrase table: choosing the language column from the system locale,
// reading the LANGUAGE resource into the phrase collection, and filling the
// phrase variables (Session::phrases) from it.
#include <cstdint>

#include "common/Session.h"

namespace hb {

// Language columns of the phrase table.
namespace lang {
constexpr std::int16_t Czech = 1, Danish = 2, Dutch = 3, English = 4, Finnish = 5, French = 6,
                       German = 7, Greek = 8, Italian = 9, Norwegian = 10, Portuguese = 11,
                       Slovenian = 12, Spanish = 13, Swedish = 14, Turkish = 15, Russian = 16;
}  // namespace lang

// The column for a locale identifier: the whole identifier, sort bits
// included, against a deliberately narrow table; anything else is English.
// Russian is carried in the table but never chosen.
std::int16_t languageForLcid(std::uint32_t lcid) noexcept;
// The column for the system default locale (not the user's).
std::int16_t fncGetlocalLanguage(Session& s) noexcept;

// Reads the LANGUAGE resource (type "CUSTOM") into a new s.colPhrases, each
// phrase in column `language` (English where that cell is empty), apostrophes
// removed. `ansi`: the resource holds ANSI text instead of UTF-16. Each
// failing statement is reported under "subReadPhrases" and the next one runs.
void subReadPhrases(Session& s, std::int16_t language, bool ansi) noexcept;

// subReadPhrases(language, false), then every phrase variable from the
// collection, key by key; a missing key is reported under "LoadLanguages"
// and its variable keeps its value.
void LoadLanguages(Session& s, std::int16_t language) noexcept;

}  // namespace hb
