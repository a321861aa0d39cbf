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
//  - Items.Restrict(filter) gives a new collection: the items of the folder
//    that match the filter when it is called (a snapshot; later changes to
//    the folder do not reach it), in the collection's sort order. Filters
//    are Jet texts: conditions "[Property] op 'value'" (op = <> < <= > >=,
//    the value in single or double quotes, a doubled quote stands for one)
//    joined by AND, OR and NOT, parentheses optional. [Start] and [End]
//    compare dates: the value is written as the user writes a date and a
//    time (the short date format and a time without seconds, "11/30/2026
//    11:59 PM" in en-US, "30.11.2026 23:59" in de-DE) and read with the
//    locale the simulation is set to (Outlook::locale). A value that is no
//    date there (an ISO text under en-US, say) raises "Cannot parse
//    condition. Error at ..." (DISP_E_EXCEPTION). A value WITH seconds is
//    Outlook's quiet trap: the filter does not work as expected; here the
//    time of such a value is ignored (it compares as midnight of its day),
//    so a reader that writes seconds loses the last day's appointments.
//    An item without the property (a meeting request or mail has no Start)
//    never matches a condition on it. Restrict refuses [Categories], [Body]
//    and [EntryID] (as Outlook does) and properties it does not know.
//  - Items.Sort("[Start]" | "[End]" | "[Subject]", Descending) orders the
//    collection. Items.IncludeRecurrences = True expands recurring series
//    into their occurrences only when the collection was sorted by [Start]
//    ascending BEFORE it was set (set first and sorted after, or sorted by
//    anything else, the collection gives the series' masters only, as
//    Outlook does). The expansion is made by Restrict (a restricted
//    collection of an expanding one holds the occurrences that match; one
//    restricted first and expanded after does not expand). Count of an
//    expanding collection is 2147483647 (Outlook's value is undefined):
//    iterate with GetFirst/GetNext (or GetLast/GetPrevious). A series
//    without end in a collection not bounded by a [Start] upper limit is
//    endless in Outlook; here its expansion stops after
//    kExpansionCap occurrences, GetNext then gives Nothing, and For Each
//    over such a collection raises rather than running out of memory.
//  - An expanded collection lists each occurrence once: an occurrence of a
//    series reads its master's values on its own dates (RecurrenceState 2,
//    EntryID the master's, Parent the master); an exception has its own
//    Start, End, Subject and Categories (RecurrenceState 3) and takes the
//    place of the occurrence of its original date; a deleted occurrence is
//    not there. RecurrencePattern.Exceptions lists both (Exception.Deleted,
//    OriginalDate, AppointmentItem). A test can make every expanded
//    occurrence listed twice (Outlook::repeatOccurrences), for readers that
//    must cope with a store that repeats them.
//  - Recurrence (GetRecurrencePattern): the pattern types, the days of
//    week as OlDaysOfWeek bits, Instance 1-4 or 5 (last); a monthly or
//    yearly day past the month's end falls on its last day; occurrences
//    ending by count count deleted ones too. The pattern is read-only here.
//    GetOccurrence(date) gives the occurrence (or the exception) whose
//    original start is that date (a date with a time must be that start);
//    none raises "You changed one of the recurrences of this item, and this
//    instance no longer exists. Close any open items and try again."
//  - Folder.GetTable(filter) (a Jet filter as Restrict's; "@SQL=" filters
//    are not modelled) gives a Table of the matching items with the
//    columns EntryID, Subject and MessageClass (this simulation keeps no
//    creation times) until Columns.RemoveAll / Columns.Add change them; a
//    series is one row (its master), never its occurrences. Row(name or
//    1-based index) reads a column (dates in local time); a column the
//    table does not have raises. GetNextRow gives Nothing after the last
//    row (EndOfTable True); MoveToStart rewinds.
//  - AllDayEvent = True moves Start to midnight of its day and End to the
//    midnight after its last day (local time), as Outlook keeps all-day
//    events. Sensitivity: olNormal 0, olPersonal 1, olPrivate 2,
//    olConfidential 3.
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/Constants.h"
#include "common/Locale.h"
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
class ComAddIns;

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

