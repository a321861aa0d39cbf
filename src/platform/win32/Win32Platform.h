#pragma once
// The Platform services on Windows, through the wide-character (UTF-16) Win32
// API so that every text round-trips exactly. Only src/win and
// src/platform/win32 include Windows headers; this header does not.
#include "platform/Platform.h"

namespace hb {

class Win32Platform : public Platform {
  public:
    // module: the add-in module (an HMODULE) whose folder, resources and
    // VERSIONINFO the platform reports. nullptr (the default) means the module
    // that holds this code: HBAddin.dll in the product, the program itself in
    // a test program that links the platform directly.
    explicit Win32Platform(void* module = nullptr);

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
    Str moduleFolder() override;
    Str fromAnsi(const std::vector<std::uint8_t>& bytes) override;
    std::optional<std::vector<std::uint8_t>> resource(const Str& type, const Str& name) override;
    // The add-in's button images as IPictureDisp: the bitmap resource of that
    // name, else one drawn here (the command's initial on its colour).
    Variant picture(const Str& name) override;
    // A modal window: a search box over the list (the entries that contain
    // the text typed, letter case aside), OK and Cancel.
    std::optional<Str> pickFromList(const Str& title, const std::vector<Str>& entries) override;

    bool createComponent(ScriptComponent component) override;
    Variant getActiveObject(const Str& progId) override;
    Variant createObject(const Str& progId) override;

    std::int32_t messageBox(const Str& text, const Str& caption, std::uint32_t flags) override;
    void run(const Str& command, int windowStyle, const Str& workingFolder) override;
    Str expandEnvironment(const Str& text) override;

    std::int32_t localeInfo(std::uint32_t lcid, std::uint32_t item, Str& out) override;
    std::uint32_t systemDefaultLcid() override;
    Locale userLocale() override;
    WindowsVersion windowsVersion() override;
    ModuleVersion addinVersion() override;
    double now() override;

    // The regional settings of a locale (LOCALE_USER_DEFAULT: the user's), as
    // GetLocaleInfo gives them; English (United States) for what it does not.
    Locale localeOf(std::uint32_t lcid);

    // The module the platform reports on (an HMODULE).
    void* module() const { return module_; }
    // The full path of that module's file.
    Str modulePath() const;

  private:
    void* module_;
};

}  // namespace hb
