# What vorsim makes of messages, of konfd's commands, and how it behaves as a process.
vor_test(simulator_test SOURCES simulator_test.cpp simulator_tables_test.cpp expectation_test.cpp LIBRARIES vorsim_core)
vor_test(faults_test SOURCES faults_test.cpp LIBRARIES vorsim_core)
vor_test(konfd_daemon_test SOURCES konfd_daemon_test.cpp LIBRARIES vorsim_core)
vor_test(vorsim_process_test SOURCES vorsim_process_test.cpp LIBRARIES vorsim_core)
add_dependencies(vorsim_process_test vorsim)

vor_test(neighbour_test AGAINST_THE_CLOCK SOURCES neighbour_test.cpp LIBRARIES vorinfra)
add_dependencies(neighbour_test vorcfg vorsim)

vor_test(vorsim_record_test AGAINST_THE_CLOCK SOURCES vorsim_record_test.cpp LIBRARIES vorsim_core)
add_dependencies(vorsim_record_test vorsim vorcfg)
vor_test(vorsim_attack_test AGAINST_THE_CLOCK SOURCES vorsim_attack_test.cpp LIBRARIES vorsim_core)
add_dependencies(vorsim_attack_test vorsim)

if(TARGET vorsim-page)
  vor_test(page_test AGAINST_THE_CLOCK SOURCES page_test.cpp LIBRARIES vorsim_core)
  add_dependencies(page_test vorsim vorsim-page vorcfg)
endif()

# Faults as clients feel them, and a manager that is not vorsim's.
vor_test(faults_felt_test AGAINST_THE_CLOCK SOURCES faults_felt_test.cpp LIBRARIES vorsim_core)
add_executable(manager ${PROJECT_SOURCE_DIR}/examples/manager.c)
target_include_directories(manager PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(manager PRIVATE vorinfra vor_warnings)
add_dependencies(faults_felt_test vorcfg vorsim manager)
vor_test(via_test AGAINST_THE_CLOCK SOURCES via_test.cpp LIBRARIES vorsim_core)
add_dependencies(via_test vorcfg vorsim manager)

vor_test(strips_felt_test AGAINST_THE_CLOCK SOURCES strips_felt_test.cpp LIBRARIES rows_alone device_mgmt vorsim_core)
add_dependencies(strips_felt_test vorsim)
