#pragma once
// The user's personal settings, kept both in the registry (one
// REG_SZ value per key in section "Settings", the primary store) and in the
// settings appointment of 1 January 2050 (its body, its categories and the
// long property "Settings"; read only on migration, when the registry has
// never been written).
//
// Conversions between texts and numbers, currency and booleans use the
// Variant conversions (CInt, CCur, CBool, CStr) with the user's regional
// settings, taken explicitly from Platform::userLocale() at each operation
// rather than from Locale::current(): the decimal separator of the rate and
// of the hour values is the user's, as the settings program writes them.
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "common/Session.h"
#include "metadata/cMetaDictionary.h"

namespace hb {

class cPersonalSettings {
  public:
    // Class_Initialize: report source from the connection file or the
    // report folder, and the defaults. Errors are reported under
    // "cPersonalSettings.Class_Initialize".
    explicit cPersonalSettings(Session& s);
    // A settings object that only takes what a settings body carries: no
    // report source looked up, no defaults, nothing traced. The task pane
    // parses the text it is given into one of these, so that showing a pane
    // changes nothing in the session's own settings (nor, through them, in
    // what the next save writes).
    struct BodyOnly {};
    cPersonalSettings(Session& s, BodyOnly);
    cPersonalSettings(const cPersonalSettings&) = delete;
    cPersonalSettings& operator=(const cPersonalSettings&) = delete;

    // Fields. They start at the run time's zero values; construction sets
    // the defaults (report source, 8, 0.75, 185, 600, 2, ...), so a
    // construction that fails half way leaves the fields as far as they
    // were set.
    std::vector<std::shared_ptr<cMetaDictionary>> MetaDataLists;
    Currency curPersonalRate;
    bool blnFilterPrivate = false;
    bool blnFilterRecurring = false;
    bool blnFilterEvents = false;
    std::int32_t lngReportChoice = 0;
    Str strReportValue;
    bool blnConvert24 = false;
    Variant intConvert24Hours;
    bool blnRemoveLunch = false;
    Variant intRemoveLunchHours;
    bool blnCreateLocalCube = false;
    bool blnStartGrid = false;
    bool blnWriteSubject = false;
    std::int16_t intPaneWidth = 0;
    std::int16_t intPaneHeight = 0;
    std::int16_t intPaneDockPos = 0;

    // Operations, in the order of the interface.
    void SaveSettings() noexcept;
    // Stores the task pane's size and dock position, the only settings the
    // add-in itself changes: the three registry values and nothing else, so
    // that what the settings program saved meanwhile is never written over
    // with this session's older copy.
    void SavePaneSettings() noexcept;
    // True when another program (the settings program, an import) has
    // written the registry's settings since this object last read or wrote
    // them: the fields are then older than what is stored.
    bool fncStoreChanged() const noexcept;
    bool GetValuesFromSettings() noexcept;  // always True
    void FromString(const Str& strSettings) noexcept;
    // FromString for the task pane's own copy: the lists are taken even
    // when the rate line does not fit the body's 16-bit path.
    void FromStringForPane(const Str& strSettings) noexcept;
    Str fncBuildBody();  // no trap: errors go to the caller
    Str fncJoinDic(const std::shared_ptr<MetaDicType>& dic, const Str& strDelimiter) noexcept;
    Variant fncMetadataList();  // a string variant; no trap
    void subPopulateMetadataList(const Str& strList) noexcept;
    Str fncReadReportPath();  // no trap
    void subReadExistingSettingAppointment2050() noexcept;

    // True after a load (GetValuesFromSettings) that stopped at an error or
    // took only part of a store's data; SaveSettings then writes nothing
    // until a later load succeeds, so half-read fields never overwrite what
    // the stores hold.
    bool blnLoadFailed() const { return loadFailed_; }
    // Bumped whenever MetaDataLists may have changed (every load,
    // subPopulateMetadataList, FromString): a combo box filled at this
    // generation still shows the lists as they are.
    std::uint64_t generation() const { return generation_; }
    // The settings body of the settings appointment when a first-start load
    // found one but did not take it (its first line is no report choice, or
    // its database folder does not fit this installation). The settings
    // program offers its lists instead of empty ones.
    const std::optional<Str>& strRefusedBody() const { return refusedBody_; }

  private:
    void classInitialize();
    // One metadata line into a new list (skipped when its name is empty).
    void parseMetadataLine(StrView line);
    // The rate, the filters and the lists from the fields of a split body.
    // rateMayFail: a rate the 16-bit path cannot hold leaves the rate as it
    // is instead of ending the parse (the pane's copy needs only the lists).
    void takeBodyFrom(const std::vector<StrView>& fields, const Locale& loc,
                      bool rateMayFail = false);
    void parseBody(const Str& strSettings, bool rateMayFail);

    // The registry's write time as this object last saw it (read or written).
    void noteStoreSeen() noexcept;

    Session& s_;
    bool loadFailed_ = false;
    std::uint64_t generation_ = 0;
    std::optional<std::uint64_t> seenWriteTime_;
    std::optional<Str> refusedBody_;
};

}  // namespace hb
