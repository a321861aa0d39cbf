// Recurring series: the pattern (which days a series has occurrences on),
// its exceptions and deleted occurrences, and the RecurrencePattern,
// Exceptions and Exception objects. The rules modelled are listed in
// sim/Outlook.h.
#include <algorithm>
#include <climits>
#include <cmath>

#include "common/DateTime.h"
#include "sim/OutlookInternal.h"

namespace sim {

using namespace detail;
using hb::Members;

namespace {

// The last day the run time's dates reach (31 December 9999).
constexpr std::int32_t kLastDay = 2958465;
// PatternEndDate of a series without end, as Outlook gives it.
constexpr int kNoEndYear = 4500;

// 0 Sunday ... 6 Saturday (day 0, 30 December 1899, was a Saturday).
int weekday(std::int32_t day) {
    return ((day % 7) + 13) % 7;
}

std::int32_t maskOf(std::int32_t day) {
    return 1 << weekday(day);
}

hb::dt::Parts partsOf(std::int32_t day) {
    return hb::dt::toParts(static_cast<double>(day));
}

// Whether the day is the instance-th (5: the last) of the days of its
// month whose weekday is in the mask.
bool nthOfMonth(std::int32_t day, std::int32_t mask, std::int32_t instance) {
    if (!(mask & maskOf(day))) return false;
    auto p = partsOf(day);
    if (instance >= 5) {
        int dim = hb::dt::daysInMonth(p.year, p.month);
        for (int d = p.day + 1; d <= dim; ++d) {
            if (mask & maskOf(day + (d - p.day))) return false;
        }
        return true;
    }
    int k = 0;
    for (int d = 1; d <= p.day; ++d) {
        if (mask & maskOf(day - (p.day - d))) ++k;
    }
    return k == instance;
}

// A day of month past the month's end falls on its last day.
bool isDayOfMonth(const hb::dt::Parts& p, std::int32_t dayOfMonth) {
    return p.day == std::min(dayOfMonth, hb::dt::daysInMonth(p.year, p.month));
}

}  // namespace

// ======================= the pattern =======================

namespace {

Recurrence pattern(std::int32_t type, std::int32_t interval, std::int32_t mask = 0,
                   std::int32_t dayOfMonth = 0, std::int32_t month = 0, std::int32_t instance = 0) {
    Recurrence r;
    r.type = type;
    r.interval = interval;
    r.dayOfWeekMask = mask;
    r.dayOfMonth = dayOfMonth;
    r.monthOfYear = month;
    r.instance = instance;
    return r;
}

}  // namespace

Recurrence Recurrence::daily(std::int32_t interval) {
    return pattern(ol::RecursDaily, interval);
}

Recurrence Recurrence::weekly(std::int32_t mask, std::int32_t interval) {
    return pattern(ol::RecursWeekly, interval, mask);
}

Recurrence Recurrence::monthly(std::int32_t dayOfMonth, std::int32_t interval) {
    return pattern(ol::RecursMonthly, interval, 0, dayOfMonth);
}

Recurrence Recurrence::monthNth(std::int32_t instance, std::int32_t mask, std::int32_t interval) {
    return pattern(ol::RecursMonthNth, interval, mask, 0, 0, instance);
}

Recurrence Recurrence::yearly(std::int32_t month, std::int32_t dayOfMonth) {
    return pattern(ol::RecursYearly, 1, 0, dayOfMonth, month);
}

Recurrence Recurrence::yearNth(std::int32_t instance, std::int32_t mask, std::int32_t month) {
    return pattern(ol::RecursYearNth, 1, mask, 0, month, instance);
}

Recurrence Recurrence::until(hb::Date last) const {
    Recurrence r = *this;
    r.noEndDate = false;
    r.occurrences = 0;
    r.patternEnd = dayOf(last);
    return r;
}

Recurrence Recurrence::times(std::int32_t count) const {
    Recurrence r = *this;
    r.noEndDate = false;
    r.occurrences = count;
    return r;
}

bool Recurrence::matchesDay(std::int32_t day) const {
    if (day < patternStart) return false;
    const std::int32_t every = std::max(interval, 1);
    auto months = [&](const hb::dt::Parts& p) {
        auto s = partsOf(patternStart);
        return (p.year - s.year) * 12 + (p.month - s.month);
    };
    switch (type) {
        case ol::RecursDaily:
            return (day - patternStart) % every == 0;
        case ol::RecursWeekly: {
            if (!(dayOfWeekMask & maskOf(day))) return false;
            // Weeks run from Sunday; the interval counts them from the
            // week of the pattern's start.
            std::int32_t weeks =
                ((day - weekday(day)) - (patternStart - weekday(patternStart))) / 7;
            return weeks % every == 0;
        }
        case ol::RecursMonthly: {
            auto p = partsOf(day);
            return months(p) % every == 0 && isDayOfMonth(p, dayOfMonth);
        }
        case ol::RecursMonthNth: {
            auto p = partsOf(day);
            return months(p) % every == 0 && nthOfMonth(day, dayOfWeekMask, instance);
        }
        case ol::RecursYearly: {
            auto p = partsOf(day);
            return p.month == monthOfYear && isDayOfMonth(p, dayOfMonth) &&
                   (p.year - partsOf(patternStart).year) % every == 0;
        }
        case ol::RecursYearNth: {
            auto p = partsOf(day);
            return p.month == monthOfYear && nthOfMonth(day, dayOfWeekMask, instance) &&
                   (p.year - partsOf(patternStart).year) % every == 0;
        }
        default:
            return false;
    }
}

std::vector<std::int32_t> Recurrence::days(std::int32_t from, std::int32_t to,
                                           std::size_t cap) const {
    std::vector<std::int32_t> out;
    std::int32_t last = std::min(to, kLastDay);
    if (!noEndDate && occurrences == 0) last = std::min(last, patternEnd);
    // Counting the occurrences needs every one from the start; otherwise
    // the walk begins where the caller's range does.
    std::int32_t d = occurrences > 0 ? patternStart : std::max(from, patternStart);
    std::int32_t counted = 0;
    for (; d <= last && out.size() < cap; ++d) {
        if (!matchesDay(d)) continue;
        if (occurrences > 0 && ++counted > occurrences) break;
        if (d >= from) out.push_back(d);
    }
    return out;
}

std::optional<std::int32_t> Recurrence::lastDay() const {
    if (noEndDate) return std::nullopt;
    if (occurrences == 0) return patternEnd;
    auto all = days(patternStart, kLastDay, static_cast<std::size_t>(occurrences));
    if (all.empty()) return patternStart;
    return all.back();
}

// ======================= series, exceptions, occurrences =======================

std::shared_ptr<Item> Folder::addSeries(Str subject, hb::Date start, hb::Date end,
                                        Recurrence pattern, Str categories) {
    auto item = addAppointment(std::move(subject), start, end, std::move(categories));
    std::int32_t day = dayOf(start);
    auto p = partsOf(day);
    pattern.patternStart = day;
    pattern.startTime = start.days - day;
    pattern.duration = end.days - start.days;
    // What the first start implies where the pattern leaves it open, as
    // Outlook's pattern takes it from the appointment.
    if (pattern.dayOfWeekMask == 0) pattern.dayOfWeekMask = maskOf(day);
    if (pattern.dayOfMonth == 0) pattern.dayOfMonth = p.day;
    if (pattern.monthOfYear == 0) pattern.monthOfYear = p.month;
    if (pattern.instance == 0) pattern.instance = std::min((p.day + 6) / 7, 5);
    item->isRecurring = true;
    item->recurrence = pattern;
    return item;
}

std::shared_ptr<Item> Folder::addRecurringAppointment(Str subject, hb::Date start, hb::Date end,
                                                      Str categories) {
    return addSeries(std::move(subject), start, end, Recurrence::weekly(0), std::move(categories));
}

std::shared_ptr<Item> Folder::addAllDayEvent(Str subject, hb::Date firstDay, int days,
                                             Str categories) {
    auto first = static_cast<double>(dayOf(firstDay));
    auto item = addAppointment(std::move(subject), hb::Date{first},
                               hb::Date{first + std::max(days, 1)}, std::move(categories));
    item->allDayEvent = true;
    item->reminderSet = false;
    return item;
}

std::shared_ptr<Item> Item::addException(hb::Date s, hb::Date e) {
    return addException(hb::Date{dayOf(s) + recurrence.startTime}, s, e);
}

std::shared_ptr<Item> Item::addException(hb::Date originalStart, hb::Date s, hb::Date e) {
    isRecurring = true;
    auto x = world().make<Item>(ItemKind::Appointment, Str(kExceptionClass));
    copyValues(*x, *this, false);
    x->messageClass = kExceptionClass;
    x->start = s;
    x->end = e;
    x->originalDate = originalStart;
    x->entryId = entryId;
    x->master = detail::self(*this);
    x->folder = folder;
    x->inFolder = false;
    exceptions.push_back(x);
    return x;
}

void Item::deleteOccurrence(hb::Date originalStart) {
    isRecurring = true;
    std::int32_t day = dayOf(originalStart);
    std::erase_if(exceptions, [&](const auto& x) { return dayOf(x->originalDate) == day; });
    if (!deletedOn(day)) deletedOccurrences.push_back(originalStart);
}

std::shared_ptr<Item> Item::exceptionOn(std::int32_t day) const {
    for (const auto& x : exceptions) {
        if (dayOf(x->originalDate) == day) return x;
    }
    return nullptr;
}

bool Item::deletedOn(std::int32_t day) const {
    return std::any_of(deletedOccurrences.begin(), deletedOccurrences.end(),
                       [&](hb::Date d) { return dayOf(d) == day; });
}

std::shared_ptr<Item> Item::occurrence(hb::Date s, hb::Date e) {
    isRecurring = true;
    for (const auto& list : {occurrences, exceptions}) {
        for (const auto& o : list) {
            if (o->start.days == s.days) return o;
        }
    }
    auto o = occurrenceRecord(*this, s);
    o->end = e;
    occurrences.push_back(o);
    return o;
}

namespace detail {

std::shared_ptr<Item> occurrenceRecord(Item& master, hb::Date originalStart) {
    for (const auto& o : master.occurrences) {
        if (secondsOf(o->originalDate) == secondsOf(originalStart)) return o;
    }
    auto o = master.world().make<Item>(ItemKind::Appointment, master.messageClass);
    copyValues(*o, master, false);
    copyProperties(*o, master);
    o->start = originalStart;
    o->end = hb::Date{originalStart.days + master.recurrence.duration};
    o->originalDate = originalStart;
    o->entryId = master.entryId;
    o->master = self(master);
    o->folder = master.folder;
    o->isOccurrence = true;
    return o;
}

Variant recurrencePatternOf(Item& item) {
    Item& r = item.record();
    if (auto m = r.master.lock()) return obj(item.world().make<RecurrencePattern>(m));
    if (r.isRecurring) return obj(item.world().make<RecurrencePattern>(self(r)));
    // Asked of a single appointment, Outlook makes it a weekly series on
    // its day: this object is one now, and the item once it is saved.
    Item& values = *item.resolved();
    values.isRecurring = true;
    Recurrence p = Recurrence::weekly(maskOf(dayOf(values.start)));
    p.patternStart = dayOf(values.start);
    p.startTime = values.start.days - p.patternStart;
    p.duration = values.end.days - values.start.days;
    values.recurrence = p;
    changed(values);
    return obj(item.world().make<RecurrencePattern>(item.resolved()));
}

}  // namespace detail

// ======================= the pattern objects =======================

namespace {

[[noreturn]] void noSuchInstance() {
    hb::raise(kOutlookErrorNumber,
              u"You changed one of the recurrences of this item, and this instance no longer "
              u"exists. Close any open items and try again.");
}

Variant getOccurrence(RecurrencePattern& rp, const Variant& when) {
    Item& m = *rp.master;
    hb::Date d = when.toDate();
    std::int32_t day = dayOf(d);
    const Recurrence& r = m.recurrence;
    bool timeGiven = secondsOf(d) != secondsOf(hb::Date{static_cast<double>(day)});
    if (auto x = m.exceptionOn(day)) {
        if (timeGiven && secondsOf(x->originalDate) != secondsOf(d)) noSuchInstance();
        return m.world().lookup(x);
    }
    hb::Date start{day + r.startTime};
    if (m.deletedOn(day) || r.days(day, day, 1).empty()) noSuchInstance();
    if (timeGiven && secondsOf(start) != secondsOf(d)) noSuchInstance();
    return m.world().lookup(occurrenceRecord(m, start));
}

std::shared_ptr<const hb::MemberTable> patternTable() {
    static const auto t =
        Members<RecurrencePattern>()
            .get(u"RecurrenceType", [](RecurrencePattern& p) { return p.master->recurrence.type; })
            .get(u"Interval", [](RecurrencePattern& p) { return p.master->recurrence.interval; })
            .get(u"DayOfWeekMask",
                 [](RecurrencePattern& p) {
                     const Recurrence& r = p.master->recurrence;
                     bool usesMask = r.type == ol::RecursWeekly || r.type == ol::RecursMonthNth ||
                                     r.type == ol::RecursYearNth;
                     return usesMask ? r.dayOfWeekMask : 0;
                 })
            .get(u"DayOfMonth",
                 [](RecurrencePattern& p) {
                     const Recurrence& r = p.master->recurrence;
                     bool usesDay = r.type == ol::RecursMonthly || r.type == ol::RecursYearly;
                     return usesDay ? r.dayOfMonth : 0;
                 })
            .get(u"MonthOfYear",
                 [](RecurrencePattern& p) {
                     const Recurrence& r = p.master->recurrence;
                     bool yearly = r.type == ol::RecursYearly || r.type == ol::RecursYearNth;
                     return yearly ? r.monthOfYear : 0;
                 })
            .get(u"Instance",
                 [](RecurrencePattern& p) {
                     const Recurrence& r = p.master->recurrence;
                     bool nth = r.type == ol::RecursMonthNth || r.type == ol::RecursYearNth;
                     return nth ? r.instance : 0;
                 })
            .get(u"PatternStartDate",
                 [](RecurrencePattern& p) {
                     return hb::Date{static_cast<double>(p.master->recurrence.patternStart)};
                 })
            .get(u"PatternEndDate",
                 [](RecurrencePattern& p) {
                     auto last = p.master->recurrence.lastDay();
                     if (!last) return makeDate(kNoEndYear, 12, 31);
                     return hb::Date{static_cast<double>(*last)};
                 })
            .get(u"NoEndDate", [](RecurrencePattern& p) { return p.master->recurrence.noEndDate; })
            .get(u"Occurrences",
                 [](RecurrencePattern& p) {
                     const Recurrence& r = p.master->recurrence;
                     if (r.noEndDate) return std::int32_t{0};
                     if (r.occurrences > 0) return r.occurrences;
                     return static_cast<std::int32_t>(
                         r.days(r.patternStart, r.patternEnd, SIZE_MAX).size());
                 })
            .get(u"StartTime",
                 [](RecurrencePattern& p) { return hb::Date{p.master->recurrence.startTime}; })
            .get(u"EndTime",
                 [](RecurrencePattern& p) {
                     const Recurrence& r = p.master->recurrence;
                     double end = r.startTime + r.duration;
                     return hb::Date{end - std::floor(end + 1e-9)};
                 })
            .get(u"Duration",
                 [](RecurrencePattern& p) {
                     return static_cast<std::int32_t>(
                         std::lround(p.master->recurrence.duration * 1440.0));
                 })
            .method(u"GetOccurrence",
                    [](RecurrencePattern& p, Args& args) {
                        return getOccurrence(p, hb::requiredArg(args, 0));
                    })
            .get(u"Exceptions",
                 [](RecurrencePattern& p) { return obj(p.world().make<Exceptions>(p.master)); })
            .get(u"Parent", [](RecurrencePattern& p) { return p.world().lookup(p.master); })
            .get(u"Application", [](RecurrencePattern& p) { return obj(p.world().application()); })
            .build();
    return t;
}

// The exceptions and deletions of a series, in order of original start.
std::vector<std::shared_ptr<RecurrenceException>> exceptionList(Exceptions& e) {
    std::vector<std::shared_ptr<RecurrenceException>> out;
    for (const auto& x : e.master->exceptions)
        out.push_back(e.world().make<RecurrenceException>(x->originalDate, x));
    for (hb::Date d : e.master->deletedOccurrences)
        out.push_back(e.world().make<RecurrenceException>(d, nullptr));
    std::stable_sort(out.begin(), out.end(), [](const auto& a, const auto& b) {
        return a->originalDate.days < b->originalDate.days;
    });
    return out;
}

std::shared_ptr<const hb::MemberTable> exceptionsTable() {
    static const auto t =
        Members<Exceptions>()
            .get(u"Count",
                 [](Exceptions& e) {
                     return static_cast<std::int32_t>(e.master->exceptions.size() +
                                                      e.master->deletedOccurrences.size());
                 })
            .method(u"Item",
                    [](Exceptions& e, Args& args) {
                        auto list = exceptionList(e);
                        return obj(list[indexArg(hb::requiredArg(args, 0), list.size())]);
                    })
            .defaultMember(u"Item")
            .get(u"Parent",
                 [](Exceptions& e) { return obj(e.world().make<RecurrencePattern>(e.master)); })
            .enumerable([](Exceptions& e) {
                std::vector<Variant> out;
                for (const auto& x : exceptionList(e))
                    out.push_back(obj(x));
                return out;
            })
            .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> exceptionTable() {
    static const auto t =
        Members<RecurrenceException>()
            .get(u"OriginalDate", [](RecurrenceException& x) { return x.originalDate; })
            .get(u"Deleted", [](RecurrenceException& x) { return x.item == nullptr; })
            .get(u"AppointmentItem",
                 [](RecurrenceException& x) {
                     if (!x.item) noSuchInstance();
                     return x.world().lookup(x.item);
                 })
            .get(u"Application",
                 [](RecurrenceException& x) { return obj(x.world().application()); })
            .build();
    return t;
}

}  // namespace

RecurrencePattern::RecurrencePattern(Outlook& world, std::shared_ptr<Item> master_)
    : SimObject(world, u"RecurrencePattern", patternTable()), master(std::move(master_)) {}

Exceptions::Exceptions(Outlook& world, std::shared_ptr<Item> master_)
    : SimObject(world, u"Exceptions", exceptionsTable()), master(std::move(master_)) {}

RecurrenceException::RecurrenceException(Outlook& world, hb::Date originalDate_,
                                         std::shared_ptr<Item> item_)
    : SimObject(world, u"Exception", exceptionTable()),
      originalDate(originalDate_),
      item(std::move(item_)) {}

}  // namespace sim
