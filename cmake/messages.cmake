# Generates the message classes from protobuf/. The target filter_common_messages has the object
# files of these classes. The files become part of the library, which exports the classes. A process
# with two copies of the classes aborts at its start, so no other target may compile them. Other
# targets link filter_common::messages. That target consists of the library and of
# filter_common_message_headers, which has the options to compile the message headers.

set(generated_dir ${PROJECT_BINARY_DIR}/generated)
set(output_dir ${generated_dir}/filter_common)
set(schema_dir ${PROJECT_SOURCE_DIR}/protobuf)
set(schemas filter_matches filter_actions filter_counter filter_entries filter_groups)

list(TRANSFORM schemas APPEND .proto OUTPUT_VARIABLE schema_names)
list(TRANSFORM schema_names PREPEND ${schema_dir}/ OUTPUT_VARIABLE schema_files)
list(TRANSFORM schemas REPLACE "(.+)" "${output_dir}/\\1.pb.cc" OUTPUT_VARIABLE message_sources)
list(TRANSFORM schemas REPLACE "(.+)" "${output_dir}/\\1.pb.h" OUTPUT_VARIABLE message_headers)

# The schemas are given without folders, because they import each other and register their
# descriptors by these names.
file(MAKE_DIRECTORY ${output_dir})
add_custom_command(
  OUTPUT ${message_sources} ${message_headers}
  COMMAND ${protoc} -I ${schema_dir} --cpp_out=${output_dir} ${schema_names}
  DEPENDS ${schema_files} ${protoc}
  COMMENT "Generating message classes"
  VERBATIM)

# Our warnings are off for generated code, wherever it is included.
add_library(filter_common_message_headers INTERFACE)
target_include_directories(filter_common_message_headers SYSTEM INTERFACE ${generated_dir})
target_link_libraries(filter_common_message_headers INTERFACE protobuf::libprotobuf)

add_library(filter_common_messages OBJECT ${message_sources} ${message_headers})
target_link_libraries(
  filter_common_messages
  PUBLIC filter_common_message_headers
  PRIVATE filter_common_shipped)
# Mostly generated code parses and writes messages, so that code is optimised for speed even if the
# rest is optimised for size.
target_compile_options(filter_common_messages PRIVATE -w $<$<CONFIG:MinSizeRel>:-O2>)
set_target_properties(
  filter_common_messages
  PROPERTIES POSITION_INDEPENDENT_CODE ON
             UNITY_BUILD OFF # its files use the same names
             CXX_VISIBILITY_PRESET default
             VISIBILITY_INLINES_HIDDEN ON)
filter_common_optimise_at_link(filter_common_messages)
