# Calls written wrongly do not compile, and are told why.
#   cmake -D COMPILER=c++ -D SOURCE=... -D PLACE=... -P ...
cmake_minimum_required(VERSION 3.24)

# expect(CALL TEXT): the call is refused with this text; one without a text compiles.
function(expect call text)
  file(WRITE ${PLACE}/call.cpp "#include \"request.hpp\"
    using namespace device_mgmt;
    constexpr Frame frame = sap(5) | clears_errno;
    constexpr MessageId id = 0x5004;
    vor_int32 call() { return ${call}; }
  ")
  execute_process(COMMAND ${COMPILER} -std=c++20 -fsyntax-only -I ${SOURCE}/include -I ${SOURCE}/src ${PLACE}/call.cpp
    RESULT_VARIABLE result ERROR_VARIABLE output)
  if(text STREQUAL "" AND NOT result EQUAL 0)
    message(SEND_ERROR "${call} does not compile:\n${output}")
  elseif(NOT text STREQUAL "" AND (result EQUAL 0 OR NOT output MATCHES "${text}"))
    message(SEND_ERROR "${call} is not refused with '${text}':\n${output}")
  endif()
endfunction()

expect("request<frame, id>(int16<1>(1 > 0))" "")
expect("request<id, frame>(int16<1>(1 > 0))" "no matching function")
expect("request<id>(int16<1>(1 > 0))" "no matching function")
expect("Exchange().take_buffers<frame | null_payload_keeps | null_payload_drops, id>()" "kept or given back, not both")
expect("Exchange().take_buffers<frame | option_byte | flag_byte, id>()" "option byte or the flag byte, not both")
expect("Exchange().take_buffers<frame | request_dropped_first | request_dropped_last, id>()" "first or last, not both")
expect("request<frame | one_way | lone_request_dropped, id>()" "a one-way message takes one buffer")
expect("request<frame | one_way | id_low_half, id>()" "never answered has no policy for its answer")
expect("request<frame | sent_buffer_kept, id>()" "only a one-way message's buffer")
expect("request<frame, id>(option(1))" "an option goes with a frame that has its byte")
expect("request<frame | flag_byte, id>(option(1))" "a flag goes with a frame that has its byte")
expect("request<frame | null_payload_keeps, id, 4>(int32<0>(1))" "a record holds fields, a chain elements")
expect("request<frame, id, 4>(field<0, vor_int32>(1))" "only where its frame asks for a place")
expect("request<frame, id>(int16<1>(70000))" "no matching function")
