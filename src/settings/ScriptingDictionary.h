#pragma once
// A native stand-in for Scripting.Dictionary: keys are texts, items are kept
// In insertion order, and with the text compare mode (CompareMode 1, what
// fncCreateDic sets) keys match without regard to letter case.
// Lookups go through an open-addressing hash index over the entries (the
// hash of the case-folded key is kept in the index), so Exists, Item and
// Add cost O(1). The keys are copied into large blocks the dictionary owns
// rather than into a string each: metadata lists of tens of thousands of
// names load in one pass with no allocation per key, and are given back in
// a few frees.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "common/AutomationError.h"
#include "common/Str.h"
#include "common/Text.h"

namespace hb {

template <class T>
class ScriptingDictionary {
  public:
    // The key (as first added; it stays valid as long as the entry is in
    // the dictionary) and the item.
    using Entry = std::pair<StrView, T>;

    ScriptingDictionary() = default;
    ScriptingDictionary(ScriptingDictionary&&) noexcept = default;
    ScriptingDictionary& operator=(ScriptingDictionary&&) noexcept = default;
    // A copy holds its own keys.
    ScriptingDictionary(const ScriptingDictionary& other) : compare_(other.compare_) {
        copyFrom(other);
    }
    ScriptingDictionary& operator=(const ScriptingDictionary& other) {
        if (this != &other) {
            ScriptingDictionary copy(other);
            *this = std::move(copy);
        }
        return *this;
    }

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
    void Add(StrView key, T item) {
        if (!tryAdd(key, std::move(item))) raise(457);
    }

    // Adds an item unless the key is present (one lookup for Exists + Add);
    // true when it was added.
    bool tryAdd(StrView key, T item) {
        return tryAddWith(key, [&]() -> T&& { return std::move(item); });
    }
    // tryAdd with the item made by make() only when the key is new.
    template <class Make>
    bool tryAddWith(StrView key, Make&& make) {
        const std::uint32_t h = hashOf(key);
        if (lookup(key, h) != kNone) return false;
        // Room first, so that a failure leaves the dictionary as it was.
        if (!roomFor(entries_.size() + 1, slots_.size()))
            rehash(slots_.empty() ? 16 : slots_.size() * 2);
        if (entries_.size() == entries_.capacity())
            entries_.reserve(std::max<std::size_t>(8, entries_.size() * 2));
        // The key is copied before make() runs, which may take it over.
        char16_t* stored = keyRoom(key.size());
        copyKey(stored, key);
        entries_.emplace_back(StrView(stored, key.size()), make());
        takeKey(key.size());
        place(h, entries_.size() - 1);
        return true;
    }

