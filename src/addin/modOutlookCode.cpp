#include "addin/modOutlookCode.h"

#include "common/Constants.h"
#include "common/ErrorTrap.h"
#include "common/Text.h"
#include "diagnostics/modErroHandling.h"

namespace hb {

namespace {

constexpr std::int32_t kCantCreateObject = 429;
constexpr std::int16_t kOutlook2000 = 9;
constexpr std::int32_t kFolderCalendar = 9;
constexpr std::size_t kLocaleBufferLength = 256;

// GetObject / CreateObject with errors ignored: a server that cannot be had
// leaves the run time's error 429 pending, as the real calls raise it.
Variant tryServer(Session& s, const Str& progId, bool running) {
    Variant app;
    resumeNext(s, [&] {
        app = running ? s.platform.getActiveObject(progId) : s.platform.createObject(progId);
        if (!isSet(app)) raise(kCantCreateObject);
    });
    return app;
}

// An If condition evaluated with errors ignored: when the condition itself
// fails, execution goes on with the statement after the If line, that is
// into its Then part. So a failed condition counts as true.
template <class F>
bool conditionOrError(Session& s, F&& condition) {
    return tryGet(s, std::forward<F>(condition)).value_or(true);
}

}  // namespace

void fncStartOutlook(Session& s, std::int16_t& folder) noexcept {
    try {
        subTrace(s, u"Attempting to start MS Outlook 2000 or later");
        if (isSet(s.olApp)) return;

        // Attach to a running Outlook, or start one by class and by the
        // versioned and plain ProgIDs, stopping at the first that answers.
        s.olApp = tryServer(s, u"Outlook.Application", true);
        for (const char16_t* progId :
             {u"Outlook.Application", u"Outlook.Application.12", u"Outlook.Application.11",
              u"Outlook.Application.10", u"Outlook.Application.9", u"Outlook.Application"}) {
            if (isSet(s.olApp)) break;
            s.olApp = tryServer(s, progId, false);
        }
        if (!isSet(s.olApp)) {
            resumeNext(s, [&] {
                s.platform.messageBox(
                    u"Please start Outlook manually before you execute this application!",
                    kProductCaption, win::MbOk);
            });
            subExitApplication(s);
        }

        if (!isSet(s.olApp)) {
            resumeNext(s, [&] {
                // The error line: no line numbers here, so 0.
                s.platform.messageBox(s.phrases.LNGO2KNEEDED + kCrLf + toStr(s.err.number) + u" " +
                                          s.err.description + kCrLf + toStr(0),
                                      kProductCaption, win::MbIconCritical | win::MbOk);
            });
            subExitApplication(s);
        } else if (conditionOrError(s, [&] { return fncOutlookVersion(s) >= kOutlook2000; })) {
            resumeNext(s, [&] { s.onsMAPI = s.olApp.call(u"GetNamespace", {Variant(u"MAPI")}); });
        } else {
            resumeNext(s, [&] {
                s.platform.messageBox(s.phrases.LNGO2KNEEDED + kCrLf + toStr(fncOutlookVersion(s)),
                                      kProductCaption, win::MbIconCritical | win::MbOk);
            });
            subExitApplication(s);
        }

        // Make sure a window shows.
        if (conditionOrError(s, [&] { return s.olApp.call(u"ActiveExplorer").isNothing(); })) {
            if (conditionOrError(
                    s, [&] { return s.olApp.get(u"Explorers").get(u"Count").toLong() == 0; })) {
                resumeNext(s, [&] {
                    s.olApp.get(u"Explorers")
                        .call(u"Add", {s.onsMAPI.call(u"GetDefaultFolder", {Variant(folder)}),
                                       Variant(std::int32_t{0})});
                });
            }
            resumeNext(s, [&] {
                s.olApp.get(u"Explorers")
                    .call(u"Item", {Variant(std::int32_t{1})})
                    .call(u"Activate");
            });
        }
    } catch (...) {
    }
    s.err.clear();
}

std::int16_t fncOutlookVersion(Session& s) {
    if (s.intOutlookVersion != 0) return s.intOutlookVersion;
    if (!isSet(s.olApp)) {
        std::int16_t inbox = 6;
        fncStartOutlook(s, inbox);
    }
    Str version = s.olApp.get(u"Version").toStr();
    s.intOutlookVersion = fncMajorFromVersion(version);
    return s.intOutlookVersion;
}

std::int16_t fncMajorFromVersion(Str& version) {
    // Left with a length of -1 raises 5 when there is no ".".
    version = text::left(version, text::find(version, u".") - 1);
    return Variant(version).toInteger();
}

Str fncGetUserName(Session& s) noexcept {
    subGetSafeMailboxName(s);
    if (s.strCurrentUser.empty()) subGetWindowsUser(s);
    s.err.clear();
    try {
        return s.strCurrentUser;
    } catch (...) {
        return Str();
    }
}

void subGetSafeMailboxName(Session& s) noexcept {
    trap(s, u"subGetSafeMailboxName", [&] {
        subTrace(s, u"Getting current user full name from mailbox name");
        if (!isSet(s.olApp)) {
            std::int16_t inbox = 6;
            fncStartOutlook(s, inbox);
            if (!isSet(s.olApp)) subExitApplication(s);
        }
        // The root folder of the mailbox that holds the default calendar,
        // for example "Mailbox - John Smith".
        const Str name = s.olApp.call(u"GetNamespace", {Variant(u"MAPI")})
                             .call(u"GetDefaultFolder", {Variant(kFolderCalendar)})
                             .get(u"Parent")
                             .get(u"Name")
                             .toStr();
        const std::int32_t pos = text::find(name, u" - ", text::Compare::Text);
        if (pos > 0) {
            s.strCurrentUser = text::trim(text::mid(name, pos + 3));
        } else if (text::find(name, u",") > 0) {
            s.strCurrentUser = name;
        }
    });
}

void subGetWindowsUser(Session& s) noexcept {
    // Every statement runs with errors ignored; without the shell each of
    // them fails and the user name stays as it was.
    bool shell = false;
    resumeNext(s, [&] {
        shell = s.platform.createComponent(ScriptComponent::Shell);
        if (!shell) raise(kCantCreateObject);
    });
    Str domain;  // expanded and not used
    resumeNext(s, [&] {
        if (!shell) raise(err::ObjectVariableNotSet);
        domain = s.platform.expandEnvironment(u"%USERDOMAIN%");
    });
    resumeNext(s, [&] {
        if (!shell) raise(err::ObjectVariableNotSet);
        s.strCurrentUser = s.platform.expandEnvironment(u"%USERNAME%");
    });
}

Str fncGetListSeparator(Session& s) {
    subTrace(s, u"Getting List separator from computer settings!");
    // A buffer of 256 blanks that the call writes its text and a zero into.
    Str buffer = text::repeat(u' ', kLocaleBufferLength);
    Str value;
    const std::int32_t n = s.platform.localeInfo(win::LocaleUserDefault, win::LocaleSList, value);
    if (n > 0) {
        buffer = (value + u'\0' + buffer).substr(0, kLocaleBufferLength);
        return text::left(buffer, n - 1);
    }
    // A failed call returns the buffer as it was: 256 blanks.
    return buffer;
}

}  // namespace hb
