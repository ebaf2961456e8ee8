# SPDX-License-Identifier: Apache-2.0
# Tests of the tape: the recorder, the replayer and the verbs around them. Those of threads run under
# the sanitizers too.
set(TAPE ${CMAKE_CURRENT_LIST_DIR})

add_executable(tape_stress ${TAPE}/tape_stress.cpp)
target_link_libraries(tape_stress PRIVATE hal_kvt platform_libraries)
set_target_properties(tape_stress PROPERTIES BUILD_RPATH "$ORIGIN/../lib")
# Stress, twin and hard cases compare runs whose threads wait by the clock: on a busy machine one in a few
# differs. They run with ./test --tape, which asks for this option.
option(KVT_TAPE_STRESS "Register the tape's tests that a busy machine disturbs" OFF)
if(KVT_TAPE_STRESS)
  add_test(NAME Tape.stress COMMAND sh ${TAPE}/tape_stress.sh ${CMAKE_BINARY_DIR} 60 20)
  set_tests_properties(Tape.stress PROPERTIES TIMEOUT 300)
endif()

add_dependencies(tape_stress kvt_record kvt_replay)

if(KVT_SANITIZE OR NOT TARGET kvt-lab)
  return()
endif()

set(TAPE_VERBS redact)
if(KVT_TAPE_STRESS)
  list(APPEND TAPE_VERBS twin)
endif()
foreach(NAME ${TAPE_VERBS})
  add_test(NAME Tape.${NAME} COMMAND sh ${TAPE}/tape_${NAME}.sh ${CMAKE_BINARY_DIR})
  set_tests_properties(Tape.${NAME} PROPERTIES TIMEOUT 120)
endforeach()

# Every command of every transcript and page.
file(GLOB TRANSCRIPTS RELATIVE ${PROJECT_SOURCE_DIR}/tests/transcripts CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/tests/transcripts/*.txt)
foreach(FILE ${TRANSCRIPTS})
  get_filename_component(NAME ${FILE} NAME_WE)
  set(HOW "")
  if(NAME STREQUAL "diag" AND NOT KVT_TAPE_STRESS)
    set(HOW --record)
  endif()
  add_test(NAME Tape.transcript.${NAME}
    COMMAND sh ${TAPE}/tape_transcript.sh ${CMAKE_BINARY_DIR} Transcript.${NAME} ${HOW})
  set_tests_properties(Tape.transcript.${NAME} PROPERTIES TIMEOUT 240 FIXTURES_SETUP tapes)
endforeach()

# What they recorded, in Wireshark.
find_package(Python3 COMPONENTS Interpreter)
find_program(TSHARK tshark)
if(Python3_FOUND AND TSHARK)
  add_test(NAME Tape.wireshark COMMAND ${Python3_EXECUTABLE} ${TAPE}/wireshark_test.py
    $<TARGET_FILE:kvt-lab> $<TARGET_FILE:kvt> ${DISSECTOR} ${CMAKE_BINARY_DIR}/Testing/tapes)
  set_tests_properties(Tape.wireshark PROPERTIES TIMEOUT 120 FIXTURES_REQUIRED tapes)
endif()

# Another platform: one library under every name, as a program finds it by LD_LIBRARY_PATH.
add_library(other_platform SHARED ${TAPE}/tape_other_platform.cpp)
target_link_libraries(other_platform PRIVATE platform Threads::Threads)
set(OTHER ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/other_platform)
set_target_properties(other_platform PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${OTHER})
file(MAKE_DIRECTORY ${OTHER})
foreach(NAME libqmi_cci libidl libqmi_common_so libdiag libcutils liblog libqcrilNrQtiMutex)
  file(CREATE_LINK libother_platform.so ${OTHER}/${NAME}.so SYMBOLIC)
endforeach()
add_library(tape_changed MODULE ${TAPE}/tape_changed.cpp)
target_link_libraries(tape_changed PRIVATE ${CMAKE_DL_LIBS})
if(KVT_TAPE_STRESS)
  add_test(NAME Tape.hard COMMAND sh ${TAPE}/tape_hard.sh ${CMAKE_BINARY_DIR})
  set_tests_properties(Tape.hard PROPERTIES TIMEOUT 240)
endif()
