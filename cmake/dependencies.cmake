# GoogleTest, nlohmann-json and libfmt, as Debian's packages bring them.

# Headers that serve any processor, out of the native include directory.
set(third_party ${CMAKE_BINARY_DIR}/third_party)
function(vor_take_headers name)
  file(MAKE_DIRECTORY ${third_party})
  file(CREATE_LINK /usr/include/${name} ${third_party}/${name} SYMBOLIC)
endfunction()

if(CMAKE_CROSSCOMPILING)
  # The package holds GoogleTest's sources.
  set(INSTALL_GTEST OFF CACHE INTERNAL "")
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  if(NOT TARGET GTest::gtest_main)
    add_library(GTest::gtest ALIAS gtest)
    add_library(GTest::gmock ALIAS gmock)
    add_library(GTest::gtest_main ALIAS gtest_main)
  endif()
  vor_take_headers(nlohmann)
  add_library(nlohmann_json INTERFACE)
  target_include_directories(nlohmann_json SYSTEM INTERFACE ${third_party})
  add_library(nlohmann_json::nlohmann_json ALIAS nlohmann_json)
else()
  find_package(GTest REQUIRED)
  find_package(nlohmann_json REQUIRED)
endif()
include(GoogleTest)

vor_take_headers(fmt)
add_library(fmt STATIC ${CMAKE_CURRENT_LIST_DIR}/fmt.cpp)
target_compile_features(fmt PUBLIC cxx_std_20)
target_include_directories(fmt SYSTEM PUBLIC ${third_party})
add_library(fmt::fmt ALIAS fmt)
