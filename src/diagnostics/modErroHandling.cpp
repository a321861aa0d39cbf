#include "diagnostics/modErroHandling.h"

#include "addin/modOutlookCode.h"
#include "common/Constants.h"
#include "common/ErrorTrap.h"
#include "common/Text.h"

namespace hb {

namespace {

constexpr char16_t kLogFileName[] = u"\\BrindlewoodLog.txt";
constexpr std::size_t kSeparatorLength = 70;

// Appends one line to the log: caption, TAB, date and time, TAB, text.
// Every failure is ignored; the pending error is cleared at the end.
void subWriteLog(Session& s, const Str& text) noexcept {
    if (text.empty()) return;
    resumeNext(s, [&] {
        const Str path = s.platform.moduleFolder() + kLogFileName;
        const Str when = Variant(Date{s.platform.now()}).toStr(s.platform.userLocale());
        s.platform.appendLine(path, Str(kProductCaption) + u"\t" + when + u"\t" + text);
    });
    s.err.clear();
}

}  // namespace

void subTrace(Session& s, const Str& text) noexcept {
    try {
        s.diag.strLastTrace = text;
    } catch (...) {
        return;
    }
    if (s.diag.blnTrace) subWriteLog(s, text);
}

Str fncGetLastTrace(const Session& s) {
    return s.diag.strLastTrace;
}

void subErrorHandler(Session& s, const Str& description, std::int32_t number, std::int32_t line,
                     const Str& procedure) noexcept {
    // Any failure in here is swallowed; the rest of the report is skipped.
    try {
        if (!s.diag.blnReported) {
            const Phrases& p = s.phrases;
            const Str crlf = kCrLf;
            const Str header = p.LNGERRINAPP + u" " + kProductCaption + u" (" +
                               fncGetWindowsVersion(s) + u")" + crlf +
                               text::repeat(u'-', kSeparatorLength) + crlf + crlf;
            // The colons follow the phrases even where a phrase ends in one.
            s.diag.strErrorReport = p.LNGERRTHISERROR + u" :" + crlf +                    //
                                    fncGetLastTrace(s) + crlf + crlf +                    //
                                    p.LNGERRSYSTEMERROR + u" :" + crlf +                  //
                                    description + crlf +                                  //
                                    u"#" + toStr(number) + crlf + crlf +                  //
                                    p.LNGSUBROUTINE + u" : " + procedure + u" " + crlf +  //
                                    p.LNGERRLINE + u": " + toStr(line);
            // The phrase is a question already: the text ends in "??".
            const Str dialog =
                header + s.diag.strErrorReport + crlf + crlf + p.LNGERRSENDREPORT + u"?";
            // Before the dialog: an error while it is open finds the report made.
            s.diag.blnErrorOccurred = true;
            s.diag.blnReported = true;
            if (s.platform.messageBox(dialog, kProductCaption, win::MbYesNo) == win::IdYes) {
                if (!isSet(s.olApp)) {
                    std::int16_t inbox = 6;
                    fncStartOutlook(s, inbox);
                }
                s.diag.strErrorReport +=
                    crlf + u"Outlook Version: " + s.olApp.get(u"Version").toStr() + crlf;
                subSendErrorMail(s);
            }
        }
    } catch (...) {
    }
    subExitApplication(s);
}

Str fncGetWindowsVersion(Session& s) noexcept {
    try {
        WindowsVersion v = s.platform.windowsVersion();
        if (!v.ok) v = WindowsVersion{};  // a failed call leaves the record at zero
        DiagnosticsState& d = s.diag;
        d.lngOSResult = v.ok ? 1 : 0;
        d.lngOSMajor = v.major;
        d.lngOSPlatform = v.platformId;
        d.lngOSMinor = v.minor;
        if (d.lngOSPlatform == 2) {
            return u"Windows NT " + toStr(d.lngOSMajor) + u"." + toStr(d.lngOSMinor);
        }
        if (d.lngOSPlatform == 1) {
            switch (d.lngOSMinor) {
                case 10:
                    return u"Windows 98";
                case 0:
                    return u"Windows 95";
                case 90:
                    return u"Windows Me";
                default:
                    break;
            }
        }
    } catch (...) {
    }
    return Str();
}

Str fncGetAddinVersion(Session& s) noexcept {
    try {
        const ModuleVersion v = s.platform.addinVersion();
        return toStr(v.major) + u"." + toStr(v.minor) + u"." + toStr(v.revision);
    } catch (...) {
        return Str();
    }
}

void subSendErrorMail(Session& s) noexcept {
    // Every statement runs with errors ignored.
    Variant mail;
    resumeNext(s, [&] { mail = s.olApp.call(u"CreateItem", {Variant(std::int32_t{0})}); });
    resumeNext(s, [&] { mail.put(u"To", Variant(kSupportEmail)); });
    resumeNext(s, [&] {
        mail.put(u"Subject", Str(u"Error in ") + kProductCaption + u" " + fncGetAddinVersion(s) +
                                 u" (" + fncGetWindowsVersion(s) + u")");
    });
    resumeNext(s, [&] { mail.put(u"Body", s.diag.strErrorReport); });
    // Saved and shown to the user, who sends it; never sent from here.
    resumeNext(s, [&] { mail.call(u"Save"); });
    resumeNext(s, [&] { mail.call(u"Display"); });
    s.err.clear();
    mail = Variant();
    // The pending error was just cleared, so this box never shows; the
    // order is kept as it is.
    if (s.err.number != 0) {
        resumeNext(s, [&] {
            s.platform.messageBox(u"Failed to send error email using MS Outlook!", kProductCaption,
                                  win::MbIconCritical | win::MbOk);
        });
    }
    subExitApplication(s);
}

void subExitApplication(Session&) noexcept {}

}  // namespace hb
