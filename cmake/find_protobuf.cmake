# Finds the protocol-buffer runtime, for the build of this library and, installed, for its users:
# protobuf::libprotobuf, protobuf::protoc and Protobuf_VERSION, which is empty when there is none.
# The runtime's own CMake package is tried first, since it knows the further libraries of newer
# releases. If a system does not have it, CMake's module searches. The search names no release,
# because the packages of newer releases refuse requests for 3.x.

if(NOT TARGET protobuf::libprotobuf OR NOT Protobuf_VERSION)
  find_package(Protobuf QUIET CONFIG)
  if(NOT Protobuf_FOUND)
    find_package(Protobuf QUIET MODULE)
  endif()
endif()
