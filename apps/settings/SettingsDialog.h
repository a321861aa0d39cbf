#pragma once
#include <optional>
// The settings dialog: shows a SettingsEditor's values, edits the metadata
// lists through it, and on OK checks everything and saves through the
// add-in's settings object. Cancel (or closing the window) writes nothing.
#include <windows.h>

#include "apps/settings/SettingsEditor.h"
#include "common/Session.h"

namespace hb::settingsapp {

struct DialogState {
    DialogState(Session& session, SettingsEditor e) : s(session), editor(std::move(e)) {}
    Session& s;
    SettingsEditor editor;
    // Set when the dialog ends: IDOK after a save, IDCANCEL otherwise.
    int result = 0;
    // Why OK may not save (the settings kept in Outlook could not be read);
    // OK then says so and the dialog stays.
    std::optional<Str> refusal;
    bool modal = true;
};

// Runs the dialog modally; returns IDOK when the settings were saved.
int runSettingsDialog(HINSTANCE instance, DialogState& state);

// Opens the dialog without a message loop of its own (the Windows tests
// drive it); it destroys itself on OK after a save and on Cancel, setting
// state.result. The state must outlive the window.
HWND openSettingsDialog(HINSTANCE instance, DialogState& state);

}  // namespace hb::settingsapp
