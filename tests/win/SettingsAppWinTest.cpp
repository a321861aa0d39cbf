// The settings dialog under Wine, driven through its controls with the
// messages a user's clicks and keystrokes produce: what OK leaves in the
// registry is compared with what cPersonalSettings::SaveSettings writes for
// the same values (the registry read back through Windows itself), Cancel
// and every refused input leave the registry as it was, and the keyboard
// reaches every control in a sensible order. The program's command-line
// forms run as a process, the way a script runs them: /export and /import of
// the settings body (UTF-8), their exit codes and the reason on stderr.
//
// Wine draws windows only with a display. Where the test command gives none,
// SettingsAppXvfb runs the SettingsAppDialog tests again in a second Wine
// process under an Xvfb server of its own; on their own, without a display,
// they skip.
#include "apps/settings/SettingsDialog.h"
#include "apps/settings/SettingsResource.h"
#include "apps/settings/SettingsStore.h"
#include "platform/win32/Win32Platform.h"
#include "settings/cPersonalSettings.h"
#include "sim/Scenario.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>
#include <map>

#include "win/ComTestSupport.h"

namespace hb::settingsapp {
namespace {

constexpr wchar_t kChildVariable[] = L"HB_SETTINGS_DISPLAY_CHILD";
constexpr wchar_t kKey[] = L"Software\\Brindlewood\\Hourbook for Outlook\\Settings";

using test::exeFolder;

// Every value of the settings key as name -> text (REG_SZ only), read by
// Windows; nullopt: no key.
std::optional<std::map<std::wstring, std::wstring>> registry() {
    test::Snapshot all;
    test::snapshot(HKEY_CURRENT_USER, kKey, all);
    if (all.empty()) return std::nullopt;
    const std::wstring prefix = std::wstring(L"HKCU\\") + kKey + L"|";
    std::map<std::wstring, std::wstring> values;
    for (const auto& [entry, data] : all) {
        if (!entry.starts_with(prefix)) continue;
        // "type:data", the data with its terminating zero.
        values[entry.substr(prefix.size())] =
            data.starts_with(L"1:") ? std::wstring(data.c_str() + 2) : L"<not REG_SZ>";
    }
    return values;
}

void deleteSettings() {
    RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
}

struct Outcome {
    DWORD exitCode = 0xFFFFFFFF;
    std::string err;
};

// Runs the program with arguments, its output collected.
Outcome run(const std::wstring& arguments) {
    Outcome r;
    r.exitCode = test::runProgram(
        L"\"" + exeFolder() + L"\\HBPersonalSettingsSingle.exe\" " + arguments, 60000, &r.err);
    return r;
}

void writeAll(const std::wstring& path, const std::string& bytes) {
    if (FILE* f = _wfopen(path.c_str(), L"wb")) {
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::fclose(f);
    }
}

bool displayReady() {
    static const bool ready = test::windowsPossible(kChildVariable, L"HBSettingsTest");
    return ready;
}

class SettingsAppDialog : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!displayReady())
            GTEST_SKIP() << "no X display for Wine's windows; SettingsAppXvfb runs these tests "
                            "under an Xvfb server of its own";
        deleteSettings();
        s_.ofCalendar = Variant(ObjectPtr(outlook_.outlook().calendar()));
    }
    void TearDown() override {
        if (dialog_ && IsWindow(dialog_)) DestroyWindow(dialog_);
        boxes_.reset();
        s_.ofCalendar = Variant();
        deleteSettings();
    }

    // The dialog as the program opens it: the stored settings (the
    // construction defaults on a first start) in an editor.
    void open() {
        // The watcher of an earlier dialog would answer this one.
        boxes_.reset();
        Loaded loaded = loadValues(s_);
        ASSERT_TRUE(loaded.complete);
        state_ = std::make_unique<DialogState>(
            s_, SettingsEditor(std::move(loaded.values), platform_.userLocale(), u","));
        dialog_ = openSettingsDialog(GetModuleHandleW(nullptr), *state_);
        ASSERT_NE(dialog_, nullptr);
        ShowWindow(dialog_, SW_SHOW);
        pump();
        // After the dialog: the watcher answers every dialog made from now.
        boxes_ = std::make_unique<test::MessageBoxWatcher>();
    }

    HWND item(int id) { return GetDlgItem(dialog_, id); }
    std::wstring textOf(int id) {
        wchar_t buffer[512] = {};
        GetWindowTextW(item(id), buffer, 512);
        return buffer;
    }
    void pump() {
        MSG msg;
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
            if (dialog_ && IsWindow(dialog_) && IsDialogMessageW(dialog_, &msg)) continue;
            TranslateMessage(&msg);
            DispatchMessageW(&msg);
        }
    }
    // Typing replaces a field's text.
    void type(int id, const std::wstring& text) {
        SendMessageW(item(id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
    }
    // A click: the button takes the focus, then is pressed.
    void click(int id) {
        SendMessageW(dialog_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(id)), TRUE);
        SendMessageW(item(id), BM_CLICK, 0, 0);
        pump();
    }
    // A click on a row of a list box.
    void pick(int id, int row) {
        SendMessageW(item(id), LB_SETCURSEL, static_cast<WPARAM>(row), 0);
        SendMessageW(dialog_, WM_COMMAND, MAKEWPARAM(id, LBN_SELCHANGE),
                     reinterpret_cast<LPARAM>(item(id)));
        pump();
    }
    // A key pressed where the focus is.
    void key(WPARAM vk) {
        PostMessageW(GetFocus(), WM_KEYDOWN, vk, 1);
        PostMessageW(GetFocus(), WM_KEYUP, vk, 0xC0000001);
        pump();
    }
    std::vector<std::wstring> rows(int id) {
        std::vector<std::wstring> out;
        const int n = static_cast<int>(SendMessageW(item(id), LB_GETCOUNT, 0, 0));
        for (int i = 0; i < n; ++i) {
            wchar_t buffer[256] = {};
            SendMessageW(item(id), LB_GETTEXT, static_cast<WPARAM>(i),
                         reinterpret_cast<LPARAM>(buffer));
            out.push_back(buffer);
        }
        return out;
    }
    void addList(const std::wstring& name, const std::vector<std::wstring>& entries) {
        type(IDC_LISTNAME, name);
        click(IDC_ADDLIST);
        for (const auto& e : entries) {
            type(IDC_ENTRYNAME, e);
            click(IDC_ADDENTRY);
        }
    }

    Win32Platform platform_;
    Session s_{platform_};
    // The Outlook the program reads the settings appointment from (a first
    // start: the registry holds nothing yet).
    sim::Scenario outlook_;
    std::unique_ptr<DialogState> state_;
    HWND dialog_ = nullptr;
    std::unique_ptr<test::MessageBoxWatcher> boxes_;
};