    // Room for n entries, and for keyChars code units of their keys, without
    // growing.
    void reserve(std::size_t n, std::size_t keyChars = 0) {
        entries_.reserve(n);
        std::size_t size = slots_.empty() ? 16 : slots_.size();
        while (!roomFor(n, size))
            size *= 2;
        if (size > slots_.size()) rehash(size);
        if (keyChars > 0 && keyChars > keyRoomLeft()) newKeyBlock(keyChars);
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
    // The place of a key in insertion order, or -1.
    std::ptrdiff_t position(StrView key) const {
        const std::size_t at = lookup(key, hashOf(key));
        return at == kNone ? -1 : static_cast<std::ptrdiff_t>(at);
    }
    // The key as stored (its first spelling), or nullptr.
    const StrView* storedKey(StrView key) const {
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
        keyDropped_ += entries_[at].first.size();
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
        // Keys of removed entries stay in their blocks; once they are most
        // of what the blocks hold, the live keys move to a block of their own.
        if (keyDropped_ > 1024 && keyDropped_ > keyUsed_ - keyDropped_) compactKeys();
    }
    void RemoveAll() {
        entries_.clear();
        slots_.clear();
        keyBlocks_.clear();
        keyFree_ = keyEnd_ = nullptr;
        keyUsed_ = keyDropped_ = 0;
    }

    // Keys and items in insertion order (For Each over the dictionary yields
    // the keys).
    std::vector<Str> Keys() const {
        std::vector<Str> keys;
        keys.reserve(entries_.size());
        for (const auto& e : entries_)
            keys.emplace_back(e.first);
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
    static constexpr std::size_t kKeyBlock = 4096;  // code units

    // The index is kept at most three quarters full: probes stay short, and
    // the table of a large list stays small enough to be found in the cache.
    static bool roomFor(std::size_t entries, std::size_t slots) { return entries * 4 <= slots * 3; }

    // The hash of a key: its code units (case-folded in text mode) taken
    // four at a time into 64-bit words, each word mixed in with one
    // multiplication. Four ASCII code units are folded at once.
    std::uint32_t hashOf(StrView key) const {
        const bool fold = compare_ == text::Compare::Text;
        std::uint64_t h = key.size() * 0x9E3779B97F4A7C15ull;
        const char16_t* p = key.data();
        std::size_t left = key.size();
        while (left > 0) {
            std::uint64_t word = 0;
            if (left >= 4) {
                for (int k = 0; k < 4; ++k)
                    word |= static_cast<std::uint64_t>(p[k]) << (16 * k);
                if (fold && (word & 0xFF80FF80FF80FF80ull) == 0) {
                    word |= asciiUpperBits(word);
                } else if (fold) {
                    word = 0;
                    for (int k = 0; k < 4; ++k)
                        word |= static_cast<std::uint64_t>(text::foldChar(p[k])) << (16 * k);
                }
                p += 4;
                left -= 4;
            } else {
                for (int k = 0; left > 0; ++k, ++p, --left) {
                    const char16_t c = fold ? text::foldChar(*p) : *p;
                    word |= static_cast<std::uint64_t>(c) << (16 * k);
                }
            }
            h = (h ^ word) * 0xFF51AFD7ED558CCDull;
            h ^= h >> 32;
        }
        h *= 0xC4CEB9FE1A85EC53ull;
        return static_cast<std::uint32_t>(h >> 32);
    }
    // For four ASCII code units in the 16-bit lanes of word: 0x20 in the
    // lanes holding 'A'..'Z', so that OR-ing it in gives their small letters.
    static std::uint64_t asciiUpperBits(std::uint64_t word) {
        constexpr std::uint64_t lanes = 0x0001000100010001ull;
        const std::uint64_t atLeastA = word + (0x80 - 'A') * lanes;    // bit 7 set: >= 'A'
        const std::uint64_t aboveZ = word + (0x80 - 'Z' - 1) * lanes;  // bit 7 set: > 'Z'
        return ((atLeastA & ~aboveZ) & (0x80 * lanes)) >> 2;
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
            if (tag(slot) == h && sameKey(entries_[position(slot)].first, key))
                return position(slot);
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

    // Key storage: code units are taken from the current block in order;
    // a key that does not fit starts a new block.
    std::size_t keyRoomLeft() const { return static_cast<std::size_t>(keyEnd_ - keyFree_); }
    void newKeyBlock(std::size_t chars) {
        keyBlocks_.emplace_back(new char16_t[chars]);
        keyFree_ = keyBlocks_.back().get();
        keyEnd_ = keyFree_ + chars;
    }
    // Where the next key of n code units goes; the room is taken by takeKey
    // once its entry is in.
    char16_t* keyRoom(std::size_t n) {
        if (n > keyRoomLeft()) newKeyBlock(std::max(n, kKeyBlock));
        return keyFree_;
    }
    static void copyKey(char16_t* at, StrView key) {
        if (!key.empty()) std::memcpy(at, key.data(), key.size() * sizeof(char16_t));
    }
    void takeKey(std::size_t n) {
        keyFree_ += n;
        keyUsed_ += n;
    }
    void compactKeys() {
        std::size_t live = 0;
        for (const auto& e : entries_)
            live += e.first.size();
        std::vector<std::unique_ptr<char16_t[]>> blocks;
        blocks.swap(keyBlocks_);
        keyFree_ = keyEnd_ = nullptr;
        keyUsed_ = keyDropped_ = 0;
        if (live > 0) newKeyBlock(live);
        for (auto& e : entries_) {
            char16_t* stored = keyRoom(e.first.size());
            copyKey(stored, e.first);
            takeKey(e.first.size());
            e.first = StrView(stored, e.first.size());
        }
    }
    void copyFrom(const ScriptingDictionary& other) {
        std::size_t chars = 0;
        for (const auto& e : other.entries_)
            chars += e.first.size();
        reserve(other.entries_.size(), chars);
        for (const auto& e : other.entries_)
            tryAdd(e.first, e.second);
    }

    text::Compare compare_ = text::Compare::Binary;
    std::vector<Entry> entries_;
    std::vector<std::uint64_t> slots_;  // open addressing (see roomFor)
    std::vector<std::unique_ptr<char16_t[]>> keyBlocks_;
    char16_t* keyFree_ = nullptr;
    char16_t* keyEnd_ = nullptr;
    std::size_t keyUsed_ = 0;     // code units taken by keys, removed ones included
    std::size_t keyDropped_ = 0;  // of those, the removed entries' keys
};

}  // namespace hb
