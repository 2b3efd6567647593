# Compiler options of every target. Warnings are errors in our presets only, and a project that includes this one uses
# its own.
add_library(vor_warnings INTERFACE)
if(PROJECT_IS_TOP_LEVEL)
  target_compile_options(vor_warnings INTERFACE -Wall -Wextra -Wconversion -Wshadow
    # gcc 12 reports overlaps in std::string's operator+ that do not exist
    $<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
endif()

if(VOR_SANITIZE)
  set(sanitizers_address address,undefined)
  set(sanitizers_thread thread)
  set(sanitizers_fuzzer fuzzer-no-link,address,undefined)
  if(NOT DEFINED sanitizers_${VOR_SANITIZE})
    message(FATAL_ERROR "VOR_SANITIZE must be address, thread or fuzzer, not \"${VOR_SANITIZE}\"")
  endif()
  set(sanitizers ${sanitizers_${VOR_SANITIZE}})
  add_compile_options(-fsanitize=${sanitizers} -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${sanitizers})
endif()
