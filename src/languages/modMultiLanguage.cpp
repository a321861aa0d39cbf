#include "languages/modMultiLanguage.h"

#include <array>
#include <memory>
#include <vector>

#include "common/ErrorTrap.h"
#include "common/Text.h"
#include "diagnostics/modErroHandling.h"
#include "languages/PhraseCollection.h"
#include "languages/cPhrase.h"

namespace hb {

namespace {

struct LcidColumn {
    std::uint32_t lcid;
    std::int16_t column;
};

// Compared in this order; the first match decides.
// clang-format off
constexpr LcidColumn kLanguageTable[] = {
    {1029, lang::Czech},
    {1030, lang::Danish},
    {1043, lang::Dutch},     {2067, lang::Dutch},
    {1035, lang::Finnish},
    {1036, lang::French},    {2060, lang::French},   {3084, lang::French},   {5132, lang::French},
    {4108, lang::French},
    {1031, lang::German},    {3079, lang::German},   {5127, lang::German},   {4103, lang::German},
    {2055, lang::German},
    {1032, lang::Greek},
    {1040, lang::Italian},   {2064, lang::Italian},
    {1044, lang::Norwegian},
    {2070, lang::Portuguese},
    {1060, lang::Slovenian},
    {3082, lang::Spanish},   {1034, lang::Spanish},  {11274, lang::Spanish}, {16394, lang::Spanish},
    {13322, lang::Spanish},  {9226, lang::Spanish},  {5130, lang::Spanish},  {7178, lang::Spanish},
    {12298, lang::Spanish},  {4106, lang::Spanish},  {18442, lang::Spanish}, {2058, lang::Spanish},
    {19466, lang::Spanish},  {6154, lang::Spanish},  {10250, lang::Spanish}, {20490, lang::Spanish},
    {15370, lang::Spanish},  {17418, lang::Spanish}, {14346, lang::Spanish}, {8202, lang::Spanish},
    {1053, lang::Swedish},
    {1055, lang::Turkish},
};
// clang-format on

constexpr char16_t kProcReadPhrases[] = u"subReadPhrases";
constexpr char16_t kProcLoadLanguages[] = u"LoadLanguages";

// The resource bytes as UTF-16 little-endian text (a stray odd byte at the
// end is no character).
Str fromUtf16Le(const std::vector<std::uint8_t>& bytes) {
    Str out;
    out.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        out += static_cast<char16_t>(bytes[i] | (bytes[i + 1] << 8));
    }
    return out;
}

// Whether the first character's ANSI code (the run time's Asc) is 63, "?".
// The byte-order mark U+FEFF has no ANSI equivalent and so converts to "?";
// a real "?" gives 63 as well, so a leading "?" is dropped just like the
// mark. Asc of an empty text raises 5.
bool firstReadsAsQuestionMark(StrView text) {
    if (text.empty()) raise(err::InvalidProcedureCall);
    return text.front() == u'\uFEFF' || text.front() == u'?';
}

// arrFields(index): raises 9 outside the fields.
const Str& field(const std::vector<Str>& fields, std::int32_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= fields.size()) {
        raise(err::SubscriptOutOfRange);
    }
    return fields[static_cast<std::size_t>(index)];
}

Str phraseText(Session& s, const Str& key) {
    if (!s.colPhrases) raise(err::ObjectVariableNotSet);
    return s.colPhrases->item(key)->get(u"LangPhrase").toStr();
}

}  // namespace

std::int16_t languageForLcid(std::uint32_t lcid) noexcept {
    for (const LcidColumn& row : kLanguageTable) {
        if (row.lcid == lcid) return row.column;
    }
    return lang::English;
}

std::int16_t fncGetlocalLanguage(Session& s) noexcept {
    try {
        return languageForLcid(s.platform.systemDefaultLcid());
    } catch (...) {
        return lang::English;
    }
}

void subReadPhrases(Session& s, std::int16_t language, bool ansi) noexcept {
    // Every statement runs under the trap: a failure is reported and the
    // next statement runs.
    auto step = [&s](auto&& statement) { trap(s, kProcReadPhrases, statement); };

    Str strText;
    step([&] { subTrace(s, u"Reading language phrases from resource file"); });
    step([&] {
        auto bytes = s.platform.resource(u"CUSTOM", u"LANGUAGE");
        if (!bytes) raise(326, u"Resource with identifier 'LANGUAGE' not found");
        strText = ansi ? s.platform.fromAnsi(*bytes) : fromUtf16Le(*bytes);
    });
    step([&] {
        if (firstReadsAsQuestionMark(strText)) strText = text::mid(strText, 2);
    });
    step([&] { s.colPhrases = std::make_shared<PhraseCollection>(); });

    const std::vector<Str> lines = text::split(strText, u"\r\n");
    // Lines 0 to upper bound - 1: the piece after the last CR LF is skipped.
    Str strPhrase;  // not cleared between lines
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
        const std::vector<Str> fields = text::split(lines[i], u"\t");
        std::shared_ptr<cPhrase> oPhrase;
        step([&] { strPhrase = field(fields, language); });
        step([&] { oPhrase = std::make_shared<cPhrase>(); });
        step([&] {
            if (strPhrase.empty()) strPhrase = field(fields, lang::English);
        });
        step([&] {
            if (!oPhrase) raise(err::ObjectVariableNotSet);
            oPhrase->LangConstant = field(fields, 0);
        });
        step([&] {
            if (!oPhrase) raise(err::ObjectVariableNotSet);
            if (firstReadsAsQuestionMark(oPhrase->LangConstant)) {
                oPhrase->LangConstant = text::mid(oPhrase->LangConstant, 2);
            }
        });
        step([&] {
            if (!oPhrase) raise(err::ObjectVariableNotSet);
            oPhrase->LangPhrase = text::replace(strPhrase, u"'", u"");
        });
        step([&] {
            if (!s.colPhrases || !oPhrase) raise(err::ObjectVariableNotSet);
            s.colPhrases->add(oPhrase, oPhrase->LangConstant);
        });
    }
}

void LoadLanguages(Session& s, std::int16_t language) noexcept {
    trap(s, kProcLoadLanguages, [&] { subReadPhrases(s, language, false); });
    trap(s, kProcLoadLanguages,
         [&] { subTrace(s, u"Reading phrases from collection into variables"); });
#define HB_PHRASE_KEY_TEXT_(literal) u##literal
#define HB_PHRASE_KEY_TEXT(key) HB_PHRASE_KEY_TEXT_(#key)
#define HB_LOAD_PHRASE(key) \
    trap(s, kProcLoadLanguages, [&] { s.phrases.key = phraseText(s, HB_PHRASE_KEY_TEXT(key)); });
    HB_PHRASE_KEYS(HB_LOAD_PHRASE)
#undef HB_LOAD_PHRASE
#undef HB_PHRASE_KEY_TEXT
#undef HB_PHRASE_KEY_TEXT_
}

}  // namespace hb
