# The report window of HBReporting.exe (apps/reporting/ReportWindow.*),
# included at the end of cmake/Windows.cmake:
#
#   hb_report_ui              the Win32 window over reporting/ReportView (an
#                             object library the program links)
#   hb_report_window_tests    tests/win/report: the window under Wine with a
#                             hand-made report and a stand-in model (and the
#                             phrase table as a resource)
#
# The window makes its controls in code: it needs no dialog template, only
# common controls 6 from the program's manifest.

set(hb_rw_dir ${PROJECT_SOURCE_DIR}/apps/reporting)

add_library(hb_report_ui OBJECT ${hb_rw_dir}/ReportWindow.cpp
            ${PROJECT_SOURCE_DIR}/apps/common/WindowKit.cpp)
target_include_directories(hb_report_ui PUBLIC ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
target_compile_definitions(hb_report_ui PUBLIC ${HB_WIN_DEFS})
target_link_libraries(hb_report_ui PUBLIC comctl32 comdlg32 ole32 user32 gdi32)

if(TARGET gtest)
  file(GLOB hb_rw_test_srcs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/win/report/*.cpp)
  set(hb_rw_test_rc ${PROJECT_SOURCE_DIR}/tests/win/report/ReportWindowTest.rc)
  add_executable(hb_report_window_tests ${hb_rw_test_srcs} ${hb_rw_test_rc}
                 $<TARGET_OBJECTS:hb_report_ui> $<TARGET_OBJECTS:hb_reporting>)
  target_include_directories(hb_report_window_tests PRIVATE ${PROJECT_SOURCE_DIR}/src
                             ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests
                             ${CMAKE_BINARY_DIR}/generated)
  # The phrase table as a resource, as the program carries it.
  set_source_files_properties(${hb_rw_test_rc} PROPERTIES OBJECT_DEPENDS
                              "${HB_LANGUAGE_FILE};${CMAKE_BINARY_DIR}/generated/hb_build.h")
  add_dependencies(hb_report_window_tests hb_language)
  target_compile_definitions(hb_report_window_tests PRIVATE ${HB_WIN_DEFS})
  target_link_libraries(hb_report_window_tests PRIVATE hb_win32 hbcore hb_xlsxwriter gtest gtest_main
                        ${HB_WIN_LIBS} comdlg32)
  set_target_properties(hb_report_window_tests PROPERTIES CROSSCOMPILING_EMULATOR ${HB_WINE_RUN})
  if(HB_WINE_TESTS)
    gtest_discover_tests(hb_report_window_tests TEST_PREFIX "wine." DISCOVERY_MODE PRE_TEST
                         DISCOVERY_TIMEOUT 120 PROPERTIES LABELS wine TIMEOUT 180
                         RESOURCE_LOCK wineprefix)
  endif()
endif()
