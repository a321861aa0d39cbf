// The stand-in Outlook: loads the COM add-ins registered for Outlook the
// way Outlook loads them (by their registration, over real COM), serves
// them the simulated Outlook through the dispatch server, acts out a user's
// session in real windows and prints what happened: what the user did, what
// the add-in wrote to which appointment, the start-up time, the message
// boxes, and the reference census after the add-in was let go.
//
//   hb_standin.exe [--version 9..16] [--shots FOLDER] [--startup-only]
//
// Exit status: 0 when every expectation held, the add-in loaded, showed no
// message box and let go of every object it was handed; 1 otherwise.
#include <windows.h>
// windows.h first: the COM headers rely on its types.
#include <shlobj.h>

#include <cstdio>
#include <cwchar>
#include <functional>
#include <map>
#include <string>

#include "common/Constants.h"
#include "common/Text.h"
#include "sim/Scenario.h"
#include "standin/HostWindows.h"
#include "standin/LoadedAddins.h"
#include "win/ComTestSupport.h"
#include "win/com/ComVariant.h"
#include "win/com/DispatchServer.h"

namespace standin {
namespace {

using hb::Str;

constexpr wchar_t kSettingsKey[] = L"Software\\Brindlewood\\Hourbook for Outlook\\Settings";

// What the user does, one step of the session.
enum class Do {
    Select,         // select the appointment `subject` in the main explorer
    PickToolbar,    // pick `entry` in box `box` of the add-in's bar of the active window
    OpenItem,       // open the appointment `subject` in an inspector
    PickPane,       // pick `entry` in box `box` of the inspector's pane (toolbar before 12)
    CloseItem,      // close the inspector
    OpenExplorer,   // open the calendar in a second explorer and select `subject` there
    CloseExplorer,  // close the second explorer
    Shot,           // save a screenshot of the active window as `entry`
};

struct Step {
    Do action;
    const char16_t* subject;
    int box;
    const char16_t* entry;
    // The categories `subject` must have afterwards, or (after Select and
    // OpenExplorer) what the add-in's boxes must show, joined by ", ".
    const char16_t* expect;
};

// The session: the billing of three appointments, in the calendar view, in
// an appointment window, and in a second calendar window.
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
    {Do::CloseItem, nullptr, 0, nullptr, nullptr},
    {Do::OpenExplorer, u"Code review", 0, nullptr, u"Initech, Jones, "},
    {Do::CloseExplorer, nullptr, 0, nullptr, nullptr},
};

struct Options {
    int version = 12;
    std::wstring shots;
    bool startupOnly = false;
};

std::string utf8(const Str& s) {
    return hb::toUtf8(s);
}

std::string utf8(const std::wstring& s) {
    return hb::toUtf8(hb::com::fromWide(s.data(), s.size()));
}

Str versionText(int major) {
    static const std::map<int, const char16_t*> builds = {
        {9, u"9.0.0.2711"},      {10, u"10.0.0.2627"},    {11, u"11.0.8217"},
        {12, u"12.0.4518.1014"}, {14, u"14.0.4760.1000"}, {15, u"15.0.4420.1017"},
        {16, u"16.0.4266.1001"}};
    auto it = builds.find(major);
    return it != builds.end() ? Str(it->second) : hb::fromUtf8(std::to_string(major) + ".0.0.0");
}

bool keyExists(HKEY root, const wchar_t* path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

void setSetting(const wchar_t* name, const std::wstring& value) {
    RegSetKeyValueW(HKEY_CURRENT_USER, kSettingsKey, name, REG_SZ, value.c_str(),
                    static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

// The settings the settings program leaves for a workgroup with three lists.
void writeSettings() {
    wchar_t documents[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, 0, documents);
    setSetting(L"ReportChoice", L"2");
    setSetting(L"ReportValue", std::wstring(documents) + L"\\My Hourbooks\\");
    setSetting(L"PersonalRate", L"0");
    for (const wchar_t* name : {L"FilterEvents", L"FilterPrivate", L"FilterRecurring", L"Convert24",
                                L"RemoveLunch", L"CreateLocalCube", L"StartGrid", L"WriteSubject"})
        setSetting(name, L"False");
    setSetting(L"Convert24Hours", L"8");
    setSetting(L"RemoveLunchHours", L"0.75");
    setSetting(
        L"MetadataList",
        L"Company:Acme;Globex;Initech;\r\nPerson:Smith;Jones;\r\nExtra Field:Travel;Office;\r\n");
}

Str listSeparator() {
    wchar_t text[8] = {};
    GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SLIST, text, 8);
    return hb::com::fromWide(text, wcslen(text));
}

std::shared_ptr<sim::CommandBarControl> combo(const sim::Window& window, int n) {
    auto bar = sim::Scenario::bar(window, hb::kProductCaption);
    if (!bar || bar->deleted) return nullptr;
    int seen = 0;
    for (const auto& c : bar->controls->list)
        if (!c->deleted && c->isComboBox() && ++seen == n) return c;
    return nullptr;
}

// What the three boxes of a window's bar show, joined by ", ".
Str boxesText(const sim::Window& window) {
    Str text;
    for (int n = 1; n <= 3; ++n) {
        auto c = combo(window, n);
        if (n > 1) text += u", ";
        if (c) text += c->text;
    }
    return text;
}

double millisecondsSince(const LARGE_INTEGER& start) {
    LARGE_INTEGER now, frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return 1000.0 * static_cast<double>(now.QuadPart - start.QuadPart) /
           static_cast<double>(frequency.QuadPart);
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
    }

    int run();

  private:
    void setUpOutlook();
    bool start();
    void act(const Step& step);
    void reportWrites();
    bool expect(const Step& step);
    void quit();
    void registerRunningOutlook();
    void guarded(const std::function<void()>& userAction);
    void pickInToolbar(const sim::Window& window, const Step& step);

    DWORD runningCookie_ = 0;

    const Options& options_;
    sim::Scenario sc_;
    HostWindows windows_;
    std::shared_ptr<LoadedAddins> addins_ = std::make_shared<LoadedAddins>();
    std::map<const sim::Item*, std::pair<Str, Str>> written_;  // subject, categories seen
    std::shared_ptr<sim::Inspector> inspector_;
    std::shared_ptr<sim::Explorer> second_;
    int failures_ = 0;
};

void Session::setUpOutlook() {
    sim::Outlook& o = sc_.outlook();
    o.version = versionText(options_.version);
    o.listSeparator = listSeparator();
    o.addStore(u"Mailbox - John Smith");
    auto calendar = o.calendar();
    (void)o.inbox();
    calendar->addAppointment(u"Project kickoff", sim::makeDate(2024, 5, 6, 9),
                             sim::makeDate(2024, 5, 6, 10));
    calendar->addAppointment(u"Client call", sim::makeDate(2024, 5, 6, 11),
                             sim::makeDate(2024, 5, 6, 12), u"Globex, Jones");
    calendar->addAppointment(u"Code review", sim::makeDate(2024, 5, 7, 14),
                             sim::makeDate(2024, 5, 7, 15));
    for (const auto& item : calendar->items)
        written_[item.get()] = {item->subject, item->categories};
    o.registerControl(hb::kPaneProgId,
                      [this] { return windows_.createControl(hb::com::wide(hb::kPaneProgId)); });
}

// Outlook registers its Application in the running object table, where the
// add-in finds it by its ProgID (GetObject "Outlook.Application").
void Session::registerRunningOutlook() {
    const wchar_t clsidText[] = L"{0006F03A-0000-0000-C000-000000000046}";
    RegSetKeyValueW(HKEY_CLASSES_ROOT, L"Outlook.Application\\CLSID", nullptr, REG_SZ, clsidText,
                    sizeof clsidText);
    CLSID clsid{};
    CLSIDFromString(clsidText, &clsid);
    sim::Outlook& o = sc_.outlook();
    hb::Variant app =
        sc_.instruments().toAddin(hb::Variant(hb::ObjectPtr(o.application())), u"GetObject");
    hb::com::ComPtr<IDispatch> d = hb::com::dispatchOf(app.toObject());
    RegisterActiveObject(d.get(), clsid, ACTIVEOBJECT_STRONG, &runningCookie_);
}

bool Session::start() {
    std::printf("Outlook %s starts on the calendar (3 appointments)\n",
                utf8(sc_.outlook().version).c_str());
    registerRunningOutlook();
    LARGE_INTEGER started;
    QueryPerformanceCounter(&started);
    addins_->load();
    for (const auto& f : addins_->failures())
        std::printf("   add-in %s not loaded: %s (LoadBehavior set to 2)\n", utf8(f.progId).c_str(),
                    utf8(f.what).c_str());
    for (const auto& e : addins_->loaded())
        std::printf("   add-in %s created by its ProgID\n", utf8(e.progId).c_str());
    sc_.startOutlook(addins_->empty() ? nullptr : addins_, sim::ol::FolderCalendar);
    const double elapsed = millisecondsSince(started);
    for (const Str& e : sc_.addinErrors)
        std::printf("   connection failed: %s\n", utf8(e).c_str());
    // The first toolbar: the add-in's bar with its three boxes.
    const bool filled = combo(*sc_.explorer(), 3) != nullptr;
    windows_.render();
    if (!sc_.addinLoaded()) {
        std::printf("   the add-in is not loaded\n");
        return false;
    }
    std::printf("   toolbar \"%s\" in the calendar window: %s\n", utf8(hb::kProductCaption).c_str(),
                filled ? "made, three boxes" : "MISSING");
    std::printf("   start-up, from CoCreateInstance to the first toolbar: %.1f ms, %llu calls\n",
                elapsed, static_cast<unsigned long long>(sc_.instruments().callCount()));
    if (!filled) ++failures_;
    return filled;
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
            std::printf("\n> picks \"%s\" in box %d of the toolbar\n", entry.c_str(), step.box);
            pickInToolbar(*sc_.explorer(), step);
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
        case Do::CloseItem:
            std::printf("\n> closes the appointment window\n");
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
    }
    windows_.render();
    if (step.action == Do::Shot && !options_.shots.empty()) {
        auto active = o.activeWindow();
        const std::wstring path = options_.shots + L"\\" + hb::com::wide(step.entry) + L".bmp";
        const bool saved = active && windows_.capture(windows_.windowOf(*active), path);
        std::printf("\n  (screenshot of the %s window %s)\n", entry.c_str(),
                    saved ? "saved" : "could not be taken");
    }
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
    if (step.action == Do::Select || step.action == Do::OpenExplorer) {
        actual = boxesText(step.action == Do::Select ? *sc_.explorer() : *second_);
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
    if (runningCookie_) RevokeActiveObject(runningCookie_, nullptr);
    runningCookie_ = 0;
}

int Session::run() {
    // What the session writes to the machine goes again afterwards, unless
    // it was there before: the user's settings, Outlook's class name.
    const bool hadSettings = keyExists(HKEY_CURRENT_USER, L"Software\\Brindlewood");
    const bool hadOutlookClass = keyExists(HKEY_CLASSES_ROOT, L"Outlook.Application");
    struct Restore {
        bool settings, outlookClass;
        ~Restore() {
            if (!settings) RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Brindlewood");
            if (!settings) RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\Brindlewood");
            if (!outlookClass) RegDeleteTreeW(HKEY_CLASSES_ROOT, L"Outlook.Application");
            if (!outlookClass) RegDeleteKeyW(HKEY_CLASSES_ROOT, L"Outlook.Application");
        }
    } restore{hadSettings, hadOutlookClass};
    hb::test::MessageBoxWatcher boxes;
    writeSettings();
    setUpOutlook();
    const bool started = start();
    reportWrites();
    if (started && !options_.startupOnly) {
        for (const Step& step : kSession) {
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
    const long objects = hb::com::liveExportedObjects();
    const long connections = hb::com::liveServerConnections();
    std::printf("Reference census after OnDisconnection: %ld objects, %ld connections still held\n",
                objects, connections);
    for (const Str& line : sc_.instruments().census())
        std::printf("   held: %s\n", utf8(line).c_str());
    if (objects != 0 || connections != 0) ++failures_;

    using CanUnloadFn = HRESULT(STDAPICALLTYPE*)();
    if (HMODULE dll = GetModuleHandleW(L"HBAddin.dll")) {
        auto canUnload = reinterpret_cast<CanUnloadFn>(
            reinterpret_cast<void (*)()>(GetProcAddress(dll, "DllCanUnloadNow")));
        const HRESULT hr = canUnload ? canUnload() : E_FAIL;
        std::printf("DllCanUnloadNow: %s\n", hr == S_OK ? "S_OK" : "S_FALSE (objects alive)");
        if (hr != S_OK) ++failures_;
    }
    CoFreeUnusedLibraries();
    std::printf("Outlook %d session: %s\n", sc_.outlook().majorVersion(),
                failures_ == 0 ? "all checks held" : "CHECKS FAILED");
    return failures_ == 0 ? 0 : 1;
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
        } else {
            std::fprintf(stderr,
                         "usage: hb_standin [--version 9..16] [--shots FOLDER] [--startup-only]\n");
            return 2;
        }
    }
    if (options.version < 9 || options.version > 16) {
        std::fprintf(stderr, "hb_standin: --version takes 9 to 16\n");
        return 2;
    }
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    if (FAILED(OleInitialize(nullptr))) return 1;
    hb::com::installDispatchServer([](const hb::Object& object) {
        if (const auto* handle = dynamic_cast<const sim::Handle*>(&object))
            return handle->target()->members().memberNames();
        return std::vector<hb::Str>{};
    });
    int rc = 1;
    {
        standin::Session session(options);
        rc = session.run();
    }
    hb::com::setObjectExporter({});
    OleUninitialize();
    return rc;
}
