# CPack reads this file before it packs: without these tools it would make packages without
# dependencies.
cmake_minimum_required(VERSION 3.25)

foreach(tool dpkg-shlibdeps file)
  find_program(found_${tool} ${tool})
  if(NOT found_${tool})
    message(FATAL_ERROR "Packing needs ${tool}: run scripts/setup package")
  endif()
endforeach()
