# vorcfg's parts in one process, over a captured platform; its pages with a gateway.
vor_test(shell_test
  SOURCES shell_test.cpp shell_rows_test.cpp
  LIBRARIES vorcfg_core device_mgmt vorinfra ${CMAKE_DL_LIBS})
set_target_properties(shell_test PROPERTIES ENABLE_EXPORTS ON)
add_dependencies(shell_test vorcfg vorsim)
# What the library sends, as vorsim shows it.
vor_test(shown_values_test
  SOURCES shown_values_test.cpp
  LIBRARIES vorcfg_core device_mgmt vorinfra ${CMAKE_DL_LIBS})
set_target_properties(shown_values_test PROPERTIES ENABLE_EXPORTS ON)
add_dependencies(shown_values_test vorsim)
