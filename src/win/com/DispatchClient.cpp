#include "win/com/DispatchClient.h"

#include <map>
#include <vector>

#include "common/DispatchObject.h"
#include "win/com/ComVariant.h"
#include "win/com/EventSinks.h"

namespace hb::com {

struct DispatchClient::NameCache {
    // Held so that the type, and so the key of this cache, stays what it is
    // while any client of it lives.
    ComPtr<ITypeInfo> type;
    std::unordered_map<Str, DISPID> ids;  // by folded member name
};

namespace {

std::size_t g_nameLookups = 0;

// The caches of the types that have live clients, by type information.
std::map<ITypeInfo*, std::weak_ptr<DispatchClient::NameCache>>& cachesByType() {
    static auto* caches = new std::map<ITypeInfo*, std::weak_ptr<DispatchClient::NameCache>>;
    return *caches;
}

// Frees the VARIANTs of one call's arguments.
struct CallArguments {
    explicit CallArguments(std::size_t n) : values(n), targets(n) {
        for (VARIANT& v : values)
            VariantInit(&v);
        for (VARIANT& v : targets)
            VariantInit(&v);
    }
    ~CallArguments() {
        for (VARIANT& v : values)
            VariantClear(&v);
        for (VARIANT& v : targets)
            VariantClear(&v);
    }
    std::vector<VARIANT> values;   // last argument first, as DISPPARAMS wants them
    std::vector<VARIANT> targets;  // what by-reference arguments point to, in argument order
};

}  // namespace

std::size_t dispatchNameLookups() {
    return g_nameLookups;
}

ObjectPtr DispatchClient::wrap(IDispatch* dispatch) {
    if (!dispatch) return nullptr;
    return std::make_shared<DispatchClient>(ComPtr<IDispatch>(dispatch));
}

DispatchClient::DispatchClient(ComPtr<IDispatch> dispatch) : dispatch_(std::move(dispatch)) {}

const void* DispatchClient::identity() const {
    if (!identity_) identity_ = dispatch_.as<IUnknown>();
    return identity_ ? static_cast<const void*>(identity_.get()) : this;
}

DispatchClient::NameCache& DispatchClient::names() const {
    if (names_) return *names_;
    ComPtr<ITypeInfo> type;
    if (SUCCEEDED(dispatch_->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.put())) && type) {
        auto& caches = cachesByType();
        if (auto it = caches.find(type.get()); it != caches.end()) names_ = it->second.lock();
        if (!names_) {
            names_ = std::make_shared<NameCache>();
            names_->type = type;
            caches[type.get()] = names_;
        }
    } else {
        // No type information: the names are this object's own.
        names_ = std::make_shared<NameCache>();
    }
    return *names_;
}

DISPID DispatchClient::dispidOf(const Str& member) {
    NameCache& cache = names();
    const Str key = foldMemberName(member);
    if (auto it = cache.ids.find(key); it != cache.ids.end()) return it->second;
    std::wstring name = wide(member);
    LPOLESTR names[] = {name.data()};
    DISPID id = DISPID_UNKNOWN;
    ++g_nameLookups;
    const HRESULT hr = dispatch_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(hr)) raiseFailure(hr == DISP_E_UNKNOWNNAME ? DISP_E_MEMBERNOTFOUND : hr, nullptr);
    cache.ids.emplace(key, id);
    return id;
}

Variant DispatchClient::invoke(CallKind kind, const Str& member, Args& args) {
    const DISPID id = member.empty() ? DISPID_VALUE : dispidOf(member);
    const std::size_t n = args.size();
    CallArguments call(n);
    for (std::size_t i = 0; i < n; ++i) {
        VARIANT& slot = call.values[n - 1 - i];
        if (args[i].isByRef()) {
            toVARIANT(args[i].deref(), call.targets[i]);
            V_VT(&slot) = VT_VARIANT | VT_BYREF;
            V_VARIANTREF(&slot) = &call.targets[i];
        } else {
            toVARIANT(args[i], slot);
        }
    }
    DISPPARAMS params{call.values.data(), nullptr, static_cast<UINT>(n), 0};
    DISPID putId = DISPID_PROPERTYPUT;
    WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
    const bool put = kind == CallKind::PropertyPut || kind == CallKind::PropertyPutRef;
    if (put) {
        flags = kind == CallKind::PropertyPut ? DISPATCH_PROPERTYPUT : DISPATCH_PROPERTYPUTREF;
        params.rgdispidNamedArgs = &putId;
        params.cNamedArgs = 1;
    }
    ScopedVariant result;
    EXCEPINFO exception{};
    UINT argError = 0;
    const HRESULT hr = dispatch_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params,
                                         put ? nullptr : result.get(), &exception, &argError);
    if (FAILED(hr)) raiseFailure(hr, &exception);
    for (std::size_t i = 0; i < n; ++i)
        if (args[i].isByRef()) args[i].assign(fromVARIANT(call.targets[i]));
    return put ? Variant() : fromVARIANT(*result);
}

Str DispatchClient::typeName() const {
    ITypeInfo* type = names().type.get();
    BSTR name = nullptr;
    if (!type || FAILED(type->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr)))
        return u"Object";
    Str text = fromBstr(name);
    SysFreeString(name);
    if (!text.empty() && text.front() == u'_') text.erase(0, 1);
    return text;
}

EventConnection DispatchClient::subscribe(const Str& eventInterface,
                                          std::shared_ptr<EventSink> sink) {
    return adviseEvents(dispatch_.get(), eventInterface, std::move(sink));
}

std::vector<Variant> DispatchClient::enumerate() {
    ScopedVariant result;
    EXCEPINFO exception{};
    DISPPARAMS none{nullptr, nullptr, 0, 0};
    const HRESULT hr = dispatch_->Invoke(DISPID_NEWENUM, IID_NULL, LOCALE_USER_DEFAULT,
                                         DISPATCH_METHOD | DISPATCH_PROPERTYGET, &none,
                                         result.get(), &exception, nullptr);
    if (FAILED(hr)) raiseFailure(hr, &exception);
    IUnknown* unknown = V_VT(result.get()) == VT_UNKNOWN    ? V_UNKNOWN(result.get())
                        : V_VT(result.get()) == VT_DISPATCH ? V_DISPATCH(result.get())
                                                            : nullptr;
    ComPtr<IEnumVARIANT> items = ComPtr<IUnknown>(unknown).as<IEnumVARIANT>();
    if (!items) raise(err::NoSuchMember);
    std::vector<Variant> out;
    for (;;) {
        ScopedVariant item;
        ULONG fetched = 0;
        if (items->Next(1, item.get(), &fetched) != S_OK || fetched == 0) break;
        out.push_back(fromVARIANT(*item));
    }
    return out;
}

}  // namespace hb::com
