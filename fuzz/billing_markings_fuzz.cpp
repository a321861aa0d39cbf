// The billing information text and the markings: any text sets only names
// that are entries of their lists; markings built into a text and read back
// give the same markings wherever no name contains the separator.
//
// Input: a byte choosing the list separator, a byte choosing the markings,
// then the lists as text: lists separated by LF, entries by TAB; the rest of
// the text after a line holding only "=" is a billing text read as it is.
#include "fuzz/FuzzSupport.h"
#include "metadata/cMarking.h"
#include "settings/cPersonalSettings.h"

namespace {

// List separators of the regional settings: mostly one character, a few
// longer (a separator is a text of up to three characters).
const char16_t* const kSeparators[] = {u",", u";", u"\u060C", u"\u061B", u"\u3001", u" ",
                                       u"|", u"a", u", ",     u";;",     u"\u00A0", u"\t"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace hb;
    using namespace hb::fuzz;
    if (size < 2) return 0;
    const Str sep = kSeparators[data[0] % std::size(kSeparators)];
    const std::uint8_t choice = data[1];
    const Str all = textOf(data + 2, size - 2);
    Str listsText = all;
    std::optional<Str> billing;
    if (const auto at = all.find(u"\n=\n"); at != Str::npos) {
        listsText = all.substr(0, at);
        billing = all.substr(at + 3);
    }

    Run run;
    Env& e = run.e;
    e.s.strListSeparator = sep;
    auto settings = std::make_shared<cPersonalSettings>(e.s, cPersonalSettings::BodyOnly{});
    for (const Str& line : text::split(listsText, u"\n")) {
        if (settings->MetaDataLists.size() == 4) break;
        auto d = std::make_shared<cMetaDictionary>(e.s);
        d->Caption = u"L" + toStr(static_cast<long long>(settings->MetaDataLists.size()));
        for (const Str& name : text::split(line, u"\t"))
            d->AddMeta(name, Str(), Currency{}, 0, Str());
        settings->MetaDataLists.push_back(d);
    }
    e.s.oPersonalSettings = settings;
    struct Release {
        Session& s;
        ~Release() { s.oPersonalSettings.reset(); }
    } release{e.s};
    const auto& lists = settings->MetaDataLists;
    auto inList = [&](std::size_t j, const Str& name) {
        const auto* entry = lists[j]->MetaDic->find(name);
        return entry && (*entry)->MetaName == name;
    };

    // Any billing text: every marking it sets is an entry of its list.
    if (billing) {
        cMarking m(e.s);
        m.BillingToMarkings(*billing);
        HB_FUZZ_CHECK(!e.takeError(), *billing);
        for (std::size_t j = 0; j < lists.size(); ++j) {
            const Str& v = m.colMarkings[j]->MetaName;
            HB_FUZZ_CHECK(v.empty() || inList(j, v), v);
        }
    }

    // Markings chosen from the lists: two bits per list, 0 none, else the
    // entry 1..3 of the list when it has one.
    cMarking m(e.s);
    std::vector<Str> chosen(lists.size());
    for (std::size_t j = 0; j < lists.size(); ++j) {
        const std::vector<Str> keys = lists[j]->MetaDic->Keys();
        const std::size_t pick = (choice >> (2 * j)) & 3u;
        if (pick != 0 && pick <= keys.size()) chosen[j] = keys[pick - 1];
        m.setMetaName(static_cast<std::int16_t>(j + 1), chosen[j]);
    }
    const Str billingText = m.MarkingCategories();
    HB_FUZZ_CHECK(!e.takeError());

    // The names the text can carry: none holds a character of the separator
    // (then every separator in the text is one that was put there) nor
    // blanks at its ends (pieces are trimmed).
    for (const Str& name : chosen) {
        if (name.find_first_of(sep) != Str::npos || name != text::trim(name)) return 0;
    }
    cMarking back(e.s);
    back.BillingToMarkings(billingText);
    HB_FUZZ_CHECK(!e.takeError(), billingText);
    bool same = true;
    for (std::size_t j = 0; j < lists.size(); ++j) {
        // A name that is an entry of several lists marks each of them: the
        // last chosen name that list j holds is its marking.
        Str expected;
        for (const Str& name : chosen)
            if (!name.empty() && inList(j, name)) expected = name;
        HB_FUZZ_CHECK(back.colMarkings[j]->MetaName == expected,
                      billingText + u" | list " + toStr(static_cast<long long>(j)) + u": " +
                          back.colMarkings[j]->MetaName + u" <> " + expected);
        same = same && expected == chosen[j];
    }
    // The same markings build the same text.
    if (same) HB_FUZZ_CHECK(back.MarkingCategories() == billingText, billingText);
    return 0;
}
