#include "metadata/cAppointments.h"

#include "common/ErrorTrap.h"

namespace hb {

cAppointments::cAppointments(Session& s) : s_(s) {
    // Class_Initialize: the Items of the default calendar, receiving events.
    ouiApps_ = s.ofCalendar.get(u"Items");
    events_ = ouiApps_.obj().subscribe(
        u"ItemsEvents", std::make_shared<FunctionSink>([this](const Str& member, Args& args) {
            if (member == u"ItemAdd" && !args.empty()) ouiApps_ItemAdd(args[0].deref());
        }));
}

cAppointments::~cAppointments() {
    events_.disconnect();
    ouiApps_ = Variant();
}

void cAppointments::ouiApps_ItemAdd(const Variant& item) noexcept {
    // 1. Errors are ignored throughout: a failing step is skipped.
    Variant properties;
    Variant posted;
    // 2. "strPosted" among the item's user properties (by name, so any item
    // type that has them works).
    if (!resumeNext(s_, [&] { properties = item.get(u"UserProperties"); })) {
        s_.err.clear();
        return;
    }
    if (!resumeNext(s_, [&] { posted = properties.call(u"Find", {Variant(Str(u"strPosted"))}); }) ||
        !posted.isObject() || posted.isNothing()) {
        s_.err.clear();
        return;
    }
    // 3. A posted date other than 1 January 4501 is reset and the item saved.
    // A value that cannot be compared skips the test, and the next step runs.
    bool alreadyReset = false;
    resumeNext(s_, [&] {
        alreadyReset = posted.get(u"Value").toDate(s_.platform.userLocale()).days == kNotPostedDay;
    });
    if (!alreadyReset) {
        resumeNext(s_, [&] { posted.put(u"Value", Variant(Date{kNotPostedDay})); });
        resumeNext(s_, [&] { item.call(u"Save"); });
    }
    // 4.
    s_.err.clear();
}

}  // namespace hb