TEST_F(SettingsAppDialog, OkWritesWhatTheAddinWritesForTheSameValues) {
    open();
    // A first start shows the construction defaults.
    EXPECT_EQ(IsDlgButtonChecked(dialog_, IDC_DATABASE), BST_CHECKED);
    EXPECT_EQ(textOf(IDC_VALUE), exeFolder() + L"\\");
    EXPECT_EQ(textOf(IDC_RATE), L"0");
    EXPECT_EQ(textOf(IDC_CONVERTHOURS), L"8");
    EXPECT_EQ(textOf(IDC_LUNCHHOURS), L"0.75");
    EXPECT_TRUE(rows(IDC_LISTS).empty());

    addList(L"Person", {L"Bob", L"Ann"});
    addList(L"Customer", {L"Acme", L"Initech", L"Globex"});
    addList(L"Extra field", {L"Travel"});
    // Reorder and rename: Customer first, Ann before Bob, Initech renamed.
    pick(IDC_LISTS, 1);
    click(IDC_LISTUP);
    pick(IDC_ENTRIES, 1);
    type(IDC_ENTRYNAME, L"Initrode");
    click(IDC_RENAMEENTRY);
    pick(IDC_LISTS, 1);
    pick(IDC_ENTRIES, 1);
    click(IDC_ENTRYUP);
    addList(L"Scratch", {L"x"});
    click(IDC_REMOVELIST);
    EXPECT_EQ(rows(IDC_LISTS), (std::vector<std::wstring>{L"Customer", L"Person", L"Extra field"}));

    click(IDC_CONNECTION);
    type(IDC_VALUE, L"Provider=SQLOLEDB;Data Source=srv");
    type(IDC_RATE, L"95.5");
    click(IDC_PRIVATE);
    click(IDC_CONVERT24);
    type(IDC_CONVERTHOURS, L"7.5");
    click(IDC_WRITESUBJECT);
    click(IDOK);
    EXPECT_EQ(boxes_->count(), 0) << (boxes_->texts().empty() ? "" : "a message box showed");
    EXPECT_EQ(state_->result, IDOK);
    EXPECT_FALSE(IsWindow(dialog_));
    const auto written = registry();
    ASSERT_TRUE(written.has_value());

    // The add-in's own object with the same values.
    deleteSettings();
    cPersonalSettings settings(s_);
    settings.lngReportChoice = 3;
    settings.strReportValue = u"Provider=SQLOLEDB;Data Source=srv";
    settings.curPersonalRate = Currency{955000};
    settings.blnFilterPrivate = true;
    settings.subPopulateMetadataList(
        u"Customer:Acme;Initrode;Globex;\r\nPerson:Ann;Bob;\r\n"
        u"Extra field:Travel;\r\n");
    settings.blnConvert24 = true;
    settings.intConvert24Hours = Variant(7.5);
    settings.blnWriteSubject = true;
    settings.SaveSettings();
    const auto expected = registry();
    ASSERT_TRUE(expected.has_value());
    EXPECT_EQ(written->size(), 17u);
    EXPECT_EQ(*written, *expected);
}

