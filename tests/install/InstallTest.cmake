# Installs the build into a fresh prefix and builds the host program in host/ against it
# twice, once through find_package(orvane) and once with the flags pkg-config gives, and runs
# both. Only the prefix is searched, so the host needs nothing the package does not declare.
#
# cmake -DBUILD_DIR=... -DCONFIG=... -DWORK_DIR=... -DHOST_DIR=... -DCXX=... -DGENERATOR=...
#       -DMAKE_PROGRAM=... -DLIBDIR=... -P InstallTest.cmake

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    string(REPLACE ";" " " cmd "${ARGN}")
    message(FATAL_ERROR "failed (${rc}): ${cmd}\n${out}${err}")
  endif()
  string(STRIP "${out}" out)
  set(output "${out}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --config ${CONFIG} --prefix ${prefix})

# The installed headers include only the standard library and each other.
file(GLOB_RECURSE headers ${prefix}/include/*.h)
if(NOT headers)
  message(FATAL_ERROR "no headers installed under ${prefix}/include")
endif()
foreach(header ${headers})
  file(STRINGS ${header} includes REGEX "^[ \t]*#[ \t]*include")
  foreach(line ${includes})
    if(NOT line MATCHES "#[ \t]*include[ \t]*(<[a-z_]+>|\"orvane/[A-Za-z0-9_/]+\\.h\")")
      message(FATAL_ERROR "${header} reaches outside the package: ${line}")
    endif()
    if(line MATCHES "\"(orvane/[^\"]+)\"")
      if(NOT EXISTS ${prefix}/include/${CMAKE_MATCH_1})
        message(FATAL_ERROR "${header} includes ${CMAKE_MATCH_1}, which is not installed")
      endif()
    endif()
  endforeach()
endforeach()

# find_package(orvane), with packages searched in the prefix and nowhere else.
run(${CMAKE_COMMAND} -S ${HOST_DIR} -B ${WORK_DIR}/cmake -G ${GENERATOR} -DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM} -DCMAKE_BUILD_TYPE=Release
  -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
  -DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF -DCMAKE_FIND_USE_SYSTEM_ENVIRONMENT_PATH=OFF)
file(STRINGS ${WORK_DIR}/cmake/CMakeCache.txt found REGEX "^orvane_DIR:")
if(NOT found STREQUAL "orvane_DIR:PATH=${prefix}/${LIBDIR}/cmake/orvane")
  message(FATAL_ERROR "the host found another package: ${found}")
endif()
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake)
run(${WORK_DIR}/cmake/orvane_host)
message(STATUS "find_package host: ${output}")

# pkg-config orvane, searching the prefix only, and a plain compiler command line.
set(ENV{PKG_CONFIG_LIBDIR} ${prefix}/${LIBDIR}/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "")
run(pkg-config --cflags --libs orvane)
separate_arguments(flags UNIX_COMMAND "${output}")
run(${CXX} -Wall -Wextra -Werror ${HOST_DIR}/main.cpp ${flags} -o ${WORK_DIR}/pkgconfig_host)
run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR} ${WORK_DIR}/pkgconfig_host)
message(STATUS "pkg-config host: ${output}")
