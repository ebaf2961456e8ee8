# SPDX-License-Identifier: Apache-2.0
# Tests of the tape: the recorder, the replayer and the verbs around them. Those of threads run under
# the sanitizers too.
set(TAPE ${CMAKE_CURRENT_LIST_DIR})

add_executable(tape_stress ${TAPE}/tape_stress.cpp)
target_link_libraries(tape_stress PRIVATE hal_kvt platform_libraries)
set_target_properties(tape_stress PROPERTIES BUILD_RPATH "$ORIGIN/../lib")
add_test(NAME Tape.stress COMMAND sh ${TAPE}/tape_stress.sh ${CMAKE_BINARY_DIR} 60 20)
set_tests_properties(Tape.stress PROPERTIES TIMEOUT 300)

if(KVT_SANITIZE)
  return()
endif()

foreach(NAME twin redact)
  add_test(NAME Tape.${NAME} COMMAND sh ${TAPE}/tape_${NAME}.sh ${CMAKE_BINARY_DIR})
  set_tests_properties(Tape.${NAME} PROPERTIES TIMEOUT 120)
endforeach()

# Every command of every transcript and page.
file(GLOB TRANSCRIPTS RELATIVE ${PROJECT_SOURCE_DIR}/tests/transcripts CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/tests/transcripts/*.txt)
foreach(FILE ${TRANSCRIPTS})
  get_filename_component(NAME ${FILE} NAME_WE)
  add_test(NAME Tape.transcript.${NAME}
    COMMAND sh ${TAPE}/tape_transcript.sh ${CMAKE_BINARY_DIR} Transcript.${NAME})
  set_tests_properties(Tape.transcript.${NAME} PROPERTIES TIMEOUT 240)
endforeach()
