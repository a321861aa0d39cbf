#include "win/com/DispatchServer.h"

#include <olectl.h>

#include <map>
#include <memory>
#include <unordered_map>

#include "common/DispatchObject.h"
#include "common/ErrorTrap.h"
#include "win/com/ComObject.h"
#include "win/com/ComVariant.h"
#include "win/com/EventSinks.h"

namespace hb::com {

namespace {

// Answered by the server's own objects only, to tell them from others.
constexpr GUID kExportedIid = {
    0x6A3C1E52, 0x47B1, 0x4F0E, {0x9D, 0x21, 0x5C, 0x0B, 0x8E, 0x63, 0x14, 0xA7}};
constexpr wchar_t kErrorSource[] = L"Microsoft Outlook";

std::atomic<long> g_objects{0};
std::atomic<long> g_connections{0};
// Objects that clients of other apartments or processes hold (COM's stub
// manager tells each object through IExternalConnection).
std::atomic<long> g_external{0};

MemberNames& memberNames() {
    static MemberNames names;
    return names;
}

// One type name's DISPIDs and type information.
struct TypeEntry {
    std::unordered_map<Str, DISPID> ids;  // by folded name
    std::unordered_map<DISPID, Str> names;
    bool closed = false;  // the member names were known: no others exist
    DISPID next = 1;
    ComPtr<ITypeInfo> info;

    DISPID add(const Str& name) {
        const Str key = foldMemberName(name);
        if (auto it = ids.find(key); it != ids.end()) return it->second;
        const DISPID id = next++;
        ids.emplace(key, id);
        names.emplace(id, name);
        return id;
    }
};

struct TypeTables {
    // Kept for the process, as the module's type library is: clients cache
    // names by type information.
    std::map<Str, TypeEntry> byName;
    ComPtr<ICreateTypeLib2> library;
};

TypeTables& typeTables() {
    static auto* tables = new TypeTables;
    return *tables;
}

TypeEntry& typeEntry(const Object& object) {
    const Str name = object.typeName();
    auto [it, made] = typeTables().byName.try_emplace(name);
    if (made && memberNames()) {
        const std::vector<Str> known = memberNames()(object);
        for (const Str& member : known)
            it->second.add(member);
        it->second.closed = !known.empty();
    }
    return it->second;
}

// Type information for a type name: a dispatch interface "_<type name>",
// made in a type library that lives in memory only.
ComPtr<ITypeInfo> makeTypeInfo(const Str& typeName) {
    TypeTables& t = typeTables();
    if (!t.library) {
        const SYSKIND kind = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;
        if (FAILED(CreateTypeLib2(kind, const_cast<LPOLESTR>(L"standin.tlb"), t.library.put())))
            return nullptr;
        t.library->SetName(const_cast<LPOLESTR>(L"Outlook"));
    }
    std::wstring name = L"_" + wide(typeName);
    ComPtr<ICreateTypeInfo> create;
    if (FAILED(t.library->CreateTypeInfo(name.data(), TKIND_DISPATCH, create.put())))
        return nullptr;
    create->SetTypeFlags(TYPEFLAG_FDISPATCHABLE);
    create->LayOut();
    return create.as<ITypeInfo>();
}

// Unwraps a by-reference VARIANT; objects of this server come back as what
// they serve.
Variant argumentOf(const VARIANT& v) {
    const VARTYPE base = V_VT(&v) & VT_TYPEMASK;
    if (base == VT_DISPATCH || base == VT_UNKNOWN) {
        IUnknown* u = (V_VT(&v) & VT_BYREF)
                          ? (base == VT_DISPATCH ? *V_DISPATCHREF(&v) : *V_UNKNOWNREF(&v))
                          : (base == VT_DISPATCH ? V_DISPATCH(&v) : V_UNKNOWN(&v));
        if (ObjectPtr served = exportedObjectOf(u)) return Variant(std::move(served));
    }
    return fromVARIANT(v);
}

class ExportedObject;

std::unordered_map<const void*, ExportedObject*>& byIdentity() {
    static auto* map = new std::unordered_map<const void*, ExportedObject*>;
    return *map;
}

// A snapshot of a collection's members.
class EnumVariant : public ComObject<EnumVariant, IEnumVARIANT> {
  public:
    EnumVariant(std::shared_ptr<const std::vector<Variant>> items, std::size_t position)
        : items_(std::move(items)), position_(position) {}

