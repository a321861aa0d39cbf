#pragma once
// One metadata list, an ordered name-keyed dictionary of cMetaData
// whose keys match without regard to letter case (fncCreateDic).
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "common/Session.h"
#include "metadata/cMetaData.h"
#include "settings/ScriptingDictionary.h"

namespace hb {

using MetaDicType = ScriptingDictionary<std::shared_ptr<cMetaData>>;

class cMetaDictionary {
  public:
    // Creates the dictionary with fncCreateDic; MetaDic stays null when the
    // component cannot be created (that failure has been reported), and the
    // operations then raise 91 as a call on Nothing would.
    explicit cMetaDictionary(Session& s);

    std::shared_ptr<MetaDicType> MetaDic;
    Str Caption;               // the list's name; a list with an empty caption is not shown
    Str CategoryCaption;       // heading for the entries' Category
    Str SuperCategoryCaption;  // heading for the entries' SuperCategory
    std::int16_t Index = 0;    // the list's number

    // Adds one entry; an empty name is ignored, a name already present (in
    // any letter case) is dropped and the first entry stays. No trap: errors
    // go to the caller.
    void AddMeta(Str name, const Str& category, Currency hourlyRate, std::int32_t metaID,
                 const Str& superCategory, std::optional<bool> enabled = std::nullopt);
    // Room for this many entries whose names together have at most
    // nameChars code units, so that adding them allocates nothing more.
    void reserve(std::size_t entries, std::size_t nameChars);
    // One entry per remaining row of a recordset (EOF, MoveNext, Fields,
    // Fields.Count, Fields.Item(index or name).Value). No trap: errors go to
    // the caller and the rows added before stay.
    void ReadFromRecordset(const Variant& recordset);
    // Clear, then AddItem every key in insertion order. Errors are reported
    // under "cMetaDictionary.subFillcombo".
    void FillCombo(const Variant& combo) noexcept;
    // Null gives integer 0 (numeric) or an empty text; anything else comes
    // back as it is (numeric) or converted to text.
    Variant fncSafeValue(const Variant& value, bool& numeric);

  private:
    Session& s_;
    // Where this list's entries are allocated (see cMetaDictionary.cpp).
    std::shared_ptr<class EntryPool> pool_;
};

}  // namespace hb
