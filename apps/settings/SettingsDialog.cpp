#include "apps/settings/SettingsDialog.h"

#include <functional>
#include <string>

#include "apps/settings/SettingsResource.h"
#include "apps/settings/SettingsStore.h"
#include "common/Text.h"

namespace hb::settingsapp {

namespace {

const wchar_t* w(const Str& text) {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

Str textOf(HWND dialog, int id) {
    HWND control = GetDlgItem(dialog, id);
    const int length = GetWindowTextLengthW(control);
    std::wstring buffer(static_cast<std::size_t>(length) + 1, L'\0');
    GetWindowTextW(control, buffer.data(), length + 1);
    buffer.resize(static_cast<std::size_t>(length));
    return Str(buffer.begin(), buffer.end());
}

void setText(HWND dialog, int id, const Str& text) {
    SetDlgItemTextW(dialog, id, w(text));
}

bool checked(HWND dialog, int id) {
    return IsDlgButtonChecked(dialog, id) == BST_CHECKED;
}

void check(HWND dialog, int id, bool on) {
    CheckDlgButton(dialog, id, on ? BST_CHECKED : BST_UNCHECKED);
}

// The selected row of a list box, or -1.
int selection(HWND dialog, int id) {
    return static_cast<int>(SendDlgItemMessageW(dialog, id, LB_GETCURSEL, 0, 0));
}

void fill(HWND dialog, int id, const std::vector<Str>& rows, int selected) {
    SendDlgItemMessageW(dialog, id, LB_RESETCONTENT, 0, 0);
    for (const Str& row : rows)
        SendDlgItemMessageW(dialog, id, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(w(row)));
    SendDlgItemMessageW(dialog, id, LB_SETCURSEL, static_cast<WPARAM>(selected), 0);
}

DialogState& stateOf(HWND dialog) {
    return *reinterpret_cast<DialogState*>(GetWindowLongPtrW(dialog, DWLP_USER));
}

void say(HWND dialog, const Str& message) {
    MessageBoxW(dialog, w(message), w(stateOf(dialog).editor.texts().caption),
                MB_OK | MB_ICONWARNING);
}

// --- showing the editor -----------------------------------------------------

void showEntries(HWND dialog, int entry) {
    const Values& v = stateOf(dialog).editor.values();
    const int list = selection(dialog, IDC_LISTS);
    const bool hasList = list >= 0;
    fill(dialog, IDC_ENTRIES,
         hasList ? v.lists[static_cast<std::size_t>(list)].entries : std::vector<Str>{}, entry);
    const int entries =
        static_cast<int>(SendDlgItemMessageW(dialog, IDC_ENTRIES, LB_GETCOUNT, 0, 0));
    const int chosen = selection(dialog, IDC_ENTRIES);
    const int lists = static_cast<int>(v.lists.size());
    EnableWindow(GetDlgItem(dialog, IDC_RENAMELIST), hasList);
    EnableWindow(GetDlgItem(dialog, IDC_REMOVELIST), hasList);
    EnableWindow(GetDlgItem(dialog, IDC_LISTUP), list > 0);
    EnableWindow(GetDlgItem(dialog, IDC_LISTDOWN), hasList && list + 1 < lists);
    EnableWindow(GetDlgItem(dialog, IDC_ENTRYNAME), hasList);
    EnableWindow(GetDlgItem(dialog, IDC_ADDENTRY), hasList);
    EnableWindow(GetDlgItem(dialog, IDC_RENAMEENTRY), chosen >= 0);
    EnableWindow(GetDlgItem(dialog, IDC_REMOVEENTRY), chosen >= 0);
    EnableWindow(GetDlgItem(dialog, IDC_ENTRYUP), chosen > 0);
    EnableWindow(GetDlgItem(dialog, IDC_ENTRYDOWN), chosen >= 0 && chosen + 1 < entries);
}

void showLists(HWND dialog, int list, int entry) {
    std::vector<Str> names;
    for (const MetaList& l : stateOf(dialog).editor.values().lists)
        names.push_back(l.name);
    fill(dialog, IDC_LISTS, names, list);
    showEntries(dialog, entry);
}

// The check boxes and text fields, each with the value it shows.
const std::pair<int, bool Values::*> kSwitches[] = {
    {IDC_EVENTS, &Values::filterEvents},       {IDC_PRIVATE, &Values::filterPrivate},
    {IDC_RECURRING, &Values::filterRecurring}, {IDC_CONVERT24, &Values::convert24},
    {IDC_REMOVELUNCH, &Values::removeLunch},   {IDC_LOCALCUBE, &Values::createLocalCube},
    {IDC_STARTGRID, &Values::startGrid},       {IDC_WRITESUBJECT, &Values::writeSubject},
};
const std::pair<int, Str Values::*> kFields[] = {
    {IDC_VALUE, &Values::reportValue},
    {IDC_RATE, &Values::rate},
    {IDC_CONVERTHOURS, &Values::convert24Hours},
    {IDC_LUNCHHOURS, &Values::removeLunchHours},
};

void showValues(HWND dialog) {
    const Values& v = stateOf(dialog).editor.values();
    check(dialog, IDC_DATABASE, v.reportChoice != 3);
    check(dialog, IDC_CONNECTION, v.reportChoice == 3);
    for (const auto& [id, field] : kSwitches)
        check(dialog, id, v.*field);
    for (const auto& [id, field] : kFields)
        setText(dialog, id, v.*field);
    showLists(dialog, v.lists.empty() ? -1 : 0, -1);
}

void showTexts(HWND dialog) {
    Texts t = stateOf(dialog).editor.texts();
    SetWindowTextW(dialog, w(t.caption));
    assignMnemonics(controlTexts(t));
    const std::pair<int, const Str*> captions[] = {
        {IDC_REPORTGROUP, &t.reportGroup},
        {IDC_DATABASE, &t.database},
        {IDC_CONNECTION, &t.connection},
        {IDC_VALUELABEL, &t.value},
        {IDC_RATELABEL, &t.rate},
        {IDC_FILTERGROUP, &t.filterGroup},
        {IDC_EVENTS, &t.events},
        {IDC_PRIVATE, &t.privateItems},
        {IDC_RECURRING, &t.recurring},
        {IDC_METAGROUP, &t.metaGroup},
        {IDC_LISTSLABEL, &t.lists},
        {IDC_LISTNAMELABEL, &t.listName},
        {IDC_ADDLIST, &t.addList},
        {IDC_RENAMELIST, &t.renameList},
        {IDC_REMOVELIST, &t.removeList},
        {IDC_LISTUP, &t.listUp},
        {IDC_LISTDOWN, &t.listDown},
        {IDC_ENTRIESLABEL, &t.entries},
        {IDC_ENTRYNAMELABEL, &t.entryName},
        {IDC_ADDENTRY, &t.addEntry},
        {IDC_RENAMEENTRY, &t.renameEntry},
        {IDC_REMOVEENTRY, &t.removeEntry},
        {IDC_ENTRYUP, &t.entryUp},
        {IDC_ENTRYDOWN, &t.entryDown},
        {IDC_TIMEGROUP, &t.timeGroup},
        {IDC_CONVERT24, &t.convert24},
        {IDC_CONVERTHOURSLABEL, &t.convertHours},
        {IDC_REMOVELUNCH, &t.removeLunch},
        {IDC_LUNCHHOURSLABEL, &t.lunchHours},
        {IDC_LOCALCUBE, &t.createLocalCube},
        {IDC_STARTGRID, &t.startGrid},
        {IDC_WRITESUBJECT, &t.writeSubject},
        {IDOK, &t.ok},
        {IDCANCEL, &t.cancel},
    };
    for (const auto& [id, text] : captions)
        setText(dialog, id, *text);
}

// The plain fields into the editor (the lists are edited in it directly).
void readValues(HWND dialog) {
    Values& v = stateOf(dialog).editor.values();
    v.reportChoice = checked(dialog, IDC_CONNECTION) ? 3 : 2;
    for (const auto& [id, field] : kSwitches)
        v.*field = checked(dialog, id);
    for (const auto& [id, field] : kFields)
        v.*field = textOf(dialog, id);
}

int controlOf(Field field) {
    switch (field) {
        case Field::ReportValue:
            return IDC_VALUE;
        case Field::Rate:
            return IDC_RATE;
        case Field::ListName:
            return IDC_LISTNAME;
        case Field::Entry:
            return IDC_ENTRYNAME;
        case Field::Convert24Hours:
            return IDC_CONVERTHOURS;
        case Field::RemoveLunchHours:
            return IDC_LUNCHHOURS;
    }
    return IDOK;
}

// A refusal: its message, and the focus on the field it names.
void refused(HWND dialog, const Refusal& r) {
    say(dialog, r.message);
    HWND control = GetDlgItem(dialog, controlOf(r.field));
    SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
}

void finish(HWND dialog, int result) {
    DialogState& state = stateOf(dialog);
    state.result = result;
    if (state.modal)
        EndDialog(dialog, result);
    else
        DestroyWindow(dialog);
}

// --- commands -------------------------------------------------------------

// One column of the dialog: a list box of rows, a name field, and the
// buttons that add, rename, remove and move rows, over the editor's
// operations for the lists or for the entries of the selected list.
struct Column {
    int box, name, add, rename, remove, up, down;
    std::function<std::size_t()> count;
    std::function<std::optional<Refusal>(const Str&)> addRow;
    std::function<std::optional<Refusal>(std::size_t, const Str&)> renameRow;
    std::function<void(std::size_t)> removeRow;
    std::function<bool(std::size_t, int)> moveRow;
    std::function<void(int)> show;  // shows the column with that row selected
};

void onColumnCommand(HWND dialog, const Column& c, int id) {
    const int row = selection(dialog, c.box);
    const auto at = static_cast<std::size_t>(row);
    const int count = static_cast<int>(c.count());
    std::optional<Refusal> r;
    int select = row;
    if (id == c.add) {
        r = c.addRow(textOf(dialog, c.name));
        select = count;
    } else if (row < 0) {
        return;
    } else if (id == c.rename) {
        r = c.renameRow(at, textOf(dialog, c.name));
    } else if (id == c.remove) {
        c.removeRow(at);
        select = row < count - 1 ? row : row - 1;
    } else if (id == c.up || id == c.down) {
        const int by = id == c.up ? -1 : 1;
        if (!c.moveRow(at, by)) return;
        select = row + by;
    } else {
        return;
    }
    if (r) return refused(dialog, *r);
    if (id == c.add) setText(dialog, c.name, Str());
    c.show(select);
}

void onListCommand(HWND dialog, int id) {
    SettingsEditor& e = stateOf(dialog).editor;
    const Column lists{
        IDC_LISTS,
        IDC_LISTNAME,
        IDC_ADDLIST,
        IDC_RENAMELIST,
        IDC_REMOVELIST,
        IDC_LISTUP,
        IDC_LISTDOWN,
        [&] { return e.values().lists.size(); },
        [&](const Str& name) { return e.addList(name); },
        [&](std::size_t i, const Str& name) { return e.renameList(i, name); },
        [&](std::size_t i) { e.removeList(i); },
        [&](std::size_t i, int by) { return e.moveList(i, by); },
        [&](int row) { showLists(dialog, row, -1); },
    };
    onColumnCommand(dialog, lists, id);
}

void onEntryCommand(HWND dialog, int id) {
    SettingsEditor& e = stateOf(dialog).editor;
    const int selected = selection(dialog, IDC_LISTS);
    if (selected < 0) return;
    const auto list = static_cast<std::size_t>(selected);
    const Column entries{
        IDC_ENTRIES,
        IDC_ENTRYNAME,
        IDC_ADDENTRY,
        IDC_RENAMEENTRY,
        IDC_REMOVEENTRY,
        IDC_ENTRYUP,
        IDC_ENTRYDOWN,
        [&] { return e.values().lists[list].entries.size(); },
        [&](const Str& name) { return e.addEntry(list, name); },
        [&](std::size_t i, const Str& name) { return e.renameEntry(list, i, name); },
        [&](std::size_t i) { e.removeEntry(list, i); },
        [&](std::size_t i, int by) { return e.moveEntry(list, i, by); },
        [&](int row) { showEntries(dialog, row); },
    };
    onColumnCommand(dialog, entries, id);
}

void onOk(HWND dialog) {
    // Enter in a name field adds the name instead of closing the dialog.
    HWND focus = GetFocus();
    if (focus == GetDlgItem(dialog, IDC_LISTNAME) && !textOf(dialog, IDC_LISTNAME).empty())
        return onListCommand(dialog, IDC_ADDLIST);
    if (focus == GetDlgItem(dialog, IDC_ENTRYNAME) && !textOf(dialog, IDC_ENTRYNAME).empty())
        return onEntryCommand(dialog, IDC_ADDENTRY);
    DialogState& state = stateOf(dialog);
    readValues(dialog);
    if (state.refusal) return say(dialog, *state.refusal);
    if (auto r = state.editor.check()) return refused(dialog, *r);
    if (!saveValues(state.s, state.editor)) return say(dialog, state.editor.texts().failedSave);
    finish(dialog, IDOK);
}

INT_PTR CALLBACK dialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            SetWindowLongPtrW(dialog, DWLP_USER, lParam);
            showTexts(dialog);
            showValues(dialog);
            return TRUE;
        case WM_COMMAND: {
            if (GetWindowLongPtrW(dialog, DWLP_USER) == 0) return FALSE;
            const int id = LOWORD(wParam);
            const int code = HIWORD(wParam);
            if (id == IDC_LISTS && code == LBN_SELCHANGE) {
                const int list = selection(dialog, IDC_LISTS);
                if (list >= 0)
                    setText(
                        dialog, IDC_LISTNAME,
                        stateOf(dialog).editor.values().lists[static_cast<std::size_t>(list)].name);
                showEntries(dialog, -1);
                return TRUE;
            }
            if (id == IDC_ENTRIES && code == LBN_SELCHANGE) {
                const int list = selection(dialog, IDC_LISTS);
                const int entry = selection(dialog, IDC_ENTRIES);
                if (list >= 0 && entry >= 0)
                    setText(dialog, IDC_ENTRYNAME,
                            stateOf(dialog)
                                .editor.values()
                                .lists[static_cast<std::size_t>(list)]
                                .entries[static_cast<std::size_t>(entry)]);
                showEntries(dialog, entry);
                return TRUE;
            }
            if (code != BN_CLICKED) return FALSE;
            if (id == IDOK) {
                onOk(dialog);
            } else if (id == IDCANCEL) {
                finish(dialog, IDCANCEL);
            } else if (id >= IDC_ADDLIST && id <= IDC_LISTDOWN) {
                onListCommand(dialog, id);
            } else if (id >= IDC_ADDENTRY && id <= IDC_ENTRYDOWN) {
                onEntryCommand(dialog, id);
            } else {
                return FALSE;
            }
            return TRUE;
        }
        default:
            return FALSE;
    }
}

}  // namespace

int runSettingsDialog(HINSTANCE instance, DialogState& state) {
    state.modal = true;
    DialogBoxParamW(instance, MAKEINTRESOURCEW(IDD_SETTINGS), nullptr, dialogProc,
                    reinterpret_cast<LPARAM>(&state));
    return state.result;
}

HWND openSettingsDialog(HINSTANCE instance, DialogState& state) {
    state.modal = false;
    return CreateDialogParamW(instance, MAKEINTRESOURCEW(IDD_SETTINGS), nullptr, dialogProc,
                              reinterpret_cast<LPARAM>(&state));
}

}  // namespace hb::settingsapp
