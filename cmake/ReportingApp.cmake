# HBReporting.exe (apps/reporting), included at the end of cmake/Windows.cmake.
# The add-in's Report button starts it from its own folder, so it is built
# into the build tree's root next to HBAddin.dll and the settings program.
#
#   hb_reporting   the portable core (src/reporting, an hb_area of
#                  cmake/HbTargets.cmake, tested natively)
#   HBReporting    the program: apps/reporting (the command line's main and
#                  the parts bound together, the window of hb_report_ui) over
#                  the portable core, the Win32 platform and the COM client

set(hb_reporting_dir ${PROJECT_SOURCE_DIR}/apps/reporting)
add_executable(HBReporting WIN32 ${hb_reporting_dir}/ReportMain.cpp
               ${hb_reporting_dir}/ReportParts.cpp ${hb_reporting_dir}/ReportingApp.rc
               $<TARGET_OBJECTS:hb_reporting> $<TARGET_OBJECTS:hb_store>
               $<TARGET_OBJECTS:hb_statistics>)
target_include_directories(HBReporting PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                           ${hb_reporting_dir} ${CMAKE_BINARY_DIR}/generated)
target_compile_definitions(HBReporting PRIVATE ${HB_WIN_DEFS})
target_link_options(HBReporting PRIVATE -municode)
# The window (cmake/ReportWindow.cmake), the stores' libraries
# (cmake/RecordStores.cmake) and the XLSX writer (cmake/Xlsxwriter.cmake).
target_link_libraries(HBReporting PRIVATE hb_report_ui hb_win32 hbcore hb_sqlite3 ${HB_ODBC_LIBS}
                      hb_xlsxwriter ${HB_WIN_LIBS})
set_target_properties(HBReporting PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
set_source_files_properties(${hb_reporting_dir}/ReportingApp.rc PROPERTIES OBJECT_DEPENDS
  "${HB_LANGUAGE_FILE};${CMAKE_BINARY_DIR}/generated/hb_build.h;${hb_reporting_dir}/ReportingApp.manifest")
add_dependencies(HBReporting hb_language)

# The Windows tests run the program from their folder (its command line's
# errors and exit codes, with and without the stand-in Outlook).
if(TARGET hb_wintests)
  add_dependencies(hb_wintests HBReporting)
endif()
