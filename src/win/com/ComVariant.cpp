#include "win/com/ComVariant.h"

#include <cstdint>
#include <optional>
#include <utility>

#include "common/ErrorTrap.h"
#include "win/com/DispatchClient.h"

namespace hb::com {

namespace {

ObjectExporter& exporter() {
    static ObjectExporter e;
    return e;
}

// Run-time errors that stand for dispatch failures.
struct HresultError {
    HRESULT hr;
    std::int32_t number;
    const char16_t* description;  // nullptr: the run time's standard text
};
constexpr HresultError kHresultErrors[] = {
    {DISP_E_MEMBERNOTFOUND, err::NoSuchMember, nullptr},
    {DISP_E_UNKNOWNNAME, err::NoSuchMember, nullptr},
    {DISP_E_TYPEMISMATCH, err::TypeMismatch, nullptr},
    {DISP_E_OVERFLOW, err::Overflow, nullptr},
    {DISP_E_BADINDEX, err::SubscriptOutOfRange, nullptr},
    {DISP_E_DIVBYZERO, 11, nullptr},
    {E_OUTOFMEMORY, 7, nullptr},
    {E_INVALIDARG, err::InvalidProcedureCall, nullptr},
    {DISP_E_PARAMNOTOPTIONAL, 449, u"Argument not optional"},
    {DISP_E_BADPARAMCOUNT, 450, u"Wrong number of arguments or invalid property assignment"},
    {DISP_E_NONAMEDARGS, 446, u"Object doesn't support named arguments"},
    {E_NOINTERFACE, 430,
     u"Class does not support Automation or does not support expected interface"},
    {REGDB_E_CLASSNOTREG, 429, nullptr},
    {CO_E_CLASSSTRING, 429, nullptr},
    {MK_E_UNAVAILABLE, 429, nullptr},
};

const HresultError* knownError(HRESULT hr) {
    for (const HresultError& e : kHresultErrors)
        if (e.hr == hr) return &e;
    return nullptr;
}

Str describe(std::int32_t number, HRESULT hr) {
    if (const HresultError* e = knownError(hr); e && e->description) return e->description;
    Str text = AutomationError::standardDescription(number);
    if (!text.empty()) return text;
    // Outside the run time's own numbers: the system's text, as the run time
    // shows "Automation error" followed by it.
    wchar_t* buffer = nullptr;
    const DWORD n = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, static_cast<DWORD>(hr), 0, reinterpret_cast<LPWSTR>(&buffer), 0, nullptr);
    Str system = n ? fromWide(buffer, n) : Str();
    if (buffer) LocalFree(buffer);
    while (!system.empty() && (system.back() == u'\n' || system.back() == u'\r'))
        system.pop_back();
    return system.empty() ? Str(u"Automation error") : u"Automation error\r\n" + system;
}

// A decimal's amount scaled by 10000 when Currency holds it exactly: at most
// four decimals (after trailing zeros) and within Currency's range. Worked
// out on the decimal's own digits, since the system's conversion to Currency
// may go through a Double and lose the last ones.
std::optional<std::int64_t> exactCurrency(const DECIMAL& d) {
    std::uint32_t limbs[3] = {d.Hi32, d.Mid32, d.Lo32};  // most significant first
    int scale = d.scale;
    for (; scale > 4; --scale) {
        std::uint64_t rest = 0;
        for (std::uint32_t& limb : limbs) {
            const std::uint64_t x = (rest << 32) | limb;
            limb = static_cast<std::uint32_t>(x / 10);
            rest = x % 10;
        }
        if (rest) return std::nullopt;
    }
    if (limbs[0]) return std::nullopt;
    std::uint64_t m = (std::uint64_t{limbs[1]} << 32) | limbs[2];
    for (; scale < 4; ++scale) {
        if (m > UINT64_MAX / 10) return std::nullopt;
        m *= 10;
    }
    const bool negative = (d.sign & DECIMAL_NEG) != 0;
    if (m > static_cast<std::uint64_t>(INT64_MAX) + (negative ? 1 : 0)) return std::nullopt;
    return negative ? static_cast<std::int64_t>(0 - m) : static_cast<std::int64_t>(m);
}

}  // namespace

std::wstring wide(StrView s) {
    return std::wstring(s.begin(), s.end());
}

Str fromWide(const wchar_t* s, std::size_t length) {
    return s ? Str(reinterpret_cast<const char16_t*>(s), length) : Str();
}

Str fromBstr(BSTR s) {
    return fromWide(s, s ? SysStringLen(s) : 0);
}

