#include "win/PaneControl.h"

#include "addin/modOutlookCode.h"
#include "settings/cPersonalSettings.h"
#include "win/Module.h"
#include "win/com/ComVariant.h"
#include "win/com/DispatchClient.h"

namespace hb::win {

namespace {

// The control's size before a container sets one: the task pane's default
// 185 x 600 pixels, in HIMETRIC at 96 DPI.
constexpr LONG kHimetricPerInch = 2540;
constexpr SIZEL kDefaultExtent{185 * kHimetricPerInch / 96, 600 * kHimetricPerInch / 96};

// Every COM method runs its body through this: nothing thrown leaves the
// control.
template <class F>
HRESULT guarded(F&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return E_UNEXPECTED;
    }
}

// A container that hosts the control without Outlook having started the
// add-in in this load of the library (a form designer, a test host) leaves
// the session without personal settings and list separator, and the pane
// reads its lists' markings through both: the settings text handed in
// stands in for them then. Outlook's start-up replaces both with the user's
// own; nothing is saved from the stand-in.
void standInForStartup(Session& s, const Str& settings) {
    if (s.oPersonalSettings) return;
    if (s.strListSeparator.empty()) s.strListSeparator = fncGetListSeparator(s);
    auto standIn = std::make_shared<cPersonalSettings>(s);
    standIn->FromString(settings);
    s.oPersonalSettings = standIn;
}

}  // namespace

PaneControl::PaneControl()
    : window_([this](int index) { whileHeld([&] { pane_->cmbMeta_Click(index); }); },
              [this] { whileHeld([&] { activateUI(); }); }),
      pane_(std::make_unique<Pane>(moduleSession(), static_cast<PaneView&>(window_))),
      extent_(kDefaultExtent) {}

PaneControl::~PaneControl() {
    try {
        destroying_ = true;
        window_.destroy();
        pane_.reset();
    } catch (...) {
    }
}

// ---------------------------------------------------------------- IHBPane

STDMETHODIMP PaneControl::get_objAppointment(VARIANT* value) {
    if (!value) return E_POINTER;
    try {
        VariantInit(value);
        com::toVARIANT(pane_->objAppointment(), *value);
        return S_OK;
    } catch (...) {
        return com::reportCurrentException(nullptr, L"HBAddin.pane");
    }
}

STDMETHODIMP PaneControl::put_objAppointment(VARIANT value) {
    try {
        pane_->setObjAppointment(com::fromVARIANT(value));
        return S_OK;
    } catch (...) {
        return com::reportCurrentException(nullptr, L"HBAddin.pane");
    }
}

STDMETHODIMP PaneControl::putref_objAppointment(IDispatch* value) {
    try {
        pane_->setObjAppointment(Variant(com::DispatchClient::wrap(value)));
        return S_OK;
    } catch (...) {
        return com::reportCurrentException(nullptr, L"HBAddin.pane");
    }
}

STDMETHODIMP PaneControl::put_Settings(BSTR value) {
    try {
        const Str settings = com::fromBstr(value);
        standInForStartup(moduleSession(), settings);
        pane_->setSettings(settings);
        return S_OK;
    } catch (...) {
        return com::reportCurrentException(nullptr, L"HBAddin.pane");
    }
}

// ---------------------------------------------------------------- IOleObject

STDMETHODIMP PaneControl::SetClientSite(IOleClientSite* site) {
    return guarded([&] {
        site_ = com::ComPtr<IOleClientSite>(site);
        return S_OK;
    });
}

STDMETHODIMP PaneControl::GetClientSite(IOleClientSite** site) {
    if (!site) return E_POINTER;
    *site = com::ComPtr<IOleClientSite>(site_).detach();
    return S_OK;
}

STDMETHODIMP PaneControl::SetHostNames(LPCOLESTR, LPCOLESTR) {
    return S_OK;
}

STDMETHODIMP PaneControl::Close(DWORD) {
    return guarded([&] {
        InPlaceDeactivate();
        if (adviseHolder_) adviseHolder_->SendOnClose();
        return S_OK;
    });
}

STDMETHODIMP PaneControl::SetMoniker(DWORD, IMoniker*) {
    return E_NOTIMPL;
}

