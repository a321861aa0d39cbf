// The task pane control "HBAddin.pane" hosted the way Office hosts it: in a
// real window by an ActiveX container, here Wine's atl.dll (an "AtlAxWin"
// window naming the control's CLSID), under an X server. The control comes
// from HBAddin.dll's class object, registered for this process only, so the
// test leaves the registry alone. The host hands it an appointment (a small
// automation object of the test) and a settings body through IDispatch, as
// the task pane code does; the test then reads the real child windows back:
// captions, entries, selections, their rectangles at the pane's default size
// and narrower and wider, Tab between the boxes, a user's pick written into
// the appointment, and a picture of the pane for the README.
//
// Wine draws windows only with a display. The test command runs without
// one, so PaneControlXvfb starts Xvfb (xvfb-run) and runs the PaneHosted
// tests again in a second Wine process on that display; on their own,
// without a display, they skip.
#include <gtest/gtest.h>
#include <windows.h>
// windows.h first: the COM headers rely on its types.
#include <ocidl.h>
#include <oleauto.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "HBAddin_h.h"
#include "win/ComTestSupport.h"

namespace hb {
namespace {

using com::ComPtr;

constexpr wchar_t kChildVariable[] = L"HB_PANE_DISPLAY_CHILD";
constexpr char kRecurrenceException[] = "IPM.OLE.CLASS.{00061055-0000-0000-C000-000000000046}";

using test::exeFolder;
using test::unixPath;

std::wstring text(HWND hwnd) {
    wchar_t buffer[256] = {};
    GetWindowTextW(hwnd, buffer, 256);
    return buffer;
}

std::wstring className(HWND hwnd) {
    wchar_t buffer[64] = {};
    GetClassNameW(hwnd, buffer, 64);
    return buffer;
}

// The user's list separator, as Windows gives it.
std::wstring listSeparator() {
    wchar_t buffer[8] = {};
    GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SLIST, buffer, 8);
    return buffer;
}

bool visible(HWND hwnd) {
    return (GetWindowLongW(hwnd, GWL_STYLE) & WS_VISIBLE) != 0;
}

// A child's rectangle in its parent's client coordinates.
RECT rectIn(HWND parent, HWND child) {
    RECT r{};
    GetWindowRect(child, &r);
    MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&r), 2);
    return r;
}

void pumpMessages() {
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
}

// ---------------------------------------------------------------- the appointment

// What the pane reads and writes of an Outlook AppointmentItem: texts to
// read and write, the Parent (an exception's series) and Save.
struct FakeItem {
    FakeItem() {
        text(L"Categories", 1, categories, &categoryPuts, &afterCategoriesPut);
        text(L"Subject", 2, subject, nullptr, nullptr);
        text(L"MessageClass", 3, messageClass, nullptr, nullptr);
        server->member(L"Parent", 4, [this](WORD, std::vector<VARIANT*>&, VARIANT* r, EXCEPINFO*) {
            if (!parent || !r) return DISP_E_MEMBERNOTFOUND;
            V_VT(r) = VT_DISPATCH;
            V_DISPATCH(r) = ComPtr<test::TestServer>(parent->server).detach();
            return S_OK;
        });
        server->member(L"Save", 5, [this](WORD, std::vector<VARIANT*>&, VARIANT*, EXCEPINFO*) {
            ++saves;
            return S_OK;
        });
    }
    FakeItem(const FakeItem&) = delete;
    FakeItem& operator=(const FakeItem&) = delete;

    ComPtr<test::TestServer> server = test::TestServer::create();
    std::wstring categories;
    std::wstring subject;
    std::wstring messageClass = L"IPM.Appointment";
    FakeItem* parent = nullptr;
    std::vector<std::wstring> categoryPuts;
    // What the host does once the categories are written.
    std::function<void()> afterCategoriesPut;
    int saves = 0;

  private:
    void text(const wchar_t* name, DISPID id, std::wstring& field, std::vector<std::wstring>* puts,
              std::function<void()>* afterPut) {
        server->member(name, id,
                       [&field, puts, afterPut](WORD flags, std::vector<VARIANT*>& args,
                                                VARIANT* result, EXCEPINFO*) -> HRESULT {
                           if (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) {
                               if (args.size() != 1) return DISP_E_BADPARAMCOUNT;
                               VARIANT value;
                               VariantInit(&value);
                               if (FAILED(VariantChangeType(&value, args[0], 0, VT_BSTR)))
                                   return DISP_E_TYPEMISMATCH;
                               field.assign(value.bstrVal, SysStringLen(value.bstrVal));
                               VariantClear(&value);
                               if (puts) puts->push_back(field);
                               if (afterPut && *afterPut) (*afterPut)();
                           } else if (result) {
                               V_VT(result) = VT_BSTR;
                               V_BSTR(result) =
                                   SysAllocStringLen(field.data(), static_cast<UINT>(field.size()));
                           }
                           return S_OK;
                       });
    }
};