    STDMETHODIMP Next(ULONG count, VARIANT* out, ULONG* fetched) override {
        ULONG n = 0;
        try {
            for (; n < count && position_ < items_->size(); ++n, ++position_) {
                VariantInit(&out[n]);
                toVARIANT((*items_)[position_], out[n]);
            }
        } catch (...) {
            for (ULONG i = 0; i < n; ++i)
                VariantClear(&out[i]);
            if (fetched) *fetched = 0;
            return E_FAIL;
        }
        if (fetched) *fetched = n;
        return n == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG count) override {
        position_ = std::min<std::size_t>(items_->size(), position_ + count);
        return position_ < items_->size() ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() override {
        position_ = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(IEnumVARIANT** out) override {
        if (!out) return E_POINTER;
        *out = create(items_, position_).detach();
        return S_OK;
    }

  private:
    std::shared_ptr<const std::vector<Variant>> items_;
    std::size_t position_;
};

// Hands one event set's events to one advised sink.
class ForwardingSink : public EventSink {
  public:
    ForwardingSink(const EventSet& set, ComPtr<IDispatch> sink)
        : set_(set), sink_(std::move(sink)) {}

    void onEvent(const Str& member, Args& args) noexcept override {
        const DISPID id = set_.memberId(member);
        if (id == DISPID_UNKNOWN || !sink_) return;
        try {
            const std::size_t n = args.size();
            std::vector<VARIANT> values(n), targets(n);
            std::vector<VARIANT_BOOL> flags(n, VARIANT_FALSE);
            for (std::size_t i = 0; i < n; ++i) {
                VariantInit(&values[i]);
                VariantInit(&targets[i]);
            }
            struct Clear {
                std::vector<VARIANT>& a;
                std::vector<VARIANT>& b;
                ~Clear() {
                    for (VARIANT& v : a)
                        VariantClear(&v);
                    for (VARIANT& v : b)
                        VariantClear(&v);
                }
            } clear{values, targets};
            // Stored last to first, as Invoke takes them.
            for (std::size_t i = 0; i < n; ++i) {
                VARIANT& slot = values[n - 1 - i];
                if (!args[i].isByRef()) {
                    toVARIANT(args[i], slot);
                } else if (args[i].deref().type() == Variant::Type::Boolean) {
                    flags[i] = args[i].deref().toBool() ? VARIANT_TRUE : VARIANT_FALSE;
                    V_VT(&slot) = VT_BOOL | VT_BYREF;
                    V_BOOLREF(&slot) = &flags[i];
                } else {
                    toVARIANT(args[i].deref(), targets[i]);
                    V_VT(&slot) = VT_VARIANT | VT_BYREF;
                    V_VARIANTREF(&slot) = &targets[i];
                }
            }
            DISPPARAMS params{values.data(), nullptr, static_cast<UINT>(n), 0};
            const ComPtr<IDispatch> sink = sink_;  // the sink may unadvise while it runs
            sink->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, nullptr,
                         nullptr, nullptr);
            for (std::size_t i = 0; i < n; ++i) {
                if (!args[i].isByRef()) continue;
                if (args[i].deref().type() == Variant::Type::Boolean)
                    args[i].assign(Variant(flags[i] != VARIANT_FALSE));
                else
                    args[i].assign(argumentOf(targets[i]));
            }
        } catch (...) {
            // An event that cannot be delivered is lost, as a dead sink's is.
        }
    }

    void drop() { sink_.reset(); }

  private:
    const EventSet& set_;
    ComPtr<IDispatch> sink_;
};

class ConnectionPoint : public ComObject<ConnectionPoint, IConnectionPoint> {
  public:
    ConnectionPoint(ComPtr<IConnectionPointContainer> owner, ObjectPtr object, const EventSet& set)
        : owner_(std::move(owner)), object_(std::move(object)), set_(set) {}
    ~ConnectionPoint() override {
        for (auto& [cookie, advised] : advised_)
            release(advised);
    }