void setObjectExporter(ObjectExporter e) {
    exporter() = std::move(e);
}

ComPtr<IDispatch> dispatchOf(const ObjectPtr& object) {
    if (!object) return nullptr;
    if (auto* client = dynamic_cast<DispatchClient*>(object.get()))
        return ComPtr<IDispatch>(client->dispatch());
    if (exporter()) {
        if (IDispatch* d = exporter()(object)) return ComPtr<IDispatch>::adopt(d);
    }
    raise(err::TypeMismatch);
}

Variant fromVARIANT(const VARIANT& in) {
    const VARIANT* v = &in;
    // A VARIANT that refers to another VARIANT.
    while (V_VT(v) == (VT_VARIANT | VT_BYREF) && V_VARIANTREF(v))
        v = V_VARIANTREF(v);
    const VARTYPE vt = V_VT(v);
    const bool ref = (vt & VT_BYREF) != 0;
    if (vt & (VT_ARRAY | VT_VECTOR)) raise(err::TypeMismatch);
    switch (vt & VT_TYPEMASK) {
        case VT_EMPTY:
            return Variant();
        case VT_NULL:
            return Variant::null();
        case VT_I2:
            return Variant(static_cast<std::int16_t>(ref ? *V_I2REF(v) : V_I2(v)));
        case VT_I4:
            return Variant(static_cast<std::int32_t>(ref ? *V_I4REF(v) : V_I4(v)));
        case VT_INT:
            return Variant(static_cast<std::int32_t>(ref ? *V_INTREF(v) : V_INT(v)));
        case VT_R8:
            return Variant(ref ? *V_R8REF(v) : V_R8(v));
        case VT_R4:
            return Variant(static_cast<double>(ref ? *V_R4REF(v) : V_R4(v)));
        case VT_CY:
            return Variant(Currency{(ref ? *V_CYREF(v) : V_CY(v)).int64});
        case VT_DATE:
            return Variant(Date{ref ? *V_DATEREF(v) : V_DATE(v)});
        case VT_BSTR:
            return Variant(fromBstr(ref ? *V_BSTRREF(v) : V_BSTR(v)));
        case VT_BOOL:
            return Variant((ref ? *V_BOOLREF(v) : V_BOOL(v)) != VARIANT_FALSE);
        case VT_ERROR: {
            const SCODE sc = ref ? *V_ERRORREF(v) : V_ERROR(v);
            if (sc == DISP_E_PARAMNOTFOUND) return Variant::missing();
            return Variant::error(static_cast<std::int32_t>(sc));
        }
        case VT_DECIMAL: {
            // The run time's subtypes have no Decimal, and an integer would
            // round its fraction away (0.75 would be 1): Currency where it
            // holds the amount exactly, else the Double the system makes of it.
            const DECIMAL& d = ref ? *V_DECIMALREF(v) : V_DECIMAL(v);
            if (auto scaled = exactCurrency(d)) return Variant(Currency{*scaled});
            double r = 0;
            const HRESULT hr = VarR8FromDec(const_cast<DECIMAL*>(&d), &r);
            if (FAILED(hr)) raise(errorNumberOf(hr));
            return Variant(r);
        }
        case VT_DISPATCH: {
            IDispatch* d = ref ? *V_DISPATCHREF(v) : V_DISPATCH(v);
            return Variant(DispatchClient::wrap(d));
        }
        case VT_UNKNOWN: {
            IUnknown* u = ref ? *V_UNKNOWNREF(v) : V_UNKNOWN(v);
            if (!u) return Variant::nothing();
            ComPtr<IDispatch> d = ComPtr<IUnknown>(u).as<IDispatch>();
            if (!d) raise(err::TypeMismatch);
            return Variant(DispatchClient::wrap(d.get()));
        }
        default: {
            // Bytes, unsigned and wide integers: a Long where the value fits,
            // else a Double, through the system's own conversion.
            VARIANT tmp;
            VariantInit(&tmp);
            HRESULT hr = VariantChangeType(&tmp, const_cast<VARIANT*>(v), 0, VT_I4);
            if (FAILED(hr)) hr = VariantChangeType(&tmp, const_cast<VARIANT*>(v), 0, VT_R8);
            if (FAILED(hr)) raise(errorNumberOf(hr));
            Variant r = V_VT(&tmp) == VT_I4 ? Variant(static_cast<std::int32_t>(V_I4(&tmp)))
                                            : Variant(V_R8(&tmp));
            VariantClear(&tmp);
            return r;
        }
    }
}

