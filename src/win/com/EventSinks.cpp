#include "win/com/EventSinks.h"

#include "common/DispatchObject.h"
#include "win/com/ComObject.h"
#include "win/com/ComVariant.h"

namespace hb::com {

namespace {

constexpr GUID outlookIid(unsigned long first) {
    return GUID{first, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
}

std::atomic<long> g_subscriptions{0};

// The COM object a connection point calls: turns each Invoke into an event
// for the portable sink, by-reference Booleans (Cancel) written back.
class Sink : public ComObject<Sink, IDispatch> {
  public:
    Sink(const EventSet& set, const IID& connectionIid, std::shared_ptr<EventSink> sink)
        : set_(set), connectionIid_(connectionIid), sink_(std::move(sink)) {}

    // After Unadvise a source that still holds the sink reaches nothing.
    void detach() { sink_.reset(); }

    void* queryOther(REFIID iid) {
        if (IsEqualIID(iid, set_.iid) || IsEqualIID(iid, connectionIid_))
            return static_cast<IDispatch*>(this);
        return nullptr;
    }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (!count) return E_POINTER;
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** info) override {
        if (info) *info = nullptr;
        return E_NOTIMPL;
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*,
                        UINT*) override {
        const char16_t* name = set_.memberName(id);
        // Members the add-in does not hear about are answered and ignored.
        if (!name || !sink_) return S_OK;
        const std::shared_ptr<EventSink> sink = sink_;  // may be detached while it runs
        try {
            const UINT n = params ? params->cArgs : 0;
            Args args;
            args.reserve(n);
            std::vector<std::shared_ptr<Variant>> slots(n);
            for (UINT i = 0; i < n; ++i) {
                const VARIANT& v = params->rgvarg[n - 1 - i];
                if (V_VT(&v) & VT_BYREF) {
                    slots[i] = std::make_shared<Variant>(fromVARIANT(v));
                    args.push_back(Variant::byRef(slots[i]));
                } else {
                    args.push_back(fromVARIANT(v));
                }
            }
            sink->onEvent(name, args);
            for (UINT i = 0; i < n; ++i) {
                if (!slots[i]) continue;
                VARIANT& v = params->rgvarg[n - 1 - i];
                if (V_VT(&v) == (VT_BOOL | VT_BYREF)) {
                    *V_BOOLREF(&v) = slots[i]->toBool() ? VARIANT_TRUE : VARIANT_FALSE;
                } else if (V_VT(&v) == (VT_VARIANT | VT_BYREF)) {
                    toVARIANT(*slots[i], *V_VARIANTREF(&v));
                }
            }
        } catch (...) {
            // An event never fails back into Outlook.
        }
        return S_OK;
    }

  private:
    const EventSet& set_;
    IID connectionIid_;
    std::shared_ptr<EventSink> sink_;
};

// The name a source's type library gives an interface, or empty.
Str interfaceName(IDispatch* source, REFIID iid) {
    ComPtr<ITypeInfo> type;
    ComPtr<ITypeLib> library;
    UINT index = 0;
    if (FAILED(source->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.put())) || !type ||
        FAILED(type->GetContainingTypeLib(library.put(), &index)))
        return Str();
    ComPtr<ITypeInfo> other;
    BSTR name = nullptr;
    if (FAILED(library->GetTypeInfoOfGuid(iid, other.put())) ||
        FAILED(other->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr)))
        return Str();
    Str text = fromBstr(name);
    SysFreeString(name);
    return text;
}

// A versioned variant of the event set: its name followed by "_" and digits.
bool isVariantOf(const Str& name, const EventSet& set) {
    const StrView base = set.name;
    if (name.size() <= base.size() + 1 ||
        foldMemberName(name.substr(0, base.size())) != foldMemberName(base) ||
        name[base.size()] != u'_')
        return false;
    for (std::size_t i = base.size() + 1; i < name.size(); ++i)
        if (name[i] < u'0' || name[i] > u'9') return false;
    return true;
}

