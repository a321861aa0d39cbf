#pragma once
// Small helpers shared by the explorer and toolbar scenarios.
#include <array>
#include <string>
#include <vector>

#include "session/SessionHarness.h"

namespace hbtest {

// The arguments of every assignment of a member made by the add-in, in
// order ("String \",Acme\"").
inline std::vector<std::string> putsOf(sim::Instruments& instr, hb::StrView member) {
    std::vector<std::string> out;
    for (const auto& r : instr.log()) {
        if (r.op == sim::CallOp::PropertyPut && r.member == member) out.push_back(r.args);
    }
    return out;
}

// Calls of a member (any type) made by the add-in, by the log.
inline std::size_t callsOf(sim::Instruments& instr, hb::StrView member) {
    std::size_t n = 0;
    for (const auto& r : instr.log()) {
        if (r.member == member) ++n;
    }
    return n;
}

// The simulated object behind something the add-in holds (for an item,
// the stored item the add-in's object was read from).
inline std::shared_ptr<sim::SimObject> simOf(const hb::Variant& v) {
    auto o = sim::Instruments::simObject(v);
    if (auto item = std::dynamic_pointer_cast<sim::Item>(o)) return item->recordPtr();
    return o;
}

// A reference to a simulated object as the add-in would receive it.
template <class T>
hb::Variant handleTo(SessionHarness& h, const std::shared_ptr<T>& object) {
    return h.instruments().toAddin(hb::Variant(std::static_pointer_cast<hb::Object>(object)),
                                   u"test");
}

// Every live control of the add-in's bar in a window.
inline std::vector<std::shared_ptr<sim::CommandBarControl>> barControls(const sim::Window& w) {
    std::vector<std::shared_ptr<sim::CommandBarControl>> out;
    if (auto bar = SessionHarness::addinBar(w)) {
        for (const auto& c : bar->controls->list) {
            if (!c->deleted) out.push_back(c);
        }
    }
    return out;
}

// Bars of the add-in's name, deleted or not, in a window.
inline std::size_t addinBarsIn(const sim::Window& w) {
    std::size_t n = 0;
    for (const auto& b : w.commandBars->bars) {
        if (!b->deleted && b->name == hb::kProductCaption) ++n;
    }
    return n;
}

// The workgroup's three lists and a fourth, which the toolbar and the pane
// neither show nor write.
inline std::vector<MetaList> fourLists() {
    auto lists = workgroupLists();
    lists.push_back({u"Project", {u"Apollo", u"Gemini"}});
    return lists;
}

// A pick into an appointment that carries categories of the user's own or
// of the fourth list (with the separator comma and fourLists()): what the
// boxes show (unknown categories ignored), what is written, what Outlook
// keeps, and the subject the write-subject setting gives an empty one.
struct OwnCategoriesCase {
    const char16_t* categories;
    std::array<const char16_t*, 3> shown;
    int list;  // 1..3
    const char16_t* value;
    const char* written;
    const char16_t* kept;
    const char16_t* subject;
};

inline std::vector<OwnCategoriesCase> ownCategoriesCases() {
    return {
        // No category of the user's own: the billing text as it always was.
        {u"Globex, Jones",
         {u"Globex", u"Jones", u""},
         1,
         u"Acme",
         "String \",Acme,Jones\"",
         u"Acme, Jones",
         u"Acme, Jones"},
        {u"", {u"", u"", u""}, 2, u"Smith", "String \",Smith\"", u"Smith", u"Smith"},
        // Before, after and between the billing values.
        {u"Holiday, Globex, Jones",
         {u"Globex", u"Jones", u""},
         1,
         u"Acme",
         "String \"Holiday,Acme,Jones\"",
         u"Holiday, Acme, Jones",
         u"Acme, Jones"},
        {u"Globex, Red Category",
         {u"Globex", u"", u""},
         2,
         u"Smith",
         "String \",Globex,Smith, Red Category\"",
         u"Globex, Smith, Red Category",
         u"Globex, Smith"},
        {u"Holiday, Globex, Red Category, Jones",
         {u"Globex", u"Jones", u""},
         3,
         u"Travel",
         "String \"Holiday,Globex,Jones,Travel, Red Category\"",
         u"Holiday, Globex, Jones, Travel, Red Category",
         u"Globex, Jones, Travel"},
        // Only own categories: the values go at the end.
        {u"Holiday",
         {u"", u"", u""},
         1,
         u"Initech",
         "String \"Holiday,Initech\"",
         u"Holiday, Initech",
         u"Initech"},
        // The fourth list's value stays where it was.
        {u"Apollo, Globex",
         {u"Globex", u"", u""},
         2,
         u"Jones",
         "String \"Apollo,Globex,Jones\"",
         u"Apollo, Globex, Jones",
         u"Globex, Jones"},
        {u"Globex, Gemini, Holiday",
         {u"Globex", u"", u""},
         1,
         u"Acme",
         "String \",Acme, Gemini, Holiday\"",
         u"Acme, Gemini, Holiday",
         u"Acme"},
    };
}

// Outlook started on the calendar with fourLists(), the write-subject
// setting on, and the case's appointment (without a subject).
inline std::shared_ptr<sim::Item> startWithAnAppointmentOf(SessionHarness& h,
                                                           const OwnCategoriesCase& c) {
    h.setLists(fourLists());
    h.setSetting(u"WriteSubject", u"True");
    auto appt = h.addAppointment(u"", c.categories);
    h.start();
    return appt;
}

}  // namespace hbtest
