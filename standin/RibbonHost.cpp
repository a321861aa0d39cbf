#include "standin/RibbonHost.h"

#include <functional>

#include "common/AutomationError.h"
#include "common/Text.h"
#include "win/com/ComVariant.h"
#include "win/com/DispatchClient.h"

namespace standin {

namespace {

using hb::Str;
using hb::Variant;

// The add-in's two faces Office uses for the ribbon.
class AddinRibbon : public hb::Object {
  public:
    AddinRibbon(hb::com::ComPtr<IRibbonExtensibility> extensibility,
                hb::com::ComPtr<IDispatch> dispatch)
        : extensibility_(std::move(extensibility)),
          dispatch_(std::move(dispatch)),
          callbacks_(hb::com::DispatchClient::wrap(dispatch_.get())) {}

    Variant invoke(hb::CallKind kind, const Str& member, hb::Args& args) override {
        if (member == u"GetCustomUI") {
            const std::wstring id = args.empty() ? std::wstring() : hb::com::wide(args[0].toStr());
            BSTR ribbonId = SysAllocString(id.c_str());
            BSTR xml = nullptr;
            const HRESULT hr = extensibility_->GetCustomUI(ribbonId, &xml);
            SysFreeString(ribbonId);
            Str result = hb::com::fromBstr(xml);
            SysFreeString(xml);
            if (FAILED(hr)) hb::raise(hb::com::errorNumberOf(hr));
            return Variant(result);
        }
        return callbacks_->invoke(kind, member, args);
    }
    Str typeName() const override { return u"IRibbonExtensibility"; }

    bool hasMember(const Str& member) const {
        std::wstring name = hb::com::wide(member);
        LPOLESTR names[] = {name.data()};
        DISPID id = DISPID_UNKNOWN;
        return SUCCEEDED(dispatch_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id));
    }

  private:
    hb::com::ComPtr<IRibbonExtensibility> extensibility_;
    hb::com::ComPtr<IDispatch> dispatch_;
    hb::ObjectPtr callbacks_;
};

}  // namespace

hb::ObjectPtr ribbonOf(IUnknown* addin) {
    if (!addin) return nullptr;
    hb::com::ComPtr<IRibbonExtensibility> extensibility;
    hb::com::ComPtr<IDispatch> dispatch;
    if (FAILED(addin->QueryInterface(__uuidof(IRibbonExtensibility),
                                     reinterpret_cast<void**>(extensibility.put()))) ||
        FAILED(addin->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(dispatch.put()))))
        return nullptr;
    return std::make_shared<AddinRibbon>(std::move(extensibility), std::move(dispatch));
}

bool addinHasMember(const hb::ObjectPtr& ribbon, const Str& member) {
    const auto* addin = dynamic_cast<const AddinRibbon*>(ribbon.get());
    return addin && addin->hasMember(member);
}

Str checkRibbonXml(const Str& xml) {
    try {
        CLSID clsid{};
        if (FAILED(CLSIDFromProgID(L"Msxml2.DOMDocument.6.0", &clsid)) &&
            FAILED(CLSIDFromProgID(L"Msxml2.DOMDocument", &clsid)))
            return u"no XML parser (MSXML)";
        hb::com::ComPtr<IDispatch> created;
        if (FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                    reinterpret_cast<void**>(created.put()))))
            return u"no XML parser (MSXML)";
        const Variant dom(hb::com::DispatchClient::wrap(created.get()));
        dom.put(u"async", Variant(false));
        if (!dom.call(u"loadXML", {Variant(xml)}).toBool()) {
            return u"not well formed: " +
                   hb::text::trim(dom.get(u"parseError").get(u"reason").toStr());
        }
        const Variant root = dom.get(u"documentElement");
        const Str ns = root.get(u"namespaceURI").toStr();
        if (root.get(u"baseName").toStr() != u"customUI") return u"the root is no customUI";
        if (ns != u"http://schemas.microsoft.com/office/2009/07/customui" &&
            ns != u"http://schemas.microsoft.com/office/2006/01/customui")
            return u"wrong namespace " + ns;
        // Every element in that namespace and of the schema.
        Str error;
        std::function<void(const Variant&)> walk = [&](const Variant& node) {
            const Variant children = node.get(u"childNodes");
            const std::int32_t count = children.get(u"length").toLong();
            for (std::int32_t i = 0; i < count && error.empty(); ++i) {
                const Variant child = children.call(u"item", {Variant(i)});
                if (child.get(u"nodeType").toLong() != 1) continue;  // NODE_ELEMENT
                const Str name = child.get(u"baseName").toStr();
                if (child.get(u"namespaceURI").toStr() != ns || !sim::isRibbonElement(name)) {
                    error = u"unknown element " + name;
                    return;
                }
                walk(child);
            }
        };
        walk(root);
        return error;
    } catch (const std::exception& e) {
        return u"the XML parser failed: " + hb::fromUtf8(e.what());
    }
}

void useComChecks(sim::Ribbon& ribbon, hb::ObjectPtr addin) {
    // Held weakly: Office lets go of the add-in when it unloads it.
    ribbon.hasCallback = [weak = std::weak_ptr<hb::Object>(addin)](const Str& member) {
        const hb::ObjectPtr held = weak.lock();
        return held && addinHasMember(held, member);
    };
    ribbon.checkXml = checkRibbonXml;
}

}  // namespace standin
