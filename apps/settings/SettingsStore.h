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
};

// The settings as the add-in reads them from the registry; the construction
// defaults where nothing has been saved yet.
Loaded loadValues(Session& s);

// Saves the editor's values (which check() accepted) through a settings
// object of the add-in's own: the seventeen registry values in the add-in's
// order and formats. False when the store reported an error.
bool saveValues(Session& s, const SettingsEditor& editor);

// The error of a failed export or import: empty on success.
using Failure = std::optional<Str>;

// The stored settings as a settings body, UTF-8.
Failure exportBody(Session& s, std::string& utf8);

// Checks the whole settings body text (UTF-8) and only then saves it: the
// body's settings from the text, the others as they are stored.
Failure importBody(Session& s, const std::string& utf8, const Texts& texts = {});

}  // namespace hb::settingsapp
