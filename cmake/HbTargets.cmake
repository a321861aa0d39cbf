# One object library per area of the portable code, so that each area builds
# and tests on its own. hbcore bundles them for the Windows DLL.
function(hb_area name)
  cmake_parse_arguments(A "" "" "DIRS;FILES;EXCLUDE;DEPS" ${ARGN})
  set(srcs)
  foreach(d IN LISTS A_DIRS)
    file(GLOB s CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${d}/*.cpp)
    list(APPEND srcs ${s})
  endforeach()
  foreach(f IN LISTS A_FILES)
    list(APPEND srcs ${PROJECT_SOURCE_DIR}/${f})
  endforeach()
  foreach(f IN LISTS A_EXCLUDE)
    list(REMOVE_ITEM srcs ${PROJECT_SOURCE_DIR}/${f})
  endforeach()
  if(NOT srcs)
    set(srcs ${PROJECT_SOURCE_DIR}/cmake/empty.cpp)
  endif()
  add_library(${name} OBJECT ${srcs})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
  target_compile_definitions(${name} PUBLIC HB_VERSION_MAJOR=${PROJECT_VERSION_MAJOR}
                             HB_VERSION_MINOR=${PROJECT_VERSION_MINOR}
                             HB_VERSION_PATCH=${PROJECT_VERSION_PATCH})
  if(A_DEPS)
    target_link_libraries(${name} PUBLIC ${A_DEPS})
  endif()
endfunction()

hb_area(hb_common   DIRS src/common src/platform src/platform/memory)
hb_area(hb_sim      DIRS sim                          DEPS hb_common)
# The Outlook access helpers serve the error reporter too, so they build
# with diagnostics.
hb_area(hb_diag     DIRS src/diagnostics src/languages FILES src/addin/modOutlookCode.cpp
        DEPS hb_common)
hb_area(hb_settings DIRS src/settings src/metadata     DEPS hb_diag)
# Reading the calendar: the report program reads it, and the add-in reads it
# for the report program inside Outlook's process.
hb_area(hb_calendar FILES src/reporting/OutlookCalendar.cpp src/reporting/CalendarTransfer.cpp
        src/reporting/AddinCalendar.cpp
        DEPS hb_common)
hb_area(hb_session  DIRS src/explorer src/inspector src/addin
        EXCLUDE src/addin/modOutlookCode.cpp DEPS hb_settings hb_calendar)
# The settings program's portable part (apps/settings; the dialog and the
# program itself are in cmake/SettingsApp.cmake).
hb_area(hb_settings_app FILES apps/settings/SettingsEditor.cpp apps/settings/SettingsStore.cpp
        apps/settings/SettingsTexts.cpp DEPS hb_settings)
# The report program's portable core (reading the calendar, the time rules,
# storage, aggregation, exports).
include(${PROJECT_SOURCE_DIR}/cmake/Xlsxwriter.cmake)
set(hb_reporting_excluded src/reporting/SqliteStore.cpp src/reporting/OdbcStore.cpp
    src/reporting/RecordStores.cpp src/reporting/OutlookCalendar.cpp
    src/reporting/CalendarTransfer.cpp src/reporting/AddinCalendar.cpp)
if(NOT HB_HAVE_XLSXWRITER)
  list(APPEND hb_reporting_excluded src/reporting/XlsxExport.cpp)
endif()
hb_area(hb_reporting DIRS src/reporting DEPS hb_settings hb_calendar hb_xlsxwriter
        EXCLUDE ${hb_reporting_excluded})
# Its record stores (SQLite, ODBC): hb_store, hb_sqlite3 and their tests.
include(${PROJECT_SOURCE_DIR}/cmake/RecordStores.cmake)
# The statistics program's core over them: hb_statistics, test_statistics.
include(${PROJECT_SOURCE_DIR}/cmake/Statistics.cmake)

# Everything portable in one static library (what the Windows DLL links).
add_library(hbcore STATIC $<TARGET_OBJECTS:hb_common> $<TARGET_OBJECTS:hb_diag>
            $<TARGET_OBJECTS:hb_settings> $<TARGET_OBJECTS:hb_calendar>
            $<TARGET_OBJECTS:hb_session>)
target_include_directories(hbcore PUBLIC ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})

if(HB_WINDOWS)
  include(${PROJECT_SOURCE_DIR}/cmake/Windows.cmake OPTIONAL)
  # The MSI package of what Windows.cmake built.
  include(${PROJECT_SOURCE_DIR}/cmake/Installer.cmake)
endif()

if(HB_TESTS AND NOT HB_WINDOWS)
  find_package(GTest REQUIRED)
  include(GoogleTest)
  enable_testing()
  # tests/<area>/*.cpp -> test_<area>, linked with the object libraries it needs.
  function(hb_test area)
    file(GLOB srcs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/${area}/*.cpp)
    if(NOT srcs)
      return()
    endif()
    set(objs)
    foreach(lib IN LISTS ARGN)
      list(APPEND objs $<TARGET_OBJECTS:${lib}>)
    endforeach()
    add_executable(test_${area} ${srcs} ${objs})
    target_include_directories(test_${area} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                               ${PROJECT_SOURCE_DIR}/tests)
    target_link_libraries(test_${area} PRIVATE GTest::gtest GTest::gmock GTest::gtest_main)
    gtest_discover_tests(test_${area} DISCOVERY_TIMEOUT 60 PROPERTIES LABELS native)
  endfunction()
  hb_test(common   hb_common)
  hb_test(sim      hb_common hb_sim)
  hb_test(diag     hb_common hb_sim hb_diag)
  hb_test(settings hb_common hb_sim hb_diag hb_settings)
  hb_test(session  hb_common hb_sim hb_diag hb_settings hb_calendar hb_session hb_settings_app)
  hb_test(settings-app hb_common hb_sim hb_diag hb_settings hb_settings_app)
  hb_test(reporting hb_common hb_sim hb_diag hb_settings hb_calendar hb_reporting)
  if(TARGET test_reporting)
    target_link_libraries(test_reporting PRIVATE hb_xlsxwriter)
    # The export tests read their files back with python3 scripts beside them.
    target_compile_definitions(test_reporting PRIVATE
                               HB_TEST_SOURCE_DIR="${PROJECT_SOURCE_DIR}/tests")
  endif()
endif()

include(${PROJECT_SOURCE_DIR}/cmake/ExportCheck.cmake)

if(HB_BENCH AND NOT HB_WINDOWS)
  find_package(benchmark REQUIRED)
  file(GLOB bench_srcs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/bench/*.cpp
       ${PROJECT_SOURCE_DIR}/bench/support/*.cpp)
  if(bench_srcs)
    add_executable(hb_bench ${bench_srcs} $<TARGET_OBJECTS:hb_common> $<TARGET_OBJECTS:hb_sim>
                   $<TARGET_OBJECTS:hb_diag> $<TARGET_OBJECTS:hb_settings>
                   $<TARGET_OBJECTS:hb_calendar> $<TARGET_OBJECTS:hb_session>
                   $<TARGET_OBJECTS:hb_reporting>)
    target_include_directories(hb_bench PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
    target_link_libraries(hb_bench PRIVATE benchmark::benchmark benchmark::benchmark_main)
    target_link_libraries(hb_bench PRIVATE hb_xlsxwriter)
  endif()
endif()
