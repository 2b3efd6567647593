# What every target of ours is compiled with. Our presets make errors of warnings, other builds do not, and a project
# that takes this one in has warnings of its own.
add_library(vor_warnings INTERFACE)
if(PROJECT_IS_TOP_LEVEL)
  target_compile_options(vor_warnings INTERFACE -Wall -Wextra -Wconversion -Wshadow
    # gcc 12 sees overlaps in std::string's operator+ where there are none
    $<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
endif()

if(VOR_SANITIZE)
  set(sanitizers_address address,undefined)
  set(sanitizers_thread thread)
  set(sanitizers_fuzzer fuzzer-no-link,address,undefined)
  if(NOT DEFINED sanitizers_${VOR_SANITIZE})
    message(FATAL_ERROR "VOR_SANITIZE is \"${VOR_SANITIZE}\": must be address, thread or fuzzer")
  endif()
  set(sanitizers ${sanitizers_${VOR_SANITIZE}})
  add_compile_options(-fsanitize=${sanitizers} -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${sanitizers})
endif()
