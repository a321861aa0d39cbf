// The stand-in's reading of ribbon XML with Windows' own parser (MSXML of
// Wine): what Office refuses is refused, with the parser's reason.
#include <gtest/gtest.h>
#include <windows.h>

#include "common/Str.h"
#include "standin/RibbonHost.h"

namespace {

using hb::Str;

Str customUI(const Str& ns, const Str& inner) {
    return u"<customUI xmlns=\"" + ns + u"\"><ribbon><tabs><tab idMso=\"TabCalendarHome\">" +
           inner + u"</tab></tabs></ribbon></customUI>";
}

TEST(StandinRibbonXml, MsxmlRefusesWhatOfficeRefuses) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const Str ns2009 = u"http://schemas.microsoft.com/office/2009/07/customui";
    struct Case {
        const char* name;
        Str xml;
        Str reason;  // the start of the reason; empty: accepted
    };
    const std::vector<Case> cases = {
        {"the add-in's group", customUI(ns2009, u"<group id=\"g\"><button id=\"b\"/></group>"),
         u""},
        {"the 2006 namespace",
         customUI(u"http://schemas.microsoft.com/office/2006/01/customui", u"<group id=\"g\"/>"),
         u""},
        {"another namespace", customUI(u"urn:other", u"<group id=\"g\"/>"), u"wrong namespace"},
        {"an element outside the schema", customUI(ns2009, u"<group id=\"g\"><knob/></group>"),
         u"unknown element knob"},
        {"an element of another namespace",
         customUI(ns2009, u"<group id=\"g\" xmlns:x=\"urn:x\"><x:button/></group>"),
         u"unknown element button"},
        {"not well formed", customUI(ns2009, u"<group id=\"g\">"), u"not well formed"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Str reason = standin::checkRibbonXml(c.xml);
        EXPECT_EQ(reason.substr(0, c.reason.size()), c.reason) << hb::toUtf8(reason);
        if (c.reason.empty()) {
            EXPECT_TRUE(reason.empty()) << hb::toUtf8(reason);
        } else {
            EXPECT_FALSE(reason.empty());
        }
    }
    CoUninitialize();
}

}  // namespace
