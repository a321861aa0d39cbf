#pragma once
// The settings program's editing model: the values the dialog shows, the
// metadata lists being edited, and the checks that keep out anything the
// add-in could not read back. Nothing here touches a store; the dialog
// edits a SettingsEditor and hands it to the store only on OK.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "apps/settings/SettingsTexts.h"
#include "common/Locale.h"
#include "common/Str.h"

namespace hb {
class cPersonalSettings;
struct Session;
}  // namespace hb

namespace hb::settingsapp {

struct MetaList {
    Str name;
    std::vector<Str> entries;
    bool operator==(const MetaList&) const = default;
};

// Every setting the add-in reads, as the dialog holds it: numbers as the
// texts the user typed, in the user's regional format.
struct Values {
    std::int32_t reportChoice = 2;  // 2 Access database folder, 3 connection text
    Str reportValue;
    Str rate = u"0";
    bool filterEvents = false;
    bool filterPrivate = false;
    bool filterRecurring = false;
    std::vector<MetaList> lists;
    bool convert24 = false;
    Str convert24Hours = u"8";
    bool removeLunch = false;
    Str removeLunchHours = u"0.75";
    bool createLocalCube = false;
    bool startGrid = false;
    bool writeSubject = false;
    bool operator==(const Values&) const = default;
};

// The field a refusal is about (the dialog puts the focus there).
enum class Field { ReportValue, Rate, ListName, Entry, Convert24Hours, RemoveLunchHours };

struct Refusal {
    Field field;
    Str message;
};

// What a settings object holds, as the dialog shows it.
Values valuesOf(const cPersonalSettings& settings, const Locale& loc);

class SettingsEditor {
  public:
    // listSeparator: the separator of the billing text (the user's list
    // separator), which no entry may hold.
    SettingsEditor(Values values, Locale loc, Str listSeparator, Texts texts = {});

    Values& values() { return values_; }
    const Values& values() const { return values_; }
    const Texts& texts() const { return texts_; }

    // List and entry operations. Names are trimmed of blanks; a refused name
    // changes nothing and gives the message saying why. Indexes out of range
    // change nothing. The moves return false at either end.
    std::optional<Refusal> addList(const Str& name);
    std::optional<Refusal> renameList(std::size_t list, const Str& name);
    void removeList(std::size_t list);
    bool moveList(std::size_t list, int by);
    std::optional<Refusal> addEntry(std::size_t list, const Str& name);
    std::optional<Refusal> renameEntry(std::size_t list, std::size_t entry, const Str& name);
    void removeEntry(std::size_t list, std::size_t entry);
    bool moveEntry(std::size_t list, std::size_t entry, int by);

    // Everything checked before a save: the first value that would not load
    // back, with a message naming its field.
    std::optional<Refusal> check() const;

    // The values into a settings object (after check() found nothing).
    void applyTo(Session& s, cPersonalSettings& settings) const;

    // The single checks, shared with the import of a settings file.
    std::optional<Refusal> checkListName(const Str& name,
                                         std::optional<std::size_t> except = {}) const;
    std::optional<Refusal> checkEntry(const MetaList& list, const Str& name,
                                      std::optional<std::size_t> except = {}) const;

  private:
    std::optional<Refusal> checkHours(const Str& text, Field field, const Str& label, double low,
                                      bool lowIncluded, double high) const;

    Values values_;
    Locale loc_;
    Str listSeparator_;
    Texts texts_;
};

}  // namespace hb::settingsapp
