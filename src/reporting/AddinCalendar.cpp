#include "reporting/AddinCalendar.h"

#include <exception>

#include "common/Constants.h"
#include "common/Object.h"
#include "reporting/CalendarTransfer.h"

namespace hb::reporting {

namespace {

// The version of the text this program reads.
constexpr std::int32_t kServiceVersion = 1;

}  // namespace

AddinCalendar::AddinCalendar(Variant application, Locale locale)
    : application_(application), direct_(std::move(application), std::move(locale)) {}

// The add-in's object in Office's list, or Nothing when Outlook has none to
// give (no such list, the add-in not loaded, an object of another version).
Variant AddinCalendar::service() {
    try {
        Variant addin = application_.toObject()
                            ->get(u"COMAddIns")
                            .toObject()
                            ->call(u"Item", {Str(kAddinProgId)});
        Variant object = addin.toObject()->get(u"Object");
        if (object.isObject() && !object.isNothing() &&
            object.toObject()->get(u"Version").toLong() == kServiceVersion)
            return object;
    } catch (const std::exception&) {
    }
    return Variant::nothing();
}

std::vector<CalendarEntry> AddinCalendar::read(const Period& period) {
    throughAddin_ = false;
    if (!addinFailed_ && !period.empty()) {
        try {
            Variant object = service();
            if (!object.isNothing()) {
                const Str text = object.toObject()
                                     ->call(u"ReadCalendar", {Variant(std::int32_t{period.first}),
                                                              Variant(std::int32_t{period.last})})
                                     .toStr();
                std::vector<CalendarEntry> entries = decodeEntries(text);
                throughAddin_ = true;
                return entries;
            }
        } catch (const std::exception&) {
        }
        addinFailed_ = true;
    }
    return direct_.read(period);
}

}  // namespace hb::reporting