STDMETHODIMP PaneControl::GetMoniker(DWORD, DWORD, IMoniker** moniker) {
    if (moniker) *moniker = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP PaneControl::InitFromData(IDataObject*, BOOL, DWORD) {
    return E_NOTIMPL;
}

STDMETHODIMP PaneControl::GetClipboardData(DWORD, IDataObject** data) {
    if (data) *data = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP PaneControl::DoVerb(LONG verb, LPMSG, IOleClientSite* site, LONG, HWND parent,
                                 LPCRECT bounds) {
    return guarded([&]() -> HRESULT {
        if (site && !site_) site_ = com::ComPtr<IOleClientSite>(site);
        switch (verb) {
            case OLEIVERB_INPLACEACTIVATE:
                return activateInPlace(parent, bounds);
            case OLEIVERB_PRIMARY:
            case OLEIVERB_SHOW:
            case OLEIVERB_UIACTIVATE: {
                const HRESULT hr = activateInPlace(parent, bounds);
                return FAILED(hr) ? hr : activateUI();
            }
            case OLEIVERB_HIDE:
                UIDeactivate();
                window_.show(false);
                return S_OK;
            case OLEIVERB_DISCARDUNDOSTATE:
                return S_OK;
            default:
                // Verbs of our own there are none; an unknown positive verb
                // is the primary one.
                if (verb > 0) {
                    const HRESULT hr = activateInPlace(parent, bounds);
                    return FAILED(hr) ? hr : OLEOBJ_S_INVALIDVERB;
                }
                return E_NOTIMPL;
        }
    });
}

STDMETHODIMP PaneControl::EnumVerbs(IEnumOLEVERB** verbs) {
    if (verbs) *verbs = nullptr;
    return OLE_S_USEREG;
}

STDMETHODIMP PaneControl::Update() {
    return S_OK;
}

STDMETHODIMP PaneControl::IsUpToDate() {
    return S_OK;
}

STDMETHODIMP PaneControl::GetUserClassID(CLSID* clsid) {
    return GetClassID(clsid);
}

STDMETHODIMP PaneControl::GetUserType(DWORD, LPOLESTR* type) {
    if (type) *type = nullptr;
    return OLE_S_USEREG;
}

STDMETHODIMP PaneControl::SetExtent(DWORD aspect, SIZEL* size) {
    if (!size) return E_POINTER;
    if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
    extent_ = *size;
    return S_OK;
}

STDMETHODIMP PaneControl::GetExtent(DWORD aspect, SIZEL* size) {
    if (!size) return E_POINTER;
    if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
    *size = extent_;
    return S_OK;
}

STDMETHODIMP PaneControl::Advise(IAdviseSink* sink, DWORD* connection) {
    return guarded([&] {
        if (!adviseHolder_) {
            const HRESULT hr = CreateOleAdviseHolder(adviseHolder_.put());
            if (FAILED(hr)) return hr;
        }
        return adviseHolder_->Advise(sink, connection);
    });
}

STDMETHODIMP PaneControl::Unadvise(DWORD connection) {
    return guarded(
        [&] { return adviseHolder_ ? adviseHolder_->Unadvise(connection) : OLE_E_NOCONNECTION; });
}

STDMETHODIMP PaneControl::EnumAdvise(IEnumSTATDATA** advise) {
    if (!advise) return E_POINTER;
    *advise = nullptr;
    return guarded([&] { return adviseHolder_ ? adviseHolder_->EnumAdvise(advise) : S_OK; });
}

STDMETHODIMP PaneControl::GetMiscStatus(DWORD aspect, DWORD* status) {
    if (!status) return E_POINTER;
    *status = aspect == DVASPECT_CONTENT ? kMiscStatus : 0;
    return S_OK;
}

STDMETHODIMP PaneControl::SetColorScheme(LOGPALETTE*) {
    return E_NOTIMPL;
}

// ---------------------------------------------------------------- IOleWindow

STDMETHODIMP PaneControl::GetWindow(HWND* hwnd) {
    if (!hwnd) return E_POINTER;
    *hwnd = window_.hwnd();
    return *hwnd ? S_OK : E_FAIL;
}

STDMETHODIMP PaneControl::ContextSensitiveHelp(BOOL) {
    return E_NOTIMPL;
}

// ---------------------------------------------------------------- IOleInPlaceObject

STDMETHODIMP PaneControl::InPlaceDeactivate() {
    return guarded([&] {
        if (!inPlaceActive_) return S_OK;
        UIDeactivate();
        // The boxes' contents and choices stay with the window object for
        // the next activation.
        window_.destroy();
        inPlaceActive_ = false;
        if (inPlaceSite_) inPlaceSite_->OnInPlaceDeactivate();
        releaseInPlaceSite();
        return S_OK;
    });
}

STDMETHODIMP PaneControl::UIDeactivate() {
    return guarded([&] {
        if (!uiActive_) return S_OK;
        uiActive_ = false;
        if (frame_) frame_->SetActiveObject(nullptr, nullptr);
        if (document_) document_->SetActiveObject(nullptr, nullptr);
        if (inPlaceSite_) inPlaceSite_->OnUIDeactivate(FALSE);
        return S_OK;
    });
}

STDMETHODIMP PaneControl::SetObjectRects(LPCRECT position, LPCRECT) {
    if (!position) return E_POINTER;
    return guarded([&] {
        window_.setBounds(*position);
        return S_OK;
    });
}

STDMETHODIMP PaneControl::ReactivateAndUndo() {
    return INPLACE_E_NOTUNDOABLE;
}

// ---------------------------------------------------------------- IOleInPlaceActiveObject

STDMETHODIMP PaneControl::TranslateAccelerator(LPMSG msg) {
    if (!msg) return E_POINTER;
    return guarded([&] { return window_.translateTab(*msg) ? S_OK : S_FALSE; });
}

STDMETHODIMP PaneControl::OnFrameWindowActivate(BOOL) {
    return S_OK;
}

STDMETHODIMP PaneControl::OnDocWindowActivate(BOOL) {
    return S_OK;
}

STDMETHODIMP PaneControl::ResizeBorder(LPCRECT, IOleInPlaceUIWindow*, BOOL) {
    return S_OK;
}

STDMETHODIMP PaneControl::EnableModeless(BOOL) {
    return S_OK;
}

// ---------------------------------------------------------------- IOleControl

STDMETHODIMP PaneControl::GetControlInfo(CONTROLINFO* info) {
    if (!info) return E_POINTER;
    // No mnemonics: the captions are the users' list names, shown as they
    // are written.
    info->hAccel = nullptr;
    info->cAccel = 0;
    info->dwFlags = 0;
    return S_OK;
}

STDMETHODIMP PaneControl::OnMnemonic(MSG*) {
    return S_OK;
}

STDMETHODIMP PaneControl::OnAmbientPropertyChange(DISPID) {
    return S_OK;
}

STDMETHODIMP PaneControl::FreezeEvents(BOOL) {
    return S_OK;
}

// ---------------------------------------------------------------- IViewObject2

STDMETHODIMP PaneControl::Draw(DWORD aspect, LONG, void*, DVTARGETDEVICE*, HDC, HDC dc,
                               LPCRECTL bounds, LPCRECTL, BOOL(STDMETHODCALLTYPE*)(ULONG_PTR),
                               ULONG_PTR) {
    if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
    if (!dc || !bounds) return E_INVALIDARG;
    return guarded([&] {
        const RECT r{bounds->left, bounds->top, bounds->right, bounds->bottom};
        window_.draw(dc, r);
        return S_OK;
    });
}

STDMETHODIMP PaneControl::GetColorSet(DWORD, LONG, void*, DVTARGETDEVICE*, HDC,
                                      LOGPALETTE** colors) {
    if (colors) *colors = nullptr;
    return S_FALSE;  // no particular palette
}

STDMETHODIMP PaneControl::Freeze(DWORD, LONG, void*, DWORD*) {
    return E_NOTIMPL;
}

STDMETHODIMP PaneControl::Unfreeze(DWORD) {
    return E_NOTIMPL;
}

STDMETHODIMP PaneControl::SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) {
    return guarded([&] {
        viewAspects_ = aspects;
        viewFlags_ = flags;
        viewSink_ = com::ComPtr<IAdviseSink>(sink);
        return S_OK;
    });
}

STDMETHODIMP PaneControl::GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) {
    if (aspects) *aspects = viewAspects_;
    if (flags) *flags = viewFlags_;
    if (sink) *sink = com::ComPtr<IAdviseSink>(viewSink_).detach();
    return S_OK;
}

