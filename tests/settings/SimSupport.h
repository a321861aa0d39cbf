#pragma once
// The settings tests against the simulated Outlook: a session whose default
// calendar is the simulated one, as the add-in holds it (a Handle).
#include "SettingsTestSupport.h"
#include "common/Constants.h"
#include "sim/Scenario.h"

namespace hb::test {

struct SimEnv : Env {
    sim::Scenario sc;
    std::shared_ptr<sim::Folder> cal;

    SimEnv() {
        cal = sc.outlook().calendar();
        s.ofCalendar = handle(cal);
    }
    ~SimEnv() {
        s.oAppointments.reset();
        s.oPersonalSettings.reset();
        s.ofCalendar = Variant();
    }

    Variant handle(const std::shared_ptr<sim::SimObject>& o) {
        return sc.instruments().toAddin(Variant(hb::ObjectPtr(o)), u"test");
    }
    std::shared_ptr<sim::Item> settingsItem() { return cal->findBySubject(kSettingsSubject); }
    std::size_t settingsItemCount() {
        std::size_t n = 0;
        for (const auto& i : cal->items)
            n += i->subject == kSettingsSubject ? 1 : 0;
        return n;
    }
    // A settings appointment already in the calendar (as an older version
    // left it), with the body text stored as the long property "Settings".
    std::shared_ptr<sim::Item> addSettingsAppointment(const Str& body) {
        auto item = cal->addAppointment(kSettingsSubject, sim::makeDate(2050, 1, 1, 0, 1),
                                        sim::makeDate(2050, 1, 1, 0, 2));
        item->body = body;
        const std::int32_t k = static_cast<std::int32_t>(
            Variant(static_cast<double>(body.size()) / 1000.0).toInteger());
        for (std::int32_t i = 0; i <= k; ++i) {
            item->addUserProperty(u"Settings" + toStr(i), sim::ol::Text,
                                  Variant(text::mid(body, i * 1000 + 1, 1000)));
        }
        item->addUserProperty(u"SettingsCount", sim::ol::Number, Variant(k));
        return item;
    }
    static Variant prop(const std::shared_ptr<sim::Item>& item, StrView name) {
        auto p = item->findUserProperty(name);
        return p ? p->value : Variant::missing();
    }
};

}  // namespace hb::test
