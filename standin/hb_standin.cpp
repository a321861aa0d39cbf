// The stand-in Outlook: loads the COM add-ins registered for Outlook the
// way Outlook loads them (by their registration, over real COM), serves
// them the simulated Outlook through the dispatch server, acts out a user's
// session in real windows and prints what happened: what the user did, what
// the add-in wrote to which appointment, the start-up time, the message
// boxes, and the reference census after the add-in was let go.
//
//   hb_standin.exe [--version 9..16] [--shots FOLDER] [--startup-only]
//   hb_standin.exe [--version 9..16] --after-startup
//   hb_standin.exe [--version 9..16] --fault-sweep startup|selection
//   hb_standin.exe [--version 9..16] -Embedding
//   hb_standin.exe --register-server | --unregister-server
//
// --after-startup: Outlook runs first without the add-in, with an
// appointment window open; then the user loads the add-in in the COM
// add-ins dialog (OnConnection with ext_cm_AfterStartup, no Startup event),
// and bills in the calendar and in that window.
// -Embedding: started by COM as Outlook.Application's local server (the
// keys --register-server writes and --unregister-server removes): serves its
// Application to other processes and quits when they let go
// (OutlookServer.h).
// Exit status: 0 when every expectation held, the add-in loaded, showed no
// message box and let go of every object it was handed; 1 otherwise. The
// fault sweep (FaultSweep.h) has rules of its own.
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <cwchar>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "apps/settings/SettingsResource.h"
#include "common/Constants.h"
#include "common/Text.h"
#include "sim/Scenario.h"
#include "standin/ChildProgram.h"
#include "standin/FaultSweep.h"
#include "standin/HostSetup.h"
#include "standin/HostWindows.h"
#include "standin/LoadedAddins.h"
#include "standin/OutlookServer.h"
#include "win/ComTestSupport.h"
#include "win/com/ComVariant.h"
#include "win/com/DispatchServer.h"

