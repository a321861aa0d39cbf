#pragma once
// Small helpers shared by the explorer and toolbar scenarios.
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

}  // namespace hbtest
