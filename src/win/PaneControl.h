#pragma once
// The task pane control "HBAddin.pane": what Office's task pane hosts in an
// appointment window. The pane's logic is the portable Pane; this class is
// its COM face.
#include <memory>

#include "HBAddin_h.h"
#include "inspector/Pane.h"
#include "win/com/ComObject.h"

namespace hb::win {

class PaneControl : public com::ComObject<PaneControl, com::DualInterface<IHBPane>>,
                    private PaneView {
  public:
    PaneControl();
    ~PaneControl() override;

    // IHBPane
    STDMETHODIMP get_objAppointment(VARIANT* value) override;
    STDMETHODIMP put_objAppointment(VARIANT value) override;
    STDMETHODIMP putref_objAppointment(IDispatch* value) override;
    STDMETHODIMP put_Settings(BSTR value) override;

  private:
    // PaneView: until the control draws, the boxes are kept in memory.
    void setLabel(int index, bool visible, const Str& caption) override;
    void setComboVisible(int index, bool visible) override;
    bool comboVisible(int index) const override;
    void comboAddItem(int index, const Str& item) override;
    int comboListCount(int index) const override;
    Str comboList(int index, int item) const override;
    void setComboListIndex(int index, int item) override;
    Str comboText(int index) const override;
    void layout() override {}

    struct Box {
        bool visible = false;
        std::vector<Str> items;
        int index = -1;
    };
    Box boxes_[3];
    std::unique_ptr<Pane> pane_;
};

}  // namespace hb::win
