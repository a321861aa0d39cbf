# MinGW-w64 cross build for 32-bit Windows (32-bit Outlook).
set(CMAKE_SYSTEM_PROCESSOR x86)
set(HB_MINGW_TRIPLE i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw-common.cmake)
