#include "platform/memory/MemoryPlatform.h"

#include <array>

#include "common/AutomationError.h"
#include "common/DateTime.h"
#include "common/Text.h"

#ifndef HB_VERSION_MAJOR
#define HB_VERSION_MAJOR 0
#endif
#ifndef HB_VERSION_MINOR
#define HB_VERSION_MINOR 0
#endif
#ifndef HB_VERSION_PATCH
#define HB_VERSION_PATCH 0
#endif

namespace hb {

namespace {
constexpr std::int32_t kErrorInvalidHandle = 6;
constexpr std::int32_t kErrorKeyDeleted = 1018;

// GetLocaleInfo items answered besides LOCALE_SLIST.
constexpr std::uint32_t kLocaleSDecimal = 0x0E;
constexpr std::uint32_t kLocaleSThousand = 0x0F;
constexpr std::uint32_t kLocaleSCurrency = 0x14;
constexpr std::uint32_t kLocaleSMonDecimalSep = 0x16;
constexpr std::uint32_t kLocaleSMonThousandSep = 0x17;
constexpr std::uint32_t kLocaleSShortDate = 0x1F;
constexpr std::uint32_t kLocaleSMonthName1 = 0x38;
constexpr std::uint32_t kLocaleSAbbrevMonthName1 = 0x44;
constexpr std::uint32_t kLocaleS1159 = 0x28;
constexpr std::uint32_t kLocaleS2359 = 0x29;
constexpr std::uint32_t kLocaleSTimeFormat = 0x1003;
}  // namespace

bool MemoryPlatform::NoCaseLess::operator()(const Str& a, const Str& b) const {
    return text::foldCase(a) < text::foldCase(b);
}

MemoryPlatform::MemoryPlatform() {
    addinVersion_ = ModuleVersion{HB_VERSION_MAJOR, HB_VERSION_MINOR, HB_VERSION_PATCH};
    now_ = dt::serial(2024, 3, 15) + dt::timeFraction(9, 30, 0);
    addFolder(documents_);
    addFolder(moduleFolder_);
    environment_[u"USERNAME"] = u"John";
    environment_[u"USERDOMAIN"] = u"HOURBOOK";
    environment_[u"USERPROFILE"] = u"C:\\Users\\John";
    environment_[u"APPDATA"] = u"C:\\Users\\John\\AppData\\Roaming";
    environment_[u"TEMP"] = u"C:\\Users\\John\\AppData\\Local\\Temp";
    environment_[u"SystemRoot"] = u"C:\\Windows";
    environment_[u"windir"] = u"C:\\Windows";
}

MemoryPlatform::~MemoryPlatform() = default;

// ---- Failure injection ------------------------------------------------------

void MemoryPlatform::failNext(const std::string& service, std::int32_t code, int times,
                              Str description) {
    failures_[service] = Failure{code, std::move(description), times < 1 ? 1 : times};
}

void MemoryPlatform::failAlways(const std::string& service, std::int32_t code, Str description) {
    failures_[service] = Failure{code, std::move(description), -1};
}

void MemoryPlatform::clearFailure(const std::string& service) {
    failures_.erase(service);
}

void MemoryPlatform::clearFailures() {
    failures_.clear();
    componentFailures_.clear();
}

int MemoryPlatform::calls(const std::string& service) const {
    auto it = calls_.find(service);
    return it == calls_.end() ? 0 : it->second;
}

bool MemoryPlatform::failing(const std::string& service, Failure* failure) {
    ++calls_[service];
    auto it = failures_.find(service);
    if (it == failures_.end()) return false;
    if (failure) *failure = it->second;
    if (it->second.remaining > 0 && --it->second.remaining == 0) failures_.erase(it);
    return true;
}

// ---- Registry -----------------------------------------------------------------

std::vector<Str> MemoryPlatform::splitKeyPath(const Str& path) {
    std::vector<Str> parts;
    for (Str& p : text::split(path, u"\\"))
        if (!p.empty()) parts.push_back(std::move(p));
    return parts;
}

const MemoryPlatform::Key* MemoryPlatform::findKey(const std::vector<Str>& parts) const {
    const Key* k = &root_;
    for (const Str& p : parts) {
        auto it = k->subkeys.find(p);
        if (it == k->subkeys.end()) return nullptr;
        k = &it->second;
    }
    return k;
}

MemoryPlatform::Key* MemoryPlatform::findKey(const std::vector<Str>& parts) {
    return const_cast<Key*>(static_cast<const MemoryPlatform*>(this)->findKey(parts));
}

MemoryPlatform::Key& MemoryPlatform::makeKey(const std::vector<Str>& parts) {
    Key* k = &root_;
    for (const Str& p : parts) {
        auto it = k->subkeys.find(p);
        if (it == k->subkeys.end()) {
            it = k->subkeys.emplace(p, Key{}).first;
            it->second.name = p;
        }
        k = &it->second;
    }
    return *k;
}

std::int32_t MemoryPlatform::handleKey(RegKey handle, Key*& key, bool write) {
    auto it = handles_.find(handle);
    if (it == handles_.end()) return kErrorInvalidHandle;
    key = findKey(it->second.path);
    if (!key) return kErrorKeyDeleted;
    if (write && !it->second.writable) return win::ErrorAccessDenied;
    return win::ErrorSuccess;
}

std::int32_t MemoryPlatform::regCreateKey(const Str& path, RegKey& key) {
    Failure f;
    if (failing("regCreateKey", &f)) return f.code;
    auto parts = splitKeyPath(path);
    makeKey(parts);
    key = nextHandle_++;
    handles_[key] = Handle{std::move(parts), true};
    return win::ErrorSuccess;
}

std::int32_t MemoryPlatform::regOpenKey(const Str& path, RegKey& key) {
    Failure f;
    if (failing("regOpenKey", &f)) return f.code;
    auto parts = splitKeyPath(path);
    if (!findKey(parts)) return win::ErrorFileNotFound;
    key = nextHandle_++;
    handles_[key] = Handle{std::move(parts), false};
    return win::ErrorSuccess;
}

std::int32_t MemoryPlatform::regQueryValue(RegKey key, const Str& name, RegValue& value) {
    Failure f;
    if (failing("regQueryValue", &f)) return f.code;
    Key* k = nullptr;
    if (auto rc = handleKey(key, k, false)) return rc;
    auto it = k->values.find(name);
    if (it == k->values.end()) return win::ErrorFileNotFound;
    value = it->second.value;
    return win::ErrorSuccess;
}

std::int32_t MemoryPlatform::regSetString(RegKey key, const Str& name, const Str& text) {
    Failure f;
    if (failing("regSetString", &f)) return f.code;
    Key* k = nullptr;
    if (auto rc = handleKey(key, k, true)) return rc;
    RegValue v;
    v.type = win::RegSz;
    v.text = text;
    v.sizeBytes = text.empty() ? 0 : static_cast<std::uint32_t>(text.size() + 1);
    storeValue(*k, name, std::move(v));
    return win::ErrorSuccess;
}

std::int32_t MemoryPlatform::regSetDword(RegKey key, const Str& name, std::uint32_t dword) {
    Failure f;
    if (failing("regSetDword", &f)) return f.code;
    Key* k = nullptr;
    if (auto rc = handleKey(key, k, true)) return rc;
    RegValue v;
    v.type = win::RegDword;
    v.sizeBytes = 4;
    v.dword = dword;
    storeValue(*k, name, std::move(v));
    return win::ErrorSuccess;
}

std::int32_t MemoryPlatform::regDeleteValue(RegKey key, const Str& name) {
    Failure f;
    if (failing("regDeleteValue", &f)) return f.code;
    Key* k = nullptr;
    if (auto rc = handleKey(key, k, true)) return rc;
    if (!k->values.erase(name)) return win::ErrorFileNotFound;
    k->written = ++writeClock_;
    return win::ErrorSuccess;
}

std::int32_t MemoryPlatform::regDeleteTree(const Str& path) {
    Failure f;
    if (failing("regDeleteTree", &f)) return f.code;
    auto parts = splitKeyPath(path);
    if (parts.empty()) {
        root_.subkeys.clear();
        root_.values.clear();
        return win::ErrorSuccess;
    }
    Str last = parts.back();
    parts.pop_back();
    Key* parent = findKey(parts);
    if (!parent || !parent->subkeys.erase(last)) return win::ErrorFileNotFound;
    return win::ErrorSuccess;
}

void MemoryPlatform::regCloseKey(RegKey key) {
    ++calls_["regCloseKey"];
    handles_.erase(key);
}

std::int32_t MemoryPlatform::regKeyWriteTime(RegKey key, std::uint64_t& stamp) {
    Failure f;
    if (failing("regKeyWriteTime", &f)) return f.code;
    Key* k = nullptr;
    if (auto rc = handleKey(key, k, false)) return rc;
    stamp = k->written;
    return win::ErrorSuccess;
}

void MemoryPlatform::storeValue(Key& key, const Str& name, RegValue value) {
    auto it = key.values.find(name);
    if (it == key.values.end()) it = key.values.emplace(name, StoredValue{name, {}}).first;
    it->second.value = std::move(value);
    key.written = ++writeClock_;
}

bool MemoryPlatform::keyExists(const Str& path) const {
    return findKey(splitKeyPath(path)) != nullptr;
}

std::optional<RegValue> MemoryPlatform::value(const Str& path, const Str& name) const {
    const Key* k = findKey(splitKeyPath(path));
    if (!k) return std::nullopt;
    auto it = k->values.find(name);
    if (it == k->values.end()) return std::nullopt;
    return it->second.value;
}

void MemoryPlatform::setString(const Str& path, const Str& name, const Str& text,
                               std::optional<std::uint32_t> sizeBytes) {
    Key& k = makeKey(splitKeyPath(path));
    RegValue v;
    v.type = win::RegSz;
    v.text = text;
    v.sizeBytes =
        sizeBytes ? *sizeBytes : (text.empty() ? 0 : static_cast<std::uint32_t>(text.size() + 1));
    storeValue(k, name, std::move(v));
}

void MemoryPlatform::setDword(const Str& path, const Str& name, std::uint32_t dword) {
    Key& k = makeKey(splitKeyPath(path));
    RegValue v;
    v.type = win::RegDword;
    v.sizeBytes = 4;
    v.dword = dword;
    storeValue(k, name, std::move(v));
}

void MemoryPlatform::setRawValue(const Str& path, const Str& name, std::uint32_t type,
                                 std::uint32_t sizeBytes) {
    Key& k = makeKey(splitKeyPath(path));
    RegValue v;
    v.type = type;
    v.sizeBytes = sizeBytes;
    storeValue(k, name, std::move(v));
}

void MemoryPlatform::createKey(const Str& path) {
    makeKey(splitKeyPath(path));
}

void MemoryPlatform::deleteKey(const Str& path) {
    auto parts = splitKeyPath(path);
    if (parts.empty()) {
        root_ = Key{};
        return;
    }
    Str last = parts.back();
    parts.pop_back();
    if (Key* parent = findKey(parts)) parent->subkeys.erase(last);
}

std::vector<Str> MemoryPlatform::valueNames(const Str& path) const {
    std::vector<Str> out;
    if (const Key* k = findKey(splitKeyPath(path)))
        for (const auto& [key, v] : k->values)
            out.push_back(v.name);
    return out;
}

std::vector<Str> MemoryPlatform::subkeyNames(const Str& path) const {
    std::vector<Str> out;
    if (const Key* k = findKey(splitKeyPath(path)))
        for (const auto& [key, sub] : k->subkeys)
            out.push_back(sub.name);
    return out;
}

// ---- Folders and files ----------------------------------------------------------

Str MemoryPlatform::normPath(const Str& path) {
    Str p = text::foldCase(path);
    for (auto& c : p)
        if (c == u'/') c = u'\\';
    while (!p.empty() && p.back() == u'\\')
        p.pop_back();
    return p;
}

Str MemoryPlatform::parentPath(const Str& normalized) {
    auto pos = normalized.rfind(u'\\');
    if (pos == Str::npos) return Str();
    return normalized.substr(0, pos);
}

bool MemoryPlatform::folderPresent(const Str& n) const {
    if (n.size() == 2 && n[1] == u':') return true;  // a drive root
    if (n.size() > 2 && n[0] == u'\\' && n[1] == u'\\') {
        // \\server and \\server\share exist
        auto rest = n.substr(2);
        auto first = rest.find(u'\\');
        if (first == Str::npos || rest.find(u'\\', first + 1) == Str::npos) return true;
    }
    return folders_.count(n) > 0;
}

void MemoryPlatform::addFolder(const Str& path) {
    Str n = normPath(path);
    while (!n.empty() && !folderPresent(n)) {
        folders_.insert(n);
        n = parentPath(n);
    }
}

void MemoryPlatform::removeFolder(const Str& path) {
    Str n = normPath(path);
    Str prefix = n + u"\\";
    for (auto it = folders_.begin(); it != folders_.end();) {
        if (*it == n || it->starts_with(prefix))
            it = folders_.erase(it);
        else
            ++it;
    }
    for (auto it = files_.begin(); it != files_.end();) {
        if (it->first.starts_with(prefix))
            it = files_.erase(it);
        else
            ++it;
    }
}

void MemoryPlatform::setFile(const Str& path, const Str& text) {
    Str n = normPath(path);
    addFolder(parentPath(n));
    files_[n] = {path, text};
}

void MemoryPlatform::removeFile(const Str& path) {
    files_.erase(normPath(path));
}

std::optional<Str> MemoryPlatform::file(const Str& path) const {
    auto it = files_.find(normPath(path));
    if (it == files_.end()) return std::nullopt;
    return it->second.second;
}

std::vector<Str> MemoryPlatform::filePaths() const {
    std::vector<Str> out;
    for (const auto& [n, f] : files_)
        out.push_back(f.first);
    return out;
}

std::optional<Str> MemoryPlatform::specialFolder(int csidl) {
    if (failing("specialFolder")) return std::nullopt;
    // Flags such as CSIDL_FLAG_PER_USER_INIT (0x800) may be added to the id.
    if ((csidl & 0xFF) == win::CsidlPersonal) return documents_;
    return std::nullopt;
}

bool MemoryPlatform::fileExists(const Str& path) {
    if (failing("fileExists")) return false;
    return files_.count(normPath(path)) > 0;
}

bool MemoryPlatform::folderExists(const Str& path) {
    if (failing("folderExists")) return false;
    Str n = normPath(path);
    return !n.empty() && folderPresent(n);
}

bool MemoryPlatform::createFolder(const Str& path) {
    if (failing("createFolder")) return false;
    Str n = normPath(path);
    if (n.empty() || folderPresent(n) || files_.count(n)) return false;
    Str parent = parentPath(n);
    if (parent.empty() || !folderPresent(parent)) return false;
    folders_.insert(n);
    return true;
}

std::optional<Str> MemoryPlatform::readTextFile(const Str& path) {
    if (failing("readTextFile")) return std::nullopt;
    return file(path);
}

bool MemoryPlatform::appendLine(const Str& path, const Str& line) {
    if (failing("appendLine")) return false;
    Str n = normPath(path);
    auto it = files_.find(n);
    if (it == files_.end()) {
        Str parent = parentPath(n);
        if (parent.empty() || !folderPresent(parent) || folders_.count(n)) return false;
        it = files_.emplace(n, std::make_pair(path, Str())).first;
    }
    it->second.second += line;
    it->second.second += u"\r\n";
    return true;
}

Str MemoryPlatform::fromAnsi(const std::vector<std::uint8_t>& bytes) {
    // Windows-1252: Latin-1 but for 0x80-0x9F.
    static constexpr std::array<char16_t, 32> k80to9F = {
        0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    Str out;
    out.reserve(bytes.size());
    for (std::uint8_t b : bytes)
        out += (b >= 0x80 && b <= 0x9F) ? k80to9F[b - 0x80] : static_cast<char16_t>(b);
    return out;
}

Str MemoryPlatform::moduleFolder() {
    if (failing("moduleFolder")) return Str();
    return moduleFolder_;
}

void MemoryPlatform::setResource(const Str& type, const Str& name, std::vector<std::uint8_t> data) {
    resources_[{text::foldCase(type), text::foldCase(name)}] = std::move(data);
}

std::optional<std::vector<std::uint8_t>> MemoryPlatform::resource(const Str& type,
                                                                  const Str& name) {
    if (failing("resource")) return std::nullopt;
    auto it = resources_.find({text::foldCase(type), text::foldCase(name)});
    if (it == resources_.end()) return std::nullopt;
    return it->second;
}

// ---- Components and objects ----------------------------------------------------

void MemoryPlatform::failComponent(ScriptComponent component, int times) {
    componentFailures_[component] = times;
}

bool MemoryPlatform::createComponent(ScriptComponent component) {
    componentAttempts_.push_back(component);
    if (failing("createComponent")) return false;
    auto it = componentFailures_.find(component);
    if (it == componentFailures_.end()) return true;
    if (it->second > 0 && --it->second == 0) componentFailures_.erase(it);
    return false;
}

void MemoryPlatform::setActiveObject(const Str& progId, Variant object) {
    activeObjects_[progId] = std::move(object);
}

void MemoryPlatform::setCreatableObject(const Str& progId, Variant object) {
    creatableObjects_[progId] = std::move(object);
}

Variant MemoryPlatform::getActiveObject(const Str& progId) {
    activeRequests_.push_back(progId);
    if (failing("getActiveObject")) return Variant::nothing();
    auto it = activeObjects_.find(progId);
    return it == activeObjects_.end() ? Variant::nothing() : it->second;
}

Variant MemoryPlatform::createObject(const Str& progId) {
    createRequests_.push_back(progId);
    if (failing("createObject")) return Variant::nothing();
    auto it = creatableObjects_.find(progId);
    return it == creatableObjects_.end() ? Variant::nothing() : it->second;
}

// ---- Message boxes, programs, environment -----------------------------------------

void MemoryPlatform::scriptAnswers(std::vector<std::int32_t> answers) {
    answers_.assign(answers.begin(), answers.end());
}

std::int32_t MemoryPlatform::messageBox(const Str& text, const Str& caption, std::uint32_t flags) {
    MessageBoxRecord rec{text, caption, flags, 0};
    if (!failing("messageBox")) {
        if (!answers_.empty()) {
            rec.answer = answers_.front();
            answers_.pop_front();
        } else {
            std::uint32_t buttons = flags & 0xF;
            rec.answer = (buttons == win::MbYesNo || buttons == 0x3) ? win::IdNo : win::IdOk;
        }
    }
    boxes_.push_back(rec);
    return rec.answer;
}

void MemoryPlatform::run(const Str& command, int windowStyle, const Str& workingFolder) {
    runs_.push_back(RunRecord{command, windowStyle, workingFolder});
    Failure f;
    if (failing("run", &f)) {
        if (f.description.empty()) raise(f.code);
        raise(f.code, f.description);
    }
}

void MemoryPlatform::setEnvironment(const Str& name, const Str& value) {
    environment_[name] = value;
}

void MemoryPlatform::removeEnvironment(const Str& name) {
    environment_.erase(name);
}

Str MemoryPlatform::expandEnvironment(const Str& in) {
    if (failing("expandEnvironment")) return in;
    Str out;
    std::size_t i = 0;
    while (i < in.size()) {
        if (in[i] == u'%') {
            auto close = in.find(u'%', i + 1);
            if (close != Str::npos) {
                Str name = in.substr(i + 1, close - i - 1);
                auto it = environment_.find(name);
                if (!name.empty() && it != environment_.end()) {
                    out += it->second;
                    i = close + 1;
                    continue;
                }
                // Not a variable: the first "%" stays, the search goes on
                // from the second.
                out += in.substr(i, close - i);
                i = close;
                continue;
            }
        }
        out += in[i++];
    }
    return out;
}

// ---- Locale and versions -------------------------------------------------------------

std::int32_t MemoryPlatform::localeInfo(std::uint32_t lcid, std::uint32_t item, Str& out) {
    localeRequests_.emplace_back(lcid, item);
    out.clear();
    if (failing("localeInfo")) return 0;
    switch (item & 0xFFFF) {
        case win::LocaleSList:
            out = listSeparator_;
            break;
        case kLocaleSDecimal:
            out = userLocale_.decimalSeparator;
            break;
        case kLocaleSThousand:
            out = userLocale_.thousandSeparator;
            break;
        case kLocaleSCurrency:
            out = userLocale_.currencySymbol;
            break;
        case kLocaleSMonDecimalSep:
            out = userLocale_.currencyDecimalSeparator;
            break;
        case kLocaleSMonThousandSep:
            out = userLocale_.currencyThousandSeparator;
            break;
        case kLocaleSShortDate:
            out = userLocale_.shortDate;
            break;
        case kLocaleSTimeFormat:
            out = userLocale_.longTime;
            break;
        case kLocaleS1159:
            out = userLocale_.amDesignator;
            break;
        case kLocaleS2359:
            out = userLocale_.pmDesignator;
            break;
        default:
            if ((item & 0xFFFF) >= kLocaleSMonthName1 && (item & 0xFFFF) < kLocaleSMonthName1 + 12)
                out = userLocale_.monthNames[(item & 0xFFFF) - kLocaleSMonthName1];
            else if ((item & 0xFFFF) >= kLocaleSAbbrevMonthName1 &&
                     (item & 0xFFFF) < kLocaleSAbbrevMonthName1 + 12)
                out = userLocale_.abbreviatedMonthNames[(item & 0xFFFF) - kLocaleSAbbrevMonthName1];
            else
                return 0;
    }
    return static_cast<std::int32_t>(out.size() + 1);
}

WindowsVersion MemoryPlatform::windowsVersion() {
    if (failing("windowsVersion")) return WindowsVersion{};
    return windowsVersion_;
}

ModuleVersion MemoryPlatform::addinVersion() {
    if (failing("addinVersion")) return ModuleVersion{};
    return addinVersion_;
}

}  // namespace hb
