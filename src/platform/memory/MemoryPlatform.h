#pragma once
// An in-memory Windows for the native tests: a registry below
// HKEY_CURRENT_USER, files and folders, resources, message boxes answered
// from a script, started processes, registered automation objects, and the
// locale and version facts, all settable. Every service can be told to fail.
//
// Failure injection: every service has a name, the name of its member
// function ("regCreateKey", "regOpenKey", "regQueryValue", "regSetString",
// "regSetDword", "regDeleteValue", "regDeleteTree", "regKeyWriteTime", "specialFolder",
// "fileExists", "folderExists", "createFolder", "readTextFile",
// "appendLine", "moduleFolder", "resource", "createComponent", "getActiveObject",
// "createObject", "messageBox", "run", "expandEnvironment", "localeInfo",
// "windowsVersion", "addinVersion"). A failing call does what the Windows
// call does on failure:
//  - registry operations return the code given (regCloseKey cannot fail);
//  - specialFolder, readTextFile and resource return nullopt; fileExists,
//    folderExists, createFolder, appendLine and createComponent false;
//    getActiveObject and createObject Nothing; messageBox 0 (the box is
//    recorded all the same); moduleFolder an empty text;
//  - run raises an AutomationError with the code and description given;
//  - expandEnvironment returns the text unchanged; localeInfo returns 0 and
//    an empty text; windowsVersion ok = false; addinVersion 0.0.0.
// Every call, failing or not, is counted (calls(name)).
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/Platform.h"

namespace hb {

class MemoryPlatform : public Platform {
  public:
    MemoryPlatform();
    ~MemoryPlatform() override;

    // ---- Platform --------------------------------------------------------
    std::int32_t regCreateKey(const Str& path, RegKey& key) override;
    std::int32_t regOpenKey(const Str& path, RegKey& key) override;
    std::int32_t regQueryValue(RegKey key, const Str& name, RegValue& value) override;
    std::int32_t regSetString(RegKey key, const Str& name, const Str& value) override;
    std::int32_t regSetDword(RegKey key, const Str& name, std::uint32_t value) override;
    std::int32_t regDeleteValue(RegKey key, const Str& name) override;
    std::int32_t regDeleteTree(const Str& path) override;
    void regCloseKey(RegKey key) override;
    std::int32_t regKeyWriteTime(RegKey key, std::uint64_t& stamp) override;

    std::optional<Str> specialFolder(int csidl) override;
    bool fileExists(const Str& path) override;
    bool folderExists(const Str& path) override;
    bool createFolder(const Str& path) override;
    std::optional<Str> readTextFile(const Str& path) override;
    bool appendLine(const Str& path, const Str& line) override;
    // Windows-1252, the code page of Western systems.
    Str fromAnsi(const std::vector<std::uint8_t>& bytes) override;
    Str moduleFolder() override;
    std::optional<std::vector<std::uint8_t>> resource(const Str& type, const Str& name) override;

    bool createComponent(ScriptComponent component) override;
    Variant getActiveObject(const Str& progId) override;
    Variant createObject(const Str& progId) override;

    std::int32_t messageBox(const Str& text, const Str& caption, std::uint32_t flags) override;
    void run(const Str& command, int windowStyle, const Str& workingFolder) override;
    Str expandEnvironment(const Str& text) override;

    std::int32_t localeInfo(std::uint32_t lcid, std::uint32_t item, Str& out) override;
    std::uint32_t systemDefaultLcid() override { return systemLcid_; }
    Locale userLocale() override { return userLocale_; }
    WindowsVersion windowsVersion() override;
    ModuleVersion addinVersion() override;
    double now() override { return now_; }

    // ---- Failure injection ----------------------------------------------
    // The next `times` calls of the service fail with code (a Win32 error
    // code for the registry, an automation error number for run).
    void failNext(const std::string& service, std::int32_t code = win::ErrorAccessDenied,
                  int times = 1, Str description = {});
    // Every call of the service fails from now on.
    void failAlways(const std::string& service, std::int32_t code = win::ErrorAccessDenied,
                    Str description = {});
    void clearFailure(const std::string& service);
    void clearFailures();
    // Calls of a service so far (failed ones included).
    int calls(const std::string& service) const;

