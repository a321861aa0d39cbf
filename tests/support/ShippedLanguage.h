#pragma once
// The phrase table as this build generated it: the bytes of the DLL's
// LANGUAGE resource (UTF-16LE with its byte-order mark).
#include <cstdint>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace hbtest {

inline const std::vector<std::uint8_t>& shippedLanguageResource() {
    static const std::vector<std::uint8_t> bytes = [] {
        std::ifstream in(HB_LANGUAGE_FILE, std::ios::binary);
        if (!in)
            throw std::runtime_error(std::string("no LANGUAGE resource at ") + HB_LANGUAGE_FILE);
        return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), {});
    }();
    return bytes;
}

}  // namespace hbtest
