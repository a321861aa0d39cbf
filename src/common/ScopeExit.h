#pragma once
// Runs a function when the scope ends, however it ends (a return, an
// exception): for flags and states that must not outlive a failed step.
#include <utility>

namespace hb {

template <class F>
class ScopeExit {
  public:
    explicit ScopeExit(F f) : f_(std::move(f)) {}
    ~ScopeExit() {
        try {
            f_();
        } catch (...) {
        }
    }
    ScopeExit(const ScopeExit&) = delete;
    ScopeExit& operator=(const ScopeExit&) = delete;

  private:
    F f_;
};

}  // namespace hb
