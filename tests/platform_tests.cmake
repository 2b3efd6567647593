vor_test(platform_test
  SOURCES platform_test.cpp platform_local_test.cpp
  LIBRARIES vorinfra)

# Built alone in the preset thread.
vor_test(thread_test AGAINST_THE_CLOCK SOURCES thread_test.cpp LIBRARIES vorinfra)
