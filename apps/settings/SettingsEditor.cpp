#include "apps/settings/SettingsEditor.h"

#include <utility>

#include "common/AutomationError.h"
#include "common/Text.h"
#include "common/Variant.h"
#include "settings/cPersonalSettings.h"

namespace hb::settingsapp {

namespace {

bool hasLineBreak(const Str& text) {
    return text.find_first_of(u"\r\n") != Str::npos;
}

Str withoutTrailingLineBreaks(Str text) {
    while (!text.empty() && (text.back() == u'\r' || text.back() == u'\n'))
        text.pop_back();
    return text;
}

std::optional<Refusal> refuse(Field field, Str message) {
    return Refusal{field, std::move(message)};
}

template <class T>
bool swapWithNeighbour(std::vector<T>& items, std::size_t i, int by) {
    if (i >= items.size()) return false;
    const long long j = static_cast<long long>(i) + by;
    if (j < 0 || j >= static_cast<long long>(items.size())) return false;
    std::swap(items[i], items[static_cast<std::size_t>(j)]);
    return true;
}

}  // namespace

Values valuesOf(const cPersonalSettings& settings, const Locale& loc) {
    Values v;
    v.reportChoice = settings.lngReportChoice;
    // A connection text read from its file ends with a line break that means
    // nothing; the one-line field shows the text without it.
    v.reportValue = withoutTrailingLineBreaks(settings.strReportValue);
    v.rate = Variant(settings.curPersonalRate).toStr(loc);
    v.filterEvents = settings.blnFilterEvents;
    v.filterPrivate = settings.blnFilterPrivate;
    v.filterRecurring = settings.blnFilterRecurring;
    for (const auto& dic : settings.MetaDataLists) {
        // A list without a name is never stored; the dialog does not show it.
        if (!dic || dic->Caption.empty()) continue;
        MetaList list{dic->Caption, {}};
        if (dic->MetaDic) {
            for (const auto& entry : *dic->MetaDic)
                list.entries.emplace_back(entry.first);
        }
        v.lists.push_back(std::move(list));
    }
    v.convert24 = settings.blnConvert24;
    v.convert24Hours = settings.intConvert24Hours.toStr(loc);
    v.removeLunch = settings.blnRemoveLunch;
    v.removeLunchHours = settings.intRemoveLunchHours.toStr(loc);
    v.createLocalCube = settings.blnCreateLocalCube;
    v.startGrid = settings.blnStartGrid;
    v.writeSubject = settings.blnWriteSubject;
    return v;
}

SettingsEditor::SettingsEditor(Values values, Locale loc, Str listSeparator, Texts texts)
    : values_(std::move(values)),
      loc_(std::move(loc)),
      // The add-in trims the pieces of a billing text, so blanks around the
      // separator do not matter (a failed lookup gives only blanks).
      listSeparator_(text::trim(listSeparator)),
      texts_(std::move(texts)) {}

// --- single checks ----------------------------------------------------------

std::optional<Refusal> SettingsEditor::checkListName(const Str& name,
                                                     std::optional<std::size_t> except) const {
    if (name.empty()) return refuse(Field::ListName, u"A list name must not be empty.");
    // The stored list text is "name:entry;entry;": the first ":" ends the name.
    if (name.find(u':') != Str::npos)
        return refuse(Field::ListName, u"A list name must not contain \":\" (\"" + name + u"\").");
    if (hasLineBreak(name))
        return refuse(Field::ListName, u"A list name must not contain a line break.");
    for (std::size_t i = 0; i < values_.lists.size(); ++i) {
        if (except && *except == i) continue;
        if (text::equalsNoCase(values_.lists[i].name, name))
            return refuse(Field::ListName, texts_.noDoubles + u" (" + name + u")");
    }
    return std::nullopt;
}

std::optional<Refusal> SettingsEditor::checkEntry(const MetaList& list, const Str& name,
                                                  std::optional<std::size_t> except) const {
    if (name.empty()) return refuse(Field::Entry, u"An entry must not be empty.");
    // ";" ends an entry in the stored list text.
    if (name.find(u';') != Str::npos)
        return refuse(Field::Entry, u"An entry must not contain \";\" (\"" + name + u"\").");
    if (hasLineBreak(name)) return refuse(Field::Entry, u"An entry must not contain a line break.");
    // The billing text joins the chosen entries with the list separator: an
    // entry holding it would be split into two when the appointment's
    // categories are read back.
    if (!listSeparator_.empty() && name.find(listSeparator_) != Str::npos)
        return refuse(Field::Entry, u"An entry must not contain \"" + listSeparator_ +
                                        u"\", the list separator of the regional settings (\"" +
                                        name + u"\").");
    // The add-in keeps the first of two entries that differ only in letter
    // case and drops the other.
    for (std::size_t i = 0; i < list.entries.size(); ++i) {
        if (except && *except == i) continue;
        if (text::equalsNoCase(list.entries[i], name))
            return refuse(Field::Entry, texts_.noDoubles + u" (" + name + u")");
    }
    return std::nullopt;
}

std::optional<Refusal> SettingsEditor::checkHours(const Str& text, Field field, const Str& label,
                                                  double low, bool lowIncluded, double high) const {
    const Str range = u": a number of hours greater than " +
                      Str(lowIncluded ? u"or equal to " : u"") + Variant(low).toStr(loc_) +
                      u" and at most " + Variant(high).toStr(loc_) + u" is needed (\"" + text +
                      u"\").";
    const Str trimmed = text::trim(text);
    if (trimmed.empty() || !isNumeric(Variant(trimmed), loc_)) return refuse(field, label + range);
    double hours = 0;
    try {
        hours = Variant(trimmed).toDouble(loc_);
    } catch (const AutomationError&) {
        return refuse(field, label + range);
    }
    if (hours < low || (!lowIncluded && hours == low) || hours > high)
        return refuse(field, label + range);
    return std::nullopt;
}

std::optional<Refusal> SettingsEditor::check() const {
    const Values& v = values_;
    const Str value = text::trim(v.reportValue);
    const Str& valueLabel = v.reportChoice == 3 ? texts_.connection : texts_.database;
    if (value.empty()) return refuse(Field::ReportValue, valueLabel + u": must not be empty.");
    // The settings body carries the value on one line.
    if (hasLineBreak(value))
        return refuse(Field::ReportValue, valueLabel + u": must not contain a line break.");

    const Str rate = text::trim(v.rate);
    bool rateOk = !rate.empty() && isNumeric(Variant(rate), loc_);
    if (rateOk) {
        try {
            (void)Variant(rate).toCurrency(loc_);
        } catch (const AutomationError&) {
            rateOk = false;
        }
    }
    if (!rateOk)
        return refuse(Field::Rate,
                      texts_.rate + u": \"" + v.rate + u"\" is not an amount the add-in can read.");

    for (std::size_t i = 0; i < v.lists.size(); ++i) {
        if (auto r = checkListName(v.lists[i].name, i)) return r;
        const MetaList& list = v.lists[i];
        for (std::size_t j = 0; j < list.entries.size(); ++j) {
            if (auto r = checkEntry(list, list.entries[j], j)) {
                r->message = list.name + u": " + r->message;
                return r;
            }
        }
    }

    if (auto r = checkHours(v.convert24Hours, Field::Convert24Hours,
                            texts_.convert24 + u" (" + texts_.convertHours + u")", 0, false, 24))
        return r;
    if (auto r = checkHours(v.removeLunchHours, Field::RemoveLunchHours,
                            texts_.removeLunch + u" (" + texts_.lunchHours + u")", 0, true, 24))
        return r;
    return std::nullopt;
}

// --- lists and entries ------------------------------------------------------

std::optional<Refusal> SettingsEditor::addList(const Str& name) {
    const Str n = text::trim(name);
    if (auto r = checkListName(n)) return r;
    values_.lists.push_back(MetaList{n, {}});
    return std::nullopt;
}

std::optional<Refusal> SettingsEditor::renameList(std::size_t list, const Str& name) {
    if (list >= values_.lists.size()) return std::nullopt;
    const Str n = text::trim(name);
    if (auto r = checkListName(n, list)) return r;
    values_.lists[list].name = n;
    return std::nullopt;
}

void SettingsEditor::removeList(std::size_t list) {
    if (list < values_.lists.size())
        values_.lists.erase(values_.lists.begin() + static_cast<std::ptrdiff_t>(list));
}

bool SettingsEditor::moveList(std::size_t list, int by) {
    return swapWithNeighbour(values_.lists, list, by);
}

std::optional<Refusal> SettingsEditor::addEntry(std::size_t list, const Str& name) {
    if (list >= values_.lists.size()) return std::nullopt;
    const Str n = text::trim(name);
    if (auto r = checkEntry(values_.lists[list], n)) return r;
    values_.lists[list].entries.push_back(n);
    return std::nullopt;
}

std::optional<Refusal> SettingsEditor::renameEntry(std::size_t list, std::size_t entry,
                                                   const Str& name) {
    if (list >= values_.lists.size() || entry >= values_.lists[list].entries.size())
        return std::nullopt;
    const Str n = text::trim(name);
    if (auto r = checkEntry(values_.lists[list], n, entry)) return r;
    values_.lists[list].entries[entry] = n;
    return std::nullopt;
}

void SettingsEditor::removeEntry(std::size_t list, std::size_t entry) {
    if (list >= values_.lists.size()) return;
    auto& entries = values_.lists[list].entries;
    if (entry < entries.size()) entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(entry));
}

