#pragma once
// The class factories: ClassFactory creates objects of class T (a
// ComObject with a public default constructor); InstanceFactory hands out
// one object that exists already, as a local server that has one
// application object (Outlook's Application) does. Both hold the module's
// lock.
#include <utility>

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

class InstanceFactory : public com::ComObject<InstanceFactory, IClassFactory> {
  public:
    explicit InstanceFactory(com::ComPtr<IUnknown> instance) : instance_(std::move(instance)) {}

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        if (!instance_) return CO_E_SERVER_STOPPING;
        return instance_->QueryInterface(iid, out);
    }
    STDMETHODIMP LockServer(BOOL lock) override {
        com::moduleLock(lock != FALSE);
        return S_OK;
    }
    // Once the server begins to end, no client gets the object any more.
    void stop() { instance_ = nullptr; }

  private:
    com::ComPtr<IUnknown> instance_;
};

}  // namespace hb::win