STDMETHODIMP PaneControl::GetExtent(DWORD aspect, LONG, DVTARGETDEVICE*, LPSIZEL size) {
    return GetExtent(aspect, size);
}

// ---------------------------------------------------------------- IPersistStreamInit

STDMETHODIMP PaneControl::GetClassID(CLSID* clsid) {
    if (!clsid) return E_POINTER;
    *clsid = CLSID_Pane;
    return S_OK;
}

// The control keeps nothing between sessions: the host hands it the
// appointment and the settings each time.
STDMETHODIMP PaneControl::IsDirty() {
    return S_FALSE;
}

STDMETHODIMP PaneControl::Load(LPSTREAM stream) {
    return stream ? S_OK : E_POINTER;
}

STDMETHODIMP PaneControl::Save(LPSTREAM stream, BOOL) {
    return stream ? S_OK : E_POINTER;
}

STDMETHODIMP PaneControl::GetSizeMax(ULARGE_INTEGER* size) {
    if (!size) return E_POINTER;
    size->QuadPart = 0;
    return S_OK;
}

STDMETHODIMP PaneControl::InitNew() {
    return S_OK;
}

// ---------------------------------------------------------------- IProvideClassInfo2

STDMETHODIMP PaneControl::GetClassInfo(ITypeInfo** info) {
    return com::moduleTypeInfo(CLSID_Pane, info);
}

