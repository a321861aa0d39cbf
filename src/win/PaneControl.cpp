#include "win/PaneControl.h"

#include "common/ErrorTrap.h"
#include "win/Module.h"
#include "win/com/ComVariant.h"
#include "win/com/DispatchClient.h"

namespace hb::win {

PaneControl::PaneControl()
    : pane_(std::make_unique<Pane>(moduleSession(), static_cast<PaneView&>(*this))) {}

PaneControl::~PaneControl() = default;

STDMETHODIMP PaneControl::get_objAppointment(VARIANT* value) {
    if (!value) return E_POINTER;
    try {
        VariantInit(value);
        com::toVARIANT(pane_->objAppointment(), *value);
        return S_OK;
    } catch (...) {
        return com::reportCurrentException(nullptr, L"HBAddin.pane");
    }
}

STDMETHODIMP PaneControl::put_objAppointment(VARIANT value) {
    try {
        pane_->setObjAppointment(com::fromVARIANT(value));
        return S_OK;
    } catch (...) {
        return com::reportCurrentException(nullptr, L"HBAddin.pane");
    }
}

STDMETHODIMP PaneControl::putref_objAppointment(IDispatch* value) {
    try {
        pane_->setObjAppointment(Variant(com::DispatchClient::wrap(value)));
        return S_OK;
    } catch (...) {
        return com::reportCurrentException(nullptr, L"HBAddin.pane");
    }
}

STDMETHODIMP PaneControl::put_Settings(BSTR value) {
    try {
        pane_->setSettings(com::fromBstr(value));
        return S_OK;
    } catch (...) {
        return com::reportCurrentException(nullptr, L"HBAddin.pane");
    }
}

void PaneControl::setLabel(int, bool, const Str&) {}

void PaneControl::setComboVisible(int index, bool visible) {
    boxes_[index].visible = visible;
}

bool PaneControl::comboVisible(int index) const {
    return boxes_[index].visible;
}

void PaneControl::comboAddItem(int index, const Str& item) {
    boxes_[index].items.push_back(item);
}

int PaneControl::comboListCount(int index) const {
    return static_cast<int>(boxes_[index].items.size());
}

Str PaneControl::comboList(int index, int item) const {
    return boxes_[index].items.at(static_cast<std::size_t>(item));
}

void PaneControl::setComboListIndex(int index, int item) {
    boxes_[index].index = item;
}

Str PaneControl::comboText(int index) const {
    const Box& b = boxes_[index];
    return b.index >= 0 && b.index < static_cast<int>(b.items.size())
               ? b.items[static_cast<std::size_t>(b.index)]
               : Str();
}

}  // namespace hb::win
