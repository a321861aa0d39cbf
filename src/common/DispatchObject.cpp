#include "common/DispatchObject.h"

#include <algorithm>

namespace hb {

namespace {
const Variant& missingValue() {
    static const Variant m = Variant::missing();
    return m;
}
}  // namespace

const Variant& argAt(const Args& args, std::size_t i) {
    return i < args.size() ? args[i] : missingValue();
}

bool hasArg(const Args& args, std::size_t i) {
    return i < args.size() && !args[i].isMissing();
}

const Variant& requiredArg(const Args& args, std::size_t i) {
    if (!hasArg(args, i)) raise(449, u"Argument not optional");
    return args[i];
}

Str foldMemberName(StrView name) {
    Str out(name);
    for (auto& c : out) {
        if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + 32);
    }
    return out;
}

MemberTable& MemberTable::property(StrView name, Getter get, Putter put) {
    Member m;
    m.name = Str(name);
    m.get = std::move(get);
    m.put = std::move(put);
    members_[foldMemberName(name)] = std::move(m);
    return *this;
}

MemberTable& MemberTable::method(StrView name, Method call) {
    Member m;
    m.name = Str(name);
    m.isMethod = true;
    m.call = std::move(call);
    members_[foldMemberName(name)] = std::move(m);
    return *this;
}

MemberTable& MemberTable::defaultMember(StrView name) {
    default_ = foldMemberName(name);
    return *this;
}

MemberTable& MemberTable::events(StrView eventInterface) {
    Str f = foldMemberName(eventInterface);
    if (std::find(events_.begin(), events_.end(), f) == events_.end()) events_.push_back(f);
    return *this;
}

MemberTable& MemberTable::enumerable(Enumerator enumerator) {
    enumerator_ = std::move(enumerator);
    return *this;
}

MemberTable& MemberTable::inherit(const MemberTable& base) {
    for (const auto& [key, m] : base.members_)
        members_.emplace(key, m);
    if (default_.empty()) default_ = base.default_;
    for (const auto& e : base.events_)
        events(e);
    if (!enumerator_) enumerator_ = base.enumerator_;
    return *this;
}

const MemberTable::Member* MemberTable::find(StrView name) const {
    Str key = name.empty() ? default_ : foldMemberName(name);
    if (key.empty()) return nullptr;
    auto it = members_.find(key);
    return it == members_.end() ? nullptr : &it->second;
}

bool MemberTable::hasEvents(StrView eventInterface) const {
    Str f = foldMemberName(eventInterface);
    return std::find(events_.begin(), events_.end(), f) != events_.end();
}

std::vector<Str> MemberTable::memberNames() const {
    std::vector<Str> names;
    names.reserve(members_.size());
    for (const auto& [key, m] : members_)
        names.push_back(m.name);
    std::sort(names.begin(), names.end());
    return names;
}

DispatchObject::DispatchObject(Str typeName, std::shared_ptr<const MemberTable> members)
    : typeName_(std::move(typeName)), members_(std::move(members)) {}

DispatchObject::~DispatchObject() = default;

Variant DispatchObject::invoke(CallKind kind, const Str& member, Args& args) {
    const MemberTable::Member* m = members_->find(member);
    if (!m) raise(err::NoSuchMember);
    switch (kind) {
        case CallKind::Method:
        case CallKind::PropertyGet:
            // As IDispatch servers do, a property may be read with the method
            // flag and a method without arguments called as a property get.
            if (m->isMethod) return m->call(*this, args);
            if (!m->get) raise(err::NoSuchMember);
            return m->get(*this, args);
        case CallKind::PropertyPut:
        case CallKind::PropertyPutRef: {
            if (m->isMethod || !m->put) raise(err::NoSuchMember);
            if (args.empty()) raise(449, u"Argument not optional");
            Variant value = std::move(args.back());
            args.pop_back();
            struct Restore {  // the caller's argument list stays as it was
                Args& a;
                Variant& v;
                ~Restore() { a.push_back(std::move(v)); }
            } restore{args, value};
            m->put(*this, args, value.deref());
            return Variant();
        }
    }
    raise(err::NoSuchMember);
}

EventConnection DispatchObject::subscribe(const Str& eventInterface,
                                          std::shared_ptr<EventSink> sink) {
    if (!members_->hasEvents(eventInterface) || !sink) raise(err::NoSuchMember);
    std::uint64_t id = nextSubscription_++;
    subscriptions_.push_back({id, foldMemberName(eventInterface), std::move(sink)});
    std::weak_ptr<Object> weak = weak_from_this();
    return EventConnection([weak, id] {
        if (auto self = weak.lock()) static_cast<DispatchObject&>(*self).unsubscribe(id);
    });
}

void DispatchObject::unsubscribe(std::uint64_t id) {
    std::erase_if(subscriptions_, [id](const Subscription& s) { return s.id == id; });
}

std::vector<Variant> DispatchObject::enumerate() {
    const auto& e = members_->enumerator();
    if (!e) raise(err::NoSuchMember);
    return e(*this);
}

void DispatchObject::fire(StrView eventInterface, const Str& member, Args& args) {
    Str iface = foldMemberName(eventInterface);
    std::vector<std::pair<std::uint64_t, std::shared_ptr<EventSink>>> targets;
    for (const auto& s : subscriptions_) {
        if (s.eventInterface == iface) targets.emplace_back(s.id, s.sink);
    }
    for (auto& [id, sink] : targets) {
        bool still = std::any_of(subscriptions_.begin(), subscriptions_.end(),
                                 [id = id](const Subscription& s) { return s.id == id; });
        if (still) sink->onEvent(member, args);
    }
}

std::size_t DispatchObject::sinkCount(StrView eventInterface) const {
    if (eventInterface.empty()) return subscriptions_.size();
    Str iface = foldMemberName(eventInterface);
    return static_cast<std::size_t>(
        std::count_if(subscriptions_.begin(), subscriptions_.end(),
                      [&](const Subscription& s) { return s.eventInterface == iface; }));
}

void DispatchObject::disconnectAllSinks() {
    auto dropped = std::move(subscriptions_);
    subscriptions_.clear();
    // dropped sinks are released here, outside the member list
}

}  // namespace hb
