#pragma once
// The COM face of the designer: what Outlook creates by the ProgID
// "HBAddin.Connect". Forwards the add-in connection and the task pane
// consumer calls to the portable designer over the module's session.
// Nothing it does fails back into Outlook.
#include "HBAddin_h.h"
#include "addin/OHBAddinDesigner.h"
#include "win/com/ComObject.h"

namespace hb::win {

class AddinDesigner : public com::ComObject<AddinDesigner, com::DualInterface<_IDTExtensibility2>,
                                            com::DualInterface<ICustomTaskPaneConsumer>,
                                            com::DualInterface<ICTPFactory>> {
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

  private:
    OHBAddinDesigner designer_;
};

}  // namespace hb::win
