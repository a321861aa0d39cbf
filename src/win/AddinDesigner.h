#pragma once
// The COM face of the designer: what Outlook creates by the ProgID
// "HBAddin.Connect". Forwards the add-in connection, the task pane
// consumer calls and (Office 2010 and later) the ribbon's XML and callbacks
// to the portable designer over the module's session. Its IDispatch is
// IHBAddin: the connection and the callbacks Office calls by name.
// Nothing it does fails back into Outlook.
#include "HBAddin_h.h"
#include "addin/OHBAddinDesigner.h"
#include "win/com/ComObject.h"

namespace hb::com {
// IHBAddin is the connection interface with the callbacks added.
template <>
struct ComAncestors<IHBAddin> {
    using type = std::tuple<_IDTExtensibility2, IDispatch>;
};
}  // namespace hb::com

namespace hb::win {

class AddinDesigner
    : public com::ComObject<
          AddinDesigner, com::DualInterface<IHBAddin>, com::DualInterface<ICustomTaskPaneConsumer>,
          com::DualInterface<ICTPFactory>, com::DualInterface<IRibbonExtensibility>> {
  public:
    AddinDesigner();

    // _IDTExtensibility2
    STDMETHODIMP OnConnection(IDispatch* application, ext_ConnectMode mode, IDispatch* addInInst,
                              SAFEARRAY** custom) override;
    STDMETHODIMP OnDisconnection(ext_DisconnectMode mode, SAFEARRAY** custom) override;
    STDMETHODIMP OnAddInsUpdate(SAFEARRAY** custom) override;
    STDMETHODIMP OnStartupComplete(SAFEARRAY** custom) override;
    STDMETHODIMP OnBeginShutdown(SAFEARRAY** custom) override;
    // ICustomTaskPaneConsumer
    STDMETHODIMP CTPFactoryAvailable(ICTPFactory* factory) override;
    // ICTPFactory: the add-in makes its panes through Office's factory and
    // offers none of its own.
    STDMETHODIMP CreateCTP(BSTR axId, BSTR title, VARIANT parentWindow,
                           _CustomTaskPane** pane) override;

    // IRibbonExtensibility
    STDMETHODIMP GetCustomUI(BSTR ribbonId, BSTR* xml) override;
    // IHBAddin: the ribbon's callbacks, answered by the portable ribbon's
    // dispatch members of the same names.
    STDMETHODIMP onLoad(IDispatch* ribbon) override;
    STDMETHODIMP getVisible(IDispatch* control, VARIANT_BOOL* result) override;
    STDMETHODIMP getEnabled(IDispatch* control, VARIANT_BOOL* result) override;
    STDMETHODIMP getLabel(IDispatch* control, BSTR* result) override;
    STDMETHODIMP getScreentip(IDispatch* control, BSTR* result) override;
    STDMETHODIMP getImage(IDispatch* control, VARIANT* result) override;
    STDMETHODIMP getItemCount(IDispatch* control, LONG* result) override;
    STDMETHODIMP getItemLabel(IDispatch* control, LONG index, BSTR* result) override;
    STDMETHODIMP getItemID(IDispatch* control, LONG index, BSTR* result) override;
    STDMETHODIMP getSelectedItemIndex(IDispatch* control, LONG* result) override;
    STDMETHODIMP onAction(IDispatch* control, VARIANT selectedId, VARIANT selectedIndex) override;

  private:
    // Calls the ribbon's member by name with the control first; its value,
    // Empty after anything that went wrong (the callbacks trap their own).
    Variant callback(const Str& member, IDispatch* control, Args more = {}) noexcept;

    OHBAddinDesigner designer_;
    ObjectPtr ribbon_;
};

}  // namespace hb::win
