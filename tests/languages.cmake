# The headers compile in the languages they are for; in others, one error says which they need.
#   cmake -D CC=cc -D CXX=c++ -D INCLUDE=... -P ...
cmake_minimum_required(VERSION 3.24)

# expect(TEXT COMPILER-OPTION...): refused with this text alone; compiled without a warning where it is empty.
function(expect text)
  execute_process(COMMAND ${ARGN} -Wall -Wextra -Werror -I ${INCLUDE} -fsyntax-only /dev/null
    RESULT_VARIABLE result ERROR_VARIABLE output)
  string(REGEX MATCHALL " error: [^\n]*" errors "${output}")
  list(LENGTH errors count)
  if(text STREQUAL "" AND NOT result EQUAL 0 OR NOT text STREQUAL "" AND NOT (count EQUAL 1 AND errors MATCHES "${text}"))
    list(JOIN ARGN " " command)
    message(SEND_ERROR "${command}: expected '${text}':\n${output}")
  endif()
endfunction()

set(all -include device_mgmt.h -include device_mgmt/code_text.h)
foreach(standard gnu89 c99 c11)
  expect("" ${CC} -std=${standard} ${all} -x c)
endforeach()
expect("" ${CXX} -std=c++11 ${all} -x c++)
expect("needs C..11" ${CXX} -std=c++98 -include device_mgmt.h -x c++)
expect("needs C..20" ${CXX} -std=c++17 -include device_mgmt.hpp -x c++)
