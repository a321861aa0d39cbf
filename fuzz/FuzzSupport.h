#pragma once
// Shared pieces of the fuzz targets: turning the fuzzer's bytes into texts,
// a session on the memory platform, the error the session last reported,
// and the check that stops the run on a broken property.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/Session.h"
#include "common/Text.h"
#include "platform/memory/MemoryPlatform.h"

namespace hb::fuzz {

// A broken property: print what broke and abort, so that libFuzzer saves the
// input as a crash.
[[noreturn]] inline void fail(const char* what, const Str& detail = {}) {
    std::fprintf(stderr, "\nPROPERTY BROKEN: %s\n", what);
    if (!detail.empty()) std::fprintf(stderr, "  detail: [%s]\n", toUtf8(detail).c_str());
    std::abort();
}
#define HB_FUZZ_CHECK(cond, ...)                                \
    do {                                                        \
        if (!(cond)) ::hb::fuzz::fail("" #cond, ##__VA_ARGS__); \
    } while (0)

// The bytes as text: UTF-8 where they form it (surrogate code points
// included, so lone surrogates can be written), every other byte b as the
// lone surrogate U+DC00 + b. Keywords of a dictionary thus reach the parsers
// as written, and every UTF-16 code unit can still occur.
inline Str textOf(const std::uint8_t* data, std::size_t size) {
    Str out;
    out.reserve(size);
    std::size_t i = 0;
    auto cont = [&](std::size_t k) { return i + k < size && (data[i + k] & 0xC0) == 0x80; };
    while (i < size) {
        const std::uint8_t b = data[i];
        std::uint32_t cp = 0;
        std::size_t len = 0;
        if (b < 0x80) {
            cp = b;
            len = 1;
        } else if (b >= 0xC2 && b < 0xE0 && cont(1)) {
            cp = ((b & 0x1Fu) << 6) | (data[i + 1] & 0x3Fu);
            len = 2;
        } else if (b >= 0xE0 && b < 0xF0 && cont(1) && cont(2)) {
            cp = ((b & 0x0Fu) << 12) | ((data[i + 1] & 0x3Fu) << 6) | (data[i + 2] & 0x3Fu);
            len = cp >= 0x800 ? 3 : 0;
        } else if (b >= 0xF0 && b < 0xF5 && cont(1) && cont(2) && cont(3)) {
            cp = ((b & 0x07u) << 18) | ((data[i + 1] & 0x3Fu) << 12) |
                 ((data[i + 2] & 0x3Fu) << 6) | (data[i + 3] & 0x3Fu);
            len = cp >= 0x10000 && cp <= 0x10FFFF ? 4 : 0;
        }
        if (len == 0) {
            out += static_cast<char16_t>(0xDC00 + b);
            ++i;
            continue;
        }
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (cp >> 10));
            out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
        } else {
            out += static_cast<char16_t>(cp);
        }
        i += len;
    }
    return out;
}

// A memory platform with the folders the settings code looks for, and a
// session on it with the comma as list separator.
struct Env {
    MemoryPlatform platform;
    Session s{platform};
    Env() {
        s.strListSeparator = u",";
        platform.setDocumentsFolder(u"C:\\Users\\Fuzz\\Documents");
        platform.setModuleFolder(u"C:\\Program Files\\Hourbook");
    }
    // The number of the error reported since the last call, if any (the
    // reporter shows one dialog per session; the flag is reset here so that
    // every error is seen).
    std::optional<std::int32_t> takeError() {
        if (!s.diag.blnReported) return std::nullopt;
        const std::vector<Str> lines = text::split(s.diag.strErrorReport, u"\r\n");
        std::int32_t number = 0;
        // ... description, "#number", "", " : procedure ", ": line": read
        // from the end, as the trace before them may hold line ends.
        if (lines.size() >= 5) {
            const Str& n = lines[lines.size() - 4];
            if (n.empty() || n[0] != u'#') fail("error report without a number", n);
            number = static_cast<std::int32_t>(std::stoll(toUtf8(n.substr(1))));
        }
        s.diag.blnReported = false;
        s.diag.blnErrorOccurred = false;
        s.diag.strErrorReport.clear();
        return number;
    }
};

// The environment of every run. Building a memory platform costs about as
// much as a run itself, so one is kept for the whole process. A run leaves
// it as it found it: what the platform recorded and what the session
// reported is dropped at the end of the run, so that each run frees what it
// allocated (libFuzzer looks for leaks in runs that do not) and memory
// stays flat.
class Run {
  public:
    Run() : e(shared()) {}
    ~Run() {
        e.platform.clearMessageBoxes();
        e.platform.clearComponentAttempts();
        e.s.diag = DiagnosticsState{};
        e.s.err = ErrState{};
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    Env& e;

  private:
    static Env& shared() {
        static Env env;
        return env;
    }
};

}  // namespace hb::fuzz
