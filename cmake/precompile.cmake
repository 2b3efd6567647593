# vor_precompile(TARGET HEADER...): reading these is most of what its C++ files take to compile.
# vor_precompile(TARGET REUSE_FROM OTHER): one compiled with the same options has them.
# A file's own includes are tried without them by `scripts/lint all`.
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