// ---------------------------------------------------------------- the display

// Wine draws on the display its desktop was made with, and the test
// command's Wine desktop has none. A process started with a display
// (PaneControlXvfb's child) moves to a desktop of its own, made on that
// display. True when windows can be made.
bool displayReady() {
    static const bool ready = [] {
        wchar_t name[64];
        swprintf(name, 64, L"HBPaneTest%lu", GetCurrentProcessId());
        return test::windowsPossible(kChildVariable, name);
    }();
    return ready;
}

// ---------------------------------------------------------------- the host

// A settings body as the settings object builds it: report choice and
// value, rate, the three filters, then one line per metadata list.
std::wstring settingsBody(const std::wstring& lists) {
    return L"2\r\nC:\\Data\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\n" + lists;
}

const std::wstring kThreeLists =
    L"Soci\u00E9t\u00E9:Acme;Globex;Initech;\r\n"
    L"Person:Jones;Smith;Zo\u00EB;\r\n"
    L"\u0395\u03C1\u03B3\u03B1\u03C3\u03AF\u03B1:Office;Travel;"
    L"\u03A4\u03B7\u03BB\u03AD\u03C6\u03C9\u03BD\u03BF;"
    L"\r\n";

using AtlAxWinInitFn = BOOL(WINAPI*)();
using AtlAxGetControlFn = HRESULT(WINAPI*)(HWND, IUnknown**);