namespace standin {
namespace {

using hb::Str;

constexpr wchar_t kSettingsProgram[] = L"HBPersonalSettingsSingle.exe";
constexpr wchar_t kReportProgram[] = L"HBReporting.exe";
constexpr wchar_t kReportWindowClass[] = L"HourbookReportWindow";
// The report window's status line and detailed list (apps/reporting).
constexpr int kReportStatus = 1017;
constexpr int kReportList = 1013;
constexpr UINT kListViewItemCount = 0x1004;  // LVM_GETITEMCOUNT
constexpr int kFaceReport = 790;             // the Report button's face on the add-in's bar
constexpr int kFaceSettings = 1556;          // the Settings button's face on the add-in's bar
constexpr int kFaceStatistics = 1957;        // the Statistics button's face on the add-in's bar
constexpr wchar_t kStatisticsProgram[] = L"Cubelens.exe";
constexpr wchar_t kPivotWindowClass[] = L"HourbookPivotWindow";
// The pivot window's status line and list (apps/statistics/PivotWindow.h).
constexpr int kPivotStatus = 1115;
constexpr int kPivotList = 1109;

// What the user does, one step of the session.
enum class Do {
    Select,            // select the appointment `subject` in the main explorer
    PickToolbar,       // pick `entry` in box `box` of the add-in's bar of the active window
    OpenItem,          // open the appointment `subject` in an inspector
    PickPane,          // pick `entry` in box `box` of the inspector's pane (toolbar before 12)
    SaveAndClose,      // save the inspector's item and close the inspector
    OpenExplorer,      // open the calendar in a second explorer and select `subject` there
    CloseExplorer,     // close the second explorer
    Shot,              // save a screenshot of the active window as `entry`
    OpenSettings,      // press Settings on the main explorer's bar: the settings program starts
    AddEntry,          // in the settings dialog: add `entry` to list `box`
    RenameList,        // in the settings dialog: rename list `box` to `entry`
    SettingsOk,        // press OK in the settings dialog: it saves and ends
    BackToOutlook,     // activate the main explorer again
    MovePane,          // dock the open appointment window's task pane at position `box`
    CheckStored,       // the registry's setting `entry` must hold `expect`
    ToItem,            // activate the inspector opened before
    OpenReport,        // press Report: the report program's window shows this month's report
    ScriptReport,      // run the report program from a script: CSV, XLSX and HTML of this month
    OpenStatistics,    // press Statistics: Cubelens's pivot window shows the records
    ScriptStatistics,  // run Cubelens from a script: the pivot as CSV and HTML
};

struct Step {
    Do action;
    const char16_t* subject;
    int box;
    const char16_t* entry;
    // The categories `subject` must have afterwards (after PickPane those of
    // the appointment window, unsaved until SaveAndClose); after Select and
    // OpenExplorer what the add-in's boxes show, joined by ", "; after
    // OpenSettings the program's arguments; after BackToOutlook the lists
    // of the bar ("caption: entry, entry | ..."); after OpenReport the
    // number of rows of the report's detailed list; after ScriptReport and
    // ScriptStatistics the texts the CSV file holds, joined by "|"; after
    // OpenStatistics the pivot window's status line.
    const char16_t* expect;
    // Only from Outlook 12 on, where appointment windows have task panes
    // (before, the one toolbar holder serves the open window's bar).
    bool withPanes = false;
};

// The session: the billing of three appointments, in the calendar view, in
// an appointment window, and in a second calendar window; then the user
// changes the lists in the settings program and bills with the new ones.
const Step kSession[] = {
    {Do::Select, u"Project kickoff", 0, nullptr, u", , "},
    {Do::PickToolbar, u"Project kickoff", 1, u"Acme", u"Acme"},
    {Do::PickToolbar, u"Project kickoff", 2, u"Smith", u"Acme, Smith"},
    {Do::Select, u"Client call", 0, nullptr, u"Globex, Jones, "},
    {Do::PickToolbar, u"Client call", 3, u"Travel", u"Globex, Jones, Travel"},
    {Do::Shot, nullptr, 0, u"calendar", nullptr},
    {Do::OpenItem, u"Code review", 0, nullptr, nullptr},
    {Do::PickPane, u"Code review", 1, u"Initech", u"Initech"},
    {Do::PickPane, u"Code review", 2, u"Jones", u"Initech, Jones"},
    {Do::Shot, nullptr, 0, u"appointment", nullptr},
    {Do::SaveAndClose, u"Code review", 0, nullptr, u"Initech, Jones"},
    {Do::OpenExplorer, u"Code review", 0, nullptr, u"Initech, Jones, "},
    {Do::CloseExplorer, nullptr, 0, nullptr, nullptr},
    // The settings change while an appointment window shows its pane; the
    // pane moved and the window closed afterwards keep what was saved.
    {Do::OpenItem, u"Client call", 0, nullptr, nullptr, true},
    {Do::OpenSettings, nullptr, 0, nullptr, u"False"},
    {Do::AddEntry, nullptr, 1, u"Umbrella", nullptr},
    {Do::RenameList, nullptr, 3, u"Activity", nullptr},
    {Do::SettingsOk, nullptr, 0, nullptr, nullptr},
    {Do::MovePane, nullptr, 3, nullptr, nullptr, true},
    {Do::SaveAndClose, u"Client call", 0, nullptr, u"Globex, Jones, Travel", true},
    {Do::CheckStored, nullptr, 0, u"MetadataList",
     u"Company:Acme;Globex;Initech;Umbrella;\r\nPerson:Smith;Jones;\r\nActivity:Travel;Office;"
     u"\r\n"},
    {Do::CheckStored, nullptr, 0, u"PaneDockPos", u"3", true},
    {Do::BackToOutlook, nullptr, 0, nullptr,
     u"Company: Acme, Globex, Initech, Umbrella | Person: Smith, Jones | Activity: Travel, Office"},
    {Do::Select, u"Project kickoff", 0, nullptr, u"Acme, Smith, "},
    {Do::PickToolbar, u"Project kickoff", 1, u"Umbrella", u"Umbrella, Smith"},
    {Do::OpenItem, u"Client call", 0, nullptr, nullptr},
    {Do::PickPane, u"Client call", 3, u"Office", u"Globex, Jones, Office"},
    {Do::PickPane, u"Client call", 1, u"Umbrella", u"Umbrella, Jones, Office"},
    {Do::SaveAndClose, u"Client call", 0, nullptr, u"Umbrella, Jones, Office"},
    // The report of the day's work: what the user billed, with the new lists.
    {Do::OpenReport, nullptr, 0, nullptr, u"3"},
    {Do::ScriptReport, nullptr, 0, nullptr,
     u"Project kickoff|Umbrella|Client call|Office|Code review|Initech|85.00"},
    // The statistics of the records the report wrote to its database.
    {Do::OpenStatistics, nullptr, 0, nullptr, u"3 records, Hours 3.00"},
    {Do::ScriptStatistics, nullptr, 0, nullptr, u"Umbrella|Initech|Sum|3.00"},
};

// Loaded into a running Outlook whose calendar shows "Client call" selected
// and "Code review" open in an appointment window: the add-in takes both
// windows over at once.
const Step kAfterStartup[] = {
    {Do::Select, u"Project kickoff", 0, nullptr, u", , "},
    {Do::PickToolbar, u"Project kickoff", 1, u"Acme", u"Acme"},
    {Do::ToItem, nullptr, 0, nullptr, nullptr},
    {Do::PickPane, u"Code review", 1, u"Initech", u"Initech"},
    {Do::SaveAndClose, u"Code review", 0, nullptr, u"Initech"},
};

struct Options {
    int version = 12;
    std::wstring shots;
    bool startupOnly = false;
    bool afterStartup = false;
    std::optional<SweepPhase> sweep;
    bool embedding = false;
};

std::string utf8(const Str& s) {
    return hb::toUtf8(s);
}

std::string utf8(const std::wstring& s) {
    return hb::toUtf8(hb::com::fromWide(s.data(), s.size()));
}

// A value of the add-in's settings in the registry, as the add-in reads it.
Str storedSetting(const Str& name) {
    wchar_t buffer[4096] = {};
    DWORD size = sizeof buffer;
    if (RegGetValueW(HKEY_CURRENT_USER, L"Software\\Brindlewood\\Hourbook for Outlook\\Settings",
                     hb::com::wide(name).c_str(), RRF_RT_REG_SZ, nullptr, buffer,
                     &size) != ERROR_SUCCESS)
        return u"(missing)";
    return hb::com::fromWide(buffer, std::wcslen(buffer));
}

std::shared_ptr<sim::CommandBarControl> combo(const sim::Window& window, int n) {
    auto bar = sim::Scenario::bar(window, hb::kProductCaption);
    if (!bar || bar->deleted) return nullptr;
    int seen = 0;
    for (const auto& c : bar->controls->list)
        if (!c->deleted && c->isComboBox() && ++seen == n) return c;
    return nullptr;
}

// From Outlook 14 on the add-in's controls are the ribbon group's: the
// drop-down of list n as Office shows it in an explorer.
const sim::Ribbon::ControlView* ribbonList(const sim::Ribbon* ribbon, const sim::Window& window,
                                           int n) {
    const auto* explorer = dynamic_cast<const sim::Explorer*>(&window);
    if (!ribbon || !explorer || !ribbon->groupShown(*explorer)) return nullptr;
    const auto* v = ribbon->view(*explorer, u"hbList" + hb::toStr(static_cast<long long>(n)));
    return v && v->visible ? v : nullptr;
}

// What the three boxes of a window's bar (or drop-downs of its ribbon
// group) show, joined by ", ".
Str boxesText(const sim::Window& window, const sim::Ribbon* ribbon = nullptr) {
    Str text;
    if (ribbon) {
        for (int n = 1; n <= 3; ++n) {
            if (n > 1) text += u", ";
            const auto* v = ribbonList(ribbon, window, n);
            if (v && v->selected >= 0 && static_cast<std::size_t>(v->selected) < v->items.size())
                text += v->items[static_cast<std::size_t>(v->selected)].second;
        }
        return text;
    }
    for (int n = 1; n <= 3; ++n) {
        auto c = combo(window, n);
        if (n > 1) text += u", ";
        if (c) text += c->text;
    }
    return text;
}

// The lists of a window's bar: "caption: entry, entry | caption: ...".
Str listsText(const sim::Window& window, const sim::Ribbon* ribbon = nullptr) {
    Str text;
    if (ribbon) {
        for (int n = 1; n <= 3; ++n) {
            const auto* v = ribbonList(ribbon, window, n);
            if (!v) continue;
            if (!text.empty()) text += u" | ";
            text += v->label + u":";
            for (std::size_t i = 0; i < v->items.size(); ++i)
                text += (i ? u", " : u" ") + v->items[i].second;
        }
        return text;
    }
    for (int n = 1; n <= 3; ++n) {
        auto c = combo(window, n);
        if (!c) continue;
        if (!text.empty()) text += u" | ";
        text += c->caption + u":";
        for (std::size_t i = 0; i < c->entries.size(); ++i)
            text += (i ? u", " : u" ") + c->entries[i];
    }
    return text;
}

std::wstring folderOf(const std::wstring& path) {
    return path.substr(0, path.find_last_of(L"\\/"));
}

// The folder HBAddin.dll was loaded from.
std::wstring addinFolder() {
    wchar_t path[MAX_PATH * 4] = {};
    GetModuleFileNameW(GetModuleHandleW(L"HBAddin.dll"), path, MAX_PATH * 4);
    return folderOf(path);
}

class Session {
  public:
    explicit Session(const Options& options) : options_(options), windows_(sc_.outlook()) {
        // The controls report from inside their window procedure: nothing
        // may escape into it.
        windows_.onComboPick = [this](const std::shared_ptr<sim::CommandBarControl>& box,
                                      int index) { guarded([&] { sc_.pickInCombo(box, index); }); };
        windows_.onButtonClick = [this](const std::shared_ptr<sim::CommandBarControl>& button) {
            guarded([&] { sc_.click(button); });
        };
        // The ribbon group's real controls: Office calls the add-in's
        // onAction for the explorer they are in.
        windows_.onRibbonPick = [this](const sim::Window& window, const Str& id, int index) {
            guarded([&] { sc_.ribbonPick(explorerOf(window), id, index); });
        };
        windows_.onRibbonPress = [this](const sim::Window& window, const Str& id) {
            guarded([&] { sc_.ribbonPress(explorerOf(window), id); });
        };
    }

