# Installs the built library into a scratch prefix, then configures, builds and
# runs a small host program against it with find_package(KxJournal CONFIG).
file(REMOVE_RECURSE ${WORK_DIR})
set(PREFIX ${WORK_DIR}/prefix)

execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX}
  RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "install failed: ${rc}")
endif()

set(extra)
if(SANITIZE)
  set(extra "-DCMAKE_EXE_LINKER_FLAGS=-fsanitize=address,undefined")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build -G ${GENERATOR}
  -DCMAKE_PREFIX_PATH=${PREFIX} ${extra}
  RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "configuring the consumer failed: ${rc}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/build RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "building the consumer failed: ${rc}")
endif()
execute_process(COMMAND ${WORK_DIR}/build/consumer RESULT_VARIABLE rc OUTPUT_VARIABLE out)
message(STATUS "consumer said: ${out}")
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "the consumer failed: ${rc}")
endif()
if(NOT out MATCHES "consumer ok")
  message(FATAL_ERROR "unexpected consumer output")
endif()
