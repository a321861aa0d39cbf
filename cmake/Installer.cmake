# The per-user MSI package of the add-in (installer/HBAddin.wxs), built by
# wixl (Debian: wixl, from msitools) for the build's architecture:
#
#   hb_msi   HBAddin-<version>-<x64|x86>.msi in the build tree's root, part
#            of the default build when wixl is found
#
# Everything the package says about the add-in comes from where the DLL takes
# it: the version from project() (the DLL's VERSIONINFO), the class, library
# and interface identifiers from src/win/HBAddin.idl, the names from
# src/common/Constants.h. The Windows tests (tests/win/InstallerWinTest.cpp)
# install and remove it under Wine and compare it with the DLL's own per-user
# registration.

# The tests ask Windows Installer which products are installed.
if(TARGET hb_wintests)
  target_link_libraries(hb_wintests PRIVATE msi)
endif()

find_program(HB_WIXL wixl DOC "wixl (Debian package wixl): builds the MSI packages")
if(NOT HB_WIXL)
  message(STATUS "wixl not found (Debian: apt-get install wixl): no MSI package")
  return()
endif()

if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(hb_msi_arch x64)
else()
  set(hb_msi_arch x86)
endif()

# One upgrade code for every version and both architectures: a package
# replaces any installed one of the add-in.
set(HB_MSI_UPGRADE_CODE 3D7A2F64-8B1C-4E59-A0D3-6F5E9C2B1A87)

# An identifier from HBAddin.idl: the uuid() in the attribute block right
# before "<kind> <name>".
function(hb_idl_uuid out kind name)
  file(READ ${PROJECT_SOURCE_DIR}/src/win/HBAddin.idl idl)
  if(NOT idl MATCHES "uuid\\(([0-9A-Fa-f-]+)\\)[^[{;]*${kind} ${name}[ \n{:]")
    message(FATAL_ERROR "HBAddin.idl: no uuid for ${kind} ${name}")
  endif()
  string(TOUPPER "{${CMAKE_MATCH_1}}" guid)
  set(${out} ${guid} PARENT_SCOPE)
endfunction()
hb_idl_uuid(hb_msi_designer coclass OHBAddinDesigner)
hb_idl_uuid(hb_msi_pane coclass Pane)
hb_idl_uuid(hb_msi_libid library HBAddin)
hb_idl_uuid(hb_msi_pane_iid interface IHBPane)

file(READ ${PROJECT_SOURCE_DIR}/src/common/Constants.h hb_constants)
foreach(name FriendlyName VendorWebAddress)
  if(NOT hb_constants MATCHES "k${name}\\[\\] = u\"([^\"]*)\"")
    message(FATAL_ERROR "Constants.h: no k${name}")
  endif()
  set(hb_msi_${name} ${CMAKE_MATCH_1})
endforeach()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/win/HBAddin.idl
             ${PROJECT_SOURCE_DIR}/src/common/Constants.h)

# hb_msi_package(TARGET OUTPUT VERSION [ALL]): a target building the package
# of the given version into OUTPUT.
function(hb_msi_package target output version)
  # Same-version packages (a rebuild, the other architecture) replace each
  # other too: the upgrade range ends below the next patch number.
  string(REGEX MATCH "^([0-9]+)\\.([0-9]+)\\.([0-9]+)" _ ${version})
  math(EXPR next_patch "${CMAKE_MATCH_3} + 1")
  set(upgrade_below ${CMAKE_MATCH_1}.${CMAKE_MATCH_2}.${next_patch})

  set(files $<TARGET_FILE:HBAddin>)
  set(programs HBAddin)
  # The programs beside the add-in, each as the package's variable for its
  # file (empty when the build has no such program).
  set(program_defines)
  foreach(entry IN ITEMS HBPersonalSettingsSingle:SettingsExe HBReporting:ReportingExe
                        Cubelens:StatisticsExe)
    string(REPLACE ":" ";" entry ${entry})
    list(GET entry 0 program)
    list(GET entry 1 variable)
    set(file_name "")
    if(TARGET ${program})
      list(APPEND files $<TARGET_FILE:${program}>)
      list(APPEND programs ${program})
      set(file_name $<TARGET_FILE_NAME:${program}>)
    endif()
    list(APPEND program_defines -D ${variable}=${file_name})
  endforeach()
  set(wxs ${PROJECT_SOURCE_DIR}/installer/HBAddin.wxs)
  # wixl takes the files by their names in its working directory, the build
  # tree's root, where the DLL and the settings and report programs are built.
  get_filename_component(output_dir ${output} DIRECTORY)
  add_custom_command(
    OUTPUT ${output}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${output_dir}
    COMMAND ${HB_WIXL} -a ${hb_msi_arch} -o ${output}
            -D Arch=${hb_msi_arch} -D Version=${version} -D UpgradeBelow=${upgrade_below}
            -D UpgradeCode=${HB_MSI_UPGRADE_CODE}
            -D FriendlyName=${hb_msi_FriendlyName} -D VendorWebAddress=${hb_msi_VendorWebAddress}
            -D DesignerClsid=${hb_msi_designer} -D PaneClsid=${hb_msi_pane}
            -D LibId=${hb_msi_libid} -D PaneIid=${hb_msi_pane_iid}
            -D AddinDll=$<TARGET_FILE_NAME:HBAddin> ${program_defines} ${wxs}
    DEPENDS ${wxs} ${files}
    WORKING_DIRECTORY ${CMAKE_BINARY_DIR}
    COMMENT "wixl: ${output}"
    VERBATIM)
  add_custom_target(${target} ${ARGN} DEPENDS ${output})
  # The file paths above only make the package older than the programs; the
  # targets must be built first, or a parallel build asks for the DLL before
  # its rule ran.
  add_dependencies(${target} ${programs})
endfunction()

set(HB_MSI_FILE ${CMAKE_BINARY_DIR}/HBAddin-${PROJECT_VERSION}-${hb_msi_arch}.msi)
hb_msi_package(hb_msi ${HB_MSI_FILE} ${PROJECT_VERSION} ALL)

# The Windows tests install an older package first to see the current one
# replace it.
if(TARGET hb_wintests)
  set(hb_msi_older HBAddin-older-${hb_msi_arch}.msi)
  hb_msi_package(hb_msi_older ${CMAKE_BINARY_DIR}/installer-test/${hb_msi_older} 1.0.0)
  add_dependencies(hb_wintests hb_msi hb_msi_older)
  set_source_files_properties(${PROJECT_SOURCE_DIR}/tests/win/InstallerWinTest.cpp PROPERTIES
    COMPILE_DEFINITIONS "HB_MSI_FILE=\"HBAddin-${PROJECT_VERSION}-${hb_msi_arch}.msi\";HB_MSI_OLDER_FILE=\"${hb_msi_older}\";HB_MSI_UPGRADE_CODE=\"${HB_MSI_UPGRADE_CODE}\"")
endif()
