#pragma once
// An owning COM interface pointer: AddRef on copy, Release on destruction.
#include <windows.h>
// windows.h first: unknwn.h relies on its types.
#include <unknwn.h>

#include <utility>

namespace hb::com {

template <class T>
class ComPtr {
  public:
    ComPtr() = default;
    ComPtr(std::nullptr_t) {}
    // Takes a new reference to p.
    explicit ComPtr(T* p) : p_(p) {
        if (p_) p_->AddRef();
    }
    ComPtr(const ComPtr& other) : ComPtr(other.p_) {}
    ComPtr(ComPtr&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(p_, other.p_);
        return *this;
    }
    ~ComPtr() { reset(); }

    // Adopts a reference the caller already owns (an [out] pointer).
    static ComPtr adopt(T* p) {
        ComPtr r;
        r.p_ = p;
        return r;
    }

    void reset() noexcept {
        if (T* p = std::exchange(p_, nullptr)) p->Release();
    }
    T* get() const { return p_; }
    T* operator->() const { return p_; }
    explicit operator bool() const { return p_ != nullptr; }
    // For an [out] argument: releases what is held first.
    T** put() {
        reset();
        return &p_;
    }
    // Hands the reference over to an [out] argument of the caller.
    T* detach() { return std::exchange(p_, nullptr); }

    // QueryInterface for another interface; empty when it is not supported.
    template <class U>
    ComPtr<U> as() const {
        ComPtr<U> r;
        if (p_) p_->QueryInterface(__uuidof(U), reinterpret_cast<void**>(r.put()));
        return r;
    }

  private:
    T* p_ = nullptr;
};

}  // namespace hb::com
