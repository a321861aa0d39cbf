# Shared part of the MinGW-w64 cross toolchains. The including file sets
# HB_MINGW_TRIPLE (x86_64-w64-mingw32 or i686-w64-mingw32) and
# CMAKE_SYSTEM_PROCESSOR first.
#
# The "-posix" compilers use the POSIX thread model (std::mutex, std::thread),
# which GoogleTest needs; everything is linked statically so that the DLL and
# the test programs need no MinGW run-time DLLs.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_VERSION 6.1)

set(CMAKE_C_COMPILER ${HB_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${HB_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${HB_MINGW_TRIPLE}-windres)
set(HB_WIDL ${HB_MINGW_TRIPLE}-widl CACHE FILEPATH "The IDL compiler of the cross toolchain")

set(CMAKE_FIND_ROOT_PATH /usr/${HB_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(HB_STATIC_LINK "-static -static-libgcc -static-libstdc++")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${HB_STATIC_LINK}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${HB_STATIC_LINK}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${HB_STATIC_LINK}")
