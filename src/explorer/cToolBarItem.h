#pragma once
// The add-in's toolbar, a view over the billing model: one command bar named after the product in a
// calendar window (or an appointment window under older Outlook) with up to
// three metadata combo boxes and the Report, Settings and Statistics
// buttons; the billing entry between the boxes and the selected appointment;
// the buttons' commands; and the task pane of appointment windows under
// Outlook 2007 and later. One holder serves the whole session.
#include <memory>
#include <optional>
#include <vector>

#include "common/Object.h"
#include "common/Session.h"
#include "explorer/BillingModel.h"

namespace hb {

class cMarking;

class cToolBarItem : public std::enable_shared_from_this<cToolBarItem> {
  public:
    explicit cToolBarItem(Session& s);
    ~cToolBarItem();
    cToolBarItem(const cToolBarItem&) = delete;
    cToolBarItem& operator=(const cToolBarItem&) = delete;

    // --- toolbar ---
    const Variant& ofbCurrCommandBar() const { return ofbCurrCommandBar_; }
    void setOfbCurrCommandBar(const Variant& bar);
    void subAddButtons();
    void RemoveToolbar();
    void setBlnButtonsEnabled(bool value);
    const Variant& ouiCurrItem() const { return ouiCurrItem_; }
    void setOuiCurrItem(const Variant& item);
    // Lets go of the current item when it is this one (its window closed),
    // leaving the boxes as they are.
    void releaseItem(const Variant& item) noexcept;
    const Str& strEntryID() const { return strEntryID_; }
    bool blnInInspector() const { return blnInInspector_; }
    void setBlnInInspector(bool value) { blnInInspector_ = value; }
    void FillDropDowns();

    // --- billing entry ---
    void cmb1Meta_Change();
    void cmb2Meta_Change();
    void cmb3Meta_Change();
    void SaveValues();
    void GetCurrentValues();
    void subWriteSubject(const Variant& item);
    bool fncIsHourbookData(const Str& text);
    void ouiItems_ItemAdd(const Variant& item);

    // --- commands ---
    void cmdReport_Click();
    void cmdSettings_Click();
    void cmdStatistics_Click();
    void subLaunchSettings(bool flag);

    // --- task pane (Outlook 2007 and later) ---
    void subAddCTP(const Variant& inspector);
    // fromEvent: raised by the pane (rather than called on closing), so
    // possibly one of the events that subAddCTP's own changes posted.
    void objCTP_DockPositionStateChange(const Variant& pane, bool fromEvent = false);
    const Variant& objCTP() const { return objCTP_; }
    void releaseCTP();

    // The controls held (Nothing/Empty when absent); for the session's own use.
    const Variant& cmbMeta(int n) const;  // n = 1..3

  private:
    void comboChanged(const Variant& combo, const Str& procedure, const Str& trace);
    // Lets go of the bar's controls and their events (the bar was deleted).
    void releaseControls() noexcept;

    Session& s_;
    BillingModel model_;
    Variant ofbCurrCommandBar_;
    Variant cmb1Meta_, cmb2Meta_, cmb3Meta_;
    Variant cmdReport_, cmdSettings_, cmdStatistics_;
    EventConnection cmb1Events_, cmb2Events_, cmb3Events_;
    EventConnection cmdReportEvents_, cmdSettingsEvents_, cmdStatisticsEvents_;
    std::vector<Variant> colCombos_;
    // What each combo box was last filled with: the control, the settings
    // generation and the number of entries added. A box whose three still
    // hold is not filled again (each entry is a call into Office).
    struct Filled {
        const void* control = nullptr;
        std::uint64_t generation = 0;
        std::int32_t count = -1;
    };
    Filled filled_[3];
    // The settings were read again after a save by the settings program
    // before the bar was rebuilt for them: the next subAddButtons does it.
    bool blnRebuildPending_ = false;
    Variant ouiCurrItem_;
    Variant ouiItems_;
    EventConnection ouiItemsEvents_;
    Str strEntryID_;
    bool blnInInspector_ = false;
    std::shared_ptr<cMarking> marking_;
    Variant objCTP_;
    EventConnection objCTPEvents_;
    bool blnLoadingCTP_ = false;
    // What subAddCTP left the pane at: its dock position and the sizes it
    // set. Office delivers the pane's events after the changes that caused
    // them, so the set-up's own events arrive once the loading flag is
    // down; they find the pane still so and are not taken for the user's.
    struct PaneSetUp {
        std::int32_t dock = -1;
        std::optional<std::int32_t> width, height;
    };
    std::optional<PaneSetUp> ctpSetUp_;
};

}  // namespace hb