TEST_F(SettingsAppDialog, CancelAndEscapeWriteNothing) {
    Values stored;
    stored.reportValue = u"C:\\Data\\";
    stored.lists = {{u"Customer", {u"Acme"}}};
    ASSERT_TRUE(saveValues(s_, SettingsEditor(stored, platform_.userLocale(), u",")));
    const auto before = registry();

    for (const bool escape : {false, true}) {
        SCOPED_TRACE(escape ? "Escape" : "Cancel");
        open();
        addList(L"Person", {L"Ann"});
        type(IDC_RATE, L"12");
        click(IDC_EVENTS);
        if (escape) {
            SendMessageW(dialog_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(IDC_RATE)), TRUE);
            key(VK_ESCAPE);
        } else {
            click(IDCANCEL);
        }
        EXPECT_EQ(state_->result, IDCANCEL);
        EXPECT_FALSE(IsWindow(dialog_));
        EXPECT_EQ(registry(), before);
    }
}

TEST_F(SettingsAppDialog, EachRefusedInputShowsItsMessageAndWritesNothing) {
    // Each: a text typed into a field, then a button pressed; the focus
    // goes back to the field.
    struct Case {
        const char* what;
        int field;
        const wchar_t* text;
        int button;
        std::wstring says;
    };
    const Case cases[] = {
        {"empty list name", IDC_LISTNAME, L"", IDC_ADDLIST, L"must not be empty"},
        {"colon in a list name", IDC_LISTNAME, L"Customer:VIP", IDC_ADDLIST, L"\":\""},
        {"list named twice", IDC_LISTNAME, L"CUSTOMER", IDC_ADDLIST, L"doubles"},
        {"semicolon in an entry", IDC_ENTRYNAME, L"Acme;Globex", IDC_ADDENTRY, L"\";\""},
        {"list separator in an entry", IDC_ENTRYNAME, L"Acme,Globex", IDC_ADDENTRY,
         L"list separator"},
        {"entry twice", IDC_ENTRYNAME, L"acme", IDC_ADDENTRY, L"doubles"},
        {"rate not a number", IDC_RATE, L"ninety", IDOK, L"Personal hourly rate"},
        {"empty folder", IDC_VALUE, L"", IDOK, L"Access database folder"},
        {"hours out of range", IDC_CONVERTHOURS, L"25", IDOK, L"Convert full days to hours"},
        {"lunch not a number", IDC_LUNCHHOURS, L"-0.5", IDOK, L"Remove lunch"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        open();
        addList(L"Customer", {L"Acme"});
        type(c.field, c.text);
        click(c.button);
        ASSERT_EQ(boxes_->count(), 1);
        EXPECT_NE(boxes_->texts()[0].find(c.says), std::wstring::npos);
        EXPECT_EQ(GetFocus(), item(c.field));
        EXPECT_TRUE(IsWindow(dialog_)) << "the dialog stays open";
        EXPECT_EQ(rows(IDC_LISTS), std::vector<std::wstring>{L"Customer"});
        EXPECT_EQ(rows(IDC_ENTRIES), std::vector<std::wstring>{L"Acme"});
        EXPECT_FALSE(registry().has_value()) << "nothing written";
        DestroyWindow(dialog_);
        boxes_.reset();
    }
}

TEST_F(SettingsAppDialog, KeyboardReachesEveryControlInOrder) {
    open();
    addList(L"Customer", {L"Acme", L"Globex"});
    pick(IDC_ENTRIES, 0);
    // Tab from the first control through the dialog and back.
    SendMessageW(dialog_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(IDC_DATABASE)), TRUE);
    std::vector<int> order;
    for (int i = 0; i < 30 && (order.empty() || order.back() != IDC_DATABASE); ++i) {
        key(VK_TAB);
        order.push_back(GetDlgCtrlID(GetFocus()));
    }
    const std::vector<int> expected = {
        IDC_VALUE,      IDC_RATE,         IDC_EVENTS,       IDC_PRIVATE,
        IDC_RECURRING,  IDC_LISTS,        IDC_LISTNAME,     IDC_ADDLIST,
        IDC_RENAMELIST, IDC_REMOVELIST,   IDC_ENTRIES,      IDC_ENTRYNAME,
        IDC_ADDENTRY,   IDC_RENAMEENTRY,  IDC_REMOVEENTRY,  IDC_ENTRYDOWN,
        IDC_CONVERT24,  IDC_CONVERTHOURS, IDC_REMOVELUNCH,  IDC_LUNCHHOURS,
        IDC_LOCALCUBE,  IDC_STARTGRID,    IDC_WRITESUBJECT, IDOK,
        IDCANCEL,       IDC_DATABASE};  // Up and Down of the only list and Up of the first entry
                                        // are disabled
    EXPECT_EQ(order, expected);

    // Enter in a name field adds the name; every caption has its key.
    SendMessageW(dialog_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(IDC_ENTRYNAME)), TRUE);
    type(IDC_ENTRYNAME, L"Initech");
    key(VK_RETURN);
    EXPECT_EQ(rows(IDC_ENTRIES), (std::vector<std::wstring>{L"Acme", L"Globex", L"Initech"}));
    EXPECT_TRUE(IsWindow(dialog_));
    for (int id : {IDC_DATABASE, IDC_VALUELABEL, IDC_LISTSLABEL, IDC_ADDLIST, IDC_WRITESUBJECT})
        EXPECT_NE(textOf(id).find(L'&'), std::wstring::npos) << id;
    EXPECT_FALSE(registry().has_value());
}

