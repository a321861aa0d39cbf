// The three buttons: which program each starts, with what, and the rebuild
// that follows the settings program.
#include <gtest/gtest.h>

#include "diagnostics/modErroHandling.h"
#include "explorer/cToolBarItem.h"
#include "session/ExplorerSupport.h"
#include "settings/cPersonalSettings.h"

namespace hbtest {
namespace {

class ToolbarCommands : public ::testing::Test {
  protected:
    void start(const Str& choice = u"2", const Str& localCube = u"False") {
        h.setLists(workgroupLists());
        h.setSetting(u"ReportChoice", choice);
        h.setSetting(u"CreateLocalCube", localCube);
        h.start();
        ASSERT_TRUE(h.loaded());
        ex = h.sc().explorer();
        h.platform().clearRuns();
    }
    std::vector<Str> commands() {
        std::vector<Str> out;
        for (const auto& r : h.platform().runs())
            out.push_back(r.command);
        return out;
    }
    std::vector<Str> workingFolders() {
        std::vector<Str> out;
        for (const auto& r : h.platform().runs())
            out.push_back(r.workingFolder);
        return out;
    }
    Str module(const Str& file) { return h.platform().moduleFolder() + u"\\" + file; }
    Str quoted(const Str& path, const Str& arguments) { return u"\"" + path + u"\" " + arguments; }
    void reactivate() {
        auto mail = h.outlook().inbox()->addMail(u"Note");
        h.sc().close(h.sc().openInspector(mail));
    }

