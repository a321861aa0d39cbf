// The registry text read path (SaveSettingString, GetSettingString) over
// the memory registry, driven by a list of operations: what is stored reads
// back; odd data (a size without the terminating zero, any size, other
// value types, failing registry calls, blank names) gives a defined text or
// the store's own error, never anything else, and no key stays open.
#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/FuzzSupport.h"
#include "settings/modRegistryEntry.h"

namespace {

using namespace hb;

constexpr char16_t kBase[] = u"Software\\Brindlewood\\Hourbook for Outlook\\";

Str smallText(FuzzedDataProvider& in, std::size_t max) {
    const std::string bytes = in.ConsumeRandomLengthString(max);
    return fuzz::textOf(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

// Section and key names: mostly a few fixed ones, so that values meet.
Str name(FuzzedDataProvider& in, std::initializer_list<const char16_t*> usual) {
    const std::size_t i = in.ConsumeIntegralInRange<std::size_t>(0, usual.size());
    if (i < usual.size()) return usual.begin()[i];
    return smallText(in, 12);
}

// The read, with what it may raise: the store's errors only.
std::optional<Str> read(fuzz::Env& e, const Str& section, const Str& key, const Str& def,
                        std::int32_t& number, Str& description) {
    try {
        return GetSettingString(e.platform, section, key, def);
    } catch (const AutomationError& x) {
        number = x.number();
        description = x.description();
        return std::nullopt;
    }
}

bool blank(const Str& s) {
    return text::trim(s).empty();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace hb::fuzz;
    FuzzedDataProvider in(data, size);
    Run run;
    Env& e = run.e;
    e.platform.deleteKey(u"Software");
    e.platform.clearFailures();
    int ops = 0;
    while (in.remaining_bytes() > 0 && ops++ < 16) {
        const Str section = name(in, {u"Settings", u" Settings ", u"Other", u"A\\B"});
        const Str key = name(in, {u"ReportChoice", u"MetadataList", u" reportchoice"});
        const Str def = in.ConsumeBool() ? Str(u"NULL") : Str();
        const Str path = kBase + text::trim(section);
        const Str value = text::trim(key);
        const bool blankName = blank(section) || blank(key);
        std::int32_t number = 0;
        Str description;
        switch (in.ConsumeIntegralInRange<int>(0, 5)) {
            case 0: {  // written through the store: reads back as written
                const Str text = smallText(in, 64);
                bool saved = true;
                try {
                    SaveSettingString(e.platform, section, key, text);
                } catch (const AutomationError& x) {
                    saved = false;
                    HB_FUZZ_CHECK(blankName, x.description());
                }
                if (saved) {
                    HB_FUZZ_CHECK(!blankName);
                    const auto got = read(e, section, key, def, number, description);
                    HB_FUZZ_CHECK(got && *got == text, text);
                }
                break;
            }
            case 1: {  // a text with any reported size
                if (blankName) break;
                const Str text = smallText(in, 64);
                const std::uint32_t sizeBytes = in.ConsumeIntegralInRange<std::uint32_t>(0, 200);
                e.platform.setString(path, value, text, sizeBytes);
                const auto got = read(e, section, key, def, number, description);
                HB_FUZZ_CHECK(got.has_value(), description);
                // Never more than the text, never anything but its start; a
                // size that counts the zero gives it whole.
                HB_FUZZ_CHECK(got->size() <= text.size() && text.starts_with(*got), *got);
                if (sizeBytes > text.size()) HB_FUZZ_CHECK(*got == text, *got);
                break;
            }
            case 2: {  // another type: the store's "not a string"
                if (blankName) break;
                const std::uint32_t type = in.ConsumeIntegralInRange<std::uint32_t>(0, 12);
                if (type == win::RegDword) {
                    e.platform.setDword(path, value, in.ConsumeIntegral<std::uint32_t>());
                } else {
                    e.platform.setRawValue(path, value, type, in.ConsumeIntegral<std::uint32_t>());
                }
                const auto got = read(e, section, key, def, number, description);
                if (type == win::RegSz) {
                    HB_FUZZ_CHECK(got.has_value(), description);
                } else {
                    HB_FUZZ_CHECK(!got && number == regerr::kRegistry &&
                                      description == u"Registry data not a string",
                                  description);
                }
                break;
            }
            case 3: {  // a failing registry call
                static const char* const kCalls[] = {"regOpenKey", "regQueryValue", "regCreateKey",
                                                     "regSetString"};
                const char* call = kCalls[in.ConsumeIntegralInRange<int>(0, 3)];
                const std::int32_t code = in.ConsumeIntegralInRange<std::int32_t>(1, 1400);
                e.platform.failNext(call, code);
                const auto got = read(e, section, key, def, number, description);
                e.platform.clearFailures();
                if (blankName) {
                    HB_FUZZ_CHECK(!got && number != regerr::kRegistry + code);
                } else if (!got) {
                    // Only a failed open that is not "not found" raises, with
                    // the call's code; or the value there is no string.
                    HB_FUZZ_CHECK((std::string(call) == "regOpenKey" && code != 2 &&
                                   number == regerr::kRegistry + code) ||
                                      (number == regerr::kRegistry &&
                                       description == u"Registry data not a string"),
                                  description);
                }
                break;
            }
            case 4: {  // a key or value taken away
                if (in.ConsumeBool()) {
                    e.platform.deleteKey(path);
                } else if (!blankName) {
                    RegKey k = 0;
                    if (e.platform.regCreateKey(path, k) == win::ErrorSuccess) {
                        e.platform.regDeleteValue(k, value);
                        e.platform.regCloseKey(k);
                    }
                }
                const auto got = read(e, section, key, def, number, description);
                if (!blankName) {
                    HB_FUZZ_CHECK(got && *got == def,
                                  section + u" | " + key + u" | " + got.value_or(description));
                }
                break;
            }
            default: {  // a plain read of whatever is there
                const auto got = read(e, section, key, def, number, description);
                if (!got) {
                    HB_FUZZ_CHECK(blankName || number == regerr::kRegistry, description);
                }
                break;
            }
        }
        HB_FUZZ_CHECK(e.platform.openKeyCount() == 0);
    }
    return 0;
}
