# Runs as `cmake -P`: install the build tree into a scratch prefix, then build and run
# tests/consumer against that prefix only, the way a user of the installed package
# would: CONSUMER=cmake through find_package(nox_utils CONFIG), CONSUMER=pkg-config with
# the compiler and the flags of `pkg-config --cflags --libs nox_utils` (plus --static
# when the library is static); the pkg-config run also compiles every installed header.
file(REMOVE_RECURSE ${SCRATCH_DIR})
set(prefix ${SCRATCH_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "command failed (${result}): ${ARGN}\n${output}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
set(flags "")
if(SANITIZE)
  set(flags "-fsanitize=${SANITIZE}")
endif()

if(CONSUMER STREQUAL "cmake")
  run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${SCRATCH_DIR}/build
      -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=${BUILD_TYPE} -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
      -DCMAKE_CXX_FLAGS=${flags} -DCMAKE_EXE_LINKER_FLAGS=${flags})
  run(${CMAKE_COMMAND} --build ${SCRATCH_DIR}/build)
  run(${SCRATCH_DIR}/build/consumer)
elseif(CONSUMER STREQUAL "pkg-config")
  file(GLOB_RECURSE pcFile ${prefix}/*/nox_utils.pc)
  if(NOT pcFile)
    message(FATAL_ERROR "no nox_utils.pc under ${prefix}")
  endif()
  get_filename_component(pcDir ${pcFile} DIRECTORY)
  get_filename_component(libDir ${pcDir} DIRECTORY)
  set(ENV{PKG_CONFIG_PATH} ${pcDir})
  set(static "")
  if(NOT SHARED)
    set(static --static)
  endif()
  execute_process(COMMAND pkg-config --cflags --libs ${static} nox_utils
    RESULT_VARIABLE result OUTPUT_VARIABLE pkgFlags ERROR_VARIABLE error OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "pkg-config failed: ${error}")
  endif()
  separate_arguments(pkgFlags UNIX_COMMAND "${pkgFlags}")
  file(MAKE_DIRECTORY ${SCRATCH_DIR}/build)
  file(GLOB_RECURSE headers RELATIVE ${prefix}/include ${prefix}/include/*.h)
  list(LENGTH headers headerCount)
  if(headerCount LESS 50)
    message(FATAL_ERROR "only ${headerCount} headers installed")
  endif()
  set(allHeaders ${SCRATCH_DIR}/build/all_headers.cpp)
  file(WRITE ${allHeaders} "")
  foreach(header ${headers})
    file(APPEND ${allHeaders} "#include <${header}>\n")
  endforeach()
  run(${CXX} -std=c++17 -fsyntax-only ${allHeaders} ${pkgFlags})
  run(${CXX} -std=c++17 ${flags} ${CONSUMER_DIR}/main.cpp ${pkgFlags} -Wl,-rpath,${libDir}
      -o ${SCRATCH_DIR}/build/consumer)
  run(${SCRATCH_DIR}/build/consumer)
else()
  message(FATAL_ERROR "CONSUMER must be cmake or pkg-config, not '${CONSUMER}'")
endif()
