// hb_winbench.exe: what the COM layer costs under Wine (or Windows), beside
// what the server itself costs. Debian ships Google Benchmark only for
// Linux, so this program times with the performance counter in the same
// spirit: each case runs until it has taken at least half a second and
// reports the mean time per operation.
//
//   build/win64/wine-run.sh build/win64/hb_winbench.exe
#include <windows.h>

#include <cstdio>
#include <functional>

#include "ComTestSupport.h"
#include "win/com/DispatchClient.h"
#include "win/com/EventSinks.h"

namespace {

using hb::test::TestServer;

double nsPerOperation(const std::function<void()>& operation) {
    LARGE_INTEGER frequency, start, now;
    QueryPerformanceFrequency(&frequency);
    long long iterations = 1000;
    for (;;) {
        QueryPerformanceCounter(&start);
        for (long long i = 0; i < iterations; ++i) operation();
        QueryPerformanceCounter(&now);
        const double seconds =
            static_cast<double>(now.QuadPart - start.QuadPart) / frequency.QuadPart;
        if (seconds >= 0.5) return seconds * 1e9 / static_cast<double>(iterations);
        iterations *= seconds < 0.05 ? 10 : 2;
    }
}

void report(const char* name, double ns) {
    std::printf("%-52s %10.1f ns\n", name, ns);
}

}  // namespace

int main() {
    OleInitialize(nullptr);
    {
        auto server = TestServer::create();
        server->member(L"Count", 1, [](WORD, std::vector<VARIANT*>&, VARIANT* r, EXCEPINFO*) {
            V_VT(r) = VT_I4;
            V_I4(r) = 7;
            return S_OK;
        });
        const hb::com::EventSet* set = hb::com::findEventSet(u"ExplorerEvents");
        auto point = server->addConnectionPoint(set->iid);

        // The server's own work: Invoke called directly with ready arguments.
        const double raw = nsPerOperation([&] {
            VARIANT result;
            VariantInit(&result);
            DISPPARAMS none{nullptr, nullptr, 0, 0};
            server->Invoke(1, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, &result,
                           nullptr, nullptr);
        });
        hb::ObjectPtr client = hb::com::DispatchClient::wrap(server.get());
        client->get(u"Count");  // resolves and caches the name
        const double viaClient = nsPerOperation([&] { client->get(u"Count"); });
        report("IDispatch::Invoke, property get (server only)", raw);
        report("DispatchClient get of a cached member", viaClient);
        report("  overhead per call", viaClient - raw);

        long heard = 0;
        hb::EventConnection connection = client->subscribe(
            u"ExplorerEvents",
            std::make_shared<hb::FunctionSink>([&](const hb::Str&, hb::Args&) { ++heard; }));
        const DISPID selectionChange = set->memberId(u"SelectionChange");
        const double delivery = nsPerOperation([&] { point->fire(selectionChange, {}); });
        report("event delivered through the sink (no arguments)", delivery);
        VARIANT_BOOL cancel = VARIANT_FALSE;
        VARIANT folder, cancelArg;
        V_VT(&folder) = VT_DISPATCH;
        V_DISPATCH(&folder) = server.get();
        V_VT(&cancelArg) = VT_BOOL | VT_BYREF;
        V_BOOLREF(&cancelArg) = &cancel;
        const DISPID beforeFolderSwitch = set->memberId(u"BeforeFolderSwitch");
        const double withCancel =
            nsPerOperation([&] { point->fire(beforeFolderSwitch, {folder, cancelArg}); });
        report("event with an object and Cancel by reference", withCancel);
        std::printf("events heard: %ld\n", heard);
    }
    OleUninitialize();
    return 0;
}
