#pragma once
// The settings program's side of the stores: what the add-in would read,
// saving through the add-in's own settings object, and the settings body
// text that /export writes and /import reads.
#include <optional>
#include <string>

#include "apps/settings/SettingsEditor.h"
#include "common/Session.h"

namespace hb::settingsapp {

struct Loaded {
    Values values;
    // False when the stored settings could not all be read (a value the
    // add-in cannot convert): the values are then partly the defaults.
    bool complete = true;
    // Why the settings kept in Outlook could not be read, when they had to
    // be (the registry was never written): nothing may be saved then, or
    // the lists there would be replaced by the empty ones shown.
    std::optional<Str> unread;
};

// The settings as the add-in reads them: from the registry, or, before it
// was ever written, from the settings appointment in Outlook's calendar
// (the running Outlook, else one started for it). The construction
// defaults where nothing has been saved yet.
Loaded loadValues(Session& s);

// Outlook's default calendar for the settings appointment: s.ofCalendar
// from the running Outlook, or when start is true from one started. The
// reason when it cannot be had.
std::optional<Str> connectOutlook(Session& s, bool start);

// Saves the editor's values (which check() accepted) through a settings
// object of the add-in's own: the seventeen registry values in the add-in's
// order and formats, and the settings appointment when Outlook runs. False
// when the store reported an error, or when the settings kept in Outlook
// could not be read (see Loaded::unread).
bool saveValues(Session& s, const SettingsEditor& editor);

// The error of a failed export or import: empty on success.
using Failure = std::optional<Str>;

// The stored settings as a settings body, UTF-8.
Failure exportBody(Session& s, std::string& utf8);

// Checks the whole settings body text (UTF-8) and only then saves it: the
// body's settings from the text, the others as they are stored.
Failure importBody(Session& s, const std::string& utf8, const Texts& texts = {});

}  // namespace hb::settingsapp
