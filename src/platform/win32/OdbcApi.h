#pragma once
// The ODBC API of Windows (odbc32): MinGW's sql.h and sqlext.h expect the
// Windows types to be declared first. The record store's ODBC code includes
// this on Windows and unixODBC's headers elsewhere.
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <sql.h>
#include <sqlext.h>
