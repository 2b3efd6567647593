# vorcfg's parts in one process, over a captured platform; its pages with a gateway.
vor_test(shell_test
  SOURCES shell_test.cpp shell_rows_test.cpp settings_test.cpp description_test.cpp
  LIBRARIES vorcfg_core vorsim_core device_mgmt vorinfra ${CMAKE_DL_LIBS})
set_target_properties(shell_test PROPERTIES ENABLE_EXPORTS ON)
add_dependencies(shell_test vorcfg vorcfg-page vorsim)

# vorcfg at a terminal: its prompt, and its completion in the shells themselves.
vor_test(keyboard_test SOURCES keyboard_test.cpp)
add_dependencies(keyboard_test vorcfg vorsim)
if(VORCFG_EDITED)
  target_compile_definitions(keyboard_test PRIVATE VOR_EDITED)
endif()

if(TARGET manual)
  target_compile_definitions(keyboard_test PRIVATE VOR_MANUAL="${CMAKE_BINARY_DIR}/man")
  add_dependencies(keyboard_test manual)
endif()

# Its journal, over both tools as processes.
vor_test(site_test AGAINST_THE_CLOCK SOURCES site_test.cpp LIBRARIES vor_text)
add_dependencies(site_test vorcfg vorsim)

# Its journal, with every fault at every point, over a gateway that knows the truth.
vor_test(walk_test SOURCES walk_test.cpp LIBRARIES vorcfg_core device_mgmt vorinfra ${CMAKE_DL_LIBS})
set_target_properties(walk_test PROPERTIES ENABLE_EXPORTS ON)
if(VOR_SANITIZE OR CMAKE_CROSSCOMPILING)
  target_compile_definitions(walk_test PRIVATE VOR_WALK="1,1,1") # slower by far
endif()

# What the library sends, as vorsim shows it.
vor_test(shown_values_test
  SOURCES shown_values_test.cpp
  LIBRARIES vorcfg_core device_mgmt vorinfra ${CMAKE_DL_LIBS})
set_target_properties(shown_values_test PROPERTIES ENABLE_EXPORTS ON)
add_dependencies(shown_values_test vorsim)