    // ---- Registry (paths below HKEY_CURRENT_USER, "\"-separated, names
    // without regard to letter case) ----------------------------------------
    // Query sizes: REG_DWORD 4; REG_SZ as RegQueryValueExA reports a text
    // written by RegSetValueExA with its length in characters: length + 1
    // (the terminating zero is added by the system, one byte per character),
    // and 0 for the empty text, which is stored without any data. A value set
    // through setString may give its own size.
    bool keyExists(const Str& path) const;
    std::optional<RegValue> value(const Str& path, const Str& name) const;
    void setString(const Str& path, const Str& name, const Str& text,
                   std::optional<std::uint32_t> sizeBytes = std::nullopt);
    void setDword(const Str& path, const Str& name, std::uint32_t value);
    // Any other type, raw (type and size as given, no data).
    void setRawValue(const Str& path, const Str& name, std::uint32_t type, std::uint32_t sizeBytes);
    void createKey(const Str& path);
    void deleteKey(const Str& path);
    // Names of the values and subkeys of a key, in their stored letter case.
    std::vector<Str> valueNames(const Str& path) const;
    std::vector<Str> subkeyNames(const Str& path) const;
    // Handles not closed yet.
    std::size_t openKeyCount() const { return handles_.size(); }
    // Handles are handed out from this number on (never 0).
    static constexpr RegKey kFirstHandle = 0x1000;

    // ---- Folders and files (paths without regard to letter case; a
    // trailing "\" is ignored; drive roots "X:" always exist) ---------------
    // The documents folder (CSIDL 5); created unless create is false.
    void setDocumentsFolder(const Str& path, bool create = true) {
        documents_ = path;
        if (create) addFolder(path);
    }
    const Str& documentsFolder() const { return documents_; }
    // The add-in's folder; created unless create is false.
    void setModuleFolder(const Str& path, bool create = true) {
        moduleFolder_ = path;
        if (create) addFolder(path);
    }
    // Creates the folder and its parents.
    void addFolder(const Str& path);
    void removeFolder(const Str& path);
    // Sets a file's whole text (its folder is created).
    void setFile(const Str& path, const Str& text);
    void removeFile(const Str& path);
    std::optional<Str> file(const Str& path) const;
    std::vector<Str> filePaths() const;
    // createFolder and appendLine need the parent folder to exist, as
    // CreateDirectory and opening a file do; createFolder of an existing
    // folder fails.

    // ---- Resources ---------------------------------------------------------
    void setResource(const Str& type, const Str& name, std::vector<std::uint8_t> data);

    // ---- Scripting components ----------------------------------------------
    // Creation fails for the next `times` attempts (negative: always).
    void failComponent(ScriptComponent component, int times = -1);
    std::vector<ScriptComponent> componentAttempts() const { return componentAttempts_; }
    void clearComponentAttempts() { componentAttempts_.clear(); }

    // ---- Automation objects by ProgID (without regard to letter case) ------
    void setActiveObject(const Str& progId, Variant object);
    void setCreatableObject(const Str& progId, Variant object);
    std::vector<Str> activeObjectRequests() const { return activeRequests_; }
    std::vector<Str> createObjectRequests() const { return createRequests_; }

    // ---- Message boxes -------------------------------------------------------
    struct MessageBoxRecord {
        Str text;
        Str caption;
        std::uint32_t flags = 0;
        std::int32_t answer = 0;
    };
    // Answers given in order; when the script is empty: IDNO for boxes with
    // Yes/No buttons (MB_YESNO, MB_YESNOCANCEL), IDOK otherwise.
    void scriptAnswers(std::vector<std::int32_t> answers);
    void scriptAnswer(std::int32_t answer) { answers_.push_back(answer); }
    std::size_t pendingAnswers() const { return answers_.size(); }
    const std::vector<MessageBoxRecord>& messageBoxes() const { return boxes_; }
    void clearMessageBoxes() { boxes_.clear(); }

    // ---- The searchable picker and the button images -----------------------
    // The picker answers with the entry scripted (nullopt: the user
    // cancels); each call records its title and how many entries it listed.
    std::optional<Str> pickFromList(const Str& title, const std::vector<Str>& entries) override {
        pickers.push_back({title, entries.size()});
        return pickAnswer;
    }
    struct PickerRecord {
        Str title;
        std::size_t entries = 0;
    };
    std::vector<PickerRecord> pickers;
    std::optional<Str> pickAnswer;
    // An image is its resource name as text, so that a test can tell them.
    Variant picture(const Str& name) override { return Variant(u"picture:" + name); }

