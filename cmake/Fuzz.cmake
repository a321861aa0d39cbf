# The libFuzzer targets of fuzz/: one executable per fuzz/*_fuzz.cpp, linked
# with the parts of the portable library that hold the parsers (common,
# diagnostics and languages, settings and metadata; the long-property target
# also with the simulated Outlook). Leaving out the rest keeps the coverage
# map small, and libFuzzer walks that map after every run. Built by the fuzz preset (clang, HB_FUZZ=ON);
# scripts/fuzz.sh runs them over their seed corpora in fuzz/corpus/<name>.
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  message(FATAL_ERROR "HB_FUZZ needs clang (libFuzzer): use the fuzz preset")
endif()

file(GLOB hb_fuzz_srcs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/fuzz/*_fuzz.cpp)
set(HB_FUZZ_TARGETS)
foreach(src IN LISTS hb_fuzz_srcs)
  get_filename_component(name ${src} NAME_WE)
  add_executable(${name} ${src})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  target_sources(${name} PRIVATE $<TARGET_OBJECTS:hb_common> $<TARGET_OBJECTS:hb_diag>
                                 $<TARGET_OBJECTS:hb_settings>)
  if(name STREQUAL "long_property_fuzz")
    target_sources(${name} PRIVATE $<TARGET_OBJECTS:hb_sim>)
  endif()
  list(APPEND HB_FUZZ_TARGETS ${name})
endforeach()
add_custom_target(hb_fuzz DEPENDS ${HB_FUZZ_TARGETS})
