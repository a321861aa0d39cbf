#pragma once
// The simulated Outlook: one in-memory Outlook process with its object model
// (Application, NameSpace, stores and folders, Items, appointments, meeting
// requests, mail items, user properties, Explorers and Inspectors with their
// selection, Office command bars, custom task panes) behind the automation
// seam. The add-in only ever sees Handles to these objects (see
// sim/Instruments.h); tests and the scenario driver (sim/Scenario.h) reach
// the objects and their state directly, which the call log does not count.
//
// Behaviour that Outlook has and the add-in relies on, as modelled here:
//  - Folder.Items returns a new Items collection at every call, and ItemAdd
//    reaches only the collections that are still referenced when it is
//    raised: an add-in must keep its Items to hear ItemAdd.
//  - ItemAdd is raised when an item enters a folder: the first Save of an
//    item made by Items.Add or Application.CreateItem, a copy or move into
//    the folder. Later Saves raise ItemChange, never ItemAdd. Events that a
//    call of the add-in causes (ItemAdd, ItemChange, ItemRemove) arrive
//    after that call, as Outlook's store notifications do: they are posted
//    and delivered by Outlook::pump(), which the driver runs after each of
//    its actions.
//  - Items.Item("text") (the default member with a text) is the first item
//    whose Subject is that text (letter case ignored); no match raises
//    "The attempted operation failed.  An object could not be found."
//    Items.Find("[Subject]='text'") gives the first match or Nothing.
//    UserProperties.Find(name) and UserProperties(name) give Nothing for a
//    missing property.
//  - Setting an appointment's Start moves its End with it (the duration
//    stays), as Outlook does.
//  - Categories is kept as a list of keywords: an assigned text is split at
//    the list separator, each piece trimmed, empty pieces and repeats
//    (letter case ignored) dropped, and reading joins them with the list
//    separator and a blank: ",Acme,Smith" reads back "Acme, Smith".
//  - UserProperties.Add with the name of an existing property of the same
//    type replaces it with a new, empty property (Outlook overwrites it);
//    with another type it raises. Assigning a user property converts the
//    value to its type (text, double, date, Boolean, 32-bit integer,
//    currency) and raises 13 when it cannot. A new property reads Empty.
//  - Items made by Items.Add / CreateItem have no EntryID until saved.
//  - Every lookup of an item (Items, Selection, an event's argument, a
//    Parent) gives a new object read from what is stored, as Outlook's item
//    wrappers: what is written to one object stays in it (Saved False)
//    until its Save stores it, and is lost when the object is let go.
//    Telling items apart takes their EntryID, never the objects. The item
//    open in an inspector is the exception: every lookup of it reaches the
//    window's copy, with the user's unsaved changes (CurrentItem gives a
//    new object over it each time).
//  - A recurring series is its master (RecurrenceState 1), its exceptions
//    (3) and its occurrences (2): an occurrence reads the master's values
//    with its own dates, its Parent is the master (as an exception's), its
//    EntryID the master's; saving a changed occurrence makes it an
//    exception of the series.
//  - MeetingItem has no Start or End (438), as Outlook's meeting item.
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/Constants.h"
#include "sim/SimObject.h"

