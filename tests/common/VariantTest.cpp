// The automation value itself: types, by-reference slots, object access.
#include <gtest/gtest.h>

#include "common/Object.h"
#include "common/Variant.h"
#include "support/ErrorOf.h"

namespace hb {
namespace {

class Thing : public Object {
  public:
    Variant invoke(CallKind kind, const Str& member, Args& args) override {
        lastKind = kind;
        lastMember = member;
        lastArgs = args;
        if (member == u"Name") {
            if (kind == CallKind::PropertyPut) {
                name = args.back().toStr();
                return Variant();
            }
            return Variant(name);
        }
        if (member == u"Twice") return Variant(args.at(0).toLong() * 2);
        raise(err::NoSuchMember);
    }
    Str typeName() const override { return u"Thing"; }

    Str name = u"first";
    CallKind lastKind = CallKind::Method;
    Str lastMember;
    Args lastArgs;
};

TEST(Variant, Types) {
    EXPECT_EQ(Variant().type(), Variant::Type::Empty);
    EXPECT_EQ(Variant::null().type(), Variant::Type::Null);
    EXPECT_EQ(Variant(std::int16_t{1}).type(), Variant::Type::Integer);
    EXPECT_EQ(Variant(1).type(), Variant::Type::Long);
    EXPECT_EQ(Variant(1.0).type(), Variant::Type::Double);
    EXPECT_EQ(Variant(Currency{}).type(), Variant::Type::Currency);
    EXPECT_EQ(Variant(Date{}).type(), Variant::Type::Date);
    EXPECT_EQ(Variant(u"x").type(), Variant::Type::String);
    EXPECT_EQ(Variant(StrView(u"x")).type(), Variant::Type::String);
    EXPECT_EQ(Variant(true).type(), Variant::Type::Boolean);
    EXPECT_EQ(Variant(nullptr).type(), Variant::Type::Object);
    EXPECT_EQ(Variant(std::make_shared<Thing>()).type(), Variant::Type::Object);
    EXPECT_EQ(Variant::missing().type(), Variant::Type::Missing);
    EXPECT_TRUE(Variant::nothing().isNothing());
    EXPECT_FALSE(Variant(std::make_shared<Thing>()).isNothing());
    EXPECT_FALSE(Variant().isNothing());
    EXPECT_TRUE(Variant::missing().isMissing());
    EXPECT_EQ(Variant::error(-2146826246).type(), Variant::Type::Error);
}

// An error value keeps its code, is equal only to the same code, and
// converts to nothing else.
TEST(Variant, ErrorValues) {
    const Variant e = Variant::error(-2146826246);  // CVErr(2042)
    EXPECT_TRUE(e.isError());
    EXPECT_EQ(e.errorCode(), -2146826246);
    EXPECT_EQ(Variant::byRef(std::make_shared<Variant>(e)).errorCode(), -2146826246);
    EXPECT_EQ(e, Variant::error(-2146826246));
    EXPECT_NE(e, Variant::error(-2147467259));
    EXPECT_NE(e, Variant(std::int32_t{-2146826246}));
    EXPECT_FALSE(isNumeric(e));
    EXPECT_EQ(debugString(e), "Error 0x800A07FA");
    for (auto convert :
         {+[](const Variant& v) { v.toInteger(); }, +[](const Variant& v) { v.toLong(); },
          +[](const Variant& v) { v.toDouble(); }, +[](const Variant& v) { v.toCurrency(); },
          +[](const Variant& v) { v.toBool(); }, +[](const Variant& v) { v.toStr(); },
          +[](const Variant& v) { v.toDate(); }})
        EXPECT_EQ(errorOf([&] { convert(e); }), 13);
    EXPECT_EQ(errorOf([&] { Variant(std::int32_t{5}).errorCode(); }), 13);
}

TEST(Variant, ByRefSlots) {
    auto slot = std::make_shared<Variant>(false);
    Variant ref = Variant::byRef(slot);
    EXPECT_TRUE(ref.isByRef());
    EXPECT_EQ(ref.deref().type(), Variant::Type::Boolean);
    EXPECT_FALSE(ref.toBool());
    ref.assign(true);
    EXPECT_TRUE(*slot == Variant(true));
    EXPECT_TRUE(ref.toBool());
    EXPECT_TRUE(ref.isByRef());  // still the slot
    Variant plain(1);
    plain.assign(Variant(u"two"));
    EXPECT_EQ(plain, Variant(u"two"));
    // Conversions see through the slot.
    slot->assign(Variant(12.5));
    EXPECT_EQ(ref.toInteger(), 12);
    EXPECT_EQ(ref.toStr(), u"12.5");
}

TEST(Variant, Equality) {
    EXPECT_EQ(Variant(), Variant());
    EXPECT_EQ(Variant::null(), Variant::null());
    EXPECT_NE(Variant(), Variant::null());
    EXPECT_EQ(Variant(1), Variant(1));
    EXPECT_NE(Variant(1), Variant(std::int16_t{1}));  // type matters
    EXPECT_NE(Variant(1), Variant(1.0));
    EXPECT_EQ(Variant(u"a"), Variant(Str(u"a")));
    EXPECT_NE(Variant(u"a"), Variant(u"A"));
    auto t = std::make_shared<Thing>();
    EXPECT_EQ(Variant(t), Variant(t));
    EXPECT_NE(Variant(t), Variant(std::make_shared<Thing>()));
    EXPECT_EQ(Variant::nothing(), Variant(nullptr));
    EXPECT_EQ(Variant(Currency{5}), Variant(Currency{5}));
    EXPECT_EQ(Variant(Date{5}), Variant(Date{5}));
}

TEST(Variant, ObjectAccess) {
    auto t = std::make_shared<Thing>();
    Variant v(t);
    EXPECT_EQ(v.get(u"Name"), Variant(u"first"));
    EXPECT_EQ(t->lastKind, CallKind::PropertyGet);
    v.put(u"Name", Variant(u"second"));
    EXPECT_EQ(t->lastKind, CallKind::PropertyPut);
    EXPECT_EQ(t->name, u"second");
    EXPECT_EQ(v.call(u"Twice", {Variant(21)}), Variant(42));
    EXPECT_EQ(t->lastKind, CallKind::Method);
    EXPECT_EQ(&v.obj(), t.get());
    EXPECT_EQ(v.toObject(), t);
    EXPECT_EQ(errorOf([&] { v.call(u"Nope"); }), 438);
    // Through a by-reference slot.
    Variant ref = Variant::byRef(std::make_shared<Variant>(t));
    EXPECT_EQ(ref.get(u"Name"), Variant(u"second"));
}

TEST(Variant, ObjectErrors) {
    Variant nothing = Variant::nothing();
    EXPECT_EQ(errorOf([&] { nothing.get(u"Name"); }), 91);
    EXPECT_EQ(errorOf([&] { nothing.put(u"Name", Variant(1)); }), 91);
    EXPECT_EQ(errorOf([&] { nothing.call(u"Name"); }), 91);
    EXPECT_EQ(errorOf([&] { nothing.obj(); }), 91);
    EXPECT_EQ(nothing.toObject(), nullptr);
    for (const Variant& v : {Variant(), Variant(1), Variant(u"x"), Variant::null()}) {
        EXPECT_EQ(errorOf([&] { v.get(u"Name"); }), 424);
        EXPECT_EQ(errorOf([&] { v.put(u"Name", Variant(1)); }), 424);
        EXPECT_EQ(errorOf([&] { v.call(u"Name"); }), 424);
        EXPECT_EQ(errorOf([&] { v.obj(); }), 424);
        EXPECT_EQ(errorOf([&] { v.toObject(); }), 424);
    }
    try {
        nothing.obj();
    } catch (const AutomationError& e) {
        EXPECT_EQ(e.description(), u"Object variable or With block variable not set");
    }
}

TEST(Variant, DebugString) {
    EXPECT_EQ(debugString(Variant()), "Empty");
    EXPECT_EQ(debugString(Variant(1)), "Long 1");
    EXPECT_EQ(debugString(Variant(u"x")), "String \"x\"");
    EXPECT_EQ(debugString(Variant(std::make_shared<Thing>())), "Object Thing");
    EXPECT_EQ(debugString(Variant::nothing()), "Nothing");
}

}  // namespace
}  // namespace hb
