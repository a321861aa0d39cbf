# hb_export_sample: writes a sample report's exports (CSV, XLSX, HTML) into a
# folder. Native: scripts/export-screenshot.sh renders its page with headless
# Chromium. Windows: the CTest test wine.exports runs it under Wine and reads
# the files back on the host (tests/exports/check_exports.sh, Debian's
# python3-openpyxl), which proves the cross-built libxlsxwriter.
if(NOT HB_HAVE_XLSXWRITER OR (NOT HB_WINDOWS AND NOT HB_TESTS))
  return()
endif()
add_executable(hb_export_sample ${PROJECT_SOURCE_DIR}/tests/exports/hb_export_sample.cpp
               $<TARGET_OBJECTS:hb_reporting>)
target_include_directories(hb_export_sample PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                           ${PROJECT_SOURCE_DIR}/tests)
# hbcore: the portable areas the report's core builds on.
target_link_libraries(hb_export_sample PRIVATE hbcore hb_xlsxwriter)
if(HB_WINDOWS AND HB_WINE_TESTS)
  add_test(NAME wine.exports
           COMMAND bash ${PROJECT_SOURCE_DIR}/tests/exports/check_exports.sh ${HB_WINE_RUN}
                   $<TARGET_FILE:hb_export_sample> ${PROJECT_SOURCE_DIR}
                   ${CMAKE_BINARY_DIR}/export-check)
  set_tests_properties(wine.exports PROPERTIES LABELS wine TIMEOUT 120 RESOURCE_LOCK wineprefix)
endif()
