// Long properties: a text of any length and any UTF-16 code units, stored
// as numbered user properties of the simulated Outlook's appointment, reads
// back as it was; a second, shorter or longer, text stored over it reads
// back as the second; no piece is longer than 1000 characters.
//
// Input: two lengths added to the texts (so that texts of many pieces are
// reached), a cut, then the code units (UTF-16LE) of both texts.
#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/FuzzSupport.h"
#include "settings/modSettingsAppointment.h"
#include "sim/Scenario.h"

namespace {

using namespace hb;

struct SimWorld {
    sim::Scenario sc;
    std::shared_ptr<sim::Item> appt;
    Variant handle;
    SimWorld() {
        auto cal = sc.outlook().calendar();
        appt = cal->addAppointment(u"x", sim::makeDate(2024, 1, 1), sim::makeDate(2024, 1, 2));
        sc.instruments().setLogging(false);
        handle = sc.instruments().toAddin(Variant(ObjectPtr(appt)), u"fuzz");
    }
};

// Building the simulated Outlook costs more than a run, so one is kept for
// a few hundred runs (the appointment loses its user properties before each
// run). The world keeps a weak reference to every object it made, so runs
// do not free all they allocate: scripts/fuzz.sh runs this target without
// libFuzzer's leak check, and the world is built anew now and then.
SimWorld& world() {
    static std::unique_ptr<SimWorld> w;
    static unsigned runs = 0;
    if (!w || ++runs % 512 == 0) {
        w.reset();
        w = std::make_unique<SimWorld>();
    }
    w->appt->userProperties.clear();
    return *w;
}

Str padded(Str text, std::size_t extra, char16_t unit) {
    text.append(extra, unit);
    return text;
}

void storeAndRead(fuzz::Env& e, SimWorld& w, const Str& text) {
    subFixLongProperty(e.s, w.handle, text, u"Settings");
    HB_FUZZ_CHECK(!e.takeError(), toStr(static_cast<long long>(text.size())));
    for (const auto& p : w.appt->userProperties) {
        if (p->name != u"SettingsCount") HB_FUZZ_CHECK(p->value.toStr().size() <= 1000, p->name);
    }
    const Str back = fncGetLongProperty(e.s, w.handle, u"Settings");
    HB_FUZZ_CHECK(back == text, u"length " + toStr(static_cast<long long>(text.size())) +
                                    u", read " + toStr(static_cast<long long>(back.size())));
    HB_FUZZ_CHECK(e.s.err.number == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace hb::fuzz;
    FuzzedDataProvider in(data, size);
    const std::size_t extraA = in.ConsumeIntegralInRange<std::size_t>(0, 4600);
    const std::size_t extraB = in.ConsumeIntegralInRange<std::size_t>(0, 2600);
    const std::size_t cut = in.ConsumeIntegral<std::uint16_t>();
    const std::vector<std::uint8_t> rest = in.ConsumeRemainingBytes<std::uint8_t>();
    Str units;
    for (std::size_t i = 0; i + 1 < rest.size(); i += 2)
        units += static_cast<char16_t>(rest[i] | (rest[i + 1] << 8));
    const std::size_t at = units.empty() ? 0 : cut % (units.size() + 1);
    const char16_t fill = units.empty() ? u'x' : units.back();
    const Str a = padded(units.substr(0, at), extraA, fill);
    const Str b = padded(units.substr(at), extraB, fill);

    Run run;
    Env& e = run.e;
    SimWorld& w = world();
    storeAndRead(e, w, a);
    storeAndRead(e, w, b);
    return 0;
}
