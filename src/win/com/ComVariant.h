#pragma once
// Automation values across the COM boundary: VARIANT <-> Variant in both
// directions, and failed HRESULTs / EXCEPINFO <-> AutomationError, with the
// numbers the run time's Err object would show.
#include <windows.h>
// windows.h first: oleauto.h relies on its types.
#include <oleauto.h>

#include <functional>

#include "common/Object.h"
#include "win/com/ComPtr.h"

namespace hb::com {

// A VARIANT that clears itself.
class ScopedVariant {
  public:
    ScopedVariant() { VariantInit(&v_); }
    ~ScopedVariant() { VariantClear(&v_); }
    ScopedVariant(const ScopedVariant&) = delete;
    ScopedVariant& operator=(const ScopedVariant&) = delete;
    VARIANT* get() { return &v_; }
    VARIANT& operator*() { return v_; }

  private:
    VARIANT v_;
};

// The value a VARIANT holds (through VT_BYREF). Objects become dispatch
// clients; VT_ERROR DISP_E_PARAMNOTFOUND is Missing, any other VT_ERROR an
// error value with its code; integer and real types the run time has no
// subtype for become the nearest one it has (a Long where the value fits,
// else a Double); a decimal becomes Currency where that holds it exactly,
// else a Double, never an integer. Arrays and records raise 13.
Variant fromVARIANT(const VARIANT& v);

// Writes value into out (which must be initialised; it is cleared first).
// A by-reference value writes its target; an error value is VT_ERROR with
// its code. An object must be a dispatch client, or one the object exporter
// turns into an IDispatch; others raise 13.
void toVARIANT(const Variant& value, VARIANT& out);

// Turns a portable object that is no dispatch client into an IDispatch
// (returned with a reference), or nullptr. The stand-in host installs one
// that serves the simulated Outlook.
using ObjectExporter = std::function<IDispatch*(const ObjectPtr&)>;
void setObjectExporter(ObjectExporter exporter);

// The IDispatch behind a portable object (with a reference), nullptr for
// Nothing; raises 13 for an object that cannot cross.
ComPtr<IDispatch> dispatchOf(const ObjectPtr& object);

// The run-time error number for a failed HRESULT: 0x800A.... carries the
// number in its low word; the dispatch failures map to their run-time
// errors (438, 13, 6, 9, 449, 450, ...); others are the HRESULT itself.
std::int32_t errorNumberOf(HRESULT hr);
// Raises the AutomationError for a failed call. exception (may be null)
// is used when hr is DISP_E_EXCEPTION.
[[noreturn]] void raiseFailure(HRESULT hr, EXCEPINFO* exception);

// The other way, for the layer's own servers: fills exception (if given)
// from the current exception and returns DISP_E_EXCEPTION, or the error's
// HRESULT with the error info set when there is no EXCEPINFO. Call from a
// catch block.
HRESULT reportCurrentException(EXCEPINFO* exception, const wchar_t* source) noexcept;
// The HRESULT that stands for a run-time error number.
HRESULT hresultOf(std::int32_t number);

std::wstring wide(StrView s);
Str fromWide(const wchar_t* s, std::size_t length);
Str fromBstr(BSTR s);

}  // namespace hb::com
