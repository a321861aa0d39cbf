#pragma once
// The Windows services the add-in needs besides the object model. A Win32
// implementation (src/platform/win32) and an in-memory one
// (src/platform/memory) stand behind this interface.
#include <cstdint>
#include <optional>
#include <vector>

#include "common/Locale.h"
#include "common/Str.h"
#include "common/Variant.h"

namespace hb {

// Win32 constants used through this interface.
namespace win {
constexpr std::uint32_t RegSz = 1;
constexpr std::uint32_t RegDword = 4;
constexpr std::int32_t ErrorSuccess = 0;
constexpr std::int32_t ErrorFileNotFound = 2;
constexpr std::int32_t ErrorAccessDenied = 5;

constexpr std::uint32_t MbOk = 0x0;
constexpr std::uint32_t MbYesNo = 0x4;
constexpr std::uint32_t MbIconCritical = 0x10;  // vbCritical / MB_ICONHAND
constexpr std::int32_t IdOk = 1;
constexpr std::int32_t IdCancel = 2;
constexpr std::int32_t IdYes = 6;
constexpr std::int32_t IdNo = 7;

constexpr int CsidlPersonal = 5;  // the user's documents folder
constexpr std::uint32_t LocaleUserDefault = 0x400;
constexpr std::uint32_t LocaleSList = 12;

constexpr int SwShowNormal = 1;
constexpr int SwShowMinimized = 2;
}  // namespace win

using RegKey = std::uintptr_t;

// What a registry value query returns.
struct RegValue {
    std::uint32_t type = 0;       // REG_SZ, REG_DWORD, ...
    std::uint32_t sizeBytes = 0;  // as the query reports it
    Str text;                     // REG_SZ data, without a terminating zero
    std::uint32_t dword = 0;      // REG_DWORD data
};

struct WindowsVersion {
    bool ok = false;  // GetVersionEx succeeded
    std::uint32_t platformId = 0;
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
};

struct ModuleVersion {
    int major = 0;
    int minor = 0;
    int revision = 0;
};

// The scripting components that can go missing on a broken installation.
enum class ScriptComponent { FileSystemObject, Dictionary, Shell };

class Platform {
  public:
    virtual ~Platform() = default;

    // Registry, always below HKEY_CURRENT_USER. Results are Win32 error codes
    // (0 success, 2 not found, ...). Texts round-trip exactly.
    virtual std::int32_t regCreateKey(const Str& path, RegKey& key) = 0;  // KEY_ALL_ACCESS
    virtual std::int32_t regOpenKey(const Str& path, RegKey& key) = 0;    // KEY_READ
    virtual std::int32_t regQueryValue(RegKey key, const Str& name, RegValue& value) = 0;
    virtual std::int32_t regSetString(RegKey key, const Str& name, const Str& value) = 0;
    virtual std::int32_t regSetDword(RegKey key, const Str& name, std::uint32_t value) = 0;
    virtual std::int32_t regDeleteValue(RegKey key, const Str& name) = 0;
    virtual std::int32_t regDeleteTree(const Str& path) = 0;
    virtual void regCloseKey(RegKey key) = 0;
    // The key's last write time (RegQueryInfoKey), as a number that changes
    // whenever one of the key's values is set or deleted.
    virtual std::int32_t regKeyWriteTime(RegKey key, std::uint64_t& stamp) = 0;

    // Folders and files. Paths use "\". Text files are read in the system
    // default (ANSI) encoding.
    virtual std::optional<Str> specialFolder(int csidl) = 0;  // SHGetFolderPath; nullopt on failure
    virtual bool fileExists(const Str& path) = 0;
    virtual bool folderExists(const Str& path) = 0;
    virtual bool createFolder(const Str& path) = 0;
    virtual std::optional<Str> readTextFile(const Str& path) = 0;
    virtual bool appendLine(const Str& path,
                            const Str& line) = 0;  // line + CR LF, creates the file
    virtual Str moduleFolder() = 0;  // the add-in library's folder, as the system reports it
    // Text in the system's ANSI code page (GetACP: Windows-1252 on Western
    // systems, 1250, 1251, 932, ... elsewhere) as UTF-16.
    virtual Str fromAnsi(const std::vector<std::uint8_t>& bytes) = 0;
    virtual std::optional<std::vector<std::uint8_t>> resource(const Str& type, const Str& name) = 0;

    // Creating a scripting component (Scripting.FileSystemObject, ...):
    // false when the component cannot be created.
    virtual bool createComponent(ScriptComponent component) = 0;

    // GetObject for a running server / CreateObject, by ProgID: the object.
    // One that cannot be had raises 429 (or gives Nothing); callers treat
    // both alike.
    virtual Variant getActiveObject(const Str& progId) = 0;
    virtual Variant createObject(const Str& progId) = 0;

    // A modal message box; returns the button pressed (IDOK, IDYES, ...).
    virtual std::int32_t messageBox(const Str& text, const Str& caption, std::uint32_t flags) = 0;
    // The shell's Run: starts a command line or opens a link, without waiting.
    // A program starts in workingFolder, or in the caller's current folder
    // when that is empty. Raises an AutomationError when the start fails.
    virtual void run(const Str& command, int windowStyle, const Str& workingFolder) = 0;
    virtual Str expandEnvironment(const Str& text) = 0;

    // GetLocaleInfo: returns the length including the terminating zero (0 on
    // failure) and the text in out.
    virtual std::int32_t localeInfo(std::uint32_t lcid, std::uint32_t item, Str& out) = 0;
    virtual std::uint32_t systemDefaultLcid() = 0;
    // The user's regional settings for the run-time conversions.
    virtual Locale userLocale() = 0;
    virtual WindowsVersion windowsVersion() = 0;
    virtual ModuleVersion addinVersion() = 0;  // from the library's VERSIONINFO
    virtual double now() = 0;                  // local time as a date value

    // A modal window listing entries with a search box (a list too long for
    // a ribbon drop-down): the entry chosen, nullopt when cancelled. None
    // by default.
    virtual std::optional<Str> pickFromList(const Str& title, const std::vector<Str>& entries) {
        (void)title;
        (void)entries;
        return std::nullopt;
    }
    // One of the add-in's button images as Office takes it (an IPictureDisp
    // on Windows), by the name of its bitmap resource; Nothing when there
    // is none.
    virtual Variant picture(const Str& name) {
        (void)name;
        return Variant::nothing();
    }
};

}  // namespace hb
