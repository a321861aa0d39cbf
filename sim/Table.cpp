// Folder.GetTable: a table of a folder's items, read row by row. The rules
// modelled are listed in sim/Outlook.h.
#include <algorithm>
#include <cmath>

#include "common/Text.h"
#include "sim/OutlookInternal.h"

namespace sim {

using namespace detail;
using hb::Members;

namespace {

constexpr const char16_t* kColumns[] = {
    u"EntryID",     u"Subject",     u"MessageClass", u"Start",       u"End",     u"Categories",
    u"AllDayEvent", u"Sensitivity", u"Duration",     u"IsRecurring", u"Location"};

// The column's name as Outlook spells it; raises for one it does not know.
Str columnName(const Str& name) {
    for (const char16_t* c : kColumns) {
        if (hb::text::equalsNoCase(name, c)) return c;
    }
    hb::raise(kOutlookErrorNumber, u"The property \"" + name + u"\" is unknown.");
}

Variant columnValue(const Item& i, const Str& column) {
    const bool appointment = i.kind == ItemKind::Appointment;
    if (column == u"EntryID") return i.entryId;
    if (column == u"Subject") return i.subject;
    if (column == u"MessageClass") return i.messageClass;
    if (column == u"Categories") return i.categories;
    if (column == u"Location") return i.location;
    if (!appointment) return Variant();  // no such property: the row holds Empty
    if (column == u"Start") return i.start;
    if (column == u"End") return i.end;
    if (column == u"AllDayEvent") return i.allDayEvent;
    if (column == u"Sensitivity") return i.sensitivity;
    if (column == u"IsRecurring") return i.isRecurring;
    return static_cast<std::int32_t>(std::lround((i.end.days - i.start.days) * 1440.0));
}

std::shared_ptr<const hb::MemberTable> tableTable() {
    static const auto t =
        Members<Table>()
            .method(u"GetNextRow",
                    [](Table& t) {
                        if (t.next >= t.rows.size()) return Variant::nothing();
                        return obj(t.world().make<TableRow>(t.rows[t.next++], t.columns));
                    })
            .get(u"EndOfTable", [](Table& t) { return t.next >= t.rows.size(); })
            .method(u"MoveToStart", [](Table& t) { t.next = 0; })
            .method(u"GetRowCount",
                    [](Table& t) { return static_cast<std::int32_t>(t.rows.size()); })
            .get(u"Columns", [](Table& t) { return obj(t.world().make<TableColumns>(self(t))); })
            .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> columnsTable() {
    static const auto t =
        Members<TableColumns>()
            .get(u"Count",
                 [](TableColumns& c) { return static_cast<std::int32_t>(c.table->columns.size()); })
            .method(u"Add",
                    [](TableColumns& c, Args& args) {
                        Str name = columnName(hb::requiredArg(args, 0).toStr());
                        auto& cols = c.table->columns;
                        if (std::find(cols.begin(), cols.end(), name) == cols.end()) {
                            cols.push_back(name);
                        }
                    })
            .method(u"RemoveAll", [](TableColumns& c) { c.table->columns.clear(); })
            .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> rowTable() {
    static const auto t =
        Members<TableRow>()
            .method(u"Item",
                    [](TableRow& r, Args& args) {
                        const Variant& key = hb::requiredArg(args, 0);
                        Str column;
                        if (isText(key)) {
                            for (const auto& c : r.columns) {
                                if (hb::text::equalsNoCase(c, key.toStr())) column = c;
                            }
                            if (column.empty()) {
                                hb::raise(kOutlookErrorNumber,
                                          u"The property \"" + key.toStr() + u"\" is unknown.");
                            }
                        } else {
                            column = r.columns[indexArg(key, r.columns.size())];
                        }
                        return columnValue(*r.item, column);
                    })
            .defaultMember(u"Item")
            .build();
    return t;
}

}  // namespace

namespace detail {

Variant tableOf(Folder& folder, Args& args) {
    Str text = hb::hasArg(args, 0) ? args[0].toStr() : Str();
    if (hb::text::equalsNoCase(hb::text::left(text, 5), u"@SQL=")) {
        hb::raise(kOutlookErrorNumber, u"DASL filters are not modelled by this simulation.");
    }
    std::shared_ptr<const FilterNode> filter;
    if (!text.empty()) filter = parseFilter(text, folder.world(), true);
    std::vector<std::shared_ptr<Item>> rows;
    for (const auto& item : folder.items) {
        if (!filter || matchesFilter(*filter, *item, item->start, item->end)) rows.push_back(item);
    }
    auto t = folder.world().make<Table>(std::move(rows));
    t->columns = {u"EntryID", u"Subject", u"MessageClass"};
    return obj(t);
}

}  // namespace detail

Table::Table(Outlook& world, std::vector<std::shared_ptr<Item>> rows_)
    : SimObject(world, u"Table", tableTable()), rows(std::move(rows_)) {}

TableColumns::TableColumns(Outlook& world, std::shared_ptr<Table> table_)
    : SimObject(world, u"Columns", columnsTable()), table(std::move(table_)) {}

TableRow::TableRow(Outlook& world, std::shared_ptr<Item> item_, std::vector<Str> columns_)
    : SimObject(world, u"Row", rowTable()), item(std::move(item_)), columns(std::move(columns_)) {}

}  // namespace sim
