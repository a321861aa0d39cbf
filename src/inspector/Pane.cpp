#include "inspector/Pane.h"

#include "common/Constants.h"
#include "common/DispatchObject.h"
#include "common/ErrorTrap.h"
#include "common/Text.h"
#include "explorer/cExplorerEvents.h"
#include "metadata/cMarking.h"
#include "metadata/cMetaDictionary.h"
#include "settings/cPersonalSettings.h"

namespace hb {

namespace {

constexpr int kComboCount = 3;
// The run time's error for a control array element that does not exist.
constexpr std::int32_t kNoSuchControl = 340;

void checkIndex(int index) {
    if (index < 0 || index >= kComboCount)
        raise(kNoSuchControl, u"Control array element does not exist");
}

// An If condition with errors ignored: a failing condition goes on with the
// statement after the If line, that is into the Then part.
template <class F>
bool conditionOrError(Session& s, F&& condition) {
    return tryGet(s, std::forward<F>(condition)).value_or(true);
}

// The control as its host sees it through automation.
class PaneObject : public DispatchObject {
  public:
    explicit PaneObject(Pane& pane) : DispatchObject(u"Pane", table()), pane_(&pane) {}
    // The control ended: a host still holding this object reaches nothing.
    void detach() { pane_ = nullptr; }

  private:
    static std::shared_ptr<const MemberTable> table() {
        static const std::shared_ptr<const MemberTable> t = [] {
            auto members = std::make_shared<MemberTable>();
            members->property(
                u"objAppointment",
                [](DispatchObject& o, Args&) { return pane(o).objAppointment(); },
                [](DispatchObject& o, Args&, const Variant& v) { pane(o).setObjAppointment(v); });
            // Write-only: reading it is no member at all (438).
            members->property(u"Settings", {}, [](DispatchObject& o, Args&, const Variant& v) {
                pane(o).setSettings(v.toStr());
            });
            return members;
        }();
        return t;
    }
    static Pane& pane(DispatchObject& o) {
        Pane* p = static_cast<PaneObject&>(o).pane_;
        if (!p) raise(err::ObjectVariableNotSet);
        return *p;
    }

