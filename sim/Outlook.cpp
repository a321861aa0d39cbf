#include "sim/Outlook.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "common/DateTime.h"
#include "common/Text.h"
#include "sim/Office.h"
#include "sim/OutlookInternal.h"

namespace sim {

using namespace detail;

using hb::Members;

namespace {

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

std::shared_ptr<ComAddIns> Outlook::comAddInsCollection() {
    if (!comAddInsCollection_) comAddInsCollection_ = make<ComAddIns>();
    return comAddInsCollection_;
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
            .get(u"COMAddIns", [](Application& a) { return obj(a.world().comAddInsCollection()); })
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
std::shared_ptr<const hb::MemberTable> comAddInsTable() {
    static const auto t =
        Members<ComAddIns>()
            .get(u"Count",
                 [](ComAddIns& c) { return static_cast<std::int32_t>(c.world().comAddIns.size()); })
            .method(u"Item",
                    [](ComAddIns& c, Args& args) {
                        const Variant index = hb::requiredArg(args, 0);
                        const auto& list = c.world().comAddIns;
                        if (index.isString()) {
                            for (const auto& a : list)
                                if (hb::text::equalsNoCase(a->progId, index.toStr())) return obj(a);
                        } else {
                            const std::int32_t n = index.toLong();
                            if (n >= 1 && n <= static_cast<std::int32_t>(list.size()))
                                return obj(list[static_cast<std::size_t>(n - 1)]);
                        }
                        hb::raise(9, u"Subscript out of range");
                    })
            .defaultMember(u"Item")
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

ComAddIns::ComAddIns(Outlook& world) : SimObject(world, u"COMAddIns", comAddInsTable()) {}

void ComAddIn::detach() {
    object = Variant();
    SimObject::detach();
}

}  // namespace sim