STDMETHODIMP PaneControl::GetGUID(DWORD kind, GUID* guid) {
    if (!guid) return E_POINTER;
    *guid = GUID_NULL;
    // The control raises no events, so it has no default source interface.
    return kind == GUIDKIND_DEFAULT_SOURCE_DISP_IID ? E_FAIL : E_INVALIDARG;
}

// ---------------------------------------------------------------- activation

template <class F>
void PaneControl::whileHeld(F&& body) {
    // The window calls in from the message loop, where no caller holds the
    // control: a host that lets go of it during the call (from the
    // appointment's Categories put, or on the focus change) would otherwise
    // free it while the pick still writes into it. Held, the last release
    // comes after the call. A control being destroyed takes no more calls.
    if (destroying_) return;
    const com::ComPtr<PaneControl> held(this);
    body();
}

HRESULT PaneControl::activateInPlace(HWND parent, LPCRECT bounds) {
    if (!inPlaceActive_) {
        if (!site_) return E_UNEXPECTED;
        com::ComPtr<IOleInPlaceSite> site = site_.as<IOleInPlaceSite>();
        if (!site) return E_NOINTERFACE;
        if (site->CanInPlaceActivate() != S_OK) return E_FAIL;
        HRESULT hr = site->OnInPlaceActivate();
        if (FAILED(hr)) return hr;
        inPlaceSite_ = site;
        inPlaceActive_ = true;

        HWND siteWindow = nullptr;
        if (SUCCEEDED(site->GetWindow(&siteWindow)) && siteWindow) parent = siteWindow;
        RECT position{};
        RECT clip{};
        OLEINPLACEFRAMEINFO frameInfo{};
        frameInfo.cb = sizeof(frameInfo);
        hr = site->GetWindowContext(frame_.put(), document_.put(), &position, &clip, &frameInfo);
        if (FAILED(hr) && bounds) position = *bounds;
        if (!parent || !window_.create(parent, position)) {
            inPlaceActive_ = false;
            site->OnInPlaceDeactivate();
            releaseInPlaceSite();
            return E_FAIL;
        }
    }
    window_.show(true);
    return S_OK;
}

HRESULT PaneControl::activateUI() {
    if (uiActive_ || !inPlaceActive_ || !inPlaceSite_) return S_OK;
    HRESULT hr = inPlaceSite_->OnUIActivate();
    if (FAILED(hr)) return hr;
    uiActive_ = true;
    // The container routes keystrokes (Tab) to the active object.
    if (frame_) frame_->SetActiveObject(this, nullptr);
    if (document_) document_->SetActiveObject(this, nullptr);
    return S_OK;
}

void PaneControl::releaseInPlaceSite() {
    document_.reset();
    frame_.reset();
    inPlaceSite_.reset();
}

}  // namespace hb::win
