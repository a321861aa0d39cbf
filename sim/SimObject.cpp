#include "sim/SimObject.h"

#include "sim/Outlook.h"

namespace sim {

SimObject::SimObject(Outlook& world, Str typeName, std::shared_ptr<const hb::MemberTable> members)
    : DispatchObject(std::move(typeName), std::move(members)), world_(&world) {}

Outlook& SimObject::world() const {
    if (!world_) {
        hb::raise(kDisconnectedNumber, u"The object invoked has disconnected from its clients.");
    }
    return *world_;
}

void SimObject::detach() {
    disconnectAllSinks();
    world_ = nullptr;
}

void SimObject::checkUsable(const Str& member) const {
    Str reason = unusableReason();
    if (!reason.empty()) {
        (void)member;
        hb::raise(kOfficeErrorNumber, std::move(reason));
    }
}

Variant SimObject::invoke(hb::CallKind kind, const Str& member, Args& args) {
    checkUsable(member);
    return DispatchObject::invoke(kind, member, args);
}

hb::EventConnection SimObject::subscribe(const Str& eventInterface,
                                         std::shared_ptr<hb::EventSink> sink) {
    checkUsable(eventInterface);
    return DispatchObject::subscribe(eventInterface, std::move(sink));
}

std::vector<Variant> SimObject::enumerate() {
    checkUsable(u"_NewEnum");
    return DispatchObject::enumerate();
}

void SimObject::raiseEvent(StrView eventInterface, const Str& member, Args args) {
    if (world_) world_->logEvent(eventInterface, member, *this);
    fire(eventInterface, member, args);
}

}  // namespace sim