template <class F>
F function(HMODULE module, const char* name) {
    return reinterpret_cast<F>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

class PaneHosted : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!displayReady())
            GTEST_SKIP() << "no X display for Wine's windows; PaneControlXvfb runs these tests "
                            "under an Xvfb server of their own";
        ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr)));
        oleInitialized_ = true;

        dll_ = LoadLibraryW((exeFolder() + L"\\HBAddin.dll").c_str());
        ASSERT_NE(dll_, nullptr);
        using GetClassObject = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
        auto getClassObject = function<GetClassObject>(dll_, "DllGetClassObject");
        ASSERT_NE(getClassObject, nullptr);
        ComPtr<IClassFactory> factory;
        ASSERT_EQ(
            getClassObject(CLSID_Pane, IID_IClassFactory, reinterpret_cast<void**>(factory.put())),
            S_OK);
        // For this process only: CoCreateInstance finds the class without
        // the registry.
        ASSERT_EQ(CoRegisterClassObject(CLSID_Pane, factory.get(), CLSCTX_INPROC_SERVER,
                                        REGCLS_MULTIPLEUSE, &classCookie_),
                  S_OK);

        atl_ = LoadLibraryW(L"atl.dll");
        ASSERT_NE(atl_, nullptr) << "Wine's atl.dll";
        auto init = function<AtlAxWinInitFn>(atl_, "AtlAxWinInit");
        getControl_ = function<AtlAxGetControlFn>(atl_, "AtlAxGetControl");
        ASSERT_NE(init, nullptr);
        ASSERT_NE(getControl_, nullptr);
        // Once per process: a second call finds the window class registered
        // and answers FALSE.
        static const bool initialized = init() != FALSE;
        ASSERT_TRUE(initialized);

        item_ = std::make_unique<FakeItem>();
    }

    void TearDown() override {
        if (frame_) DestroyWindow(frame_);
        control_.reset();
        pumpMessages();
        if (classCookie_) CoRevokeClassObject(classCookie_);
        if (oleInitialized_) OleUninitialize();
        // The DLL and atl.dll stay loaded: Wine's atl keeps its window class.
    }

    // A frame window whose client area is width x height, holding an
    // "AtlAxWin" container window that creates the control by its CLSID.
    void host(int width, int height) {
        frame_ = CreateWindowExW(0, L"STATIC", L"Hourbook for Outlook", WS_POPUP | WS_VISIBLE, 0, 0,
                                 width, height, nullptr, nullptr, nullptr, nullptr);
        ASSERT_NE(frame_, nullptr);
        container_ = CreateWindowExW(0, L"AtlAxWin", test::guidText(CLSID_Pane).c_str(),
                                     WS_CHILD | WS_VISIBLE, 0, 0, width, height, frame_, nullptr,
                                     nullptr, nullptr);
        ASSERT_NE(container_, nullptr);
        ComPtr<IUnknown> unknown;
        ASSERT_EQ(getControl_(container_, unknown.put()), S_OK);
        control_ = unknown.as<IDispatch>();
        ASSERT_TRUE(control_);
        ComPtr<IOleInPlaceObject> inPlace = unknown.as<IOleInPlaceObject>();
        ASSERT_TRUE(inPlace);
        ASSERT_EQ(inPlace->GetWindow(&pane_), S_OK) << "in-place active with a window";
        pumpMessages();
    }

    // The host's two assignments, as the task pane code makes them.
    void show(FakeItem& item, const std::wstring& lists) {
        VARIANT appointment;
        appointment.vt = VT_DISPATCH;
        appointment.pdispVal = item.server.get();
        ASSERT_EQ(put(L"objAppointment", appointment, DISPATCH_PROPERTYPUTREF), S_OK);
        VARIANT settings;
        settings.vt = VT_BSTR;
        settings.bstrVal = SysAllocString(settingsBody(lists).c_str());
        ASSERT_EQ(put(L"Settings", settings, DISPATCH_PROPERTYPUT), S_OK);
        SysFreeString(settings.bstrVal);
        pumpMessages();
    }

    HRESULT put(const wchar_t* name, VARIANT& value, WORD how) {
        DISPID id = 0;
        LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
        HRESULT hr = control_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
        if (FAILED(hr)) return hr;
        DISPID named = DISPID_PROPERTYPUT;
        DISPPARAMS params{&value, &named, 1, 1};
        return control_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, how, &params, nullptr, nullptr,
                                nullptr);
    }

    void resize(int width, int height) {
        SetWindowPos(frame_, nullptr, 0, 0, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
        SetWindowPos(container_, nullptr, 0, 0, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
        pumpMessages();
    }

    std::vector<HWND> children(const wchar_t* kind) const {
        std::vector<HWND> out;
        for (HWND child = GetWindow(pane_, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
            if (_wcsicmp(className(child).c_str(), kind) == 0) out.push_back(child);
        return out;
    }
    std::vector<HWND> labels() const { return children(L"Static"); }
    std::vector<HWND> combos() const { return children(L"ComboBox"); }

    static std::vector<std::wstring> entries(HWND combo) {
        std::vector<std::wstring> out;
        const int count = static_cast<int>(SendMessageW(combo, CB_GETCOUNT, 0, 0));
        for (int i = 0; i < count; ++i) {
            wchar_t buffer[128] = {};
            SendMessageW(combo, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(buffer));
            out.push_back(buffer);
        }
        return out;
    }
    static std::wstring selected(HWND combo) {
        const LRESULT i = SendMessageW(combo, CB_GETCURSEL, 0, 0);
        if (i == CB_ERR) return L"";
        wchar_t buffer[128] = {};
        SendMessageW(combo, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(buffer));
        return buffer;
    }

    // What a user's choice does: the box's selection changes and the box
    // tells its parent.
    static void pick(HWND combo, const std::wstring& entry) {
        const LRESULT i = SendMessageW(combo, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                       reinterpret_cast<LPARAM>(entry.c_str()));
        ASSERT_NE(i, CB_ERR) << "no entry " << std::string(entry.begin(), entry.end());
        SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(i), 0);
        SendMessageW(GetParent(combo), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(combo), CBN_SELCHANGE),
                     reinterpret_cast<LPARAM>(combo));
    }

    // The layout at the pane's current size, checked against the rules
    // every width must keep.
    void expectLaidOut(int width, bool captionsBeside) {
        RECT client{};
        GetClientRect(pane_, &client);
        EXPECT_EQ(client.right, width);
        const auto l = labels();
        const auto c = combos();
        ASSERT_EQ(l.size(), 3u);
        ASSERT_EQ(c.size(), 3u);
        RECT previous{0, 0, 0, 0};
        for (std::size_t i = 0; i < 3; ++i) {
            const RECT lr = rectIn(pane_, l[i]);
            const RECT cr = rectIn(pane_, c[i]);
            SCOPED_TRACE("box " + std::to_string(i) + " at width " + std::to_string(width));
            EXPECT_GT(cr.right - cr.left, 0);
            EXPECT_GE(cr.left, 0);
            EXPECT_LE(cr.right, width) << "the box stays inside the pane";
            EXPECT_LE(lr.right, width);
            EXPECT_GE(lr.top, previous.bottom) << "below the box before";
            if (captionsBeside) {
                EXPECT_LE(lr.right, cr.left) << "the caption stands left of its box";
                EXPECT_LT(cr.top, lr.bottom);
                EXPECT_GT(cr.bottom, lr.top);
            } else {
                EXPECT_LE(lr.bottom, cr.top) << "the caption stands above its box";
                EXPECT_EQ(lr.left, cr.left);
            }
            previous = cr;
        }
        // The boxes take the width the captions leave, all alike.
        const RECT first = rectIn(pane_, c[0]);
        for (std::size_t i = 1; i < 3; ++i) {
            const RECT r = rectIn(pane_, c[i]);
            EXPECT_EQ(r.left, first.left);
            EXPECT_EQ(r.right, first.right);
        }
        EXPECT_GE(first.right, width * 3 / 4) << "the boxes use the pane's width";
    }

    // Pixels of the window's own drawing differing from its background, in
    // a band of its client area.
    int drawnPixels(HWND hwnd, int top, int bottom) {
        HDC dc = GetDC(hwnd);
        const COLORREF background = GetSysColor(COLOR_BTNFACE);
        RECT client{};
        GetClientRect(hwnd, &client);
        int count = 0;
        for (int y = top; y < bottom; ++y)
            for (int x = 0; x < client.right; ++x)
                if (GetPixel(dc, x, y) != background) ++count;
        ReleaseDC(hwnd, dc);
        return count;
    }

    bool oleInitialized_ = false;
    HMODULE dll_ = nullptr;
    HMODULE atl_ = nullptr;
    DWORD classCookie_ = 0;
    AtlAxGetControlFn getControl_ = nullptr;
    std::unique_ptr<FakeItem> item_;
    HWND frame_ = nullptr;
    HWND container_ = nullptr;
    HWND pane_ = nullptr;
    ComPtr<IDispatch> control_;
};

// Writes the frame window's pixels as a 24-bit BMP file.
bool saveBitmap(HWND window, const std::wstring& path) {
    RECT r{};
    GetWindowRect(window, &r);
    const int width = r.right - r.left;
    const int height = r.bottom - r.top;
    HDC source = GetWindowDC(window);
    HDC memory = CreateCompatibleDC(source);
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(memory, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ old = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, width, height, source, 0, 0, SRCCOPY);
    GdiFlush();
    const DWORD stride = static_cast<DWORD>((width * 3 + 3) & ~3);
    BITMAPFILEHEADER file{};
    file.bfType = 0x4D42;
    file.bfOffBits = sizeof(file) + sizeof(info.bmiHeader);
    file.bfSize = file.bfOffBits + stride * static_cast<DWORD>(height);
    std::ofstream out(std::filesystem::path(path), std::ios::binary);
    out.write(reinterpret_cast<const char*>(&file), sizeof(file));
    out.write(reinterpret_cast<const char*>(&info.bmiHeader), sizeof(info.bmiHeader));
    out.write(static_cast<const char*>(bits), stride * static_cast<DWORD>(height));
    SelectObject(memory, old);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(window, source);
    return out.good();
}

TEST_F(PaneHosted, FillsItsBoxesAndLaysThemOutAtEveryWidth) {
    ASSERT_NO_FATAL_FAILURE(host(185, 600));
    EXPECT_EQ(GetParent(pane_), container_);
    EXPECT_TRUE(IsWindowVisible(pane_));
    RECT bounds = rectIn(container_, pane_);
    EXPECT_EQ(bounds.left, 0);
    EXPECT_EQ(bounds.top, 0);
    EXPECT_EQ(bounds.right, 185);
    EXPECT_EQ(bounds.bottom, 600);

    // Before the settings: three hidden boxes under hidden captions.
    for (HWND combo : combos())
        EXPECT_FALSE(visible(combo));

    item_->categories = L"Globex" + listSeparator() + L" Smith";
    ASSERT_NO_FATAL_FAILURE(show(*item_, kThreeLists));
    const auto l = labels();
    const auto c = combos();
    ASSERT_EQ(l.size(), 3u);
    ASSERT_EQ(c.size(), 3u);
    const std::wstring captions[] = {L"Soci\u00E9t\u00E9", L"Person",
                                     L"\u0395\u03C1\u03B3\u03B1\u03C3\u03AF\u03B1"};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(text(l[i]), captions[i]) << "Unicode captions";
        EXPECT_TRUE(visible(l[i]));
        EXPECT_TRUE(visible(c[i]));
        EXPECT_EQ(GetWindowLongW(c[i], GWL_STYLE) & 3, CBS_DROPDOWNLIST);
    }
    EXPECT_EQ(entries(c[1]), (std::vector<std::wstring>{L"Jones", L"Smith", L"Zo\u00EB"}));
    EXPECT_EQ(entries(c[2]).back(), L"\u03A4\u03B7\u03BB\u03AD\u03C6\u03C9\u03BD\u03BF");
    // The appointment's values preselected; the third has none.
    EXPECT_EQ(selected(c[0]), L"Globex");
    EXPECT_EQ(selected(c[1]), L"Smith");
    EXPECT_EQ(selected(c[2]), L"");
    // The system's message font, as Windows gives it.
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof(metrics);
    ASSERT_TRUE(SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0));
    LOGFONTW font{};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(c[0], WM_GETFONT, 0, 0)), sizeof(font), &font);
    EXPECT_STREQ(font.lfFaceName, metrics.lfMessageFont.lfFaceName);

    expectLaidOut(185, false);
    // The logo above the first caption is drawn.
    UpdateWindow(pane_);
    EXPECT_GT(drawnPixels(pane_, 0, rectIn(pane_, l[0]).top), 20);
    // The picture for the README, with two values chosen.
    pick(c[0], L"Globex");
    pick(c[1], L"Zo\u00EB");
    pumpMessages();
    EXPECT_EQ(selected(c[1]), L"Zo\u00EB");
    EXPECT_TRUE(saveBitmap(frame_, exeFolder() + L"\\pane.bmp"));

    resize(90, 600);
    expectLaidOut(90, false);
    resize(520, 300);
    expectLaidOut(520, true);
}

