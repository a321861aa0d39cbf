#include "sim/Outlook.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "common/DateTime.h"
#include "common/Text.h"
#include "sim/OutlookInternal.h"

namespace sim {

using namespace detail;

using hb::Members;

namespace {

Str folderTypeName() {
    return u"MAPIFolder";
}

bool validPropertyType(std::int32_t t) {
    switch (t) {
        case ol::Text:
        case ol::Number:
        case ol::DateTime:
        case ol::YesNo:
        case 7:   // olDuration
        case 11:  // olKeywords
        case 12:  // olPercent
        case ol::Currency:
        case ol::Integer:
            return true;
        default:
            return false;
    }
}

}  // namespace

// ======================= Folders =======================

namespace {
std::shared_ptr<const hb::MemberTable> folderTable() {
    static const auto t =
        Members<Folder>()
            .prop(
                u"Name", [](Folder& f) { return f.name; },
                [](Folder& f, const Variant& v) { f.name = v.toStr(); })
            .get(u"EntryID", [](Folder& f) { return f.entryId; })
            .get(u"StoreID", [](Folder& f) { return f.storeId; })
            .get(u"Class", [](Folder&) { return std::int32_t{2}; })
            .get(u"DefaultItemType", [](Folder& f) { return f.defaultItemType; })
            .get(u"DefaultMessageClass",
                 [](Folder& f) {
                     return Str(f.defaultItemType == ol::AppointmentItem ? kAppointmentClass
                                                                         : kMailClass);
                 })
            .get(u"FolderPath",
                 [](Folder& f) {
                     Str path;
                     for (auto p = self(f); p; p = p->parentFolder.lock()) {
                         path = u"\\" + p->name + path;
                     }
                     return u"\\" + path;
                 })
            .get(u"Parent",
                 [](Folder& f) {
                     if (auto p = f.parentFolder.lock()) return obj(p);
                     return obj(f.world().nameSpace());
                 })
            .get(u"Application", [](Folder& f) { return obj(f.world().application()); })
            .get(u"Session", [](Folder& f) { return obj(f.world().nameSpace()); })
            .get(u"Items", [](Folder& f) { return obj(f.newItemsCollection()); })
            .method(u"GetTable", [](Folder& f, Args& args) { return tableOf(f, args); })
            .get(u"Folders", [](Folder& f) { return obj(f.world().make<Folders>(self(f))); })
            .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> foldersTable() {
    static const auto t =
        Members<Folders>()
            .get(u"Count", [](Folders& f) { return static_cast<std::int32_t>(f.list().size()); })
            .method(u"Item",
                    [](Folders& f, Args& args) {
                        const Variant& key = hb::requiredArg(args, 0);
                        auto list = f.list();
                        if (isText(key)) {
                            Str name = key.toStr();
                            for (const auto& c : list) {
                                if (hb::text::equalsNoCase(c->name, name)) return obj(c);
                            }
                            notFound();
                        }
                        return obj(list[indexArg(key, list.size())]);
                    })
            .defaultMember(u"Item")
            .method(u"Add",
                    [](Folders& f, Args& args) {
                        if (!f.folder) hb::raise(kOutlookErrorNumber, u"The operation failed.");
                        Str name = hb::requiredArg(args, 0).toStr();
                        std::int32_t type = hb::hasArg(args, 1) ? args[1].toLong() : ol::MailItem;
                        // olFolderCalendar as the type makes a calendar folder.
                        if (type == ol::FolderCalendar)
                            type = ol::AppointmentItem;
                        else
                            type = ol::MailItem;
                        return obj(f.folder->addFolder(std::move(name), type));
                    })
            .get(u"Parent",
                 [](Folders& f) {
                     if (f.folder) return obj(f.folder);
                     return obj(f.world().nameSpace());
                 })
            .enumerable([](Folders& f) {
                std::vector<Variant> out;
                for (const auto& c : f.list())
                    out.push_back(obj(c));
                return out;
            })
            .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> itemsTable() {
    static const auto t = [] {
        Members<Items> m;
        addViewMembers(m);
        m.method(u"Find",
                 [](Items& i, Args& args) {
                     i.lastFilter = hb::requiredArg(args, 0).toStr();
                     return findFrom(i, 0);
                 })
            .method(u"FindNext",
                    [](Items& i) {
                        if (i.lastFilter.empty()) return Variant::nothing();
                        return findFrom(i, i.nextPosition);
                    })
            .method(u"Add",
                    [](Items& i, Args& args) {
                        // Items.Add makes an unsaved item of the folder; the
                        // first Save puts it into the folder (and raises
                        // ItemAdd).
                        Str cls;
                        std::int32_t type = i.folder->defaultItemType;
                        if (hb::hasArg(args, 0)) {
                            if (isText(args[0])) {
                                cls = args[0].toStr();
                                type = hb::text::equalsNoCase(hb::text::left(cls, 8), u"IPM.Note")
                                           ? ol::MailItem
                                           : ol::AppointmentItem;
                                if (hb::text::equalsNoCase(hb::text::left(cls, 15),
                                                           u"IPM.Appointment")) {
                                    type = ol::AppointmentItem;
                                }
                            } else {
                                type = args[0].toLong();
                            }
                        }
                        std::shared_ptr<Item> item;
                        if (type == ol::AppointmentItem) {
                            item = i.world().make<Item>(ItemKind::Appointment,
                                                        cls.empty() ? Str(kAppointmentClass) : cls);
                        } else if (type == ol::MailItem) {
                            item = i.world().make<Item>(ItemKind::Mail,
                                                        cls.empty() ? Str(kMailClass) : cls);
                        } else {
                            hb::raise(kOutlookErrorNumber,
                                      u"Could not complete the operation. One or more parameter "
                                      u"values are not valid.");
                        }
                        item->folder = i.folder;
                        return obj(item->workingCopy());
                    })
            .method(u"Remove",
                    [](Items& i, Args& args) {
                        const auto& list = i.folder->items;
                        auto item = list[indexArg(hb::requiredArg(args, 0), list.size())];
                        i.folder->remove(item);
                    })
            .get(u"Parent", [](Items& i) { return obj(i.folder); })
            .get(u"Application", [](Items& i) { return obj(i.world().application()); })
            .events(u"ItemsEvents");
        return m.build();
    }();
    return t;
}
}  // namespace

Folder::Folder(Outlook& world, Str name_, Str storeId_, std::int32_t type)
    : SimObject(world, folderTypeName(), folderTable()),
      name(std::move(name_)),
      entryId(world.newEntryId()),
      storeId(std::move(storeId_)),
      defaultItemType(type) {}

std::shared_ptr<Folder> Folder::addFolder(Str folderName, std::int32_t type) {
    auto f = world().make<Folder>(std::move(folderName), storeId, type);
    f->parentFolder = self(*this);
    folders.push_back(f);
    return f;
}

std::shared_ptr<Item> Folder::addAppointment(Str subject, hb::Date start, hb::Date end,
                                             Str categories) {
    auto item = world().make<Item>(ItemKind::Appointment, Str(kAppointmentClass));
    item->subject = std::move(subject);
    item->start = start;
    item->end = end;
    item->setCategories(categories);
    insert(item, false);
    return item;
}

std::shared_ptr<Item> Folder::addMeetingRequest(Str subject, Str categories) {
    auto item = world().make<Item>(ItemKind::MeetingRequest, Str(kMeetingRequestClass));
    item->subject = std::move(subject);
    item->setCategories(categories);
    insert(item, false);
    return item;
}

std::shared_ptr<Item> Folder::addMail(Str subject, Str to, Str body) {
    auto item = world().make<Item>(ItemKind::Mail, Str(kMailClass));
    item->subject = std::move(subject);
    item->to = std::move(to);
    item->body = std::move(body);
    insert(item, false);
    return item;
}

std::shared_ptr<Item> Folder::findBySubject(StrView subject) const {
    for (const auto& i : items) {
        if (hb::text::equalsNoCase(i->subject, subject)) return i;
    }
    return nullptr;
}

void Folder::insert(const std::shared_ptr<Item>& item, bool raiseItemAdd) {
    if (auto old = item->folder.lock(); old && item->inFolder && old.get() != this) {
        old->remove(item);
    }
    item->folder = self(*this);
    item->inFolder = true;
    if (item->entryId.empty()) item->entryId = world().newEntryId();
    items.push_back(item);
    if (raiseItemAdd) postItemsEvent(u"ItemAdd", item);
}

void Folder::remove(const std::shared_ptr<Item>& item) {
    auto it = std::find(items.begin(), items.end(), item);
    if (it == items.end()) return;
    items.erase(it);
    item->inFolder = false;
    postItemsEvent(u"ItemRemove", nullptr);
}

void Folder::postItemsEvent(const Str& member, std::shared_ptr<Item> item) {
    std::weak_ptr<Folder> weak = self(*this);
    world().post([weak, member, item] {
        auto f = weak.lock();
        if (!f) return;
        // The collections alive when the event is delivered hear it.
        std::vector<std::shared_ptr<Items>> live;
        for (const auto& w : f->collections_) {
            if (auto c = w.lock()) live.push_back(c);
        }
        for (const auto& c : live) {
            Args args;
            if (item) args.push_back(f->world().lookup(item));
            c->raiseEvent(u"ItemsEvents", member, std::move(args));
        }
    });
}

std::shared_ptr<Items> Folder::newItemsCollection() {
    auto c = world().make<Items>(self(*this));
    std::erase_if(collections_, [](const std::weak_ptr<Items>& w) { return w.expired(); });
    collections_.push_back(c);
    return c;
}

std::size_t Folder::liveItemsCollections() const {
    return static_cast<std::size_t>(
        std::count_if(collections_.begin(), collections_.end(),
                      [](const std::weak_ptr<Items>& w) { return !w.expired(); }));
}

Folders::Folders(Outlook& world, std::shared_ptr<Folder> folder_)
    : SimObject(world, u"Folders", foldersTable()), folder(std::move(folder_)) {}

std::vector<std::shared_ptr<Folder>> Folders::list() const {
    if (folder) return folder->folders;
    std::vector<std::shared_ptr<Folder>> roots;
    for (const auto& s : world().stores())
        roots.push_back(s.root);
    return roots;
}

Items::Items(Outlook& world, std::shared_ptr<Folder> folder_)
    : SimObject(world, u"Items", itemsTable()), folder(std::move(folder_)) {}

// ======================= items =======================

namespace {

template <class Tbl>
Tbl& commonItemMembers(Tbl& t) {
    t.prop(
         u"Subject", [](Item& i) { return i.subject; },
         [](Item& i, const Variant& v) {
             i.subject = v.toStr();
             changed(i);
         })
        .prop(
            u"Body", [](Item& i) { return i.body; },
            [](Item& i, const Variant& v) {
                i.body = v.toStr();
                changed(i);
            })
        .prop(
            u"Categories", [](Item& i) { return i.categories; },
            [](Item& i, const Variant& v) {
                i.setCategories(v.toStr());
                changed(i);
            })
        .prop(
            u"MessageClass", [](Item& i) { return i.messageClass; },
            [](Item& i, const Variant& v) {
                i.messageClass = v.toStr();
                changed(i);
            })
        .get(u"EntryID", [](Item& i) { return i.record().entryId; })
        .get(u"Parent", [](Item& i) { return i.parent(); })
        .get(u"Saved",
             [](Item& i) {
                 const Item& r = i.record();
                 return !i.dirty && (r.inFolder || !r.master.expired());
             })
        .get(u"Application", [](Item& i) { return obj(i.world().application()); })
        .get(u"Session", [](Item& i) { return obj(i.world().nameSpace()); })
        .get(u"UserProperties",
             [](Item& i) { return obj(i.world().make<UserProperties>(self(i))); })
        .method(u"Save", [](Item& i) { i.save(); })
        .method(u"Display",
                [](Item& i) {
                    ++i.record().displayCount;
                    i.world().openInspector(self(i));
                })
        .method(u"Close",
                [](Item& i, Args& args) {
                    // olSave 0, olDiscard 1, olPromptForSave 2
                    if (hb::hasArg(args, 0) && args[0].toLong() == 0 && i.dirty) i.save();
                    for (const auto& in : i.world().inspectors()) {
                        if (in->currentItem && &in->currentItem->record() == &i.record()) {
                            i.world().closeWindow(in);
                            break;
                        }
                    }
                })
        .method(u"Delete",
                [](Item& i) {
                    Item& r = i.record();
                    if (auto f = r.folder.lock(); f && r.inFolder) f->remove(self(r));
                    r.deleted = true;
                })
        .method(u"Copy",
                [](Item& i) {
                    auto c = i.copy();
                    const Item& r = i.record();
                    if (auto f = r.folder.lock(); f && r.inFolder) f->insert(c, true);
                    return obj(c->workingCopy());
                })
        .method(u"Move", [](Item& i, Args& args) {
            auto target =
                std::dynamic_pointer_cast<Folder>(Instruments::simObject(hb::requiredArg(args, 0)));
            if (!target) hb::raise(hb::err::TypeMismatch);
            target->insert(i.recordPtr(), true);
            return i.world().lookup(i.recordPtr());
        });
    return t;
}

std::shared_ptr<const hb::MemberTable> appointmentTable() {
    static const auto t = [] {
        Members<Item> m;
        commonItemMembers(m)
            .get(u"Class", [](Item&) { return ol::ClassAppointment; })
            .prop(
                u"Start", [](Item& i) { return i.start; },
                [](Item& i, const Variant& v) {
                    // Moving the start keeps the duration, as in Outlook.
                    double d = i.end.days - i.start.days;
                    i.start = v.toDate();
                    i.end = hb::Date{i.start.days + d};
                    changed(i);
                })
            .prop(
                u"End", [](Item& i) { return i.end; },
                [](Item& i, const Variant& v) {
                    i.end = v.toDate();
                    changed(i);
                })
            .prop(
                u"Duration",
                [](Item& i) {
                    return static_cast<std::int32_t>(
                        std::lround((i.end.days - i.start.days) * 1440.0));
                },
                [](Item& i, const Variant& v) {
                    i.end = hb::Date{i.start.days + v.toLong() / 1440.0};
                    changed(i);
                })
            .prop(
                u"Location", [](Item& i) { return i.location; },
                [](Item& i, const Variant& v) {
                    i.location = v.toStr();
                    changed(i);
                })
            .prop(
                u"ReminderSet", [](Item& i) { return i.reminderSet; },
                [](Item& i, const Variant& v) {
                    i.reminderSet = v.toBool();
                    changed(i);
                })
            .prop(
                u"AllDayEvent", [](Item& i) { return i.allDayEvent; },
                [](Item& i, const Variant& v) {
                    i.allDayEvent = v.toBool();
                    if (i.allDayEvent) {
                        // Midnight to midnight, local time: the days the
                        // appointment touched, at least one.
                        std::int32_t first = dayOf(i.start);
                        auto last = static_cast<std::int32_t>(std::ceil(i.end.days - 1e-9));
                        i.start = hb::Date{static_cast<double>(first)};
                        i.end = hb::Date{static_cast<double>(std::max(last, first + 1))};
                    }
                    changed(i);
                })
            .prop(
                u"Sensitivity", [](Item& i) { return i.sensitivity; },
                [](Item& i, const Variant& v) {
                    std::int32_t n = v.toLong();
                    if (n < ol::Normal || n > ol::Confidential) {
                        hb::raise(kOutlookErrorNumber,
                                  u"Could not complete the operation. One or more parameter "
                                  u"values are not valid.");
                    }
                    i.sensitivity = n;
                    changed(i);
                })
            .method(u"GetRecurrencePattern", [](Item& i) { return recurrencePatternOf(i); })
            .get(u"IsRecurring",
                 [](Item& i) {
                     const Item& r = i.record();
                     return r.isRecurring || !r.master.expired();
                 })
            .get(u"RecurrenceState", [](Item& i) {
                // olApptNotRecurring 0, olApptMaster 1, olApptOccurrence 2,
                // olApptException 3
                const Item& r = i.record();
                if (r.isOccurrence) return std::int32_t{2};
                if (!r.master.expired()) return std::int32_t{3};
                return r.isRecurring ? std::int32_t{1} : std::int32_t{0};
            });
        return m.build();
    }();
    return t;
}

std::shared_ptr<const hb::MemberTable> meetingTable() {
    static const auto t = [] {
        Members<Item> m;
        commonItemMembers(m)
            .get(u"Class", [](Item&) { return ol::ClassMeetingRequest; })
            .prop(
                u"ReminderSet", [](Item& i) { return i.reminderSet; },
                [](Item& i, const Variant& v) {
                    i.reminderSet = v.toBool();
                    changed(i);
                });
        return m.build();
    }();
    return t;
}

std::shared_ptr<const hb::MemberTable> mailTable() {
    static const auto t = [] {
        Members<Item> m;
        commonItemMembers(m)
            .get(u"Class", [](Item&) { return ol::ClassMail; })
            .prop(
                u"To", [](Item& i) { return i.to; },
                [](Item& i, const Variant& v) {
                    i.to = v.toStr();
                    changed(i);
                })
            .prop(
                u"CC", [](Item& i) { return i.cc; },
                [](Item& i, const Variant& v) {
                    i.cc = v.toStr();
                    changed(i);
                })
            .method(u"Send", [](Item& i) { ++i.record().sendCount; });
        return m.build();
    }();
    return t;
}

std::shared_ptr<const hb::MemberTable> tableFor(ItemKind kind) {
    switch (kind) {
        case ItemKind::Appointment:
            return appointmentTable();
        case ItemKind::MeetingRequest:
            return meetingTable();
        case ItemKind::Mail:
            break;
    }
    return mailTable();
}

const char16_t* typeNameFor(ItemKind kind) {
    switch (kind) {
        case ItemKind::Appointment:
            return u"AppointmentItem";
        case ItemKind::MeetingRequest:
            return u"MeetingItem";
        case ItemKind::Mail:
            break;
    }
    return u"MailItem";
}

std::shared_ptr<const hb::MemberTable> userPropertiesTable() {
    static const auto t =
        Members<UserProperties>()
            .get(u"Count",
                 [](UserProperties& u) {
                     return static_cast<std::int32_t>(u.item->userProperties.size());
                 })
            .method(u"Item",
                    [](UserProperties& u, Args& args) {
                        const Variant& key = hb::requiredArg(args, 0);
                        if (isText(key)) return obj(u.item->findUserProperty(key.toStr()));
                        const auto& list = u.item->userProperties;
                        return obj(list[indexArg(key, list.size())]);
                    })
            .defaultMember(u"Item")
            .method(u"Find",
                    [](UserProperties& u, Args& args) {
                        return obj(u.item->findUserProperty(hb::requiredArg(args, 0).toStr()));
                    })
            .method(u"Add",
                    [](UserProperties& u, Args& args) {
                        Str name = hb::requiredArg(args, 0).toStr();
                        std::int32_t type = hb::requiredArg(args, 1).toLong();
                        if (name.empty() || name.size() > 64 ||
                            name.find_first_of(u"[]_#") != Str::npos) {
                            hb::raise(kOutlookErrorNumber, u"The property name is not valid.");
                        }
                        if (!validPropertyType(type)) {
                            hb::raise(kOutlookErrorNumber,
                                      u"Could not complete the operation. One or more parameter "
                                      u"values are not valid.");
                        }
                        auto& list = u.item->userProperties;
                        auto prop = u.world().make<UserProperty>(name, type);
                        prop->item = u.item;
                        for (auto& p : list) {
                            if (hb::text::equalsNoCase(p->name, name)) {
                                // Same name and type: a new property overwrites
                                // the old one. Another type: refused.
                                if (p->type != type) {
                                    hb::raise(kOutlookErrorNumber,
                                              u"A field with this name already exists with a "
                                              u"different type.");
                                }
                                p->deleted = true;
                                p = prop;
                                changed(*u.item);
                                return obj(prop);
                            }
                        }
                        list.push_back(prop);
                        changed(*u.item);
                        return obj(prop);
                    })
            .method(u"Remove",
                    [](UserProperties& u, Args& args) {
                        auto& list = u.item->userProperties;
                        std::size_t i = indexArg(hb::requiredArg(args, 0), list.size());
                        list[i]->deleted = true;
                        list.erase(list.begin() + static_cast<std::ptrdiff_t>(i));
                        changed(*u.item);
                    })
            .get(u"Parent", [](UserProperties& u) { return obj(u.item); })
            .enumerable([](UserProperties& u) {
                std::vector<Variant> out;
                for (const auto& p : u.item->userProperties)
                    out.push_back(obj(p));
                return out;
            })
            .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> userPropertyTable() {
    static const auto t = Members<UserProperty>()
                              .get(u"Name", [](UserProperty& p) { return p.name; })
                              .get(u"Type", [](UserProperty& p) { return p.type; })
                              .prop(
                                  u"Value", [](UserProperty& p) { return p.value; },
                                  [](UserProperty& p, const Variant& v) {
                                      p.value = p.coerce(v);
                                      if (auto i = p.item.lock()) changed(*i);
                                  })
                              .defaultMember(u"Value")
                              .get(u"Parent", [](UserProperty& p) { return obj(p.item.lock()); })
                              .method(u"Delete",
                                      [](UserProperty& p) {
                                          if (auto i = p.item.lock()) {
                                              std::erase_if(i->userProperties, [&](const auto& q) {
                                                  return q.get() == &p;
                                              });
                                              changed(*i);
                                          }
                                          p.deleted = true;
                                      })
                              .build();
    return t;
}

}  // namespace

Item::Item(Outlook& world, ItemKind kind_, Str messageClass_)
    : SimObject(world, typeNameFor(kind_), tableFor(kind_)),
      kind(kind_),
      messageClass(std::move(messageClass_)) {
    if (kind != ItemKind::Appointment) reminderSet = false;
}

std::shared_ptr<UserProperty> Item::findUserProperty(StrView name) const {
    for (const auto& p : userProperties) {
        if (hb::text::equalsNoCase(p->name, name)) return p;
    }
    return nullptr;
}

std::shared_ptr<UserProperty> Item::addUserProperty(Str name, std::int32_t type, Variant v) {
    auto p = world().make<UserProperty>(std::move(name), type);
    p->item = self(*this);
    if (!v.isEmpty()) p->value = p->coerce(v);
    if (auto old = findUserProperty(p->name)) {
        for (auto& q : userProperties) {
            if (q == old) q = p;
        }
    } else {
        userProperties.push_back(p);
    }
    return p;
}

void Item::setCategories(const Str& text) {
    categories = world().categoriesText(text);
}

namespace detail {

void copyValues(Item& to, const Item& from, bool withDates) {
    to.messageClass = from.messageClass;
    to.subject = from.subject;
    to.body = from.body;
    to.location = from.location;
    to.to = from.to;
    to.cc = from.cc;
    if (withDates) {
        to.start = from.start;
        to.end = from.end;
    }
    to.reminderSet = from.reminderSet;
    to.allDayEvent = from.allDayEvent;
    to.sensitivity = from.sensitivity;
    to.isRecurring = from.isRecurring;
    to.recurrence = from.recurrence;
    to.categories = from.categories;
}

void copyProperties(Item& to, const Item& from) {
    to.userProperties.clear();
    for (const auto& p : from.userProperties) {
        auto q = to.world().make<UserProperty>(p->name, p->type);
        q->value = p->value;
        q->item = self(to);
        to.userProperties.push_back(q);
    }
}

}  // namespace detail

namespace {

// Stores the user properties of a saved object: a property the store has
// (same name and type) keeps its object and takes the value; new ones are
// added, removed ones go.
void storeProperties(Item& stored, const Item& from) {
    std::vector<std::shared_ptr<UserProperty>> kept;
    for (const auto& p : from.userProperties) {
        auto q = stored.findUserProperty(p->name);
        if (!q || q->type != p->type) {
            q = stored.world().make<UserProperty>(p->name, p->type);
            q->item = self(stored);
        }
        q->value = p->value;
        kept.push_back(q);
    }
    for (const auto& old : stored.userProperties) {
        if (std::find(kept.begin(), kept.end(), old) == kept.end()) old->deleted = true;
    }
    stored.userProperties = std::move(kept);
}

}  // namespace

Variant Item::invoke(hb::CallKind callKind, const Str& member, Args& args) {
    if (target) return target->invoke(callKind, member, args);
    return SimObject::invoke(callKind, member, args);
}

std::shared_ptr<Item> Item::workingCopy() {
    Item& r = record();
    if (r.isOccurrence) {
        // An occurrence shows its series as it is stored now, on its own dates.
        if (auto m = r.master.lock()) {
            copyValues(r, *m, false);
            copyProperties(r, *m);
        }
    }
    auto c = world().make<Item>(r.kind, r.messageClass);
    copyValues(*c, r);
    copyProperties(*c, r);
    c->stored = self(r);
    return c;
}

std::shared_ptr<Item> Item::view() {
    auto v = world().make<Item>(kind, messageClass);
    v->target = resolved();
    return v;
}

void Item::save() {
    if (target) {
        target->save();
        return;
    }
    if (stored) {
        Item& r = *stored;
        if (dirty || !r.isOccurrence) {
            copyValues(r, *this);
            storeProperties(r, *this);
            r.dirty = true;
        }
        dirty = false;
        r.save();
        messageClass = r.messageClass;  // a saved occurrence is an exception now
        return;
    }
    ++saveCount;
    const bool changedValues = dirty;
    dirty = false;
    if (auto m = master.lock()) {
        if (isOccurrence) {
            // An occurrence saved unchanged stays one; a change makes it an
            // exception of its series.
            if (!changedValues) return;
            isOccurrence = false;
            messageClass = kExceptionClass;
            std::erase_if(m->occurrences, [this](const auto& o) { return o.get() == this; });
            m->exceptions.push_back(self(*this));
        }
        // An exception is kept inside its series: saving changes the series.
        if (auto f = m->folder.lock(); f && m->inFolder) f->postItemsEvent(u"ItemChange", m);
        return;
    }
    auto f = folder.lock();
    if (!f) return;
    if (!inFolder) {
        f->insert(self(*this), true);  // the item enters the folder: ItemAdd
    } else {
        f->postItemsEvent(u"ItemChange", self(*this));
    }
}

std::shared_ptr<Item> Item::copy() const {
    auto c = world().make<Item>(kind, messageClass);
    copyValues(*c, *this);
    copyProperties(*c, *this);
    c->isRecurring = record().isRecurring;
    return c;
}

Variant Item::parent() {
    Item& r = record();
    if (auto m = r.master.lock()) return world().lookup(m);
    return obj(r.folder.lock());
}

Str Item::unusableReason() const {
    return record().deleted ? Str(u"The item has been moved or deleted.") : Str();
}

UserProperties::UserProperties(Outlook& world, std::shared_ptr<Item> item_)
    : SimObject(world, u"UserProperties", userPropertiesTable()), item(std::move(item_)) {}

UserProperty::UserProperty(Outlook& world, Str name_, std::int32_t type_)
    : SimObject(world, u"UserProperty", userPropertyTable()), name(std::move(name_)), type(type_) {}

Variant UserProperty::coerce(const Variant& in) const {
    const Variant& v = in.deref();
    switch (type) {
        case ol::Text:
            return Variant(v.toStr());
        case ol::Number:
        case 12:  // olPercent
            return Variant(v.toDouble());
        case ol::DateTime:
            return Variant(v.toDate());
        case ol::YesNo:
            return Variant(v.toBool());
        case ol::Integer:
        case 7:  // olDuration
            return Variant(v.toLong());
        case ol::Currency:
            return Variant(v.toCurrency());
        default:
            return v;
    }
}

Str UserProperty::unusableReason() const {
    return deleted ? Str(u"The property has been deleted.") : Str();
}

}  // namespace sim
