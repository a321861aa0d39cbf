# HBPersonalSettingsSingle.exe (apps/settings), included at the end of
# cmake/Windows.cmake. The add-in starts it from its own folder, so it is
# built into the build tree's root next to HBAddin.dll.
#
#   hb_settings_app   the editing model and the store side (portable, an
#                     hb_area of cmake/HbTargets.cmake, tested natively)
#   hb_settings_ui    the Win32 dialog (used by the program and hb_wintests)
#   HBPersonalSettingsSingle   the program

set(hb_app_dir ${PROJECT_SOURCE_DIR}/apps/settings)

add_library(hb_settings_ui OBJECT ${hb_app_dir}/SettingsDialog.cpp)
target_include_directories(hb_settings_ui PUBLIC ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
target_compile_definitions(hb_settings_ui PUBLIC ${HB_WIN_DEFS})

add_executable(HBPersonalSettingsSingle WIN32 ${hb_app_dir}/SettingsMain.cpp
               ${hb_app_dir}/SettingsApp.rc)
target_include_directories(HBPersonalSettingsSingle PRIVATE ${PROJECT_SOURCE_DIR}/src
                           ${PROJECT_SOURCE_DIR} ${hb_app_dir} ${CMAKE_BINARY_DIR}/generated)
target_compile_definitions(HBPersonalSettingsSingle PRIVATE ${HB_WIN_DEFS})
target_link_options(HBPersonalSettingsSingle PRIVATE -municode)
target_link_libraries(HBPersonalSettingsSingle PRIVATE hb_settings_ui hb_settings_app hb_win32
                      hbcore ${HB_WIN_LIBS})
set_target_properties(HBPersonalSettingsSingle PROPERTIES RUNTIME_OUTPUT_DIRECTORY
                      ${CMAKE_BINARY_DIR})
set_source_files_properties(${hb_app_dir}/SettingsApp.rc PROPERTIES OBJECT_DEPENDS
  "${HB_LANGUAGE_FILE};${CMAKE_BINARY_DIR}/generated/hb_build.h;${hb_app_dir}/SettingsDialog.rc;${hb_app_dir}/SettingsResource.h;${hb_app_dir}/SettingsApp.manifest")
add_dependencies(HBPersonalSettingsSingle hb_language)

# The Windows tests (tests/win/SettingsApp*WinTest.cpp) open the dialog
# itself: they need its code and its template, not the program's other
# resources (hb_wintests has no version record of its own).
if(TARGET hb_wintests)
  target_sources(hb_wintests PRIVATE ${hb_app_dir}/SettingsDialog.rc)
  target_include_directories(hb_wintests PRIVATE ${hb_app_dir})
  target_link_libraries(hb_wintests PRIVATE hb_settings_ui hb_settings_app)
  add_dependencies(hb_wintests HBPersonalSettingsSingle)  # the tests start the program too
endif()
