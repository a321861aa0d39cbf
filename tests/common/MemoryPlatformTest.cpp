// The in-memory Windows of the native tests, where its behaviour is not
// obvious: registry semantics, files, the message box script, failures.
#include <gtest/gtest.h>

#include "platform/memory/MemoryPlatform.h"

namespace hb {
namespace {

const Str kSettings = u"Software\\Brindlewood\\Hourbook for Outlook\\Settings";

TEST(MemoryRegistry, CreateOpenQueryRoundTrip) {
    MemoryPlatform p;
    RegKey key = 0;
    EXPECT_EQ(p.regOpenKey(kSettings, key), win::ErrorFileNotFound);
    ASSERT_EQ(p.regCreateKey(kSettings, key), 0);
    EXPECT_NE(key, 0u);
    EXPECT_TRUE(p.keyExists(u"Software\\Brindlewood"));  // intermediate keys
    EXPECT_TRUE(p.keyExists(u"software\\BRINDLEWOOD\\hourbook for outlook\\settings"));
    EXPECT_EQ(p.regSetString(key, u"strReportPath", u"C:\\Reports\\Ünïcødé ✓"), 0);
    EXPECT_EQ(p.regSetString(key, u"strEmpty", u""), 0);
    EXPECT_EQ(p.regSetDword(key, u"lngCount", 42), 0);
    p.regCloseKey(key);
    EXPECT_EQ(p.openKeyCount(), 0u);

    RegKey rk = 0;
    ASSERT_EQ(p.regOpenKey(u"SOFTWARE\\brindlewood\\Hourbook for Outlook\\SETTINGS", rk), 0);
    RegValue v;
    ASSERT_EQ(p.regQueryValue(rk, u"STRREPORTPATH", v), 0);  // names without regard to case
    EXPECT_EQ(v.type, win::RegSz);
    EXPECT_EQ(v.text, u"C:\\Reports\\Ünïcødé ✓");
    EXPECT_EQ(v.sizeBytes, v.text.size() + 1);
    ASSERT_EQ(p.regQueryValue(rk, u"strEmpty", v), 0);
    EXPECT_EQ(v.text, u"");
    EXPECT_EQ(v.sizeBytes, 0u);
    ASSERT_EQ(p.regQueryValue(rk, u"lngCount", v), 0);
    EXPECT_EQ(v.type, win::RegDword);
    EXPECT_EQ(v.dword, 42u);
    EXPECT_EQ(v.sizeBytes, 4u);
    EXPECT_EQ(p.regQueryValue(rk, u"missing", v), win::ErrorFileNotFound);
    // A key opened for reading cannot be written.
    EXPECT_EQ(p.regSetString(rk, u"x", u"y"), win::ErrorAccessDenied);
    p.regCloseKey(rk);
    // A closed handle is no handle.
    EXPECT_EQ(p.regQueryValue(rk, u"lngCount", v), 6);

    // The stored value name keeps the letter case of its first write.
    EXPECT_EQ(p.valueNames(kSettings),
              (std::vector<Str>{u"lngCount", u"strEmpty", u"strReportPath"}));
}

TEST(MemoryRegistry, TestAccessorsAndDelete) {
    MemoryPlatform p;
    p.setString(u"Software\\A\\B", u"Name", u"text");
    p.setDword(u"Software\\A\\B", u"Flag", 1);
    p.setRawValue(u"Software\\A\\B", u"Bin", 3, 8);
    ASSERT_TRUE(p.value(u"software\\a\\b", u"name"));
    EXPECT_EQ(p.value(u"software\\a\\b", u"name")->text, u"text");
    EXPECT_EQ(p.value(u"Software\\A\\B", u"Flag")->type, win::RegDword);
    EXPECT_EQ(p.value(u"Software\\A\\B", u"Bin")->type, 3u);
    EXPECT_FALSE(p.value(u"Software\\A\\B", u"none"));
    EXPECT_FALSE(p.value(u"Software\\A\\C", u"Name"));
    EXPECT_EQ(p.subkeyNames(u"Software"), (std::vector<Str>{u"A"}));

    RegKey k = 0;
    ASSERT_EQ(p.regCreateKey(u"Software\\A\\B", k), 0);  // opens the existing key
    EXPECT_EQ(p.regDeleteValue(k, u"name"), 0);
    EXPECT_EQ(p.regDeleteValue(k, u"name"), win::ErrorFileNotFound);
    EXPECT_EQ(p.regDeleteTree(u"Software\\A"), 0);
    EXPECT_FALSE(p.keyExists(u"Software\\A\\B"));
    EXPECT_TRUE(p.keyExists(u"Software"));
    EXPECT_EQ(p.regDeleteTree(u"Software\\A"), win::ErrorFileNotFound);
    RegValue v;
    EXPECT_EQ(p.regQueryValue(k, u"Flag", v), 1018);  // the key was deleted
    p.regCloseKey(k);
}

TEST(MemoryRegistry, FailureInjection) {
    MemoryPlatform p;
    RegKey k = 0;
    p.failNext("regCreateKey", win::ErrorAccessDenied);
    EXPECT_EQ(p.regCreateKey(kSettings, k), win::ErrorAccessDenied);
    EXPECT_FALSE(p.keyExists(kSettings));
    ASSERT_EQ(p.regCreateKey(kSettings, k), 0);  // only the next call failed
    p.failAlways("regSetString", 1009);
    EXPECT_EQ(p.regSetString(k, u"a", u"b"), 1009);
    EXPECT_EQ(p.regSetString(k, u"a", u"b"), 1009);
    p.clearFailure("regSetString");
    EXPECT_EQ(p.regSetString(k, u"a", u"b"), 0);
    p.failNext("regQueryValue", 234, 2);
    RegValue v;
    EXPECT_EQ(p.regQueryValue(k, u"a", v), 234);
    EXPECT_EQ(p.regQueryValue(k, u"a", v), 234);
    EXPECT_EQ(p.regQueryValue(k, u"a", v), 0);
    EXPECT_EQ(p.calls("regQueryValue"), 3);
    EXPECT_EQ(p.calls("regSetString"), 3);
    p.regCloseKey(k);
    p.failNext("regOpenKey", 5);
    EXPECT_EQ(p.regOpenKey(kSettings, k), 5);
}

TEST(MemoryFiles, FoldersFilesAndAppend) {
    MemoryPlatform p;
    EXPECT_EQ(p.specialFolder(win::CsidlPersonal), Str(u"C:\\Users\\John\\Documents"));
    EXPECT_EQ(p.specialFolder(win::CsidlPersonal | 0x800), Str(u"C:\\Users\\John\\Documents"));
    EXPECT_TRUE(p.folderExists(u"c:\\users\\john\\documents\\"));
    EXPECT_TRUE(p.folderExists(u"C:\\Users"));
    EXPECT_EQ(p.moduleFolder(), u"C:\\Program Files\\Hourbook");
    EXPECT_TRUE(p.folderExists(p.moduleFolder()));

    const Str cubes = u"C:\\Users\\John\\Documents\\OLAP Cubes";
    EXPECT_FALSE(p.folderExists(cubes));
    EXPECT_TRUE(p.createFolder(cubes));
    EXPECT_TRUE(p.folderExists(cubes));
    EXPECT_FALSE(p.createFolder(cubes));                    // exists already
    EXPECT_FALSE(p.createFolder(u"C:\\No\\Such\\Parent"));  // the parent is missing

    const Str log = u"C:\\Program Files\\Hourbook\\BrindlewoodLog.txt";
    EXPECT_FALSE(p.fileExists(log));
    EXPECT_TRUE(p.appendLine(log, u"one"));
    EXPECT_TRUE(p.appendLine(log, u"two"));
    EXPECT_TRUE(p.fileExists(u"c:\\program files\\hourbook\\brindlewoodlog.TXT"));
    EXPECT_EQ(p.readTextFile(log), Str(u"one\r\ntwo\r\n"));
    EXPECT_FALSE(p.appendLine(u"C:\\Missing\\x.txt", u"x"));
    EXPECT_FALSE(p.readTextFile(u"C:\\nothing.txt"));

    p.setFile(u"D:\\Data\\conn.txt", u"Provider=x");
    EXPECT_TRUE(p.folderExists(u"D:\\Data"));
    EXPECT_EQ(p.file(u"d:\\data\\CONN.txt"), Str(u"Provider=x"));

    p.failNext("readTextFile");
    EXPECT_FALSE(p.readTextFile(u"D:\\Data\\conn.txt"));
    EXPECT_TRUE(p.readTextFile(u"D:\\Data\\conn.txt"));
    p.failAlways("specialFolder");
    EXPECT_FALSE(p.specialFolder(win::CsidlPersonal));
    p.failNext("appendLine");
    EXPECT_FALSE(p.appendLine(log, u"three"));
    EXPECT_EQ(p.readTextFile(log), Str(u"one\r\ntwo\r\n"));
    p.failNext("createFolder");
    EXPECT_FALSE(p.createFolder(u"C:\\Users\\John\\Documents\\My OLAP"));
    p.failNext("moduleFolder");
    EXPECT_EQ(p.moduleFolder(), u"");
    EXPECT_EQ(p.moduleFolder(), u"C:\\Program Files\\Hourbook");
    p.setDocumentsFolder(u"E:\\Docs");
    p.clearFailures();
    EXPECT_EQ(p.specialFolder(win::CsidlPersonal), Str(u"E:\\Docs"));
    EXPECT_TRUE(p.folderExists(u"E:\\Docs"));
}

TEST(MemoryMessageBox, RecordsAndAnswersFromScript) {
    MemoryPlatform p;
    // Defaults with an empty script: IDOK, IDNO for Yes/No boxes.
    EXPECT_EQ(p.messageBox(u"hello", u"cap", win::MbOk), win::IdOk);
    EXPECT_EQ(p.messageBox(u"sure?", u"cap", win::MbYesNo), win::IdNo);
    p.scriptAnswers({win::IdYes, win::IdCancel});
    EXPECT_EQ(p.messageBox(u"a", u"c", win::MbYesNo | win::MbIconCritical), win::IdYes);
    EXPECT_EQ(p.messageBox(u"b", u"c", win::MbOk), win::IdCancel);
    EXPECT_EQ(p.pendingAnswers(), 0u);
    EXPECT_EQ(p.messageBox(u"c", u"c", win::MbYesNo), win::IdNo);
    ASSERT_EQ(p.messageBoxes().size(), 5u);
    EXPECT_EQ(p.messageBoxes()[2].text, u"a");
    EXPECT_EQ(p.messageBoxes()[2].caption, u"c");
    EXPECT_EQ(p.messageBoxes()[2].flags, win::MbYesNo | win::MbIconCritical);
    EXPECT_EQ(p.messageBoxes()[2].answer, win::IdYes);
    p.failNext("messageBox");
    EXPECT_EQ(p.messageBox(u"d", u"c", win::MbOk), 0);
    EXPECT_EQ(p.messageBoxes().size(), 6u);
}

TEST(MemoryRun, RecordsAndFails) {
    MemoryPlatform p;
    p.run(u"regsvr32 scrrun.dll /s", win::SwShowMinimized, Str());
    p.failNext("run", -2147024894, 1, u"The system cannot find the file specified.");
    try {
        p.run(u"\"C:\\x.exe\" -a", win::SwShowNormal, u"D:\\Data");
        ADD_FAILURE() << "no error";
    } catch (const AutomationError& e) {
        EXPECT_EQ(e.number(), -2147024894);
        EXPECT_EQ(e.description(), u"The system cannot find the file specified.");
    }
    ASSERT_EQ(p.runs().size(), 2u);
    EXPECT_EQ(p.runs()[0].command, u"regsvr32 scrrun.dll /s");
    EXPECT_EQ(p.runs()[0].windowStyle, win::SwShowMinimized);
    EXPECT_EQ(p.runs()[1].windowStyle, win::SwShowNormal);
    EXPECT_EQ(p.runs()[0].workingFolder, u"");
    EXPECT_EQ(p.runs()[1].workingFolder, u"D:\\Data");
}

TEST(MemoryComponents, FailNTimesOrAlways) {
    MemoryPlatform p;
    EXPECT_TRUE(p.createComponent(ScriptComponent::FileSystemObject));
    p.failComponent(ScriptComponent::Dictionary, 2);
    EXPECT_FALSE(p.createComponent(ScriptComponent::Dictionary));
    EXPECT_TRUE(p.createComponent(ScriptComponent::FileSystemObject));
    EXPECT_FALSE(p.createComponent(ScriptComponent::Dictionary));
    EXPECT_TRUE(p.createComponent(ScriptComponent::Dictionary));
    p.failComponent(ScriptComponent::Shell);
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(p.createComponent(ScriptComponent::Shell));
    EXPECT_EQ(p.componentAttempts().size(), 8u);
}

TEST(MemoryEnvironment, Expand) {
    MemoryPlatform p;
    EXPECT_EQ(p.expandEnvironment(u"%USERDOMAIN%\\%USERNAME%"), u"HOURBOOK\\John");
    p.setEnvironment(u"USERNAME", u"Mary");
    EXPECT_EQ(p.expandEnvironment(u"%username%"), u"Mary");
    EXPECT_EQ(p.expandEnvironment(u"100% %NOPE% done"), u"100% %NOPE% done");
    EXPECT_EQ(p.expandEnvironment(u"50%%USERNAME%"), u"50%Mary");
    EXPECT_EQ(p.expandEnvironment(u"plain"), u"plain");
    p.removeEnvironment(u"USERNAME");
    EXPECT_EQ(p.expandEnvironment(u"%USERNAME%"), u"%USERNAME%");
}

}  // namespace
}  // namespace hb
