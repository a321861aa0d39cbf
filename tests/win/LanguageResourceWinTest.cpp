// The phrase table as the shipped x64 DLL carries it: its own LANGUAGE
// resource, read with the Win32 resource loader, loads every key in each
// selectable language column, and the locale picks the column.
#include "common/Constants.h"
#include "languages/PhraseCollection.h"
#include "languages/PhraseKeys.h"
#include "languages/cPhrase.h"
#include "languages/modMultiLanguage.h"
#include "platform/memory/MemoryPlatform.h"
#include "platform/win32/Win32Platform.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <vector>

namespace hb {
namespace {

std::vector<Str> phraseKeys() {
    std::vector<Str> keys;
#define HB_KEY(key) keys.push_back(u## #key);
    HB_PHRASE_KEYS(HB_KEY)
#undef HB_KEY
    return keys;
}

// The resource bytes of HBAddin.dll, handed to an in-memory platform so
// that any error report is recorded instead of shown.
class DllPhraseTable : public ::testing::Test {
  protected:
    void SetUp() override {
        HMODULE dll = LoadLibraryW(L"HBAddin.dll");
        ASSERT_NE(dll, nullptr) << "HBAddin.dll next to the test program";
        {
            Win32Platform fromDll(dll);
            const auto bytes = fromDll.resource(u"CUSTOM", u"LANGUAGE");
            ASSERT_TRUE(bytes.has_value());
            platform.setResource(u"CUSTOM", u"LANGUAGE", *bytes);
        }
        FreeLibrary(dll);
    }
    MemoryPlatform platform;
};

TEST_F(DllPhraseTable, EveryKeyLoadsInEverySelectableColumn) {
    const std::vector<Str> keys = phraseKeys();
    for (std::int16_t column = lang::Czech; column <= lang::Turkish; ++column) {
        Session s(platform);
        LoadLanguages(s, column);
        ASSERT_TRUE(platform.messageBoxes().empty())
            << "column " << column << ": " << toUtf8(platform.messageBoxes()[0].text);
        ASSERT_TRUE(s.colPhrases);
        ASSERT_EQ(s.colPhrases->count(), static_cast<std::int32_t>(keys.size()));
        for (const Str& key : keys)
            EXPECT_FALSE(s.colPhrases->item(key)->LangPhrase.empty())
                << "column " << column << " key " << toUtf8(key);
        EXPECT_EQ(s.colPhrases->item(1)->LangConstant, u"LNGABOUT");
    }
}

TEST_F(DllPhraseTable, SystemLocaleChoosesTheColumn) {
    platform.setSystemDefaultLcid(1031);
    Session german(platform);
    LoadLanguages(german, fncGetlocalLanguage(german));
    EXPECT_EQ(german.phrases.LNGSETTINGS, u"Konfigurieren");

    platform.setSystemDefaultLcid(1046);  // Brazilian Portuguese stays English
    Session brazil(platform);
    LoadLanguages(brazil, fncGetlocalLanguage(brazil));
    EXPECT_EQ(brazil.phrases.LNGSETTINGS, u"Configure");
    EXPECT_EQ(brazil.phrases.LNGERRTHISERROR, u"This error has occured:");
    // Apostrophes never reach the user.
    EXPECT_EQ(brazil.phrases.LNGHIDEPERSONALMORE, u"Hide More in personal settings");
    EXPECT_TRUE(platform.messageBoxes().empty());
}

}  // namespace
}  // namespace hb
