#pragma once
// The COM plumbing every object of the Windows layer is built on, written
// once: reference counting, QueryInterface from the list of interfaces a
// class derives from, IDispatch of dual interfaces served from the module's
// type library, and the module's object and lock counts behind
// DllCanUnloadNow.
//
//   class Designer : public ComObject<Designer, DualInterface<_IDTExtensibility2>,
//                                     DualInterface<ICustomTaskPaneConsumer>> { ... };
//
// QueryInterface answers IUnknown, every listed interface and the interfaces
// it derives from (ComAncestors), IDispatch with the first listed interface
// that is one, and whatever the class's own queryOther(iid) returns.
#include <windows.h>
// windows.h first: the COM headers rely on its types.
#include <ocidl.h>
#include <oleauto.h>

#include <atomic>
#include <tuple>
#include <type_traits>

#include "win/com/ComPtr.h"

namespace hb::com {

// ---------------------------------------------------------------- module counts

// Objects alive and server locks held in this module (DllCanUnloadNow).
void moduleObjectCreated() noexcept;
void moduleObjectDestroyed() noexcept;
void moduleLock(bool lock) noexcept;
long moduleObjectCount() noexcept;
bool moduleCanUnload() noexcept;

// The interface-kind type information of an interface or coclass in the type
// library that the module holding this code embeds (its TYPELIB resource 1).
// For a dual interface this is the vtable side that ITypeInfo::Invoke needs.
HRESULT moduleTypeInfo(REFGUID guid, ITypeInfo** info) noexcept;
// Lets go of the type library moduleTypeInfo loaded (read again on the next
// call). The library, read from the module's own file, keeps the module
// loaded while it is held.
void releaseModuleTypeInfo() noexcept;

// ---------------------------------------------------------------- interface lists

// The interfaces an interface derives from below IUnknown, so that
// QueryInterface answers them too.
template <class I>
struct ComAncestors {
    using type =
        std::conditional_t<std::is_base_of_v<IDispatch, I> && !std::is_same_v<IDispatch, I>,
                           std::tuple<IDispatch>, std::tuple<>>;
};
template <>
struct ComAncestors<IOleInPlaceObject> {
    using type = std::tuple<IOleWindow>;
};
template <>
struct ComAncestors<IOleInPlaceActiveObject> {
    using type = std::tuple<IOleWindow>;
};
template <>
struct ComAncestors<IViewObject2> {
    using type = std::tuple<IViewObject>;
};
template <>
struct ComAncestors<IPersistStreamInit> {
    using type = std::tuple<IPersist>;
};
template <>
struct ComAncestors<IProvideClassInfo2> {
    using type = std::tuple<IProvideClassInfo>;
};

// IDispatch of dual interface I served from the module's type library.
template <class I>
class DualInterface : public I {
  public:
    using Interface = I;

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (!count) return E_POINTER;
        *count = 1;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
        if (!info) return E_POINTER;
        *info = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        return moduleTypeInfo(__uuidof(I), info);
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        ComPtr<ITypeInfo> ti;
        const HRESULT hr = moduleTypeInfo(__uuidof(I), ti.put());
        if (FAILED(hr)) return hr;
        return ti->GetIDsOfNames(names, count, ids);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* params,
                        VARIANT* result, EXCEPINFO* exception, UINT* argError) override {
        if (!IsEqualIID(iid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
        ComPtr<ITypeInfo> ti;
        const HRESULT hr = moduleTypeInfo(__uuidof(I), ti.put());
        if (FAILED(hr)) return hr;
        return ti->Invoke(static_cast<I*>(this), id, flags, params, result, exception, argError);
    }
};

template <class B>
struct InterfaceOf {
    using type = B;
};
template <class I>
struct InterfaceOf<DualInterface<I>> {
    using type = I;
};

// ---------------------------------------------------------------- the object base

template <class Derived, class... Bases>
class ComObject : public Bases... {
  public:
    ComObject() { moduleObjectCreated(); }
    virtual ~ComObject() { moduleObjectDestroyed(); }
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    // A new object with its first reference held by the result.
    template <class... A>
    static ComPtr<Derived> create(A&&... args) {
        return ComPtr<Derived>(new Derived(std::forward<A>(args)...));
    }

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        void* found = nullptr;
        if (IsEqualIID(iid, IID_IUnknown)) {
            found = unknown();
        } else {
            ((found = found ? found : queryBase<Bases>(iid)), ...);
            if (!found && IsEqualIID(iid, IID_IDispatch)) found = firstDispatch<Bases...>();
            if (!found) found = static_cast<Derived*>(this)->queryOther(iid);
        }
        if (!found) return E_NOINTERFACE;
        static_cast<IUnknown*>(found)->AddRef();
        *out = found;
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++refs_; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --refs_;
        if (left == 0) delete static_cast<Derived*>(this);
        return left;
    }

    IUnknown* unknown() {
        using First = std::tuple_element_t<0, std::tuple<Bases...>>;
        return static_cast<typename InterfaceOf<First>::type*>(static_cast<First*>(this));
    }

  protected:
    // Further interfaces a class answers (an event interface it sinks, ...).
    void* queryOther(REFIID) { return nullptr; }

  private:
    template <class B>
    void* queryBase(REFIID iid) {
        using I = typename InterfaceOf<B>::type;
        I* self = static_cast<I*>(static_cast<B*>(this));
        if (IsEqualIID(iid, __uuidof(I))) return self;
        return queryAncestors(iid, self, static_cast<typename ComAncestors<I>::type*>(nullptr));
    }
    template <class I, class... A>
    static void* queryAncestors(REFIID iid, [[maybe_unused]] I* self, std::tuple<A...>*) {
        void* found = nullptr;
        ((found = found ? found : (IsEqualIID(iid, __uuidof(A)) ? static_cast<A*>(self) : nullptr)),
         ...);
        return found;
    }
    template <class B, class... Rest>
    void* firstDispatch() {
        using I = typename InterfaceOf<B>::type;
        if constexpr (std::is_base_of_v<IDispatch, I>) {
            return static_cast<IDispatch*>(static_cast<I*>(static_cast<B*>(this)));
        } else if constexpr (sizeof...(Rest) > 0) {
            return firstDispatch<Rest...>();
        } else {
            return nullptr;
        }
    }

    std::atomic<ULONG> refs_{0};
};

}  // namespace hb::com
