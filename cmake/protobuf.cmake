# The message runtime, protobuf::libprotobuf, and its compiler, ${protoc}.

include(${CMAKE_CURRENT_LIST_DIR}/find_protobuf.cmake)
if(NOT "${Protobuf_VERSION}" VERSION_GREATER_EQUAL 3.6.0)
  message(FATAL_ERROR "The protocol-buffer runtime is needed, release 3.6.0 or later; "
                      "found '${Protobuf_VERSION}'")
endif()
message(STATUS "Protocol buffers ${Protobuf_VERSION}")

# The compiler is the build machine's: the runtime of another machine may bring one along that does
# not run here.
set(protoc protobuf::protoc)
if(CMAKE_CROSSCOMPILING)
  find_program(Protobuf_PROTOC_EXECUTABLE protoc REQUIRED)
  set(protoc ${Protobuf_PROTOC_EXECUTABLE})
endif()
