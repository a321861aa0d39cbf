# Cubelens.exe (apps/statistics), included at the end of cmake/Windows.cmake
# after the report program. The add-in's Statistics button starts it from
# its own folder, so it is built into the build tree's root.
#
#   hb_statistics  the portable core (src/statistics, cmake/Statistics.cmake)
#   Cubelens       the program: its pivot window (apps/statistics/PivotWindow)
#                  and its command line over the
#                  core, the report's core and stores, and the Win32 platform
if(NOT HB_HAVE_XLSXWRITER)
  message(WARNING "Cubelens.exe is left out: it writes XLSX and libxlsxwriter is not built")
  return()
endif()
set(hb_statistics_dir ${PROJECT_SOURCE_DIR}/apps/statistics)
add_executable(Cubelens WIN32 ${hb_statistics_dir}/StatsMain.cpp
               ${hb_statistics_dir}/PivotWindow.cpp ${PROJECT_SOURCE_DIR}/apps/common/WindowKit.cpp
               ${hb_statistics_dir}/StatisticsApp.rc $<TARGET_OBJECTS:hb_statistics>
               $<TARGET_OBJECTS:hb_reporting> $<TARGET_OBJECTS:hb_store>)
target_include_directories(Cubelens PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                           ${hb_statistics_dir} ${CMAKE_BINARY_DIR}/generated)
target_compile_definitions(Cubelens PRIVATE ${HB_WIN_DEFS})
target_link_options(Cubelens PRIVATE -municode)
target_link_libraries(Cubelens PRIVATE hb_win32 hbcore hb_sqlite3 ${HB_ODBC_LIBS} hb_xlsxwriter
                      ${HB_WIN_LIBS} comdlg32)
set_target_properties(Cubelens PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
set_source_files_properties(${hb_statistics_dir}/StatisticsApp.rc PROPERTIES OBJECT_DEPENDS
  "${HB_LANGUAGE_FILE};${CMAKE_BINARY_DIR}/generated/hb_build.h;${hb_statistics_dir}/StatisticsApp.manifest")
add_dependencies(Cubelens hb_language)

# The Windows tests run the program from their folder.
if(TARGET hb_wintests)
  add_dependencies(hb_wintests Cubelens)
endif()

# hb_statswintests: Cubelens.exe's command line under Wine, and its pivot of
# a report database the test writes with the record store.
if(HB_WIN_TESTS)
  add_executable(hb_statswintests
                 ${PROJECT_SOURCE_DIR}/tests/win/statistics/StatisticsAppWinTest.cpp
                 $<TARGET_OBJECTS:hb_common> $<TARGET_OBJECTS:hb_store>)
  target_include_directories(hb_statswintests PRIVATE ${PROJECT_SOURCE_DIR}/src
                             ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests
                             ${PROJECT_SOURCE_DIR}/tests/win)
  target_compile_definitions(hb_statswintests PRIVATE ${HB_WIN_DEFS})
  target_link_libraries(hb_statswintests PRIVATE hb_sqlite3 ${HB_ODBC_LIBS} gtest gtest_main
                        ${HB_WIN_LIBS})
  set_target_properties(hb_statswintests PROPERTIES CROSSCOMPILING_EMULATOR ${HB_WINE_RUN})
  add_dependencies(hb_statswintests Cubelens)
  if(HB_WINE_TESTS)
    gtest_discover_tests(hb_statswintests TEST_PREFIX "wine." DISCOVERY_MODE PRE_TEST
                         DISCOVERY_TIMEOUT 120
                         PROPERTIES LABELS wine TIMEOUT 300 RESOURCE_LOCK wineprefix)
  endif()
endif()

# hb_pivot_window_tests: the pivot window under Wine over a cube file the
# test writes (skipped without a display: HB_WINE_DISPLAY).
if(HB_WIN_TESTS AND TARGET gtest)
  add_executable(hb_pivot_window_tests
                 ${PROJECT_SOURCE_DIR}/tests/win/statistics/PivotWindowWinTest.cpp
                 ${hb_statistics_dir}/PivotWindow.cpp ${PROJECT_SOURCE_DIR}/apps/common/WindowKit.cpp
                 $<TARGET_OBJECTS:hb_statistics>
                 $<TARGET_OBJECTS:hb_reporting> $<TARGET_OBJECTS:hb_store>)
  target_include_directories(hb_pivot_window_tests PRIVATE ${PROJECT_SOURCE_DIR}/src
                             ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests
                             ${PROJECT_SOURCE_DIR}/tests/win)
  target_compile_definitions(hb_pivot_window_tests PRIVATE ${HB_WIN_DEFS})
  target_link_libraries(hb_pivot_window_tests PRIVATE hb_win32 hbcore hb_sqlite3 ${HB_ODBC_LIBS}
                        hb_xlsxwriter gtest gtest_main ${HB_WIN_LIBS} comdlg32)
  set_target_properties(hb_pivot_window_tests PROPERTIES CROSSCOMPILING_EMULATOR ${HB_WINE_RUN})
  if(HB_WINE_TESTS)
    gtest_discover_tests(hb_pivot_window_tests TEST_PREFIX "wine.Statistics." DISCOVERY_MODE PRE_TEST
                         DISCOVERY_TIMEOUT 120 PROPERTIES LABELS wine TIMEOUT 180
                         RESOURCE_LOCK wineprefix)
  endif()
endif()