    Pane* pane_;
};

}  // namespace

Pane::Pane(Session& s, PaneView& view) : s_(s), view_(view), model_(s) {}

Pane::~Pane() {
    // UserControl_Terminate: let go of the appointment and the markings.
    try {
        if (object_) static_cast<PaneObject&>(*object_).detach();
        objAppointment_ = Variant();
        objMarking_.reset();
    } catch (...) {
    }
}

void Pane::setObjAppointment(const Variant& appointment) {
    objAppointment_ = appointment.deref();
}

void Pane::setSettings(const Str& settings) {
    Session& s = s_;
    blnLoading_ = true;

    // Parsed into the pane's own settings object: parsing converts the rate
    // through a 16-bit integer, which must neither change the session's rate
    // (the next save would store it rounded) nor stop the pane from showing
    // its lists when the rate does not fit.
    settings_ = std::make_unique<cPersonalSettings>(s, cPersonalSettings::BodyOnly{});
    settings_->FromStringForPane(settings);

    model_.showListsOf(settings_.get());

    const std::vector<std::shared_ptr<cMetaDictionary>> lists = settings_->MetaDataLists;
    int i = 0;
    for (const auto& list : lists) {
        if (!list->Caption.empty()) {
            resumeNext(s, [&] {
                checkIndex(i);
                view_.setLabel(i, true, list->Caption);
            });
            resumeNext(s, [&] {
                checkIndex(i);
                view_.setComboVisible(i, true);
            });
            std::vector<Str> names;
            resumeNext(s, [&] { names = model_.entries(static_cast<std::size_t>(i)); });
            for (const Str& name : names) {
                resumeNext(s, [&] {
                    checkIndex(i);
                    view_.comboAddItem(i, name);
                });
            }
        }
        ++i;
    }

    // The values recorded in the appointment, read line by line with
    // errors ignored: an item that cannot say whether it belongs to a
    // series shows its series' values.
    resumeNext(s, [&] { objMarking_ = std::make_shared<cMarking>(s); });
    const bool series =
        conditionOrError(s, [&] { return model_.carriedBySeries(objAppointment_); });
    resumeNext(s, [&] {
        const Str categories =
            (series ? objAppointment_.get(u"Parent") : objAppointment_).get(u"Categories").toStr();
        if (!objMarking_) raise(err::ObjectVariableNotSet);
        objMarking_->BillingToMarkings(categories);
    });

    std::vector<std::shared_ptr<cMetaData>> markings;
    resumeNext(s, [&] {
        if (!objMarking_) raise(err::ObjectVariableNotSet);
        markings = objMarking_->colMarkings;
    });
    i = 0;
    for (const auto& marking : markings) {
        resumeNext(s, [&] {
            checkIndex(i);
            const int count = view_.comboListCount(i);
            for (int item = 0; item < count; ++item) {
                if (view_.comboList(i, item) == marking->MetaName) {
                    view_.setComboListIndex(i, item);
                    break;
                }
            }
        });
        ++i;
    }

    UserControl_Resize();
    blnLoading_ = false;
}

void Pane::cmbMeta_Click(int /*index*/) {
    Session& s = s_;
    if (blnLoading_) return;
    // Pending window messages are not run first: pumping them here let a
    // close the host had queued free the control in the middle of the pick.

    resumeNext(s, [&] { objMarking_ = std::make_shared<cMarking>(s); });
    for (int i = 0; i < kComboCount; ++i) {
        if (view_.comboVisible(i)) {
            resumeNext(s, [&] {
                if (!objMarking_) raise(err::ObjectVariableNotSet);
                objMarking_->setMetaName(static_cast<std::int16_t>(i + 1), view_.comboText(i));
            });
        }
    }

    // Write into the appointment, or for an exception or occurrence of a
    // recurring series into its series (an exception's values are its
    // series' too). An item that cannot say is written itself.
    Variant target;
    if (conditionOrError(s, [&] { return !model_.carriedBySeries(objAppointment_); })) {
        target = objAppointment_;
    } else {
        resumeNext(s, [&] { target = objAppointment_.get(u"Parent"); });
    }
    // Every step on its own, errors ignored: what the item refuses stays as
    // it was and the next step is still taken.
    resumeNext(s, [&] {
        if (!objMarking_) raise(err::ObjectVariableNotSet);
        model_.mergeChoice(target, *objMarking_, kComboCount);
    });
    // The subject follows the session's settings; one that cannot be read
    // is written.
    if (conditionOrError(s, [&] { return model_.settings().blnWriteSubject; }) &&
        conditionOrError(s, [&] { return model_.subjectIsOurs(target); })) {
        resumeNext(s, [&] {
            if (!objMarking_) raise(err::ObjectVariableNotSet);
            model_.putSubject(target, kComboCount);
        });
    }
    // The user saves the appointment of the window, but for an exception
    // or occurrence the choice went into its series, which that save does not store: the
    // series is saved here, or the choice would be lost when the window
    // closes.
    resumeNext(s, [&] {
        if (!sameObject(target, objAppointment_)) target.call(u"Save");
    });
}

void Pane::UserControl_Resize() {
    try {
        view_.layout();
    } catch (...) {
    }
}

ObjectPtr Pane::automationObject() {
    if (!object_) object_ = std::make_shared<PaneObject>(*this);
    return object_;
}

bool fncIsHourbookData(Session& s, const Str& text) {
    try {
        std::vector<Str> pieces;
        std::size_t n = 0;
        if (text::find(text, u",") > 0) {
            for (Str& piece : text::split(text, u",")) {
                if (!piece.empty()) pieces.push_back(std::move(piece));
            }
            n = pieces.size();
        } else {
            pieces.push_back(text);
        }
        if (n >= 3) return false;

        std::size_t k = 0;
        if (!s.oPersonalSettings) raise(err::ObjectVariableNotSet);
        for (const auto& list : s.oPersonalSettings->MetaDataLists) {
            if (k > n || list->Caption.empty()) break;
            // Stepping past the last piece ends the test with no match.
            if (k >= pieces.size()) raise(err::SubscriptOutOfRange);
            const Str piece = text::lower(text::trim(pieces[k]));
            if (!list->MetaDic) raise(err::ObjectVariableNotSet);
            for (const auto& entry : *list->MetaDic) {
                if (text::lower(text::trim(entry.second->MetaName)) == piece) return true;
            }
            ++k;
        }
        return false;
    } catch (...) {
        return false;
    }
}

}  // namespace hb
