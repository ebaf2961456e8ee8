# SPDX-License-Identifier: Apache-2.0
# Tests of the tape: the recorder, the replayer and the verbs around them. Those of threads run under
# the sanitizers too.
set(TAPE ${CMAKE_CURRENT_LIST_DIR})

add_executable(tape_stress ${TAPE}/tape_stress.cpp)
target_link_libraries(tape_stress PRIVATE hal_kvt platform_libraries)
set_target_properties(tape_stress PROPERTIES BUILD_RPATH "$ORIGIN/../lib")
add_test(NAME Tape.stress COMMAND sh ${TAPE}/tape_stress.sh ${CMAKE_BINARY_DIR} 200 100)
set_tests_properties(Tape.stress PROPERTIES TIMEOUT 300)

add_dependencies(tape_stress kvt_record kvt_replay)

if(KVT_SANITIZE OR NOT TARGET kvt-lab)
  return()
endif()

foreach(NAME redact twin hard)
  add_test(NAME Tape.${NAME} COMMAND sh ${TAPE}/tape_${NAME}.sh ${CMAKE_BINARY_DIR})
  set_tests_properties(Tape.${NAME} PROPERTIES TIMEOUT 240 COST 50)
endforeach()

# Every command of every transcript and page.
file(GLOB TRANSCRIPTS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/transcripts/*.txt)
foreach(FILE ${TRANSCRIPTS})
  get_filename_component(NAME ${FILE} NAME_WE)
  add_test(NAME Tape.transcript.${NAME}
    COMMAND sh ${TAPE}/tape_transcript.sh ${CMAKE_BINARY_DIR} Transcript.${NAME})
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
foreach(FILE ${TRANSCRIPTS})
  get_filename_component(NAME ${FILE} NAME_WE)
  add_test(NAME Tape.other.${NAME} COMMAND sh ${TAPE}/tape_other.sh ${CMAKE_BINARY_DIR} ${FILE})
  set_tests_properties(Tape.other.${NAME} PROPERTIES TIMEOUT 600 COST 20)
endforeach()
