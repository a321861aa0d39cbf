#pragma once
// A native stand-in for Scripting.Dictionary: keys are texts, items are kept
// In insertion order, and with the text compare mode (CompareMode 1, what
// fncCreateDic sets) keys match without regard to letter case.
// Lookups go through a hash index of the (case-folded) keys, so Exists and
// Item cost O(1) instead of a walk.
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

#include "common/AutomationError.h"
#include "common/Str.h"
#include "common/Text.h"

namespace hb {

template <class T>
class ScriptingDictionary {
  public:
    using Entry = std::pair<Str, T>;  // key (as first added), item

    // CompareMode: 0 binary (case-sensitive), 1 text. Like the component, the
    // mode can only change while the dictionary is empty (5 otherwise).
    std::int32_t CompareMode() const { return compare_ == text::Compare::Text ? 1 : 0; }
    void setCompareMode(std::int32_t mode) {
        if (!entries_.empty()) raise(err::InvalidProcedureCall);
        if (mode < 0) raise(err::InvalidProcedureCall);
        compare_ = mode == 0 ? text::Compare::Binary : text::Compare::Text;
    }

    std::int32_t Count() const { return static_cast<std::int32_t>(entries_.size()); }
    bool Exists(StrView key) const { return index_.find(indexKey(key)) != index_.end(); }

    // Adds an item; a key that is already present raises 457.
    void Add(const Str& key, T item) {
        Str k = indexKey(key);
        if (index_.find(k) != index_.end()) raise(457);
        index_.emplace(std::move(k), entries_.size());
        entries_.emplace_back(key, std::move(item));
    }

    // Adds an item unless the key is present (one lookup for Exists + Add);
    // true when it was added.
    bool tryAdd(const Str& key, T item) {
        Str k = indexKey(key);
        auto [it, inserted] = index_.try_emplace(std::move(k), entries_.size());
        if (!inserted) return false;
        try {
            entries_.emplace_back(key, std::move(item));
        } catch (...) {
            index_.erase(it);
            throw;
        }
        return true;
    }

    // The item of a key, or nullptr.
    T* find(StrView key) {
        auto it = index_.find(indexKey(key));
        return it == index_.end() ? nullptr : &entries_[it->second].second;
    }
    const T* find(StrView key) const {
        auto it = index_.find(indexKey(key));
        return it == index_.end() ? nullptr : &entries_[it->second].second;
    }
    // The key as stored (its first spelling), or nullptr.
    const Str* storedKey(StrView key) const {
        auto it = index_.find(indexKey(key));
        return it == index_.end() ? nullptr : &entries_[it->second].first;
    }
    // Item(key) for reading; a missing key raises 5 here (the component
    // would add an empty item, which nothing in the add-in relies on).
    const T& Item(StrView key) const {
        const T* item = find(key);
        if (!item) raise(err::InvalidProcedureCall);
        return *item;
    }

    void Remove(StrView key) {
        auto it = index_.find(indexKey(key));
        if (it == index_.end()) raise(32811, u"Element not found");
        const std::size_t at = it->second;
        index_.erase(it);
        entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(at));
        for (auto& [k, pos] : index_) {
            if (pos > at) --pos;
        }
    }
    void RemoveAll() {
        entries_.clear();
        index_.clear();
    }

    // Keys and items in insertion order (For Each over the dictionary yields
    // the keys).
    std::vector<Str> Keys() const {
        std::vector<Str> keys;
        keys.reserve(entries_.size());
        for (const auto& e : entries_)
            keys.push_back(e.first);
        return keys;
    }
    std::vector<T> Items() const {
        std::vector<T> items;
        items.reserve(entries_.size());
        for (const auto& e : entries_)
            items.push_back(e.second);
        return items;
    }
    const std::vector<Entry>& entries() const { return entries_; }
    auto begin() const { return entries_.begin(); }
    auto end() const { return entries_.end(); }

  private:
    Str indexKey(StrView key) const {
        return compare_ == text::Compare::Text ? text::foldCase(key) : Str(key);
    }

    text::Compare compare_ = text::Compare::Binary;
    std::vector<Entry> entries_;
    std::unordered_map<Str, std::size_t> index_;
};

}  // namespace hb
