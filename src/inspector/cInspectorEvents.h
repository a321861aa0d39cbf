#pragma once
// One wrapper per appointment Inspector window.
#include <memory>

#include "common/Object.h"
#include "common/Session.h"

namespace hb {

class cToolBarItem;

class cInspectorEvents : public std::enable_shared_from_this<cInspectorEvents> {
  public:
    explicit cInspectorEvents(Session& s);
    ~cInspectorEvents();  // releases the inspector, clears the toolbar's current item
    cInspectorEvents(const cInspectorEvents&) = delete;
    cInspectorEvents& operator=(const cInspectorEvents&) = delete;

    const Variant& ouiMyInspector() const { return ouiMyInspector_; }
    void setOuiMyInspector(const Variant& inspector);  // holds it with its events

    void ouiMyInspector_Activate();
    void ouiMyInspector_Close();

    // Makes the window's item the toolbar's current item, remembering it so
    // that the toolbar can let go of it when the window closes.
    void subShowItem(cToolBarItem& toolbar, const Variant& item);

  private:
    Session& s_;
    Variant ouiMyInspector_;
    Variant ouiShownItem_;
    EventConnection events_;
};

}  // namespace hb
