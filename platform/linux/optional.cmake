# Libraries that the platform reads one area with, and can do without.

# vela_optional(NAME WHAT PACKAGE): the option VELA_WITH_NAME (AUTO, ON, OFF) of the
# library that reads WHAT, known to pkg-config as PACKAGE. Sets NAME_FOUND, and makes the
# target PkgConfig::NAME when it is there. ON without the library is an error.
macro(vela_optional name what package)
  set(VELA_WITH_${name} AUTO CACHE STRING "${what}: AUTO, ON or OFF")
  set_property(CACHE VELA_WITH_${name} PROPERTY STRINGS AUTO ON OFF)
  set(${name}_FOUND FALSE)
  if(VELA_WITH_${name})
    pkg_check_modules(${name} IMPORTED_TARGET ${package})
  endif()
  vela_require_if_on(${name} "${what}")
endmacro()

# The same for a library without a pkg-config file: HEADER and LIBRARY are searched for.
macro(vela_optional_library name what header library)
  set(VELA_WITH_${name} AUTO CACHE STRING "${what}: AUTO, ON or OFF")
  set_property(CACHE VELA_WITH_${name} PROPERTY STRINGS AUTO ON OFF)
  set(${name}_FOUND FALSE)
  if(VELA_WITH_${name})
    find_path(${name}_HEADERS ${header})
    find_library(${name}_LIBRARY ${library})
    if(${name}_HEADERS AND ${name}_LIBRARY)
      set(${name}_FOUND TRUE)
      add_library(PkgConfig::${name} INTERFACE IMPORTED)
      target_include_directories(PkgConfig::${name} INTERFACE ${${name}_HEADERS})
      target_link_libraries(PkgConfig::${name} INTERFACE ${${name}_LIBRARY})
    endif()
  endif()
  vela_require_if_on(${name} "${what}")
endmacro()

macro(vela_require_if_on name what)
  if(VELA_WITH_${name} STREQUAL "ON" AND NOT ${name}_FOUND)
    message(FATAL_ERROR "VELA_WITH_${name} is ON, but the library for ${what} was not found; "
      "tools/packages names its package.")
  endif()
  set(VELA_HAS_${name} ${${name}_FOUND} CACHE INTERNAL "Whether ${what} can be read")
  if(NOT ${name}_FOUND)
    message(STATUS "Without ${what}: its library is not there or VELA_WITH_${name} is OFF")
  endif()
endmacro()

# vela_choose_loaded(TARGET NAME WITH WITHOUT): the same for a library that WITH opens by itself,
# under the name VELA_NAME_LIBRARY ("libx.so.6"), when it is first needed.
function(vela_choose_loaded target name with without)
  if(NOT VELA_HAS_${name})
    target_sources(${target} PRIVATE ${without})
    return()
  endif()
  list(GET ${name}_LINK_LIBRARIES 0 file)
  file(REAL_PATH ${file} file)
  string(REGEX MATCH "[^/]+\\.so\\.[0-9]+" soname ${file})
  target_sources(${target} PRIVATE ${with})
  target_include_directories(${target} PRIVATE ${${name}_INCLUDE_DIRS})
  target_link_libraries(${target} PUBLIC ${CMAKE_DL_LIBS})
  set_property(SOURCE ${with} APPEND PROPERTY COMPILE_DEFINITIONS VELA_${name}_LIBRARY="${soname}")
  set_property(GLOBAL APPEND PROPERTY VELA_LOADED_LIBRARIES ${soname})
endfunction()

# vela_choose(TARGET NAME WITH WITHOUT): compiles the source WITH, linked to the library,
# when it was found, else WITHOUT, which says that the source is absent.
function(vela_choose target name with without)
  if(VELA_HAS_${name})
    target_sources(${target} PRIVATE ${with})
    target_link_libraries(${target} PUBLIC PkgConfig::${name})
  else()
    target_sources(${target} PRIVATE ${without})
  endif()
endfunction()
