#include "apps/settings/SettingsStore.h"

#include <exception>

#include "addin/modOutlookCode.h"
#include "common/AutomationError.h"
#include "common/Constants.h"
#include "common/Text.h"
#include "settings/cPersonalSettings.h"
#include "settings/modRegistryEntry.h"
#include "settings/modSettingsAppointment.h"

namespace hb::settingsapp {

namespace {

constexpr std::size_t kBodyLines = 6;  // before the metadata lines

Str lineLabel(std::size_t line, const Str& what) {
    return u"Line " + toStr(static_cast<long long>(line)) + u" (" + what + u"): ";
}

// The metadata lines of a body into the editor's lists, each name and entry
// through the dialog's checks.
Failure takeLists(const std::vector<Str>& fields, SettingsEditor& editor) {
    editor.values().lists.clear();
    for (std::size_t i = kBodyLines; i + 1 < fields.size(); ++i) {
        const Str& line = fields[i];
        const auto colon = line.find(u':');
        const Str label = lineLabel(i + 1, u"metadata list");
        if (colon == Str::npos)
            return label + u"\"" + line + u"\" has no \":\" after the list name.";
        if (auto r = editor.addList(line.substr(0, colon))) return label + r->message;
        const std::size_t list = editor.values().lists.size() - 1;
        // Empty pieces (";;") carry nothing; the add-in skips them too.
        for (const Str& entry : text::split(line.substr(colon + 1), u";")) {
            if (entry.empty()) continue;
            if (auto r = editor.addEntry(list, entry)) return label + r->message;
        }
    }
    return std::nullopt;
}

}  // namespace

namespace {

constexpr std::int32_t kFolderCalendar = 9;

bool registryNeverWritten(Session& s) {
    try {
        return GetSettingString(s, u"Settings", u"ReportChoice", u"NULL") == u"NULL";
    } catch (const std::exception&) {
        return false;  // there, but unreadable: the load says so
    }
}

// Before the registry is written the settings live only in the settings
// appointment: without Outlook, or when Outlook cannot look it up, they
// cannot be read, and a save would put empty lists in both stores.
std::optional<Str> outlookNeeded(Session& s) {
    if (!registryNeverWritten(s)) return std::nullopt;
    if (auto why = connectOutlook(s, true)) return why;
    bool unreadable = false;
    (void)fncGetSettingsAppointment(s, &unreadable);
    if (unreadable) return Str(u"its settings appointment could not be looked up");
    return std::nullopt;
}

// Loads the settings as the add-in does; false when not all of the store
// was taken.
bool load(Session& s, cPersonalSettings& settings) {
    s.diag.blnErrorOccurred = false;
    settings.GetValuesFromSettings();
    // A settings appointment whose body the add-in does not take over (its
    // database folder does not fit this computer): its lists, rate and
    // filters are still the user's and are shown, with this computer's
    // report folder, for the user to save.
    if (settings.blnLoadFailed() && settings.strRefusedBody()) {
        const std::int32_t choice = settings.lngReportChoice;
        const Str value = settings.strReportValue;
        settings.FromString(*settings.strRefusedBody());
        settings.lngReportChoice = choice;
        settings.strReportValue = value;
        return !s.diag.blnErrorOccurred;
    }
    // A value the add-in cannot convert ends the load there (the error is
    // reported); a list text whose last line lacks its line break loses
    // that line (or, with none at all, every list) without a word.
    bool complete = !s.diag.blnErrorOccurred && !settings.blnLoadFailed();
    try {
        const Str lists = GetSettingString(s, u"Settings", u"MetadataList", Str());
        if (!lists.empty() && text::right(lists, 2) != kCrLf) complete = false;
    } catch (const std::exception&) {
        complete = false;
    }
    return complete;
}

}  // namespace

std::optional<Str> connectOutlook(Session& s, bool start) {
    if (isSet(s.ofCalendar)) return std::nullopt;
    try {
        Variant app;
        try {
            app = s.platform.getActiveObject(u"Outlook.Application");
        } catch (const std::exception&) {
        }
        if (!isSet(app) && start) app = s.platform.createObject(u"Outlook.Application");
        if (!isSet(app))
            return Str(start ? u"Outlook is not running and could not be started."
                             : u"Outlook is not running.");
        const Variant calendar = app.call(u"GetNamespace", {Variant(u"MAPI")})
                                     .call(u"GetDefaultFolder", {Variant(kFolderCalendar)});
        if (!isSet(calendar)) return Str(u"Outlook has no default calendar.");
        s.olApp = app;
        s.ofCalendar = calendar;
        return std::nullopt;
    } catch (const AutomationError& e) {
        return u"Outlook could not be reached: " + e.description();
    } catch (const std::exception&) {
        return Str(u"Outlook could not be reached.");
    }
}

Loaded loadValues(Session& s) {
    const bool firstStart = registryNeverWritten(s);
    const std::optional<Str> outlook = outlookNeeded(s);
    cPersonalSettings settings(s);
    Loaded loaded;
    if (outlook) {
        loaded.complete = false;
        loaded.unread = u"The settings kept in Outlook could not be read (" + *outlook +
                        u"). Start Outlook and open the settings again; nothing is saved "
                        u"until then, so that your lists there are not replaced.";
    } else {
        loaded.complete = load(s, settings);
        // Nothing saved anywhere yet: the settings every session starts with
        // (the add-in's first load reads the missing hour values as 0).
        if (firstStart && settings.MetaDataLists.empty() && !settings.strRefusedBody()) {
            const cPersonalSettings fresh(s);
            loaded.values = valuesOf(fresh, s.platform.userLocale());
            return loaded;
        }
    }
    loaded.values = valuesOf(settings, s.platform.userLocale());
    return loaded;
}

bool saveValues(Session& s, const SettingsEditor& editor) {
    // Settings that were never read are not replaced.
    if (outlookNeeded(s)) return false;
    // The settings appointment too, when Outlook runs; else the registry,
    // which the add-in reads first, alone.
    (void)connectOutlook(s, false);
    // A new object: its pane size and dock position are the ones every
    // session of the add-in starts with, and no earlier load can hold back
    // its save.
    cPersonalSettings settings(s);
    s.diag.blnErrorOccurred = false;
    try {
        editor.applyTo(s, settings);
    } catch (const std::exception&) {
        return false;
    }
    settings.SaveSettings();
    return !s.diag.blnErrorOccurred;
}

Failure exportBody(Session& s, std::string& utf8) {
    if (auto why = outlookNeeded(s))
        return u"The settings kept in Outlook could not be read: " + *why;
    cPersonalSettings settings(s);
    if (!load(s, settings)) return Str(u"The stored settings could not all be read.");
    // The body carries the report value on one line; a connection text of
    // several lines would come back as a different text.
    Str value = settings.strReportValue;
    while (!value.empty() && (value.back() == u'\r' || value.back() == u'\n'))
        value.pop_back();
    if (value.find_first_of(u"\r\n") != Str::npos)
        return Str(u"The report value holds line breaks, which a settings file cannot carry.");
    try {
        utf8 = toUtf8(settings.fncBuildBody());
    } catch (const std::exception&) {
        return Str(u"The settings body could not be built.");
    }
    return std::nullopt;
}

Failure importBody(Session& s, const std::string& utf8, const Texts& texts) {
    std::string bytes = utf8;
    if (bytes.rfind("\xEF\xBB\xBF", 0) == 0) bytes.erase(0, 3);  // a byte-order mark
    Str body = fromUtf8(bytes);
    if (toUtf8(body) != bytes) return Str(u"The file is not UTF-8 text.");
    // A file saved by an editor that ends lines with LF alone.
    if (body.find(u'\r') == Str::npos) body = text::replace(body, u"\n", kCrLf);

    const std::vector<Str> fields = text::split(body, kCrLf);
    if (fields.size() < kBodyLines + 1)
        return Str(u"A settings file has at least six lines, each ended by a line break.");
    // Without its final line break the add-in would drop the last line.
    if (!fields.back().empty()) return Str(u"The last line does not end with a line break.");

    const Locale loc = s.platform.userLocale();
    Loaded current = loadValues(s);
    if (current.unread) return *current.unread;
    // The settings the body does not carry are taken from the store; where
    // it could not be read they would be replaced by defaults.
    if (!current.complete)
        return Str(
            u"The stored settings could not all be read; correct them in the settings "
            u"dialog first.");
    SettingsEditor editor(std::move(current.values), loc, fncGetListSeparator(s), texts);
    Values& v = editor.values();

    const Str& choice = fields[0];
    std::optional<std::int16_t> number;
    if (isNumeric(Variant(choice), loc)) {
        try {
            number = Variant(choice).toInteger(loc);
        } catch (const AutomationError&) {
        }
    }
    if (!number || (*number != 2 && *number != 3))
        return lineLabel(1, u"report choice") + u"\"" + choice +
               u"\" is neither 2 (database folder) nor 3 (connection text).";
    v.reportChoice = *number;
    v.reportValue = fields[1];
    // The rate keeps its fraction here, as the registry keeps it: the body's
    // own reading would round it to a whole number, and an export followed
    // by an import would change it.
    v.rate = fields[2];
    bool* const filters[] = {&v.filterEvents, &v.filterPrivate, &v.filterRecurring};
    const char16_t* const filterNames[] = {u"filter events", u"filter private",
                                           u"filter recurring"};
    for (std::size_t i = 0; i < 3; ++i) {
        try {
            *filters[i] = Variant(fields[3 + i]).toBool(loc);
        } catch (const AutomationError&) {
            return lineLabel(4 + i, filterNames[i]) + u"\"" + fields[3 + i] +
                   u"\" is neither True nor False.";
        }
    }
    // Lines 2 and 3 before the lists, so that the first bad line is named.
    v.lists.clear();
    if (auto r = editor.check()) {
        if (r->field == Field::ReportValue) return lineLabel(2, u"report value") + r->message;
        if (r->field == Field::Rate) return lineLabel(3, u"rate") + r->message;
        return r->message;
    }
    if (Failure f = takeLists(fields, editor)) return f;
    if (!saveValues(s, editor)) return Str(u"The settings could not be saved.");
    return std::nullopt;
}

}  // namespace hb::settingsapp
