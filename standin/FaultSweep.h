#pragma once
// The fault sweep of the stand-in Outlook: one phase of a session (start-up,
// or a selection change in the calendar) is run once to count the
// object-model calls the add-in makes in it, then once more for every one
// of them, that call failing as Outlook fails a call (DISP_E_EXCEPTION
// with its EXCEPINFO). Each run loads HBAddin.dll afresh by its
// registration and lets it go again, in this one process. After each run:
// no connection call failed, at most one error dialog, every object and
// connection handed out given back, DllCanUnloadNow S_OK and the DLL
// unloaded.
namespace standin {

enum class SweepPhase { Startup, Selection };

// Prints a summary (and each run that broke a rule); 0 when every run kept
// every rule.
int runFaultSweep(SweepPhase phase, int version);

}  // namespace standin
