#pragma once
// An error as the automation run time raises it: a number and a description.
#include <cstdint>
#include <exception>
#include <string>

#include "common/Str.h"

namespace hb {

// Run-time error numbers the add-in relies on.
namespace err {
constexpr std::int32_t InvalidProcedureCall = 5;
constexpr std::int32_t Overflow = 6;
constexpr std::int32_t SubscriptOutOfRange = 9;
constexpr std::int32_t TypeMismatch = 13;
constexpr std::int32_t ObjectVariableNotSet = 91;
constexpr std::int32_t ObjectRequired = 424;
constexpr std::int32_t NoSuchMember = 438;
}  // namespace err

class AutomationError : public std::exception {
  public:
    AutomationError(std::int32_t number, Str description);
    // The run time's own description for a standard number ("Overflow", ...).
    explicit AutomationError(std::int32_t number);

    std::int32_t number() const noexcept { return number_; }
    const Str& description() const noexcept { return description_; }
    const char* what() const noexcept override { return what_.c_str(); }

    static Str standardDescription(std::int32_t number);

  private:
    std::int32_t number_;
    Str description_;
    std::string what_;
};

[[noreturn]] void raise(std::int32_t number);
[[noreturn]] void raise(std::int32_t number, Str description);

}  // namespace hb
