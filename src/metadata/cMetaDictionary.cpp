#include "metadata/cMetaDictionary.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <vector>

#include "common/ErrorTrap.h"
#include "settings/modScriptingDic.h"

namespace hb {

// The entries of one list, constructed one after another in blocks: a list
// read from the settings holds tens of thousands of them, and one heap
// allocation (and later one free and one destructor call through the
// shared pointer) each made reading and replacing the lists cost several
// times the parse itself. Every entry handed out shares the ownership of
// its block, so a block goes when the list and every entry taken from it
// are gone.
class EntryPool {
  public:
    // A new entry with its fields at their defaults.
    std::shared_ptr<cMetaData> make() {
        if (!block_ || block_->full())
            block_ = std::make_shared<Block>(block_ ? std::min(block_->capacity() * 2, kMaxBlock)
                                                    : kFirstBlock);
        return std::shared_ptr<cMetaData>(block_, block_->add());
    }
    // Room for n more entries in the current block.
    void reserve(std::size_t n) {
        if (!block_ || block_->room() < n) block_ = std::make_shared<Block>(n);
    }

  private:
    static constexpr std::size_t kFirstBlock = 16;
    static constexpr std::size_t kMaxBlock = 4096;

    // Storage for a fixed number of entries, constructed in order; entries
    // never move.
    class Block {
      public:
        explicit Block(std::size_t capacity)
            : items_(std::allocator<cMetaData>().allocate(capacity)), capacity_(capacity) {}
        Block(const Block&) = delete;
        Block& operator=(const Block&) = delete;
        ~Block() {
            std::destroy_n(items_, size_);
            std::allocator<cMetaData>().deallocate(items_, capacity_);
        }
        std::size_t capacity() const { return capacity_; }
        std::size_t room() const { return capacity_ - size_; }
        bool full() const { return size_ == capacity_; }
        // Default-initialised rather than value-initialised: the members'
        // own initialisers give every field its value, and clearing the
        // memory first is a good part of the cost of a large list.
        cMetaData* add() {
            cMetaData* entry = ::new (static_cast<void*>(items_ + size_)) cMetaData;
            ++size_;
            return entry;
        }

      private:
        cMetaData* items_;
        std::size_t capacity_;
        std::size_t size_ = 0;
    };
    std::shared_ptr<Block> block_;
};

cMetaDictionary::cMetaDictionary(Session& s) : s_(s), pool_(std::make_shared<EntryPool>()) {
    MetaDic = fncCreateDic<std::shared_ptr<cMetaData>>(s);
}

void cMetaDictionary::AddMeta(Str name, const Str& category, Currency hourlyRate,
                              std::int32_t metaID, const Str& superCategory,
                              std::optional<bool> enabled) {
    // 1. An empty name is ignored.
    if (name.empty()) return;
    if (!MetaDic) raise(err::ObjectVariableNotSet);
    // 2./3. The first entry of a name wins (Exists, then Add); the entry is
    // only made for a name not yet present.
    MetaDic->tryAddWith(name, [&] {
        auto entry = pool_->make();
        entry->MetaName = std::move(name);
        entry->Category = category;
        entry->HourlyRate = hourlyRate;
        entry->MetaID = metaID;
        entry->SuperCategory = superCategory;
        entry->Enabled = enabled.value_or(true);
        return entry;
    });
}

void cMetaDictionary::reserve(std::size_t entries, std::size_t nameChars) {
    if (!MetaDic) return;
    MetaDic->reserve(entries, nameChars);
    pool_->reserve(entries);
}

Variant cMetaDictionary::fncSafeValue(const Variant& value, bool& numeric) {
    const Variant& v = value.deref();
    if (numeric) {
        if (v.isNull()) return Variant(std::int16_t{0});
        return v;
    }
    if (v.isNull()) return Variant(Str());
    return Variant(v.toStr(s_.platform.userLocale()));
}

void cMetaDictionary::ReadFromRecordset(const Variant& recordset) {
    const Locale loc = s_.platform.userLocale();
    bool numeric = true;
    bool text = false;
    // 1. The Fields collection, once.
    const Variant fields = recordset.get(u"Fields");
    auto field = [&](const Variant& index) { return fields.get(u"Item", {index}).get(u"Value"); };

    std::int32_t metaID = 0;
    Currency rate;
    Str category;
    Str superCategory;
    bool enabled = true;
    // 2.
    while (!recordset.get(u"EOF").toBool(loc)) {
        if (fields.get(u"Count").toLong(loc) > 1) {
            metaID = field(Variant(std::int32_t{0})).toLong(loc);
            rate = fncSafeValue(field(Variant(Str(u"curRate"))), numeric).toCurrency(loc);
            category = fncSafeValue(field(Variant(Str(u"strCategory"))), text).toStr(loc);
            superCategory = fncSafeValue(field(Variant(Str(u"strSuperCategory"))), text).toStr(loc);
            enabled = fncSafeValue(field(Variant(Str(u"blnEnabled"))), text).toBool(loc);
        } else {
            // A bare list of names: a running MetaID (32-bit; overflow is an
            // error), enabled, the other values kept from the previous row.
            if (metaID == INT32_MAX) raise(err::Overflow);
            ++metaID;
            enabled = true;
        }
        const Str name = fncSafeValue(field(Variant(Str(u"strName"))), text).toStr(loc);
        AddMeta(name, category, rate, metaID, superCategory, enabled);
        recordset.call(u"MoveNext");
    }
}

void cMetaDictionary::FillCombo(const Variant& combo) noexcept {
    trap(s_, u"cMetaDictionary.subFillcombo", [&] {
        combo.call(u"Clear");
        if (!MetaDic) raise(err::ObjectVariableNotSet);
        for (const auto& entry : *MetaDic)
            combo.call(u"AddItem", {Variant(Str(entry.first))});
    });
}

}  // namespace hb