namespace sim {

class Application;
class NameSpace;
class Folder;
class Items;
class Item;
class UserProperties;
class UserProperty;
class Window;
class Explorer;
class Explorers;
class Inspector;
class Inspectors;
class Selection;
class CommandBars;
class CommandBar;
class CommandBarControls;
class CommandBarControl;
class TaskPaneFactory;
class CustomTaskPane;
class ComAddIn;

// Outlook enumerations.
namespace ol {
constexpr std::int32_t FolderDeletedItems = 3;
constexpr std::int32_t FolderOutbox = 4;
constexpr std::int32_t FolderSentMail = 5;
constexpr std::int32_t FolderInbox = 6;
constexpr std::int32_t FolderCalendar = 9;
constexpr std::int32_t FolderContacts = 10;
constexpr std::int32_t FolderJournal = 11;
constexpr std::int32_t FolderNotes = 12;
constexpr std::int32_t FolderTasks = 13;
constexpr std::int32_t FolderDrafts = 16;

constexpr std::int32_t MailItem = 0;
constexpr std::int32_t AppointmentItem = 1;

constexpr std::int32_t Text = 1;
constexpr std::int32_t Number = 3;
constexpr std::int32_t DateTime = 5;
constexpr std::int32_t YesNo = 6;
constexpr std::int32_t Currency = 14;
constexpr std::int32_t Integer = 20;

// OlObjectClass values of Class.
constexpr std::int32_t ClassAppointment = 26;
constexpr std::int32_t ClassMail = 43;
constexpr std::int32_t ClassMeetingRequest = 53;
}  // namespace ol

// Office enumerations.
namespace mso {
constexpr std::int32_t ControlButton = 1;
constexpr std::int32_t ControlEdit = 2;
constexpr std::int32_t ControlDropdown = 3;
constexpr std::int32_t ControlComboBox = 4;
constexpr std::int32_t ControlPopup = 10;

constexpr std::int32_t BarLeft = 0;
constexpr std::int32_t BarTop = 1;
constexpr std::int32_t BarRight = 2;
constexpr std::int32_t BarBottom = 3;
constexpr std::int32_t BarFloating = 4;
constexpr std::int32_t BarPopup = 5;

constexpr std::int32_t DockLeft = 0;
constexpr std::int32_t DockTop = 1;
constexpr std::int32_t DockRight = 2;
constexpr std::int32_t DockBottom = 3;
constexpr std::int32_t DockFloating = 4;
}  // namespace mso

inline constexpr char16_t kAppointmentClass[] = u"IPM.Appointment";
inline constexpr char16_t kMeetingRequestClass[] = u"IPM.Schedule.Meeting.Request";
inline constexpr char16_t kMailClass[] = u"IPM.Note";
inline constexpr char16_t kExceptionClass[] =
    u"IPM.OLE.CLASS.{00061055-0000-0000-C000-000000000046}";

// Errors Outlook raises (numbers as the run time reports them).
constexpr std::int32_t kNotFoundNumber = -2147221233;      // MAPI_E_NOT_FOUND
constexpr std::int32_t kOutlookErrorNumber = -2147352567;  // DISP_E_EXCEPTION
constexpr std::int32_t kOfficeErrorNumber = -2147467259;   // E_FAIL

// A date from its parts (local time), as the run time's DateSerial +
// TimeSerial.
hb::Date makeDate(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);

struct Store {
    Str storeId;
    std::shared_ptr<Folder> root;
};

// A control (the task pane's content) the scenario can create by ProgID.
using ControlFactory = std::function<hb::ObjectPtr()>;

class Outlook {
  public:
    Outlook();
    ~Outlook();
    Outlook(const Outlook&) = delete;
    Outlook& operator=(const Outlook&) = delete;

    Instruments& instruments() { return *instruments_; }
    const std::shared_ptr<Instruments>& instrumentsPtr() const { return instruments_; }

    // ---- set-up ----
    // Application.Version, for example "12.0.4518.1014" (any text).
    Str version = u"12.0.4518.1014";
    // The major version, the number before the first "." (0 if none).
    int majorVersion() const;
    // The list separator of the user's locale (Categories are split at it).
    Str listSeparator = u",";

    // A new store; the first one made is the default store (the mailbox).
    Store& addStore(Str rootName);
    Store& defaultStore();
    std::vector<Store>& stores() { return stores_; }
    // A default folder of the default store, made on first use ("Calendar",
    // "Inbox", ...). Raises for an unknown number.
    std::shared_ptr<Folder> defaultFolder(std::int32_t olDefaultFolder);
    std::shared_ptr<Folder> calendar() { return defaultFolder(ol::FolderCalendar); }
    std::shared_ptr<Folder> inbox() { return defaultFolder(ol::FolderInbox); }

    // Controls that CreateCTP can make, by ProgID (letter case ignored).
    void registerControl(Str progId, ControlFactory factory);

    // ---- the object model's singletons ----
    std::shared_ptr<Application> application();
    std::shared_ptr<NameSpace> nameSpace();
    std::shared_ptr<Explorers> explorersCollection();
    std::shared_ptr<Inspectors> inspectorsCollection();
    std::shared_ptr<TaskPaneFactory> taskPaneFactory();

    // ---- windows ----
    const std::vector<std::shared_ptr<Explorer>>& explorers() const { return explorers_; }
    const std::vector<std::shared_ptr<Inspector>>& inspectors() const { return inspectors_; }
    // Every window ever opened, closed ones too (their command bars stay
    // inspectable).
    const std::vector<std::shared_ptr<Window>>& allWindows() const { return allWindows_; }
    // The window that has the focus; before any window was activated (at
    // start-up) the explorer that is opening; null when no window is open.
    std::shared_ptr<Window> activeWindow() const;
    // The topmost explorer (the last activated, else the first opened).
    std::shared_ptr<Explorer> activeExplorer() const;
    std::shared_ptr<Inspector> activeInspector() const;

