# The Python package: it is the same everywhere, so it is tested in one build.
if(NOT VOR_SANITIZE AND NOT CMAKE_CROSSCOMPILING)
  set(python /usr/bin/python3)
  execute_process(COMMAND ${python} -c "import flake8, mypy, pytest" RESULT_VARIABLE lacks ERROR_QUIET)
  if(lacks)
    message(STATUS "The Python package is not tested: ${python} has no pytest, mypy or flake8")
  else()
    set(package ${PROJECT_SOURCE_DIR}/python)
    string(CONCAT environment "PATH=${CMAKE_BINARY_DIR}:$ENV{PATH};LD_LIBRARY_PATH=${CMAKE_BINARY_DIR};"
      "PYTHONPATH=${package};PYTHONDONTWRITEBYTECODE=1")
    add_test(NAME python COMMAND ${python} -m pytest -q -p no:cacheprovider tests WORKING_DIRECTORY ${package})
    add_test(NAME python_types COMMAND ${python} -m mypy --cache-dir ${CMAKE_CURRENT_BINARY_DIR}/mypy device_mgmt tests
      ../examples/back_end.py WORKING_DIRECTORY ${package})
    add_test(NAME python_style COMMAND ${python} -m flake8 . ../examples ../scripts/bindings WORKING_DIRECTORY ${package})
    set_tests_properties(python python_types python_style PROPERTIES TIMEOUT 120 ENVIRONMENT "${environment}")
  endif()
endif()
