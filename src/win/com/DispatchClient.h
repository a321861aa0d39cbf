#pragma once
// An automation object over any IDispatch: how the add-in reaches Outlook
// and Office on Windows. Member names are resolved with GetIDsOfNames once
// per type (the server's ITypeInfo) and kept; calls go through Invoke the
// way the run time makes them late-bound; events through the event sinks.
#include <windows.h>
// windows.h first: oaidl.h relies on its types.
#include <oaidl.h>

#include <memory>
#include <unordered_map>

#include "common/Object.h"
#include "win/com/ComPtr.h"

namespace hb::com {

class DispatchClient : public Object {
  public:
    // The object for an IDispatch (a new reference is taken); null for null.
    static ObjectPtr wrap(IDispatch* dispatch);

    Variant invoke(CallKind kind, const Str& member, Args& args) override;
    // The type information's name without a leading underscore
    // ("AppointmentItem"), or "Object" when the server has none.
    Str typeName() const override;
    EventConnection subscribe(const Str& eventInterface, std::shared_ptr<EventSink> sink) override;
    // A snapshot of _NewEnum's items.
    std::vector<Variant> enumerate() override;
    // The server object's IUnknown, the same for every interface of it.
    const void* identity() const override;

    IDispatch* dispatch() const { return dispatch_.get(); }

    // Names resolved so far for one type (shared by the clients of it).
    struct NameCache;

    explicit DispatchClient(ComPtr<IDispatch> dispatch);

  private:
    DISPID dispidOf(const Str& member);
    NameCache& names() const;

    ComPtr<IDispatch> dispatch_;
    // Both looked up on first use: most objects the add-in is handed are
    // used for one or two members only.
    mutable ComPtr<IUnknown> identity_;
    mutable std::shared_ptr<NameCache> names_;
};

// Resolutions made through GetIDsOfNames since the process started (for
// benchmarks and tests of the cache).
std::size_t dispatchNameLookups();

}  // namespace hb::com
