#include "bench/support/BigCalendar.h"

#include <cmath>

#include "common/DateTime.h"
#include "common/Text.h"

namespace bench {

namespace {

constexpr int kSingles = 94000;
constexpr int kWeeklySeries = 40;  // a year of weekly meetings each (52)
constexpr int kDailySeries = 40;   // 100 working days each

}  // namespace

void furnishBigCalendar(sim::Outlook& outlook) {
    auto cal = outlook.calendar();
    const double first = hb::dt::serial(2017, 1, 1);
    const double days = hb::dt::serial(2027, 1, 1) - first;
    for (int i = 0; i < kSingles; ++i) {
        double d = first + std::floor(days * i / kSingles);
        double hour = 7 + (i % 12);
        if (i % 10 == 0) {
            cal->addAllDayEvent(u"Off", hb::Date{d});
        } else if (i % 97 == 0) {
            cal->addAppointment(u"Night", hb::Date{d + 22.0 / 24}, hb::Date{d + 1 + 6.0 / 24},
                                u"Acme, Night");
        } else {
            cal->addAppointment(u"Work " + hb::toStr(i), hb::Date{d + hour / 24},
                                hb::Date{d + (hour + 1.5) / 24}, u"Acme, Smith");
        }
    }
    for (int s = 0; s < kWeeklySeries; ++s) {
        double start = first + s * 90 + 1;
        auto m = cal->addSeries(u"Weekly " + hb::toStr(s), hb::Date{start + 10.0 / 24},
                                hb::Date{start + 11.0 / 24}, sim::Recurrence::weekly(0).times(52),
                                u"Globex");
        m->addException(hb::Date{start + 7 + 10.0 / 24}, hb::Date{start + 7 + 15.0 / 24},
                        hb::Date{start + 7 + 16.0 / 24});
        m->deleteOccurrence(hb::Date{start + 14 + 10.0 / 24});
    }
    const std::int32_t weekdays = sim::ol::Monday | sim::ol::Tuesday | sim::ol::Wednesday |
                                  sim::ol::Thursday | sim::ol::Friday;
    for (int s = 0; s < kDailySeries; ++s) {
        double start = first + s * 91 + 3;
        cal->addSeries(u"Standup " + hb::toStr(s), hb::Date{start + 9.0 / 24},
                       hb::Date{start + 9.25 / 24}, sim::Recurrence::weekly(weekdays).times(100),
                       u"Acme, Team");
    }
}

}  // namespace bench
