# libxlsxwriter for the report's XLSX export, as the imported target
# hb_xlsxwriter:
#   native   Debian's libxlsxwriter-dev (pkg-config xlsxwriter)
#   Windows  a static library cross-built with MinGW-w64 from Debian's source
#            package by scripts/third-party.sh (build/third_party/xlsxwriter/
#            <x64|x86>), linked with Debian's MinGW zlib (libz-mingw-w64-dev)
# When the Windows library has not been built, the XLSX export is left out of
# hb_reporting (a program calling writeXlsx then fails to link, naming it).
add_library(hb_xlsxwriter INTERFACE)
if(HB_WINDOWS)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(hb_xlsx_arch x86)
  else()
    set(hb_xlsx_arch x64)
  endif()
  set(HB_XLSXWRITER_DIR ${PROJECT_SOURCE_DIR}/build/third_party/xlsxwriter/${hb_xlsx_arch}
      CACHE PATH "libxlsxwriter cross-built for this architecture (scripts/third-party.sh)")
  if(EXISTS ${HB_XLSXWRITER_DIR}/lib/libxlsxwriter.a)
    set(HB_HAVE_XLSXWRITER ON)
    target_include_directories(hb_xlsxwriter INTERFACE ${HB_XLSXWRITER_DIR}/include)
    # Static zlib from the MinGW sysroot (libz-mingw-w64-dev).
    target_link_libraries(hb_xlsxwriter INTERFACE ${HB_XLSXWRITER_DIR}/lib/libxlsxwriter.a
                          -l:libz.a)
  else()
    set(HB_HAVE_XLSXWRITER OFF)
    message(WARNING "libxlsxwriter for ${hb_xlsx_arch} is not built (scripts/third-party.sh "
                    "xlsxwriter ${hb_xlsx_arch}): the XLSX export is left out of this build")
  endif()
else()
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(HB_XLSX REQUIRED IMPORTED_TARGET xlsxwriter)
  set(HB_HAVE_XLSXWRITER ON)
  target_link_libraries(hb_xlsxwriter INTERFACE PkgConfig::HB_XLSX)
endif()
