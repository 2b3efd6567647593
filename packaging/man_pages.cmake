# A manual page in section 3 for each header, generated from it.
find_program(AWK awk)
if(NOT AWK)
  message(STATUS "device_mgmt: awk was not found; no manual pages in section 3")
  return()
endif()
set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md)
file(STRINGS ${PROJECT_SOURCE_DIR}/CHANGELOG.md date REGEX "^## [0-9.]+, " LIMIT_COUNT 1)
string(REGEX REPLACE "^## [0-9.]+, " "" date "${date}")
file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/device_mgmt.h
  ${PROJECT_SOURCE_DIR}/include/device_mgmt/*.h)
foreach(header IN LISTS headers)
  get_filename_component(stem ${header} NAME_WE)
  string(REGEX REPLACE "^(device_mgmt_)?device_mgmt$" "device_mgmt" page device_mgmt_${stem})
  set(page ${CMAKE_CURRENT_BINARY_DIR}/man3/${page}.3)
  add_custom_command(OUTPUT ${page}
    COMMAND ${AWK} -v "date=${date}" -f ${CMAKE_CURRENT_SOURCE_DIR}/man.awk ${header} > ${page}
    DEPENDS ${header} ${CMAKE_CURRENT_SOURCE_DIR}/man.awk
    VERBATIM)
  list(APPEND pages ${page})
endforeach()
file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/man3)
configure_file(${CMAKE_CURRENT_SOURCE_DIR}/device_mgmt.hpp.3.in ${CMAKE_CURRENT_BINARY_DIR}/man3/device_mgmt.hpp.3 @ONLY)
add_custom_target(device_mgmt_manual ALL DEPENDS ${pages})
install(FILES ${pages} ${CMAKE_CURRENT_BINARY_DIR}/man3/device_mgmt.hpp.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT development)
