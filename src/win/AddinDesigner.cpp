#include "win/AddinDesigner.h"

#include "common/ErrorTrap.h"
#include "win/Module.h"
#include "win/com/ComVariant.h"
#include "win/com/DispatchClient.h"
#include "win/com/DispatchServer.h"

namespace hb::win {

AddinDesigner::AddinDesigner() : designer_(moduleSession()) {}

STDMETHODIMP AddinDesigner::OnConnection(IDispatch* application, ext_ConnectMode mode,
                                         IDispatch* addInInst, SAFEARRAY** /*custom*/) {
    Session& s = designer_.session();
    try {
        // What the add-in hands Office of its own (the calendar service it
        // sets as its COMAddIn's Object) is served as a real IDispatch.
        com::installDispatchServer();
        Args custom;
        designer_.AddinInstance_OnConnection(Variant(com::DispatchClient::wrap(application)),
                                             static_cast<std::int32_t>(mode),
                                             Variant(com::DispatchClient::wrap(addInInst)), custom);
    } catch (...) {
        // Outlook would disable the add-in on a failed connection without a
        // word to the user: say what failed, then let go of everything the
        // half-made connection holds or hears, so nothing stays subscribed.
        std::int32_t number = 0;
        Str description;
        describeCurrentException(number, description);
        subErrorHandler(s, description, number, 0, u"OHBAddinDesigner.AddinInstance_OnConnection");
        s.oCalendarReactions.reset();
        subCloseDown(s);
    }
    return S_OK;
}

STDMETHODIMP AddinDesigner::OnDisconnection(ext_DisconnectMode mode, SAFEARRAY** /*custom*/) {
    Args custom;
    designer_.AddinInstance_OnDisconnection(static_cast<std::int32_t>(mode), custom);
    return S_OK;
}

STDMETHODIMP AddinDesigner::OnAddInsUpdate(SAFEARRAY** /*custom*/) {
    return S_OK;
}

STDMETHODIMP AddinDesigner::OnStartupComplete(SAFEARRAY** /*custom*/) {
    return S_OK;
}

STDMETHODIMP AddinDesigner::OnBeginShutdown(SAFEARRAY** /*custom*/) {
    Args custom;
    designer_.AddinInstance_OnBeginShutdown(custom);
    return S_OK;
}

STDMETHODIMP AddinDesigner::CTPFactoryAvailable(ICTPFactory* factory) {
    try {
        designer_.ICustomTaskPaneConsumer_CTPFactoryAvailable(
            Variant(com::DispatchClient::wrap(factory)));
    } catch (...) {
    }
    return S_OK;
}

STDMETHODIMP AddinDesigner::CreateCTP(BSTR, BSTR, VARIANT, _CustomTaskPane** pane) {
    if (pane) *pane = nullptr;
    return S_OK;
}

// ---------------------------------------------------------------------------
// The ribbon

namespace {

HRESULT putBstr(const Str& text, BSTR* out) {
    if (!out) return E_POINTER;
    *out = SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.data()),
                             static_cast<UINT>(text.size()));
    return S_OK;
}

Variant controlOf(IDispatch* control) {
    return control ? Variant(com::DispatchClient::wrap(control)) : Variant::nothing();
}

}  // namespace

Variant AddinDesigner::callback(const Str& member, IDispatch* control, Args more) noexcept {
    try {
        if (!ribbon_) ribbon_ = designer_.ribbonCallbacks();
        if (!ribbon_) return Variant();
        Args args{controlOf(control)};
        for (Variant& v : more)
            args.push_back(std::move(v));
        return ribbon_->invoke(CallKind::Method, member, args);
    } catch (...) {
        return Variant();
    }
}

STDMETHODIMP AddinDesigner::GetCustomUI(BSTR ribbonId, BSTR* xml) {
    Str id;
    try {
        id = com::fromBstr(ribbonId);
    } catch (...) {
    }
    return putBstr(designer_.IRibbonExtensibility_GetCustomUI(id), xml);
}

STDMETHODIMP AddinDesigner::onLoad(IDispatch* ribbon) {
    callback(u"onLoad", ribbon);
    return S_OK;
}

STDMETHODIMP AddinDesigner::getVisible(IDispatch* control, VARIANT_BOOL* result) {
    if (!result) return E_POINTER;
    const Variant v = callback(u"getVisible", control);
    *result = v.type() == Variant::Type::Boolean && v.toBool() ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

STDMETHODIMP AddinDesigner::getEnabled(IDispatch* control, VARIANT_BOOL* result) {
    if (!result) return E_POINTER;
    const Variant v = callback(u"getEnabled", control);
    *result = v.type() == Variant::Type::Boolean && v.toBool() ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

STDMETHODIMP AddinDesigner::getLabel(IDispatch* control, BSTR* result) {
    const Variant v = callback(u"getLabel", control);
    return putBstr(v.type() == Variant::Type::String ? v.toStr() : Str(), result);
}

STDMETHODIMP AddinDesigner::getScreentip(IDispatch* control, BSTR* result) {
    const Variant v = callback(u"getScreentip", control);
    return putBstr(v.type() == Variant::Type::String ? v.toStr() : Str(), result);
}

STDMETHODIMP AddinDesigner::getImage(IDispatch* control, VARIANT* result) {
    if (!result) return E_POINTER;
    VariantInit(result);
    const Variant v = callback(u"getImage", control);
    try {
        com::toVARIANT(v, *result);
    } catch (...) {
        VariantInit(result);
    }
    return S_OK;
}

STDMETHODIMP AddinDesigner::getItemCount(IDispatch* control, LONG* result) {
    if (!result) return E_POINTER;
    const Variant v = callback(u"getItemCount", control);
    *result = v.type() == Variant::Type::Long ? v.toLong() : 0;
    return S_OK;
}

STDMETHODIMP AddinDesigner::getItemLabel(IDispatch* control, LONG index, BSTR* result) {
    const Variant v =
        callback(u"getItemLabel", control, {Variant(static_cast<std::int32_t>(index))});
    return putBstr(v.type() == Variant::Type::String ? v.toStr() : Str(), result);
}

STDMETHODIMP AddinDesigner::getItemID(IDispatch* control, LONG index, BSTR* result) {
    const Variant v = callback(u"getItemID", control, {Variant(static_cast<std::int32_t>(index))});
    return putBstr(v.type() == Variant::Type::String ? v.toStr() : Str(), result);
}

STDMETHODIMP AddinDesigner::getSelectedItemIndex(IDispatch* control, LONG* result) {
    if (!result) return E_POINTER;
    const Variant v = callback(u"getSelectedItemIndex", control);
    *result = v.type() == Variant::Type::Long ? v.toLong() : -1;
    return S_OK;
}

STDMETHODIMP AddinDesigner::onAction(IDispatch* control, VARIANT selectedId,
                                     VARIANT selectedIndex) {
    // A button passes the control alone: the optional ones come as missing.
    Args more;
    try {
        if (selectedId.vt != VT_ERROR) {
            more.push_back(com::fromVARIANT(selectedId));
            more.push_back(com::fromVARIANT(selectedIndex));
        }
    } catch (...) {
        more.clear();
    }
    callback(u"onAction", control, std::move(more));
    return S_OK;
}

}  // namespace hb::win
