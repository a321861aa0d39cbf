# The stand-in Outlook (included at the end of cmake/Windows.cmake):
#
#   hb_standin       standin/*.cpp: a Windows program that loads HBAddin.dll
#                    through its registration, as Outlook does, and drives it
#                    with the simulated Outlook served over real COM
#   hb_standintests  tests/win/Standin*WinTest.cpp alone, for quick runs (the
#                    same tests are part of hb_wintests)
set(hb_standin_rc ${CMAKE_BINARY_DIR}/generated/hb_standin.rc)
# The host serves Office's task pane factory from HBAddin's type library.
file(CONFIGURE OUTPUT ${hb_standin_rc} CONTENT "1 TYPELIB \"HBAddin.tlb\"\n")
set_source_files_properties(${hb_standin_rc} PROPERTIES OBJECT_DEPENDS ${hb_gen}/HBAddin.tlb)
file(GLOB hb_standin_srcs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/standin/*.cpp)
add_executable(hb_standin ${hb_standin_srcs} ${hb_standin_rc} $<TARGET_OBJECTS:hb_sim>)
target_include_directories(hb_standin PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                           ${PROJECT_SOURCE_DIR}/tests
                           ${hb_gen})
target_link_libraries(hb_standin PRIVATE hb_win32 hbcore ${HB_WIN_LIBS})
target_link_options(hb_standin PRIVATE -municode)
add_dependencies(hb_standin hb_idl)
# The session presses Settings, Report and Statistics: the add-in starts the
# settings program, the report program and Cubelens from its folder
# (Cubelens is left out without libxlsxwriter, cmake/StatisticsApp.cmake).
add_dependencies(hb_standin HBPersonalSettingsSingle HBReporting)
if(HB_HAVE_XLSXWRITER)
  add_dependencies(hb_standin Cubelens)
endif()

# What a run of the stand-in sets up around its Outlook, and its Application
# served to other processes: the end-to-end benchmark and the tests that
# register the stand-in as Outlook's local server share these.
set(hb_standin_served ${PROJECT_SOURCE_DIR}/standin/HostSetup.cpp
    ${PROJECT_SOURCE_DIR}/standin/OutlookServer.cpp ${PROJECT_SOURCE_DIR}/standin/RibbonHost.cpp
    ${PROJECT_SOURCE_DIR}/standin/ChildProgram.cpp)
if(HB_WIN_TESTS)
  file(GLOB hb_standintest_srcs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/win/Standin*WinTest.cpp)
  if(hb_standintest_srcs)
    add_executable(hb_standintests ${hb_standintest_srcs} ${hb_standin_served}
                   $<TARGET_OBJECTS:hb_sim>)
    target_include_directories(hb_standintests PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                               ${PROJECT_SOURCE_DIR}/tests ${hb_gen})
    target_link_libraries(hb_standintests PRIVATE hb_win32 hbcore gtest gtest_main ${HB_WIN_LIBS})
    add_dependencies(hb_standintests hb_standin HBAddin)
  endif()
endif()
# The add-in end to end under Wine, timed (run by hand, not a test).
add_executable(hb_e2ebench ${PROJECT_SOURCE_DIR}/bench/win/hb_e2ebench.cpp
               ${PROJECT_SOURCE_DIR}/standin/LoadedAddins.cpp
               ${PROJECT_SOURCE_DIR}/standin/TaskPaneFactory.cpp
               ${hb_standin_served} ${hb_standin_rc} $<TARGET_OBJECTS:hb_sim>)
target_include_directories(hb_e2ebench PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                           ${PROJECT_SOURCE_DIR}/tests/win ${hb_gen})
target_link_libraries(hb_e2ebench PRIVATE hb_win32 hbcore ${HB_WIN_LIBS})
add_dependencies(hb_e2ebench hb_idl HBAddin)
# The report program end to end across the process boundary, timed (run by
# hand, not a test): it serves a calendar of 100,000 appointments.
add_executable(hb_reportbench ${PROJECT_SOURCE_DIR}/bench/win/hb_reportbench.cpp
               ${PROJECT_SOURCE_DIR}/bench/support/BigCalendar.cpp
               ${PROJECT_SOURCE_DIR}/standin/LoadedAddins.cpp
               ${PROJECT_SOURCE_DIR}/standin/TaskPaneFactory.cpp ${hb_standin_served}
               ${hb_standin_rc} $<TARGET_OBJECTS:hb_sim>)
target_include_directories(hb_reportbench PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                           ${PROJECT_SOURCE_DIR}/tests/win ${hb_gen})
target_link_libraries(hb_reportbench PRIVATE hb_win32 hbcore ${HB_WIN_LIBS})
target_link_options(hb_reportbench PRIVATE -municode)
add_dependencies(hb_reportbench hb_idl HBAddin HBReporting)

# The end-to-end tests of hb_wintests run hb_standin.exe from their folder.
add_dependencies(hb_wintests hb_standin)
target_sources(hb_wintests PRIVATE ${hb_standin_served})
