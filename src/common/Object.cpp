#include "common/Object.h"

#include "common/ErrorTrap.h"

namespace hb {

EventConnection& EventConnection::operator=(EventConnection&& other) noexcept {
    if (this != &other) {
        disconnect();
        disconnect_ = std::move(other.disconnect_);
        other.disconnect_ = nullptr;
    }
    return *this;
}

void EventConnection::disconnect() noexcept {
    if (disconnect_) {
        auto d = std::move(disconnect_);
        disconnect_ = nullptr;
        try {
            d();
        } catch (...) {
        }
    }
}

EventConnection Object::subscribe(const Str&, std::shared_ptr<EventSink>) {
    raise(err::NoSuchMember);
}

std::vector<Variant> Object::enumerate() {
    raise(err::NoSuchMember);
}

Variant Object::get(const Str& member, Args args) {
    return invoke(CallKind::PropertyGet, member, args);
}

void Object::put(const Str& member, Variant value, Args args) {
    args.push_back(std::move(value));
    invoke(CallKind::PropertyPut, member, args);
}

void Object::putRef(const Str& member, Variant value, Args args) {
    args.push_back(std::move(value));
    invoke(CallKind::PropertyPutRef, member, args);
}

Variant Object::call(const Str& member, Args args) {
    return invoke(CallKind::Method, member, args);
}

bool sameObject(const Variant& a, const Variant& b) {
    ObjectPtr pa = a.deref().toObject();
    ObjectPtr pb = b.deref().toObject();
    if (!pa || !pb) return !pa && !pb;
    return pa->identity() == pb->identity();
}

void FunctionSink::onEvent(const Str& member, Args& args) noexcept {
    try {
        if (handler_) handler_(member, args);
    } catch (...) {
    }
}

void describeCurrentException(std::int32_t& number, Str& description) noexcept {
    try {
        throw;
    } catch (const AutomationError& e) {
        number = e.number();
        description = e.description();
    } catch (const std::bad_alloc&) {
        number = 7;
        description = AutomationError::standardDescription(7);
    } catch (const std::exception& e) {
        number = 440;
        description = fromUtf8(e.what());
    } catch (...) {
        number = 440;
        description = AutomationError::standardDescription(440);
    }
}

}  // namespace hb
