# The collection in ansible/: it is the same everywhere, so it is tested in one build.
if(NOT VOR_SANITIZE AND NOT CMAKE_CROSSCOMPILING)
  set(missing)
  foreach(tool IN ITEMS ansible-playbook ansible-lint yamllint mypy flake8)
    find_program(TOOL_${tool} ${tool} PATHS /usr/bin)
    mark_as_advanced(TOOL_${tool})
    if(NOT TOOL_${tool})
      list(APPEND missing ${tool})
    endif()
  endforeach()
  if(missing)
    list(JOIN missing ", " missing)
    message(STATUS "The collection for Ansible is not tested: there is no ${missing}")
  else()
    add_test(NAME ansible_five_gateways
      COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/ansible/test ${PROJECT_SOURCE_DIR} ${CMAKE_BINARY_DIR})
    add_test(NAME ansible_commission
      COMMAND ${PROJECT_SOURCE_DIR}/scripts/fleet --quick --tools ${CMAKE_BINARY_DIR} 2)
    add_test(NAME ansible_lint
      COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/ansible/lint ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_BINARY_DIR}/ansible_lint)
    set_tests_properties(ansible_five_gateways ansible_commission ansible_lint PROPERTIES TIMEOUT 300)
  endif()
endif()
