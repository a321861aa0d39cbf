#include "standin/TaskPaneFactory.h"

#include "win/com/ComVariant.h"
#include "win/com/DispatchServer.h"

namespace standin {

STDMETHODIMP TaskPaneFactory::CreateCTP(BSTR axId, BSTR title, VARIANT parentWindow,
                                        _CustomTaskPane** pane) {
    if (!pane) return E_POINTER;
    *pane = nullptr;
    try {
        hb::Args args{hb::Variant(hb::com::fromBstr(axId)), hb::Variant(hb::com::fromBstr(title))};
        hb::Variant parent = hb::com::fromVARIANT(parentWindow);
        if (parent.type() == hb::Variant::Type::Object) {
            // A window the add-in got from the host comes back as the
            // simulated window it serves.
            hb::com::ComPtr<IDispatch> d = hb::com::dispatchOf(parent.toObject());
            if (hb::ObjectPtr served = hb::com::exportedObjectOf(d.get()))
                parent = hb::Variant(served);
            args.push_back(parent);
        }
        hb::Variant made = simFactory_.toObject()->call(u"CreateCTP", args);
        // The pane is served by the dispatch server: its IDispatch stands
        // for _CustomTaskPane, which Office's clients reach late-bound.
        *pane = reinterpret_cast<_CustomTaskPane*>(hb::com::dispatchOf(made.toObject()).detach());
        return S_OK;
    } catch (...) {
        return hb::com::reportCurrentException(nullptr, L"Microsoft Office");
    }
}

}  // namespace standin