TEST_F(PaneHosted, APickWritesTheChoiceIntoTheAppointmentOrItsSeries) {
    struct Case {
        const char* name;
        bool exception;
    };
    for (const Case& k : {Case{"appointment", false}, Case{"recurrence exception", true}}) {
        SCOPED_TRACE(k.name);
        auto item = std::make_unique<FakeItem>();
        auto series = std::make_unique<FakeItem>();
        item->categories = L"Acme";
        series->categories = L"Initech" + listSeparator() + L"Zo\u00EB";
        if (k.exception) {
            item->messageClass = std::wstring(
                kRecurrenceException, kRecurrenceException + sizeof(kRecurrenceException) - 1);
            item->parent = series.get();
        }
        ASSERT_NO_FATAL_FAILURE(host(185, 600));
        ASSERT_NO_FATAL_FAILURE(show(*item, kThreeLists));
        const auto c = combos();
        ASSERT_EQ(c.size(), 3u);

        // The values recorded, in the appointment or for an exception in
        // its series, are preselected.
        EXPECT_EQ(selected(c[0]), k.exception ? L"Initech" : L"Acme");
        EXPECT_EQ(selected(c[1]), k.exception ? L"Zo\u00EB" : L"");

        pick(c[2], L"Travel");
        FakeItem& written = k.exception ? *series : *item;
        FakeItem& untouched = k.exception ? *item : *series;
        // The billing information text: every chosen value after the
        // user's separator.
        const std::wstring sep = listSeparator();
        const std::wstring expected = k.exception
                                          ? sep + L"Initech" + sep + L"Zo\u00EB" + sep + L"Travel"
                                          : sep + L"Acme" + sep + L"Travel";
        EXPECT_EQ(written.categoryPuts, std::vector<std::wstring>{expected});
        EXPECT_TRUE(untouched.categoryPuts.empty());
        // The appointment of the window is saved by the user, not the pane.
        EXPECT_EQ(item->saves, 0);

        // The control ends with its container and lets the appointment go.
        DestroyWindow(frame_);
        frame_ = nullptr;
        control_.reset();
        pumpMessages();
        EXPECT_EQ(test::refCount(item->server.get()), 1u);
    }
}

