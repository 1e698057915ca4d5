# What nearly every source includes is compiled once for them all: half of what the build costs.
# Not with a compiler cache, which keeps an object better without. ./test release builds without,
# and shows an include that is missing.
function(share_headers)
  if(CMAKE_CXX_COMPILER_LAUNCHER)
    return()
  endif()
  file(CONFIGURE OUTPUT shared_headers.cpp CONTENT "")
  add_library(shared_headers OBJECT ${CMAKE_BINARY_DIR}/shared_headers.cpp)
  target_link_libraries(shared_headers PRIVATE health_flags PkgConfig::JSONCPP)
  target_precompile_headers(shared_headers PRIVATE
    <json/json.h> <algorithm> <chrono> <filesystem> <fstream> <functional> <map> <optional>
    <sstream> <string> <string_view> <vector>)
  # The compiler sees such faults where strings come from headers that it read before.
  # No debugger looks at these programs.
  target_compile_options(health_flags INTERFACE -g0
    -Wno-array-bounds -Wno-restrict -Wno-stringop-overflow -Wno-stringop-overread)
  share_headers_below(${CMAKE_SOURCE_DIR})
endfunction()

# The libraries of a folder and of those below it, except the tests: they have headers of their own.
function(share_headers_below folder)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(type ${target} TYPE)
    if(type MATCHES "^(STATIC|OBJECT|SHARED|MODULE)_LIB" AND NOT target STREQUAL shared_headers)
      target_precompile_headers(${target} REUSE_FROM shared_headers)
    endif()
  endforeach()
  get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(below IN LISTS folders)
    if(NOT below MATCHES "/tests$")
      share_headers_below(${below})
    endif()
  endforeach()
endfunction()

cmake_language(DEFER CALL share_headers)