    // Opens an explorer on a folder: raises NewExplorer; not yet activated.
    std::shared_ptr<Explorer> openExplorer(std::shared_ptr<Folder> folder);
    // Opens (or, when open, finds) the inspector of an item: raises
    // NewInspector for a new one, then activates it.
    std::shared_ptr<Inspector> openInspector(std::shared_ptr<Item> item);
    // Gives a window the focus: Deactivate on the window that had it, then
    // Activate on this one. Nothing happens when it has the focus already.
    void activate(const std::shared_ptr<Window>& window);
    // The user switches to another program: the active window gets
    // Deactivate. Back in Outlook (in `window`, else the window left), it
    // gets Activate.
    void loseFocus();
    void regainFocus(const std::shared_ptr<Window>& window = nullptr);
    bool hasFocus() const { return !away_; }
    // Closes a window: Close event, then the window is gone; the focus goes
    // to the topmost remaining window (Activate). When the last window
    // closes, Outlook quits (onQuit, posted).
    void closeWindow(const std::shared_ptr<Window>& window);
    // Switches an explorer's folder as Outlook does: BeforeFolderSwitch
    // (NewFolder, Cancel by reference; NewFolder is Nothing for a folder
    // outside the stores); unless cancelled, the folder
    // changes, the selection empties, then FolderSwitch and
    // SelectionChange. Returns false when cancelled.
    bool switchFolder(const std::shared_ptr<Explorer>& explorer, std::shared_ptr<Folder> folder);
    // Replaces an explorer's selection and raises SelectionChange.
    void select(const std::shared_ptr<Explorer>& explorer,
                std::vector<std::shared_ptr<Item>> items);

    // Outlook decides to quit (its last window closed, Application.Quit):
    // posted; the driver runs its quit sequence.
    std::function<void()> onQuit;
    void requestQuit();

    // ---- Outlook's end ----
    // Temporary command bars and controls vanish, task panes go (their
    // controls are released), windows close without events. Called by the
    // driver's quit after the add-in was disconnected.
    void shutDown();
    bool running = false;
    bool quitting = false;  // the quit sequence runs: closing windows does not quit again

    // ---- event delivery ----
    // Queues an event that a call caused; pump() delivers the queue in order.
    void post(std::function<void()> event);
    void pump();
    std::size_t pendingEvents() const { return posted_.size(); }
    // Runs after the events were delivered (the driver's ribbon refresh).
    std::function<void()> onIdle;
    // Every event raised, in order: "ExplorerEvents.Activate (Explorer)".
    std::vector<std::string> eventLog;

    // ---- used by the objects ----
    template <class T, class... A>
    std::shared_ptr<T> make(A&&... args) {
        auto p = std::make_shared<T>(*this, std::forward<A>(args)...);
        register_(p);
        return p;
    }
    Str newEntryId();
    std::shared_ptr<Folder> findFolder(const Str& entryId) const;
    // Whether a folder belongs to one of the stores.
    bool inStores(const Folder& folder) const;
    // A folder outside every store (what a shortcut or a data file that is
    // being closed shows).
    std::shared_ptr<Folder> outsideFolder(Str name);
    std::shared_ptr<Item> createItem(std::int32_t olItemType);
    // What a lookup of a stored item gives the add-in: a new object read
    // from the store, or (the item is open in an inspector) a new object
    // over the window's copy.
    Variant lookup(const std::shared_ptr<Item>& item);
    Str categoriesText(const Str& assigned) const;                 // the keyword normalisation
    std::shared_ptr<hb::Object> createControl(const Str& progId);  // raises for unknown
    void logEvent(StrView eventInterface, const Str& member, const SimObject& source);

  private:
    void register_(const std::shared_ptr<SimObject>& object);
    void forget(const std::shared_ptr<Window>& window);

