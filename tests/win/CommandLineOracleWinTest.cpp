// Arguments quoted for a command line, held against the system's own parser:
// CommandLineToArgvW gives back every argument exactly as it was quoted,
// blanks, tabs, quotes and backslashes (trailing ones above all) included.
#include <gtest/gtest.h>
#include <windows.h>
// windows.h first: shellapi.h relies on its types.
#include <shellapi.h>

#include <string>
#include <vector>

#include "common/Text.h"

namespace hb {
namespace {

std::wstring wide(const Str& s) {
    return std::wstring(s.begin(), s.end());
}

TEST(CommandLineOracle, EveryQuotedArgumentComesBackExactly) {
    const std::vector<Str> arguments = {
        u"False",
        u"C:\\Users\\John\\Documents\\OLAP Cubes",
        u"\\\\server\\Time Data\\",
        u"D:\\Data\\",
        u"D:\\Data\\\\",
        u"",
        u"tab\there",
        u"say \"hi\"",
        u"\"",
        u"\\\"",
        u"a\\\\\"b c",
        u"trailing\\\\ \\\\",
        u"line\nbreak",
        u"\u00C9t\u00E9 \u0391\u03B8\u03AE\u03BD\u03B1",
    };
    // One argument at a time, then all of them on one line after a program
    // path with a blank, as the add-in starts its programs.
    std::vector<std::vector<Str>> lines;
    for (const Str& argument : arguments)
        lines.push_back({argument});
    lines.push_back(arguments);
    for (const std::vector<Str>& line : lines) {
        std::wstring command = L"\"C:\\Program Files\\Hourbook\\Cubelens.exe\"";
        for (const Str& argument : line)
            command += L" " + wide(text::quoteArgument(argument));
        SCOPED_TRACE(std::string(command.begin(), command.end()));
        int count = 0;
        LPWSTR* parsed = CommandLineToArgvW(command.c_str(), &count);
        ASSERT_NE(parsed, nullptr);
        std::vector<std::wstring> back(parsed + 1, parsed + count);
        EXPECT_EQ(std::wstring(parsed[0]), L"C:\\Program Files\\Hourbook\\Cubelens.exe");
        LocalFree(parsed);
        ASSERT_EQ(back.size(), line.size());
        for (std::size_t i = 0; i < line.size(); ++i)
            EXPECT_EQ(back[i], wide(line[i])) << "argument " << i;
    }
}

}  // namespace
}  // namespace hb