    int run();

  private:
    void setUpOutlook();
    bool start();
    void connectAfterStartup();
    void act(const Step& step);
    void reportWrites();
    bool expect(const Step& step);
    void quit();
    void guarded(const std::function<void()>& userAction);
    void pickInToolbar(const sim::Window& window, const Step& step);
    // The ribbon Office loaded from the add-in (Outlook 14 on), or null.
    const sim::Ribbon* ribbon() const {
        return sc_.ribbon() && sc_.ribbon()->loaded() ? sc_.ribbon() : nullptr;
    }
    void pickInRibbon(const Step& step);
    std::shared_ptr<sim::Explorer> explorerOf(const sim::Window& window) {
        for (const auto& e : sc_.outlook().explorers())
            if (e.get() == &window) return e;
        return nullptr;
    }
    void openSettings();
    void inSettingsDialog(const Step& step);
    // The report program's window, opened by the Report button: the rows of
    // its detailed list once the report is in ("" when none came).
    Str openReport();
    // The report program run as a script runs it, while Outlook serves it:
    // the CSV file's text ("" when the run failed).
    Str scriptReport();
    // A companion program's window opened by a button of the add-in.
    struct ProgramWindow {
        const char16_t* ribbonId;
        int faceId;
        const char* button;
        const wchar_t* exe;
        const wchar_t* windowClass;
        const char* program;
        int list, status;           // its list view and status line
        const wchar_t* statusSays;  // in the status line when the work is in
        const char* shot;           // the window's name and its picture's
    };
    // Presses the button, waits for the program's window and its rows (the
    // list's row count and the status line), captures it as `shot`.bmp in
    // the toolbar's session and closes it; false when no window came.
    bool openProgramWindow(const ProgramWindow& kind, ChildProgram& child, LRESULT& rows,
                           std::wstring& status);
    // Cubelens's pivot window, opened by the Statistics button: its status
    // line once the pivot is in ("" when none came).
    Str openStatistics();
    // Cubelens run as a script runs it on the folder the button gave it:
    // the CSV file's text ("" when the run failed); pivot.html beside it.
    Str scriptStatistics();
    // A file's text (UTF-8, without a byte-order mark), "" when unreadable.
    static std::string fileText(const std::wstring& path);
    // A CSV file's text, its rows printed as the session's log shows them.
    static Str shownCsv(const std::wstring& path, const char* name);
    std::wstring outputFolder() const;

