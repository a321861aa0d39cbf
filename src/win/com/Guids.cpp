// The interface and class identifiers declared by HBAddin.idl, defined once
// for the DLL and the Windows tests.
#include <windows.h>
// windows.h first: the generated file relies on its types.
#include "HBAddin_i.c"
