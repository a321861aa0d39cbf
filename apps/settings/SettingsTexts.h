#pragma once
// Every text the settings program shows: in the user's language where the
// add-in's phrase table has a phrase for it, English otherwise. Keyboard
// mnemonics are given out here, so that a translated dialog gets unique
// ones too.
#include <vector>

#include "common/Str.h"
#include "languages/Phrases.h"

namespace hb::settingsapp {

struct Texts {
    // Dialog captions, in tab order (mnemonics are assigned in this order).
    Str caption = u"Hourbook for Outlook personal settings";
    Str reportGroup = u"Report data";
    Str database = u"Access database folder";
    Str connection = u"Connection text";
    Str value = u"Folder or connection";
    Str rate = u"Personal hourly rate";
    Str filterGroup = u"Filter options";
    Str events = u"Events";
    Str privateItems = u"Private";
    Str recurring = u"Recurring";
    Str metaGroup = u"Meta data";
    Str lists = u"Lists";
    Str listName = u"List name";
    Str addList = u"Add";
    Str renameList = u"Rename";
    Str removeList = u"Remove";
    Str listUp = u"Up";
    Str listDown = u"Down";
    Str entries = u"Entries";
    Str entryName = u"Entry";
    Str addEntry = u"Add";
    Str renameEntry = u"Rename";
    Str removeEntry = u"Remove";
    Str entryUp = u"Up";
    Str entryDown = u"Down";
    Str timeGroup = u"Time manipulation";
    Str convert24 = u"Convert full days to hours";
    Str convertHours = u"Hours";
    Str removeLunch = u"Remove lunch";
    Str lunchHours = u"Hours";
    Str createLocalCube = u"Create local cube";
    Str startGrid = u"Grid";
    Str writeSubject = u"Write Hourbook data in subject";
    Str ok = u"OK";
    Str cancel = u"Cancel";

    // Messages.
    Str noDoubles = u"You must not have any doubles in this list!";
    Str failedSave = u"Failed to save settings.";
};

// English, with each phrase that the table holds (non-empty) in its place.
Texts textsFrom(const Phrases& p);

// Gives each text a mnemonic ("&" before one character): first letters
// first, in the order of the list, then any other free character; a text
// with no free character shares the mnemonic of its first letter. "&"
// already in a text is doubled so that it shows.
void assignMnemonics(const std::vector<Str*>& texts);

// The captions that get mnemonics, in tab order (OK and Cancel have Enter
// and Escape).
std::vector<Str*> controlTexts(Texts& t);

}  // namespace hb::settingsapp
