#include "apps/settings/SettingsTexts.h"

#include <optional>
#include <set>

#include "common/Text.h"

namespace hb::settingsapp {

namespace {

void take(Str& target, const Str& phrase) {
    if (!phrase.empty()) target = phrase;
}

bool isMnemonicCharacter(char16_t c) {
    return c != u' ' && c != u'&' && c != u'.' && c != u',' && c != u'-' && c != u'\'';
}

}  // namespace

Texts textsFrom(const Phrases& p) {
    Texts t;
    take(t.reportGroup, p.LNGREPORT);
    take(t.database, p.LNGDATABASE);
    take(t.rate, p.LNGRATE);
    take(t.filterGroup, p.LNGFILTEROPTIONS);
    take(t.events, p.LNGEVENTS);
    take(t.privateItems, p.LNGPRIVATE);
    take(t.recurring, p.LNGRECURRING);
    take(t.metaGroup, p.LNGMETA);
    take(t.listName, p.LNGNAME);
    take(t.entryName, p.LNGNAME);
    take(t.addList, p.LNGADD);
    take(t.addEntry, p.LNGADD);
    take(t.renameList, p.LNGEDIT);
    take(t.renameEntry, p.LNGEDIT);
    take(t.timeGroup, p.LNGTIMEMANIPULATION);
    take(t.convert24, p.LNGCONVERTFULLDAYSTOHOURS);
    take(t.convertHours, p.LNGHOURS);
    take(t.removeLunch, p.LNGREMOVELUNCH);
    take(t.lunchHours, p.LNGHOURS);
    take(t.createLocalCube, p.LNGCREATELOCALCUBE);
    take(t.startGrid, p.LNGGRID);
    take(t.writeSubject, p.LNGWRITESUBJECT);
    take(t.ok, p.LNGOK);
    take(t.cancel, p.LNGCANCEL);
    take(t.noDoubles, p.LNGNODOUBLES);
    take(t.failedSave, p.LNGFAILEDSAVESETTINGS);
    return t;
}

void assignMnemonics(const std::vector<Str*>& texts) {
    // First pass: first letters, in order; second pass: any free character
    // of the rest; a text with none free shares its first letter's mnemonic
    // (the dialog then moves between the two controls).
    std::set<Str> used;
    std::vector<std::optional<std::size_t>> chosen(texts.size());
    auto keyOf = [](char16_t c) { return text::foldCase(Str(1, c)); };
    for (int pass = 0; pass < 3; ++pass) {
        for (std::size_t t = 0; t < texts.size(); ++t) {
            if (chosen[t]) continue;
            const Str& plain = *texts[t];
            for (std::size_t i = 0; i < plain.size(); ++i) {
                if (!isMnemonicCharacter(plain[i])) continue;
                if (pass < 2 && used.count(keyOf(plain[i]))) {
                    if (pass == 0) break;  // first letters only
                    continue;
                }
                used.insert(keyOf(plain[i]));
                chosen[t] = i;
                break;
            }
        }
    }
    for (std::size_t t = 0; t < texts.size(); ++t) {
        Str marked;
        const Str& plain = *texts[t];
        for (std::size_t i = 0; i < plain.size(); ++i) {
            if (plain[i] == u'&') {
                marked += u"&&";
                continue;
            }
            if (chosen[t] && *chosen[t] == i) marked += u'&';
            marked += plain[i];
        }
        *texts[t] = marked;
    }
}

std::vector<Str*> controlTexts(Texts& t) {
    // OK and Cancel have none: Enter and Escape are their keys.
    return {&t.database,        &t.connection, &t.value,        &t.rate,        &t.events,
            &t.privateItems,    &t.recurring,  &t.lists,        &t.listName,    &t.addList,
            &t.renameList,      &t.removeList, &t.listUp,       &t.listDown,    &t.entries,
            &t.entryName,       &t.addEntry,   &t.renameEntry,  &t.removeEntry, &t.entryUp,
            &t.entryDown,       &t.convert24,  &t.convertHours, &t.removeLunch, &t.lunchHours,
            &t.createLocalCube, &t.startGrid,  &t.writeSubject};
}

}  // namespace hb::settingsapp
