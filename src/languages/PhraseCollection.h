#pragma once
// The phrase collection: cPhrase objects in the order they were added, each
// under a key compared without regard to letter case, with the behaviour of
// the run time's Collection (a repeated key raises 457, a missing key 5).
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "common/Str.h"

namespace hb {

class cPhrase;

class PhraseCollection {
  public:
    // Add item, key: raises 457 when the key is already present.
    void add(std::shared_ptr<cPhrase> item, const Str& key);
    // Item(key): raises 5 when no item has that key.
    const std::shared_ptr<cPhrase>& item(const Str& key) const;
    // Item(index), from 1: raises 9 outside 1..Count.
    const std::shared_ptr<cPhrase>& item(std::int32_t index) const;
    std::int32_t count() const { return static_cast<std::int32_t>(items_.size()); }

    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

  private:
    std::vector<std::shared_ptr<cPhrase>> items_;
    std::unordered_map<Str, std::size_t> index_;  // folded key -> position
};

}  // namespace hb
