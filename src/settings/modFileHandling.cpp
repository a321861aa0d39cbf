#include "settings/modFileHandling.h"

#include "common/Constants.h"
#include "common/ErrorTrap.h"
#include "common/Text.h"
#include "diagnostics/modErroHandling.h"
#include "settings/modScriptingDic.h"

namespace hb {

Str fncNoTrailingSlash(StrView path) {
    if (!path.empty() && (path.back() == u'/' || path.back() == u'\\')) {
        return Str(path.substr(0, path.size() - 1));
    }
    return Str(path);
}

void subSetupFS(Session& s) noexcept {
    for (;;) {
        // 1. The shared object exists: nothing to do.
        if (s.blnFSAvailable) return;
        // 2.
        subTrace(s,
                 u"Creating Scripting.FileSystemObject\r\nThis component is normally installed "
                 u"with Internet Explorer 4.0 or later");
        // 3. Directly, then by its ProgID "Scripting.FileSystemObject".
        bool created = false;
        resumeNext(s, [&] {
            created = s.platform.createComponent(ScriptComponent::FileSystemObject) ||
                      s.platform.createComponent(ScriptComponent::FileSystemObject);
        });
        if (created) {
            s.err.clear();
            s.blnFSAvailable = true;
            return;
        }
        // 4. Still missing: report once the repair has been tried, else
        // repair and start again (once).
        if (s.blnFSRepairTried) {
            subErrorHandler(s, AutomationError::standardDescription(429), 429, 0, u"subSetupFS");
            s.err.clear();
            return;
        }
        s.blnFSRepairTried = true;
        subRepairScriptingRuntime(s);
    }
}

bool fsFileExists(Session& s, const Str& path) {
    if (!s.blnFSAvailable) raise(err::ObjectVariableNotSet);
    return s.platform.fileExists(path);
}

bool fsFolderExists(Session& s, const Str& path) {
    if (!s.blnFSAvailable) raise(err::ObjectVariableNotSet);
    return s.platform.folderExists(path);
}

Str fsReadAll(Session& s, const Str& path) {
    if (!s.blnFSAvailable) raise(err::ObjectVariableNotSet);
    std::optional<Str> content = s.platform.readTextFile(path);
    if (!content) raise(53);
    return *content;
}

void subExecute(Session& s, const Str& program, const std::vector<Str>& arguments,
                const Str& folder) noexcept {
    trap(s, u"modFileHandling.subExecute", [&] {
        Str argumentText;
        for (const Str& argument : arguments) {
            argumentText.push_back(u' ');
            argumentText += text::quoteArgument(argument);
        }
        // 1.
        subTrace(s, u"Attempting to execute " + program + argumentText);
        // 2.
        std::shared_ptr<WshShell> shell = fncGetShell(s);
        auto run = [&](const Str& command, int windowStyle, const Str& workingFolder) {
            if (!shell) raise(err::ObjectVariableNotSet);
            shell->Run(command, windowStyle, workingFolder);
        };
        // 3. Web and mail links go to the shell as they are.
        const Str head = text::upper(text::left(program, 4));
        if (head == u"HTTP" || head == u"MAIL") {
            run(program, win::SwShowNormal, Str());
            return;
        }
        // The program file comes from the add-in's own folder only, never
        // from the given one: that is the workgroup's report folder, which
        // every member can write to, and a program planted there would run
        // with the user's rights. The given folder becomes the program's
        // working folder instead, when it exists.
        subSetupFS(s);
        const Str file = fncNoTrailingSlash(s.platform.moduleFolder()) + u"\\" + program + u".exe";
        Str workingFolder;
        if (!folder.empty() && fsFolderExists(s, folder)) workingFolder = folder;
        subTrace(s, u"Attempting to execute the path '" + file + u"'");
        const Str crlf = kCrLf;
        if (fsFileExists(s, file)) {
            // 6. Run it normal; a failing start is told to the user.
            s.err.clear();
            resumeNext(s, [&] {
                run(u"\"" + file + u"\"" + argumentText, win::SwShowNormal, workingFolder);
            });
            if (s.err) {
                s.platform.messageBox(
                    s.err.description + crlf + s.phrases.LNGERROREXECUTE + u" " + file,
                    kProductCaption, win::MbIconCritical);
                s.err.clear();
            }
        } else {
            // 7. Missing file.
            s.platform.messageBox(s.phrases.LNGERROREXECUTE + u" " + file, kProductCaption,
                                  win::MbIconCritical);
        }
    });
}

Str fncRemoveQuotes(StrView text) {
    if (text.find(u'\'') != StrView::npos) return text::replace(text, u"'", u"");
    return Str(text);
}

}  // namespace hb
