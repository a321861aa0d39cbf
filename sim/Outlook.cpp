#include "sim/Outlook.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "common/DateTime.h"
#include "common/Text.h"
#include "sim/Office.h"

namespace sim {

using namespace detail;

using hb::Members;

namespace {

[[noreturn]] void notFound() {
    hb::raise(kNotFoundNumber, u"The attempted operation failed.  An object could not be found.");
}

// A 1-based index argument (numbers) into a list of n; raises as Outlook.
std::size_t indexArg(const Variant& v, std::size_t n) {
    std::int32_t i = v.toLong();
    if (i < 1 || static_cast<std::size_t>(i) > n) {
        hb::raise(kOutlookErrorNumber, u"Array index out of bounds.");
    }
    return static_cast<std::size_t>(i - 1);
}

Str folderTypeName() {
    return u"MAPIFolder";
}

// ---- Items.Find filters: [Property] = 'value' (or "value"), also <> ----
struct Filter {
    Str property;
    Str value;
    bool notEqual = false;
};

[[noreturn]] void badFilter(const Str& filter) {
    hb::raise(kOutlookErrorNumber, u"Cannot parse condition. Error at \"" + filter + u"\".");
}

Filter parseFilter(const Str& f) {
    Filter out;
    std::size_t i = 0;
    auto blanks = [&] {
        while (i < f.size() && f[i] == u' ')
            ++i;
    };
    blanks();
    if (i >= f.size() || f[i] != u'[') badFilter(f);
    std::size_t close = f.find(u']', i);
    if (close == Str::npos) badFilter(f);
    out.property = f.substr(i + 1, close - i - 1);
    i = close + 1;
    blanks();
    if (f.compare(i, 2, u"<>") == 0) {
        out.notEqual = true;
        i += 2;
    } else if (i < f.size() && f[i] == u'=') {
        ++i;
    } else {
        badFilter(f);
    }
    blanks();
    if (i >= f.size() || (f[i] != u'\'' && f[i] != u'"')) badFilter(f);
    char16_t q = f[i++];
    bool closed = false;
    while (i < f.size()) {
        if (f[i] == q) {
            if (i + 1 < f.size() && f[i + 1] == q) {  // a doubled quote stands for one
                out.value += q;
                i += 2;
                continue;
            }
            ++i;
            closed = true;
            break;
        }
        out.value += f[i++];
    }
    if (!closed) badFilter(f);
    blanks();
    if (i != f.size()) badFilter(f);
    return out;
}

// The text of an item's property that a filter names; nullopt when the
// filter names a property this simulation does not search.
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

bool matches(const Item& item, const Filter& filter, const Str& raw) {
    auto t = filterText(item, filter.property);
    if (!t) badFilter(raw);
    bool eq = hb::text::equalsNoCase(*t, filter.value);
    return filter.notEqual ? !eq : eq;
}

Variant findFrom(Items& items, std::size_t from) {
    Filter f = parseFilter(items.lastFilter);
    const auto& list = items.folder->items;
    for (std::size_t i = from; i < list.size(); ++i) {
        if (matches(*list[i], f, items.lastFilter)) {
            items.nextPosition = i + 1;
            return items.world().lookup(list[i]);
        }
    }
    items.nextPosition = list.size();
    return Variant::nothing();
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

Str entryIdText(std::uint64_t n, const char* prefix) {
    char buf[96];  // the prefix and 24 digits, with room to spare (-O2 checks it)
    std::snprintf(buf, sizeof buf, "%s%024llX", prefix, static_cast<unsigned long long>(n));
    return hb::fromUtf8(buf);
}

}  // namespace

hb::Date makeDate(int year, int month, int day, int hour, int minute, int second) {
    hb::dt::Parts p;
    p.year = year;
    p.month = month;
    p.day = day;
    p.hour = hour;
    p.minute = minute;
    p.second = second;
    return hb::Date{hb::dt::fromParts(p)};
}

// ======================= Outlook =======================

Outlook::Outlook() : instruments_(std::make_shared<Instruments>()) {}

Outlook::~Outlook() {
    // The process ends: every connection point and every object held from
    // outside goes, so that nothing keeps the simulated objects alive.
    posted_.clear();
    for (auto& w : objects_) {
        if (auto o = w.lock()) o->detach();
    }
}

void Outlook::register_(const std::shared_ptr<SimObject>& object) {
    if (objects_.size() >= compactAt_) {
        std::erase_if(objects_, [](const std::weak_ptr<SimObject>& w) { return w.expired(); });
        compactAt_ = std::max<std::size_t>(256, objects_.size() * 2);
    }
    objects_.push_back(object);
}

int Outlook::majorVersion() const {
    std::size_t dot = version.find(u'.');
    if (dot == Str::npos) return 0;
    int n = 0;
    for (std::size_t i = 0; i < dot; ++i) {
        if (version[i] < u'0' || version[i] > u'9') return 0;
        n = n * 10 + (version[i] - u'0');
    }
    return n;
}

Str Outlook::newEntryId() {
    return entryIdText(nextId_++, "00000000A1B2C3D4E5F60718293A4B5C");
}

Store& Outlook::addStore(Str rootName) {
    Store s;
    s.storeId = entryIdText(nextId_++, "0000000038A1BB1005E5101AA1BB08002B2A56C20000");
    s.root = make<Folder>(std::move(rootName), s.storeId, ol::MailItem);
    stores_.push_back(std::move(s));
    return stores_.back();
}

Store& Outlook::defaultStore() {
    if (stores_.empty()) addStore(u"Mailbox - John Smith");
    return stores_.front();
}

std::shared_ptr<Folder> Outlook::defaultFolder(std::int32_t n) {
    if (auto it = defaultFolders_.find(n); it != defaultFolders_.end()) return it->second;
    const char16_t* name = nullptr;
    std::int32_t type = ol::MailItem;
    switch (n) {
        case ol::FolderDeletedItems:
            name = u"Deleted Items";
            break;
        case ol::FolderOutbox:
            name = u"Outbox";
            break;
        case ol::FolderSentMail:
            name = u"Sent Items";
            break;
        case ol::FolderInbox:
            name = u"Inbox";
            break;
        case ol::FolderCalendar:
            name = u"Calendar";
            type = ol::AppointmentItem;
            break;
        case ol::FolderContacts:
            name = u"Contacts";
            type = 2;
            break;
        case ol::FolderJournal:
            name = u"Journal";
            type = 4;
            break;
        case ol::FolderNotes:
            name = u"Notes";
            type = 5;
            break;
        case ol::FolderTasks:
            name = u"Tasks";
            type = 3;
            break;
        case ol::FolderDrafts:
            name = u"Drafts";
            break;
        default:
            hb::raise(kOutlookErrorNumber, u"The operation failed.");
    }
    auto f = defaultStore().root->addFolder(name, type);
    defaultFolders_[n] = f;
    return f;
}

std::shared_ptr<Folder> Outlook::findFolder(const Str& entryId) const {
    std::vector<std::shared_ptr<Folder>> todo;
    for (const auto& s : stores_)
        todo.push_back(s.root);
    while (!todo.empty()) {
        auto f = todo.back();
        todo.pop_back();
        if (f->entryId == entryId) return f;
        for (const auto& c : f->folders)
            todo.push_back(c);
    }
    return nullptr;
}

void Outlook::registerControl(Str progId, ControlFactory factory) {
    controls_[hb::foldMemberName(progId)] = std::move(factory);
}

std::shared_ptr<hb::Object> Outlook::createControl(const Str& progId) {
    auto it = controls_.find(hb::foldMemberName(progId));
    if (it == controls_.end() || !it->second) {
        hb::raise(kOfficeErrorNumber,
                  u"Unable to create specified ActiveX control. Verify that "
                  u"the control is registered properly.");
    }
    return it->second();
}

std::shared_ptr<Application> Outlook::application() {
    if (!application_) application_ = make<Application>();
    return application_;
}

std::shared_ptr<NameSpace> Outlook::nameSpace() {
    if (!nameSpace_) nameSpace_ = make<NameSpace>();
    return nameSpace_;
}

std::shared_ptr<Explorers> Outlook::explorersCollection() {
    if (!explorersCollection_) explorersCollection_ = make<Explorers>();
    return explorersCollection_;
}

std::shared_ptr<Inspectors> Outlook::inspectorsCollection() {
    if (!inspectorsCollection_) inspectorsCollection_ = make<Inspectors>();
    return inspectorsCollection_;
}

std::shared_ptr<TaskPaneFactory> Outlook::taskPaneFactory() {
    if (!taskPaneFactory_) taskPaneFactory_ = make<TaskPaneFactory>();
    return taskPaneFactory_;
}

std::shared_ptr<Item> Outlook::createItem(std::int32_t type) {
    std::shared_ptr<Item> item;
    std::shared_ptr<Folder> home;
    switch (type) {
        case ol::MailItem:
            item = make<Item>(ItemKind::Mail, Str(kMailClass));
            home = defaultFolder(ol::FolderDrafts);
            break;
        case ol::AppointmentItem:
            item = make<Item>(ItemKind::Appointment, Str(kAppointmentClass));
            home = defaultFolder(ol::FolderCalendar);
            break;
        default:
            hb::raise(kOutlookErrorNumber,
                      u"Could not complete the operation. One or more "
                      u"parameter values are not valid.");
    }
    item->folder = home;
    return item->workingCopy();
}

Variant Outlook::lookup(const std::shared_ptr<Item>& item) {
    if (!item) return Variant::nothing();
    Item& stored = item->record();
    for (const auto& in : inspectors_) {
        if (in->open && in->currentItem && &in->currentItem->record() == &stored) {
            return obj(in->currentItem->view());
        }
    }
    return obj(stored.workingCopy());
}

Str Outlook::categoriesText(const Str& assigned) const {
    std::vector<Str> keywords;
    Str sep = listSeparator.empty() ? Str(u",") : listSeparator;
    std::size_t pos = 0;
    while (pos <= assigned.size()) {
        std::size_t next = assigned.find(sep, pos);
        if (next == Str::npos) next = assigned.size();
        Str piece = hb::text::trim(StrView(assigned).substr(pos, next - pos));
        bool repeat = std::any_of(keywords.begin(), keywords.end(),
                                  [&](const Str& k) { return hb::text::equalsNoCase(k, piece); });
        if (!piece.empty() && !repeat) keywords.push_back(std::move(piece));
        pos = next + sep.size();
    }
    Str out;
    for (std::size_t i = 0; i < keywords.size(); ++i) {
        if (i) out += sep + u" ";
        out += keywords[i];
    }
    return out;
}

void Outlook::post(std::function<void()> event) {
    posted_.push_back(std::move(event));
}

void Outlook::pump() {
    if (pumping_) return;  // the outer pump delivers what handlers post
    pumping_ = true;
    do {
        while (!posted_.empty()) {
            auto e = std::move(posted_.front());
            posted_.pop_front();
            e();
        }
        // Office redraws what changed (the ribbon asks its callbacks).
        if (onIdle) onIdle();
    } while (!posted_.empty());
    pumping_ = false;
}

void Outlook::requestQuit() {
    post([this] {
        if (onQuit) onQuit();
    });
}

void Outlook::logEvent(StrView eventInterface, const Str& member, const SimObject& source) {
    eventLog.push_back(hb::toUtf8(eventInterface) + "." + hb::toUtf8(member) + " (" +
                       hb::toUtf8(source.typeName()) + ")");
}

// ======================= Application =======================

namespace {
std::shared_ptr<const hb::MemberTable> applicationTable() {
    static const auto t =
        Members<Application>()
            .get(u"Version", [](Application& a) { return a.world().version; })
            .get(u"Name", [](Application&) { return Str(u"Outlook"); })
            .get(u"Class", [](Application&) { return std::int32_t{0}; })
            .get(u"Application", [](Application& a) { return obj(self(a)); })
            .get(u"Parent", [](Application&) { return Variant::nothing(); })
            .method(u"GetNamespace",
                    [](Application& a, Args& args) {
                        Str type = hb::requiredArg(args, 0).toStr();
                        if (!hb::text::equalsNoCase(type, u"MAPI")) {
                            hb::raise(kOutlookErrorNumber,
                                      u"Could not complete the operation. One or more parameter "
                                      u"values are not valid.");
                        }
                        return obj(a.world().nameSpace());
                    })
            .get(u"Session", [](Application& a) { return obj(a.world().nameSpace()); })
            .method(u"ActiveExplorer",
                    [](Application& a) { return obj(a.world().activeExplorer()); })
            .method(u"ActiveInspector",
                    [](Application& a) { return obj(a.world().activeInspector()); })
            .method(u"ActiveWindow", [](Application& a) { return obj(a.world().activeWindow()); })
            .get(u"Explorers", [](Application& a) { return obj(a.world().explorersCollection()); })
            .get(u"Inspectors",
                 [](Application& a) { return obj(a.world().inspectorsCollection()); })
            .method(u"CreateItem",
                    [](Application& a, Args& args) {
                        return obj(a.world().createItem(hb::requiredArg(args, 0).toLong()));
                    })
            .method(u"Quit", [](Application& a) { a.world().requestQuit(); })
            .events(u"ApplicationEvents")
            .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> nameSpaceTable() {
    static const auto t =
        Members<NameSpace>()
            .get(u"Type", [](NameSpace&) { return Str(u"MAPI"); })
            .get(u"Class", [](NameSpace&) { return std::int32_t{1}; })
            .get(u"Application", [](NameSpace& n) { return obj(n.world().application()); })
            .get(u"Parent", [](NameSpace& n) { return obj(n.world().application()); })
            .method(u"GetDefaultFolder",
                    [](NameSpace& n, Args& args) {
                        return obj(n.world().defaultFolder(hb::requiredArg(args, 0).toLong()));
                    })
            .get(u"Folders", [](NameSpace& n) { return obj(n.world().make<Folders>(nullptr)); })
            .method(u"GetFolderFromID",
                    [](NameSpace& n, Args& args) {
                        auto f = n.world().findFolder(hb::requiredArg(args, 0).toStr());
                        if (!f) notFound();
                        return obj(f);
                    })
            .build();
    return t;
}

std::shared_ptr<const hb::MemberTable> comAddInTable() {
    static const auto t =
        Members<ComAddIn>()
            .get(u"ProgId", [](ComAddIn& c) { return c.progId; })
            .get(u"Description", [](ComAddIn& c) { return c.description; })
            .get(u"Guid", [](ComAddIn& c) { return c.guid; })
            .prop(
                u"Connect", [](ComAddIn& c) { return c.connect; },
                [](ComAddIn& c, const Variant& v) { c.connect = v.toBool(); })
            .prop(
                u"Object", [](ComAddIn& c) { return c.object; },
                [](ComAddIn& c, const Variant& v) { c.object = v; })
            .get(u"Application", [](ComAddIn& c) { return obj(c.world().application()); })
            .build();
    return t;
}
}  // namespace

Application::Application(Outlook& world) : SimObject(world, u"Application", applicationTable()) {}

NameSpace::NameSpace(Outlook& world) : SimObject(world, u"NameSpace", nameSpaceTable()) {}

ComAddIn::ComAddIn(Outlook& world, Str progId_, Str description_)
    : SimObject(world, u"COMAddIn", comAddInTable()),
      progId(std::move(progId_)),
      description(std::move(description_)),
      guid(u"{00000000-0000-0000-0000-000000000000}") {}

void ComAddIn::detach() {
    object = Variant();
    SimObject::detach();
}

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
    static const auto t =
        Members<Items>()
            .get(u"Count",
                 [](Items& i) { return static_cast<std::int32_t>(i.folder->items.size()); })
            .method(u"Item",
                    [](Items& i, Args& args) {
                        const Variant& key = hb::requiredArg(args, 0);
                        const auto& list = i.folder->items;
                        if (isText(key)) {
                            // The default item lookup by text: the item whose
                            // Subject is that text.
                            Str text = key.toStr();
                            for (const auto& it : list) {
                                if (hb::text::equalsNoCase(it->subject, text)) {
                                    return i.world().lookup(it);
                                }
                            }
                            notFound();
                        }
                        return i.world().lookup(list[indexArg(key, list.size())]);
                    })
            .defaultMember(u"Item")
            .method(u"Find",
                    [](Items& i, Args& args) {
                        i.lastFilter = hb::requiredArg(args, 0).toStr();
                        return findFrom(i, 0);
                    })
            .method(u"FindNext",
                    [](Items& i) {
                        if (i.lastFilter.empty()) return Variant::nothing();
                        return findFrom(i, i.nextPosition);
                    })
            .method(u"GetFirst",
                    [](Items& i) {
                        i.nextPosition = 1;
                        if (i.folder->items.empty()) return Variant::nothing();
                        return i.world().lookup(i.folder->items.front());
                    })
            .method(u"GetNext",
                    [](Items& i) {
                        if (i.nextPosition >= i.folder->items.size()) return Variant::nothing();
                        return i.world().lookup(i.folder->items[i.nextPosition++]);
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
            .enumerable([](Items& i) {
                std::vector<Variant> out;
                for (const auto& c : i.folder->items)
                    out.push_back(i.world().lookup(c));
                return out;
            })
            .events(u"ItemsEvents")
            .build();
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

std::shared_ptr<Item> Folder::addRecurringAppointment(Str subject, hb::Date start, hb::Date end,
                                                      Str categories) {
    auto item = addAppointment(std::move(subject), start, end, std::move(categories));
    item->isRecurring = true;
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

void changed(Item& i) {
    i.dirty = true;
}

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
                    changed(i);
                })
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

namespace {

// The values of an item that a lookup copies and a Save stores (not where
// it is, its identity or its counters).
void copyValues(Item& to, const Item& from, bool withDates = true) {
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
    to.categories = from.categories;
}

// The user properties of `from` as new objects of `to`.
void copyProperties(Item& to, const Item& from) {
    to.userProperties.clear();
    for (const auto& p : from.userProperties) {
        auto q = to.world().make<UserProperty>(p->name, p->type);
        q->value = p->value;
        q->item = self(to);
        to.userProperties.push_back(q);
    }
}

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

std::shared_ptr<Item> Item::addException(hb::Date s, hb::Date e) {
    isRecurring = true;
    auto x = world().make<Item>(ItemKind::Appointment, Str(kExceptionClass));
    copyValues(*x, *this, false);
    x->messageClass = kExceptionClass;
    x->start = s;
    x->end = e;
    x->entryId = entryId;
    x->master = self(*this);
    x->folder = folder;
    x->inFolder = false;
    exceptions.push_back(x);
    return x;
}

std::shared_ptr<Item> Item::occurrence(hb::Date s, hb::Date e) {
    isRecurring = true;
    for (const auto& list : {occurrences, exceptions}) {
        for (const auto& o : list) {
            if (o->start.days == s.days) return o;
        }
    }
    auto o = world().make<Item>(ItemKind::Appointment, messageClass);
    copyValues(*o, *this, false);
    copyProperties(*o, *this);
    o->start = s;
    o->end = e;
    o->entryId = entryId;
    o->master = self(*this);
    o->folder = folder;
    o->isOccurrence = true;
    occurrences.push_back(o);
    return o;
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
