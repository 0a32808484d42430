# Finds the protocol-buffer runtime, for the build of this library and, installed, for its users:
# protobuf::libprotobuf, protobuf::protoc and Protobuf_VERSION, which is empty when there is none.
# The runtime's own CMake package comes first, since it knows what newer releases bring along; where
# a system has none of it, CMake's module searches. No release is asked for: the packages of newer
# ones refuse to stand in for 3.x.

if(NOT TARGET protobuf::libprotobuf OR NOT Protobuf_VERSION)
  find_package(Protobuf QUIET CONFIG)
  if(NOT Protobuf_FOUND)
    find_package(Protobuf QUIET MODULE)
  endif()
endif()
