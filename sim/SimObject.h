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

}  // namespace sim
