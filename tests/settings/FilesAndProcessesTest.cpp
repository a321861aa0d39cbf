// Path helpers, special folders, the scripting components with
// their self-repair, and subExecute.
#include "SettingsTestSupport.h"
#include "settings/modFileHandling.h"
#include "settings/modGetDefaultFolders.h"
#include "settings/modScriptingDic.h"

namespace hb::test {
namespace {

TEST(NoTrailingSlash, RemovesOneTrailingSeparatorAtMost) {
    EXPECT_EQ(fncNoTrailingSlash(u"C:\\Data\\\\"), u"C:\\Data\\");
    EXPECT_EQ(fncNoTrailingSlash(u"C:\\Data\\"), u"C:\\Data");
    EXPECT_EQ(fncNoTrailingSlash(u"C:/Data/"), u"C:/Data");
    EXPECT_EQ(fncNoTrailingSlash(u"C:\\Data"), u"C:\\Data");
    EXPECT_EQ(fncNoTrailingSlash(u""), u"");
    EXPECT_EQ(fncNoTrailingSlash(u"\\"), u"");
    EXPECT_EQ(fncNoTrailingSlash(u"C:\\Data\\ "), u"C:\\Data\\ ");
}

TEST(RemoveQuotes, RemovesEveryApostrophe) {
    EXPECT_EQ(fncRemoveQuotes(u"O'Brien's"), u"OBriens");
    EXPECT_EQ(fncRemoveQuotes(u"plain \"text\""), u"plain \"text\"");
    EXPECT_EQ(fncRemoveQuotes(u""), u"");
}

TEST(SpecialFolders, CubeAndOlapFoldersBelowDocuments) {
    Env e;
    EXPECT_EQ(fncGetSpecialFolder(e.s, 5, 0), u"C:\\Users\\John\\Documents");
    EXPECT_EQ(fncGetLocalCubePath(e.s, false), u"C:\\Users\\John\\Documents\\OLAP Cubes");
    EXPECT_FALSE(e.platform.folderExists(u"C:\\Users\\John\\Documents\\OLAP Cubes"));
    EXPECT_EQ(fncGetLocalCubePath(e.s, true), u"C:\\Users\\John\\Documents\\OLAP Cubes");
    EXPECT_TRUE(e.platform.folderExists(u"C:\\Users\\John\\Documents\\OLAP Cubes"));
    EXPECT_EQ(fncGetLocalCubePath(e.s, true), u"C:\\Users\\John\\Documents\\OLAP Cubes");
    EXPECT_EQ(fncGetLocalOLAPPath(e.s, true), u"C:\\Users\\John\\Documents\\My OLAP");
    EXPECT_TRUE(e.platform.folderExists(u"C:\\Users\\John\\Documents\\My OLAP"));
    // A failing system call gives an empty folder.
    e.platform.failNext("specialFolder");
    EXPECT_EQ(fncGetSpecialFolder(e.s, 5, 0), u"");
    e.platform.failNext("specialFolder");
    EXPECT_EQ(fncGetLocalCubePath(e.s, false), u"\\OLAP Cubes");
}

TEST(FileSystemObject, CreatedOnceAndShared) {
    Env e;
    EXPECT_FALSE(e.s.blnFSAvailable);
    subSetupFS(e.s);
    EXPECT_TRUE(e.s.blnFSAvailable);
    const auto attempts = e.platform.componentAttempts().size();
    subSetupFS(e.s);
    EXPECT_EQ(e.platform.componentAttempts().size(), attempts);
    EXPECT_TRUE(e.platform.runs().empty());
    EXPECT_TRUE(e.noReport());
    e.platform.setFile(u"C:\\x\\a.txt", u"line1\r\nline2");
    EXPECT_TRUE(fsFileExists(e.s, u"C:\\x\\a.txt"));
    EXPECT_FALSE(fsFileExists(e.s, u"C:\\x\\b.txt"));
    EXPECT_TRUE(fsFolderExists(e.s, u"C:\\x"));
    EXPECT_EQ(fsReadAll(e.s, u"C:\\x\\a.txt"), u"line1\r\nline2");
    EXPECT_EQ(errorOf([&] { fsReadAll(e.s, u"C:\\x\\b.txt"); }), 53);
}

// The scripting components are repaired (regsvr32, minimized) once per
// session when they cannot be created; a repair that helps is silent.
TEST(ScriptingComponents, ARepairThatHelpsIsSilent) {
    struct Case {
        ScriptComponent component;
        int failures;  // the file-system object and dictionary: directly and by ProgID
        bool failingRepairStart;
        Str repair;
    } cases[] = {
        {ScriptComponent::FileSystemObject, 2, false, u"regsvr32 scrrun.dll /s"},
        {ScriptComponent::FileSystemObject, 2, true, u"regsvr32 scrrun.dll /s"},
        {ScriptComponent::Dictionary, 2, false, u"regsvr32 scrrun.dll /s"},
        {ScriptComponent::Shell, 1, false, u"regsvr32 wshom.ocx /s"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(u8(c.repair) + (c.failingRepairStart ? " failing" : ""));
        Env e;
        e.platform.failComponent(c.component, c.failures);
        if (c.failingRepairStart)
            e.platform.failNext("run", 2, 1, u"The system cannot find the file specified.");
        if (c.component == ScriptComponent::FileSystemObject) {
            subSetupFS(e.s);
            EXPECT_TRUE(e.s.blnFSAvailable);
            EXPECT_TRUE(e.s.blnFSRepairTried);
        } else if (c.component == ScriptComponent::Dictionary) {
            EXPECT_TRUE(fncCreateDic<int>(e.s));
        } else {
            EXPECT_TRUE(fncGetShell(e.s));
        }
        ASSERT_EQ(e.platform.runs().size(), 1u);
        EXPECT_EQ(e.platform.runs()[0].command, c.repair);
        EXPECT_EQ(e.platform.runs()[0].windowStyle, 2);
        EXPECT_EQ(e.s.err.number, 0);
        EXPECT_TRUE(e.noReport());
        EXPECT_TRUE(e.platform.messageBoxes().empty());
    }
}

TEST(ScriptingComponents, FileSystemObjectRepairIsTriedOncePerSession) {
    Env e;
    e.platform.failComponent(ScriptComponent::FileSystemObject);
    e.platform.failComponent(ScriptComponent::Dictionary);
    for (int i = 0; i < 2; ++i) {
        subSetupFS(e.s);
        EXPECT_FALSE(e.s.blnFSAvailable);
        auto r = e.takeReport();
        ASSERT_TRUE(r);
        EXPECT_EQ(r->procedure, u"subSetupFS");
        EXPECT_EQ(r->number, 429);
    }
    // One repair of the scripting run time for both of its components.
    EXPECT_FALSE(fncCreateDic<int>(e.s));
    EXPECT_EQ(e.platform.runs().size(), 1u);
    // The shared object's members then fail as calls on Nothing.
    EXPECT_THROW(fsFileExists(e.s, u"C:\\x"), AutomationError);
}

TEST(CreateDic, TextCompareInsertionOrdered) {
    Env e;
    auto dic = fncCreateDic<int>(e.s);
    ASSERT_TRUE(dic);
    EXPECT_EQ(dic->CompareMode(), 1);
    dic->Add(u"Beta", 1);
    dic->Add(u"alpha", 2);
    dic->Add(u"ΣΊΣΥΦΟΣ", 3);
    EXPECT_TRUE(dic->Exists(u"BETA"));
    EXPECT_TRUE(dic->Exists(u"σίσυφος"));
    EXPECT_FALSE(dic->Exists(u"gamma"));
    EXPECT_EQ(dic->Item(u"ALPHA"), 2);
    EXPECT_EQ(*dic->storedKey(u"ALPHA"), u"alpha");
    EXPECT_EQ(dic->Keys(), (std::vector<Str>{u"Beta", u"alpha", u"ΣΊΣΥΦΟΣ"}));
    EXPECT_EQ(errorOf([&] { dic->Add(u"beta", 4); }), 457);
    EXPECT_FALSE(dic->tryAdd(u"ALPHA", 9));
    EXPECT_EQ(dic->Item(u"alpha"), 2);
    EXPECT_TRUE(dic->tryAdd(u"Gamma", 5));
    dic->Remove(u"gamma");
    dic->Remove(u"BETA");
    EXPECT_EQ(dic->Keys(), (std::vector<Str>{u"alpha", u"ΣΊΣΥΦΟΣ"}));
    // Places follow the removals, in any letter case.
    EXPECT_EQ(dic->position(u"ALPHA"), 0);
    EXPECT_EQ(dic->position(u"σίσυφος"), 1);
    EXPECT_EQ(dic->position(u"beta"), -1);
    EXPECT_EQ(dic->Item(u"σίσυφος"), 3);
    EXPECT_EQ(dic->Count(), 2);
    EXPECT_THROW(dic->setCompareMode(0), AutomationError);  // not while filled
}

TEST(CreateDic, ThousandsOfKeysAddedAndRemovedStayFoundInOrder) {
    // Enough keys for the index to grow many times, removals from the
    // front, middle and end, and lookups in another letter case.
    for (const std::int32_t mode : {0, 1}) {
        ScriptingDictionary<int> dic;
        EXPECT_EQ(dic.CompareMode(), 0);  // binary unless told
        dic.setCompareMode(mode);
        std::vector<Str> kept;
        for (int i = 0; i < 3000; ++i)
            dic.Add(u"Key" + toStr(i), i);
        for (int i = 0; i < 3000; ++i) {
            if (i % 3 == 0) {
                dic.Remove(u"Key" + toStr(i));
            } else {
                kept.push_back(u"Key" + toStr(i));
            }
        }
        EXPECT_EQ(dic.Keys(), kept);
        for (std::size_t k = 0; k < kept.size(); ++k)
            ASSERT_EQ(dic.position(kept[k]), static_cast<std::ptrdiff_t>(k)) << u8(kept[k]);
        for (int i = 0; i < 3000; ++i) {
            const Str upper = u"KEY" + toStr(i);
            const int* item = dic.find(upper);
            if (mode == 1 && i % 3 != 0) {
                ASSERT_TRUE(item) << u8(upper);
                EXPECT_EQ(*item, i);
            } else {
                EXPECT_FALSE(item) << u8(upper);
            }
        }
        EXPECT_TRUE(dic.tryAdd(u"Key0", -1));
        EXPECT_EQ(dic.Keys().back(), u"Key0");
        EXPECT_FALSE(dic.tryAdd(u"Key1", -1));
    }
}

TEST(ScriptingComponents, DictionaryAndShellRepairOnceThenTellTheUser) {
    Env e;
    e.platform.failComponent(ScriptComponent::Dictionary);
    e.platform.failComponent(ScriptComponent::Shell);
    for (int i = 0; i < 2; ++i) {
        EXPECT_FALSE(fncCreateDic<int>(e.s));
        auto r = e.takeReport();
        ASSERT_TRUE(r);
        EXPECT_EQ(r->procedure, u"modScriptingDic.fncCreateDic");
        EXPECT_EQ(r->description,
                  u"Attempting to create a new Scripting.Dictionary object. This component is "
                  u"usually installed with Internet Explorer 4.0 or later");
        EXPECT_EQ(r->number, 429);
        EXPECT_FALSE(fncGetShell(e.s));
    }
    ASSERT_EQ(e.platform.runs().size(), 2u);  // once per session each
    EXPECT_EQ(e.platform.runs()[1].command, u"regsvr32 wshom.ocx /s");
    // The shell's failure is told in a message box of its own, every time
    // (after the dictionary's error report).
    ASSERT_EQ(e.platform.messageBoxes().size(), 4u);
    EXPECT_EQ(e.platform.messageBoxes()[3].text, e.platform.messageBoxes()[1].text);
    const auto& box = e.platform.messageBoxes()[1];
    EXPECT_EQ(box.caption, u"Hourbook for Outlook Addin v4");
    EXPECT_EQ(box.flags, win::MbIconCritical);
    EXPECT_EQ(box.text,
              u"ERROR\r\nAttempting to create a new Scripting.Dictionary object.\r\nThis component "
              u"is usually installed with Internet Explorer 4.0 or later\r\nPlease download the "
              u"Windows Scripting Runtime from Microsoft Downloads to resolve this issue!");
    EXPECT_EQ(e.s.err.number, 0);
}

struct ExecuteEnv : Env {
    ExecuteEnv() {
        s.phrases.LNGERROREXECUTE = u"Error trying to run the file at";
        subSetupFS(s);
    }
};

TEST(Execute, LinksAsTheyAreProgramsOnlyFromTheAddinsFolderWorkingInTheGivenOne) {
    const Str addin = u"C:\\Program Files\\Hourbook\\";
    struct Case {
        std::vector<Str> files;
        Str program;
        std::vector<Str> arguments;
        Str folder;
        Str command;
        Str workingFolder;
    } cases[] = {
        {{},
         u"http://www.hourbook.invalid/",
         {u"ignored"},
         u"C:\\Folder",
         u"http://www.hourbook.invalid/",
         u""},
        {{}, u"HTTPS://x.invalid", {}, u"", u"HTTPS://x.invalid", u""},
        {{}, u"mailto:a@b.invalid", {}, u"", u"mailto:a@b.invalid", u""},
        {{}, u"MailTo:support@hourbook.invalid", {}, u"", u"MailTo:support@hourbook.invalid", u""},
        {{}, u"hTtP://x", {}, u"", u"hTtP://x", u""},
        // A program of the same name in the shared folder is not the one run.
        {{u"D:\\Data\\HBReporting.exe", addin + u"HBReporting.exe"},
         u"HBReporting",
         {},
         u"D:\\Data\\",
         u"\"" + addin + u"HBReporting.exe\"",
         u"D:\\Data\\"},
        // A folder that does not exist leaves the working folder alone.
        {{addin + u"HBReporting.exe"},
         u"HBReporting",
         {},
         u"\\\\server\\share\\gone",
         u"\"" + addin + u"HBReporting.exe\"",
         u""},
        {{addin + u"Cubelens.exe"},
         u"Cubelens",
         {u"D:\\Data\\"},
         u"",
         u"\"" + addin + u"Cubelens.exe\" D:\\Data\\",
         u""},
        {{addin + u"Cubelens.exe"},
         u"Cubelens",
         {u"C:\\Users\\John\\Documents\\OLAP Cubes", u"\\\\srv\\Time Data\\", u"a \"b\""},
         u"",
         u"\"" + addin +
             u"Cubelens.exe\" \"C:\\Users\\John\\Documents\\OLAP Cubes\" \"\\\\srv\\Time "
             u"Data\\\\\" "
             u"\"a \\\"b\\\"\"",
         u""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(u8(c.program + u" " + c.folder));
        ExecuteEnv e;
        for (const Str& f : c.files)
            e.platform.setFile(f, u"");
        subExecute(e.s, c.program, c.arguments, c.folder);
        ASSERT_EQ(e.platform.runs().size(), 1u);
        EXPECT_EQ(e.platform.runs()[0].command, c.command);
        EXPECT_EQ(e.platform.runs()[0].windowStyle, 1);
        EXPECT_EQ(e.platform.runs()[0].workingFolder, c.workingFolder);
        EXPECT_TRUE(e.platform.messageBoxes().empty());
        EXPECT_TRUE(e.noReport());
    }
}

TEST(Execute, AMissingFileOrAFailingStartIsToldToTheUser) {
    const Str text =
        u"Error trying to run the file at C:\\Program Files\\Hourbook\\HBReporting.exe";
    for (const bool present : {false, true}) {
        ExecuteEnv e;
        // Only the add-in's own program counts, whatever the folder holds.
        e.platform.setFile(u"D:\\Data\\HBReporting.exe", u"");
        if (present) {
            e.platform.setFile(u"C:\\Program Files\\Hourbook\\HBReporting.exe", u"");
            e.platform.failNext("run", 70, 1, u"Permission denied");
        }
        subExecute(e.s, u"HBReporting", {}, u"D:\\Data");
        EXPECT_EQ(e.platform.runs().size(), present ? 1u : 0u);
        ASSERT_EQ(e.platform.messageBoxes().size(), 1u);
        const auto& box = e.platform.messageBoxes()[0];
        EXPECT_EQ(box.caption, u"Hourbook for Outlook Addin v4");
        EXPECT_EQ(box.flags, win::MbIconCritical);
        EXPECT_EQ(box.text, present ? u"Permission denied\r\n" + text : text);
        EXPECT_EQ(e.s.err.number, 0);
        EXPECT_TRUE(e.noReport());
    }
}

TEST(Execute, TracesWhatItStarts) {
    ExecuteEnv e;
    e.s.diag.blnTrace = true;
    e.platform.setFile(u"C:\\Program Files\\Hourbook\\HBPersonalSettings.exe", u"");
    subExecute(e.s, u"HBPersonalSettings", {u"False"}, u"C:\\Program Files\\Hourbook\\");
    const Str log =
        e.platform.file(u"C:\\Program Files\\Hourbook\\BrindlewoodLog.txt").value_or(u"");
    EXPECT_NE(log.find(u"\tAttempting to execute HBPersonalSettings False\r\n"), Str::npos);
    EXPECT_NE(log.find(u"\tAttempting to execute the path 'C:\\Program "
                       u"Files\\Hourbook\\HBPersonalSettings.exe'\r\n"),
              Str::npos);
}

TEST(Execute, WithoutAShellTheTrapReports) {
    ExecuteEnv e;
    e.platform.failComponent(ScriptComponent::Shell);
    subExecute(e.s, u"http://x.invalid", {}, u"");
    auto r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"modFileHandling.subExecute");
    EXPECT_EQ(r->number, 91);
}

}  // namespace
}  // namespace hb::test
