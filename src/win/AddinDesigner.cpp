#include "win/AddinDesigner.h"

#include "common/ErrorTrap.h"
#include "win/Module.h"
#include "win/com/ComVariant.h"
#include "win/com/DispatchClient.h"

namespace hb::win {

AddinDesigner::AddinDesigner() : designer_(moduleSession()) {}

STDMETHODIMP AddinDesigner::OnConnection(IDispatch* application, ext_ConnectMode mode,
                                         IDispatch* addInInst, SAFEARRAY** /*custom*/) {
    Session& s = designer_.session();
    try {
        Args custom;
        designer_.AddinInstance_OnConnection(Variant(com::DispatchClient::wrap(application)),
                                             static_cast<std::int32_t>(mode),
                                             Variant(com::DispatchClient::wrap(addInInst)), custom);
    } catch (...) {
        // Outlook would disable the add-in on a failed connection without a
        // word to the user: say what failed, then let go of everything the
        // half-made connection holds or hears, so nothing stays subscribed.
        std::int32_t number = 0;
        Str description;
        describeCurrentException(number, description);
        subErrorHandler(s, description, number, 0, u"OHBAddinDesigner.AddinInstance_OnConnection");
        s.oCalendarReactions.reset();
        subCloseDown(s);
    }
    return S_OK;
}

STDMETHODIMP AddinDesigner::OnDisconnection(ext_DisconnectMode mode, SAFEARRAY** /*custom*/) {
    Args custom;
    designer_.AddinInstance_OnDisconnection(static_cast<std::int32_t>(mode), custom);
    return S_OK;
}

STDMETHODIMP AddinDesigner::OnAddInsUpdate(SAFEARRAY** /*custom*/) {
    return S_OK;
}

STDMETHODIMP AddinDesigner::OnStartupComplete(SAFEARRAY** /*custom*/) {
    return S_OK;
}

STDMETHODIMP AddinDesigner::OnBeginShutdown(SAFEARRAY** /*custom*/) {
    Args custom;
    designer_.AddinInstance_OnBeginShutdown(custom);
    return S_OK;
}

STDMETHODIMP AddinDesigner::CTPFactoryAvailable(ICTPFactory* factory) {
    try {
        designer_.ICustomTaskPaneConsumer_CTPFactoryAvailable(
            Variant(com::DispatchClient::wrap(factory)));
    } catch (...) {
    }
    return S_OK;
}

STDMETHODIMP AddinDesigner::CreateCTP(BSTR, BSTR, VARIANT, _CustomTaskPane** pane) {
    if (pane) *pane = nullptr;
    return S_OK;
}

}  // namespace hb::win
