#include "inspector/cInspectorEvents.h"

#include "addin/cCalendarReactions.h"
#include "addin/modOutlookCode.h"
#include "common/ErrorTrap.h"
#include "explorer/cExplorerEvents.h"
#include "explorer/cToolBarItem.h"

namespace hb {

namespace {

constexpr std::int16_t kOutlook2003 = 11;

}  // namespace

cInspectorEvents::cInspectorEvents(Session& s) : s_(s) {}

// The toolbar's current item is let go of on the window's Close (only when
// it is this window's): clearing it here would blank the boxes of another
// window, or of this window's toolbar that Close has deleted.
cInspectorEvents::~cInspectorEvents() {
    try {
        events_.disconnect();
        ouiMyInspector_ = Variant();
        ouiShownItem_ = Variant();
    } catch (...) {
    }
}

void cInspectorEvents::setOuiMyInspector(const Variant& inspector) {
    events_.disconnect();
    ouiMyInspector_ = Variant();
    if (!isSet(inspector)) {
        (void)inspector.toObject();
        ouiMyInspector_ = Variant::nothing();
        return;
    }
    const std::weak_ptr<cInspectorEvents> weak = weak_from_this();
    EventConnection events = inspector.obj().subscribe(
        u"InspectorEvents", std::make_shared<FunctionSink>([weak](const Str& member, Args&) {
            // The wrapper stays alive while it handles its event, whatever
            // the handler releases.
            const std::shared_ptr<cInspectorEvents> self = weak.lock();
            if (!self) return;
            if (member == u"Activate") {
                self->ouiMyInspector_Activate();
            } else if (member == u"Close") {
                self->ouiMyInspector_Close();
            }
        }));
    ouiMyInspector_ = inspector;
    events_ = std::move(events);
}

void cInspectorEvents::ouiMyInspector_Activate() {
    Session& s = s_;
    trap(s, u"cInspectorEvents.ouiMyInspector_Activate", [&] {
        // From Outlook 2007 on the task pane serves the window.
        if (fncOutlookVersion(s) > kOutlook2003 && s.blnConnected) return;

        const Variant bar = fncGetToolbar(s, ouiMyInspector_);
        if (!isSet(bar)) return;
        const std::shared_ptr<cToolBarItem> toolbar = s.objToolBar;
        if (!toolbar) raise(err::ObjectVariableNotSet);
        toolbar->setOfbCurrCommandBar(bar);
        toolbar->subAddButtons();
        toolbar->setBlnButtonsEnabled(true);
        toolbar->setBlnInInspector(true);
        subShowItem(*toolbar, ouiMyInspector_.get(u"CurrentItem"));
        toolbar->GetCurrentValues();
    });
}

void cInspectorEvents::subShowItem(cToolBarItem& toolbar, const Variant& item) {
    toolbar.setOuiCurrItem(item);
    ouiShownItem_ = item;
}

void cInspectorEvents::ouiMyInspector_Close() {
    Session& s = s_;
    // Alive to the end, though it leaves the session's collection below.
    const std::shared_ptr<cInspectorEvents> self = weak_from_this().lock();
    const std::shared_ptr<cToolBarItem> toolbar = s.objToolBar;
    bool hasPane = false;
    resumeNext(s, [&] {
        if (!toolbar) raise(err::ObjectVariableNotSet);
        hasPane = isSet(toolbar->objCTP());
    });
    if (!hasPane) {
        // The window's own toolbar goes with it.
        Variant bar;
        resumeNext(s, [&] { bar = fncGetToolbar(s, ouiMyInspector_); });
        resumeNext(s, [&] { bar.call(u"Delete"); });
    } else {
        // Keep the pane's last geometry.
        resumeNext(s, [&] { toolbar->objCTP_DockPositionStateChange(toolbar->objCTP()); });
    }
    resumeNext(s, [&] {
        if (!toolbar) raise(err::ObjectVariableNotSet);
        toolbar->releaseCTP();
    });
    // The toolbar lets go of the closed window's item, and the session of
    // this wrapper, so that a closed window holds nothing of Outlook's.
    if (toolbar) toolbar->releaseItem(ouiShownItem_);
    ouiShownItem_ = Variant();
    if (const std::shared_ptr<cCalendarReactions> reactions = s.oCalendarReactions) {
        std::erase_if(reactions->colInspectors, [this](const std::shared_ptr<cInspectorEvents>& w) {
            return w.get() == this;
        });
    }
    s.err.clear();
}

}  // namespace hb
