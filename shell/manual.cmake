# vorcfg prints its manual pages. Where neither this machine nor an emulator can run it, one is built for this machine,
# with the same headers.
if(NOT CMAKE_CROSSCOMPILING OR CMAKE_CROSSCOMPILING_EMULATOR)
  set(printer ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:vorcfg>)
  set(libraries $<TARGET_FILE_DIR:device_mgmt>:$<TARGET_FILE_DIR:device_mgmt::vorinfra>)
else()
  find_program(HOST_CXX NAMES c++ g++ clang++ NO_CMAKE_FIND_ROOT_PATH DOC "This machine's own C++ compiler")
  if(NOT HOST_CXX)
    message(STATUS "vorcfg: no manual pages: this machine can neither run it nor build one of its own, without c++")
    return()
  endif()
  set(native ${CMAKE_CURRENT_BINARY_DIR}/native)
  file(MAKE_DIRECTORY ${native}/headers)
  file(CREATE_LINK "${FMT_HEADERS_FOUND}/fmt" ${native}/headers/fmt SYMBOLIC)
  file(CREATE_LINK "${NLOHMANN_JSON_HEADERS_FOUND}/nlohmann" ${native}/headers/nlohmann SYMBOLIC)
  set(printed COMMAND ${CMAKE_COMMAND} -E env --unset=CC --unset=CXX --unset=CFLAGS --unset=CXXFLAGS --unset=CPPFLAGS
      --unset=LDFLAGS --unset=CMAKE_TOOLCHAIN_FILE
      ${CMAKE_COMMAND} -S ${PROJECT_SOURCE_DIR} -B ${native} -G ${CMAKE_GENERATOR} -DCMAKE_MAKE_PROGRAM=${CMAKE_MAKE_PROGRAM}
      -DCMAKE_CXX_COMPILER=${HOST_CXX} -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0 -DVOR_DEVELOPMENT=ON -DVOR_TESTS=OFF -DVOR_UNITY=ON
      -DVOR_PRECOMPILE=ON -DDEVICE_MGMT_INSTALL=OFF -DDEVICE_MGMT_MANUAL=OFF -DDEVICE_MGMT_PROMPT=OFF
      -DFMT_HEADERS=${native}/headers -DNLOHMANN_JSON_HEADERS=${native}/headers
    COMMAND ${CMAKE_COMMAND} --build ${native} --target vorcfg)
  set(printer ${native}/vorcfg)
  set(libraries ${native})
endif()

set(manual ${CMAKE_BINARY_DIR}/man)
foreach(page IN ITEMS vorcfg-batch.5 vorcfg-serve.7 vorcfg-site.7 vorcfg.1 vorsim.1 ${families})
  string(REGEX REPLACE ".*/(.*)[.]cpp" "vorcfg-\\1.1" page ${page})
  string(REGEX REPLACE ".*[.]" "man" folder ${page})
  list(APPEND printed COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${libraries}
    ${printer} manual ${page} > ${manual}/${folder}/${page})
  list(APPEND pages ${manual}/${folder}/${page})
endforeach()
add_custom_command(OUTPUT ${pages}
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${manual}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${manual}/man1 ${manual}/man5 ${manual}/man7
  ${printed}
  DEPENDS vorcfg
  COMMENT "Printing the manual pages"
  VERBATIM)
add_custom_target(manual ALL DEPENDS ${pages})
