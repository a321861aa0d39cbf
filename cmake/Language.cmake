# The LANGUAGE resource: the phrase table source data/phrases.tsv
# (UTF-8) becomes ${CMAKE_BINARY_DIR}/generated/LANGUAGE.utf16 (UTF-16LE, BOM
# FF FE, CR LF after every line) at build time. The Windows DLL embeds it as
# "LANGUAGE" CUSTOM; native tests read it through HB_LANGUAGE_FILE.
#
# Provides: HB_PHRASES_TSV, HB_LANGUAGE_FILE and the target hb_language.
set(HB_PHRASES_TSV ${PROJECT_SOURCE_DIR}/data/phrases.tsv)
set(HB_LANGUAGE_FILE ${CMAKE_BINARY_DIR}/generated/LANGUAGE.utf16)

add_custom_command(
  OUTPUT ${HB_LANGUAGE_FILE}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/generated
  COMMAND sh ${CMAKE_CURRENT_LIST_DIR}/phrases-to-utf16.sh ${HB_PHRASES_TSV} ${HB_LANGUAGE_FILE}
  DEPENDS ${HB_PHRASES_TSV} ${CMAKE_CURRENT_LIST_DIR}/phrases-to-utf16.sh
  COMMENT "Generating the LANGUAGE resource (UTF-16LE) from data/phrases.tsv"
  VERBATIM)
add_custom_target(hb_language ALL DEPENDS ${HB_LANGUAGE_FILE})

# Hands the generated file's path to a target as HB_LANGUAGE_FILE="...".
function(hb_use_language_file target)
  if(TARGET ${target})
    target_compile_definitions(${target} PRIVATE HB_LANGUAGE_FILE="${HB_LANGUAGE_FILE}")
    add_dependencies(${target} hb_language)
  endif()
endfunction()
