# YAJL 2 and CivetWeb as imported targets, nox_deps::yajl and nox_deps::civetweb. Neither
# has a usable CMake package on Debian (CivetWeb's refers to a program that its -dev
# package does not ship), so both are found by file. The build uses this file, and so
# does the installed package config of a static library, whose consumers link them.
# Sets nox_utils_MISSING_DEPENDENCIES to the Debian packages of those not found.
set(nox_utils_MISSING_DEPENDENCIES "")

# nox_utils_import(<target> <library name> <header> <Debian package>)
macro(nox_utils_import target library header package)
  if(NOT TARGET ${target})
    find_library(NOX_${library}_LIBRARY NAMES ${library})
    find_path(NOX_${library}_INCLUDE_DIR ${header})
    if(NOX_${library}_LIBRARY AND NOX_${library}_INCLUDE_DIR)
      add_library(${target} UNKNOWN IMPORTED)
      set_target_properties(${target} PROPERTIES
        IMPORTED_LOCATION ${NOX_${library}_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${NOX_${library}_INCLUDE_DIR})
    else()
      list(APPEND nox_utils_MISSING_DEPENDENCIES ${package})
    endif()
  endif()
endmacro()

nox_utils_import(nox_deps::yajl yajl yajl/yajl_gen.h "libyajl-dev (YAJL 2)")
nox_utils_import(nox_deps::civetweb civetweb civetweb.h "libcivetweb-dev (CivetWeb)")
