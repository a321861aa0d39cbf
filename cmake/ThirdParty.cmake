# hb_third_party(WHAT FILE VAR DOC): the folder scripts/third-party.sh WHAT
# fetches and checks (into $HB_THIRD_PARTY_CACHE or its default cache), kept
# in the cache variable VAR; fetched again only when FILE is missing there.
set(HB_THIRD_PARTY_CACHE "$ENV{HB_THIRD_PARTY_CACHE}" CACHE PATH
    "Where fetched third-party sources are kept (empty: /var/cache/hourbook/third-party)")
function(hb_third_party what file var doc)
  if(${var} AND EXISTS "${${var}}/${file}")
    return()
  endif()
  set(cache_arg)
  if(HB_THIRD_PARTY_CACHE)
    set(cache_arg ${HB_THIRD_PARTY_CACHE})
  endif()
  execute_process(COMMAND bash ${PROJECT_SOURCE_DIR}/scripts/third-party.sh ${what} ${cache_arg}
                  OUTPUT_VARIABLE dir RESULT_VARIABLE rc OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT rc EQUAL 0 OR NOT EXISTS "${dir}/${file}")
    message(FATAL_ERROR "scripts/third-party.sh ${what} failed (${rc}): no ${file}")
  endif()
  set(${var} ${dir} CACHE PATH "${doc}" FORCE)
endfunction()
