#pragma once
// Text as the automation run-time keeps it: UTF-16 code units, so lengths,
// positions and 1000-character pieces count exactly as Outlook counts them.
#include <string>
#include <string_view>

namespace hb {

using Str = std::u16string;
using StrView = std::u16string_view;

std::string toUtf8(StrView text);
Str fromUtf8(std::string_view text);

// Decimal text of an integer.
Str toStr(long long value);

}  // namespace hb
