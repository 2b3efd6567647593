# Writes files as texts of C++: cmake -D OUTPUT=FILE -D NAME=ARRAY -D SPACE=NAMESPACE -D FILES=FILE... -P built_in.cmake
set(text "// Made by the build.\n#pragma once\n\n#include \"text/built_in.hpp\"\n\nnamespace ${SPACE} {\n\n")
string(APPEND text "static constexpr vor::BuiltIn ${NAME}[] = {\n")
foreach(file IN LISTS FILES)
  get_filename_component(stem ${file} NAME_WLE)
  file(READ ${file} content)
  # a header's first line, for Doxygen alone
  string(REGEX REPLACE "^/[*][*]\n [*] @file" "/*" content "${content}")
  string(APPEND text "    {\"${stem}\", R\"text(${content})text\"},\n")
endforeach()
string(APPEND text "};\n\n} // namespace ${SPACE}\n")
file(WRITE ${OUTPUT} "${text}")