// ---------------------------------------------------------------- the command line

// Outlook does not run for these: the registry was written once before
// (ReportChoice), so the program needs only the registry.
class SettingsAppCommandLine : public ::testing::Test {
  protected:
    void SetUp() override {
        deleteSettings();
        HKEY key = nullptr;
        if (RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key,
                            nullptr) == ERROR_SUCCESS) {
            const wchar_t choice[] = L"2";
            RegSetValueExW(key, L"ReportChoice", 0, REG_SZ, reinterpret_cast<const BYTE*>(choice),
                           sizeof choice);
            RegCloseKey(key);
        }
    }
    void TearDown() override {
        deleteSettings();
        DeleteFileW(file_.c_str());
    }
    std::wstring file_ = exeFolder() + L"\\settings-cli-test.txt";
};

TEST_F(SettingsAppCommandLine, ImportThenExportRoundTripsTheBody) {
    // Greek and accented names travel as UTF-8; the rate keeps its fraction.
    const std::string body =
        "2\r\nC:\\Data\\\r\n87.25\r\nFalse\r\nTrue\r\nFalse\r\n"
        "Soci\xC3\xA9t\xC3\xA9:Acme;Globex;\r\nPerson:Ann;\r\n"
        "\xCE\x95\xCF\x81\xCE\xB3\xCE\xB1\xCF\x83\xCE\xAF\xCE\xB1:Office;Travel;\r\n";
    writeAll(file_, body);
    const Outcome imported = run(L"/import \"" + file_ + L"\"");
    EXPECT_EQ(imported.exitCode, 0u) << imported.err;
    const auto values = registry();
    ASSERT_TRUE(values.has_value());
    EXPECT_EQ(values->size(), 17u);
    EXPECT_EQ(values->at(L"MetadataList"),
              L"Soci\u00E9t\u00E9:Acme;Globex;\r\nPerson:Ann;\r\n"
              L"\u0395\u03C1\u03B3\u03B1\u03C3\u03AF\u03B1:Office;Travel;\r\n");
    EXPECT_EQ(values->at(L"PersonalRate"), L"87.25");
    EXPECT_EQ(values->at(L"FilterPrivate"), L"True");

    DeleteFileW(file_.c_str());
    const Outcome exported = run(L"/EXPORT \"" + file_ + L"\"");
    EXPECT_EQ(exported.exitCode, 0u) << exported.err;
    EXPECT_EQ(test::readFile(file_), body);
}

