#pragma once
// What the simulated Outlook measures about the add-in: every member call
// the add-in makes (through a Handle), faults injected into those calls, and
// the census of simulated objects and event subscriptions the add-in still
// holds.
//
// Everything the add-in receives from the simulation (the Application and
// the task pane factory at start-up, every object returned by a call, every
// object in an event's arguments, every element of an enumeration) reaches
// it as a fresh Handle: a lightweight automation object that forwards to the
// simulated object (identity() is the simulated object's). A Handle is the
// add-in's reference, as an interface pointer is a COM client's: it logs
// each call, can be made to fail, and is counted by the census for as long
// as the add-in keeps it.
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/Object.h"

namespace sim {

using hb::Args;
using hb::Str;
using hb::StrView;
using hb::Variant;

class SimObject;

enum class CallOp : std::uint8_t {
    Method,
    PropertyGet,
    PropertyPut,
    PropertyPutRef,
    Enumerate,  // For Each (member "_NewEnum")
    Subscribe,  // an event subscription (member: the event interface)
};

const char* callOpName(CallOp op);

struct CallRecord {
    std::uint64_t number = 0;  // 1-based, counted since the last resetCounts()
    Str typeName;              // of the simulated object called
    Str member;
    CallOp op = CallOp::Method;
    std::string args;     // readable form of the arguments
    bool failed = false;  // a fault was injected into this call
};

// Error raised by an injected fault unless the fault says otherwise:
// E_FAIL, as a failing COM call surfaces in the run time.
constexpr std::int32_t kInjectedErrorNumber = -2147467259;

class Instruments : public std::enable_shared_from_this<Instruments> {
  public:
    // ---- call log and counters ----
    std::uint64_t callCount() const { return calls_; }
    // Calls of one member (letter case ignored), of any type or of one type.
    std::uint64_t count(StrView member) const;
    std::uint64_t count(StrView typeName, StrView member) const;
    const std::vector<CallRecord>& log() const { return log_; }
    // The log, one call a line: "12 Items.Find(\"[Subject]='x'\")".
    std::string logText() const;
    // Restarts the numbering and the counters and empties the log.
    void resetCounts();
    // Keep the records (counters are always kept). On by default.
    void setLogging(bool on) { logging_ = on; }

    // ---- fault injection ----
    // The call with this number (as numbered by the log) raises.
    void failCall(std::uint64_t number, std::int32_t errorNumber = kInjectedErrorNumber,
                  Str description = {});
    // Every call of a member raises, of any type (typeName empty) or of one.
    void failMember(Str member, Str typeName = {}, std::int32_t errorNumber = kInjectedErrorNumber,
                    Str description = {});
    void clearFaults();
    std::uint64_t faultsInjected() const { return faultsInjected_; }
    // The last call a fault was injected into.
    std::optional<CallRecord> lastFault() const { return lastFault_; }

    // ---- census ----
    // Handles still alive: simulated objects referenced from outside the
    // simulation. Each description names the object's type and where the
    // add-in got it ("Explorer from Application.ActiveExplorer").
    std::size_t liveHandleCount() const;
    std::vector<Str> liveHandles() const;
    // Event subscriptions the add-in made and has not disconnected
    // ("ExplorerEvents of Explorer").
    std::size_t liveSubscriptionCount() const { return subscriptions_.size(); }
    std::vector<Str> liveSubscriptions() const;
    // Both together: empty when the add-in released everything.
    std::vector<Str> census() const;
    // Handles made so far (alive or not).
    std::uint64_t handlesIssued() const { return handlesIssued_; }

    // ---- used by the simulation ----
    // What the add-in receives: a simulated object becomes a new Handle
    // (origin says where it came from); anything else passes unchanged.
    Variant toAddin(const Variant& value, const Str& origin);
    Args toAddin(const Args& args, const Str& origin);
    // What the simulation receives: a Handle becomes its simulated object.
    static Variant toSim(const Variant& value);
    static Args toSim(const Args& args);
    // The simulated object behind a value (a Handle or the object itself),
    // or null.
    static std::shared_ptr<SimObject> simObject(const Variant& value);

    // Counts and logs a call; raises when a fault applies to it.
    void beforeCall(const SimObject& target, const Str& member, CallOp op, const Args& args);
    std::uint64_t addSubscription(Str description);
    void dropSubscription(std::uint64_t id);

  private:
    struct MemberFault {
        Str member;    // folded
        Str typeName;  // folded; empty: any
        std::int32_t number;
        Str description;
    };
    struct CallFault {
        std::int32_t number;
        Str description;
    };
    struct HandleEntry {
        std::weak_ptr<hb::Object> handle;
        Str description;
    };

    std::uint64_t calls_ = 0;
    std::map<Str, std::uint64_t> counts_;  // "type.member", folded
    std::vector<CallRecord> log_;
    bool logging_ = true;

    std::map<std::uint64_t, CallFault> callFaults_;
    std::vector<MemberFault> memberFaults_;
    std::uint64_t faultsInjected_ = 0;
    std::optional<CallRecord> lastFault_;

    std::vector<HandleEntry> handles_;
    std::size_t compactAt_ = 64;
    std::uint64_t handlesIssued_ = 0;
    std::map<std::uint64_t, Str> subscriptions_;
    std::uint64_t nextSubscription_ = 1;
};

// The add-in's reference to one simulated object.
class Handle final : public hb::Object {
  public:
    Handle(std::shared_ptr<SimObject> target, std::shared_ptr<Instruments> instruments);

    Variant invoke(hb::CallKind kind, const Str& member, Args& args) override;
    Str typeName() const override;
    hb::EventConnection subscribe(const Str& eventInterface,
                                  std::shared_ptr<hb::EventSink> sink) override;
    std::vector<Variant> enumerate() override;
    const void* identity() const override;

    const std::shared_ptr<SimObject>& target() const { return target_; }

  private:
    std::shared_ptr<SimObject> target_;
    std::shared_ptr<Instruments> instruments_;
};

}  // namespace sim