    std::unique_ptr<RunningOutlook> running_;
    const Options& options_;
    sim::Scenario sc_;
    HostWindows windows_;
    std::shared_ptr<LoadedAddins> addins_ = std::make_shared<LoadedAddins>();
    std::map<const sim::Item*, std::pair<Str, Str>> written_;  // subject, categories seen
    std::shared_ptr<sim::Inspector> inspector_;
    std::shared_ptr<sim::Explorer> second_;
    std::unique_ptr<ChildProgram> settings_;
    std::wstring reportPath_;  // where the add-in started the report program from
    Str reportRows_, reportCsv_;
    std::wstring statsPath_, statsArguments_;  // how the add-in started Cubelens
    Str statsStatus_, statsCsv_;
    int failures_ = 0;
};

void Session::setUpOutlook() {
    sim::Outlook& o = sc_.outlook();
    furnishOutlook(o, options_.version);
    for (const auto& item : o.calendar()->items)
        written_[item.get()] = {item->subject, item->categories};
    o.registerControl(hb::kPaneProgId,
                      [this] { return windows_.createControl(hb::com::wide(hb::kPaneProgId)); });
}

bool Session::start() {
    std::printf("Outlook %s starts on the calendar (3 appointments)\n",
                utf8(sc_.outlook().version).c_str());
    running_ = std::make_unique<RunningOutlook>(sc_);
    if (options_.afterStartup) {
        // Outlook runs without the add-in for a while: the user opens an
        // appointment and selects another in the calendar.
        sim::Outlook& o = sc_.outlook();
        sc_.startOutlook(nullptr, sim::ol::FolderCalendar);
        std::printf("\n> opens \"Code review\", back in the calendar selects \"Client call\"\n");
        inspector_ = sc_.openInspector(o.calendar()->findBySubject(u"Code review"));
        sc_.activate(sc_.explorer());
        sc_.select(sc_.explorer(), {o.calendar()->findBySubject(u"Client call")});
        windows_.render();
        std::printf("\n> loads the add-in in the COM add-ins dialog\n");
    }
    LARGE_INTEGER started;
    QueryPerformanceCounter(&started);
    addins_->load();
    for (const auto& f : addins_->failures())
        std::printf("   add-in %s not loaded: %s (LoadBehavior set to 2)\n", utf8(f.progId).c_str(),
                    utf8(f.what).c_str());
    for (const auto& e : addins_->loaded())
        std::printf("   add-in %s created by its ProgID\n", utf8(e.progId).c_str());
    if (options_.afterStartup) {
        connectAfterStartup();
    } else {
        sc_.startOutlook(addins_->empty() ? nullptr : addins_, sim::ol::FolderCalendar);
    }
    const double elapsed = millisecondsSince(started);
    windows_.ribbon = ribbon();
    for (const Str& e : sc_.addinErrors)
        std::printf("   connection failed: %s\n", utf8(e).c_str());
    // The first toolbar: the add-in's bar with its three boxes; from Outlook
    // 14 on the ribbon group with its three drop-downs, and no bar at all.
    const bool wantsRibbon = sc_.outlook().majorVersion() >= 14;
    if (sc_.ribbon() && !sc_.ribbon()->loaded())
        std::printf("   Office refused the add-in's ribbon: %s\n",
                    utf8(sc_.ribbon()->loadError).c_str());
    const bool filled = wantsRibbon ? ribbonList(ribbon(), *sc_.explorer(), 3) != nullptr &&
                                          combo(*sc_.explorer(), 1) == nullptr
                                    : combo(*sc_.explorer(), 3) != nullptr;
    windows_.render();
    if (!sc_.addinLoaded()) {
        std::printf("   the add-in is not loaded\n");
        return false;
    }
    if (wantsRibbon) {
        std::printf(
            "   ribbon group \"Hourbook\" on the calendar's Home tab: %s; no toolbar in "
            "the Add-ins tab: %s\n",
            ribbonList(ribbon(), *sc_.explorer(), 3) ? "shown, three drop-downs" : "MISSING",
            combo(*sc_.explorer(), 1) ? "NO, one was added" : "none");
    } else {
        std::printf("   toolbar \"%s\" in the calendar window: %s\n",
                    utf8(hb::kProductCaption).c_str(), filled ? "made, three boxes" : "MISSING");
    }
    std::printf("   start-up, from CoCreateInstance to the first toolbar: %.1f ms, %llu calls\n",
                elapsed, static_cast<unsigned long long>(sc_.instruments().callCount()));
    if (!filled) ++failures_;
    return filled;
}

// The COM add-ins dialog loads the add-in into the running Outlook; the
// add-in starts at once on the windows open.
void Session::connectAfterStartup() {
    if (addins_->empty()) return;
    sc_.connectAddin(addins_);
    if (!inspector_) return;
    const bool pane = sc_.outlook().majorVersion() >= 12;
    bool served = false;
    for (const auto& p : inspector_->panes)
        served = served || !p->deleted;
    if (pane) {
        std::printf("   the open appointment window: %s\n",
                    served ? "task pane made" : "NO TASK PANE");
        if (!served) ++failures_;
    }
}

void Session::act(const Step& step) {
    sim::Outlook& o = sc_.outlook();
    auto item = step.subject ? o.calendar()->findBySubject(step.subject) : nullptr;
    const std::string subject = step.subject ? utf8(step.subject) : "";
    const std::string entry = step.entry ? utf8(step.entry) : "";
    switch (step.action) {
        case Do::Select:
            std::printf("\n> selects \"%s\" in the calendar\n", subject.c_str());
            sc_.select(sc_.explorer(), {item});
            break;
        case Do::PickToolbar: {
            std::printf("\n> picks \"%s\" in %s %d of the %s\n", entry.c_str(),
                        ribbon() ? "drop-down" : "box", step.box,
                        ribbon() ? "ribbon group" : "toolbar");
            if (ribbon()) {
                pickInRibbon(step);
            } else {
                pickInToolbar(*sc_.explorer(), step);
            }
            break;
        }
        case Do::OpenItem:
            std::printf("\n> opens \"%s\"\n", subject.c_str());
            inspector_ = sc_.openInspector(item);
            break;
        case Do::PickPane: {
            const bool pane = o.majorVersion() >= 12;
            std::printf("\n> picks \"%s\" in box %d of the appointment window's %s\n",
                        entry.c_str(), step.box, pane ? "task pane" : "toolbar");
            if (pane) {
                std::shared_ptr<sim::CustomTaskPane> shown;
                for (const auto& p : inspector_->panes)
                    if (!p->deleted) shown = p;
                if (!shown ||
                    !windows_.pickInPane(*shown, step.box - 1, hb::com::wide(step.entry))) {
                    std::printf("   no task pane with that entry\n");
                    ++failures_;
                }
                o.pump();
            } else {
                pickInToolbar(*inspector_, step);
            }
            break;
        }
        case Do::SaveAndClose:
            std::printf("\n> saves and closes the appointment window\n");
            sc_.saveItem(inspector_);
            sc_.close(inspector_);
            inspector_.reset();
            break;
        case Do::OpenExplorer:
            std::printf("\n> opens the calendar in a second window and selects \"%s\" there\n",
                        subject.c_str());
            second_ = sc_.openExplorer(o.calendar());
            sc_.select(second_, {item});
            break;
        case Do::CloseExplorer:
            std::printf("\n> closes the second calendar window\n");
            sc_.close(second_);
            second_.reset();
            break;
        case Do::Shot:
            break;
        case Do::OpenSettings:
            std::printf("\n> presses Settings in the %s\n", ribbon() ? "ribbon group" : "toolbar");
            openSettings();
            break;
        case Do::AddEntry:
        case Do::RenameList:
        case Do::SettingsOk:
            inSettingsDialog(step);
            break;
        case Do::BackToOutlook:
            std::printf("\n> returns to the calendar window\n");
            sc_.returnToOutlook(sc_.explorer());
            break;
        case Do::MovePane: {
            std::printf("\n> moves the appointment window's task pane to dock position %d\n",
                        step.box);
            std::shared_ptr<sim::CustomTaskPane> shown;
            if (inspector_)
                for (const auto& p : inspector_->panes)
                    if (!p->deleted) shown = p;
            if (shown) {
                sc_.dockPane(shown, step.box);
            } else {
                std::printf("   no task pane to move\n");
                ++failures_;
            }
            break;
        }
        case Do::CheckStored:
            break;
        case Do::ToItem:
            std::printf("\n> turns to the appointment window\n");
            sc_.activate(inspector_);
            break;
        case Do::OpenReport:
            std::printf("\n> presses Report in the %s\n", ribbon() ? "ribbon group" : "toolbar");
            reportRows_ = openReport();
            break;
        case Do::ScriptReport:
            reportCsv_ = scriptReport();
            break;
        case Do::OpenStatistics:
            std::printf("\n> presses Statistics in the %s\n",
                        ribbon() ? "ribbon group" : "toolbar");
            statsStatus_ = openStatistics();
            break;
        case Do::ScriptStatistics:
            statsCsv_ = scriptStatistics();
            break;
    }
    windows_.render();
    // Under Outlook 14 on, the calendar's shot is the ribbon group's.
    const bool shotTaken = step.action == Do::Shot && !options_.shots.empty() &&
                           (!ribbon() || Str(step.entry) == u"calendar");
    if (shotTaken) {
        auto active = o.activeWindow();
        const Str name = ribbon() ? Str(u"ribbon") : Str(step.entry);
        const std::wstring path = options_.shots + L"\\" + hb::com::wide(name) + L".bmp";
        const bool saved = active && windows_.capture(windows_.windowOf(*active), path);
        std::printf("\n  (screenshot of the %s window %s)\n", entry.c_str(),
                    saved ? "saved" : "could not be taken");
    }
}

// The add-in starts the settings program from its own folder; its dialog
// then has the focus, and Outlook's window is deactivated.
void Session::openSettings() {
    settings_ = std::make_unique<ChildProgram>();
    bool pressed = false;
    if (ribbon()) {
        pressed = windows_.clickInRibbon(*sc_.explorer(), u"hbSettings");
    } else {
        pressed = windows_.clickInToolbar(*sc_.explorer(), kFaceSettings);
    }
    if (!pressed) {
        std::printf("   no Settings button in the toolbar\n");
        ++failures_;
        return;
    }
    if (!settings_->waitForDialog(kSettingsProgram, 60000)) {
        std::printf("   no settings program started (or it showed no dialog)\n");
        settings_.reset();
        ++failures_;
        return;
    }
    sc_.leaveOutlook();
    const std::wstring folder = folderOf(settings_->path());
    const bool addins = _wcsicmp(folder.c_str(), addinFolder().c_str()) == 0;
    std::printf("   the add-in started %s \"%s\" from %s; its dialog has the focus\n",
                utf8(settings_->path().substr(folder.size() + 1)).c_str(),
                utf8(settings_->arguments()).c_str(),
                addins ? "the add-in's folder" : utf8(folder).c_str());
    if (!addins) ++failures_;
}

void Session::inSettingsDialog(const Step& step) {
    const std::wstring entry = step.entry ? hb::com::wide(step.entry) : std::wstring();
    bool done = false;
    if (step.action == Do::AddEntry) {
        std::printf("\n> adds \"%s\" to list %d in the settings dialog\n", utf8(entry).c_str(),
                    step.box);
        done = settings_ && settings_->pickRow(IDC_LISTS, step.box - 1) &&
               settings_->type(IDC_ENTRYNAME, entry) && settings_->press(IDC_ADDENTRY) &&
               settings_->lists(IDC_ENTRIES, entry);
    } else if (step.action == Do::RenameList) {
        std::printf("\n> renames list %d to \"%s\" in the settings dialog\n", step.box,
                    utf8(entry).c_str());
        done = settings_ && settings_->pickRow(IDC_LISTS, step.box - 1) &&
               settings_->type(IDC_LISTNAME, entry) && settings_->press(IDC_RENAMELIST) &&
               settings_->lists(IDC_LISTS, entry);
    } else {
        std::printf("\n> presses OK in the settings dialog\n");
        const long code = settings_ ? settings_->okAndWait(IDOK, 60000) : -1;
        settings_.reset();
        if (code >= 0)
            std::printf("   the settings program saved and ended (exit code %ld)\n", code);
        done = code == 0;
    }
    if (!done) {
        std::printf("   the settings dialog did not take that\n");
        ++failures_;
    }
}

bool Session::openProgramWindow(const ProgramWindow& kind, ChildProgram& child, LRESULT& rows,
                                std::wstring& status) {
    const bool pressed = ribbon() ? windows_.clickInRibbon(*sc_.explorer(), kind.ribbonId)
                                  : windows_.clickInToolbar(*sc_.explorer(), kind.faceId);
    if (!pressed) {
        std::printf("   no %s button\n", kind.button);
        ++failures_;
        return false;
    }
    if (!child.waitForDialog(kind.exe, 60000, kind.windowClass)) {
        std::printf("   no %s started (or it showed no window)\n", kind.program);
        ++failures_;
        return false;
    }
    sc_.leaveOutlook();
    std::printf("   the add-in started %s \"%s\"\n",
                utf8(child.path().substr(folderOf(child.path()).size() + 1)).c_str(),
                utf8(child.arguments()).c_str());
    // The window reads on a thread of its own at once; its work is in when
    // its list has rows and the status line says so.
    const DWORD start = GetTickCount();
    while (GetTickCount() - start < 60000) {
        ChildProgram::serveFor(100);
        rows = child.ask(kind.list, kListViewItemCount, 0, 0, 0);
        status = child.text(kind.status);
        if (rows > 0 && status.find(kind.statusSays) != std::wstring::npos) break;
    }
    std::printf("   the %s window: %ld rows; status line \"%s\"\n", kind.shot,
                static_cast<long>(rows), utf8(status).c_str());
    windows_.render();
    // One picture of the window: the toolbar's session takes it.
    if (!options_.shots.empty() && !ribbon()) {
        const std::wstring name(kind.shot, kind.shot + std::strlen(kind.shot));
        const bool saved =
            windows_.capture(child.window(), options_.shots + L"\\" + name + L".bmp");
        std::printf("\n  (screenshot of the %s window %s)\n", kind.shot,
                    saved ? "saved" : "could not be taken");
    }
    std::printf("\n> closes the %s window\n", kind.shot);
    const long code = child.closeAndWait(30000);
    std::printf("   the %s ended (exit code %ld)\n", kind.program, code);
    if (code != 0) ++failures_;
    sc_.returnToOutlook(sc_.explorer());
    return true;
}

Str Session::openReport() {
    static const ProgramWindow kReport = {
        u"hbReport",      kFaceReport, "Report",      kReportProgram, kReportWindowClass,
        "report program", kReportList, kReportStatus, L" h, ",        "report"};
    std::printf(
        "   (its window reaches the running Outlook (GetActiveObject) and has the\n"
        "   add-in read this month inside Outlook)\n");
    ChildProgram report;
    LRESULT rows = 0;
    std::wstring status;
    if (!openProgramWindow(kReport, report, rows, status)) return {};
    reportPath_ = report.path();
    return hb::toStr(static_cast<long long>(rows));
}

Str Session::openStatistics() {
    static const ProgramWindow kPivot = {u"hbStatistics",
                                         kFaceStatistics,
                                         "Statistics",
                                         kStatisticsProgram,
                                         kPivotWindowClass,
                                         "statistics program",
                                         kPivotList,
                                         kPivotStatus,
                                         L", ",
                                         "pivot"};
    std::printf("   (Cubelens reads the report's database in the folder it is given)\n");
    ChildProgram stats;
    LRESULT rows = 0;
    std::wstring status;
    if (!openProgramWindow(kPivot, stats, rows, status)) return {};
    statsPath_ = stats.path();
    statsArguments_ = stats.arguments();
    return hb::com::fromWide(status.c_str(), status.size());
}

Str Session::shownCsv(const std::wstring& path, const char* name) {
    const std::string bytes = fileText(path);
    std::printf("   %s:\n", name);
    std::size_t from = 0;
    while (from < bytes.size()) {
        std::size_t end = bytes.find('\n', from);
        if (end == std::string::npos) end = bytes.size();
        std::string row = bytes.substr(from, end - from);
        if (!row.empty() && row.back() == '\r') row.pop_back();
        std::printf("   | %s\n", row.c_str());
        from = end + 1;
    }
    return hb::fromUtf8(bytes);
}

std::string Session::fileText(const std::wstring& path) {
    std::string bytes;
    if (FILE* f = _wfopen(path.c_str(), L"rb")) {
        char buffer[4096];
        for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, f)) > 0;)
            bytes.append(buffer, n);
        std::fclose(f);
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
    return bytes;
}

