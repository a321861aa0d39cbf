#pragma once
// A ready-made automation object: a table of members (properties with
// optional index arguments, methods, the default member), event sets that
// sinks subscribe to by their event interface's name, and enumeration.
// Member names are matched without regard to letter case, as IDispatch
// matches them. An unknown member, or a member used in a way it does not
// support (assigning a read-only property, assigning a method), raises 438.
//
// A class describes its members once, in a table shared by all its
// instances:
//
//   class Counter : public DispatchObject {
//     public:
//       Counter() : DispatchObject(u"Counter", table()) {}
//       std::int32_t value = 0;
//     private:
//       static std::shared_ptr<const MemberTable> table() {
//           static const auto t = Members<Counter>()
//               .prop(u"Value", [](Counter& c) { return Variant(c.value); },
//                     [](Counter& c, const Variant& v) { c.value = v.toLong(); })
//               .method(u"Reset", [](Counter& c) { c.value = 0; })
//               .defaultMember(u"Value")
//               .events(u"CounterEvents")
//               .build();
//           return t;
//       }
//   };
//
// Events are delivered synchronously, to every sink of the event set in the
// order of subscription, by fire().
#include <functional>
#include <memory>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include "common/Object.h"

namespace hb {

// The i-th argument, or a Missing value when the caller passed fewer.
const Variant& argAt(const Args& args, std::size_t i);
// True when the i-th argument was passed and is not Missing.
bool hasArg(const Args& args, std::size_t i);
// The i-th argument; raises 449 "Argument not optional" when absent or Missing.
const Variant& requiredArg(const Args& args, std::size_t i);

// Member names folded for lookup (ASCII letters; member names are ASCII).
Str foldMemberName(StrView name);

class DispatchObject;

class MemberTable {
  public:
    using Getter = std::function<Variant(DispatchObject& self, Args& args)>;
    // args: the index arguments; value: the value assigned.
    using Putter = std::function<void(DispatchObject& self, Args& args, const Variant& value)>;
    using Method = std::function<Variant(DispatchObject& self, Args& args)>;
    using Enumerator = std::function<std::vector<Variant>(DispatchObject& self)>;

    struct Member {
        Str name;  // as declared
        bool isMethod = false;
        Getter get;   // properties
        Putter put;   // properties that can be assigned
        Method call;  // methods
    };

    MemberTable& property(StrView name, Getter get, Putter put = {});
    MemberTable& method(StrView name, Method call);
    // The member that the empty name (DISPID 0) stands for.
    MemberTable& defaultMember(StrView name);
    MemberTable& events(StrView eventInterface);
    MemberTable& enumerable(Enumerator enumerator);
    // Copies every member, event set and the enumerator of another table
    // (members declared later replace copied ones of the same name).
    MemberTable& inherit(const MemberTable& base);

    const Member* find(StrView name) const;
    bool hasEvents(StrView eventInterface) const;
    const Enumerator& enumerator() const { return enumerator_; }
    std::vector<Str> memberNames() const;

  private:
    std::unordered_map<Str, Member> members_;  // by folded name
    Str default_;                              // folded
    std::vector<Str> events_;                  // folded
    Enumerator enumerator_;
};

// Typed front for building a MemberTable for class T (derived from
// DispatchObject). Getters take (T&) or (T&, Args&); setters (T&, const
// Variant&) or (T&, Args&, const Variant&); methods (T&) or (T&, Args&) and
// may return void (the call then returns Empty) or anything a Variant can
// be made from.
template <class T>
class Members {
  public:
    Members() : table_(std::make_shared<MemberTable>()) {}

    template <class G>
    Members& get(StrView name, G g) {
        table_->property(name, wrapGet(std::move(g)));
        return *this;
    }
    template <class G, class P>
    Members& prop(StrView name, G g, P p) {
        table_->property(name, wrapGet(std::move(g)), wrapPut(std::move(p)));
        return *this;
    }
    template <class M>
    Members& method(StrView name, M m) {
        table_->method(name, wrapGet(std::move(m)));
        return *this;
    }
    Members& defaultMember(StrView name) {
        table_->defaultMember(name);
        return *this;
    }
    Members& events(StrView eventInterface) {
        table_->events(eventInterface);
        return *this;
    }
    template <class E>
    Members& enumerable(E e) {
        table_->enumerable(
            [e = std::move(e)](DispatchObject& self) { return e(static_cast<T&>(self)); });
        return *this;
    }
    Members& inherit(const std::shared_ptr<const MemberTable>& base) {
        table_->inherit(*base);
        return *this;
    }
    std::shared_ptr<const MemberTable> build() { return table_; }

  private:
    template <class F>
    static MemberTable::Getter wrapGet(F f) {
        return [f = std::move(f)](DispatchObject& self, Args& args) -> Variant {
            T& o = static_cast<T&>(self);
            if constexpr (std::is_invocable_v<F&, T&, Args&>) {
                if constexpr (std::is_void_v<std::invoke_result_t<F&, T&, Args&>>) {
                    f(o, args);
                    return Variant();
                } else {
                    return Variant(f(o, args));
                }
            } else {
                if constexpr (std::is_void_v<std::invoke_result_t<F&, T&>>) {
                    f(o);
                    return Variant();
                } else {
                    return Variant(f(o));
                }
            }
        };
    }
    template <class F>
    static MemberTable::Putter wrapPut(F f) {
        return [f = std::move(f)](DispatchObject& self, Args& args, const Variant& value) {
            T& o = static_cast<T&>(self);
            if constexpr (std::is_invocable_v<F&, T&, Args&, const Variant&>) {
                f(o, args, value);
            } else {
                f(o, value);
            }
        };
    }

    std::shared_ptr<MemberTable> table_;
};

class DispatchObject : public Object {
  public:
    DispatchObject(Str typeName, std::shared_ptr<const MemberTable> members);
    ~DispatchObject() override;

    Variant invoke(CallKind kind, const Str& member, Args& args) override;
    Str typeName() const override { return typeName_; }
    // Raises 438 for an event set the table does not declare.
    EventConnection subscribe(const Str& eventInterface, std::shared_ptr<EventSink> sink) override;
    // Raises 438 when the table declares no enumerator.
    std::vector<Variant> enumerate() override;

    // Delivers an event to every sink subscribed to the event set, in the
    // order of subscription, synchronously. A sink that disconnects during
    // the delivery gets nothing further; one subscribed during it waits for
    // the next event. By-reference arguments (Cancel) are shared by all.
    void fire(StrView eventInterface, const Str& member, Args& args);
    // Sinks now subscribed (to one event set, or to all when empty).
    std::size_t sinkCount(StrView eventInterface = {}) const;
    // Drops every subscription (the source went away).
    void disconnectAllSinks();

    const MemberTable& members() const { return *members_; }

  protected:
    // For a derived class whose type name changes with its state.
    void setTypeName(Str typeName) { typeName_ = std::move(typeName); }

  private:
    struct Subscription {
        std::uint64_t id;
        Str eventInterface;  // folded
        std::shared_ptr<EventSink> sink;
    };
    void unsubscribe(std::uint64_t id);

    Str typeName_;
    std::shared_ptr<const MemberTable> members_;
    std::vector<Subscription> subscriptions_;
    std::uint64_t nextSubscription_ = 1;
};

}  // namespace hb
