#include "sim/Instruments.h"

#include <algorithm>

#include "sim/SimObject.h"

namespace sim {

namespace {

Str key(StrView typeName, StrView member) {
    Str k = hb::foldMemberName(typeName);
    k += u'.';
    k += hb::foldMemberName(member);
    return k;
}

std::string argsText(const Args& args) {
    std::string out;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (i) out += ", ";
        out += hb::debugString(args[i]);
    }
    return out;
}

CallOp toOp(hb::CallKind kind) {
    switch (kind) {
        case hb::CallKind::PropertyGet:
            return CallOp::PropertyGet;
        case hb::CallKind::PropertyPut:
            return CallOp::PropertyPut;
        case hb::CallKind::PropertyPutRef:
            return CallOp::PropertyPutRef;
        case hb::CallKind::Method:
            break;
    }
    return CallOp::Method;
}

// Hands the add-in's sink events whose object arguments are new Handles.
class HandleSink : public hb::EventSink {
  public:
    HandleSink(std::shared_ptr<hb::EventSink> inner, std::weak_ptr<Instruments> instruments,
               Str origin)
        : inner_(std::move(inner)),
          instruments_(std::move(instruments)),
          origin_(std::move(origin)) {}

    void onEvent(const Str& member, Args& args) noexcept override {
        try {
            auto instr = instruments_.lock();
            if (!instr) return;
            Args wrapped = instr->toAddin(args, origin_ + member);
            inner_->onEvent(member, wrapped);
        } catch (...) {
        }
    }

  private:
    std::shared_ptr<hb::EventSink> inner_;
    std::weak_ptr<Instruments> instruments_;
    Str origin_;
};

}  // namespace

const char* callOpName(CallOp op) {
    switch (op) {
        case CallOp::Method:
            return "call";
        case CallOp::PropertyGet:
            return "get";
        case CallOp::PropertyPut:
            return "let";
        case CallOp::PropertyPutRef:
            return "set";
        case CallOp::Enumerate:
            return "enum";
        case CallOp::Subscribe:
            return "advise";
    }
    return "?";
}

std::uint64_t Instruments::count(StrView member) const {
    Str m = u'.' + hb::foldMemberName(member);
    std::uint64_t n = 0;
    for (const auto& [k, c] : counts_) {
        if (k.size() >= m.size() && k.compare(k.size() - m.size(), m.size(), m) == 0) n += c;
    }
    return n;
}

std::uint64_t Instruments::count(StrView typeName, StrView member) const {
    auto it = counts_.find(key(typeName, member));
    return it == counts_.end() ? 0 : it->second;
}

std::string Instruments::logText() const {
    std::string out;
    for (const auto& r : log_) {
        out += std::to_string(r.number);
        out += ' ';
        out += callOpName(r.op);
        out += ' ';
        out += hb::toUtf8(r.typeName);
        out += '.';
        out += hb::toUtf8(r.member);
        out += '(';
        out += r.args;
        out += ')';
        if (r.failed) out += " FAILED";
        out += '\n';
    }
    return out;
}

void Instruments::resetCounts() {
    calls_ = 0;
    counts_.clear();
    log_.clear();
}

void Instruments::failCall(std::uint64_t number, std::int32_t errorNumber, Str description) {
    callFaults_[number] = CallFault{errorNumber, std::move(description)};
}

void Instruments::failMember(Str member, Str typeName, std::int32_t errorNumber, Str description) {
    memberFaults_.push_back(MemberFault{hb::foldMemberName(member), hb::foldMemberName(typeName),
                                        errorNumber, std::move(description)});
}

void Instruments::clearFaults() {
    callFaults_.clear();
    memberFaults_.clear();
}

void Instruments::beforeCall(const SimObject& target, const Str& member, CallOp op,
                             const Args& args) {
    ++calls_;
    Str typeName = target.typeName();
    ++counts_[key(typeName, member)];

    std::optional<CallFault> fault;
    if (auto it = callFaults_.find(calls_); it != callFaults_.end()) fault = it->second;
    if (!fault) {
        Str m = hb::foldMemberName(member);
        Str t = hb::foldMemberName(typeName);
        for (const auto& f : memberFaults_) {
            if (f.member == m && (f.typeName.empty() || f.typeName == t)) {
                fault = CallFault{f.number, f.description};
                break;
            }
        }
    }
    if (logging_ || fault) {
        CallRecord r{calls_, typeName, member, op, argsText(args), fault.has_value()};
        if (fault) lastFault_ = r;
        if (logging_) log_.push_back(std::move(r));
    }
    if (fault) {
        ++faultsInjected_;
        Str d = fault->description;
        if (d.empty()) {
            d = u"Simulated failure of " + typeName + u"." + member;
        }
        throw hb::AutomationError(fault->number, std::move(d));
    }
}