Str Session::scriptStatistics() {
    if (statsPath_.empty()) return {};
    const std::wstring folder = outputFolder();
    const std::wstring csv = folder + L"\\pivot.csv", html = folder + L"\\pivot.html";
    const std::wstring line = L"\"" + statsPath_ + L"\" " + statsArguments_ +
                              L" /rows:list1 /cols:month /csv:\"" + csv + L"\" /html:\"" + html +
                              L"\"";
    std::printf(
        "\n> a script runs Cubelens.exe on that folder /rows:list1 /cols:month\n"
        "  /csv:pivot.csv /html:pivot.html\n");
    DeleteFileW(csv.c_str());
    DeleteFileW(html.c_str());
    const long code = ChildProgram::runToEnd(line, 120000);
    std::printf("   exit code %ld\n", code);
    const std::string page = fileText(html);
    std::printf("   pivot.html: %zu bytes\n", page.size());
    if (code != 0 || page.find("</html>") == std::string::npos) {
        ++failures_;
        return {};
    }
    return shownCsv(csv, "pivot.csv");
}

std::wstring Session::outputFolder() const {
    if (!options_.shots.empty()) return options_.shots;
    wchar_t temp[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, temp);
    std::wstring folder = temp;
    if (!folder.empty() && folder.back() == L'\\') folder.pop_back();
    return folder;
}

