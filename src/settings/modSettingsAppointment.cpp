#include "settings/modSettingsAppointment.h"

#include "common/Constants.h"
#include "common/ErrorTrap.h"
#include "common/Text.h"
#include "diagnostics/modErroHandling.h"

namespace hb {

namespace {

bool isSomething(const Variant& v) {
    const Variant& d = v.deref();
    return d.isObject() && !d.isNothing();
}

// The user properties' add operation. Adding a name that the item already
// has is the host's business; should the host refuse it, the existing
// property is taken instead, so that every piece ends up holding the new
// text (a second save of the settings).
Variant addUserProperty(const Variant& properties, const Str& name, std::int32_t type) {
    try {
        Variant added = properties.call(u"Add", {Variant(name), Variant(type)});
        if (isSomething(added)) return added;
    } catch (const AutomationError&) {
        Variant existing = properties.call(u"Find", {Variant(name)});
        if (isSomething(existing)) return existing;
        throw;
    }
    return properties.call(u"Find", {Variant(name)});
}

}  // namespace

Variant fncGetSettingsAppointment(Session& s, bool* blnUnreadable) noexcept {
    // Errors are ignored throughout.
    const Str subject = kSettingsSubject;
    Variant item;
    if (blnUnreadable) *blnUnreadable = false;
    // 1.
    subTrace(s, u"Trying to find appointment " + subject);
    // 2. The items collection's default item lookup by text. Only Outlook's
    // "not found" means there is none: any other failure says nothing about
    // the settings appointment, and making a new, empty one then would leave
    // two, the empty one found first from then on.
    Variant items;
    bool lookedUp = resumeNext(s, [&] { items = s.ofCalendar.get(u"Items"); });
    if (lookedUp && !resumeNext(s, [&] { item = items.call(u"Item", {Variant(subject)}); })) {
        lookedUp = s.err.number == kOutlookNotFound;
    }
    if (!lookedUp) {
        s.err.clear();
        if (blnUnreadable) *blnUnreadable = true;
        return Variant::nothing();
    }
    if (isSomething(item)) {
        // 3. A found item whose subject differs: search by a filter instead.
        Str found;
        bool read = resumeNext(s, [&] { found = item.get(u"Subject").toStr(); });
        if (!read || found != subject) {
            Variant match;
            // A Find that raises says nothing about the item in hand: it is
            // kept. Returning nothing would leave the settings unsaved and
            // make the next lookup add a second settings appointment.
            if (resumeNext(s, [&] {
                    match = items.call(u"Find", {Variant(u"[Subject]='" + subject + u"'")});
                })) {
                item = match;
            }
        }
    } else {
        // 4. None found: create it.
        item = Variant();
        resumeNext(s, [&] { item = fncAddSettingsAppointment(s); });
    }
    s.err.clear();
    // 5.
    if (!isSomething(item)) return Variant::nothing();
    return item;
}

Variant fncAddSettingsAppointment(Session& s) {
    // 1.
    subTrace(s, u"Adding a new appointmant at Jan 1 2050");
    // 2.
    Variant item = s.ofCalendar.get(u"Items").call(u"Add", {Variant(Str(u"IPM.Appointment"))});
    // 3. Start, subject, end, reminder, in that order.
    item.put(u"Start", Variant(Date{kSettingsDay + 1.0 / 1440.0}));
    item.put(u"Subject", Variant(Str(kSettingsSubject)));
    item.put(u"End", Variant(Date{kSettingsDay + 2.0 / 1440.0}));
    item.put(u"ReminderSet", Variant(false));
    // 4.
    item.get(u"UserProperties")
        .call(u"Add", {Variant(Str(u"SettingsCount")), Variant(olprop::olNumber)});
    // 5.
    item.call(u"Save");
    return item;
}

void subFixLongProperty(Session& s, const Variant& item, const Str& strValue,
                        const Str& strName) noexcept {
    try {
        // 1.
        subTrace(s, u"Entering subFixLongProperty to save " + strName);
        // 2. k = the length in thousands, rounded halves to even (CInt of a
        // double): the highest index, not the number of pieces.
        const std::int16_t k = Variant(static_cast<double>(strValue.size()) / 1000.0).toInteger();
        // 3. Pieces strName0..strNamek of text type, 1000 characters each.
        const Variant properties = item.get(u"UserProperties");
        for (std::int32_t i = 0; i <= k; ++i) {
            Variant piece = addUserProperty(properties, strName + toStr(i), olprop::olText);
            piece.put(u"Value", Variant(text::mid(strValue, i * 1000 + 1, 1000)));
        }
        // 4. The count property of number type.
        Variant count = addUserProperty(properties, strName + u"Count", olprop::olNumber);
        count.put(u"Value", Variant(k));
    } catch (...) {
        // The trap reports the text "Failed to save " + strName (with the
        // error's number) and leaves.
        std::int32_t number = 0;
        Str description;
        describeCurrentException(number, description);
        subErrorHandler(s, u"Failed to save " + strName, number, 0, u"subFixLongProperty");
    }
}

Str fncGetLongProperty(Session& s, const Variant& item, const Str& strName) noexcept {
    // 1.
    subTrace(s, u"Entering fncGetLongProperty");
    // 2. A missing count property gives k = 0.
    std::int16_t k = 0;
    resumeNext(s, [&] {
        k = fncGetProperty(s, item, strName + u"Count", vbtype::vbInteger, Variant(Str()))
                .toInteger(s.platform.userLocale());
    });
    // 3.
    Str result;
    for (std::int32_t i = 0; i <= k; ++i) {
        resumeNext(s, [&] {
            result += fncGetProperty(s, item, strName + toStr(i), vbtype::vbString, Variant(Str()))
                          .toStr();
        });
    }
    // 4.
    s.err.clear();
    return result;
}

Variant fncGetProperty(Session& s, const Variant& item, const Str& strName, std::int16_t intType,
                       const Variant& varDefault) noexcept {
    // Errors are ignored inside: a failing step leaves the result as it is.
    const Locale loc = s.platform.userLocale();
    Variant result;
    // 1.
    subTrace(s, u"Reading the value of the Outlook property " + strName);
    // 2.
    Variant property;
    resumeNext(s,
               [&] { property = item.get(u"UserProperties").call(u"Find", {Variant(strName)}); });
    if (!isSomething(property)) {
        // 3. The default, shaped to the type.
        resumeNext(s, [&] {
            const Variant& def = varDefault.deref();
            switch (intType) {
                case vbtype::vbInteger:
                    if (isNumeric(def, loc) && def.toDouble(loc) != 0.0) {
                        result = Variant(def.toInteger(loc));
                    } else {
                        result = Variant(std::int16_t{0});
                    }
                    break;
                case vbtype::vbDate:
                    // The platform's zero date (30 December 1899) as the empty date.
                    result = Variant(Date{0.0});
                    break;
                case vbtype::vbString:
                    if (!def.toStr(loc).empty()) {
                        result = Variant(def.toStr(loc));
                    } else {
                        result = Variant(Str());
                    }
                    break;
                case vbtype::vbBoolean:
                    // Not numeric: nothing is assigned (an empty variant).
                    if (isNumeric(def, loc)) result = Variant(def.toBool(loc));
                    break;
                default:
                    break;
            }
        });
    } else {
        // 4. The value, shaped to the type.
        Variant value;
        resumeNext(s, [&] { value = property.get(u"Value"); });
        resumeNext(s, [&] {
            switch (intType) {
                case vbtype::vbInteger:
                    // A numeric value comes back unchanged (a fraction is kept).
                    result = isNumeric(value, loc) ? value : Variant(std::int16_t{0});
                    break;
                case vbtype::vbDate:
                    result = isDate(value, loc) ? Variant(value.toDate(loc)) : Variant(Date{0.0});
                    break;
                case vbtype::vbString:
                    result = Variant(value.toStr(loc));
                    break;
                case vbtype::vbBoolean:
                    result = Variant(value.toBool(loc));
                    break;
                default:
                    result = value;
                    break;
            }
        });
    }
    return result;
}

}  // namespace hb
