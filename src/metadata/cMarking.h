#pragma once
// The chosen value of each metadata list for one appointment, and
// the conversion to and from the billing information text (the names joined
// by the list separator Session::strListSeparator, with a leading separator).
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "common/Session.h"
#include "metadata/cMetaData.h"

namespace hb {

class cMarking {
  public:
    // One empty marking per metadata list of the session's personal
    // settings. Without a personal settings object this raises 91 (the
    // settings object is Nothing).
    explicit cMarking(Session& s);

    // One item per metadata list, in the order of MetaDataLists; only its
    // MetaName is used (empty: no value chosen).
    std::vector<std::shared_ptr<cMetaData>> colMarkings;

    // Sets the markings from a billing information text. Errors are reported
    // under "BillingToMarkings"; markings set before stay.
    void BillingToMarkings(const Str& text) noexcept;
    // The billing information text of the markings (errors reported under
    // "BillingToMarkings"; the result is then empty).
    Str MarkingCategories() noexcept;
    // An appointment's Categories text with the billing text of the
    // markings written into it. The pieces (split at the list separator,
    // matched trimmed and without regard to letter case, as Outlook keeps
    // categories) that are entries of lists 1..lists are replaced; every
    // other piece, the user's own categories and the values of later lists,
    // stays verbatim and in its place. The billing text goes, with its
    // leading separator, where the first replaced piece stood, or at the
    // end; with no other piece the result is the billing text itself.
    // Raises (91 without settings), so a caller writes nothing then.
    Str MergeIntoCategories(const Str& categories, std::size_t lists);
    // The pieces of a Categories text that are entries of lists 1..lists,
    // verbatim and joined by the list separator: the billing information
    // without the user's own categories. Raises as MergeIntoCategories.
    Str BillingPart(const Str& categories, std::size_t lists) const;
    // True when no marking is empty (also with no markings).
    bool IsComplete() const;
    // True when every marking is empty.
    bool IsEmpty() const;

    // MetaName(n), n = 1..Count(): the value of list n; 9 out of range.
    Str MetaName(std::int16_t n) const;
    void setMetaName(std::int16_t n, const Str& value);
    std::int32_t Count() const { return static_cast<std::int32_t>(colMarkings.size()); }

  private:
    bool isListEntry(const Str& piece, std::size_t lists) const;

    Session& s_;
};

}  // namespace hb