Str Session::scriptReport() {
    if (reportPath_.empty()) return {};
    const std::wstring folder = outputFolder();
    const std::wstring csv = folder + L"\\report.csv";
    const std::wstring line =
        L"\"" + reportPath_ + L"\" /period:thismonth /group:list1,list2 /round:15 /csv:\"" + csv +
        L"\" /xlsx:\"" + folder + L"\\report.xlsx\" /html:\"" + folder + L"\\report.html\"";
    std::printf(
        "\n> a scheduled task runs HBReporting.exe /period:thismonth /group:list1,list2 "
        "/round:15\n  /csv:report.csv /xlsx:report.xlsx /html:report.html\n");
    DeleteFileW(csv.c_str());
    const long code = ChildProgram::runToEnd(line, 120000);
    std::printf("   exit code %ld\n", code);
    if (code != 0) {
        ++failures_;
        return {};
    }
    return shownCsv(csv, "report.csv");
}

void Session::guarded(const std::function<void()>& userAction) {
    try {
        userAction();
    } catch (const std::exception& e) {
        std::printf("   the user could not do that: %s\n", e.what());
        ++failures_;
    }
}

// The user picks in the real combo box the host drew for the bar; the
// pick reaches the add-in as the command bar's Change event.
void Session::pickInToolbar(const sim::Window& window, const Step& step) {
    if (!windows_.pickInToolbar(window, step.box, hb::com::wide(step.entry))) {
        std::printf("   no such box or entry in the toolbar\n");
        ++failures_;
    }
}