TEST_F(SettingsAppCommandLine, RefusedImportsSayWhyAndWriteNothing) {
    const std::string head = "2\r\nC:\\Data\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\n";
    const std::wstring import = L"/import \"" + file_ + L"\"";
    writeAll(file_, head + "Customer:Acme;\r\n");
    ASSERT_EQ(run(import).exitCode, 0u);
    const auto before = registry();
    struct Case {
        const char* what;
        std::string file;  // written to file_ first
        std::wstring arguments;
        std::string says;
    };
    const Case cases[] = {
        {"entry twice", head + "Customer:Acme;ACME;\r\n", import, "Line 7"},
        {"no final line break", head + "Customer:Acme;", import, "last line"},
        {"rate not a number", "2\r\nC:\\\r\nlots\r\nFalse\r\nFalse\r\nFalse\r\n", import, "Line 3"},
        {"missing file", "", L"/import \"" + exeFolder() + L"\\no-such-file.txt\"",
         "Could not read"},
        {"unknown switch", "", L"/frobnicate", "Usage"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        writeAll(file_, c.file);
        const Outcome r = run(c.arguments);
        EXPECT_NE(r.exitCode, 0u);
        EXPECT_NE(r.err.find(c.says), std::string::npos) << r.err;
        EXPECT_EQ(registry(), before);
    }
}

// Before the registry was ever written the settings are only in Outlook:
// without it, neither /import nor /export touches anything.
TEST_F(SettingsAppCommandLine, AFirstStartWithoutOutlookImportsNothing) {
    deleteSettings();
    writeAll(file_, "2\r\nC:\\Data\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\nCustomer:Acme;\r\n");
    const Outcome imported = run(L"/import \"" + file_ + L"\"");
    EXPECT_NE(imported.exitCode, 0u);
    EXPECT_NE(imported.err.find("Outlook could not be reached"), std::string::npos) << imported.err;
    const Outcome exported = run(L"/export \"" + file_ + L"\"");
    EXPECT_NE(exported.exitCode, 0u);
    EXPECT_FALSE(registry().has_value());
}

// ---------------------------------------------------------------- under Xvfb

TEST(SettingsAppXvfb, RunsTheDialogTestsUnderAnXServerOfTheirOwn) {
    if (const char* why = test::xvfbRerunUnavailable(kChildVariable)) GTEST_SKIP() << why;
    if (displayReady())
        GTEST_SKIP() << "this process has a display: the SettingsAppDialog tests run in it";
    const test::XvfbRun run = test::rerunUnderXvfb(kChildVariable, "SettingsAppDialog.*",
                                                   exeFolder() + L"\\settings-xvfb.log");
    std::printf("---- the SettingsAppDialog tests under Xvfb ----\n%s----\n", run.output.c_str());
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_NE(run.output.find("[  PASSED  ] 4 tests"), std::string::npos);
    EXPECT_EQ(run.output.find("[  SKIPPED ]"), std::string::npos) << "every dialog test ran";
}

}  // namespace
}  // namespace hb::settingsapp
