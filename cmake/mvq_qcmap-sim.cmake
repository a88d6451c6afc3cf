# mvq_qcmap_add_test(NAME name COMMAND program [argument...]
#                    [SERVER_OPTIONS option...] [SCENARIO file])
#
# Adds a test that runs the program against a simulated server of its own. The program may be a
# target. SCENARIO is a file of commands for the server. QCMAP_ConnectionManager(1) describes them and
# the options. mvq-qcmap-sim is in the PATH of the program, which controls its server with it.
function(mvq_qcmap_add_test)
  cmake_parse_arguments(PARSE_ARGV 0 test "" "NAME;SCENARIO" "COMMAND;SERVER_OPTIONS")
  if(NOT test_NAME OR NOT test_COMMAND OR test_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "mvq_qcmap_add_test needs NAME and COMMAND; it also takes SERVER_OPTIONS and "
                        "SCENARIO; unknown: '${test_UNPARSED_ARGUMENTS}'")
  endif()
  if(test_SCENARIO)
    file(REAL_PATH "${test_SCENARIO}" scenario BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
    list(APPEND test_SERVER_OPTIONS --scenario "${scenario}")
  endif()
  list(POP_FRONT test_COMMAND program)
  if(TARGET ${program})
    set(program $<TARGET_FILE:${program}>)
  endif()
  add_test(NAME ${test_NAME}
           COMMAND mvq_qcmap::mvq-qcmap-sim ${test_SERVER_OPTIONS} -- ${program} ${test_COMMAND})
  set_property(TEST ${test_NAME} APPEND PROPERTY ENVIRONMENT_MODIFICATION
               PATH=path_list_prepend:$<TARGET_FILE_DIR:mvq_qcmap::mvq-qcmap-sim>)
endfunction()
