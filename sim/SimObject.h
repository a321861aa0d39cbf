#pragma once
// Base of every object of the simulated Outlook: an automation object (its
// members in a table, see common/DispatchObject.h) that belongs to one
// simulated Outlook.
#include <memory>

#include "common/DispatchObject.h"
#include "sim/Instruments.h"

namespace sim {

class Outlook;

// RPC_E_DISCONNECTED: what a call on an object of an Outlook that has gone
// away raises.
constexpr std::int32_t kDisconnectedNumber = -2147417848;

class SimObject : public hb::DispatchObject {
  public:
    SimObject(Outlook& world, Str typeName, std::shared_ptr<const hb::MemberTable> members);

    // Refuses calls while the object cannot be used (see unusableReason).
    Variant invoke(hb::CallKind kind, const Str& member, Args& args) override;
    hb::EventConnection subscribe(const Str& eventInterface,
                                  std::shared_ptr<hb::EventSink> sink) override;
    std::vector<Variant> enumerate() override;

    // The Outlook this object belongs to; raises once that Outlook is gone.
    Outlook& world() const;
    bool attached() const { return world_ != nullptr; }
    // The Outlook goes away: drop every subscription and every object held
    // from outside the simulation.
    virtual void detach();
    // Why the object can no longer be used (a deleted control, a closed
    // window); empty while it can.
    virtual Str unusableReason() const { return {}; }

    // Raises an event through the Outlook's event delivery.
    void raiseEvent(StrView eventInterface, const Str& member, Args args);

  protected:
    void checkUsable(const Str& member) const;

  private:
    Outlook* world_;
};

// Helpers of the object tables.
namespace detail {

// An object as an automation value (Nothing for null).
template <class T>
Variant obj(const std::shared_ptr<T>& p) {
    if (!p) return Variant::nothing();
    return Variant(hb::ObjectPtr(p));
}

// The shared owner of an object (every simulated object is made shared).
template <class T>
std::shared_ptr<T> self(T& o) {
    return std::static_pointer_cast<T>(o.shared_from_this());
}

// A text argument: a key rather than a 1-based index.
inline bool isText(const Variant& v) {
    return v.deref().type() == Variant::Type::String;
}

}  // namespace detail

}  // namespace sim
