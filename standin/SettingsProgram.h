#pragma once
// The settings program as the stand-in's user meets it: the add-in's
// Settings button starts it as a process of its own; the user then works in
// its dialog. This finds the process the add-in started (a child of this
// one), tells from where and with what it was started, and drives its
// dialog from outside with the messages a user's clicks and keystrokes
// produce, as another program's windows are driven.
#include <windows.h>

#include <string>

namespace standin {

class SettingsProgram {
  public:
    SettingsProgram() = default;
    ~SettingsProgram();
    SettingsProgram(const SettingsProgram&) = delete;
    SettingsProgram& operator=(const SettingsProgram&) = delete;

    // Waits (handling this thread's window messages meanwhile) for a
    // process named `exeName` started by this process and for its dialog.
    // False when none appeared in time.
    bool waitForDialog(const std::wstring& exeName, DWORD timeoutMs);
    // The program's full path and its command line's arguments (what
    // follows the program's name).
    const std::wstring& path() const { return path_; }
    const std::wstring& arguments() const { return arguments_; }

    // The user picks a row of a list box of the dialog.
    bool pickRow(int listBox, int row);
    // The user types into an edit field (replacing its text).
    bool type(int field, const std::wstring& text);
    // The user presses a button of the dialog.
    bool press(int button);
    // Whether a list box of the dialog holds an entry.
    bool lists(int listBox, const std::wstring& entry);
    // Presses OK and waits for the program to end; its exit code, or -1
    // when it did not end in time (it is then ended).
    long okAndWait(int okButton, DWORD timeoutMs);

  private:
    bool send(UINT msg, WPARAM wp, LPARAM lp, LRESULT* result = nullptr);

    HANDLE process_ = nullptr;
    DWORD processId_ = 0;
    HWND dialog_ = nullptr;
    std::wstring path_, arguments_;
};

}  // namespace standin
