#include "languages/cPhrase.h"

#include "common/Text.h"
#include "languages/PhraseCollection.h"

namespace hb {

Variant cPhrase::invoke(CallKind kind, const Str& member, Args& args) {
    Str* field = nullptr;
    if (text::equalsNoCase(member, u"LangConstant")) {
        field = &LangConstant;
    } else if (text::equalsNoCase(member, u"LangPhrase")) {
        field = &LangPhrase;
    } else {
        raise(err::NoSuchMember);
    }
    switch (kind) {
        case CallKind::PropertyGet:
            if (!args.empty()) raise(err::NoSuchMember);
            return Variant(*field);
        case CallKind::PropertyPut:
            if (args.size() != 1) raise(err::NoSuchMember);
            *field = args.back().deref().toStr();
            return Variant();
        default:
            raise(err::NoSuchMember);
    }
}

void PhraseCollection::add(std::shared_ptr<cPhrase> item, const Str& key) {
    Str folded = text::foldCase(key);
    if (index_.contains(folded)) raise(457);
    index_.emplace(std::move(folded), items_.size());
    items_.push_back(std::move(item));
}

const std::shared_ptr<cPhrase>& PhraseCollection::item(const Str& key) const {
    auto it = index_.find(text::foldCase(key));
    if (it == index_.end()) raise(err::InvalidProcedureCall);
    return items_[it->second];
}

const std::shared_ptr<cPhrase>& PhraseCollection::item(std::int32_t index) const {
    if (index < 1 || index > count()) raise(err::SubscriptOutOfRange);
    return items_[static_cast<std::size_t>(index - 1)];
}

}  // namespace hb
