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
// of the hour values is the user's, exactly as the original's run time used
// the user's locale.
#include <cstdint>
#include <memory>
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
    cPersonalSettings(const cPersonalSettings&) = delete;
    cPersonalSettings& operator=(const cPersonalSettings&) = delete;

    // Fields, in the declaration order of the Part. They start at the run
    // time's zero values; construction sets the Part's defaults (report
    // source, 8, 0.75, 185, 600, 2, ...), so a construction that fails half
    // way leaves the fields as far as they were set.
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
    bool GetValuesFromSettings() noexcept;  // always True
    void FromString(const Str& strSettings) noexcept;
    Str fncBuildBody();  // no trap: errors go to the caller
    Str fncJoinDic(const std::shared_ptr<MetaDicType>& dic, const Str& strDelimiter) noexcept;
    Variant fncMetadataList();  // a string variant; no trap
    void subPopulateMetadataList(const Str& strList) noexcept;
    Str fncReadReportPath();  // no trap
    void subReadExistingSettingAppointment2050() noexcept;

  private:
    void classInitialize();
    // Step 7 of FromString: one metadata line into a new list (skipped when
    // its name is empty).
    void parseMetadataLine(const Str& line);
    // Steps 4 to 7 of FromString on the fields of a split body.
    void takeBodyFrom(const std::vector<Str>& fields, const Locale& loc);

    Session& s_;
};

}  // namespace hb
