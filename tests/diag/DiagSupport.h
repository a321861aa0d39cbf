#pragma once
// Shared set-up of the diagnostics and language tests: the in-memory
// Windows, a simulated Outlook whose Application the tests hand to the
// session as the add-in would hold it, and phrase tables built in the test.
#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "common/Session.h"
#include "languages/PhraseKeys.h"
#include "platform/memory/MemoryPlatform.h"
#include "sim/Instruments.h"
#include "sim/Outlook.h"
#include "support/ErrorOf.h"

namespace hbtest {

using hb::errorOf;
using hb::Str;
using hb::Variant;

// The LANGUAGE resource bytes of a text: UTF-16LE, with the byte-order mark
// FF FE unless bom is false.
inline std::vector<std::uint8_t> utf16leBytes(const Str& text, bool bom = true) {
    std::vector<std::uint8_t> bytes;
    if (bom) {
        bytes.push_back(0xFF);
        bytes.push_back(0xFE);
    }
    for (char16_t c : text) {
        bytes.push_back(static_cast<std::uint8_t>(c & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(c >> 8));
    }
    return bytes;
}

// One table line: the key and sixteen language cells (column -> text; the
// others empty).
inline Str tableLine(const Str& key, const std::map<int, Str>& cells) {
    Str line = key;
    for (int column = 1; column <= 16; ++column) {
        line += u'\t';
        if (auto it = cells.find(column); it != cells.end()) line += it->second;
    }
    return line;
}

// Lines joined with CR LF, the last one ended too unless finalCrLf is false.
inline Str tableText(const std::vector<Str>& lines, bool finalCrLf = true) {
    Str text;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        text += lines[i];
        if (i + 1 < lines.size() || finalCrLf) text += u"\r\n";
    }
    return text;
}

// Every phrase key, in loading order.
inline std::vector<Str> allPhraseKeys() {
    std::vector<Str> keys;
#define HB_TEST_KEY_(literal) u##literal
#define HB_TEST_KEY(key) keys.push_back(HB_TEST_KEY_(#key));
    HB_PHRASE_KEYS(HB_TEST_KEY)
#undef HB_TEST_KEY
#undef HB_TEST_KEY_
    return keys;
}

// The English texts the error report uses.
inline const std::map<Str, Str>& reportEnglish() {
    static const std::map<Str, Str> texts = {
        {u"LNGERRINAPP", u"There has been an error in this application."},
        {u"LNGERRTHISERROR", u"This error has occured:"},
        {u"LNGERRSYSTEMERROR", u"The system error message was:"},
        {u"LNGSUBROUTINE", u"Sub routine"},
        {u"LNGERRLINE", u"Error on line"},
        {u"LNGERRSENDREPORT", u"Would you like to send an e-mail with an error report?"},
        {u"LNGO2KNEEDED", u"You need Outlook 2000 or later to run this application."},
    };
    return texts;
}

// A table with a row for every key: the report's English texts, every other
// key's English text being the key in lower case.
inline Str fullEnglishTable() {
    std::vector<Str> lines;
    for (const Str& key : allPhraseKeys()) {
        auto it = reportEnglish().find(key);
        Str english = it != reportEnglish().end() ? it->second : u"text of " + key;
        lines.push_back(tableLine(key, {{4, english}}));
    }
    return tableText(lines);
}

// The platform, a simulated Outlook and a session on them.
struct DiagEnv {
    DiagEnv() {
        platform.setWindowsVersion({true, 2, 5, 1});
        platform.setAddinVersion({4, 0, 12});
        outlook.version = u"11.0.8169";
        outlook.addStore(u"Mailbox - John Smith");
        (void)outlook.calendar();
        (void)outlook.inbox();
    }

    // The Application as the add-in receives it (calls are logged).
    Variant application() {
        return outlook.instruments().toAddin(Variant(hb::ObjectPtr(outlook.application())),
                                             u"OnConnection");
    }
    void connect() { s.olApp = application(); }
    // Outlook running: GetObject finds it.
    void outlookRunning() { platform.setActiveObject(u"Outlook.Application", application()); }
    void setLanguageTable(const Str& text, bool bom = true) {
        platform.setResource(u"CUSTOM", u"LANGUAGE", utf16leBytes(text, bom));
    }
    const std::vector<hb::MemoryPlatform::MessageBoxRecord>& boxes() const {
        return platform.messageBoxes();
    }

    hb::MemoryPlatform platform;
    sim::Outlook outlook;
    hb::Session s{platform};
};

class DiagTest : public ::testing::Test, public DiagEnv {};

}  // namespace hbtest
