#pragma once
// One row of the phrase table after loading: its key and its text in the
// chosen language. A class with no methods and two public texts, reachable
// by name as well (the loader reads LangPhrase late-bound).
#include "common/Object.h"

namespace hb {

class cPhrase : public Object {
  public:
    Str LangConstant;  // the phrase key
    Str LangPhrase;    // the text in the chosen language

    Variant invoke(CallKind kind, const Str& member, Args& args) override;
    Str typeName() const override { return u"cPhrase"; }
};

}  // namespace hb
