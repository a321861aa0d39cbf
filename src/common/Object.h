#pragma once
// An automation object: late-bound members by name, a type name, and event
// sets to subscribe to by their event interface's name. The one seam
// through which the add-in reaches Outlook and Office.
#include <functional>
#include <memory>

#include "common/Variant.h"

namespace hb {

enum class CallKind : std::uint8_t { Method, PropertyGet, PropertyPut, PropertyPutRef };

// Receives the events of one event set. Events arrive by member name with
// their arguments (a by-reference argument such as Cancel arrives as a
// Variant of type ByRef). A sink must not throw.
class EventSink {
  public:
    virtual ~EventSink() = default;
    virtual void onEvent(const Str& member, Args& args) noexcept = 0;
};

// Holds one subscription; dropping or disconnecting it stops the events.
class EventConnection {
  public:
    EventConnection() = default;
    explicit EventConnection(std::function<void()> disconnect)
        : disconnect_(std::move(disconnect)) {}
    EventConnection(EventConnection&& other) noexcept : disconnect_(std::move(other.disconnect_)) {
        other.disconnect_ = nullptr;
    }
    EventConnection& operator=(EventConnection&& other) noexcept;
    EventConnection(const EventConnection&) = delete;
    EventConnection& operator=(const EventConnection&) = delete;
    ~EventConnection() { disconnect(); }

    void disconnect() noexcept;
    bool connected() const { return static_cast<bool>(disconnect_); }

  private:
    std::function<void()> disconnect_;
};

class Object : public std::enable_shared_from_this<Object> {
  public:
    virtual ~Object() = default;

    // Invokes a member. An empty member name is the default member (DISPID 0).
    // For a property put the new value is the last element of args.
    // Unknown members raise 438.
    virtual Variant invoke(CallKind kind, const Str& member, Args& args) = 0;

    // The type name the run time's TypeName would give ("Explorer", ...).
    virtual Str typeName() const = 0;

    // Subscribes a sink to an event set named by its event interface
    // ("ApplicationEvents", "ExplorerEvents", "ItemsEvents",
    // "_CommandBarButtonEvents", ...). Raises 438 when the object has none.
    virtual EventConnection subscribe(const Str& eventInterface, std::shared_ptr<EventSink> sink);

    // For Each: the members of a collection, in order. Raises 438 when the
    // object is no collection.
    virtual std::vector<Variant> enumerate();

    // Identity of the object behind any wrappers (the run time's "Is").
    virtual const void* identity() const { return this; }

    Variant get(const Str& member, Args args = {});
    void put(const Str& member, Variant value, Args args = {});
    void putRef(const Str& member, Variant value, Args args = {});
    Variant call(const Str& member, Args args = {});
};

// The run time's "Is": both Nothing, or the same object.
bool sameObject(const Variant& a, const Variant& b);

// An EventSink calling a function.
class FunctionSink : public EventSink {
  public:
    using Handler = std::function<void(const Str& member, Args& args)>;
    explicit FunctionSink(Handler handler) : handler_(std::move(handler)) {}
    void onEvent(const Str& member, Args& args) noexcept override;

  private:
    Handler handler_;
};

}  // namespace hb
