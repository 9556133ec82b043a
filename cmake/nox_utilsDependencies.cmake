# YAJL 2 and CivetWeb as imported targets, nox_deps::yajl and nox_deps::civetweb. Neither
# has a usable CMake package on Debian (CivetWeb's refers to a program that its -dev
# package does not ship), so both are found by file. The build uses this file, and so
# does the installed package config of a static library, whose consumers link them.
# Sets nox_utils_MISSING_DEPENDENCIES to the Debian packages of those not found.
set(nox_utils_MISSING_DEPENDENCIES "")

if(NOT TARGET nox_deps::yajl)
  find_library(NOX_YAJL_LIBRARY NAMES yajl)
  find_path(NOX_YAJL_INCLUDE_DIR yajl/yajl_gen.h)
  if(NOX_YAJL_LIBRARY AND NOX_YAJL_INCLUDE_DIR)
    add_library(nox_deps::yajl UNKNOWN IMPORTED)
    set_target_properties(nox_deps::yajl PROPERTIES
      IMPORTED_LOCATION ${NOX_YAJL_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${NOX_YAJL_INCLUDE_DIR})
  else()
    list(APPEND nox_utils_MISSING_DEPENDENCIES "libyajl-dev (YAJL 2)")
  endif()
endif()

if(NOT TARGET nox_deps::civetweb)
  find_library(NOX_CIVETWEB_LIBRARY NAMES civetweb)
  find_path(NOX_CIVETWEB_INCLUDE_DIR civetweb.h)
  if(NOX_CIVETWEB_LIBRARY AND NOX_CIVETWEB_INCLUDE_DIR)
    add_library(nox_deps::civetweb UNKNOWN IMPORTED)
    set_target_properties(nox_deps::civetweb PROPERTIES
      IMPORTED_LOCATION ${NOX_CIVETWEB_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${NOX_CIVETWEB_INCLUDE_DIR})
  else()
    list(APPEND nox_utils_MISSING_DEPENDENCIES "libcivetweb-dev (CivetWeb)")
  endif()
endif()
