// HBPersonalSettingsSingle.exe: the personal-settings program the add-in's
// Settings button starts from its own folder, with "True" or "False" as its
// argument. Without arguments, or with one of those, it shows the settings
// dialog. For administrators and scripts:
//   HBPersonalSettingsSingle.exe /export FILE   the stored settings as a settings body (UTF-8)
//   HBPersonalSettingsSingle.exe /import FILE   such a file into the store, only when all of it is
//   valid
// Exit code 0 on success; otherwise non-zero with the reason on stderr.
#include <windows.h>
// windows.h first: shellapi.h relies on its types.
#include <shellapi.h>

#include <cstdio>
#include <string>
#include <vector>

#include "addin/modOutlookCode.h"
#include "apps/settings/SettingsDialog.h"
#include "apps/settings/SettingsStore.h"
#include "common/Text.h"
#include "languages/modMultiLanguage.h"
#include "platform/win32/ConsolePlatform.h"

namespace {

using hb::ConsolePlatform;
using hb::Str;
using hb::writeErrorLine;

enum Exit { kOk = 0, kFailed = 1, kUsage = 2 };

bool readFile(const std::wstring& path, std::string& bytes) {
    FILE* f = _wfopen(path.c_str(), L"rb");
    if (!f) return false;
    char buffer[65536];
    std::size_t n = 0;
    while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0)
        bytes.append(buffer, n);
    const bool ok = !std::ferror(f);
    std::fclose(f);
    return ok;
}

bool writeFile(const std::wstring& path, const std::string& bytes) {
    FILE* f = _wfopen(path.c_str(), L"wb");
    if (!f) return false;
    const bool ok = std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    return std::fclose(f) == 0 && ok;
}

Str str(const std::wstring& text) {
    return Str(text.begin(), text.end());
}

int commandLine(const std::wstring& verb, const std::wstring& path) {
    ConsolePlatform platform;
    hb::Session s(platform);
    const Str file = str(path);
    if (verb == L"/export") {
        std::string bytes;
        if (auto failure = hb::settingsapp::exportBody(s, bytes)) {
            writeErrorLine(*failure);
            return kFailed;
        }
        if (!writeFile(path, bytes)) {
            writeErrorLine(u"Could not write " + file);
            return kFailed;
        }
        return kOk;
    }
    std::string bytes;
    if (!readFile(path, bytes)) {
        writeErrorLine(u"Could not read " + file);
        return kFailed;
    }
    if (auto failure = hb::settingsapp::importBody(s, bytes)) {
        writeErrorLine(file + u": " + *failure + u" Nothing was imported.");
        return kFailed;
    }
    return kOk;
}

int dialog(HINSTANCE instance) {
    hb::Win32Platform platform;
    hb::Session s(platform);
    // The phrases of the add-in's table, in this program's own resources.
    hb::LoadLanguages(s, hb::fncGetlocalLanguage(s));
    const hb::settingsapp::Texts texts = hb::settingsapp::textsFrom(s.phrases);
    hb::settingsapp::Loaded loaded = hb::settingsapp::loadValues(s);
    if (loaded.unread)
        MessageBoxW(nullptr, reinterpret_cast<const wchar_t*>(loaded.unread->c_str()),
                    reinterpret_cast<const wchar_t*>(texts.caption.c_str()),
                    MB_OK | MB_ICONWARNING);
    else if (!loaded.complete)
        MessageBoxW(nullptr,
                    L"Some of the stored settings could not be read. The dialog shows the "
                    L"defaults for them; OK saves what it shows.",
                    reinterpret_cast<const wchar_t*>(texts.caption.c_str()),
                    MB_OK | MB_ICONWARNING);
    hb::settingsapp::DialogState state(
        s, hb::settingsapp::SettingsEditor(std::move(loaded.values), platform.userLocale(),
                                           hb::fncGetListSeparator(s), texts));
    state.refusal = loaded.unread;
    hb::settingsapp::runSettingsDialog(instance, state);
    return kOk;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
    SetProcessDPIAware();
    int argc = 0;
    LPWSTR* argv = CommandLineToArgvW(GetCommandLineW(), &argc);
    std::vector<std::wstring> args;
    for (int i = 1; i < argc; ++i)
        args.emplace_back(argv[i]);
    LocalFree(argv);

    auto lower = [](std::wstring text) {
        CharLowerBuffW(text.data(), static_cast<DWORD>(text.size()));
        return text;
    };
    // "True" or "False" from the add-in's Settings button: the same dialog.
    if (args.empty() ||
        (args.size() == 1 && (lower(args[0]) == L"true" || lower(args[0]) == L"false")))
        return dialog(instance);
    if (args.size() == 2) {
        const std::wstring verb = lower(args[0]);
        if (verb == L"/export" || verb == L"/import") return commandLine(verb, args[1]);
    }
    writeErrorLine(
        u"Usage: HBPersonalSettingsSingle.exe [True|False]\r\n"
        u"       HBPersonalSettingsSingle.exe /export FILE\r\n"
        u"       HBPersonalSettingsSingle.exe /import FILE");
    return kUsage;
}
