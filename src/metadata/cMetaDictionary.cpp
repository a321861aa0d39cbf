#include "metadata/cMetaDictionary.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "common/ErrorTrap.h"
#include "settings/modScriptingDic.h"

namespace hb {

// The entries of one list, carved one after another out of large blocks: a
// list read from the settings holds tens of thousands of them, and one
// heap allocation (and later one free) each made reading and replacing the
// lists cost several times the parse itself. An entry's memory is given
// back with the pool, when the list and every entry handed out are gone.
class EntryPool {
  public:
    void* take(std::size_t bytes, std::size_t align) {
        std::size_t at = (used_ + align - 1) & ~(align - 1);
        if (blocks_.empty() || at + bytes > kBlock) {
            // Not cleared: every entry is constructed in place.
            blocks_.emplace_back(new std::byte[std::max(kBlock, bytes)]);
            at = 0;
        }
        used_ = at + bytes;
        return blocks_.back().get() + at;
    }

  private:
    static constexpr std::size_t kBlock = 64 * 1024;
    std::vector<std::unique_ptr<std::byte[]>> blocks_;
    std::size_t used_ = 0;
};

namespace {

template <class U>
struct PoolAllocator {
    using value_type = U;
    std::shared_ptr<EntryPool> pool;
    explicit PoolAllocator(std::shared_ptr<EntryPool> p) : pool(std::move(p)) {}
    template <class V>
    PoolAllocator(const PoolAllocator<V>& other) : pool(other.pool) {}
    U* allocate(std::size_t n) {
        return static_cast<U*>(pool->take(n * sizeof(U), alignof(U)));
    }
    void deallocate(U*, std::size_t) noexcept {}
    template <class V>
    bool operator==(const PoolAllocator<V>& other) const {
        return pool == other.pool;
    }
};

}  // namespace

cMetaDictionary::cMetaDictionary(Session& s) : s_(s), pool_(std::make_shared<EntryPool>()) {
    MetaDic = fncCreateDic<std::shared_ptr<cMetaData>>(s);
}

void cMetaDictionary::AddMeta(Str name, const Str& category, Currency hourlyRate,
                              std::int32_t metaID, const Str& superCategory,
                              std::optional<bool> enabled) {
    // 1. An empty name is ignored.
    if (name.empty()) return;
    // 2.
    auto entry = std::allocate_shared<cMetaData>(PoolAllocator<cMetaData>(pool_));
    entry->MetaName = std::move(name);
    entry->Category = category;
    entry->HourlyRate = hourlyRate;
    entry->MetaID = metaID;
    entry->SuperCategory = superCategory;
    entry->Enabled = enabled.value_or(true);
    // 3. The first entry of a name wins.
    if (!MetaDic) raise(err::ObjectVariableNotSet);
    Str key = entry->MetaName;
    MetaDic->tryAdd(std::move(key), std::move(entry));  // Exists, then Add
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
            combo.call(u"AddItem", {Variant(entry.first)});
    });
}

}  // namespace hb