// The host letting go of the control in the middle of a pick: the container
// closed and every reference released from inside the appointment's
// Categories put, or a close queued before the pick. The control lives until
// the pick has returned, the pick is written whole, and only then is the
// control freed, letting go of the appointment.
TEST_F(PaneHosted, TheHostLettingGoDuringAPickFreesTheControlOnlyAfterIt) {
    for (const bool fromThePut : {true, false}) {
        SCOPED_TRACE(fromThePut ? "released from the Categories put" : "close queued before");
        auto item = std::make_unique<FakeItem>();
        item->categories = L"Acme";
        ASSERT_NO_FATAL_FAILURE(host(185, 600));
        ASSERT_NO_FATAL_FAILURE(show(*item, kThreeLists));
        const auto c = combos();
        ASSERT_EQ(c.size(), 3u);

        ULONG heldBefore = 0, heldAfter = 0;
        if (fromThePut) {
            item->afterCategoriesPut = [&] {
                heldBefore = test::refCount(item->server.get());
                DestroyWindow(frame_);
                frame_ = nullptr;
                control_.reset();
                heldAfter = test::refCount(item->server.get());
            };
        } else {
            PostMessageW(frame_, WM_CLOSE, 0, 0);
            control_.reset();  // the container holds the last reference
        }
        pick(c[2], L"Travel");
        const std::wstring sep = listSeparator();
        EXPECT_EQ(item->categoryPuts, std::vector<std::wstring>{sep + L"Acme" + sep + L"Travel"});
        if (fromThePut) {
            EXPECT_GT(heldBefore, 1u);
            EXPECT_EQ(heldAfter, heldBefore) << "the control, holding the item, is still alive";
        } else {
            EXPECT_TRUE(IsWindow(frame_)) << "the queued close waits until the pick is done";
        }
        pumpMessages();
        EXPECT_FALSE(frame_ && IsWindow(frame_));
        frame_ = nullptr;
        EXPECT_EQ(test::refCount(item->server.get()), 1u) << "freed after the pick";
    }
}

