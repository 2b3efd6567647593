# The collection in ansible/, with the tools of this build. It is the same in every preset: one of them tests it.
if(NOT CMAKE_BUILD_TYPE STREQUAL Release)
  return()
endif()
foreach(tool IN ITEMS ansible-playbook ansible-lint yamllint mypy flake8)
  find_program(TOOL_${tool} ${tool} PATHS /usr/bin)
  mark_as_advanced(TOOL_${tool})
  if(NOT TOOL_${tool})
    list(APPEND missing ${tool})
  endif()
endforeach()
if(missing)
  message(STATUS "device_mgmt: tests of ansible/ are left out without: ${missing}")
endif()

if(TOOL_ansible-playbook)
  add_test(NAME ansible_five_gateways
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/ansible/test ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR})
  set_tests_properties(ansible_five_gateways PROPERTIES TIMEOUT 300)
endif()
if(NOT missing)
  add_test(NAME ansible_lint
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/ansible/lint ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_BINARY_DIR}/ansible_lint)
endif()