    std::shared_ptr<Instruments> instruments_;
    std::vector<Store> stores_;
    std::map<std::int32_t, std::shared_ptr<Folder>> defaultFolders_;
    std::map<Str, ControlFactory> controls_;  // by folded ProgID
    std::shared_ptr<Application> application_;
    std::shared_ptr<NameSpace> nameSpace_;
    std::shared_ptr<Explorers> explorersCollection_;
    std::shared_ptr<Inspectors> inspectorsCollection_;
    std::shared_ptr<TaskPaneFactory> taskPaneFactory_;
    std::vector<std::shared_ptr<Explorer>> explorers_;
    std::vector<std::shared_ptr<Inspector>> inspectors_;
    std::vector<std::shared_ptr<Window>> allWindows_;
    std::vector<std::weak_ptr<Window>> focusOrder_;  // last: the active window
    std::shared_ptr<Window> active_;
    bool away_ = false;  // another program has the focus
    std::deque<std::function<void()>> posted_;
    bool pumping_ = false;
    std::vector<std::weak_ptr<SimObject>> objects_;
    std::size_t compactAt_ = 256;
    std::uint64_t nextId_ = 1;
};

// ---- Application, NameSpace, COMAddIn ----

class Application : public SimObject {
  public:
    explicit Application(Outlook& world);
};

class NameSpace : public SimObject {
  public:
    explicit NameSpace(Outlook& world);
};

// The add-in's entry in Office's COM add-ins list (OnConnection's AddInInst).
class ComAddIn : public SimObject {
  public:
    ComAddIn(Outlook& world, Str progId, Str description);
    Str progId, description, guid;
    bool connect = true;
    Variant object;  // the add-in's own object, if it set one
    void detach() override;
};

// ---- folders and items ----

class Folder : public SimObject {
  public:
    Folder(Outlook& world, Str name, Str storeId, std::int32_t defaultItemType);

    Str name, entryId, storeId;
    std::int32_t defaultItemType;        // ol::MailItem or ol::AppointmentItem
    std::weak_ptr<Folder> parentFolder;  // empty for a store's root
    std::vector<std::shared_ptr<Folder>> folders;
    std::vector<std::shared_ptr<Item>> items;  // in order of arrival

    // Set-up (no events, no Save counted): items already in the folder.
    std::shared_ptr<Folder> addFolder(Str name, std::int32_t defaultItemType = ol::MailItem);
    std::shared_ptr<Item> addAppointment(Str subject, hb::Date start, hb::Date end,
                                         Str categories = {});
    std::shared_ptr<Item> addMeetingRequest(Str subject, Str categories = {});
    std::shared_ptr<Item> addMail(Str subject, Str to = {}, Str body = {});
    // A recurring series (its master appointment).
    std::shared_ptr<Item> addRecurringAppointment(Str subject, hb::Date start, hb::Date end,
                                                  Str categories = {});
    // The first item of that subject, or null.
    std::shared_ptr<Item> findBySubject(StrView subject) const;

    // An item enters the folder (EntryID given when missing); raises
    // ItemAdd (posted) when asked.
    void insert(const std::shared_ptr<Item>& item, bool raiseItemAdd);
    void remove(const std::shared_ptr<Item>& item);
    // Raises an Items event (posted) on every live Items collection.
    void postItemsEvent(const Str& member, std::shared_ptr<Item> item);
    // A new Items collection over this folder.
    std::shared_ptr<Items> newItemsCollection();
    std::size_t liveItemsCollections() const;

  private:
    std::vector<std::weak_ptr<Items>> collections_;
};

class Folders : public SimObject {
  public:
    // The subfolders of a folder, or (folder null) the stores' roots.
    Folders(Outlook& world, std::shared_ptr<Folder> folder);
    std::vector<std::shared_ptr<Folder>> list() const;
    std::shared_ptr<Folder> folder;
};

class Items : public SimObject {
  public:
    Items(Outlook& world, std::shared_ptr<Folder> folder);
    std::shared_ptr<Folder> folder;
    // Find / FindNext state.
    Str lastFilter;
    std::size_t nextPosition = 0;
};

enum class ItemKind : std::uint8_t { Appointment, MeetingRequest, Mail };

class Item : public SimObject {
  public:
    Item(Outlook& world, ItemKind kind, Str messageClass);

    ItemKind kind;
    Str messageClass, subject, body, location, to, cc;
    hb::Date start, end;
    bool reminderSet = true;
    bool allDayEvent = false;
    // As Outlook keeps it (see categoriesText); set through setCategories.
    Str categories;
    Str entryId;  // empty until the item was first saved
    // The folder the item is in, or (not yet saved) will go to on Save.
    std::weak_ptr<Folder> folder;
    bool inFolder = false;
    // Recurrence: a master holds its exceptions and the occurrences asked
    // for; an exception's or occurrence's Parent is its master.
    bool isRecurring = false;
    bool isOccurrence = false;
    std::weak_ptr<Item> master;
    std::vector<std::shared_ptr<Item>> exceptions;
    std::vector<std::shared_ptr<Item>> occurrences;

