# Puts an installed tree of the library at PREFIX.
#   MODE=this:  installs the build tree BUILD_DIR as it is.
#   MODE=other: configures the project again in WORK_DIR with BUILD_SHARED_LIBS
#               set to SHARED (no tests, no tool, no sanitizers), builds only the
#               library and installs that.
file(REMOVE_RECURSE ${PREFIX})
if(MODE STREQUAL "other")
  set(args -S ${SOURCE_DIR} -B ${WORK_DIR} -G ${GENERATOR}
    -DBUILD_SHARED_LIBS=${SHARED} -DKX_BUILD_TESTS=OFF -DKX_BUILD_APP=OFF -DKX_BUILD_BENCH=OFF -DKX_BUILD_DESIGNER=OFF
    -DKX_SANITIZE=OFF -DCMAKE_BUILD_TYPE=)
  if(LAUNCHER)
    list(APPEND args -DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER})
  endif()
  execute_process(COMMAND ${CMAKE_COMMAND} ${args} RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "configuring the second build failed: ${rc}")
  endif()
  execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR} --target kxjournal --parallel 2 RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "building the library failed: ${rc}")
  endif()
  set(BUILD_DIR ${WORK_DIR})
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "install failed: ${rc}")
endif()
