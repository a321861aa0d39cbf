#pragma once
// One allowed value of a metadata list.
#include <cstdint>

#include "common/Variant.h"

namespace hb {

class cMetaData {
  public:
    std::int32_t MetaID = 0;  // record number (field 0 of a row, or a running count)
    Str Category;
    Str SuperCategory;
    Currency HourlyRate;
    bool Enabled = true;
    Str MetaName;  // the entry's name, also its key in the dictionary
};

}  // namespace hb
