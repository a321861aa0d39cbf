#pragma once
// Office's task pane factory as the stand-in host hands it to an add-in
// (ICustomTaskPaneConsumer::CTPFactoryAvailable): a real ICTPFactory whose
// CreateCTP asks the simulated Office for the pane, so the pane's
// Visible, Width, Height, DockPosition and events are the simulated pane's,
// served over COM; the pane's content is made by the host (a real ActiveX
// control in a real window, see HostWindows).
#include "HBAddin_h.h"
#include "common/Object.h"
#include "win/com/ComObject.h"

namespace standin {

class TaskPaneFactory
    : public hb::com::ComObject<TaskPaneFactory, hb::com::DualInterface<ICTPFactory>> {
  public:
    // simFactory: the simulated factory as the add-in would receive it.
    explicit TaskPaneFactory(hb::Variant simFactory) : simFactory_(std::move(simFactory)) {}

    STDMETHODIMP CreateCTP(BSTR axId, BSTR title, VARIANT parentWindow,
                           _CustomTaskPane** pane) override;

  private:
    hb::Variant simFactory_;
};

}  // namespace standin
