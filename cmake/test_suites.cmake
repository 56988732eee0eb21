# One CTest entry for each suite of a GoogleTest program. A process for each single test, as
# gtest_discover_tests has it, took longer to start than most tests take: a quarter of a second of
# AddressSanitizer's start, nine hundred times.
#
#   utm_add_suites(PROGRAM PREFIX TIMEOUT SECONDS [LONGEST SUITE...] [ENVIRONMENT VARIABLE=VALUE...])
#
# LONGEST: suites that start first, so that none of them is left over when all others are done.
#
# This file is also the script that lists the suites, after each link of the program.

if(NOT CMAKE_SCRIPT_MODE_FILE)
  set(UTM_TEST_SUITES_SCRIPT ${CMAKE_CURRENT_LIST_FILE})
  function(utm_add_suites program)
    cmake_parse_arguments(suites "" "PREFIX;TIMEOUT" "LONGEST;ENVIRONMENT" ${ARGN})
    set(list ${CMAKE_CURRENT_BINARY_DIR}/${program}_suites.cmake)
    add_custom_command(TARGET ${program} POST_BUILD BYPRODUCTS ${list} VERBATIM
      COMMAND ${CMAKE_COMMAND}
        "-DPROGRAM=${CMAKE_CROSSCOMPILING_EMULATOR};$<TARGET_FILE:${program}>"
        "-DPREFIX=${suites_PREFIX}" "-DTIMEOUT=${suites_TIMEOUT}" "-DLONGEST=${suites_LONGEST}"
        "-DENVIRONMENT=${suites_ENVIRONMENT}" "-DLIST=${list}" -P ${UTM_TEST_SUITES_SCRIPT})
    # A program that was never built fails as a test that cannot run.
    file(WRITE ${list}.in "if(EXISTS \"${list}\")\n  include(\"${list}\")\nelse()\n"
                          "  add_test(\"${suites_PREFIX}${program}_NOT_BUILT\" ${program})\nendif()\n")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${list}.in)
  endfunction()
  return()
endif()

cmake_minimum_required(VERSION 3.25)
list(REMOVE_ITEM PROGRAM "")
execute_process(COMMAND ${PROGRAM} --gtest_list_tests
                OUTPUT_VARIABLE output RESULT_VARIABLE result TIMEOUT 120)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} does not list its tests: ${result}\n${output}")
endif()
# A suite's name starts its line and ends with a full stop; its tests are indented.
string(REGEX MATCHALL "(^|\n)[A-Za-z_][A-Za-z0-9_/]*\\." names "${output}")
if(names STREQUAL "")
  message(FATAL_ERROR "${PROGRAM} has no tests")
endif()
set(command "")
foreach(word IN LISTS PROGRAM)
  string(APPEND command " [==[${word}]==]")
endforeach()
set(script "")
foreach(name IN LISTS names)
  string(REGEX REPLACE "[\n.]" "" name "${name}")
  set(cost 1)
  if(name IN_LIST LONGEST)
    set(cost 100)
  endif()
  string(APPEND script
    "add_test([==[${PREFIX}${name}]==]${command} [==[--gtest_filter=${name}.*]==])\n"
    "set_tests_properties([==[${PREFIX}${name}]==] PROPERTIES\n"
    "  TIMEOUT ${TIMEOUT} COST ${cost} ENVIRONMENT [==[${ENVIRONMENT}]==])\n")
endforeach()
file(WRITE ${LIST} "${script}")
