# The report's record stores: SQLite compiled from its single-file source
# (fetched and checked by scripts/third-party.sh, never kept in the tree) and
# ODBC (unixODBC natively, Windows' odbc32 in the MinGW builds).
enable_language(C)

include(${PROJECT_SOURCE_DIR}/cmake/ThirdParty.cmake)
hb_third_party(sqlite sqlite3.c HB_SQLITE_DIR "The checked SQLite source (sqlite3.c, sqlite3.h)")

# Built once per tree, optimised and without the sanitizers or the project's
# warning flags, whatever the preset: it is third-party code that is only
# ever called, and at -O0 with ASan an export would be several times slower.
add_library(hb_sqlite3 STATIC ${HB_SQLITE_DIR}/sqlite3.c)
set_target_properties(hb_sqlite3 PROPERTIES COMPILE_OPTIONS "-O2" POSITION_INDEPENDENT_CODE ON)
target_compile_definitions(hb_sqlite3 PRIVATE
  SQLITE_THREADSAFE=1           # one connection per store, stores may live on any thread
  SQLITE_DQS=0                  # double quotes are identifiers, never strings
  SQLITE_DEFAULT_MEMSTATUS=0
  SQLITE_DEFAULT_WAL_SYNCHRONOUS=1
  SQLITE_OMIT_LOAD_EXTENSION    # no extension loading (and no libdl)
  SQLITE_OMIT_DEPRECATED
  SQLITE_OMIT_SHARED_CACHE
  SQLITE_LIKE_DOESNT_MATCH_BLOBS
  SQLITE_USE_ALLOCA)
target_include_directories(hb_sqlite3 SYSTEM PUBLIC ${HB_SQLITE_DIR})
if(NOT HB_WINDOWS)
  find_package(Threads REQUIRED)
  target_link_libraries(hb_sqlite3 PUBLIC Threads::Threads m)
endif()

# Windows' odbc32 by name: the imported target of FindODBC would make the
# linker switch back to dynamic libraries (-Bdynamic) after it, and the
# programs would then need the MinGW run-time DLLs.
if(HB_WINDOWS)
  set(HB_ODBC_LIBS odbc32)
else()
  find_package(ODBC REQUIRED)
  set(HB_ODBC_LIBS ODBC::ODBC)
endif()

# SqliteStore, OdbcStore and the factory, apart from hb_reporting so that
# what links the portable core alone needs neither SQLite nor ODBC.
hb_area(hb_store FILES src/reporting/SqliteStore.cpp src/reporting/OdbcStore.cpp
        src/reporting/RecordStores.cpp DEPS hb_sqlite3 ${HB_ODBC_LIBS})

# The private PostgreSQL server of a build tree's tests, in ${HB_PG_DIR}: the
# ctest fixture hb_pg, whose setup test starts it and whose cleanup test stops
# it after the last test that requires it, failed or not.
set(HB_PG_DIR ${CMAKE_BINARY_DIR}/pg)
function(hb_store_pg_fixture label)
  add_test(NAME store_pg_start COMMAND bash ${PROJECT_SOURCE_DIR}/scripts/pg-cluster.sh start
           ${HB_PG_DIR})
  add_test(NAME store_pg_stop COMMAND bash ${PROJECT_SOURCE_DIR}/scripts/pg-cluster.sh stop
           ${HB_PG_DIR})
  set_tests_properties(store_pg_start PROPERTIES FIXTURES_SETUP hb_pg LABELS ${label} TIMEOUT 120)
  set_tests_properties(store_pg_stop PROPERTIES FIXTURES_CLEANUP hb_pg LABELS ${label} TIMEOUT 60)
endfunction()

# test_store: the store suite, run against SQLite files and against a private
# PostgreSQL server that a ctest fixture starts (scripts/pg-cluster.sh) and
# stops again after the last test that needs it, failed or not. The server's
# connection text is written to ${HB_PG_DIR}/connection.txt.
if(HB_TESTS AND NOT HB_WINDOWS)
  find_package(GTest REQUIRED)
  include(GoogleTest)
  enable_testing()
  file(GLOB store_test_srcs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/store/*.cpp)
  add_executable(test_store ${store_test_srcs} $<TARGET_OBJECTS:hb_common> $<TARGET_OBJECTS:hb_store>)
  target_include_directories(test_store PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                             ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(test_store PRIVATE hb_sqlite3 ${HB_ODBC_LIBS} GTest::gtest GTest::gmock
                        GTest::gtest_main)
  gtest_discover_tests(test_store TEST_FILTER "-Odbc*" DISCOVERY_TIMEOUT 60
                       PROPERTIES LABELS native)
  gtest_discover_tests(test_store TEST_FILTER "Odbc*" DISCOVERY_TIMEOUT 60
                       PROPERTIES LABELS native FIXTURES_REQUIRED hb_pg
                       ENVIRONMENT "HB_PG_CONNECTION_FILE=${HB_PG_DIR}/connection.txt")
  hb_store_pg_fixture(native)
endif()

# hb_store_bench (preset bench): exporting and loading records.
if(HB_BENCH AND NOT HB_WINDOWS)
  find_package(benchmark REQUIRED)
  add_executable(hb_store_bench ${PROJECT_SOURCE_DIR}/bench/store/store_bench.cpp
                 $<TARGET_OBJECTS:hb_common> $<TARGET_OBJECTS:hb_store>)
  target_include_directories(hb_store_bench PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
  target_link_libraries(hb_store_bench PRIVATE hb_sqlite3 ${HB_ODBC_LIBS} benchmark::benchmark
                        benchmark::benchmark_main)
endif()
