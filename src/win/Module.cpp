#include "win/Module.h"

#include <memory>

#include "platform/win32/Win32Platform.h"

namespace hb::win {

namespace {

HINSTANCE g_instance = nullptr;

struct ModuleState {
    explicit ModuleState(HINSTANCE instance) : platform(instance), session(platform) {}
    Win32Platform platform;
    Session session;
};

std::unique_ptr<ModuleState>& state() {
    static std::unique_ptr<ModuleState> s;
    return s;
}

ModuleState& current() {
    auto& s = state();
    if (!s) s = std::make_unique<ModuleState>(g_instance);
    return *s;
}

}  // namespace

HINSTANCE moduleInstance() {
    return g_instance;
}

void setModuleInstance(HINSTANCE instance) {
    g_instance = instance;
}

std::wstring modulePath() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD n =
            GetModuleFileNameW(g_instance, path.data(), static_cast<DWORD>(path.size()));
        if (n == 0) return std::wstring();
        if (n < path.size()) {
            path.resize(n);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

Platform& modulePlatform() {
    return current().platform;
}

Session& moduleSession() {
    return current().session;
}

void releaseModuleState() {
    state().reset();
}

}  // namespace hb::win
