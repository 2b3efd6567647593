# vorcfg's parts in one process, over a captured platform; its pages with a gateway.
vor_test(shell_test
  SOURCES shell_test.cpp shell_rows_test.cpp
  LIBRARIES vorcfg_core device_mgmt vorinfra ${CMAKE_DL_LIBS})
set_target_properties(shell_test PROPERTIES ENABLE_EXPORTS ON)
add_dependencies(shell_test vorcfg vorsim)

# Its journal, over both tools as processes.
vor_test(site_test SOURCES site_test.cpp LIBRARIES vor_text)
add_dependencies(site_test vorcfg vorsim)
