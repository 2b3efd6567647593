# What every target of ours is compiled with.
add_library(vor_warnings INTERFACE)
target_compile_options(vor_warnings INTERFACE -Wall -Wextra -Wconversion -Wshadow -Werror)

if(VOR_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
