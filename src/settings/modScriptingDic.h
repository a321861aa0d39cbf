#pragma once
// Creating the scripting components (dictionary, shell) with their
// silent self-repair. The components are native services of the Platform
// layer; only their creation can fail (the memory platform can be told so),
// and then the repair "regsvr32 ... /s" is started once per session,
// minimised, not waited for.
#include <memory>

#include "common/Session.h"
#include "settings/ScriptingDictionary.h"

namespace hb {

// The repair of the scripting runtime: starts "regsvr32 scrrun.dll /s" with
// window style 2, not waiting; any error is ignored and cleared.
void subRepairScriptingRuntime(Session& s) noexcept;

// The component part of fncCreateDic: creates the dictionary component
// (directly, then by its ProgID "Scripting.Dictionary"; after a failure the
// repair runs once per session and creation is tried again). Reports a
// final failure under "modScriptingDic.fncCreateDic" and returns false.
bool fncCreateDicComponent(Session& s) noexcept;

// fncCreateDic: a new dictionary whose CompareMode is 1 (text comparison:
// keys match without regard to letter case), or nullptr when the component
// cannot be created (the failure has then been reported).
template <class T>
std::shared_ptr<ScriptingDictionary<T>> fncCreateDic(Session& s) noexcept {
    if (!fncCreateDicComponent(s)) return nullptr;
    auto dic = std::make_shared<ScriptingDictionary<T>>();
    dic->setCompareMode(1);
    return dic;
}

// A Wscript.Shell object: the shell's Run and environment expansion,
// reached through the platform.
class WshShell {
  public:
    explicit WshShell(Platform& platform) : platform_(platform) {}
    // Starts a command line or opens a link; does not wait. A program starts
    // in workingFolder (empty: Outlook's current folder). Raises an
    // AutomationError when the start fails.
    void Run(const Str& command, int windowStyle = 1, const Str& workingFolder = Str()) {
        platform_.run(command, windowStyle, workingFolder);
    }
    Str ExpandEnvironmentStrings(const Str& text) { return platform_.expandEnvironment(text); }

  private:
    Platform& platform_;
};

// fncGetShell: a Wscript.Shell, or nullptr. After a failed creation the
// repair "regsvr32 wshom.ocx /s" runs (once per session) and creation is
// tried once more; a final failure shows the critical message of fncGetShell
// and calls subExitApplication (the clean-up hook after giving up).
std::shared_ptr<WshShell> fncGetShell(Session& s) noexcept;

}  // namespace hb
