#include "reporting/CalendarTransfer.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace hb::reporting {

namespace {

constexpr char16_t kHeader[] = u"HBCAL 1";
constexpr std::size_t kFields = 9;

void appendText(Str& out, const Str& text) {
    for (char16_t c : text) {
        switch (c) {
            case u'\\':
                out += u"\\\\";
                break;
            case u'\t':
                out += u"\\t";
                break;
            case u'\r':
                out += u"\\r";
                break;
            case u'\n':
                out += u"\\n";
                break;
            default:
                out += c;
        }
    }
}

// The shortest text that reads back as the same double.
void appendDate(Str& out, Date value) {
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value.days);
    for (const char* p = buffer.data(); p != result.ptr; ++p)
        out += static_cast<char16_t>(*p);
}

[[noreturn]] void bad(std::size_t line, const char* what) {
    throw std::invalid_argument("calendar text, line " + std::to_string(line) + ": " + what);
}

Str unescape(StrView field, std::size_t line) {
    Str text;
    text.reserve(field.size());
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] != u'\\') {
            text += field[i];
            continue;
        }
        if (++i == field.size()) bad(line, "a backslash ends a text");
        switch (field[i]) {
            case u'\\':
                text += u'\\';
                break;
            case u't':
                text += u'\t';
                break;
            case u'r':
                text += u'\r';
                break;
            case u'n':
                text += u'\n';
                break;
            default:
                bad(line, "an unknown escape");
        }
    }
    return text;
}

Date dateOf(StrView field, std::size_t line) {
    std::string ascii;
    for (char16_t c : field) {
        if (c > 0x7f) bad(line, "a date is no number");
        ascii += static_cast<char>(c);
    }
    double value = 0;
    const auto result = std::from_chars(ascii.data(), ascii.data() + ascii.size(), value);
    if (ascii.empty() || result.ec != std::errc() || result.ptr != ascii.data() + ascii.size())
        bad(line, "a date is no number");
    return Date{value};
}

bool flagOf(StrView field, std::size_t line) {
    if (field == u"0") return false;
    if (field == u"1") return true;
    bad(line, "a flag is neither 0 nor 1");
}

}  // namespace

Str encodeEntries(const std::vector<CalendarEntry>& entries) {
    Str out = kHeader;
    out += u'\n';
    for (const CalendarEntry& e : entries) {
        appendText(out, e.entryId);
        out += u'\t';
        appendDate(out, e.occurrenceStart);
        out += u'\t';
        appendDate(out, e.start);
        out += u'\t';
        appendDate(out, e.end);
        out += u'\t';
        appendText(out, e.subject);
        out += u'\t';
        appendText(out, e.categories);
        out += e.allDay ? u"\t1" : u"\t0";
        out += e.isPrivate ? u"\t1" : u"\t0";
        out += e.recurring ? u"\t1" : u"\t0";
        out += u'\n';
    }
    return out;
}

std::vector<CalendarEntry> decodeEntries(const Str& text) {
    const StrView all(text);
    std::size_t from = all.find(u'\n');
    if (from == StrView::npos || all.substr(0, from) != kHeader)
        bad(1, "not a calendar text of this version");
    ++from;
    std::vector<CalendarEntry> entries;
    for (std::size_t line = 2; from < all.size(); ++line) {
        std::size_t end = all.find(u'\n', from);
        if (end == StrView::npos) bad(line, "the last line has no end");
        const StrView row = all.substr(from, end - from);
        from = end + 1;
        std::array<StrView, kFields> fields;
        std::size_t n = 0, start = 0;
        for (;;) {
            const std::size_t tab = row.find(u'\t', start);
            if (n == kFields) bad(line, "more than nine fields");
            fields[n++] = row.substr(start, tab == StrView::npos ? StrView::npos : tab - start);
            if (tab == StrView::npos) break;
            start = tab + 1;
        }
        if (n != kFields) bad(line, "fewer than nine fields");
        CalendarEntry e;
        e.entryId = unescape(fields[0], line);
        e.occurrenceStart = dateOf(fields[1], line);
        e.start = dateOf(fields[2], line);
        e.end = dateOf(fields[3], line);
        e.subject = unescape(fields[4], line);
        e.categories = unescape(fields[5], line);
        e.allDay = flagOf(fields[6], line);
        e.isPrivate = flagOf(fields[7], line);
        e.recurring = flagOf(fields[8], line);
        entries.push_back(std::move(e));
    }
    return entries;
}

}  // namespace hb::reporting
