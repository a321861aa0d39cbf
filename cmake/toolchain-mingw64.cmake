# MinGW-w64 cross build for 64-bit Windows (64-bit Outlook).
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(HB_MINGW_TRIPLE x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw-common.cmake)
