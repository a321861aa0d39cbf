#include "session/SessionHarness.h"

#include "tests/support/ShippedLanguage.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "common/AutomationError.h"

namespace hbtest {

namespace {

const Str kSettingsKey = u"Software\\Brindlewood\\Hourbook for Outlook\\Settings";

Variant simObj(const std::shared_ptr<sim::SimObject>& p) {
    return p ? Variant(hb::ObjectPtr(p)) : Variant::nothing();
}

}  // namespace

// ---- RecordingPaneView ------------------------------------------------------

const RecordingPaneView::Combo& RecordingPaneView::at(int index) const {
    if (index < 0 || index > 2) hb::raise(340, u"Control array element does not exist");
    return combos[static_cast<std::size_t>(index)];
}

RecordingPaneView::Combo& RecordingPaneView::at(int index) {
    return const_cast<Combo&>(std::as_const(*this).at(index));
}

void RecordingPaneView::setLabel(int index, bool visible, const Str& caption) {
    (void)at(index);
    labels[static_cast<std::size_t>(index)] = Label{visible, caption};
}

void RecordingPaneView::setComboVisible(int index, bool visible) {
    at(index).visible = visible;
}

bool RecordingPaneView::comboVisible(int index) const {
    return at(index).visible;
}

void RecordingPaneView::comboAddItem(int index, const Str& item) {
    at(index).items.push_back(item);
}

int RecordingPaneView::comboListCount(int index) const {
    return static_cast<int>(at(index).items.size());
}

Str RecordingPaneView::comboList(int index, int item) const {
    const Combo& c = at(index);
    if (item < 0 || static_cast<std::size_t>(item) >= c.items.size()) hb::raise(381);
    return c.items[static_cast<std::size_t>(item)];
}

void RecordingPaneView::setComboListIndex(int index, int item) {
    Combo& c = at(index);
    if (item < -1 || item >= static_cast<int>(c.items.size())) hb::raise(380);
    const bool changed = c.listIndex != item;
    c.listIndex = item;
    if (changed && clickTarget) clickTarget->cmbMeta_Click(index);
}

Str RecordingPaneView::comboText(int index) const {
    const Combo& c = at(index);
    if (c.listIndex >= 0) return c.items[static_cast<std::size_t>(c.listIndex)];
    return c.typed;
}

// ---- PaneControl --------------------------------------------------------------

PaneControl::PaneControl(hb::Session& s) : pane(s, view) {}

PaneControl::~PaneControl() = default;

Variant PaneControl::invoke(hb::CallKind kind, const Str& member, hb::Args& args) {
    if (kind == hb::CallKind::PropertyPut || kind == hb::CallKind::PropertyPutRef) {
        assigned.push_back(member);
    }
    return pane.automationObject()->invoke(kind, member, args);
}

bool PaneControl::pick(int index, const Str& entry) {
    auto& c = view.combos.at(static_cast<std::size_t>(index));
    for (std::size_t i = 0; i < c.items.size(); ++i) {
        if (c.items[i] == entry) {
            c.listIndex = static_cast<int>(i);
            pane.cmbMeta_Click(index);
            return true;
        }
    }
    return false;
}

// ---- DesignerAddin --------------------------------------------------------------

void DesignerAddin::onConnection(const Variant& application, std::int32_t connectMode,
                                 const Variant& addInInst, hb::Args& custom) {
    designer.AddinInstance_OnConnection(application, connectMode, addInInst, custom);
}

void DesignerAddin::ctpFactoryAvailable(const Variant& factory) {
    designer.ICustomTaskPaneConsumer_CTPFactoryAvailable(factory);
}

void DesignerAddin::onBeginShutdown(hb::Args& custom) {
    designer.AddinInstance_OnBeginShutdown(custom);
}

void DesignerAddin::onDisconnection(std::int32_t removeMode, hb::Args& custom) {
    designer.AddinInstance_OnDisconnection(removeMode, custom);
}

std::vector<MetaList> workgroupLists() {
    return {{u"Company", {u"Acme", u"Globex", u"Initech"}},
            {u"Person", {u"Smith", u"Jones"}},
            {u"Extra Field", {u"Travel", u"Office"}}};
}

// ---- SessionHarness --------------------------------------------------------------

SessionHarness::SessionHarness(Str outlookVersion)
    : platform_(std::make_unique<hb::MemoryPlatform>()),
      scenario_(std::make_unique<sim::Scenario>()) {
    platform_->setResource(u"CUSTOM", u"LANGUAGE", hbtest::shippedLanguageResource());
    platform_->setAddinVersion(hb::ModuleVersion{4, 0, 12});
    platform_->addFolder(platform_->documentsFolder());
    platform_->addFolder(platform_->moduleFolder());

    sim::Outlook& o = outlook();
    o.version = std::move(outlookVersion);
    o.addStore(u"Mailbox - John Smith");
    (void)o.calendar();
    (void)o.inbox();

    // Outlook as GetObject finds it while it runs.
    platform_->setActiveObject(u"Outlook.Application",
                               instruments().toAddin(simObj(o.application()), u"GetObject"));

    o.registerControl(hb::kPaneProgId, [this]() -> hb::ObjectPtr {
        auto control = std::make_shared<PaneControl>(session());
        panes_.push_back(control);
        return control;
    });
}

SessionHarness::~SessionHarness() {
    // The platform outlives the add-in that uses it.
    scenario_.reset();
    platform_.reset();
}

void SessionHarness::setListSeparator(const Str& separator) {
    platform_->setListSeparator(separator);
    outlook().listSeparator = separator;
}

void SessionHarness::setLists(const std::vector<MetaList>& lists) {
    Str metadata;
    for (const MetaList& list : lists) {
        metadata += list.caption + u":";
        for (const Str& name : list.names)
            metadata += name + u";";
        metadata += u"\r\n";
    }
    setSetting(u"ReportChoice", u"2");
    setSetting(u"ReportValue", platform_->documentsFolder() + u"\\My Hourbooks\\");
    setSetting(u"PersonalRate", u"0");
    for (const char16_t* name :
         {u"FilterEvents", u"FilterPrivate", u"FilterRecurring", u"Convert24", u"RemoveLunch",
          u"CreateLocalCube", u"StartGrid", u"WriteSubject"}) {
        setSetting(name, u"False");
    }
    setSetting(u"Convert24Hours", u"8");
    setSetting(u"RemoveLunchHours", u"0.75");
    setSetting(u"MetadataList", metadata);
}

void SessionHarness::setSetting(const Str& name, const Str& value) {
    platform_->setString(kSettingsKey, name, value);
}

std::optional<Str> SessionHarness::setting(const Str& name) const {
    auto v = platform_->value(kSettingsKey, name);
    if (!v) return std::nullopt;
    return v->text;
}

void SessionHarness::addProgram(const Str& fileName) {
    platform_->setFile(platform_->moduleFolder() + u"\\" + fileName, u"MZ");
}

std::shared_ptr<sim::Item> SessionHarness::addAppointment(const Str& subject, const Str& categories,
                                                          int hourOffset) {
    return outlook().calendar()->addAppointment(subject, sim::makeDate(2024, 5, 6, 9 + hourOffset),
                                                sim::makeDate(2024, 5, 6, 10 + hourOffset),
                                                categories);
}

std::shared_ptr<DesignerAddin> SessionHarness::makeAddin() {
    auto addin = std::make_shared<DesignerAddin>(*platform_);
    addin->designer.session().diag.blnTrace = trace;
    addin_ = addin;
    return addin;
}

void SessionHarness::start(std::int32_t startFolder) {
    scenario_->startOutlook(makeAddin(), startFolder);
}

void SessionHarness::startWithoutAddin(std::int32_t startFolder) {
    scenario_->startOutlook(nullptr, startFolder);
}

void SessionHarness::connectAfterStart() {
    scenario_->connectAddin(makeAddin());
}

hb::OHBAddinDesigner* SessionHarness::designer() const {
    const auto addin = addin_.lock();
    return addin ? &addin->designer : nullptr;
}

hb::Session& SessionHarness::session() const {
    hb::OHBAddinDesigner* d = designer();
    if (!d) throw std::logic_error("the add-in is not loaded");
    return d->session();
}

std::shared_ptr<sim::CommandBar> SessionHarness::addinBar(const sim::Window& window) {
    auto bar = sim::Scenario::bar(window, hb::kProductCaption);
    return bar && !bar->deleted ? bar : nullptr;
}

std::shared_ptr<sim::CommandBarControl> SessionHarness::combo(const sim::Window& window,
                                                              int n) const {
    auto bar = addinBar(window);
    if (!bar) return nullptr;
    int seen = 0;
    for (const auto& c : bar->controls->list) {
        if (!c->deleted && c->isComboBox() && ++seen == n) return c;
    }
    return nullptr;
}

std::shared_ptr<sim::CommandBarControl> SessionHarness::button(const sim::Window& window,
                                                               std::int32_t faceId) const {
    auto bar = addinBar(window);
    if (!bar) return nullptr;
    for (const auto& c : bar->controls->list) {
        if (!c->deleted && c->type == sim::mso::ControlButton && c->faceId == faceId) return c;
    }
    return nullptr;
}

std::vector<std::shared_ptr<PaneControl>> SessionHarness::paneControls() const {
    std::vector<std::shared_ptr<PaneControl>> out;
    for (const auto& w : panes_) {
        if (auto p = w.lock()) out.push_back(p);
    }
    return out;
}

std::shared_ptr<sim::CustomTaskPane> SessionHarness::paneOf(const sim::Window& window) const {
    for (const auto& p : window.panes) {
        if (!p->deleted) return p;
    }
    return nullptr;
}

std::vector<Str> SessionHarness::traceLines() const {
    std::vector<Str> lines;
    const auto log = platform_->file(platform_->moduleFolder() + u"\\BrindlewoodLog.txt");
    if (!log) return lines;
    std::size_t start = 0;
    while (start < log->size()) {
        std::size_t end = log->find(u"\r\n", start);
        if (end == Str::npos) end = log->size();
        const Str line = log->substr(start, end - start);
        // Caption TAB date and time TAB text.
        const std::size_t tab1 = line.find(u'\t');
        const std::size_t tab2 = tab1 == Str::npos ? Str::npos : line.find(u'\t', tab1 + 1);
        lines.push_back(tab2 == Str::npos ? line : line.substr(tab2 + 1));
        start = end + 2;
    }
    return lines;
}

std::size_t SessionHarness::errorDialogs() const {
    std::size_t n = 0;
    for (const auto& box : platform_->messageBoxes()) {
        if ((box.flags & 0xF) == hb::win::MbYesNo && box.caption == hb::kProductCaption) ++n;
    }
    return n;
}

std::string SessionHarness::messageBoxesText() const {
    std::ostringstream out;
    for (const auto& box : platform_->messageBoxes())
        out << hb::toUtf8(box.text) << "\n---\n";
    return out.str();
}

std::vector<Str> SessionHarness::census() {
    platform_->setActiveObject(u"Outlook.Application", Variant::nothing());
    return instruments().census();
}

std::string SessionHarness::censusText() {
    std::string out;
    for (const Str& line : census())
        out += hb::toUtf8(line) + "\n";
    return out;
}

std::vector<std::uint64_t> callsToFail(std::uint64_t n) {
    std::uint64_t stride = 1;
    if (const char* samples = std::getenv("HB_SWEEP_SAMPLES")) {
        const std::uint64_t k = std::strtoull(samples, nullptr, 10);
        if (k > 0) stride = std::max<std::uint64_t>(1, (n + k - 1) / k);
    }
    std::vector<std::uint64_t> ks;
    for (std::uint64_t k = 1; k <= n; k += stride)
        ks.push_back(k);
    if (!ks.empty() && ks.back() != n) ks.push_back(n);
    return ks;
}

}  // namespace hbtest
