# Configures, builds and runs a host project (SOURCE_DIR) against the installed
# tree at PREFIX with find_package(KxJournal CONFIG), as a host would.
#   PROGRAM: the executable the project builds; ARGS: its arguments, split by "|";
#   EXPECT:  a regular expression its output must match.
#   NOT_NEEDED: when set, a regular expression no NEEDED entry of the program
#               may match (readelf -d): libraries the host must not link itself.
file(REMOVE_RECURSE ${WORK_DIR})
string(REPLACE "|" ";" ARGS "${ARGS}")

set(extra)
if(SANITIZE)
  # The installed archive was built with the sanitizers: the host links their runtimes.
  set(extra "-DCMAKE_EXE_LINKER_FLAGS=-fsanitize=address,undefined")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR} -G ${GENERATOR}
  -DCMAKE_PREFIX_PATH=${PREFIX} ${extra}
  RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "configuring ${SOURCE_DIR} failed: ${rc}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "building ${SOURCE_DIR} failed: ${rc}")
endif()
execute_process(COMMAND ${WORK_DIR}/${PROGRAM} ${ARGS} RESULT_VARIABLE rc OUTPUT_VARIABLE out)
message(STATUS "${PROGRAM} said: ${out}")
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} failed: ${rc}")
endif()
if(NOT out MATCHES "${EXPECT}")
  message(FATAL_ERROR "unexpected output of ${PROGRAM}")
endif()
if(NOT_NEEDED)
  execute_process(COMMAND readelf -d ${WORK_DIR}/${PROGRAM} RESULT_VARIABLE rc OUTPUT_VARIABLE dyn)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "readelf failed: ${rc}")
  endif()
  string(REGEX MATCHALL "\\(NEEDED\\)[^\n]*" needed "${dyn}")
  message(STATUS "${PROGRAM} needs: ${needed}")
  if(needed MATCHES "${NOT_NEEDED}")
    message(FATAL_ERROR "${PROGRAM} links a library it should not need itself: ${CMAKE_MATCH_0}")
  endif()
endif()