    // An object the add-in got by a lookup: its own copy of the values, and
    // the stored item it was read from (null for the stored item itself).
    std::shared_ptr<Item> stored;
    // A further object over the same copy (CurrentItem): calls go there.
    std::shared_ptr<Item> target;
    // The stored item behind an object (itself when it is the stored one).
    Item& record() { return target ? target->record() : stored ? *stored : *this; }
    const Item& record() const { return target ? target->record() : stored ? *stored : *this; }
    std::shared_ptr<Item> recordPtr() { return detail::self(record()); }
    // The object whose values a call reads (the copy a view stands for).
    std::shared_ptr<Item> resolved() { return target ? target : detail::self(*this); }
    // A new object with its own copy of the stored values.
    std::shared_ptr<Item> workingCopy();
    // A new object over this one (calls reach this one).
    std::shared_ptr<Item> view();
    Variant invoke(hb::CallKind kind, const Str& member, Args& args) override;

    int saveCount = 0;     // Save calls
    int displayCount = 0;  // Display calls
    int sendCount = 0;     // Send calls (mail)
    bool dirty = false;    // changed since the last Save
    bool deleted = false;

    std::vector<std::shared_ptr<UserProperty>> userProperties;
    std::shared_ptr<UserProperty> findUserProperty(StrView name) const;
    // Set-up: a typed user property with a value (converted to the type).
    std::shared_ptr<UserProperty> addUserProperty(Str name, std::int32_t type, Variant value);

    void setCategories(const Str& text);
    // An exception of this recurring series (a master), with its own start.
    std::shared_ptr<Item> addException(hb::Date start, hb::Date end);
    // The occurrence of this series (a master) at that start, as selecting
    // it in the calendar gives it (the same one for the same start).
    std::shared_ptr<Item> occurrence(hb::Date start, hb::Date end);
    // What Save does.
    void save();
    // A copy of the item (new, not in any folder, nothing saved).
    std::shared_ptr<Item> copy() const;
    // Parent: the folder, or for an exception or occurrence its master.
    Variant parent();

    Str unusableReason() const override;
};

class UserProperties : public SimObject {
  public:
    UserProperties(Outlook& world, std::shared_ptr<Item> item);
    std::shared_ptr<Item> item;
};

class UserProperty : public SimObject {
  public:
    UserProperty(Outlook& world, Str name, std::int32_t type);
    Str name;
    std::int32_t type;
    Variant value;  // Empty until assigned
    std::weak_ptr<Item> item;
    bool deleted = false;
    // Converts a value to the property's type as Outlook does (raises 13).
    Variant coerce(const Variant& v) const;
    Str unusableReason() const override;
};

// ---- windows ----

class Window : public SimObject {
  public:
    Window(Outlook& world, Str typeName, std::shared_ptr<const hb::MemberTable> members);
    std::shared_ptr<CommandBars> commandBars;
    std::vector<std::shared_ptr<CustomTaskPane>> panes;
    bool open = true;
    int activateCount = 0;
    virtual Str caption() const = 0;
    bool isExplorer() const;
    void removePanes();  // the window's task panes go, with their controls
    Str unusableReason() const override;
    void detach() override;
};

class Explorer : public Window {
  public:
    explicit Explorer(Outlook& world);
    std::shared_ptr<Folder> currentFolder;
    std::vector<std::shared_ptr<Item>> selection;
    Str caption() const override;
};

class Inspector : public Window {
  public:
    explicit Inspector(Outlook& world);
    std::shared_ptr<Item> currentItem;
    Str caption() const override;
};

class Explorers : public SimObject {
  public:
    explicit Explorers(Outlook& world);
};

class Inspectors : public SimObject {
  public:
    explicit Inspectors(Outlook& world);
};

class Selection : public SimObject {
  public:
    Selection(Outlook& world, std::weak_ptr<Explorer> explorer,
              std::vector<std::shared_ptr<Item>> items);
    std::weak_ptr<Explorer> explorer;
    std::vector<std::shared_ptr<Item>> items;
};

}  // namespace sim