Variant Instruments::toAddin(const Variant& value, const Str& origin) {
    if (value.type() != Variant::Type::Object) return value;
    hb::ObjectPtr obj = value.toObject();
    auto sim = std::dynamic_pointer_cast<SimObject>(obj);
    if (!sim) return value;
    auto handle = std::make_shared<Handle>(sim, shared_from_this());
    ++handlesIssued_;
    if (handles_.size() >= compactAt_) {
        std::erase_if(handles_, [](const HandleEntry& e) { return e.handle.expired(); });
        compactAt_ = std::max<std::size_t>(64, handles_.size() * 2);
    }
    handles_.push_back(HandleEntry{handle, sim->typeName() + u" from " + origin});
    return Variant(hb::ObjectPtr(handle));
}

Args Instruments::toAddin(const Args& args, const Str& origin) {
    Args out;
    out.reserve(args.size());
    for (const auto& a : args)
        out.push_back(toAddin(a, origin));
    return out;
}

Variant Instruments::toSim(const Variant& value) {
    if (value.type() != Variant::Type::Object) return value;
    hb::ObjectPtr obj = value.toObject();
    if (auto h = std::dynamic_pointer_cast<Handle>(obj)) return Variant(hb::ObjectPtr(h->target()));
    return value;
}

Args Instruments::toSim(const Args& args) {
    Args out;
    out.reserve(args.size());
    for (const auto& a : args)
        out.push_back(toSim(a));
    return out;
}

std::shared_ptr<SimObject> Instruments::simObject(const Variant& value) {
    const Variant& v = value.deref();
    if (v.type() != Variant::Type::Object) return nullptr;
    hb::ObjectPtr obj = v.toObject();
    if (auto h = std::dynamic_pointer_cast<Handle>(obj)) return h->target();
    return std::dynamic_pointer_cast<SimObject>(obj);
}

std::size_t Instruments::liveHandleCount() const {
    return static_cast<std::size_t>(
        std::count_if(handles_.begin(), handles_.end(),
                      [](const HandleEntry& e) { return !e.handle.expired(); }));
}

std::vector<Str> Instruments::liveHandles() const {
    std::vector<Str> out;
    for (const auto& e : handles_) {
        if (!e.handle.expired()) out.push_back(e.description);
    }
    return out;
}

std::vector<Str> Instruments::liveSubscriptions() const {
    std::vector<Str> out;
    for (const auto& [id, d] : subscriptions_)
        out.push_back(d);
    return out;
}

std::vector<Str> Instruments::census() const {
    std::vector<Str> out = liveHandles();
    for (const auto& [id, d] : subscriptions_)
        out.push_back(u"subscription to " + d);
    return out;
}

std::uint64_t Instruments::addSubscription(Str description) {
    std::uint64_t id = nextSubscription_++;
    subscriptions_[id] = std::move(description);
    return id;
}

void Instruments::dropSubscription(std::uint64_t id) {
    subscriptions_.erase(id);
}

// ---- Handle ----

Handle::Handle(std::shared_ptr<SimObject> target, std::shared_ptr<Instruments> instruments)
    : target_(std::move(target)), instruments_(std::move(instruments)) {}

Variant Handle::invoke(hb::CallKind kind, const Str& member, Args& args) {
    instruments_->beforeCall(*target_, member, toOp(kind), args);
    Args simArgs = Instruments::toSim(args);
    Variant result = target_->invoke(kind, member, simArgs);
    if (result.type() != Variant::Type::Object) return result;
    return instruments_->toAddin(result, target_->typeName() + u"." + member);
}

Str Handle::typeName() const {
    return target_->typeName();
}

hb::EventConnection Handle::subscribe(const Str& eventInterface,
                                      std::shared_ptr<hb::EventSink> sink) {
    instruments_->beforeCall(*target_, eventInterface, CallOp::Subscribe, {});
    Str typeName = target_->typeName();
    auto wrapped = std::make_shared<HandleSink>(std::move(sink), instruments_,
                                                u"event " + eventInterface + u".");
    auto inner = std::make_shared<hb::EventConnection>(target_->subscribe(eventInterface, wrapped));
    std::uint64_t id = instruments_->addSubscription(eventInterface + u" of " + typeName);
    std::weak_ptr<Instruments> instr = instruments_;
    return hb::EventConnection([inner, instr, id] {
        inner->disconnect();
        if (auto i = instr.lock()) i->dropSubscription(id);
    });
}

std::vector<Variant> Handle::enumerate() {
    instruments_->beforeCall(*target_, u"_NewEnum", CallOp::Enumerate, {});
    std::vector<Variant> items = target_->enumerate();
    Str origin = u"For Each over " + target_->typeName();
    for (auto& v : items)
        v = instruments_->toAddin(v, origin);
    return items;
}

const void* Handle::identity() const {
    return target_->identity();
}

}  // namespace sim