// The user picks an entry of a drop-down of the ribbon group: Office
// calls the add-in's onAction with the item's id and index.
void Session::pickInRibbon(const Step& step) {
    if (windows_.pickInRibbon(*sc_.explorer(),
                              u"hbList" + hb::toStr(static_cast<long long>(step.box)),
                              hb::com::wide(step.entry)))
        return;
    std::printf("   no such drop-down or entry in the ribbon group\n");
    ++failures_;
}

void Session::reportWrites() {
    for (const auto& item : sc_.outlook().calendar()->items) {
        if (!written_.contains(item.get())) {
            std::printf("   the add-in saved a new appointment in the calendar: \"%s\"\n",
                        utf8(item->subject).c_str());
            written_[item.get()] = {item->subject, item->categories};
            continue;
        }
        auto& [subject, categories] = written_[item.get()];
        if (item->categories != categories)
            std::printf("   the add-in wrote the categories of \"%s\": \"%s\" -> \"%s\"\n",
                        utf8(item->subject).c_str(), utf8(categories).c_str(),
                        utf8(item->categories).c_str());
        if (item->subject != subject)
            std::printf("   the add-in wrote the subject: \"%s\" -> \"%s\"\n",
                        utf8(subject).c_str(), utf8(item->subject).c_str());
        subject = item->subject;
        categories = item->categories;
    }
}

bool Session::expect(const Step& step) {
    if (!step.expect) return true;
    Str actual;
    const char* what = "categories";
    if (step.action == Do::OpenSettings) {
        actual = hb::com::fromWide(settings_ ? settings_->arguments().c_str() : L"",
                                   settings_ ? settings_->arguments().size() : 0);
        what = "the settings program's arguments";
    } else if (step.action == Do::BackToOutlook) {
        actual = listsText(*sc_.explorer(), ribbon());
        what = "toolbar lists";
        std::printf("   the toolbar's lists: %s\n", utf8(actual).c_str());
    } else if (step.action == Do::CheckStored) {
        actual = storedSetting(step.entry);
        what = "registry setting";
        std::printf("\n> looks at the stored setting %s: \"%s\"\n", utf8(step.entry).c_str(),
                    utf8(hb::text::replace(actual, u"\r\n", u"\\r\\n")).c_str());
    } else if (step.action == Do::OpenReport) {
        actual = reportRows_;
        what = "rows in the report window";
    } else if (step.action == Do::OpenStatistics) {
        actual = statsStatus_;
        what = "the pivot window's status line";
    } else if (step.action == Do::ScriptReport || step.action == Do::ScriptStatistics) {
        // Each text must be in the file; the first missing one is reported.
        const Str& file = step.action == Do::ScriptReport ? reportCsv_ : statsCsv_;
        const Str wanted = step.expect;
        std::size_t from = 0;
        actual = wanted;
        while (from <= wanted.size()) {
            std::size_t end = wanted.find(u'|', from);
            if (end == Str::npos) end = wanted.size();
            const Str piece = wanted.substr(from, end - from);
            if (file.find(piece) == Str::npos) {
                actual = u"no \"" + piece + u"\"";
                break;
            }
            from = end + 1;
        }
        what = step.action == Do::ScriptReport ? "report.csv" : "pivot.csv";
    } else if (step.action == Do::PickPane) {
        actual = inspector_->currentItem->categories;
        what = "categories in the appointment window";
        std::printf("   the appointment window shows the categories \"%s\"\n",
                    utf8(actual).c_str());
    } else if (step.action == Do::Select || step.action == Do::OpenExplorer) {
        actual = boxesText(step.action == Do::Select ? *sc_.explorer() : *second_, ribbon());
        what = "toolbar shows";
        std::printf("   the toolbar shows: %s\n",
                    actual == u", , " ? "nothing picked" : utf8(actual).c_str());
    } else {
        actual = sc_.outlook().calendar()->findBySubject(step.subject)->categories;
    }
    if (actual == step.expect) return true;
    std::printf("   EXPECTED %s \"%s\", found \"%s\"\n", what, utf8(step.expect).c_str(),
                utf8(actual).c_str());
    return false;
}