TEST_F(PaneHosted, TabMovesBetweenTheVisibleBoxes) {
    ASSERT_NO_FATAL_FAILURE(host(185, 600));
    ASSERT_NO_FATAL_FAILURE(show(*item_, L"Company:Acme;Globex;\r\nPerson:Jones;Smith;\r\n"));
    const auto c = combos();
    ASSERT_EQ(c.size(), 3u);
    EXPECT_FALSE(visible(c[2])) << "two lists: the third box stays hidden";
    ComPtr<IOleInPlaceActiveObject> active;
    ASSERT_EQ(control_->QueryInterface(IID_IOleInPlaceActiveObject,
                                       reinterpret_cast<void**>(active.put())),
              S_OK);

    SetForegroundWindow(frame_);
    SetFocus(c[0]);
    ASSERT_EQ(GetFocus(), c[0]);
    const auto tab = [&] {
        MSG msg{GetFocus(), WM_KEYDOWN, VK_TAB, 0x000F0001, 0, {}};
        return active->TranslateAccelerator(&msg);
    };
    EXPECT_EQ(tab(), S_OK);
    EXPECT_EQ(GetFocus(), c[1]);
    EXPECT_EQ(tab(), S_OK);
    EXPECT_EQ(GetFocus(), c[0]) << "past the last visible box, back to the first";

    // Other keys are the container's.
    MSG other{c[0], WM_KEYDOWN, 'A', 0x001E0001, 0, {}};
    EXPECT_EQ(active->TranslateAccelerator(&other), S_FALSE);
}

// ---------------------------------------------------------------- under Xvfb

TEST(PaneControlXvfb, RunsTheHostedTestsUnderAnXServerOfTheirOwn) {
    if (const char* why = test::xvfbRerunUnavailable(kChildVariable)) GTEST_SKIP() << why;
    const std::wstring folder = exeFolder();
    DeleteFileW((folder + L"\\pane.bmp").c_str());
    // The picture the hosted tests take becomes the README's PNG.
    const std::string bmp = unixPath(folder + L"\\pane.bmp");
    const std::string png = unixPath(folder + L"\\pane.png");
    const test::XvfbRun run = test::rerunUnderXvfb(
        kChildVariable, "PaneHosted.*", folder + L"\\pane-xvfb.log",
        "if [ -f '" + bmp + "' ] && command -v convert >/dev/null; then convert '" + bmp + "' '" +
            png + "'; fi");
    std::printf("---- the PaneHosted tests under Xvfb ----\n%s----\n", run.output.c_str());
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_NE(run.output.find("[  PASSED  ] 4 tests"), std::string::npos);
    EXPECT_EQ(run.output.find("[  SKIPPED ]"), std::string::npos) << "every hosted test ran";
}

}  // namespace
}  // namespace hb
