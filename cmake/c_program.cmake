# Holds a program in C over the library to the warnings, as errors: it shows that the headers are C.
function(filter_common_hold_c_program name)
  target_link_libraries(${name} PRIVATE filter_common::filter_common filter_common_warnings)
  set_target_properties(${name} PROPERTIES COMPILE_WARNING_AS_ERROR ON)
  # What the sanitizers need of the C++ runtime, only the C++ compiler links.
  if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=")
    set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  endif()
endfunction()
