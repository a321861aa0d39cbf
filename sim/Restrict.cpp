// Items as a view: Jet filters (Find, Restrict), Sort, IncludeRecurrences
// and the iteration members (Count, Item, GetFirst/GetNext,
// GetLast/GetPrevious, For Each) over a sorted, restricted or expanding
// collection. The rules modelled are listed in sim/Outlook.h.
#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

#include "common/DateTime.h"
#include "common/Text.h"
#include "sim/OutlookInternal.h"

namespace sim {

// One node of a parsed filter.
struct FilterNode {
    enum class Kind : std::uint8_t { And, Or, Not, Condition } kind = Kind::Condition;
    std::shared_ptr<const FilterNode> left, right;
    enum class Op : std::uint8_t { Eq, Ne, Lt, Le, Gt, Ge } op = Op::Eq;
    Str property;  // Start, End, or a text property as written
    Str value;
    bool isDate = false;
    std::int64_t dateSeconds = 0;  // a date condition's value
};

namespace detail {

[[noreturn]] void notFound() {
    hb::raise(kNotFoundNumber, u"The attempted operation failed.  An object could not be found.");
}

std::size_t indexArg(const Variant& v, std::size_t n) {
    std::int32_t i = v.toLong();
    if (i < 1 || static_cast<std::size_t>(i) > n) {
        hb::raise(kOutlookErrorNumber, u"Array index out of bounds.");
    }
    return static_cast<std::size_t>(i - 1);
}

std::int32_t dayOf(hb::Date d) {
    return static_cast<std::int32_t>(std::floor(d.days + 1e-9));
}

std::int64_t secondsOf(hb::Date d) {
    return std::llround(d.days * 86400.0);
}

namespace {

using Node = FilterNode;
using NodePtr = std::shared_ptr<const FilterNode>;

[[noreturn]] void cannotParse(StrView rest) {
    hb::raise(kOutlookErrorNumber, u"Cannot parse condition. Error at \"" + Str(rest) + u"\".");
}

bool isDateProperty(const Str& p) {
    return hb::text::equalsNoCase(p, u"Start") || hb::text::equalsNoCase(p, u"End");
}

// The text of an item's property that a filter names; nullopt when the
// item or this simulation has no such text.
std::optional<Str> filterText(const Item& item, const Str& property) {
    using hb::text::equalsNoCase;
    if (equalsNoCase(property, u"Subject")) return item.subject;
    if (equalsNoCase(property, u"Categories")) return item.categories;
    if (equalsNoCase(property, u"MessageClass")) return item.messageClass;
    if (equalsNoCase(property, u"Body")) return item.body;
    if (equalsNoCase(property, u"Location")) return item.location;
    if (equalsNoCase(property, u"To")) return item.to;
    if (equalsNoCase(property, u"EntryID")) return item.entryId;
    return std::nullopt;
}

NodePtr combine(Node::Kind kind, NodePtr a, NodePtr b) {
    auto n = std::make_shared<Node>();
    n->kind = kind;
    n->left = std::move(a);
    n->right = std::move(b);
    return n;
}

class Parser {
  public:
    Parser(const Str& text, const Outlook& world, bool restrict)
        : f_(text), world_(world), restrict_(restrict) {}

    NodePtr parse() {
        NodePtr n = orExpr();
        blanks();
        if (i_ != f_.size()) fail();
        return n;
    }

  private:
    [[noreturn]] void fail() const { cannotParse(StrView(f_).substr(std::min(i_, f_.size()))); }

    void blanks() {
        while (i_ < f_.size() && (f_[i_] == u' ' || f_[i_] == u'\t'))
            ++i_;
    }

    // A keyword (AND, OR, NOT) followed by a blank or a parenthesis.
    bool keyword(StrView word) {
        blanks();
        if (i_ + word.size() > f_.size()) return false;
        if (!hb::text::equalsNoCase(StrView(f_).substr(i_, word.size()), word)) return false;
        std::size_t after = i_ + word.size();
        if (after < f_.size() && f_[after] != u' ' && f_[after] != u'(' && f_[after] != u'[') {
            return false;
        }
        i_ = after;
        return true;
    }

    NodePtr orExpr() {
        NodePtr n = andExpr();
        while (keyword(u"OR"))
            n = combine(Node::Kind::Or, n, andExpr());
        return n;
    }

