#pragma once
// The task pane control's logic, a view over the billing model: one
// labelled combo box per metadata list,
// the open appointment's values preselected, a new choice written straight
// back into the appointment. Drawing is left to a PaneView, so the ActiveX
// control only draws and the logic runs natively in tests.
#include <memory>

#include "common/Object.h"
#include "common/Session.h"
#include "explorer/BillingModel.h"

namespace hb {

class cMarking;
class cPersonalSettings;

// The three labels lblMeta(0..2) and combo boxes cmbMeta(0..2).
class PaneView {
  public:
    virtual ~PaneView() = default;
    virtual void setLabel(int index, bool visible, const Str& caption) = 0;
    virtual void setComboVisible(int index, bool visible) = 0;
    virtual bool comboVisible(int index) const = 0;
    virtual void comboAddItem(int index, const Str& item) = 0;
    virtual int comboListCount(int index) const = 0;
    virtual Str comboList(int index, int item) const = 0;     // item from 0
    virtual void setComboListIndex(int index, int item) = 0;  // -1: no selection
    virtual Str comboText(int index) const = 0;
    virtual void layout() = 0;  // the resize routine
    // Lets pending window messages run. Never called from a pick: a message
    // run there may be the host's close, freeing the control mid-pick.
    virtual void doEvents() {}
};

class Pane {
  public:
    Pane(Session& s, PaneView& view);
    ~Pane();  // UserControl_Terminate

    void setObjAppointment(const Variant& appointment);
    const Variant& objAppointment() const { return objAppointment_; }
    void setSettings(const Str& settings);  // the write-only Settings property
    void cmbMeta_Click(int index);
    void UserControl_Resize();

    // The control as an automation object, as its host sees it: the
    // properties "objAppointment" (put/putref/get) and "Settings" (put).
    ObjectPtr automationObject();

  private:
    Session& s_;
    PaneView& view_;
    // The lists, an item's values and the steps of a pick, shared with the
    // toolbar and the ribbon; the lists are the pane's own settings'.
    BillingModel model_;
    Variant objAppointment_;
    std::shared_ptr<cMarking> objMarking_;
    // The settings text parsed, the pane's own: the session's settings are
    // not touched by showing a pane.
    std::unique_ptr<cPersonalSettings> settings_;
    bool blnLoading_ = false;
    ObjectPtr object_;
};

// Is a text billing information (shared by the toolbar and the pane): the
// comma-split pieces against the names of the metadata lists.
bool fncIsHourbookData(Session& s, const Str& text);

}  // namespace hb
