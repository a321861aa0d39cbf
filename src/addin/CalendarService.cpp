#include "addin/CalendarService.h"

#include "common/AutomationError.h"
#include "reporting/CalendarTransfer.h"
#include "reporting/OutlookCalendar.h"

namespace hb {

CalendarService::CalendarService(Session& s)
    : DispatchObject(u"CalendarService", table()), s_(&s) {}

Str CalendarService::readCalendar(std::int32_t firstDay, std::int32_t lastDay) {
    if (!s_ || s_->olApp.isEmpty() || s_->olApp.isNothing())
        raise(429, u"The add-in has no Outlook session to read the calendar from.");
    if (lastDay < firstDay) raise(5, u"Invalid procedure call or argument");
    reporting::OutlookCalendar calendar(s_->olApp, s_->platform.userLocale());
    return reporting::encodeEntries(calendar.read(reporting::Period{firstDay, lastDay}));
}

std::shared_ptr<const MemberTable> CalendarService::table() {
    static const auto t =
        Members<CalendarService>()
            .method(u"ReadCalendar",
                    [](CalendarService& c, Args& args) {
                        return Variant(c.readCalendar(requiredArg(args, 0).toLong(),
                                                      requiredArg(args, 1).toLong()));
                    })
            .get(u"Version", [](CalendarService&) { return std::int32_t{1}; })
            .build();
    return t;
}

}  // namespace hb
