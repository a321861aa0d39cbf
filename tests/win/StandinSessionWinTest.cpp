// End to end under Wine: HBAddin.dll registered with regsvr32, loaded by
// the stand-in Outlook through its registration and driven over real COM.
// Start-up and shutdown need no display; the whole session's real windows
// (the toolbar's combo boxes, the pane control) need the X display the test
// command gives the Wine tests.
// The stand-in's exit status says whether every check of its session held:
// what the add-in wrote to each appointment (the values the native session
// tests expect for the same picks), the settings program the Settings
// button starts and the new lists the toolbar shows after it saved, no
// failed connection call, no message box, nothing of Outlook's still held
// after OnDisconnection, DllCanUnloadNow S_OK and the DLL unloaded.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ComTestSupport.h"

namespace {

DWORD run(const std::wstring& command) {
    return hb::test::runProgram(command, 120000);
}

class StandinSession : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        ASSERT_EQ(run(L"regsvr32.exe /s \"" + hb::test::exeFolder() + L"\\HBAddin.dll\""), 0u);
    }
    static void TearDownTestSuite() {
        run(L"regsvr32.exe /s /u \"" + hb::test::exeFolder() + L"\\HBAddin.dll\"");
    }
    static DWORD standin(const std::wstring& arguments) {
        return run(L"\"" + hb::test::exeFolder() + L"\\hb_standin.exe\" " + arguments);
    }
    static DWORD startAndQuit(int version) {
        return standin(L"--version " + std::to_wstring(version) + L" --startup-only");
    }
};

TEST_F(StandinSession, StartsAndShutsDownCleanlyOnEveryOutlookVersion) {
    for (int version : {9, 10, 11, 12, 14, 15, 16})
        EXPECT_EQ(startAndQuit(version), 0u) << "Outlook " << version;
}

TEST_F(StandinSession, BillsAppointmentsInTheCalendarAndInAppointmentWindows) {
    if (GetEnvironmentVariableW(L"DISPLAY", nullptr, 0) == 0)
        GTEST_SKIP() << "no X display (the test command gives the Wine tests an Xvfb)";
    // 11: the appointment window gets the toolbar; 12: the task pane control;
    // 14 to 16: the calendar's ribbon group instead of the toolbar (Office
    // reads its XML with MSXML and calls its callbacks through IDispatch).
    for (int version : {11, 12, 14, 15, 16})
        EXPECT_EQ(standin(L"--version " + std::to_wstring(version)), 0u) << "Outlook " << version;
}

// Loaded into a running Outlook from the COM add-ins dialog (no Startup
// event follows): the toolbar comes at once, the appointment window already
// open gets its task pane (its toolbar under Outlook 2003), and picks in
// both are written.
TEST_F(StandinSession, ConnectedAfterOutlooksStartItServesTheWindowsAlreadyOpen) {
    if (GetEnvironmentVariableW(L"DISPLAY", nullptr, 0) == 0)
        GTEST_SKIP() << "no X display (the test command gives the Wine tests an Xvfb)";
    for (int version : {11, 12, 16})
        EXPECT_EQ(standin(L"--version " + std::to_wstring(version) + L" --after-startup"), 0u)
            << "Outlook " << version;
}

// Every object-model call of start-up, then of a selection change, fails in
// turn as Outlook fails a call; each load of the DLL keeps the rules (no
// failing HRESULT, at most one error dialog, everything given back, the DLL
// unloaded). The message boxes are counted without being shown.
TEST_F(StandinSession, EachFailingObjectModelCallIsSurvivedWithOneDialogAtMostAndNothingHeld) {
    for (const wchar_t* phase : {L"startup", L"selection"})
        EXPECT_EQ(standin(L"--fault-sweep " + std::wstring(phase)), 0u) << phase;
    // Outlook 16: the ribbon's callbacks over COM are swept too.
    for (const wchar_t* phase : {L"startup", L"selection"})
        EXPECT_EQ(standin(L"--version 16 --fault-sweep " + std::wstring(phase)), 0u) << phase;
}

TEST_F(StandinSession, AnAddinThatCannotBeCreatedIsSetToLoadBehavior2AndOutlookGoesOn) {
    constexpr wchar_t key[] = L"Software\\Microsoft\\Office\\Outlook\\Addins\\HBStandin.Missing";
    // The keys above it that this test makes go again at its end.
    std::vector<std::wstring> made;
    for (const wchar_t* parent :
         {L"Software\\Microsoft\\Office\\Outlook\\Addins", L"Software\\Microsoft\\Office\\Outlook",
          L"Software\\Microsoft\\Office"}) {
        HKEY existing = nullptr;
        if (RegOpenKeyExW(HKEY_CURRENT_USER, parent, 0, KEY_READ, &existing) == ERROR_SUCCESS)
            RegCloseKey(existing);
        else
            made.emplace_back(parent);
    }
    DWORD three = 3;
    ASSERT_EQ(
        RegSetKeyValueW(HKEY_CURRENT_USER, key, L"LoadBehavior", REG_DWORD, &three, sizeof three),
        ERROR_SUCCESS);
    // The session fails its checks (an add-in did not load), but runs to its end.
    EXPECT_EQ(startAndQuit(12), 1u);
    DWORD behavior = 0, size = sizeof behavior;
    EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, key, L"LoadBehavior", RRF_RT_REG_DWORD, nullptr,
                           &behavior, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(behavior, 2u);
    RegDeleteTreeW(HKEY_CURRENT_USER, key);
    for (const std::wstring& parent : made)
        RegDeleteKeyW(HKEY_CURRENT_USER, parent.c_str());
}

}  // namespace
