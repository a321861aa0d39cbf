#include "metadata/cMarking.h"

#include "common/ErrorTrap.h"
#include "common/Text.h"
#include "diagnostics/modErroHandling.h"
#include "settings/cPersonalSettings.h"

namespace hb {

namespace {

cPersonalSettings& settingsOf(Session& s) {
    if (!s.oPersonalSettings) raise(err::ObjectVariableNotSet);
    return *s.oPersonalSettings;
}

}  // namespace

cMarking::cMarking(Session& s) : s_(s) {
    for (std::size_t i = 0; i < settingsOf(s).MetaDataLists.size(); ++i) {
        colMarkings.push_back(std::make_shared<cMetaData>());
    }
}

void cMarking::BillingToMarkings(const Str& text) noexcept {
    trap(s_, u"BillingToMarkings", [&] {
        // 1.
        subTrace(s_, u"Splitting the categories string " + text);
        // 2.
        if (text.empty()) return;
        // 3. Every trimmed piece against every entry of every list. The walk
        // goes through the lists' key index: keys are unique without regard
        // to letter case and each entry's MetaName is its key, so the one
        // entry that can equal the piece exactly (case-sensitive) is the one
        // the index finds. Lists are visited in order for every piece, so a
        // name in two lists marks both and a later piece wins.
        const std::vector<Str> pieces = text::split(text, s_.strListSeparator);
        for (const Str& rawPiece : pieces) {
            const Str piece = text::trim(rawPiece);
            std::int16_t listNumber = 1;
            for (const auto& list : settingsOf(s_).MetaDataLists) {
                if (!list || !list->MetaDic) raise(err::ObjectVariableNotSet);
                if (const auto* entry = list->MetaDic->find(piece)) {
                    if (*entry && (*entry)->MetaName == piece) setMetaName(listNumber, piece);
                }
                ++listNumber;
            }
        }
    });
}

Str cMarking::MarkingCategories() noexcept {
    Str result;
    const bool ok = trap(s_, u"BillingToMarkings", [&] {
        // 1.
        subTrace(s_, u"Building a categories string from the currently selected markings");
        // 2. Each non-empty marking preceded by the separator (so the text
        // begins with the separator, as intended).
        const Str& sep = s_.strListSeparator;
        for (const auto& marking : colMarkings) {
            if (!marking->MetaName.empty()) result += sep + marking->MetaName;
        }
        // 3. A last character equal to the separator is dropped.
        if (text::right(result, 1) == sep) {
            result = text::left(result, static_cast<std::int32_t>(result.size()) - 1);
        }
        // 4. Doubled separators vanish together.
        result = text::replace(result, sep + sep, u"");
    });
    if (!ok) return Str();
    return result;
}

bool cMarking::isListEntry(const Str& piece, std::size_t lists) const {
    const Str name = text::trim(piece);
    if (name.empty()) return false;
    const auto& all = settingsOf(s_).MetaDataLists;
    for (std::size_t n = 0; n < lists && n < all.size(); ++n) {
        if (!all[n] || !all[n]->MetaDic) raise(err::ObjectVariableNotSet);
        // The keys match without regard to letter case, as Outlook matches
        // categories: "acme" beside "Acme" would be one category to it.
        if (all[n]->MetaDic->find(name)) return true;
    }
    return false;
}

Str cMarking::MergeIntoCategories(const Str& categories, std::size_t lists) {
    const Str& sep = s_.strListSeparator;
    const Str billing = MarkingCategories();
    // A billing text that could not be built (its error is reported) must
    // not take the values out of the field: nothing is written then.
    if (billing.empty() && !IsEmpty()) raise(err::InvalidProcedureCall);
    std::vector<Str> before, after;
    bool replaced = false;
    if (!categories.empty() && !sep.empty()) {
        for (Str& piece : text::split(categories, sep)) {
            if (isListEntry(piece, lists)) {
                replaced = true;
            } else if (!text::trim(piece).empty()) {
                (replaced ? after : before).push_back(std::move(piece));
            }
        }
    }
    if (billing.empty()) {
        before.insert(before.end(), after.begin(), after.end());
        return text::join(before, sep);
    }
    // The billing text begins with the separator, which joins it to what
    // stands before it.
    Str result = text::join(before, sep) + billing;
    for (const Str& piece : after)
        result += sep + piece;
    return result;
}

Str cMarking::BillingPart(const Str& categories, std::size_t lists) const {
    const Str& sep = s_.strListSeparator;
    if (categories.empty() || sep.empty()) return categories;
    std::vector<Str> pieces;
    for (Str& piece : text::split(categories, sep)) {
        if (isListEntry(piece, lists)) pieces.push_back(std::move(piece));
    }
    // Blanks that stood after a user's category before the first value go.
    return text::trim(text::join(pieces, sep));
}

bool cMarking::IsEmpty() const {
    for (const auto& marking : colMarkings) {
        if (!marking->MetaName.empty()) return false;
    }
    return true;
}

bool cMarking::IsComplete() const {
    for (const auto& marking : colMarkings) {
        if (marking->MetaName.empty()) return false;
    }
    return true;
}

Str cMarking::MetaName(std::int16_t n) const {
    if (n < 1 || n > Count()) raise(err::SubscriptOutOfRange);
    return colMarkings[static_cast<std::size_t>(n - 1)]->MetaName;
}

void cMarking::setMetaName(std::int16_t n, const Str& value) {
    if (n < 1 || n > Count()) raise(err::SubscriptOutOfRange);
    colMarkings[static_cast<std::size_t>(n - 1)]->MetaName = value;
}

}  // namespace hb