// OlRecurrenceType, OlDaysOfWeek, OlSensitivity.
constexpr std::int32_t RecursDaily = 0;
constexpr std::int32_t RecursWeekly = 1;
constexpr std::int32_t RecursMonthly = 2;
constexpr std::int32_t RecursMonthNth = 3;
constexpr std::int32_t RecursYearly = 5;
constexpr std::int32_t RecursYearNth = 6;
constexpr std::int32_t Sunday = 1;
constexpr std::int32_t Monday = 2;
constexpr std::int32_t Tuesday = 4;
constexpr std::int32_t Wednesday = 8;
constexpr std::int32_t Thursday = 16;
constexpr std::int32_t Friday = 32;
constexpr std::int32_t Saturday = 64;
constexpr std::int32_t Normal = 0;
constexpr std::int32_t Personal = 1;
constexpr std::int32_t Private = 2;
constexpr std::int32_t Confidential = 3;

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

// Count of a collection that expands recurring series.
constexpr std::int32_t kUnknownCount = 2147483647;
// Where the expansion of an endless series stops (see the header comment).
constexpr std::size_t kExpansionCap = 5000;

// A recurrence pattern (days are whole day numbers of the date count).
struct Recurrence {
    std::int32_t type = ol::RecursWeekly;
    std::int32_t interval = 1;
    std::int32_t dayOfWeekMask = 0;  // OlDaysOfWeek bits (weekly, ...Nth)
    std::int32_t dayOfMonth = 0;     // monthly, yearly
    std::int32_t monthOfYear = 0;    // yearly, yearNth (1-12)
    std::int32_t instance = 0;       // monthNth, yearNth: 1-4, 5 the last
    std::int32_t patternStart = 0;   // the day of the first occurrence (at the latest)
    std::int32_t patternEnd = 0;     // the last possible day (end by date)
    bool noEndDate = true;
    std::int32_t occurrences = 0;  // end after this many (0: by date or never)
    double startTime = 0;          // time of day of each start (fraction)
    double duration = 0;           // days

    // Set-up helpers: the kind of pattern; the series' first start gives
    // PatternStartDate, StartTime and Duration (addSeries).
    static Recurrence daily(std::int32_t interval = 1);
    static Recurrence weekly(std::int32_t mask, std::int32_t interval = 1);
    static Recurrence monthly(std::int32_t dayOfMonth, std::int32_t interval = 1);
    static Recurrence monthNth(std::int32_t instance, std::int32_t mask, std::int32_t interval = 1);
    static Recurrence yearly(std::int32_t month, std::int32_t dayOfMonth);
    static Recurrence yearNth(std::int32_t instance, std::int32_t mask, std::int32_t month);
    Recurrence until(hb::Date lastDay) const;    // end by date
    Recurrence times(std::int32_t count) const;  // end after a count

    // Whether the pattern has an occurrence on that day (its end and count
    // aside).
    bool matchesDay(std::int32_t day) const;
    // The days of the occurrences from `from` to `to` (both included), in
    // order, the end and the count applied; at most `cap` of them.
    std::vector<std::int32_t> days(std::int32_t from, std::int32_t to, std::size_t cap) const;
    // The day of the last occurrence (end by count or date), or nullopt.
    std::optional<std::int32_t> lastDay() const;
};

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
    // The user's regional settings: how Restrict reads the dates of a filter.
    hb::Locale locale = hb::Locale::enUS();
    // A test setting: expanded collections list every occurrence twice.
    bool repeatOccurrences = false;

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
    std::shared_ptr<ComAddIns> comAddInsCollection();
    // Office's list of COM add-ins (Application.COMAddIns).
    std::vector<std::shared_ptr<ComAddIn>> comAddIns;

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
    std::shared_ptr<ComAddIns> comAddInsCollection_;
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

