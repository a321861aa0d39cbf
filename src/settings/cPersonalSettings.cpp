#include "settings/cPersonalSettings.h"

#include "common/Constants.h"
#include "common/ErrorTrap.h"
#include "common/Text.h"
#include "diagnostics/modErroHandling.h"
#include "settings/modFileHandling.h"
#include "settings/modGetDefaultFolders.h"
#include "settings/modRegistryEntry.h"
#include "settings/modSettingsAppointment.h"

namespace hb {

namespace {

constexpr char16_t kSection[] = u"Settings";
constexpr char16_t kNull[] = u"NULL";

Str boolText(bool value) {
    return value ? u"True" : u"False";
}

bool isSomething(const Variant& v) {
    const Variant& d = v.deref();
    return d.isObject() && !d.isNothing();
}

// Conversions of the settings (see the header): the Variant conversions
// with the user's regional settings, passed explicitly.
std::int16_t textToInteger(const Str& text, const Locale& loc) {
    return Variant(text).toInteger(loc);  // CInt: halves to even, 6 past 16 bits
}

}  // namespace

// --- construction ---------------------------------------------------------

cPersonalSettings::cPersonalSettings(Session& s) : s_(s) {
    trap(s_, u"cPersonalSettings.Class_Initialize", [&] { classInitialize(); });
}

cPersonalSettings::cPersonalSettings(Session& s, BodyOnly) : s_(s) {}

namespace {

// A body or list text whose last line lacks its CR LF loses that line when
// read: a load that does so has not taken all of the store's lists.
bool endsWithLineBreak(const Str& text) {
    return text.empty() || text::right(text, 2) == kCrLf;
}

}  // namespace

void cPersonalSettings::classInitialize() {
    // 1.
    MetaDataLists.clear();
    // 2.
    subSetupFS(s_);
    // 3.
    subTrace(s_, u"Checking for HourbookConnection.txt");
    // 4.
    const Str folder = fncReadReportPath();
    // 5./6.
    const Str connectionFile = fncNoTrailingSlash(folder) + u"\\HourbookConnection.txt";
    if (fsFileExists(s_, connectionFile)) {
        lngReportChoice = 3;
        strReportValue = fsReadAll(s_, connectionFile);
    } else {
        subTrace(s_, u"Assuming Access database");
        lngReportChoice = 2;
        strReportValue = fncNoTrailingSlash(folder) + u"\\";
    }
    // 7.
    blnConvert24 = false;
    intConvert24Hours = Variant(std::int16_t{8});
    blnRemoveLunch = false;
    intRemoveLunchHours = Variant(0.75);
    intPaneWidth = 185;
    intPaneHeight = 600;
    intPaneDockPos = 2;
    blnCreateLocalCube = false;
    blnWriteSubject = false;
}

Str cPersonalSettings::fncReadReportPath() {
    // 1./2. The local cube folder (created when missing), "OLAP Cubes"
    // replaced by "My Hourbooks" (case-sensitive).
    const Str reportFolder =
        text::replace(fncGetLocalCubePath(s_, true), u"OLAP Cubes", u"My Hourbooks");
    // 3.
    const Str pathFile = fncNoTrailingSlash(reportFolder) + u"\\ReportPath.txt";
    if (fsFileExists(s_, pathFile)) return text::replace(fsReadAll(s_, pathFile), kCrLf, u"");
    // 4.
    return fncNoTrailingSlash(s_.platform.moduleFolder()) + u"\\";
}

// --- settings body ----------------------------------------------------------

Str cPersonalSettings::fncJoinDic(const std::shared_ptr<MetaDicType>& dic,
                                  const Str& strDelimiter) noexcept {
    Str result;
    const bool ok = trap(s_, u"fncJoinDic", [&] {
        if (!dic) raise(err::ObjectVariableNotSet);
        for (const auto& entry : *dic) {
            result += entry.first;
            result += strDelimiter;
        }
    });
    return ok ? result : Str();
}

Variant cPersonalSettings::fncMetadataList() {
    Str list;
    for (const auto& dic : MetaDataLists) {
        if (!dic) raise(err::ObjectVariableNotSet);
        if (dic->Caption.empty()) continue;
        list += dic->Caption;
        list += u":";
        list += fncJoinDic(dic->MetaDic, u";");
        list += kCrLf;
    }
    return Variant(std::move(list));
}

Str cPersonalSettings::fncBuildBody() {
    const Locale loc = s_.platform.userLocale();
    const Str crlf = kCrLf;
    Str body;
    body += toStr(lngReportChoice) + crlf;
    // A connection text read from its file usually ends with a line break;
    // in the body that would push the rate, the filters and the lists one
    // line down, and every reader of the body would fail on them. Line
    // breaks at the end of a connection text mean nothing, so they are left
    // out here (the registry keeps the text as it is).
    Str reportValue = strReportValue;
    while (!reportValue.empty() && (reportValue.back() == u'\r' || reportValue.back() == u'\n'))
        reportValue.pop_back();
    body += reportValue + crlf;
    body += Variant(curPersonalRate).toStr(loc) + crlf;  // CStr: the user's decimal separator
    body += boolText(blnFilterEvents) + crlf;
    body += boolText(blnFilterPrivate) + crlf;
    body += boolText(blnFilterRecurring) + crlf;
    body += fncMetadataList().toStr(loc);
    return body;
}

void cPersonalSettings::parseMetadataLine(StrView line) {
    // a. The name is the part before the first ":".
    const auto colon = line.find(u':');
    const StrView name = colon == StrView::npos ? line : line.substr(0, colon);
    // b.
    if (name.empty()) return;
    // c.
    auto dic = std::make_shared<cMetaDictionary>(s_);
    MetaDataLists.push_back(dic);
    dic->Caption = Str(name);
    // d. The text after the first ":" (from position length(name) + 2).
    const StrView rest = name.size() + 1 < line.size() ? line.substr(name.size() + 1) : StrView();
    // e. Non-empty pieces between the ";": entries without category,
    // super-category or rate (empty texts, a zero rate, False for the other
    // arguments). Lists run to tens of thousands of names, so the pieces are
    // read in place and the dictionary is sized once.
    if (rest.empty()) return;
    std::size_t separators = 0;
    for (char16_t c : rest)
        separators += c == u';';
    dic->reserve(separators + 1, rest.size() - separators);
    std::size_t pos = 0;
    for (;;) {
        const std::size_t end = text::findChar(rest, u';', pos);
        const StrView piece = rest.substr(pos, end == StrView::npos ? StrView::npos : end - pos);
        if (!piece.empty()) dic->AddMeta(Str(piece), Str(), Currency{}, 0, Str(), false);
        if (end == StrView::npos) return;
        pos = end + 1;
    }
}

void cPersonalSettings::takeBodyFrom(const std::vector<StrView>& fields, const Locale& loc,
                                     bool rateMayFail) {
    const std::size_t n = fields.size() - 1;
    ++generation_;
    // The rate through a 16-bit integer (halves to even, -32768..32767 on
    // this path; the registry path keeps the full currency value).
    if (rateMayFail) {
        try {
            curPersonalRate = Currency::fromUnits(textToInteger(Str(fields[2]), loc));
        } catch (const AutomationError&) {
        }
    } else {
        curPersonalRate = Currency::fromUnits(textToInteger(Str(fields[2]), loc));
    }
    blnFilterEvents = Variant(Str(fields[3])).toBool(loc);
    blnFilterPrivate = Variant(Str(fields[4])).toBool(loc);
    blnFilterRecurring = Variant(Str(fields[5])).toBool(loc);
    MetaDataLists = {};
    // Fields 6 to n - 1: the last field (the rest after the final CR LF) is
    // skipped.
    for (std::size_t i = 6; i < n; ++i)
        parseMetadataLine(fields[i]);
}

void cPersonalSettings::parseBody(const Str& strSettings, bool rateMayFail) {
    const Locale loc = s_.platform.userLocale();
    const std::vector<StrView> fields = text::splitViews(strSettings, kCrLf);
    // Fewer than seven fields: nothing at all.
    if (fields.size() < 7) return;
    const Str choice(fields[0]);
    if (isNumeric(Variant(choice), loc)) {
        lngReportChoice = textToInteger(choice, loc);
        strReportValue = Str(fields[1]);
    }
    takeBodyFrom(fields, loc, rateMayFail);
}

void cPersonalSettings::FromString(const Str& strSettings) noexcept {
    trap(s_, u"FromString", [&] { parseBody(strSettings, false); });
}

void cPersonalSettings::FromStringForPane(const Str& strSettings) noexcept {
    trap(s_, u"FromString", [&] { parseBody(strSettings, true); });
}

void cPersonalSettings::subPopulateMetadataList(const Str& strList) noexcept {
    const bool ran = trap(s_, u"subPopulateMetadataList", [&] {
        ++generation_;
        const std::vector<StrView> fields = text::splitViews(strList, kCrLf);
        // No CR LF at all: the lists stay untouched.
        if (fields.size() < 2) return;
        MetaDataLists = {};
        for (std::size_t i = 0; i + 1 < fields.size(); ++i)
            parseMetadataLine(fields[i]);
    });
    // A list text that failed, or whose last list had no CR LF and was
    // dropped, has not been taken whole: a save now would store the lists
    // without it.
    if (!ran || !endsWithLineBreak(strList)) loadFailed_ = true;
}

// --- stores ---------------------------------------------------------------

void cPersonalSettings::SaveSettings() noexcept {
    // After a load that failed or took only part of the stores, the fields
    // are not the user's settings: writing them would replace good data in
    // both stores (the lists included) with what happened to be read.
    // Nothing is written until a load succeeds; the session goes on with
    // the fields as they are.
    if (loadFailed_) return;
    trap(s_, u"SaveSettings", [&] {
        const Locale loc = s_.platform.userLocale();
        // 1.
        subTrace(s_, u"Saving personal settings to setting appointment of 1/1/2050");
        // 2.
        const Str body = fncBuildBody();
        // 3.
        const Variant appointment = fncGetSettingsAppointment(s_);
        // 4.
        const Variant list = fncMetadataList();
        // 5. Errors on the appointment are ignored and cleared.
        if (isSomething(appointment)) {
            resumeNext(s_, [&] { appointment.put(u"Body", Variant(body)); });
            resumeNext(s_, [&] { subFixLongProperty(s_, appointment, body, u"Settings"); });
            resumeNext(s_, [&] {
                appointment.put(u"Categories", Variant(text::left(list.toStr(loc), 4000)));
            });
            resumeNext(s_, [&] { appointment.call(u"Save"); });
            s_.err.clear();
        }
        // 6.
        subTrace(s_, u"Saving personal settings to registry");
        // 7. The seventeen keys, in the order of the key table.
        SaveSettingString(s_, kSection, u"ReportChoice", toStr(lngReportChoice));
        SaveSettingString(s_, kSection, u"ReportValue", strReportValue);
        SaveSettingString(s_, kSection, u"PersonalRate", Variant(curPersonalRate).toStr(loc));
        SaveSettingString(s_, kSection, u"FilterEvents", boolText(blnFilterEvents));
        SaveSettingString(s_, kSection, u"FilterPrivate", boolText(blnFilterPrivate));
        SaveSettingString(s_, kSection, u"FilterRecurring", boolText(blnFilterRecurring));
        SaveSettingString(s_, kSection, u"MetadataList", list.toStr(loc));
        SaveSettingString(s_, kSection, u"Convert24", boolText(blnConvert24));
        SaveSettingString(s_, kSection, u"Convert24Hours", intConvert24Hours.toStr(loc));
        SaveSettingString(s_, kSection, u"StartGrid", boolText(blnStartGrid));
        SaveSettingString(s_, kSection, u"RemoveLunch", boolText(blnRemoveLunch));
        SaveSettingString(s_, kSection, u"RemoveLunchHours", intRemoveLunchHours.toStr(loc));
        SaveSettingString(s_, kSection, u"CreateLocalCube", boolText(blnCreateLocalCube));
        SaveSettingString(s_, kSection, u"WriteSubject", boolText(blnWriteSubject));
        SaveSettingString(s_, kSection, u"PaneWidth", toStr(intPaneWidth));
        SaveSettingString(s_, kSection, u"PaneHeight", toStr(intPaneHeight));
        SaveSettingString(s_, kSection, u"PaneDockPos", toStr(intPaneDockPos));
        noteStoreSeen();
    });
}

void cPersonalSettings::SavePaneSettings() noexcept {
    // As for every save, nothing after a load that failed or took only part
    // of the stores.
    if (loadFailed_) return;
    // Only the three pane values are written: the add-in changes nothing
    // else, and a whole save from this session's copy would put back lists,
    // rates and filters older than what the settings program stored since.
    const bool changedElsewhere = fncStoreChanged();
    trap(s_, u"SaveSettings", [&] {
        subTrace(s_, u"Saving personal settings to registry");
        SaveSettingString(s_, kSection, u"PaneWidth", toStr(intPaneWidth));
        SaveSettingString(s_, kSection, u"PaneHeight", toStr(intPaneHeight));
        SaveSettingString(s_, kSection, u"PaneDockPos", toStr(intPaneDockPos));
    });
    // Another program's save that came before this one is still to be read.
    if (!changedElsewhere) noteStoreSeen();
}

bool cPersonalSettings::fncStoreChanged() const noexcept {
    return GetSectionWriteTime(s_.platform, kSection) != seenWriteTime_;
}

void cPersonalSettings::noteStoreSeen() noexcept {
    seenWriteTime_ = GetSectionWriteTime(s_.platform, kSection);
}

bool cPersonalSettings::GetValuesFromSettings() noexcept {
    loadFailed_ = false;
    refusedBody_.reset();
    ++generation_;
    // Taken before reading: a save by another program while this load runs
    // shows as a change afterwards and is read again.
    noteStoreSeen();
    const bool ran = trap(s_, u"GetValuesFromSettings", [&] {
        const Locale loc = s_.platform.userLocale();
        // 1.
        subTrace(s_, u"Reading Hourbook settings from Registry!");
        // 2. Never written: migrate from the settings appointment, and take
        // nothing from the registry.
        if (GetSettingString(s_, kSection, u"ReportChoice", kNull) == kNull) {
            subReadExistingSettingAppointment2050();
            return;
        }
        // 3.
        const Str choice = GetSettingString(s_, kSection, u"ReportChoice", kNull);
        if (choice != kNull) lngReportChoice = textToInteger(choice, loc);
        const Str value = GetSettingString(s_, kSection, u"ReportValue", kNull);
        if (value != kNull) strReportValue = value;
        // 4. A missing boolean key reads as "true" (the intended asymmetry
        // with the construction defaults); the rate keeps its full currency
        // value on this path.
        curPersonalRate =
            Variant(GetSettingString(s_, kSection, u"PersonalRate", u"0")).toCurrency(loc);
        blnFilterEvents =
            Variant(GetSettingString(s_, kSection, u"FilterEvents", u"true")).toBool(loc);
        blnFilterPrivate =
            Variant(GetSettingString(s_, kSection, u"FilterPrivate", u"true")).toBool(loc);
        blnFilterRecurring =
            Variant(GetSettingString(s_, kSection, u"FilterRecurring", u"true")).toBool(loc);
        subPopulateMetadataList(GetSettingString(s_, kSection, u"MetadataList", Str()));
        blnConvert24 = Variant(GetSettingString(s_, kSection, u"Convert24", u"true")).toBool(loc);
        intConvert24Hours = Variant(GetSettingString(s_, kSection, u"Convert24Hours", u"8"));
        blnRemoveLunch =
            Variant(GetSettingString(s_, kSection, u"RemoveLunch", u"true")).toBool(loc);
        intRemoveLunchHours = Variant(GetSettingString(s_, kSection, u"RemoveLunchHours", u"0.75"));
        blnCreateLocalCube =
            Variant(GetSettingString(s_, kSection, u"CreateLocalCube", u"true")).toBool(loc);
        blnStartGrid = Variant(GetSettingString(s_, kSection, u"StartGrid", u"true")).toBool(loc);
        blnWriteSubject =
            Variant(GetSettingString(s_, kSection, u"WriteSubject", u"true")).toBool(loc);
    });
    if (!ran) loadFailed_ = true;
    return true;
}

void cPersonalSettings::subReadExistingSettingAppointment2050() noexcept {
    const bool ran = trap(s_, u"subReadExistingSettingAppointment2050", [&] {
        const Locale loc = s_.platform.userLocale();
        // 1.
        subTrace(s_, u"Getting settings from appointment on 1 jan 2050");
        // 2. An appointment that is there but could not be read leaves the
        // load incomplete: the empty lists must not be saved over it.
        bool unreadable = false;
        const Variant appointment = fncGetSettingsAppointment(s_, &unreadable);
        if (!isSomething(appointment)) {
            if (unreadable) loadFailed_ = true;
            return;
        }
        // 3.
        const Str body = fncGetLongProperty(s_, appointment, u"Settings");
        const std::vector<StrView> fields = text::splitViews(body, kCrLf);
        // 4.
        if (fields.size() > 6) {
            // A body that is not taken over leaves the load incomplete: the
            // lists it holds are the user's, and saving the empty ones read
            // here would replace them.
            const auto refuse = [&] {
                refusedBody_ = body;
                loadFailed_ = true;
            };
            // a. Not numeric: nothing at all is taken.
            const Str choiceText(fields[0]);
            if (!isNumeric(Variant(choiceText), loc)) return refuse();
            // b.
            const std::int16_t choice = textToInteger(choiceText, loc);
            const Str value(fields[1]);
            // c. An Access database folder is taken over only where the
            // installation and the database file agree.
            if (choice == 2) {
                const Str defaultDatabase =
                    fncNoTrailingSlash(text::replace(fncGetLocalCubePath(s_, false), u"OLAP Cubes",
                                                     u"My Hourbooks")) +
                    u"\\Hourbook3.mdb";
                const Str storedDatabase =
                    fncNoTrailingSlash(fncNoTrailingSlash(value)) + u"\\Hourbook3.mdb";
                const Str programFolder = fncNoTrailingSlash(s_.platform.moduleFolder()) + u"\\";
                if (fsFileExists(s_, programFolder + u"HBPersonalSettingsSingle.exe")) {
                    // Single-user installation: the default database only.
                    if (!(text::equalsNoCase(storedDatabase, defaultDatabase) &&
                          fsFileExists(s_, storedDatabase))) {
                        return refuse();
                    }
                } else {
                    // Workgroup installation: a database elsewhere only.
                    if (!(fsFileExists(s_, programFolder + u"HBPersonalSettings.exe") &&
                          fsFileExists(s_, storedDatabase) &&
                          !text::equalsNoCase(storedDatabase, defaultDatabase))) {
                        return refuse();
                    }
                }
            }
            // d.
            lngReportChoice = choice;
            strReportValue = value;
            takeBodyFrom(fields, loc);
            // A body whose last list had no CR LF lost that list.
            if (!fields.back().empty()) loadFailed_ = true;
        }
        // 5. The seven user properties, whether or not a body was found.
        blnConvert24 =
            fncGetProperty(s_, appointment, u"blnConvert24", vbtype::vbBoolean, Variant(Str()))
                .toBool(loc);
        intConvert24Hours = fncGetProperty(s_, appointment, u"intConvert24Hours", vbtype::vbInteger,
                                           Variant(Str()));
        blnRemoveLunch =
            fncGetProperty(s_, appointment, u"blnRemoveLunch", vbtype::vbBoolean, Variant(Str()))
                .toBool(loc);
        intRemoveLunchHours = fncGetProperty(s_, appointment, u"intRemoveLunchHours",
                                             vbtype::vbInteger, Variant(Str()));
        blnCreateLocalCube = fncGetProperty(s_, appointment, u"blnCreateLocalCube",
                                            vbtype::vbBoolean, Variant(Str()))
                                 .toBool(loc);
        blnStartGrid =
            fncGetProperty(s_, appointment, u"blnStartGrid", vbtype::vbBoolean, Variant(Str()))
                .toBool(loc);
        blnWriteSubject =
            fncGetProperty(s_, appointment, u"blnWriteSubject", vbtype::vbBoolean, Variant(Str()))
                .toBool(loc);
    });
    if (!ran) loadFailed_ = true;
}

}  // namespace hb
