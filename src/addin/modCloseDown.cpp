// The one shutdown clean-up of the add-in and the clean-up of closed
// explorer wrappers.
#include <vector>

#include "addin/OHBAddinDesigner.h"
#include "addin/cCalendarReactions.h"
#include "common/Constants.h"
#include "common/ErrorTrap.h"
#include "diagnostics/modErroHandling.h"
#include "explorer/cExplorerEvents.h"
#include "explorer/cRibbon.h"
#include "explorer/cToolBarItem.h"

namespace hb {

namespace {

// Thrown to leave the clean-up for its common exit.
struct LeaveForExit {};

// The clean-up switches between ignoring errors statement by statement and
// its trap (which continues at the common exit). One statement under the
// mode in force.
class CloseDownStatements {
  public:
    explicit CloseDownStatements(Session& s) : s_(s) {}
    void ignoreErrors() { trapOn_ = false; }
    void trapErrors() { trapOn_ = true; }

    template <class F>
    void run(F&& statement) {
        if (trapOn_) {
            try {
                statement();
            } catch (...) {
                throw LeaveForExit{};
            }
        } else {
            resumeNext(s_, std::forward<F>(statement));
        }
    }

  private:
    Session& s_;
    bool trapOn_ = true;
};

void closeDownBody(Session& s) {
    if (s.blnClosingDown) return;
    s.blnClosingDown = true;

    if (s.oCalendarReactions) {
        CloseDownStatements st(s);
        subTrace(s,
                 u"Removing all objects before close-down to prevent Outlook not closing down "
                 u"properly");
        st.ignoreErrors();

        Variant app = s.oCalendarReactions->ouaMyOutlook();
        if (!isSet(app)) app = s.olApp;

        std::vector<Variant> explorers;
        st.run([&] { explorers = app.get(u"Explorers").obj().enumerate(); });
        for (const Variant& oue : explorers) {
            subTrace(s, u"Checking for remaining commandbars");
            // Each window is first probed with errors ignored.
            s.err.clear();
            const bool reachable =
                resumeNext(s, [&] { (void)oue.get(u"CommandBars").get(u"Count"); });
            if (!reachable) {
                s.err.clear();
                continue;
            }
            subTrace(s, u"Calling subRemoveCommandBar with the explorer commandbars collection");
            st.trapErrors();
            st.run([&] {
                if (!s.objToolBar) raise(err::ObjectVariableNotSet);
                s.objToolBar->RemoveToolbar();
            });
            st.run([&] { subRemoveCommandBar(s, oue.get(u"CommandBars")); });
            std::vector<Variant> menuControls;
            st.run([&] {
                menuControls = oue.get(u"CommandBars")
                                   .get(u"ActiveMenuBar")
                                   .get(u"Controls")
                                   .obj()
                                   .enumerate();
            });
            for (const Variant& ctl : menuControls) {
                st.run([&] {
                    if (ctl.get(u"Caption").toStr() == kProductCaption) ctl.call(u"Delete");
                });
            }
        }

        std::vector<Variant> inspectors;
        st.run([&] { inspectors = app.get(u"Inspectors").obj().enumerate(); });
        for (const Variant& oui : inspectors) {
            st.run([&] {
                if (!s.objToolBar) raise(err::ObjectVariableNotSet);
                s.objToolBar->RemoveToolbar();
            });
            st.run([&] { subRemoveCommandBar(s, oui.get(u"CommandBars")); });
        }
        s.blnClosingDown = false;
    }

    // Let go of everything so that Outlook can close. (The add-in has no
    // hidden form to unload.)
    s.olApp = Variant();
    s.oAppointments.reset();
    s.objToolBar.reset();
    s.oCalendarReactions.reset();
    s.oAppointments.reset();
}

}  // namespace

void subCloseDown(Session& s) noexcept {
    try {
        closeDownBody(s);
    } catch (...) {
        // The trap continues at the common exit.
    }
    // Common exit.
    try {
        s.err.clear();
        s.oCalendarReactions.reset();
        s.ofCalendar = Variant();
        s.olApp = Variant();
        // The namespace and the task pane factory are Outlook's objects
        // too: nothing of Outlook may stay held once the add-in has let go.
        s.onsMAPI = Variant();
        s.oCTPFactory = Variant();
        // The ribbon went with the connection; a later connection of this
        // loaded library is asked for it again.
        if (s.objRibbon) s.objRibbon->release();
        s.blnRibbon = false;
    } catch (...) {
    }
    s.blnClosingDown = false;
}

void subClearExplorers(Session& s) noexcept {
    trap(s, u"subClearExplorers", [&] {
        subTrace(s, u"Clearing all explorer objects from the collection");
        if (!s.oCalendarReactions) raise(err::ObjectVariableNotSet);
        // Keep the session object alive while its collection is walked.
        const std::shared_ptr<cCalendarReactions> reactions = s.oCalendarReactions;
        auto& col = reactions->colExplorers;
        const std::vector<std::shared_ptr<cExplorerEvents>> walk = col;
        std::size_t counter = 0;
        for (const auto& wrapper : walk) {
            if (wrapper->blnClosed) {
                // The position is not corrected after a removal.
                const std::size_t position = counter + 1;
                if (position > col.size()) raise(err::SubscriptOutOfRange);
                std::shared_ptr<cExplorerEvents> removed = col[position - 1];
                col.erase(col.begin() + static_cast<std::ptrdiff_t>(position - 1));
                removed.reset();
            }
            ++counter;
        }
    });
}

}  // namespace hb
