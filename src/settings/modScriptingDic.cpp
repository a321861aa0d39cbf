#include "settings/modScriptingDic.h"

#include "common/Constants.h"
#include "common/ErrorTrap.h"
#include "diagnostics/modErroHandling.h"

namespace hb {

namespace {

constexpr std::int32_t kCannotCreate = 429;  // ActiveX component can't create object

// "Create it directly; if that yields nothing, by its ProgID": two attempts.
bool createDirectOrByProgId(Session& s, ScriptComponent component) {
    if (s.platform.createComponent(component)) return true;
    return s.platform.createComponent(component);
}

void runRepair(Session& s, const Str& command) noexcept {
    // Minimised with focus, not waited for; errors ignored and cleared.
    resumeNext(s, [&] { s.platform.run(command, win::SwShowMinimized, Str()); });
    s.err.clear();
}

}  // namespace

void subRepairScriptingRuntime(Session& s) noexcept {
    runRepair(s, u"regsvr32 scrrun.dll /s");
}

bool fncCreateDicComponent(Session& s) noexcept {
    try {
        if (createDirectOrByProgId(s, ScriptComponent::Dictionary)) return true;
        // The repair of the scripting runtime runs at most once per session
        // (shared with subSetupFS: it is the same library); creation is then
        // tried again.
        if (!s.blnFSRepairTried) {
            s.blnFSRepairTried = true;
            subRepairScriptingRuntime(s);
        }
        if (createDirectOrByProgId(s, ScriptComponent::Dictionary)) return true;
        raise(kCannotCreate);
    } catch (...) {
        std::int32_t number = 0;
        Str description;
        describeCurrentException(number, description);
        subErrorHandler(s,
                        u"Attempting to create a new Scripting.Dictionary object. This component "
                        u"is usually installed with Internet Explorer 4.0 or later",
                        number, 0, u"modScriptingDic.fncCreateDic");
        return false;
    }
}

std::shared_ptr<WshShell> fncGetShell(Session& s) noexcept {
    // Errors ignored throughout.
    bool created = false;
    resumeNext(s, [&] { created = s.platform.createComponent(ScriptComponent::Shell); });
    if (!created) {
        if (!s.blnShellRepairTried) {
            s.blnShellRepairTried = true;
            runRepair(s, u"regsvr32 wshom.ocx /s");
        }
        resumeNext(s, [&] { created = s.platform.createComponent(ScriptComponent::Shell); });
    }
    if (!created) {
        const Str crlf = kCrLf;
        resumeNext(s, [&] {
            s.platform.messageBox(
                u"ERROR" + crlf + u"Attempting to create a new Scripting.Dictionary object." +
                    crlf +
                    u"This component is usually installed with Internet Explorer 4.0 or later" +
                    crlf +
                    u"Please download the Windows Scripting Runtime from Microsoft Downloads to "
                    u"resolve this issue!",
                kProductCaption, win::MbIconCritical);
        });
        // The add-in's clean-up hook after giving up.
        subExitApplication(s);
        s.err.clear();
        return nullptr;
    }
    s.err.clear();
    return std::make_shared<WshShell>(s.platform);
}

}  // namespace hb
