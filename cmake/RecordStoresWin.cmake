# The record stores' tests under Wine (included by cmake/Windows.cmake with
# the Windows tests): hb_storewintests writes and reads SQLite files and
# reaches the private PostgreSQL server (the ctest fixture hb_pg, started on
# the host) through Wine's odbc32, which forwards to unixODBC and psqlODBC.
if(NOT HB_WIN_TESTS)
  return()
endif()
add_executable(hb_storewintests ${PROJECT_SOURCE_DIR}/tests/win/store/StoreWinTest.cpp
               $<TARGET_OBJECTS:hb_common> $<TARGET_OBJECTS:hb_store>)
target_include_directories(hb_storewintests PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                           ${PROJECT_SOURCE_DIR}/tests)
target_compile_definitions(hb_storewintests PRIVATE ${HB_WIN_DEFS})
target_link_libraries(hb_storewintests PRIVATE hb_sqlite3 ${HB_ODBC_LIBS} gtest ${HB_WIN_LIBS})
set_target_properties(hb_storewintests PROPERTIES CROSSCOMPILING_EMULATOR ${HB_WINE_RUN})

if(HB_WINE_TESTS)
  gtest_discover_tests(hb_storewintests TEST_PREFIX "wine.store." DISCOVERY_MODE PRE_TEST
                       TEST_FILTER "-WineOdbc*" DISCOVERY_TIMEOUT 120
                       PROPERTIES LABELS wine TIMEOUT 180 RESOURCE_LOCK wineprefix)
  # The server through Wine's odbc32, which hands the calls to the host's
  # unixODBC and psqlODBC of its own word size: only the 64-bit ones are
  # installed (the x86 Wine runs in an i386 root or multiarch side without
  # them), so the x86 build checks the SQLite side alone.
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    # Windows programs open the host's files through drive Z:.
    gtest_discover_tests(hb_storewintests TEST_PREFIX "wine.store." DISCOVERY_MODE PRE_TEST
                         TEST_FILTER "WineOdbc*" DISCOVERY_TIMEOUT 120
                         PROPERTIES LABELS wine TIMEOUT 180 RESOURCE_LOCK wineprefix
                         FIXTURES_REQUIRED hb_pg
                         ENVIRONMENT "HB_PG_CONNECTION_FILE=Z:${HB_PG_DIR}/connection.txt")
    hb_store_pg_fixture(wine)
  endif()
endif()
