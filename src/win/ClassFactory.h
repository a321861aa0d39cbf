#pragma once
// The one class factory of the module: creates objects of class T (a
// ComObject with a public default constructor) and holds the module's lock.
#include "win/com/ComObject.h"

namespace hb::win {

template <class T>
class ClassFactory : public com::ComObject<ClassFactory<T>, IClassFactory> {
  public:
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        try {
            com::ComPtr<T> object = T::create();
            return object->QueryInterface(iid, out);
        } catch (...) {
            return E_OUTOFMEMORY;
        }
    }
    STDMETHODIMP LockServer(BOOL lock) override {
        com::moduleLock(lock != FALSE);
        return S_OK;
    }
};

}  // namespace hb::win