// Application.COMAddIns: Item takes a position (from 1) or a ProgID.
class ComAddIns : public SimObject {
  public:
    explicit ComAddIns(Outlook& world);
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
    // Its pattern: weekly on the start's day, from that day, without end.
    std::shared_ptr<Item> addRecurringAppointment(Str subject, hb::Date start, hb::Date end,
                                                  Str categories = {});
    // A series with a pattern: start and end are those of the first
    // occurrence (its day is PatternStartDate; the times and the length
    // are each occurrence's).
    std::shared_ptr<Item> addSeries(Str subject, hb::Date start, hb::Date end, Recurrence pattern,
                                    Str categories = {});
    // An all-day event over `days` days from the day of `firstDay`.
    std::shared_ptr<Item> addAllDayEvent(Str subject, hb::Date firstDay, int days = 1,
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

struct FilterNode;

// One member of a sorted, restricted or expanding collection: a stored item
// (a single appointment, a master, an exception) or an occurrence of a
// series (master and original start) made into an object when reached.
struct ItemsEntry {
    std::shared_ptr<Item> item;
    std::shared_ptr<Item> master;  // an occurrence: its series
    hb::Date start;                // an occurrence: its (original) start
};

class Items : public SimObject {
  public:
    Items(Outlook& world, std::shared_ptr<Folder> folder);
    std::shared_ptr<Folder> folder;
    // Find / FindNext state.
    Str lastFilter;
    std::size_t nextPosition = 0;

    // Sort, IncludeRecurrences and Restrict state.
    Str sortProperty;  // empty: the folder's order
    bool sortDescending = false;
    bool includeRecurrences = false;
    bool expansionArmed = false;  // set True while sorted by [Start] ascending
    std::shared_ptr<const FilterNode> restriction;
    // A restricted collection's snapshot (null: the folder, read live).
    std::shared_ptr<std::vector<ItemsEntry>> snapshot;
    bool capped = false;            // an endless series was cut at kExpansionCap
    bool expandedSnapshot = false;  // restricted from an expanding collection
    // GetFirst/GetNext/GetLast/GetPrevious over a sorted or restricted view.
    std::vector<ItemsEntry> cursorView;
    std::size_t cursor = 0;

    // Whether the collection gives series' occurrences rather than masters.
    bool expands() const;
    // Whether it is more than the folder's items in the folder's order.
    bool plain() const { return !snapshot && sortProperty.empty() && !expands(); }
    // Its members now, in order.
    std::vector<ItemsEntry> entries();
    // What the add-in gets for one member.
    Variant objectOf(const ItemsEntry& entry);
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
    std::int32_t sensitivity = ol::Normal;
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
    // A master's pattern and the original starts of its deleted occurrences.
    Recurrence recurrence;
    std::vector<hb::Date> deletedOccurrences;
    // An exception's original start (the occurrence it replaces).
    hb::Date originalDate;

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
    // An exception of this recurring series (a master), with its own start
    // (its original start: the same day at the pattern's time).
    std::shared_ptr<Item> addException(hb::Date start, hb::Date end);
    // An exception that moves the occurrence of originalStart.
    std::shared_ptr<Item> addException(hb::Date originalStart, hb::Date start, hb::Date end);
    // The occurrence of originalStart is deleted from the series.
    void deleteOccurrence(hb::Date originalStart);
    // The exception (or stored occurrence) of that original day, or null.
    std::shared_ptr<Item> exceptionOn(std::int32_t day) const;
    bool deletedOn(std::int32_t day) const;
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

// ---- Folder.GetTable (Outlook 2007 and later) ----

// A table of a folder's items: the items that matched the filter when it
// was made (series as their masters only: a table does not expand them),
// one row each, with the columns asked for.
class Table : public SimObject {
  public:
    Table(Outlook& world, std::vector<std::shared_ptr<Item>> rows);
    std::vector<std::shared_ptr<Item>> rows;
    std::vector<Str> columns;  // the properties, as Outlook names them
    std::size_t next = 0;      // the row GetNextRow gives
};

class TableColumns : public SimObject {
  public:
    TableColumns(Outlook& world, std::shared_ptr<Table> table);
    std::shared_ptr<Table> table;
};

class TableRow : public SimObject {
  public:
    TableRow(Outlook& world, std::shared_ptr<Item> item, std::vector<Str> columns);
    std::shared_ptr<Item> item;
    std::vector<Str> columns;
};

// ---- recurrence ----

// GetRecurrencePattern of a series (a view of its master's pattern).
class RecurrencePattern : public SimObject {
  public:
    RecurrencePattern(Outlook& world, std::shared_ptr<Item> master);
    std::shared_ptr<Item> master;  // the stored master
};

// RecurrencePattern.Exceptions: the changed and the deleted occurrences.
class Exceptions : public SimObject {
  public:
    Exceptions(Outlook& world, std::shared_ptr<Item> master);
    std::shared_ptr<Item> master;
};

class RecurrenceException : public SimObject {
  public:
    // item null: a deleted occurrence.
    RecurrenceException(Outlook& world, hb::Date originalDate, std::shared_ptr<Item> item);
    hb::Date originalDate;
    std::shared_ptr<Item> item;
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