    // ---- Started programs ---------------------------------------------------
    struct RunRecord {
        Str command;
        int windowStyle = 0;
        Str workingFolder;  // empty: the caller's
    };
    // Every call of run, failing ones included.
    const std::vector<RunRecord>& runs() const { return runs_; }
    void clearRuns() { runs_.clear(); }

    // ---- Environment, locale, versions, clock --------------------------------
    // Defaults: USERNAME "John", USERDOMAIN "HOURBOOK", USERPROFILE
    // "C:\Users\John", APPDATA, TEMP, SystemRoot, windir.
    void setEnvironment(const Str& name, const Str& value);
    void removeEnvironment(const Str& name);
    // GetLocaleInfo's LOCALE_SLIST (also the user locale's list separator).
    void setListSeparator(const Str& separator) {
        listSeparator_ = separator;
        userLocale_.listSeparator = separator;
    }
    void setSystemDefaultLcid(std::uint32_t lcid) { systemLcid_ = lcid; }
    void setUserLocale(const Locale& locale) { userLocale_ = locale; }
    void setWindowsVersion(const WindowsVersion& v) { windowsVersion_ = v; }
    void setAddinVersion(const ModuleVersion& v) { addinVersion_ = v; }
    // The clock; default 15 March 2024 09:30:00.
    void setNow(double days) { now_ = days; }
    // Each localeInfo call, as (lcid, item).
    std::vector<std::pair<std::uint32_t, std::uint32_t>> localeInfoRequests() const {
        return localeRequests_;
    }

  private:
    struct NoCaseLess {
        bool operator()(const Str& a, const Str& b) const;
    };
    struct StoredValue {
        Str name;  // as first written
        RegValue value;
    };
    struct Key {
        Str name;
        std::map<Str, StoredValue, NoCaseLess> values;
        std::map<Str, Key, NoCaseLess> subkeys;
        std::uint64_t written = 0;  // the clock at the last value set or deleted
    };
    struct Handle {
        std::vector<Str> path;
        bool writable = false;
    };
    struct Failure {
        std::int32_t code = 0;
        Str description;
        int remaining = 0;  // negative: always
    };

    // Counts the call; true (with the failure) when it is to fail.
    bool failing(const std::string& service, Failure* failure = nullptr);
    static std::vector<Str> splitKeyPath(const Str& path);
    const Key* findKey(const std::vector<Str>& parts) const;
    Key* findKey(const std::vector<Str>& parts);
    Key& makeKey(const std::vector<Str>& parts);
    // Sets a value (keeping the letter case of its first writing) and the
    // key's write time.
    void storeValue(Key& key, const Str& name, RegValue value);
    std::int32_t handleKey(RegKey handle, Key*& key, bool write);
    static Str normPath(const Str& path);
    static Str parentPath(const Str& path);
    bool folderPresent(const Str& normalized) const;

    std::map<std::string, Failure> failures_;
    std::map<std::string, int> calls_;

    Key root_;
    std::map<RegKey, Handle> handles_;
    RegKey nextHandle_ = kFirstHandle;
    std::uint64_t writeClock_ = 0;  // every value write ticks it

    Str documents_ = u"C:\\Users\\John\\Documents";
    Str moduleFolder_ = u"C:\\Program Files\\Hourbook";
    std::map<Str, std::pair<Str, Str>> files_;  // normalized path -> (path, text)
    std::set<Str> folders_;                     // normalized paths

    std::map<std::pair<Str, Str>, std::vector<std::uint8_t>> resources_;  // folded keys

    std::map<ScriptComponent, int> componentFailures_;
    std::vector<ScriptComponent> componentAttempts_;

    std::map<Str, Variant, NoCaseLess> activeObjects_;
    std::map<Str, Variant, NoCaseLess> creatableObjects_;
    std::vector<Str> activeRequests_;
    std::vector<Str> createRequests_;

    std::deque<std::int32_t> answers_;
    std::vector<MessageBoxRecord> boxes_;
    std::vector<RunRecord> runs_;

    std::map<Str, Str, NoCaseLess> environment_;
    Str listSeparator_ = u",";
    std::vector<std::pair<std::uint32_t, std::uint32_t>> localeRequests_;
    std::uint32_t systemLcid_ = 1033;
    Locale userLocale_ = Locale::enUS();
    WindowsVersion windowsVersion_{true, 2, 6, 1};
    ModuleVersion addinVersion_;
    double now_;
};

}  // namespace hb
