# nlohmann-json and libfmt, from the sysroot or from Debian's packages. Both are used as
# headers only, so this machine's headers are used if the sysroot has none.
function(vor_find_headers name probe whose)
  find_path(${name}_HEADERS ${probe} DOC "The folder of ${probe}")
  if(${name}_HEADERS)
    set(found "${${name}_HEADERS}")
  elseif(EXISTS /usr/include/${probe})
    # a link in a separate folder, so that none of this machine's other headers are found
    string(REGEX REPLACE "/.*" "" linked ${probe})
    set(found "${PROJECT_BINARY_DIR}/third_party")
    file(MAKE_DIRECTORY "${found}")
    file(CREATE_LINK /usr/include/${linked} "${found}/${linked}" SYMBOLIC)
  else()
    message(FATAL_ERROR "${whose} requires ${probe}; name its folder with -D${name}_HEADERS=...")
  endif()
  set(${name}_HEADERS_FOUND "${found}" PARENT_SCOPE)
endfunction()

vor_find_headers(NLOHMANN_JSON nlohmann/json.hpp vorcfg)
add_library(vor_nlohmann_json INTERFACE)
target_include_directories(vor_nlohmann_json SYSTEM INTERFACE "${NLOHMANN_JSON_HEADERS_FOUND}")

vor_find_headers(FMT fmt/format-inl.h vorcfg)
add_library(vor_fmt STATIC "${CMAKE_CURRENT_LIST_DIR}/fmt.cpp")
target_compile_features(vor_fmt PUBLIC cxx_std_20)
target_include_directories(vor_fmt SYSTEM PUBLIC "${FMT_HEADERS_FOUND}")
target_link_libraries(vor_fmt PRIVATE vor_hardening)

foreach(name IN ITEMS nlohmann_json::nlohmann_json fmt::fmt)
  if(NOT TARGET ${name}) # otherwise the including project provides it
    string(REGEX REPLACE ".*::" "vor_" ours ${name})
    add_library(${name} ALIAS ${ours})
  endif()
endforeach()
