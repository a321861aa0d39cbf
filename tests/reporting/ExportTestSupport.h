#pragma once
// What the export tests share besides the sample report: a CSV reader, a
// scratch folder and running python3.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "SampleReport.h"

namespace hb::reporting::test {

// RFC 4180 fields: quoted fields may hold the separator, "" and line breaks;
// rows end with CRLF. The text must not start with a byte-order mark.
inline std::vector<std::vector<std::string>> readCsv(const std::string& text,
                                                     const std::string& sep) {
    std::vector<std::vector<std::string>> rows;
    std::vector<std::string> row;
    std::string field;
    bool quoted = false, wasQuoted = false;
    std::size_t i = 0;
    while (i < text.size()) {
        if (quoted) {
            if (text[i] == '"' && i + 1 < text.size() && text[i + 1] == '"') {
                field += '"';
                i += 2;
            } else if (text[i] == '"') {
                quoted = false;
                ++i;
            } else {
                field += text[i++];
            }
        } else if (text[i] == '"' && field.empty() && !wasQuoted) {
            quoted = wasQuoted = true;
            ++i;
        } else if (text.compare(i, sep.size(), sep) == 0) {
            row.push_back(field);
            field.clear();
            wasQuoted = false;
            i += sep.size();
        } else if (text.compare(i, 2, "\r\n") == 0) {
            row.push_back(field);
            rows.push_back(row);
            row.clear();
            field.clear();
            wasQuoted = false;
            i += 2;
        } else {
            field += text[i++];
        }
    }
    EXPECT_FALSE(quoted) << "a quoted field is not closed";
    EXPECT_TRUE(row.empty() && field.empty()) << "the last row does not end with CRLF";
    return rows;
}

// A new empty folder for the running test.
inline std::filesystem::path scratchFolder() {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = "hb-export-" + std::to_string(::getpid()) + "-" + info->test_suite_name() +
                       "-" + info->name();
    for (char& c : name) {
        if (c == '/') c = '_';
    }
    const std::filesystem::path dir = std::filesystem::temp_directory_path() / name;
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir;
}

inline std::string readFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

struct CommandResult {
    int status = -1;
    std::string output;
};

// Runs a shell command, its standard output captured (standard error passes).
inline CommandResult runCommand(const std::string& command) {
    CommandResult result;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return result;
    char buffer[4096];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        result.output.append(buffer, n);
    result.status = ::pclose(pipe);
    return result;
}

}  // namespace hb::reporting::test
