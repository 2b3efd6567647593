# The library's own tests: the real libdevice_mgmt.so on a fake platform.

add_library(fake_vorinfra SHARED
  fake_vorinfra/messages.cpp
  fake_vorinfra/system.cpp
  fake_vorinfra/text.cpp
  ${PROJECT_SOURCE_DIR}/platform/wrappers.cpp)
# Under the platform's name, so that the library binds to it; first on the test's path, so that it is found.
set_target_properties(fake_vorinfra PROPERTIES
  OUTPUT_NAME vorinfra
  LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/fake
  CXX_VISIBILITY_PRESET default)
target_include_directories(fake_vorinfra PUBLIC ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(fake_vorinfra PRIVATE vor_warnings)

file(GLOB call_tables CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/calls/*.cpp)
add_executable(library_test
  ${call_tables}
  common_test.cpp
  cpp_front_end_test.cpp
  konfd_talk_test.cpp
  konfd_test.cpp)
# Two libraries bear the platform's name: the path's order is ours to say, not CMake's to work out.
set_target_properties(library_test PROPERTIES SKIP_BUILD_RPATH ON)
target_link_options(library_test PRIVATE
  LINKER:-rpath,${CMAKE_CURRENT_BINARY_DIR}/fake LINKER:-rpath,$<TARGET_FILE_DIR:device_mgmt>)
vor_precompile(library_test REUSE_FROM test_headers)
target_link_libraries(library_test PRIVATE fake_vorinfra device_mgmt GTest::gtest_main vor_warnings ${CMAKE_DL_LIBS})

gtest_discover_tests(library_test DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 60 LABELS library_test)
add_test(NAME library_exports
  COMMAND ${CMAKE_COMMAND} -D NM=${CMAKE_NM} -D READELF=${CMAKE_READELF} -D LIBRARY=$<TARGET_FILE:device_mgmt>
          -D INCLUDE=${PROJECT_SOURCE_DIR}/include -D EXPORTS=${PROJECT_SOURCE_DIR}/src/exports.map
          -D TESTS=${CMAKE_CURRENT_SOURCE_DIR} -D SANITIZED=${VOR_SANITIZE}
          -P ${CMAKE_CURRENT_SOURCE_DIR}/exported_symbols.cmake)
add_test(NAME bindings COMMAND /usr/bin/python3 ${PROJECT_SOURCE_DIR}/scripts/bindings --check)
add_test(NAME library_refuses_frames
  COMMAND ${CMAKE_COMMAND} -D COMPILER=${CMAKE_CXX_COMPILER} -D SOURCE=${PROJECT_SOURCE_DIR}
          -D PLACE=${CMAKE_CURRENT_BINARY_DIR}/refused_frames -P ${CMAKE_CURRENT_SOURCE_DIR}/refused_frames.cmake)
add_test(NAME header_languages
  COMMAND ${CMAKE_COMMAND} -D CC=${CMAKE_C_COMPILER} -D CXX=${CMAKE_CXX_COMPILER} -D INCLUDE=${PROJECT_SOURCE_DIR}/include
          -P ${CMAKE_CURRENT_SOURCE_DIR}/languages.cmake)

# The rows of its tests, for those that make the calls against vorsim.
list(FILTER call_tables EXCLUDE REGEX "/(calls|texts).cpp$")
add_library(rows_alone OBJECT ${call_tables} rows_alone.cpp)
target_compile_definitions(rows_alone PRIVATE ROWS_ALONE)
target_include_directories(rows_alone PUBLIC ${CMAKE_CURRENT_SOURCE_DIR} PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(rows_alone PRIVATE GTest::gtest vor_warnings)
# position independent as a program's objects are, so that the programs' precompiled headers serve
set_target_properties(rows_alone PROPERTIES POSITION_INDEPENDENT_CODE OFF)
target_compile_options(rows_alone PRIVATE -fPIE)
vor_precompile(rows_alone REUSE_FROM test_headers)
