// The billing controls' model: the lists, the values of an appointment, a
// pick written into it and the three commands, shared by the toolbar and
// the ribbon group.
#include "explorer/BillingModel.h"

#include <algorithm>

#include "common/Constants.h"
#include "common/ErrorTrap.h"
#include "diagnostics/modErroHandling.h"
#include "explorer/cExplorerEvents.h"
#include "inspector/Pane.h"
#include "metadata/cMarking.h"
#include "metadata/cMetaDictionary.h"
#include "settings/cPersonalSettings.h"
#include "settings/modFileHandling.h"
#include "settings/modGetDefaultFolders.h"

namespace hb {

namespace {

const cMetaDictionary& listAt(const cPersonalSettings& settings, std::size_t n) {
    if (n >= settings.MetaDataLists.size() || !settings.MetaDataLists[n]) {
        raise(err::SubscriptOutOfRange);
    }
    return *settings.MetaDataLists[n];
}

const MetaDicType& entriesOf(const cPersonalSettings& settings, std::size_t n) {
    const cMetaDictionary& list = listAt(settings, n);
    if (!list.MetaDic) raise(err::ObjectVariableNotSet);
    return *list.MetaDic;
}

}  // namespace

cPersonalSettings& BillingModel::settings() const {
    if (!s_.oPersonalSettings) raise(err::ObjectVariableNotSet);
    return *s_.oPersonalSettings;
}

const cPersonalSettings& BillingModel::lists() const {
    return lists_ ? *lists_ : settings();
}

std::size_t BillingModel::shownLists() const {
    return std::min<std::size_t>(3, lists().MetaDataLists.size());
}

bool BillingModel::listFilled(std::size_t n) const {
    if (n >= shownLists()) return false;
    return n >= 2 || !listAt(lists(), n).Caption.empty();
}

const Str& BillingModel::caption(std::size_t n) const {
    return listAt(lists(), n).Caption;
}

std::size_t BillingModel::entryCount(std::size_t n) const {
    return entriesOf(lists(), n).entries().size();
}

const Str& BillingModel::entry(std::size_t n, std::size_t i) const {
    const auto& entries = entriesOf(lists(), n).entries();
    if (i >= entries.size() || !entries[i].second) raise(err::SubscriptOutOfRange);
    return entries[i].second->MetaName;
}

std::vector<Str> BillingModel::entries(std::size_t n) const {
    const std::size_t count = entryCount(n);
    std::vector<Str> names;
    names.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        names.push_back(entry(n, i));
    return names;
}

std::int32_t BillingModel::indexOf(std::size_t n, const Str& value) const {
    if (value.empty()) return -1;
    // The dictionary's own index answers without a pass over the list: a
    // selection change asks this of lists of tens of thousands of entries.
    const MetaDicType& dic = entriesOf(lists(), n);
    const std::ptrdiff_t at = dic.position(value);
    if (at < 0 || !dic.entries()[static_cast<std::size_t>(at)].second) return -1;
    return static_cast<std::int32_t>(at);
}

std::uint64_t BillingModel::generation() const {
    return settings().generation();
}

bool BillingModel::refreshSettings(const Str& trace) {
    cPersonalSettings& stored = settings();
    if (!stored.fncStoreChanged()) return false;
    if (!trace.empty()) subTrace(s_, trace);
    stored.GetValuesFromSettings();
    s_.blnSettingsChanged = false;
    return true;
}

bool BillingModel::statisticsShown() const {
    const cPersonalSettings& stored = settings();
    return stored.lngReportChoice == 2 ||
           (stored.lngReportChoice == 3 && stored.blnCreateLocalCube);
}

std::shared_ptr<cMarking> BillingModel::valuesOf(const Variant& item) {
    const auto marking = std::make_shared<cMarking>(s_);
    const Str categories = !carriedBySeries(item) ? item.get(u"Categories").toStr()
                                                  : item.get(u"Parent").get(u"Categories").toStr();
    marking->BillingToMarkings(categories);
    return marking;
}

bool BillingModel::carriedBySeries(const Variant& item) const {
    return fncIsSeriesMember(item, item.get(u"MessageClass").toStr());
}

void BillingModel::write(const Variant& item, cMarking& choice, bool inInspector) {
    Session& s = s_;
    // From here on the item decides: what it refuses stays as it was.
    resumeNext(s, [&] {
        // The item's previous values; the writing does not depend on them.
        cMarking previous(s);
        previous.BillingToMarkings(item.get(u"Categories").toStr());
    });
    const std::optional<Str> messageClass =
        tryGet(s, [&] { return item.get(u"MessageClass").toStr(); });
    // An occurrence's values are its series': they go there, and the
    // series is saved (an occurrence written to would become an
    // exception, whose values are not shown). Saving it in the window
    // would not store the series either.
    const bool occurrence = messageClass && *messageClass != kRecurrenceExceptionClass &&
                            fncIsSeriesMember(item, *messageClass);
    Variant target = item;
    if (occurrence && !resumeNext(s, [&] { target = item.get(u"Parent"); })) {
        s.err.clear();
        return;
    }
    if (messageClass && *messageClass != kRecurrenceExceptionClass) {
        // Only the billing values are replaced: the user's own categories
        // and the values of later lists stay. Categories that cannot be
        // read are not written, so that they are never lost.
        resumeNext(s, [&] { mergeChoice(target, choice, shownLists()); });
        if (settings().blnWriteSubject) resumeNext(s, [&] { writeSubject(target); });
    }
    // In an appointment window the user saves the item.
    if (occurrence || !inInspector) resumeNext(s, [&] { target.call(u"Save"); });
    s.err.clear();
}

void BillingModel::writeSubject(const Variant& item) {
    if (subjectIsOurs(item)) putSubject(item, shownLists());
}

void BillingModel::mergeChoice(const Variant& target, cMarking& choice, std::size_t count) const {
    const Str categories = target.get(u"Categories").toStr();
    target.put(u"Categories", Variant(choice.MergeIntoCategories(categories, count)));
}

bool BillingModel::subjectIsOurs(const Variant& item) const {
    // A subject of the user's own is never overwritten.
    const Str subject = item.get(u"Subject").toStr();
    return subject.empty() || fncIsHourbookData(s_, subject);
}

void BillingModel::putSubject(const Variant& item, std::size_t count) const {
    // The billing values alone: the user's own categories stay out of it.
    const cMarking marking(s_);
    item.put(u"Subject", Variant(marking.BillingPart(item.get(u"Categories").toStr(), count)));
}

void BillingModel::runReport() {
    const cPersonalSettings& stored = settings();
    switch (stored.lngReportChoice) {
        case 1:
        case 3:
        case 4:
            subExecute(s_, u"HBReporting", {}, Str());
            break;
        case 2:
            subExecute(s_, u"HBReporting", {}, stored.strReportValue);
            break;
        default:
            break;
    }
}

void BillingModel::runSettings(bool flag) {
    Session& s = s_;
    // (The add-in has no hidden form whose timer would need pausing.)
    subSetupFS(s);
    s.blnSettingsChanged = true;
    const Str folder = fncNoTrailingSlash(s.platform.moduleFolder()) + u"\\";
    Str program;
    for (const char16_t* candidate :
         {u"HBPersonalSettingsSingle", u"HBPersonalSettings", u"OHBTRSettings"}) {
        if (fsFileExists(s, folder + candidate + u".exe")) {
            program = candidate;
            break;
        }
    }
    if (!program.empty()) subExecute(s, program, {flag ? Str(u"True") : Str(u"False")}, folder);
}

void BillingModel::runStatistics() {
    const cPersonalSettings& stored = settings();
    if (stored.lngReportChoice == 2) {
        subExecute(s_, u"Cubelens", {stored.strReportValue}, Str());
    } else if (stored.lngReportChoice == 4 ||
               (stored.lngReportChoice == 3 && stored.blnCreateLocalCube)) {
        subExecute(s_, u"Cubelens", {fncGetLocalCubePath(s_, true)}, Str());
    }
}

}  // namespace hb
