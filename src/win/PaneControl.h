#pragma once
// The task pane control "HBAddin.pane": the windowed ActiveX control that
// Office's task pane (or any ActiveX container) hosts in an appointment
// window. The pane's logic is the portable Pane, its window the PaneWindow;
// this class is the COM face: automation (IHBPane), the OLE embedding and
// in-place activation a container drives, drawing for containers that ask
// for a picture, and an empty persistent state.
#include <memory>

#include "HBAddin_h.h"
#include "inspector/Pane.h"
#include "win/PaneWindow.h"
#include "win/com/ComObject.h"

namespace hb::win {

class PaneControl : public com::ComObject<PaneControl, com::DualInterface<IHBPane>, IOleObject,
                                          IOleInPlaceObject, IOleInPlaceActiveObject, IOleControl,
                                          IViewObject2, IPersistStreamInit, IProvideClassInfo2> {
  public:
    PaneControl();
    ~PaneControl() override;

    // The OLEMISC flags of the control, as registered under MiscStatus.
    static constexpr DWORD kMiscStatus = OLEMISC_RECOMPOSEONRESIZE | OLEMISC_CANTLINKINSIDE |
                                         OLEMISC_INSIDEOUT | OLEMISC_ACTIVATEWHENVISIBLE |
                                         OLEMISC_SETCLIENTSITEFIRST;

    // IHBPane
    STDMETHODIMP get_objAppointment(VARIANT* value) override;
    STDMETHODIMP put_objAppointment(VARIANT value) override;
    STDMETHODIMP putref_objAppointment(IDispatch* value) override;
    STDMETHODIMP put_Settings(BSTR value) override;

    // IOleObject
    STDMETHODIMP SetClientSite(IOleClientSite* site) override;
    STDMETHODIMP GetClientSite(IOleClientSite** site) override;
    STDMETHODIMP SetHostNames(LPCOLESTR app, LPCOLESTR object) override;
    STDMETHODIMP Close(DWORD saveOption) override;
    STDMETHODIMP SetMoniker(DWORD which, IMoniker* moniker) override;
    STDMETHODIMP GetMoniker(DWORD assign, DWORD which, IMoniker** moniker) override;
    STDMETHODIMP InitFromData(IDataObject* data, BOOL creation, DWORD reserved) override;
    STDMETHODIMP GetClipboardData(DWORD reserved, IDataObject** data) override;
    STDMETHODIMP DoVerb(LONG verb, LPMSG msg, IOleClientSite* site, LONG index, HWND parent,
                        LPCRECT bounds) override;
    STDMETHODIMP EnumVerbs(IEnumOLEVERB** verbs) override;
    STDMETHODIMP Update() override;
    STDMETHODIMP IsUpToDate() override;
    STDMETHODIMP GetUserClassID(CLSID* clsid) override;
    STDMETHODIMP GetUserType(DWORD form, LPOLESTR* type) override;
    STDMETHODIMP SetExtent(DWORD aspect, SIZEL* size) override;
    STDMETHODIMP GetExtent(DWORD aspect, SIZEL* size) override;
    STDMETHODIMP Advise(IAdviseSink* sink, DWORD* connection) override;
    STDMETHODIMP Unadvise(DWORD connection) override;
    STDMETHODIMP EnumAdvise(IEnumSTATDATA** advise) override;
    STDMETHODIMP GetMiscStatus(DWORD aspect, DWORD* status) override;
    STDMETHODIMP SetColorScheme(LOGPALETTE* palette) override;

    // IOleWindow (of IOleInPlaceObject and IOleInPlaceActiveObject)
    STDMETHODIMP GetWindow(HWND* hwnd) override;
    STDMETHODIMP ContextSensitiveHelp(BOOL enter) override;

    // IOleInPlaceObject
    STDMETHODIMP InPlaceDeactivate() override;
    STDMETHODIMP UIDeactivate() override;
    STDMETHODIMP SetObjectRects(LPCRECT position, LPCRECT clip) override;
    STDMETHODIMP ReactivateAndUndo() override;

    // IOleInPlaceActiveObject
    STDMETHODIMP TranslateAccelerator(LPMSG msg) override;
    STDMETHODIMP OnFrameWindowActivate(BOOL activate) override;
    STDMETHODIMP OnDocWindowActivate(BOOL activate) override;
    STDMETHODIMP ResizeBorder(LPCRECT border, IOleInPlaceUIWindow* window, BOOL frame) override;
    STDMETHODIMP EnableModeless(BOOL enable) override;

    // IOleControl
    STDMETHODIMP GetControlInfo(CONTROLINFO* info) override;
    STDMETHODIMP OnMnemonic(MSG* msg) override;
    STDMETHODIMP OnAmbientPropertyChange(DISPID id) override;
    STDMETHODIMP FreezeEvents(BOOL freeze) override;

    // IViewObject2
    STDMETHODIMP Draw(DWORD aspect, LONG index, void* aspectInfo, DVTARGETDEVICE* device,
                      HDC targetDevice, HDC dc, LPCRECTL bounds, LPCRECTL windowBounds,
                      BOOL(STDMETHODCALLTYPE* keepGoing)(ULONG_PTR), ULONG_PTR argument) override;
    STDMETHODIMP GetColorSet(DWORD aspect, LONG index, void* aspectInfo, DVTARGETDEVICE* device,
                             HDC targetDevice, LOGPALETTE** colors) override;
    STDMETHODIMP Freeze(DWORD aspect, LONG index, void* aspectInfo, DWORD* freeze) override;
    STDMETHODIMP Unfreeze(DWORD freeze) override;
    STDMETHODIMP SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) override;
    STDMETHODIMP GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) override;
    STDMETHODIMP GetExtent(DWORD aspect, LONG index, DVTARGETDEVICE* device, LPSIZEL size) override;

    // IPersistStreamInit (IPersist)
    STDMETHODIMP GetClassID(CLSID* clsid) override;
    STDMETHODIMP IsDirty() override;
    STDMETHODIMP Load(LPSTREAM stream) override;
    STDMETHODIMP Save(LPSTREAM stream, BOOL clearDirty) override;
    STDMETHODIMP GetSizeMax(ULARGE_INTEGER* size) override;
    STDMETHODIMP InitNew() override;

    // IProvideClassInfo2
    STDMETHODIMP GetClassInfo(ITypeInfo** info) override;
    STDMETHODIMP GetGUID(DWORD kind, GUID* guid) override;

  private:
    // Runs a call of the window into the control with a reference held.
    template <class F>
    void whileHeld(F&& body);
    HRESULT activateInPlace(HWND parent, LPCRECT bounds);
    HRESULT activateUI();
    void releaseInPlaceSite();

    PaneWindow window_;
    std::unique_ptr<Pane> pane_;

    com::ComPtr<IOleClientSite> site_;
    com::ComPtr<IOleInPlaceSite> inPlaceSite_;
    com::ComPtr<IOleInPlaceFrame> frame_;
    com::ComPtr<IOleInPlaceUIWindow> document_;
    com::ComPtr<IOleAdviseHolder> adviseHolder_;
    com::ComPtr<IAdviseSink> viewSink_;
    DWORD viewAspects_ = 0;
    DWORD viewFlags_ = 0;
    SIZEL extent_{};  // HIMETRIC
    bool inPlaceActive_ = false;
    bool uiActive_ = false;
    bool destroying_ = false;
};

}  // namespace hb::win
