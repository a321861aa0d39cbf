# The statistics program's portable core (src/statistics): the local cube
# file, the pivot, its command line and exports, over the report program's
# core and record stores. Included by cmake/HbTargets.cmake after
# cmake/RecordStores.cmake.
#
#   hb_statistics     the core (object library)
#   test_statistics   its tests (native, ctest label native)
#   hb_stats_bench    the pivot's benchmark (preset bench)
# The offline pivot page's scripts (npm, fetched and checked by
# scripts/third-party.sh pivot, never kept in the tree), embedded.
hb_third_party(pivot pivot.min.js HB_PIVOT_DIR "The checked pivottable, jQuery and jQuery UI files")
include(${PROJECT_SOURCE_DIR}/cmake/EmbedFiles.cmake)
set(hb_pivot_assets ${CMAKE_BINARY_DIR}/generated/PivotAssets.cpp)
hb_embed_files(OUTPUT ${hb_pivot_assets} HEADER statistics/PivotAssets.h
               FUNCTION pivotAssets TYPE PivotAssets NAMESPACE hb::statistics
               FILES jquery=${HB_PIVOT_DIR}/jquery.min.js
                     jqueryUi=${HB_PIVOT_DIR}/jquery-ui.min.js
                     pivotScript=${HB_PIVOT_DIR}/pivot.min.js
                     pivotStyle=${HB_PIVOT_DIR}/pivot.min.css
                     jqueryLicence=${HB_PIVOT_DIR}/jquery-LICENSE.txt
                     jqueryUiLicence=${HB_PIVOT_DIR}/jquery-ui-LICENSE.txt
                     pivotLicence=${HB_PIVOT_DIR}/pivottable-LICENSE.txt)

set(hb_statistics_excluded)
if(NOT HB_HAVE_XLSXWRITER)
  list(APPEND hb_statistics_excluded src/statistics/PivotXlsx.cpp)
endif()
hb_area(hb_statistics DIRS src/statistics DEPS hb_reporting hb_sqlite3
        EXCLUDE ${hb_statistics_excluded})
target_sources(hb_statistics PRIVATE ${hb_pivot_assets})

if(HB_TESTS AND NOT HB_WINDOWS)
  find_package(GTest REQUIRED)
  include(GoogleTest)
  enable_testing()
  file(GLOB stats_test_srcs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/statistics/*.cpp)
  add_executable(test_statistics ${stats_test_srcs} $<TARGET_OBJECTS:hb_common>
                 $<TARGET_OBJECTS:hb_sim> $<TARGET_OBJECTS:hb_diag> $<TARGET_OBJECTS:hb_settings>
                 $<TARGET_OBJECTS:hb_calendar> $<TARGET_OBJECTS:hb_reporting>
                 $<TARGET_OBJECTS:hb_store> $<TARGET_OBJECTS:hb_statistics>)
  target_include_directories(test_statistics PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                             ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(test_statistics PRIVATE hb_sqlite3 ${HB_ODBC_LIBS} hb_xlsxwriter
                        GTest::gtest GTest::gmock GTest::gtest_main)
  # The export tests read their files back with python3 scripts beside them.
  target_compile_definitions(test_statistics PRIVATE
                             HB_TEST_SOURCE_DIR="${PROJECT_SOURCE_DIR}/tests")
  gtest_discover_tests(test_statistics DISCOVERY_TIMEOUT 60 PROPERTIES LABELS native)
endif()

if(HB_BENCH AND NOT HB_WINDOWS)
  find_package(benchmark REQUIRED)
  add_executable(hb_stats_bench ${PROJECT_SOURCE_DIR}/bench/statistics/pivot_bench.cpp
                 $<TARGET_OBJECTS:hb_common> $<TARGET_OBJECTS:hb_diag>
                 $<TARGET_OBJECTS:hb_settings> $<TARGET_OBJECTS:hb_calendar>
                 $<TARGET_OBJECTS:hb_reporting> $<TARGET_OBJECTS:hb_store>
                 $<TARGET_OBJECTS:hb_statistics>)
  target_include_directories(hb_stats_bench PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
  target_link_libraries(hb_stats_bench PRIVATE hb_sqlite3 ${HB_ODBC_LIBS} hb_xlsxwriter
                        benchmark::benchmark benchmark::benchmark_main)
endif()
