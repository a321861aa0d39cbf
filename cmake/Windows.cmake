# The Windows layer of the MinGW-w64 cross builds (presets win64 and win32),
# included by cmake/HbTargets.cmake after the portable areas:
#
#   hb_win32       src/platform/win32 (the Win32 Platform), an object library
#   HBAddin        HBAddin.dll: src/win + hb_win32 + hbcore, with VERSIONINFO
#                  and the LANGUAGE resource
#   gtest          GoogleTest built from Debian's source (/usr/src/googletest)
#   hb_wintests    tests/win/*.cpp, GoogleTest, run under Wine by CTest
#   hb_selfcheck   tests/win/selfcheck: loads HBAddin.dll and reports on it
#   HBReporting    the report program (cmake/ReportingApp.cmake)
#
# The test programs run through ${CMAKE_BINARY_DIR}/wine-run.sh (generated from
# cmake/wine-run.sh.in), which uses the build tree's own Wine prefix.

enable_language(RC)

option(HB_WIN_TESTS "Build the Windows test programs (GoogleTest from Debian's source)" ON)
option(HB_WINE_TESTS "Register the Windows test programs in CTest, run under Wine" ON)
set(HB_GTEST_SOURCE_DIR /usr/src/googletest CACHE PATH "GoogleTest's source (Debian package googletest)")
set(HB_WINEPREFIX ${CMAKE_BINARY_DIR}/wineprefix CACHE PATH "The build tree's private Wine prefix")

set(HB_WIN_LIBS advapi32 shell32 ole32 oleaut32 uuid user32 gdi32 comctl32 version)
# Windows 7 API level; the headers and import libraries of MinGW-w64 cover it.
set(HB_WIN_DEFS UNICODE _UNICODE _WIN32_WINNT=0x0601 WINVER=0x0601)

# Version numbers and the LANGUAGE file's path for the resource script.
configure_file(${CMAKE_CURRENT_LIST_DIR}/hb_build.h.in ${CMAKE_BINARY_DIR}/generated/hb_build.h @ONLY)

# ---------------------------------------------------------------- type library
# src/win/HBAddin.idl -> HBAddin_h.h (interfaces), HBAddin_i.c (their IDs)
# and HBAddin.tlb (embedded in the DLL as TYPELIB 1). widl needs Wine's
# system IDL files and stdole2.tlb.
set(HB_WINE_IDL_DIR /usr/include/wine/wine/windows CACHE PATH "Wine's system IDL files (libwine-dev)")
find_file(HB_STDOLE2_TLB stdole2.tlb PATHS /usr/lib/x86_64-linux-gnu/wine/x86_64-windows
          /usr/lib/wine/x86_64-windows /usr/lib/i386-linux-gnu/wine/i386-windows NO_DEFAULT_PATH
          NO_CMAKE_FIND_ROOT_PATH)
if(NOT HB_WIDL OR NOT HB_STDOLE2_TLB OR NOT EXISTS ${HB_WINE_IDL_DIR}/oaidl.idl)
  message(FATAL_ERROR "widl, Wine's IDL files or stdole2.tlb are missing "
                      "(Debian: apt-get install mingw-w64-tools libwine-dev wine64)")
endif()
get_filename_component(hb_stdole2_dir ${HB_STDOLE2_TLB} DIRECTORY)
set(hb_gen ${CMAKE_BINARY_DIR}/generated)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(hb_widl_arch -m32)
else()
  set(hb_widl_arch -m64)
endif()
add_custom_command(
  OUTPUT ${hb_gen}/HBAddin_h.h ${hb_gen}/HBAddin_i.c ${hb_gen}/HBAddin.tlb
  COMMAND ${HB_WIDL} ${hb_widl_arch} -I${HB_WINE_IDL_DIR} -L${hb_stdole2_dir}
          -h -H ${hb_gen}/HBAddin_h.h -u -U ${hb_gen}/HBAddin_i.c -t -T ${hb_gen}/HBAddin.tlb
          ${PROJECT_SOURCE_DIR}/src/win/HBAddin.idl
  DEPENDS ${PROJECT_SOURCE_DIR}/src/win/HBAddin.idl
  COMMENT "widl: HBAddin.idl"
  VERBATIM)
add_custom_target(hb_idl DEPENDS ${hb_gen}/HBAddin_h.h ${hb_gen}/HBAddin_i.c ${hb_gen}/HBAddin.tlb)

