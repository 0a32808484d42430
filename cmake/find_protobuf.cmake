# Finds the protocol-buffer runtime. The build of this library uses this file, and users get an
# installed copy. It provides protobuf::libprotobuf, protobuf::protoc and Protobuf_VERSION, which is
# empty if there is no runtime. The runtime's own CMake package is tried first, since it knows the
# further libraries of newer releases. On a system without that package, CMake's module FindProtobuf
# searches. The search names no release, because the packages of newer releases refuse requests for
# 3.x.

if(NOT TARGET protobuf::libprotobuf OR NOT Protobuf_VERSION)
  find_package(Protobuf QUIET CONFIG)
  if(NOT Protobuf_FOUND)
    find_package(Protobuf QUIET MODULE)
  endif()
endif()
