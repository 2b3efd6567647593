vor_test(platform_test
  SOURCES platform_test.cpp platform_local_test.cpp
  LIBRARIES vorinfra)
