#pragma once
// Shared set-up of the settings and metadata tests: a memory platform with a
// session on it, the error reports the session made, and small automation
// objects (a recordset, a combo box) built on DispatchObject.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/DispatchObject.h"
#include "common/Session.h"
#include "common/Text.h"
#include "platform/memory/MemoryPlatform.h"
#include "support/ErrorOf.h"

namespace hb::test {

inline std::string u8(const Str& s) {
    return toUtf8(s);
}

// One error report as subErrorHandler built it.
struct Report {
    Str description;
    std::int32_t number = 0;
    Str procedure;
};

inline constexpr char16_t kSettingsKey[] = u"Software\\Brindlewood\\Hourbook for Outlook\\Settings";

struct Env {
    MemoryPlatform platform;
    Session s{platform};

    Env() {
        s.strListSeparator = u",";
        platform.setDocumentsFolder(u"C:\\Users\\John\\Documents");
        platform.setModuleFolder(u"C:\\Program Files\\Hourbook");
    }

    // The report made since the last call (the reporter shows one dialog per
    // session; the flag is reset here so that every error can be seen).
    std::optional<Report> takeReport() {
        if (!s.diag.blnReported) return std::nullopt;
        const std::vector<Str> lines = text::split(s.diag.strErrorReport, u"\r\n");
        Report r;
        // Lines (phrases empty), read from the end since the trace may hold
        // line ends of its own: ... " :", description, "#number", "",
        // " : procedure ", ": line".
        const std::size_t n = lines.size();
        if (n >= 5) {
            r.description = lines[n - 5];
            r.number = static_cast<std::int32_t>(std::stoll(u8(lines[n - 4].substr(1))));
            const Str& p = lines[n - 2];
            r.procedure = p.substr(3, p.size() - 4);
        }
        s.diag.blnReported = false;
        s.diag.strErrorReport.clear();
        return r;
    }
    bool noReport() { return !takeReport().has_value(); }

    std::optional<Str> reg(const Str& name) {
        auto v = platform.value(kSettingsKey, name);
        if (!v) return std::nullopt;
        return v->text;
    }
};

// An in-memory recordset: rows of named fields (Null values allowed),
// reached as ADO's: EOF, MoveNext, Fields, Fields.Count,
// Fields.Item(index or name).Value.
class FakeRecordset : public DispatchObject {
  public:
    class Field : public DispatchObject {
      public:
        explicit Field(Variant v) : DispatchObject(u"Field", table()), value(std::move(v)) {}
        Variant value;

      private:
        static std::shared_ptr<const MemberTable> table() {
            static const auto t = Members<Field>()
                                      .get(u"Value", [](Field& f) { return f.value; })
                                      .defaultMember(u"Value")
                                      .build();
            return t;
        }
    };

    class Fields : public DispatchObject {
      public:
        explicit Fields(FakeRecordset& rs) : DispatchObject(u"Fields", table()), rs_(rs) {}

      private:
        static std::shared_ptr<const MemberTable> table() {
            static const auto t =
                Members<Fields>()
                    .get(u"Count",
                         [](Fields& f) { return Variant(std::int32_t(f.rs_.names.size())); })
                    .method(
                        u"Item",
                        [](Fields& f, Args& args) -> Variant {
                            return Variant(std::make_shared<Field>(f.rs_.value(argAt(args, 0))));
                        })
                    .defaultMember(u"Item")
                    .build();
            return t;
        }
        FakeRecordset& rs_;
    };

    FakeRecordset(std::vector<Str> fieldNames, std::vector<std::vector<Variant>> rowValues)
        : DispatchObject(u"Recordset", table()),
          names(std::move(fieldNames)),
          rows(std::move(rowValues)) {}

    std::vector<Str> names;
    std::vector<std::vector<Variant>> rows;
    std::size_t position = 0;
    int moveNextCalls = 0;

    Variant value(const Variant& index) {
        if (position >= rows.size()) raise(3021, u"Either BOF or EOF is True");
        const Variant& i = index.deref();
        if (i.isString()) {
            for (std::size_t k = 0; k < names.size(); ++k) {
                if (text::equalsNoCase(names[k], i.toStr())) return rows[position][k];
            }
            raise(3265,
                  u"Item cannot be found in the collection corresponding to the requested name "
                  u"or ordinal.");
        }
        const std::int32_t k = i.toLong();
        if (k < 0 || static_cast<std::size_t>(k) >= names.size()) raise(3265);
        return rows[position][static_cast<std::size_t>(k)];
    }

  private:
    static std::shared_ptr<const MemberTable> table() {
        static const auto t =
            Members<FakeRecordset>()
                .get(u"EOF", [](FakeRecordset& r) { return Variant(r.position >= r.rows.size()); })
                .method(u"MoveNext",
                        [](FakeRecordset& r) {
                            ++r.moveNextCalls;
                            if (r.position >= r.rows.size()) raise(3021);
                            ++r.position;
                        })
                .get(u"Fields",
                     [](FakeRecordset& r) { return Variant(std::make_shared<Fields>(r)); })
                .build();
        return t;
    }
};

// A combo box with late-bound Clear and AddItem; can be told to fail the
// n-th AddItem.
class FakeCombo : public DispatchObject {
  public:
    FakeCombo() : DispatchObject(u"CommandBarComboBox", table()) {}
    std::vector<Str> items;
    int clearCalls = 0;
    int failAtAddItem = -1;  // 0-based index of the AddItem call that raises

  private:
    static std::shared_ptr<const MemberTable> table() {
        static const auto t =
            Members<FakeCombo>()
                .method(u"Clear",
                        [](FakeCombo& c) {
                            ++c.clearCalls;
                            c.items.clear();
                        })
                .method(u"AddItem",
                        [](FakeCombo& c, Args& args) {
                            if (static_cast<int>(c.items.size()) == c.failAtAddItem) {
                                raise(-2147467259, u"Method 'AddItem' failed");
                            }
                            c.items.push_back(requiredArg(args, 0).toStr());
                        })
                .build();
        return t;
    }
};

}  // namespace hb::test
