# What every target of ours is compiled with. Our presets make errors of warnings, other builds do not, and a project
# that takes this one in has warnings of its own.
add_library(vor_warnings INTERFACE)
if(PROJECT_IS_TOP_LEVEL)
  target_compile_options(vor_warnings INTERFACE -Wall -Wextra -Wconversion -Wshadow
    # gcc 12 sees overlaps in std::string's operator+ where there are none
    $<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
endif()

if(VOR_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