bool SettingsEditor::moveEntry(std::size_t list, std::size_t entry, int by) {
    if (list >= values_.lists.size()) return false;
    return swapWithNeighbour(values_.lists[list].entries, entry, by);
}

// --- into the settings object -----------------------------------------------

void SettingsEditor::applyTo(Session& s, cPersonalSettings& settings) const {
    const Values& v = values_;
    settings.lngReportChoice = v.reportChoice;
    Str value = text::trim(v.reportValue);
    // The add-in keeps a database folder with its trailing backslash.
    if (v.reportChoice == 2 && value.back() != u'\\') value += u'\\';
    settings.strReportValue = value;
    settings.curPersonalRate = Variant(text::trim(v.rate)).toCurrency(loc_);
    settings.blnFilterEvents = v.filterEvents;
    settings.blnFilterPrivate = v.filterPrivate;
    settings.blnFilterRecurring = v.filterRecurring;
    settings.MetaDataLists.clear();
    for (const MetaList& list : v.lists) {
        auto dic = std::make_shared<cMetaDictionary>(s);
        dic->Caption = list.name;
        // As the add-in builds an entry from its stored settings.
        for (const Str& entry : list.entries)
            dic->AddMeta(entry, Str(), Currency{}, 0, Str(), false);
        settings.MetaDataLists.push_back(std::move(dic));
    }
    settings.blnConvert24 = v.convert24;
    // The hour values go to the registry as the user typed them: the add-in
    // reads them back as texts and its consumers convert them.
    settings.intConvert24Hours = Variant(text::trim(v.convert24Hours));
    settings.blnRemoveLunch = v.removeLunch;
    settings.intRemoveLunchHours = Variant(text::trim(v.removeLunchHours));
    settings.blnCreateLocalCube = v.createLocalCube;
    settings.blnStartGrid = v.startGrid;
    settings.blnWriteSubject = v.writeSubject;
}

}  // namespace hb::settingsapp
