#pragma once
// The phrase variables: one text per phrase key, filled once at start-up
// from the phrase table in the chosen language. Empty until then.
#include "common/Str.h"
#include "languages/PhraseKeys.h"

namespace hb {

struct Phrases {
#define HB_PHRASE_MEMBER(key) Str key;
    HB_PHRASE_KEYS(HB_PHRASE_MEMBER)
#undef HB_PHRASE_MEMBER
};

}  // namespace hb
