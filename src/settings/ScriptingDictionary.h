#pragma once
// A native stand-in for Scripting.Dictionary: keys are texts, items are kept
// In insertion order, and with the text compare mode (CompareMode 1, what
// fncCreateDic sets) keys match without regard to letter case.
// Lookups go through an open-addressing hash index over the entries (the
// hash of the case-folded key is kept in the index), so Exists, Item and
// Add cost O(1) and adding a key allocates nothing beyond the entry itself:
// metadata lists of tens of thousands of names load in one pass.
#include <cstddef>
#include <cstdint>
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
    bool Exists(StrView key) const { return lookup(key, hashOf(key)) != kNone; }

    // Adds an item; a key that is already present raises 457.
    void Add(Str key, T item) {
        if (!tryAdd(std::move(key), std::move(item))) raise(457);
    }

    // Adds an item unless the key is present (one lookup for Exists + Add);
    // true when it was added.
    bool tryAdd(Str key, T item) {
        const std::uint32_t h = hashOf(key);
        if (lookup(key, h) != kNone) return false;
        // Room first, so that a failure leaves the dictionary as it was.
        if ((entries_.size() + 1) * 2 > slots_.size()) rehash(slots_.empty() ? 16 : slots_.size() * 2);
        entries_.emplace_back(std::move(key), std::move(item));
        place(h, entries_.size() - 1);
        return true;
    }

    // Room for n entries without growing.
    void reserve(std::size_t n) {
        entries_.reserve(n);
        std::size_t size = slots_.empty() ? 16 : slots_.size();
        while (n * 2 > size)
            size *= 2;
        if (size > slots_.size()) rehash(size);
    }

    // The item of a key, or nullptr.
    T* find(StrView key) {
        const std::size_t at = lookup(key, hashOf(key));
        return at == kNone ? nullptr : &entries_[at].second;
    }
    const T* find(StrView key) const {
        const std::size_t at = lookup(key, hashOf(key));
        return at == kNone ? nullptr : &entries_[at].second;
    }
    // The key as stored (its first spelling), or nullptr.
    const Str* storedKey(StrView key) const {
        const std::size_t at = lookup(key, hashOf(key));
        return at == kNone ? nullptr : &entries_[at].first;
    }
    // Item(key) for reading; a missing key raises 5 here (the component
    // would add an empty item, which nothing in the add-in relies on).
    const T& Item(StrView key) const {
        const T* item = find(key);
        if (!item) raise(err::InvalidProcedureCall);
        return *item;
    }

    void Remove(StrView key) {
        const std::size_t at = lookup(key, hashOf(key));
        if (at == kNone) raise(32811, u"Element not found");
        entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(at));
        // The entries after it moved down one place: the index is built
        // again without it.
        std::vector<std::uint64_t> old(slots_.size(), 0);
        old.swap(slots_);
        for (std::uint64_t slot : old) {
            const std::size_t pos = position(slot);
            if (slot == 0 || pos == at) continue;
            place(tag(slot), pos > at ? pos - 1 : pos);
        }
    }
    void RemoveAll() {
        entries_.clear();
        slots_.clear();
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
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    // The hash of a key: its code units (case-folded in text mode) taken
    // four at a time into 64-bit words, each word mixed in with one
    // multiplication.
    std::uint32_t hashOf(StrView key) const {
        const bool fold = compare_ == text::Compare::Text;
        std::uint64_t h = key.size() * 0x9E3779B97F4A7C15ull;
        std::size_t i = 0;
        while (i < key.size()) {
            std::uint64_t word = 0;
            for (int k = 0; k < 4 && i < key.size(); ++k, ++i) {
                const char16_t c = fold ? text::foldChar(key[i]) : key[i];
                word |= static_cast<std::uint64_t>(c) << (16 * k);
            }
            h = (h ^ word) * 0xFF51AFD7ED558CCDull;
            h ^= h >> 32;
        }
        h *= 0xC4CEB9FE1A85EC53ull;
        return static_cast<std::uint32_t>(h >> 32);
    }
    bool sameKey(StrView a, StrView b) const {
        return compare_ == text::Compare::Text ? text::equalsNoCase(a, b) : a == b;
    }
    // A slot holds the key's hash in its high half and the entry's position
    // + 1 in its low half (0: free), so a probe compares hashes without
    // touching the entries.
    static std::uint32_t tag(std::uint64_t slot) { return static_cast<std::uint32_t>(slot >> 32); }
    static std::size_t position(std::uint64_t slot) {
        return static_cast<std::size_t>(static_cast<std::uint32_t>(slot)) - 1;
    }
    // Position of the entry with this key, or kNone.
    std::size_t lookup(StrView key, std::uint32_t h) const {
        if (slots_.empty()) return kNone;
        const std::size_t mask = slots_.size() - 1;
        for (std::size_t i = h & mask;; i = (i + 1) & mask) {
            const std::uint64_t slot = slots_[i];
            if (slot == 0) return kNone;
            if (tag(slot) == h && sameKey(entries_[position(slot)].first, key)) return position(slot);
        }
    }
    void place(std::uint32_t h, std::size_t at) {
        const std::size_t mask = slots_.size() - 1;
        std::size_t i = h & mask;
        while (slots_[i] != 0)
            i = (i + 1) & mask;
        slots_[i] = (static_cast<std::uint64_t>(h) << 32) | static_cast<std::uint32_t>(at + 1);
    }
    // The index in a table of size slots (a power of two).
    void rehash(std::size_t size) {
        std::vector<std::uint64_t> old(size, 0);
        old.swap(slots_);
        for (std::uint64_t slot : old) {
            if (slot != 0) place(tag(slot), position(slot));
        }
    }

    text::Compare compare_ = text::Compare::Binary;
    std::vector<Entry> entries_;
    std::vector<std::uint64_t> slots_;  // open addressing, at most half full
};

}  // namespace hb