    STDMETHODIMP GetConnectionInterface(IID* iid) override {
        if (!iid) return E_POINTER;
        *iid = set_.iid;
        return S_OK;
    }
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** out) override {
        if (!out) return E_POINTER;
        *out = ComPtr<IConnectionPointContainer>(owner_).detach();
        return S_OK;
    }
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override {
        if (!sink || !cookie) return E_POINTER;
        *cookie = 0;
        // As Office's connection points do: the sink answers the event
        // interface itself.
        ComPtr<IDispatch> target;
        if (FAILED(sink->QueryInterface(set_.iid, reinterpret_cast<void**>(target.put()))) ||
            !target)
            return CONNECT_E_CANNOTCONNECT;
        try {
            auto forward = std::make_shared<ForwardingSink>(set_, target);
            Advised advised{forward, object_->subscribe(set_.name, forward)};
            *cookie = ++next_;
            advised_.emplace(*cookie, std::move(advised));
            ++g_connections;
            return S_OK;
        } catch (...) {
            return reportCurrentException(nullptr, kErrorSource);
        }
    }
    STDMETHODIMP Unadvise(DWORD cookie) override {
        auto it = advised_.find(cookie);
        if (it == advised_.end()) return CONNECT_E_NOCONNECTION;
        Advised advised = std::move(it->second);
        advised_.erase(it);
        release(advised);
        return S_OK;
    }
    STDMETHODIMP EnumConnections(IEnumConnections** out) override {
        if (out) *out = nullptr;
        return E_NOTIMPL;
    }

  private:
    struct Advised {
        std::shared_ptr<ForwardingSink> sink;
        EventConnection connection;
    };
    static void release(Advised& advised) {
        advised.connection.disconnect();
        advised.sink->drop();
        --g_connections;
    }

    ComPtr<IConnectionPointContainer> owner_;
    ObjectPtr object_;
    const EventSet& set_;
    std::map<DWORD, Advised> advised_;
    DWORD next_ = 0;
};

class ExportedObject
    : public ComObject<ExportedObject, IDispatch, IConnectionPointContainer, IExternalConnection> {
  public:
    explicit ExportedObject(ObjectPtr object)
        : object_(std::move(object)), identity_(object_->identity()) {
        byIdentity()[identity_] = this;
        ++g_objects;
    }
    ~ExportedObject() override {
        if (auto it = byIdentity().find(identity_); it != byIdentity().end() && it->second == this)
            byIdentity().erase(it);
        --g_objects;
    }

    const ObjectPtr& object() const { return object_; }

    void* queryOther(REFIID iid) {
        return IsEqualIID(iid, kExportedIid) ? static_cast<IDispatch*>(this) : nullptr;
    }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (!count) return E_POINTER;
        *count = 1;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
        if (!info) return E_POINTER;
        *info = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        try {
            TypeEntry& type = typeEntry(*object_);
            if (!type.info) type.info = makeTypeInfo(object_->typeName());
            if (!type.info) return E_FAIL;
            *info = ComPtr<ITypeInfo>(type.info).detach();
            return S_OK;
        } catch (...) {
            return E_FAIL;
        }
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        if (!names || !ids) return E_POINTER;
        try {
            TypeEntry& type = typeEntry(*object_);
            HRESULT hr = S_OK;
            for (UINT i = 0; i < count; ++i) {
                ids[i] = DISPID_UNKNOWN;
                const Str name = fromWide(names[i], wcslen(names[i]));
                // Only the member is named here: named arguments are not served.
                if (i > 0) {
                    hr = DISP_E_UNKNOWNNAME;
                    continue;
                }
                auto it = type.ids.find(foldMemberName(name));
                if (it != type.ids.end()) {
                    ids[i] = it->second;
                } else if (type.closed) {
                    hr = DISP_E_UNKNOWNNAME;
                } else {
                    ids[i] = type.add(name);
                }
            }
            return hr;
        } catch (...) {
            return E_FAIL;
        }
    }
    STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* params,
                        VARIANT* result, EXCEPINFO* exception, UINT*) override {
        if (!IsEqualIID(iid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
        try {
            if (id == DISPID_NEWENUM) return newEnum(result);
            Str member;
            if (id != DISPID_VALUE) {
                const TypeEntry& type = typeEntry(*object_);
                auto it = type.names.find(id);
                if (it == type.names.end()) return DISP_E_MEMBERNOTFOUND;
                member = it->second;
            }
            const UINT n = params ? params->cArgs : 0;
            const UINT named = params ? params->cNamedArgs : 0;
            const bool put = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
            if (named > (put ? 1u : 0u) ||
                (named == 1 && params->rgdispidNamedArgs[0] != DISPID_PROPERTYPUT))
                return DISP_E_NONAMEDARGS;
            if (put && n == 0) return DISP_E_BADPARAMCOUNT;
            // Positional arguments come last to first after the named one
            // (the assigned value), which goes last.
            Args args;
            args.reserve(n);
            for (UINT i = n; i > named; --i)
                args.push_back(argumentOf(params->rgvarg[i - 1]));
            if (named == 1) args.push_back(argumentOf(params->rgvarg[0]));
            CallKind kind = CallKind::Method;
            if (flags & DISPATCH_PROPERTYPUTREF)
                kind = CallKind::PropertyPutRef;
            else if (flags & DISPATCH_PROPERTYPUT)
                kind = CallKind::PropertyPut;
            else if (flags & DISPATCH_PROPERTYGET)
                kind = CallKind::PropertyGet;
            Variant value = object_->invoke(kind, member, args);
            if (result) toVARIANT(value, *result);
            return S_OK;
        } catch (...) {
            return reportCurrentException(exception, kErrorSource);
        }
    }

    // COM calls these as the first client of another apartment takes the
    // object and as the last one lets go of it: a local server counts the
    // objects so held to know when nobody needs it any more.
    STDMETHODIMP_(DWORD) AddConnection(DWORD type, DWORD) override {
        if (!(type & EXTCONN_STRONG)) return external_;
        if (external_++ == 0) ++g_external;
        return external_;
    }
    STDMETHODIMP_(DWORD) ReleaseConnection(DWORD type, DWORD, BOOL) override {
        if (!(type & EXTCONN_STRONG) || external_ == 0) return external_;
        if (--external_ == 0) --g_external;
        return external_;
    }

    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** out) override {
        if (out) *out = nullptr;
        return E_NOTIMPL;
    }
    STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        const EventSet* set = findEventSet(iid);
        if (!set) return CONNECT_E_NOCONNECTION;
        *out = ConnectionPoint::create(ComPtr<IConnectionPointContainer>(this), object_, *set)
                   .detach();
        return S_OK;
    }

