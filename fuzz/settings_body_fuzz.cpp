// The settings body: whatever FromString accepts, the body built next reads
// back with the same fields, and building again gives the same text.
#include "fuzz/FuzzSupport.h"
#include "settings/cPersonalSettings.h"

namespace hb::fuzz {
namespace {

struct Fields {
    std::int32_t choice;
    Str value;
    Currency rate;
    bool events, priv, recurring;
    std::vector<std::pair<Str, std::vector<Str>>> lists;
    bool operator==(const Fields&) const = default;
};

Fields fieldsOf(const cPersonalSettings& p) {
    Fields f{p.lngReportChoice,
             p.strReportValue,
             p.curPersonalRate,
             p.blnFilterEvents,
             p.blnFilterPrivate,
             p.blnFilterRecurring,
             {}};
    for (const auto& d : p.MetaDataLists) {
        if (!d || !d->MetaDic) fail("a list without its dictionary");
        f.lists.emplace_back(d->Caption, d->MetaDic->Keys());
    }
    return f;
}

// Construction's values, without the file look-ups.
void setStart(cPersonalSettings& p) {
    p.lngReportChoice = 2;
    p.strReportValue = u"C:\\Program Files\\Hourbook\\";
}

// Line breaks at the end of the report value are left out of a built body.
Str withoutTrailingLineBreaks(Str v) {
    while (!v.empty() && (v.back() == u'\r' || v.back() == u'\n'))
        v.pop_back();
    return v;
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
    setStart(p);
    p.FromString(input);
    const auto error = e.takeError();
    if (error) {
        // A body that does not parse fails on a conversion: type mismatch
        // or overflow, nothing else.
        HB_FUZZ_CHECK(*error == 13 || *error == 6, toStr(*error));
        // The pane's copy goes through the same text without crashing.
        cPersonalSettings pane(e.s, cPersonalSettings::BodyOnly{});
        pane.FromStringForPane(input);
        e.takeError();
        return 0;
    }
    const bool parsed = text::split(input, u"\r\n").size() >= 7;
    if (!parsed) {
        // Fewer than seven lines: nothing taken.
        HB_FUZZ_CHECK(p.lngReportChoice == 2 && p.MetaDataLists.empty() &&
                      p.curPersonalRate == Currency{} && !p.blnFilterEvents);
        return 0;
    }

    const Str body = p.fncBuildBody();
    cPersonalSettings q(e.s, cPersonalSettings::BodyOnly{});
    q.FromString(body);
    HB_FUZZ_CHECK(!e.takeError(), body);
    Fields expected = fieldsOf(p);
    expected.value = withoutTrailingLineBreaks(expected.value);
    HB_FUZZ_CHECK(fieldsOf(q) == expected, body);
    HB_FUZZ_CHECK(q.fncBuildBody() == body, body);
    // The pane parses the same body into the same lists.
    cPersonalSettings pane(e.s, cPersonalSettings::BodyOnly{});
    pane.FromStringForPane(input);
    HB_FUZZ_CHECK(!e.takeError());
    HB_FUZZ_CHECK(fieldsOf(pane).lists == fieldsOf(p).lists);
    return 0;
}