    SessionHarness h;
    std::shared_ptr<sim::Explorer> ex;
};

TEST_F(ToolbarCommands, ReportStartsTheAddinsReportProgramByReportChoice) {
    struct Case {
        std::int32_t choice;
        bool inReportFolder;
        bool started;
    };
    h.addProgram(u"HBReporting.exe");
    start();
    // A program of the same name planted in the workgroup's report folder,
    // which every member can write to, is never the one started.
    const Str reportFolder = h.session().oPersonalSettings->strReportValue;
    h.platform().setFile(reportFolder + u"HBReporting.exe", u"MZ");
    for (const Case c : {Case{1, false, true}, Case{2, true, true}, Case{3, false, true},
                         Case{4, false, true}, Case{0, false, false}, Case{5, false, false}}) {
        SCOPED_TRACE(c.choice);
        h.platform().clearRuns();
        h.session().oPersonalSettings->lngReportChoice = c.choice;
        h.sc().click(h.button(*ex, 790));
        if (!c.started) {
            EXPECT_TRUE(commands().empty());
            continue;
        }
        EXPECT_EQ(commands(), std::vector<Str>{u"\"" + module(u"HBReporting.exe") + u"\""});
        EXPECT_EQ(workingFolders(), std::vector<Str>{c.inReportFolder ? reportFolder : Str()});
    }
    EXPECT_FALSE(h.session().blnSettingsChanged);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(ToolbarCommands, StatisticsStartsTheCubeViewerWithTheDatabaseOrTheLocalCube) {
    h.addProgram(u"Cubelens.exe");
    start();
    const Str cube = h.platform().documentsFolder() + u"\\OLAP Cubes";
    hb::cPersonalSettings& settings = *h.session().oPersonalSettings;
    const Str reportValue = settings.strReportValue;

    // Both paths hold a blank; the report folder ends in a backslash, which
    // is doubled before the closing quote so that it is not read as escaping it.
    ASSERT_EQ(reportValue.back(), u'\\');
    h.sc().click(h.button(*ex, 1957));
    EXPECT_EQ(commands(),
              std::vector<Str>{quoted(module(u"Cubelens.exe"), u"\"" + reportValue + u"\\\"")});

    // Choices 3 (with the local cube) and 4 open the local cube, made when missing.
    for (const std::int32_t choice : {3, 4}) {
        h.platform().removeFolder(cube);
        h.platform().clearRuns();
        settings.lngReportChoice = choice;
        settings.blnCreateLocalCube = true;
        h.session().objToolBar->cmdStatistics_Click();
        EXPECT_EQ(commands(),
                  std::vector<Str>{quoted(module(u"Cubelens.exe"), u"\"" + cube + u"\"")})
            << choice;
        EXPECT_TRUE(h.platform().folderExists(cube));
    }
    // Without the local cube, choice 3 starts nothing; nor does choice 1.
    for (const std::int32_t choice : {3, 1}) {
        h.platform().clearRuns();
        settings.lngReportChoice = choice;
        settings.blnCreateLocalCube = false;
        h.session().objToolBar->cmdStatistics_Click();
        EXPECT_TRUE(commands().empty()) << choice;
    }
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(ToolbarCommands, SettingsPrefersTheSingleUserProgramThenTheWorkgroupOnes) {
    struct Case {
        std::vector<const char16_t*> present;
        const char16_t* started;  // null: nothing
    };
    for (const Case& c :
         {Case{{u"HBPersonalSettingsSingle.exe", u"HBPersonalSettings.exe", u"OHBTRSettings.exe"},
               u"HBPersonalSettingsSingle.exe"},
          Case{{u"HBPersonalSettings.exe", u"OHBTRSettings.exe"}, u"HBPersonalSettings.exe"},
          Case{{u"OHBTRSettings.exe"}, u"OHBTRSettings.exe"}, Case{{}, nullptr}}) {
        SessionHarness fresh;
        fresh.setLists(workgroupLists());
        for (const char16_t* file : c.present)
            fresh.addProgram(file);
        fresh.start();
        ASSERT_TRUE(fresh.loaded());
        fresh.platform().clearRuns();
        fresh.sc().click(fresh.button(*fresh.sc().explorer(), 1556));
        std::vector<Str> runs;
        for (const auto& r : fresh.platform().runs())
            runs.push_back(r.command);
        if (c.started) {
            EXPECT_EQ(runs, std::vector<Str>{quoted(
                                fresh.platform().moduleFolder() + u"\\" + c.started, u"False")});
        } else {
            EXPECT_TRUE(runs.empty());
            // A missing program is no error.
            EXPECT_TRUE(fresh.platform().messageBoxes().empty()) << fresh.messageBoxesText();
        }
        // Started or not, the settings count as changed.
        EXPECT_TRUE(fresh.session().blnSettingsChanged);
    }
}

TEST_F(ToolbarCommands, AfterTheSettingsProgramTheBarIsRebuiltOnceWithTheNewLists) {
    h.addProgram(u"HBPersonalSettings.exe");
    auto appt = h.addAppointment(u"Review", u"Dent, Smith");
    start();
    h.sc().click(h.button(*ex, 1556));
    ASSERT_TRUE(h.session().blnSettingsChanged);

    // The settings program leaves two other lists.
    h.setSetting(u"MetadataList", u"Client:Acme;Dent;\r\nPerson:Smith;\r\n");
    const auto adds = callsOf(h.instruments(), u"Add");
    reactivate();
    EXPECT_FALSE(h.session().blnSettingsChanged);
    auto controls = barControls(*ex);
    ASSERT_EQ(controls.size(), 5u);
    EXPECT_EQ(controls[0]->caption, u"Client");
    EXPECT_EQ(controls[1]->caption, u"Person");
    EXPECT_EQ(addinBarsIn(*ex), 1u);
    const auto rebuilt = callsOf(h.instruments(), u"Add");
    EXPECT_GT(rebuilt, adds);

    // The next activation re-binds, nothing is built again.
    reactivate();
    EXPECT_EQ(callsOf(h.instruments(), u"Add"), rebuilt);

    h.sc().select(ex, {appt});
    EXPECT_EQ(h.combo(*ex, 1)->text, u"Dent");
    EXPECT_EQ(h.combo(*ex, 2)->text, u"Smith");
    EXPECT_EQ(h.combo(*ex, 1)->entries, (std::vector<Str>{u"Acme", u"Dent"}));
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

// The settings are read again when they were saved, not when the program
// was started: a window activated while the dialog is still open changes
// nothing and leaves the rebuild for OK; a script's import, with no button
// pressed, is read all the same.
TEST_F(ToolbarCommands, TheBarFollowsTheStoredSettingsNotTheLaunch) {
    for (const bool launched : {true, false}) {
        SCOPED_TRACE(launched ? "Settings button" : "import by a script");
        SessionHarness fresh;
        fresh.setLists(workgroupLists());
        fresh.addProgram(u"HBPersonalSettings.exe");
        auto appt = fresh.addAppointment(u"Review", u"Dent, Smith");
        fresh.start();
        auto window = fresh.sc().explorer();
        const auto bounce = [&] {
            fresh.sc().close(fresh.sc().openInspector(fresh.outlook().inbox()->addMail(u"Note")));
        };
        if (launched) {
            fresh.sc().click(fresh.button(*window, 1556));
            const auto adds = callsOf(fresh.instruments(), u"Add");
            bounce();  // the dialog is still open
            EXPECT_EQ(callsOf(fresh.instruments(), u"Add"), adds);
            EXPECT_TRUE(fresh.session().blnSettingsChanged);
        }
        fresh.setSetting(u"MetadataList", u"Client:Acme;Dent;\r\nPerson:Smith;\r\n");
        bounce();
        EXPECT_FALSE(fresh.session().blnSettingsChanged);
        EXPECT_EQ(fresh.combo(*window, 1)->caption, u"Client");
        fresh.sc().select(window, {appt});
        EXPECT_EQ(fresh.combo(*window, 1)->text, u"Dent");
        EXPECT_EQ(fresh.errorDialogs(), 0u) << fresh.messageBoxesText();
    }
}

TEST_F(ToolbarCommands, AShownAppointmentRereadsTheSettingsAfterTheSettingsProgram) {
    h.addProgram(u"HBPersonalSettings.exe");
    auto appt = h.addAppointment(u"Review", u"Dent, Brown");
    start();
    h.sc().click(h.button(*ex, 1556));
    h.setSetting(u"MetadataList",
                 u"Company:Acme;Dent;\r\nPerson:Smith;Brown;\r\nExtra Field:Travel;\r\n");
    // Selecting before any rebuild: the values are read with the new lists.
    h.sc().select(ex, {appt});
    EXPECT_FALSE(h.session().blnSettingsChanged);
    EXPECT_EQ(h.combo(*ex, 1)->entries, (std::vector<Str>{u"Acme", u"Dent"}));
    EXPECT_EQ(h.combo(*ex, 1)->text, u"Dent");
    EXPECT_EQ(h.combo(*ex, 2)->text, u"Brown");
}

}  // namespace
}  // namespace hbtest
