# `make package` / cpack: one Debian package per install component.
#   libnox-utils<soversion>  "runtime"      the shared libraries
#   libnox-utils-dev         "development"  headers, link-time files, CMake and pkg-config files
#   nox-utils-tools          "tools"        the programs of apps/ and their man pages
# Programs add the Debian packages they need at run time through nox_add_program's
# DEBIAN_DEPENDS (collected in the global property NOX_UTILS_TOOLS_DEBIAN_DEPENDS).
# A static build has no runtime package: its development package holds the archives.
set(NOX_UTILS_DEB_RUNTIME libnox-utils${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(NOX_UTILS_DEB_RUNTIME_DEPENDS "libc6 (>= 2.34), libstdc++6 (>= 12), libgcc-s1 (>= 3.0), libprotobuf32 (>= 3.21), libyajl2 (>= 2.1), libcivetweb1 (>= 1.15)")
set(NOX_UTILS_DEB_LIBRARY_DEPENDS "${NOX_UTILS_DEB_RUNTIME_DEPENDS}")
get_property(programs GLOBAL PROPERTY NOX_UTILS_PROGRAMS)
set(CPACK_COMPONENTS_ALL development)
if(BUILD_SHARED_LIBS)
  list(PREPEND CPACK_COMPONENTS_ALL runtime)
  set(NOX_UTILS_DEB_LIBRARY_DEPENDS "${NOX_UTILS_DEB_RUNTIME} (= ${PROJECT_VERSION}-1)")
endif()
if(programs)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME nox-utils)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "nox_utils maintainers <nox-utils@localhost>")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
# Plain gzip: quick to build, and every dpkg reads it.
set(CPACK_DEBIAN_COMPRESSION_TYPE gzip)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${NOX_UTILS_DEB_RUNTIME})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "${NOX_UTILS_DEB_RUNTIME_DEPENDS}")
# A shlibs file and the ldconfig trigger.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# The first line of each description is the synopsis.
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "foundation library of a simulation and behaviour runtime
Error categories, loggers, threads and time; identifiers and URIs; a run-time type
registry; dynamic objects with JSON and binary forms; random streams; and an
inspection service that external tools drive over HTTP.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libnox-utils-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
# pkg-config reads protobuf.pc and yajl.pc (Requires.private) even for --cflags.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${NOX_UTILS_DEB_LIBRARY_DEPENDS}, libprotobuf-dev, libyajl-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS "pkg-config, cmake (>= 3.16)")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "development files of the nox_utils library
Headers, the CMake package config (find_package(nox_utils)) and the pkg-config file
(nox_utils.pc) of the nox_utils library.")

get_property(toolsDepends GLOBAL PROPERTY NOX_UTILS_TOOLS_DEBIAN_DEPENDS)
list(REMOVE_DUPLICATES toolsDepends)
list(JOIN toolsDepends ", " toolsDepends)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME nox-utils-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${NOX_UTILS_DEB_LIBRARY_DEPENDS}")
if(toolsDepends)
  string(APPEND CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS ", ${toolsDepends}")
endif()
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "programs of the nox_utils library
nox-convert converts dynamic objects between JSON and their binary form; nox-demo is a
host that serves a small simulation to inspection clients.")

include(CPack)

# Builds the packages into a scratch directory, unpacks them with dpkg -x and checks
# their files, their dependencies, and that the unpacked tree works on its own.
if(NOX_UTILS_BUILD_TESTS AND BUILD_SHARED_LIBS AND programs)
  add_test(NAME DebianPackages.HoldTheExpectedFiles
    COMMAND bash ${PROJECT_SOURCE_DIR}/tests/debian_packages_test.sh ${CMAKE_CPACK_COMMAND}
            ${PROJECT_BINARY_DIR}/CPackConfig.cmake ${PROJECT_BINARY_DIR}/tests/debian-packages
            ${PROJECT_VERSION} ${NOX_UTILS_DEB_RUNTIME} ${CMAKE_INSTALL_LIBDIR} ${programs})
  set_tests_properties(DebianPackages.HoldTheExpectedFiles PROPERTIES TIMEOUT 600)
endif()