    NodePtr andExpr() {
        NodePtr n = factor();
        while (keyword(u"AND"))
            n = combine(Node::Kind::And, n, factor());
        return n;
    }

    NodePtr factor() {
        if (keyword(u"NOT")) return combine(Node::Kind::Not, factor(), nullptr);
        blanks();
        if (i_ < f_.size() && f_[i_] == u'(') {
            ++i_;
            NodePtr n = orExpr();
            blanks();
            if (i_ >= f_.size() || f_[i_] != u')') fail();
            ++i_;
            return n;
        }
        return condition();
    }

    NodePtr condition() {
        auto n = std::make_shared<Node>();
        blanks();
        if (i_ >= f_.size() || f_[i_] != u'[') fail();
        std::size_t close = f_.find(u']', i_);
        if (close == Str::npos) fail();
        n->property = f_.substr(i_ + 1, close - i_ - 1);
        i_ = close + 1;
        blanks();
        static constexpr std::pair<const char16_t*, Node::Op> ops[] = {
            {u"<>", Node::Op::Ne}, {u"<=", Node::Op::Le}, {u">=", Node::Op::Ge},
            {u"=", Node::Op::Eq},  {u"<", Node::Op::Lt},  {u">", Node::Op::Gt}};
        bool found = false;
        for (const auto& [text, op] : ops) {
            StrView t(text);
            if (f_.compare(i_, t.size(), t) == 0) {
                n->op = op;
                i_ += t.size();
                found = true;
                break;
            }
        }
        if (!found) fail();
        blanks();
        std::size_t valueAt = i_;
        if (i_ >= f_.size() || (f_[i_] != u'\'' && f_[i_] != u'"')) fail();
        char16_t q = f_[i_++];
        bool closed = false;
        while (i_ < f_.size()) {
            if (f_[i_] == q) {
                if (i_ + 1 < f_.size() && f_[i_ + 1] == q) {  // a doubled quote stands for one
                    n->value += q;
                    i_ += 2;
                    continue;
                }
                ++i_;
                closed = true;
                break;
            }
            n->value += f_[i_++];
        }
        if (!closed) fail();
        check(*n, valueAt);
        return n;
    }

    // The property must be one this simulation filters on; a date value
    // must read as a date in the user's locale.
    void check(Node& n, std::size_t valueAt) const {
        using hb::text::equalsNoCase;
        if (isDateProperty(n.property)) {
            n.isDate = true;
            auto d = hb::dt::parseDate(n.value, world_.locale);
            if (!d) cannotParse(StrView(f_).substr(valueAt));
            double days = *d;
            // Outlook reads times without seconds: with seconds the
            // condition quietly goes wrong (here: the time is dropped).
            if (std::count(n.value.begin(), n.value.end(), u':') >= 2) days = std::floor(days);
            n.dateSeconds = secondsOf(hb::Date{days});
            return;
        }
        static constexpr const char16_t* texts[] = {
            u"Subject", u"Categories", u"MessageClass", u"Body", u"Location", u"To", u"EntryID"};
        bool known = std::any_of(std::begin(texts), std::end(texts),
                                 [&](const char16_t* t) { return equalsNoCase(n.property, t); });
        if (!known) {
            hb::raise(kOutlookErrorNumber, u"The property \"" + n.property + u"\" is unknown.");
        }
        if (restrict_ &&
            (equalsNoCase(n.property, u"Categories") || equalsNoCase(n.property, u"Body") ||
             equalsNoCase(n.property, u"EntryID"))) {
            hb::raise(kOutlookErrorNumber,
                      u"The property \"" + n.property + u"\" in the condition is not valid.");
        }
    }