void toVARIANT(const Variant& value, VARIANT& out) {
    VariantClear(&out);
    const Variant& v = value.deref();
    switch (v.type()) {
        case Variant::Type::Empty:
        case Variant::Type::ByRef:
            V_VT(&out) = VT_EMPTY;
            break;
        case Variant::Type::Null:
            V_VT(&out) = VT_NULL;
            break;
        case Variant::Type::Integer:
            V_VT(&out) = VT_I2;
            V_I2(&out) = v.toInteger();
            break;
        case Variant::Type::Long:
            V_VT(&out) = VT_I4;
            V_I4(&out) = v.toLong();
            break;
        case Variant::Type::Double:
            V_VT(&out) = VT_R8;
            V_R8(&out) = v.toDouble();
            break;
        case Variant::Type::Currency:
            V_VT(&out) = VT_CY;
            V_CY(&out).int64 = v.toCurrency().scaled;
            break;
        case Variant::Type::Date:
            V_VT(&out) = VT_DATE;
            V_DATE(&out) = v.toDate().days;
            break;
        case Variant::Type::String: {
            const Str s = v.toStr();
            BSTR b = SysAllocStringLen(reinterpret_cast<const OLECHAR*>(s.data()),
                                       static_cast<UINT>(s.size()));
            if (!b) raise(7);
            V_VT(&out) = VT_BSTR;
            V_BSTR(&out) = b;
            break;
        }
        case Variant::Type::Boolean:
            V_VT(&out) = VT_BOOL;
            V_BOOL(&out) = v.toBool() ? VARIANT_TRUE : VARIANT_FALSE;
            break;
        case Variant::Type::Object:
            V_DISPATCH(&out) = dispatchOf(v.toObject()).detach();
            V_VT(&out) = VT_DISPATCH;
            break;
        case Variant::Type::Missing:
            V_VT(&out) = VT_ERROR;
            V_ERROR(&out) = DISP_E_PARAMNOTFOUND;
            break;
        case Variant::Type::Error:
            V_VT(&out) = VT_ERROR;
            V_ERROR(&out) = v.errorCode();
            break;
    }
}

std::int32_t errorNumberOf(HRESULT hr) {
    if (HRESULT_FACILITY(hr) == FACILITY_CONTROL) return HRESULT_CODE(hr);
    if (const HresultError* e = knownError(hr)) return e->number;
    return static_cast<std::int32_t>(hr);
}

HRESULT hresultOf(std::int32_t number) {
    if (number < 0) return static_cast<HRESULT>(number);
    for (const HresultError& e : kHresultErrors)
        if (e.number == number) return e.hr;
    return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, number & 0xFFFF);
}

void raiseFailure(HRESULT hr, EXCEPINFO* exception) {
    if (hr == DISP_E_EXCEPTION && exception) {
        if (exception->pfnDeferredFillIn) exception->pfnDeferredFillIn(exception);
        const HRESULT scode = exception->scode;
        const std::int32_t number =
            exception->wCode ? exception->wCode
                             : errorNumberOf(scode ? scode : static_cast<HRESULT>(E_FAIL));
        Str description = fromBstr(exception->bstrDescription);
        SysFreeString(exception->bstrDescription);
        SysFreeString(exception->bstrSource);
        SysFreeString(exception->bstrHelpFile);
        exception->bstrDescription = exception->bstrSource = exception->bstrHelpFile = nullptr;
        if (description.empty()) description = describe(number, scode);
        throw AutomationError(number, std::move(description));
    }
    const std::int32_t number = errorNumberOf(hr);
    throw AutomationError(number, describe(number, hr));
}

HRESULT reportCurrentException(EXCEPINFO* exception, const wchar_t* source) noexcept {
    std::int32_t number = 0;
    Str description;
    describeCurrentException(number, description);
    const HRESULT hr = hresultOf(number);
    const std::wstring text = wide(description);
    if (exception) {
        *exception = EXCEPINFO{};
        exception->scode = hr;
        exception->bstrSource = SysAllocString(source);
        exception->bstrDescription = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
        return DISP_E_EXCEPTION;
    }
    ComPtr<ICreateErrorInfo> create;
    if (SUCCEEDED(CreateErrorInfo(create.put()))) {
        create->SetSource(const_cast<LPOLESTR>(source));
        create->SetDescription(const_cast<LPOLESTR>(text.c_str()));
        if (ComPtr<IErrorInfo> info = create.as<IErrorInfo>()) SetErrorInfo(0, info.get());
    }
    return hr;
}

}  // namespace hb::com