void Session::quit() {
    std::printf("\n> exits Outlook\n");
    sc_.quit();
    windows_.render();
    addins_->release();
    running_.reset();
}

int Session::run() {
    MachineState machine;
    hb::test::MessageBoxWatcher boxes;
    writeSettings();
    setUpOutlook();
    const bool started = start();
    reportWrites();
    if (started && !options_.startupOnly) {
        const auto steps = options_.afterStartup ? std::span<const Step>(kAfterStartup)
                                                 : std::span<const Step>(kSession);
        for (const Step& step : steps) {
            if (step.withPanes && sc_.outlook().majorVersion() < 12) continue;
            act(step);
            reportWrites();
            if (!expect(step)) ++failures_;
        }
    }
    quit();
    for (const auto& f : addins_->failures())
        if (f.what.find(L"OnConnection") == std::wstring::npos &&
            f.what.find(L"CoCreate") == std::wstring::npos) {
            std::printf("   the add-in failed a call: %s\n", utf8(f.what).c_str());
            ++failures_;
        }
    if (!sc_.addinErrors.empty() || addins_->failures().size() > 0) ++failures_;

    std::printf("\nMessage boxes shown: %d\n", boxes.count());
    for (const std::wstring& text : boxes.texts())
        std::printf("   | %s\n", utf8(text).c_str());
    if (boxes.count() > 0) ++failures_;

    // Outlook's object model is gone; what the add-in still holds of it
    // shows in the census.
    const Census census = takeCensus(sc_);
    std::printf("Reference census after OnDisconnection: %ld objects, %ld connections still held\n",
                census.objects, census.connections);
    for (const Str& line : census.held)
        std::printf("   held: %s\n", utf8(line).c_str());
    if (!census.empty()) ++failures_;
    if (GetModuleHandleW(L"HBAddin.dll")) {
        const HRESULT hr = addinCanUnloadNow();
        std::printf("DllCanUnloadNow: %s\n", hr == S_OK ? "S_OK" : "S_FALSE (objects alive)");
        if (hr != S_OK) ++failures_;
    }
    CoFreeUnusedLibraries();
    const bool unloaded = GetModuleHandleW(L"HBAddin.dll") == nullptr;
    std::printf("CoFreeUnusedLibraries: HBAddin.dll %s\n", unloaded ? "unloaded" : "STILL LOADED");
    if (!unloaded) ++failures_;
    std::printf("Outlook %d session: %s\n", sc_.outlook().majorVersion(),
                failures_ == 0 ? "all checks held" : "CHECKS FAILED");
    return failures_ == 0 ? 0 : 1;
}

// An Outlook started by automation: the calendar of the session, no window,
// no add-in; it ends when its clients let go.
int serveAutomationClients(int version) {
    sim::Scenario sc;
    furnishOutlook(sc.outlook(), version);
    OutlookServer server(sc);
    if (!server.serving()) return 1;
    server.serveUntilReleased(60000);
    return 0;
}

std::wstring ownPath() {
    wchar_t path[MAX_PATH * 4] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH * 4);
    return path;
}

}  // namespace
}  // namespace standin

int wmain(int argc, wchar_t** argv) {
    standin::Options options;
    for (int i = 1; i < argc; ++i) {
        const std::wstring arg = argv[i];
        if (arg == L"--version" && i + 1 < argc) {
            options.version = _wtoi(argv[++i]);
        } else if (arg == L"--shots" && i + 1 < argc) {
            options.shots = argv[++i];
        } else if (arg == L"--startup-only") {
            options.startupOnly = true;
        } else if (_wcsicmp(arg.c_str(), L"-Embedding") == 0 ||
                   _wcsicmp(arg.c_str(), L"/Embedding") == 0) {
            options.embedding = true;
        } else if (arg == L"--register-server" || arg == L"--unregister-server") {
            if (arg == L"--unregister-server") {
                standin::unregisterOutlookServer();
                return 0;
            }
            return standin::registerOutlookServer(standin::ownPath()) ? 0 : 1;
        } else if (arg == L"--after-startup") {
            options.afterStartup = true;
        } else if (arg == L"--fault-sweep" && i + 1 < argc &&
                   (argv[i + 1] == std::wstring(L"startup") ||
                    argv[i + 1] == std::wstring(L"selection"))) {
            options.sweep = argv[++i] == std::wstring(L"startup") ? standin::SweepPhase::Startup
                                                                  : standin::SweepPhase::Selection;
        } else {
            std::fprintf(stderr,
                         "usage: hb_standin [--version 9..16] [--shots FOLDER] [--startup-only]\n"
                         "       hb_standin [--version 9..16] --after-startup\n"
                         "       hb_standin [--version 9..16] --fault-sweep startup|selection\n"
                         "       hb_standin [--version 9..16] -Embedding\n"
                         "       hb_standin --register-server | --unregister-server\n");
            return 2;
        }
    }
    if (options.version < 9 || options.version > 16) {
        std::fprintf(stderr, "hb_standin: --version takes 9 to 16\n");
        return 2;
    }
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    if (FAILED(OleInitialize(nullptr))) return 1;
    standin::serveSimulatedOutlook();
    int rc = 1;
    if (options.embedding) {
        rc = standin::serveAutomationClients(options.version);
    } else if (options.sweep) {
        rc = standin::runFaultSweep(*options.sweep, options.version);
    } else {
        standin::Session session(options);
        rc = session.run();
    }
    hb::com::setObjectExporter({});
    OleUninitialize();
    return rc;
}
