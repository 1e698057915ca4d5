# What nearly every source includes is compiled once for the libraries of all rooms: half of what a
# sanitized or a cross build costs. The tests have headers of their own.
file(CONFIGURE OUTPUT shared_headers.cpp CONTENT "")
add_library(shared_headers OBJECT ${CMAKE_CURRENT_BINARY_DIR}/shared_headers.cpp)
target_link_libraries(shared_headers PRIVATE health_flags PkgConfig::JSONCPP)
target_precompile_headers(shared_headers PRIVATE
  <json/json.h> <algorithm> <array> <chrono> <filesystem> <fstream> <functional> <map> <memory>
  <optional> <set> <sstream> <string> <string_view> <variant> <vector>)

if(CMAKE_CROSSCOMPILING)
  # Optimizing, the compiler sees such faults where strings come from headers that it read before.
  # No debugger looks at these programs.
  target_compile_options(health_flags INTERFACE -g0
    -Wno-array-bounds -Wno-restrict -Wno-stringop-overflow -Wno-stringop-overread)
endif()

# share_headers(FOLDER): for the libraries of the folder and of those below it.
function(share_headers folder)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(type ${target} TYPE)
    if(type MATCHES "^(OBJECT|STATIC|SHARED|MODULE)_LIB")
      target_precompile_headers(${target} REUSE_FROM shared_headers)
    endif()
  endforeach()
  get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(below IN LISTS folders)
    share_headers(${below})
  endforeach()
endfunction()

foreach(room common module platform host)
  share_headers(${room})
endforeach()