    const Str& f_;
    const Outlook& world_;
    bool restrict_;
    std::size_t i_ = 0;
};

template <class T>
bool compare(const T& a, const T& b, Node::Op op) {
    switch (op) {
        case Node::Op::Eq:
            return a == b;
        case Node::Op::Ne:
            return a != b;
        case Node::Op::Lt:
            return a < b;
        case Node::Op::Le:
            return a <= b;
        case Node::Op::Gt:
            return a > b;
        case Node::Op::Ge:
            return a >= b;
    }
    return false;
}

// Bounds a filter puts on the starts of what it matches (its top-level
// AND conditions): a start at most `startMax`, an end at least `endMin`, a
// start at least `startMin` (seconds).
struct Bounds {
    std::int64_t startMin = std::numeric_limits<std::int64_t>::min();
    std::int64_t startMax = std::numeric_limits<std::int64_t>::max();
    std::int64_t endMin = std::numeric_limits<std::int64_t>::min();
    bool bounded() const { return startMax != std::numeric_limits<std::int64_t>::max(); }
};

void collectBounds(const Node& n, Bounds& b) {
    if (n.kind == Node::Kind::And) {
        collectBounds(*n.left, b);
        collectBounds(*n.right, b);
        return;
    }
    if (n.kind != Node::Kind::Condition || !n.isDate) return;
    bool start = hb::text::equalsNoCase(n.property, u"Start");
    bool upper = n.op == Node::Op::Lt || n.op == Node::Op::Le || n.op == Node::Op::Eq;
    bool lower = n.op == Node::Op::Gt || n.op == Node::Op::Ge || n.op == Node::Op::Eq;
    if (start && upper) b.startMax = std::min(b.startMax, n.dateSeconds);
    if (start && lower) b.startMin = std::max(b.startMin, n.dateSeconds);
    if (!start && lower) b.endMin = std::max(b.endMin, n.dateSeconds);
}

}  // namespace

std::shared_ptr<const FilterNode> parseFilter(const Str& text, const Outlook& world,
                                              bool restrict) {
    return Parser(text, world, restrict).parse();
}

bool matchesFilter(const FilterNode& n, const Item& values, hb::Date start, hb::Date end) {
    switch (n.kind) {
        case Node::Kind::And:
            return matchesFilter(*n.left, values, start, end) &&
                   matchesFilter(*n.right, values, start, end);
        case Node::Kind::Or:
            return matchesFilter(*n.left, values, start, end) ||
                   matchesFilter(*n.right, values, start, end);
        case Node::Kind::Not:
            return !matchesFilter(*n.left, values, start, end);
        case Node::Kind::Condition:
            break;
    }
    if (n.isDate) {
        // Only appointments have a Start and an End; an item without the
        // property never matches.
        if (values.kind != ItemKind::Appointment) return false;
        bool isStart = hb::text::equalsNoCase(n.property, u"Start");
        return compare(secondsOf(isStart ? start : end), n.dateSeconds, n.op);
    }
    auto t = filterText(values, n.property);
    if (!t) return false;
    if (n.op == Node::Op::Eq || n.op == Node::Op::Ne) {
        bool eq = hb::text::equalsNoCase(*t, n.value);
        return n.op == Node::Op::Eq ? eq : !eq;
    }
    return compare(hb::text::lower(*t), hb::text::lower(n.value), n.op);
}

Variant findFrom(Items& items, std::size_t from) {
    auto f = parseFilter(items.lastFilter, items.world(), false);
    const auto& list = items.folder->items;
    for (std::size_t i = from; i < list.size(); ++i) {
        const Item& it = *list[i];
        if (matchesFilter(*f, it, it.start, it.end)) {
            items.nextPosition = i + 1;
            return items.world().lookup(list[i]);
        }
    }
    items.nextPosition = list.size();
    return Variant::nothing();
}

namespace {

hb::Date entryStart(const ItemsEntry& e) {
    return e.item ? e.item->start : e.start;
}

hb::Date entryEnd(const ItemsEntry& e) {
    return e.item ? e.item->end : hb::Date{e.start.days + e.master->recurrence.duration};
}

const Item& entryValues(const ItemsEntry& e) {
    return e.item ? *e.item : *e.master;
}

// The occurrences and exceptions of a series that match a filter.
void expandSeries(const std::shared_ptr<Item>& master, const FilterNode* filter,
                  std::vector<ItemsEntry>& out, bool& capped) {
    const Recurrence& r = master->recurrence;
    Bounds b;
    if (filter) collectBounds(*filter, b);
    // The days whose occurrences can match: a start not after startMax and
    // an end not before endMin.
    std::int32_t from = INT_MIN;
    std::int32_t to = INT_MAX;
    const std::int64_t day = 86400;
    auto lengthSeconds = static_cast<std::int64_t>(std::llround(r.duration * 86400.0));
    if (b.startMin != std::numeric_limits<std::int64_t>::min()) {
        from = static_cast<std::int32_t>(b.startMin / day - 1);
    }
    if (b.endMin != std::numeric_limits<std::int64_t>::min()) {
        from = std::max(from, static_cast<std::int32_t>((b.endMin - lengthSeconds) / day - 1));
    }
    if (b.bounded()) to = static_cast<std::int32_t>(b.startMax / day + 1);
    bool endless = !b.bounded() && !r.lastDay();
    auto days = r.days(from, to, endless ? kExpansionCap : std::numeric_limits<std::size_t>::max());
    if (endless && days.size() >= kExpansionCap) capped = true;
    for (std::int32_t d : days) {
        if (master->deletedOn(d) || master->exceptionOn(d)) continue;
        ItemsEntry e{nullptr, master, hb::Date{d + r.startTime}};
        if (filter && !matchesFilter(*filter, *master, e.start, entryEnd(e))) continue;
        out.push_back(e);
        if (master->world().repeatOccurrences) out.push_back(e);
    }
    for (const auto& x : master->exceptions) {
        if (!filter || matchesFilter(*filter, *x, x->start, x->end))
            out.push_back({x, nullptr, {}});
    }
}

// The members of a folder that match a filter, series expanded or not.
std::vector<ItemsEntry> collect(const Folder& folder, bool expanding, const FilterNode* filter,
                                bool& capped) {
    std::vector<ItemsEntry> out;
    for (const auto& item : folder.items) {
        if (expanding && item->isRecurring && item->kind == ItemKind::Appointment) {
            expandSeries(item, filter, out, capped);
        } else if (!filter || matchesFilter(*filter, *item, item->start, item->end)) {
            out.push_back({item, nullptr, {}});
        }
    }
    return out;
}

void sortEntries(std::vector<ItemsEntry>& list, const Str& property, bool descending) {
    if (property.empty()) return;
    auto key = [&](const ItemsEntry& e) -> std::pair<std::int64_t, Str> {
        if (property == u"Start") return {secondsOf(entryStart(e)), {}};
        if (property == u"End") return {secondsOf(entryEnd(e)), {}};
        return {0, hb::text::lower(entryValues(e).subject)};
    };
    std::stable_sort(list.begin(), list.end(), [&](const ItemsEntry& a, const ItemsEntry& b) {
        return descending ? key(b) < key(a) : key(a) < key(b);
    });
}

// The property of a Sort argument ("[Start]" or "Start"), as this
// simulation names it; raises for one it cannot sort by.
Str sortProperty(const Str& arg) {
    Str p = hb::text::trim(arg);
    if (p.size() >= 2 && p.front() == u'[' && p.back() == u']') p = p.substr(1, p.size() - 2);
    for (const char16_t* known : {u"Start", u"End", u"Subject"}) {
        if (hb::text::equalsNoCase(p, known)) return known;
    }
    hb::raise(kOutlookErrorNumber, u"The property \"" + p + u"\" in the sort is unknown.");
}

Variant firstOrNothing(Items& i, std::size_t at) {
    if (at >= i.cursorView.size()) return Variant::nothing();
    i.cursor = at;
    return i.objectOf(i.cursorView[at]);
}

}  // namespace

void addViewMembers(hb::Members<Items>& m) {
    m.get(u"Count",
          [](Items& i) {
              if (i.plain()) return static_cast<std::int32_t>(i.folder->items.size());
              if (i.expands() || i.expandedSnapshot) return kUnknownCount;
              return static_cast<std::int32_t>(i.entries().size());
          })
        .method(u"Item",
                [](Items& i, Args& args) {
                    const Variant& key = hb::requiredArg(args, 0);
                    if (isText(key)) {
                        // The default item lookup by text: the item whose
                        // Subject is that text.
                        Str text = key.toStr();
                        for (const auto& it : i.folder->items) {
                            if (hb::text::equalsNoCase(it->subject, text)) {
                                return i.world().lookup(it);
                            }
                        }
                        notFound();
                    }
                    if (i.plain()) {
                        const auto& list = i.folder->items;
                        return i.world().lookup(list[indexArg(key, list.size())]);
                    }
                    auto list = i.entries();
                    return i.objectOf(list[indexArg(key, list.size())]);
                })
        .defaultMember(u"Item")
        .method(u"GetFirst",
                [](Items& i) {
                    if (i.plain()) {
                        i.nextPosition = 1;
                        if (i.folder->items.empty()) return Variant::nothing();
                        return i.world().lookup(i.folder->items.front());
                    }
                    i.cursorView = i.entries();
                    return firstOrNothing(i, 0);
                })
        .method(u"GetNext",
                [](Items& i) {
                    if (i.plain()) {
                        if (i.nextPosition >= i.folder->items.size()) return Variant::nothing();
                        return i.world().lookup(i.folder->items[i.nextPosition++]);
                    }
                    if (i.cursor >= i.cursorView.size()) return Variant::nothing();
                    ++i.cursor;
                    return firstOrNothing(i, i.cursor);
                })
        .method(u"GetLast",
                [](Items& i) {
                    i.cursorView = i.entries();
                    if (i.cursorView.empty()) return Variant::nothing();
                    return firstOrNothing(i, i.cursorView.size() - 1);
                })
        .method(u"GetPrevious",
                [](Items& i) {
                    // Off either end the walk stays there.
                    if (i.cursor == 0 || i.cursor >= i.cursorView.size()) {
                        i.cursor = i.cursorView.size();
                        return Variant::nothing();
                    }
                    return firstOrNothing(i, i.cursor - 1);
                })
        .method(u"Sort",
                [](Items& i, Args& args) {
                    i.sortProperty = sortProperty(hb::requiredArg(args, 0).toStr());
                    i.sortDescending = hb::hasArg(args, 1) && args[1].toBool();
                    if (i.snapshot) sortEntries(*i.snapshot, i.sortProperty, i.sortDescending);
                })
        .prop(
            u"IncludeRecurrences", [](Items& i) { return i.includeRecurrences; },
            [](Items& i, const Variant& v) {
                i.includeRecurrences = v.toBool();
                // Only a collection already sorted by [Start] ascending
                // expands its series.
                i.expansionArmed =
                    i.includeRecurrences && i.sortProperty == u"Start" && !i.sortDescending;
            })
        .method(u"Restrict",
                [](Items& i, Args& args) {
                    auto filter = parseFilter(hb::requiredArg(args, 0).toStr(), i.world(), true);
                    if (i.restriction) filter = combine(Node::Kind::And, i.restriction, filter);
                    auto c = i.world().make<Items>(i.folder);
                    c->sortProperty = i.sortProperty;
                    c->sortDescending = i.sortDescending;
                    c->includeRecurrences = i.includeRecurrences;
                    c->expandedSnapshot = i.expands();
                    c->restriction = filter;
                    if (i.snapshot) {
                        // A restriction of a restricted collection narrows its
                        // snapshot.
                        auto list = std::make_shared<std::vector<ItemsEntry>>();
                        for (const auto& e : *i.snapshot) {
                            if (matchesFilter(*filter, entryValues(e), entryStart(e), entryEnd(e)))
                                list->push_back(e);
                        }
                        c->snapshot = list;
                        c->capped = i.capped;
                    } else {
                        c->snapshot = std::make_shared<std::vector<ItemsEntry>>(
                            collect(*i.folder, i.expands(), filter.get(), c->capped));
                    }
                    sortEntries(*c->snapshot, c->sortProperty, c->sortDescending);
                    return obj(c);
                })
        .enumerable([](Items& i) {
            std::vector<Variant> out;
            if (i.plain()) {
                for (const auto& c : i.folder->items)
                    out.push_back(i.world().lookup(c));
                return out;
            }
            auto list = i.entries();
            if (i.capped) {
                hb::raise(kOutlookErrorNumber,
                          u"The collection has no end: a recurring series without an end date "
                          u"was expanded without a date restriction.");
            }
            for (const auto& e : list)
                out.push_back(i.objectOf(e));
            return out;
        });
}

}  // namespace detail

// ======================= Items as a view =======================

bool Items::expands() const {
    return includeRecurrences && expansionArmed && sortProperty == u"Start" && !sortDescending;
}

std::vector<ItemsEntry> Items::entries() {
    if (snapshot) return *snapshot;
    bool wasCapped = false;
    auto list = detail::collect(*folder, expands(), nullptr, wasCapped);
    capped = wasCapped;
    detail::sortEntries(list, sortProperty, sortDescending);
    return list;
}

Variant Items::objectOf(const ItemsEntry& entry) {
    if (entry.item) return world().lookup(entry.item);
    return world().lookup(detail::occurrenceRecord(*entry.master, entry.start));
}

}  // namespace sim
