// The metadata list text (the registry value "MetadataList"): the lists
// read from any text, written out again and read back, are the same lists,
// and writing them again gives the same text.
#include "fuzz/FuzzSupport.h"
#include "settings/cPersonalSettings.h"

namespace hb::fuzz {
namespace {

using Lists = std::vector<std::pair<Str, std::vector<Str>>>;

Lists listsOf(const cPersonalSettings& p) {
    Lists out;
    for (const auto& d : p.MetaDataLists) {
        if (!d || !d->MetaDic) fail("a list without its dictionary");
        out.emplace_back(d->Caption, d->MetaDic->Keys());
    }
    return out;
}

}  // namespace
}  // namespace hb::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace hb;
    using namespace hb::fuzz;
    const Str input = textOf(data, size);
    Run run;
    Env& e = run.e;

    cPersonalSettings p(e.s, cPersonalSettings::BodyOnly{});
    // A list from before: a text without any CR LF leaves the lists alone.
    auto before = std::make_shared<cMetaDictionary>(e.s);
    before->Caption = u"Before";
    before->AddMeta(u"kept", Str(), Currency{}, 0, Str(), false);
    p.MetaDataLists.push_back(before);

    p.subPopulateMetadataList(input);
    HB_FUZZ_CHECK(!e.takeError(), input);
    const bool hasLineBreak = input.find(u"\r\n") != Str::npos;
    if (!hasLineBreak) {
        HB_FUZZ_CHECK(p.MetaDataLists.size() == 1 && p.MetaDataLists[0] == before);
    }
    // A text whose last line has no CR LF loses that line, and the load says
    // so: the next save must not store the lists without it.
    const bool whole = input.empty() || input.ends_with(u"\r\n");
    HB_FUZZ_CHECK(p.blnLoadFailed() == !whole);
    for (const auto& [caption, items] : listsOf(p)) {
        HB_FUZZ_CHECK(!caption.empty() && caption.find(u':') == Str::npos &&
                          caption.find(u"\r\n") == Str::npos,
                      caption);
        for (const Str& item : items)
            HB_FUZZ_CHECK(
                !item.empty() && item.find(u';') == Str::npos && item.find(u"\r\n") == Str::npos,
                item);
    }

    const Str list = p.fncMetadataList().toStr();
    // Read into a session's fresh settings, as a load does.
    cPersonalSettings q(e.s, cPersonalSettings::BodyOnly{});
    q.subPopulateMetadataList(list);
    HB_FUZZ_CHECK(!e.takeError(), list);
    HB_FUZZ_CHECK(!q.blnLoadFailed(), list);
    HB_FUZZ_CHECK(listsOf(q) == listsOf(p), list);
    HB_FUZZ_CHECK(q.fncMetadataList().toStr() == list, list);

    // The same lines as the metadata part of a settings body read the same.
    cPersonalSettings b(e.s, cPersonalSettings::BodyOnly{});
    b.FromString(u"2\r\nC:\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\n" + list);
    HB_FUZZ_CHECK(!e.takeError(), list);
    HB_FUZZ_CHECK(listsOf(b) == listsOf(p), list);
    return 0;
}
