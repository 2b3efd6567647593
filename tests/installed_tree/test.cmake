# Installs the build to a directory of its own, builds a front end against that
# alone, by CMake and (where there is one) by pkg-config, and runs it.
# Called with BUILD_DIR, SOURCE_DIR, PLACE, GENERATOR, C_COMPILER.
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGV " " command)
    message(FATAL_ERROR "${command}\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${PLACE})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PLACE}/usr)
run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${PLACE}/build -G ${GENERATOR} -DCMAKE_PREFIX_PATH=${PLACE}/usr
  -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_BUILD_RPATH=${PLACE}/usr/lib)
run(${CMAKE_COMMAND} --build ${PLACE}/build)
file(GLOB_RECURSE libraries ${PLACE}/usr/libdevice_mgmt.so.1)
list(GET libraries 0 library)
get_filename_component(libraries ${library} DIRECTORY)
set(ENV{LD_LIBRARY_PATH} ${libraries})
run(${PLACE}/build/front_end)

find_program(PKG_CONFIG NAMES pkgconf pkg-config)
if(PKG_CONFIG)
  # The file names the prefix of the build's configuration; the test's is elsewhere.
  set(ENV{PKG_CONFIG_PATH} ${libraries}/pkgconfig)
  execute_process(COMMAND ${PKG_CONFIG} --define-variable=prefix=${PLACE}/usr --cflags --libs --static device_mgmt
    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags)
  run(${C_COMPILER} ${SOURCE_DIR}/front_end.c ${flags} -o ${PLACE}/front_end)
  run(${PLACE}/front_end)
else()
  message(STATUS "no pkg-config: only the CMake package was tried")
endif()
file(REMOVE_RECURSE ${PLACE})