  private:
    HRESULT newEnum(VARIANT* result) {
        auto items = std::make_shared<const std::vector<Variant>>(object_->enumerate());
        if (!result) return S_OK;
        VariantClear(result);
        V_VT(result) = VT_UNKNOWN;
        V_UNKNOWN(result) = EnumVariant::create(std::move(items), 0).detach();
        return S_OK;
    }

    ObjectPtr object_;
    const void* identity_;
    DWORD external_ = 0;
};

}  // namespace

ComPtr<IDispatch> exportObject(const ObjectPtr& object) {
    if (!object) return nullptr;
    if (auto it = byIdentity().find(object->identity()); it != byIdentity().end())
        return ComPtr<IDispatch>(static_cast<IDispatch*>(it->second));
    return ComPtr<IDispatch>(static_cast<IDispatch*>(ExportedObject::create(object).get()));
}

ObjectPtr exportedObjectOf(IUnknown* unknown) {
    if (!unknown) return nullptr;
    IDispatch* self = nullptr;
    if (FAILED(unknown->QueryInterface(kExportedIid, reinterpret_cast<void**>(&self))) || !self)
        return nullptr;
    ObjectPtr object = static_cast<ExportedObject*>(self)->object();
    self->Release();
    return object;
}

void installDispatchServer(MemberNames names) {
    if (!names) {
        names = [](const Object& object) {
            const auto* d = dynamic_cast<const DispatchObject*>(&object);
            return d ? d->members().memberNames() : std::vector<Str>{};
        };
    }
    memberNames() = std::move(names);
    setObjectExporter([](const ObjectPtr& object) { return exportObject(object).detach(); });
}

long liveExportedObjects() {
    return g_objects.load();
}

long liveServerConnections() {
    return g_connections.load();
}

long externallyHeldObjects() {
    return g_external.load();
}

}  // namespace hb::com