ComPtr<IConnectionPoint> findConnectionPoint(IDispatch* source, const EventSet& set) {
    ComPtr<IConnectionPointContainer> container =
        ComPtr<IDispatch>(source).as<IConnectionPointContainer>();
    if (!container) return nullptr;
    ComPtr<IConnectionPoint> point;
    if (SUCCEEDED(container->FindConnectionPoint(set.iid, point.put())) && point) return point;
    ComPtr<IEnumConnectionPoints> points;
    if (FAILED(container->EnumConnectionPoints(points.put())) || !points) return nullptr;
    for (;;) {
        ComPtr<IConnectionPoint> candidate;
        ULONG fetched = 0;
        if (points->Next(1, candidate.put(), &fetched) != S_OK || fetched == 0) break;
        IID iid{};
        if (SUCCEEDED(candidate->GetConnectionInterface(&iid)) &&
            isVariantOf(interfaceName(source, iid), set))
            return candidate;
    }
    return nullptr;
}

}  // namespace

const char16_t* EventSet::memberName(DISPID id) const {
    for (const EventMember& m : members)
        if (m.id == id) return m.name;
    return nullptr;
}

DISPID EventSet::memberId(StrView name) const {
    const Str folded = foldMemberName(name);
    for (const EventMember& m : members)
        if (foldMemberName(m.name) == folded) return m.id;
    return DISPID_UNKNOWN;
}

const std::vector<EventSet>& eventSets() {
    static const std::vector<EventSet> sets = {
        {u"ApplicationEvents",
         outlookIid(0x0006304E),
         {{0xF002, u"ItemSend"},
          {0xF003, u"NewMail"},
          {0xF004, u"Reminder"},
          {0xF005, u"OptionsPagesAdd"},
          {0xF006, u"Startup"},
          {0xF007, u"Quit"}}},
        {u"ExplorersEvents", outlookIid(0x00063078), {{0xF001, u"NewExplorer"}}},
        {u"ExplorerEvents",
         outlookIid(0x0006304F),
         {{0xF001, u"Activate"},
          {0xF002, u"FolderSwitch"},
          {0xF003, u"BeforeFolderSwitch"},
          {0xF004, u"ViewSwitch"},
          {0xF005, u"BeforeViewSwitch"},
          {0xF006, u"Deactivate"},
          {0xF007, u"SelectionChange"},
          {0xF008, u"Close"}}},
        {u"InspectorsEvents", outlookIid(0x00063079), {{0xF001, u"NewInspector"}}},
        {u"InspectorEvents",
         outlookIid(0x0006307D),
         {{0xF001, u"Activate"}, {0xF006, u"Deactivate"}, {0xF008, u"Close"}}},
        {u"ItemsEvents",
         outlookIid(0x00063077),
         {{0xF001, u"ItemAdd"}, {0xF002, u"ItemChange"}, {0xF003, u"ItemRemove"}}},
        {u"_CommandBarButtonEvents", outlookIid(0x000C0351), {{1, u"Click"}}},
        {u"_CommandBarComboBoxEvents", outlookIid(0x000C0354), {{1, u"Change"}}},
        {u"_CustomTaskPaneEvents",
         outlookIid(0x000C033C),
         {{1, u"VisibleStateChange"}, {2, u"DockPositionStateChange"}}},
    };
    return sets;
}

const EventSet* findEventSet(StrView name) {
    const Str folded = foldMemberName(name);
    for (const EventSet& set : eventSets())
        if (foldMemberName(set.name) == folded) return &set;
    return nullptr;
}

const EventSet* findEventSet(REFIID iid) {
    for (const EventSet& set : eventSets())
        if (IsEqualIID(set.iid, iid)) return &set;
    return nullptr;
}

long liveEventSubscriptions() {
    return g_subscriptions.load();
}

EventConnection adviseEvents(IDispatch* source, const Str& eventInterface,
                             std::shared_ptr<EventSink> sink) {
    const EventSet* set = findEventSet(eventInterface);
    if (!set || !source) raise(err::NoSuchMember);
    ComPtr<IConnectionPoint> point = findConnectionPoint(source, *set);
    if (!point) raise(err::NoSuchMember);
    IID connectionIid = set->iid;
    point->GetConnectionInterface(&connectionIid);
    ComPtr<Sink> object = Sink::create(*set, connectionIid, std::move(sink));
    DWORD cookie = 0;
    const HRESULT hr = point->Advise(object->unknown(), &cookie);
    if (FAILED(hr)) raiseFailure(hr, nullptr);
    ++g_subscriptions;
    return EventConnection([point, object, cookie] {
        object->detach();
        point->Unadvise(cookie);
        --g_subscriptions;
    });
}

}  // namespace hb::com
