# vor_precompile(TARGET HEADER...): reading these headers takes most of the target's compile time.
# vor_precompile(TARGET REUSE_FROM OTHER): uses those of a target with the same options.
# `scripts/lint all` compiles without them, so that missing includes are found.
function(vor_precompile target)
  if(NOT VOR_PRECOMPILE)
    return()
  endif()
  if(ARGV1 STREQUAL "REUSE_FROM")
    target_precompile_headers(${target} REUSE_FROM ${ARGV2})
    return()
  endif()
  foreach(header IN LISTS ARGN)
    target_precompile_headers(${target} PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:<${header}$<ANGLE-R>>")
  endforeach()
endfunction()