# ---------------------------------------------------------------- Win32 Platform and COM plumbing
# The Win32 Platform and src/win/com (COM object base, VARIANT conversion,
# the dispatch client, event sinks): the DLL and the Windows tests use them.
file(GLOB hb_win32_srcs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/platform/win32/*.cpp
     ${PROJECT_SOURCE_DIR}/src/win/com/*.cpp)
add_library(hb_win32 OBJECT ${hb_win32_srcs})
add_dependencies(hb_win32 hb_idl)
target_include_directories(hb_win32 PUBLIC ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR} ${hb_gen})
target_compile_definitions(hb_win32 PUBLIC ${HB_WIN_DEFS}
                           HB_VERSION_MAJOR=${PROJECT_VERSION_MAJOR}
                           HB_VERSION_MINOR=${PROJECT_VERSION_MINOR}
                           HB_VERSION_PATCH=${PROJECT_VERSION_PATCH})
target_link_libraries(hb_win32 PUBLIC ${HB_WIN_LIBS})

# ---------------------------------------------------------------- button images
# The ribbon buttons' images (BITMAP resources REPORT, SETTINGS and
# STATISTICS of the DLL), drawn at build time by a script of the project's
# own that needs Python's standard library only.
find_program(HB_PYTHON3 python3 REQUIRED NO_CMAKE_FIND_ROOT_PATH)
set(hb_button_images ${hb_gen}/REPORT.bmp ${hb_gen}/SETTINGS.bmp ${hb_gen}/STATISTICS.bmp)
add_custom_command(
  OUTPUT ${hb_button_images}
  COMMAND ${HB_PYTHON3} ${PROJECT_SOURCE_DIR}/scripts/button-images.py ${hb_gen}
  DEPENDS ${PROJECT_SOURCE_DIR}/scripts/button-images.py
  COMMENT "Drawing the ribbon buttons' images"
  VERBATIM)
add_custom_target(hb_button_images DEPENDS ${hb_button_images})

# ---------------------------------------------------------------- HBAddin.dll
file(GLOB hb_dll_srcs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/win/*.cpp)
set(hb_dll_rc ${PROJECT_SOURCE_DIR}/src/win/HBAddin.rc)
add_library(HBAddin SHARED ${hb_dll_srcs} ${hb_dll_rc} ${PROJECT_SOURCE_DIR}/src/win/HBAddin.def)
set_target_properties(HBAddin PROPERTIES PREFIX "" OUTPUT_NAME HBAddin)
target_include_directories(HBAddin PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                           ${CMAKE_BINARY_DIR}/generated)
target_compile_definitions(HBAddin PRIVATE ${HB_WIN_DEFS})
# hb_win32's objects go into the DLL; hbcore (every portable area) after them.
target_link_libraries(HBAddin PRIVATE hb_win32 hbcore ${HB_WIN_LIBS})
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  # The .def file names the __stdcall entry points undecorated; the linker
  # resolves them to the decorated symbols (DllCanUnloadNow@0, ...).
  target_link_options(HBAddin PRIVATE -Wl,--enable-stdcall-fixup)
endif()
set_source_files_properties(${hb_dll_rc} PROPERTIES OBJECT_DEPENDS
                            "${HB_LANGUAGE_FILE};${hb_gen}/hb_build.h;${hb_gen}/HBAddin.tlb;${hb_button_images}")
add_dependencies(HBAddin hb_language hb_button_images)

if(NOT HB_WIN_TESTS)
  return()
endif()

# ---------------------------------------------------------------- GoogleTest (MinGW-w64)
set(BUILD_GMOCK OFF)
set(INSTALL_GTEST OFF)
set(gtest_force_shared_crt OFF)
set(gtest_build_tests OFF)
set(gtest_build_samples OFF)
set(gtest_disable_pthreads OFF)
if(NOT EXISTS ${HB_GTEST_SOURCE_DIR}/CMakeLists.txt)
  message(FATAL_ERROR "GoogleTest's source is missing at ${HB_GTEST_SOURCE_DIR} "
                      "(Debian: apt-get install googletest)")
endif()
add_subdirectory(${HB_GTEST_SOURCE_DIR} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
# GoogleTest is not held to the project's warning level.
target_compile_options(gtest PRIVATE -w)
target_compile_options(gtest_main PRIVATE -w)

# ---------------------------------------------------------------- Wine runner
# x64 programs run under the machine's wine64. x86 programs need Wine's 32-bit
# side (scripts/lib.sh provides one): HB_WINE_MODE multiarch (wine32:i386),
# root (the i386 Debian root HB_X86_ROOT), none, or auto, whichever is there.
# x86 programs run in a 32-bit prefix either way, so both ways see the same
# Windows.
set(HB_WINE_MODE auto CACHE STRING "How x86 programs run under Wine: auto, multiarch, root or none")
set(HB_X86_ROOT /var/cache/hourbook/i386-root CACHE PATH "The i386 Debian root with Wine")
set(HB_WINE_IN_ROOT 0)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(HB_WINEARCH win64)
  set(HB_WINE_WHERE "the machine's wine64")
else()
  set(HB_WINEARCH win32)
  set(hb_wine_mode ${HB_WINE_MODE})
  if(hb_wine_mode STREQUAL auto)
    if(EXISTS /usr/lib/wine/wine)
      set(hb_wine_mode multiarch)
    elseif(EXISTS ${HB_X86_ROOT}/.hb-root-ready)
      set(hb_wine_mode root)
    else()
      set(hb_wine_mode none)
    endif()
  endif()
  if(hb_wine_mode STREQUAL multiarch)
    set(HB_WINE_WHERE "the machine's multiarch wine32")
  elseif(hb_wine_mode STREQUAL root)
    set(HB_WINE_IN_ROOT 1)
    set(HB_WINE_WHERE "the i386 Debian root ${HB_X86_ROOT}")
  else()
    set(HB_WINE_WHERE "none: the x86 tests are not registered")
    if(HB_WINE_TESTS)
      message(STATUS "No x86 Wine (HB_WINE_MODE ${HB_WINE_MODE}): the x86 tests are built, not registered")
      set(HB_WINE_TESTS OFF)
    endif()
  endif()
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/wine-run.sh.in ${CMAKE_BINARY_DIR}/wine-run.sh @ONLY)
file(CHMOD ${CMAKE_BINARY_DIR}/wine-run.sh PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
     GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(HB_WINE_RUN ${CMAKE_BINARY_DIR}/wine-run.sh)

# ---------------------------------------------------------------- hb_wintests
file(GLOB hb_wintest_srcs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/win/*.cpp)
# The stand-in's ribbon XML reading is tested with Windows' own parser.
add_executable(hb_wintests ${hb_wintest_srcs} ${PROJECT_SOURCE_DIR}/standin/RibbonHost.cpp
               $<TARGET_OBJECTS:hb_sim>)
target_include_directories(hb_wintests PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                           ${PROJECT_SOURCE_DIR}/tests ${CMAKE_BINARY_DIR}/generated)
target_link_libraries(hb_wintests PRIVATE hb_win32 hbcore gtest gtest_main ${HB_WIN_LIBS})
set_target_properties(hb_wintests PROPERTIES CROSSCOMPILING_EMULATOR ${HB_WINE_RUN})
add_dependencies(hb_wintests HBAddin)  # the tests load HBAddin.dll from their own folder

# ---------------------------------------------------------------- hb_winbench
# The COM layer's costs under Wine (built with the tests, run by hand).
add_executable(hb_winbench ${PROJECT_SOURCE_DIR}/bench/win/hb_winbench.cpp)
target_include_directories(hb_winbench PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                           ${PROJECT_SOURCE_DIR}/tests/win ${hb_gen})
target_link_libraries(hb_winbench PRIVATE hb_win32 hbcore ${HB_WIN_LIBS})

# ---------------------------------------------------------------- hb_selfcheck
add_executable(hb_selfcheck ${PROJECT_SOURCE_DIR}/tests/win/selfcheck/hb_selfcheck.cpp)
target_include_directories(hb_selfcheck PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                           ${CMAKE_BINARY_DIR}/generated)
target_link_libraries(hb_selfcheck PRIVATE hb_win32 hbcore ${HB_WIN_LIBS})
set_target_properties(hb_selfcheck PROPERTIES CROSSCOMPILING_EMULATOR ${HB_WINE_RUN})
add_dependencies(hb_selfcheck HBAddin)

# Always: a tree configured again without an x86 Wine then lists no stale tests.
enable_testing()
if(HB_WINE_TESTS)
  include(GoogleTest)
  # Each GoogleTest test is a CTest test "wine.<Suite>.<Test>", listed under
  # Wine when ctest starts (no Wine needed to build).
  gtest_discover_tests(hb_wintests TEST_PREFIX "wine." DISCOVERY_MODE PRE_TEST
                       DISCOVERY_TIMEOUT 120 PROPERTIES LABELS wine TIMEOUT 120
                       RESOURCE_LOCK wineprefix)
  add_test(NAME wine.selfcheck COMMAND hb_selfcheck)
  # One Wine prefix, one registry: tests that register the DLL must not
  # overlap, so the Wine tests run one at a time.
  set_tests_properties(wine.selfcheck PROPERTIES LABELS wine TIMEOUT 120 RESOURCE_LOCK wineprefix)
endif()
include(${CMAKE_CURRENT_LIST_DIR}/Standin.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/SettingsApp.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/ReportWindow.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/RecordStoresWin.cmake)
# The report program links the window and the record stores above.
include(${CMAKE_CURRENT_LIST_DIR}/ReportingApp.cmake)
# The statistics program over the report's core (Cubelens.exe).
include(${CMAKE_CURRENT_LIST_DIR}/StatisticsApp.cmake)
