// The phrase table resource (UTF-16LE text, and the ANSI form): any bytes
// load without a crash; the errors are the table's own (a short line, a
// repeated key, an empty text); every key taken is found again by its name
// and gives its phrase, and every phrase variable is either the phrase of
// its key or, when the key is missing, what it was before.
#include <unordered_map>
#include <unordered_set>

#include "fuzz/FuzzSupport.h"
#include "languages/PhraseCollection.h"
#include "languages/cPhrase.h"
#include "languages/modMultiLanguage.h"

namespace {

using namespace hb;

constexpr char16_t kUnset[] = u"\x01unset";

const std::unordered_set<Str>& variableKeys() {
#define HB_FUZZ_KEY_TEXT_(literal) u##literal
#define HB_FUZZ_KEY_TEXT(key) HB_FUZZ_KEY_TEXT_(#key)
#define HB_FUZZ_KEY(key) text::foldCase(HB_FUZZ_KEY_TEXT(key)),
    static const std::unordered_set<Str> keys{HB_PHRASE_KEYS(HB_FUZZ_KEY)};
#undef HB_FUZZ_KEY
    return keys;
}

const cPhrase* findPhrase(const PhraseCollection& c, const Str& key) {
    try {
        return c.item(key).get();
    } catch (const AutomationError& x) {
        if (x.number() != 5) fuzz::fail("a missing phrase key raises 5", x.description());
        return nullptr;
    }
}

// The collection just read: every phrase found by its key, texts without
// the table's separators or apostrophes, from the resource read as the
// text raw. Returns whether a phrase variable's key is among them.
bool checkCollection(fuzz::Env& e, const Str& raw) {
    const std::size_t lines = text::split(raw, u"\r\n").size();
    HB_FUZZ_CHECK(e.s.colPhrases != nullptr);
    const PhraseCollection& c = *e.s.colPhrases;
    HB_FUZZ_CHECK(static_cast<std::size_t>(c.count()) <= lines);
    bool variable = false;
    for (const auto& p : c) {
        HB_FUZZ_CHECK(p != nullptr);
        HB_FUZZ_CHECK(findPhrase(c, p->LangConstant) == p.get(), p->LangConstant);
        HB_FUZZ_CHECK(p->LangConstant.find(u'\t') == Str::npos, p->LangConstant);
        HB_FUZZ_CHECK(p->LangPhrase.find_first_of(u"\t'") == Str::npos, p->LangPhrase);
        // A CR LF can only be one the apostrophes hid: the lines are split
        // before they are removed.
        HB_FUZZ_CHECK(p->LangPhrase.find(u"\r\n") == Str::npos || raw.find(u"\r'") != Str::npos,
                      p->LangPhrase);
        variable = variable || variableKeys().contains(text::foldCase(p->LangConstant));
    }
    // Only the table's own errors: Asc of an empty text (5), a line short
    // of the column (9), a key given twice (457).
    if (const auto error = e.takeError()) {
        HB_FUZZ_CHECK(*error == 5 || *error == 9 || *error == 457, toStr(*error));
    }
    return variable;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace hb::fuzz;
    Run run;
    Env& e = run.e;
    const std::int16_t language = static_cast<std::int16_t>(1 + size % 16);
    const std::vector<std::uint8_t> bytes(data, data + size);
    e.platform.setResource(u"CUSTOM", u"LANGUAGE", bytes);

    Str utf16;
    for (std::size_t i = 0; i + 1 < size; i += 2)
        utf16 += static_cast<char16_t>(data[i] | (data[i + 1] << 8));

    subReadPhrases(e.s, language, false);
    // Filling the phrase variables raises once for every key the table
    // lacks, which makes a run many times slower: it is checked on one
    // input in eight.
    unsigned sum = 0;
    for (std::size_t i = 0; i < size; ++i)
        sum += data[i];
    if (checkCollection(e, utf16) && sum % 8 == 0) {
        // The phrase variables from the table.
#define HB_FUZZ_UNSET(key) e.s.phrases.key = kUnset;
        HB_PHRASE_KEYS(HB_FUZZ_UNSET)
#undef HB_FUZZ_UNSET
        LoadLanguages(e.s, language);
        std::unordered_map<Str, const cPhrase*> byKey;
        for (const auto& p : *e.s.colPhrases)
            byKey.emplace(text::foldCase(p->LangConstant), p.get());
#define HB_FUZZ_LOADED(key)                                                                     \
    {                                                                                           \
        const auto it = byKey.find(text::foldCase(HB_FUZZ_KEY_TEXT(key)));                      \
        HB_FUZZ_CHECK(e.s.phrases.key == (it != byKey.end() ? it->second->LangPhrase : kUnset), \
                      HB_FUZZ_KEY_TEXT(key));                                                   \
    }
        HB_PHRASE_KEYS(HB_FUZZ_LOADED)
#undef HB_FUZZ_LOADED
        e.takeError();
        e.s.phrases = Phrases{};
    }

    // The same bytes as ANSI text.
    subReadPhrases(e.s, language, true);
    checkCollection(e, e.platform.fromAnsi(bytes));
    e.s.colPhrases.reset();
    return 0;
}
