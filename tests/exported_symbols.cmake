# The headers' declarations, exports.map, the library's symbols and the tests' rows are the same set of names.
#   cmake -D NM=nm -D READELF=readelf -D LIBRARY=libdevice_mgmt.so -D INCLUDE=include -D EXPORTS=exports.map -D TESTS=tests
#         [-D SANITIZED=ON] -P ...
cmake_minimum_required(VERSION 3.24)

# names(VARIABLE REGEX TEXT): what the regex's one group matches, everywhere in the text.
function(names variable regex text)
  string(REGEX MATCHALL "${regex}" matches "${text}")
  list(TRANSFORM matches REPLACE "${regex}" "\\1")
  list(REMOVE_DUPLICATES matches)
  set(${variable} ${matches} PARENT_SCOPE)
endfunction()

function(read variable)
  set(all "")
  foreach(file IN LISTS ARGN)
    file(READ ${file} text)
    string(REPLACE ";" "\n" text "${text}")
    string(APPEND all "\n${text}")
  endforeach()
  set(${variable} "${all}" PARENT_SCOPE)
endfunction()

# differ(LEFT NOT_RIGHT RIGHT): the names of the one list that the other lacks.
function(differ left what right)
  set(names ${${left}})
  list(REMOVE_ITEM names ${${right}})
  if(names)
    list(JOIN names "\n  " text)
    message(SEND_ERROR "${what}:\n  ${text}")
  endif()
endfunction()

file(GLOB headers ${INCLUDE}/device_mgmt/*.h)
read(text ${headers})
names(calls "\n[A-Za-z_0-9]+[*]* ([a-z_0-9]+)[(]" "${text}")
set(declared ${calls} vor_errno)

read(text ${EXPORTS})
names(listed "\n +([a-z_0-9]+)" "${text}")

execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
names(exported "[^\n]* [B-Zb-z] ([^@\n]+)[^\n]*" "${text}") # A is the version's own name

# A call has its row, or a test of its own where rows do not fit.
file(GLOB files ${TESTS}/calls/*.cpp ${TESTS}/common_test.cpp)
read(text ${files})
names(tested "CALL[(][ \n]*([a-z_0-9]+)[(]" "${text}")
file(GLOB files ${TESTS}/common_test.cpp ${TESTS}/konfd_test.hpp ${TESTS}/konfd*_test.cpp ${TESTS}/../fuzz/library/texts.cpp)
read(text ${files})
names(tested_alone "([a-z_0-9]+)[(]" "${text}")
list(APPEND tested ${tested_alone})

differ(declared "declared but not in exports.map" listed)
differ(listed "in exports.map but not declared" declared)
differ(declared "declared but not exported" exported)
differ(exported "exported but not declared" declared)
differ(calls "without a row in tests/calls" tested)

# The codes once more: where two are swapped, the assertions beside them are swapped as easily.
read(text ${INCLUDE}/device_mgmt/types.h)
foreach(code "DONE = 0" "REFUSED = -1" "UNDELIVERED = -3" "UNREADABLE = -4" "LATITUDE = -1001" "LONGITUDE = -1002"
    "TOO_MANY_SERVERS = -1151" "MAC_ADDRESS = -1500")
  if(NOT text MATCHES "VOR_CODE_${code}[, ]")
    message(SEND_ERROR "programs are built with VOR_CODE_${code}")
  endif()
endforeach()

if(NOT SANITIZED)
  execute_process(COMMAND ${READELF} -d ${LIBRARY} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
  names(needed "NEEDED[^\n]*\\[([^\n]*)\\]" "${text}")
  # The loader is the C library's: the stack guard of 32-bit ARM stands there.
  set(allowed libc.so.6 ld-linux-armhf.so.3 libvorinfra.so)
  differ(needed "needed besides the C library and the platform" allowed)
endif()
