#pragma once
// A program the add-in starts (the settings program, the report program) as
// the stand-in's user meets it: a process of its own, with a window the
// user then works in. This finds the process the add-in started (a child of
// this one), tells from where and with what it was started, and drives its
// window from outside with the messages a user's clicks and keystrokes
// produce, as another program's windows are driven. While it waits, this
// thread's messages are handled, and with them the calls the program makes
// into the stand-in's Outlook across the process boundary.
#include <windows.h>

#include <string>

namespace standin {

class ChildProgram {
  public:
    ChildProgram() = default;
    ~ChildProgram();
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    // Waits (handling this thread's window messages meanwhile) for a
    // process named `exeName` started by this process and for its visible
    // top-level window of class `windowClass` (a dialog's by default).
    // False when none appeared in time.
    bool waitForDialog(const std::wstring& exeName, DWORD timeoutMs,
                       const std::wstring& windowClass = L"#32770");
    HWND window() const { return dialog_; }
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
    // Closes the window as its close box does and waits for the program to
    // end; its exit code, or -1 as okAndWait.
    long closeAndWait(DWORD timeoutMs);
    // The text of a control of the window (WM_GETTEXT), empty when it has
    // none or does not answer.
    std::wstring text(int control);
    // A message's answer from a control of the window; `fallback` when the
    // control does not answer.
    LRESULT ask(int control, UINT msg, WPARAM wp, LPARAM lp, LRESULT fallback);

    // Runs a program as a script would (no window of ours), handling this
    // thread's messages until it ends; its exit code, or -1 when it could
    // not be started or did not end in time (it is then ended).
    static long runToEnd(const std::wstring& commandLine, DWORD timeoutMs);
    // Handles this thread's messages for a while.
    static void serveFor(DWORD ms);

  private:
    bool send(UINT msg, WPARAM wp, LPARAM lp, LRESULT* result = nullptr);
    long waitForEnd(DWORD timeoutMs);

    HANDLE process_ = nullptr;
    DWORD processId_ = 0;
    HWND dialog_ = nullptr;
    std::wstring path_, arguments_;
};

}  // namespace standin
