# SPDX-License-Identifier: Apache-2.0
# Which kvt this is: the project's version, and what git says of the sources: in a clone git itself, in
# what git exported packaging/git_description, which git fills in.
# kvt_version holds both as generated/kvt_version.h, made anew with every build and rewritten only when
# it changes. Run as a script (cmake -P) it does the writing.
if(CMAKE_SCRIPT_MODE_FILE)
  cmake_minimum_required(VERSION 3.25)
  file(STRINGS ${SOURCE}/packaging/git_description DESCRIPTION)
  string(STRIP "${DESCRIPTION}" DESCRIPTION)
  if(EXISTS ${SOURCE}/.git)
    execute_process(COMMAND git -C ${SOURCE} describe --tags --always --dirty
      OUTPUT_VARIABLE DESCRIPTION OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  endif()
  if(DESCRIPTION STREQUAL "" OR DESCRIPTION MATCHES "Format:")
    set(DESCRIPTION "no git")
  endif()
  file(CONFIGURE OUTPUT ${OUTPUT} @ONLY CONTENT
    "#pragma once\n#define KVT_VERSION \"@VERSION@\"\n#define KVT_GIT \"@DESCRIPTION@\"\n")
  return()
endif()

set(KVT_VERSION_HEADER ${CMAKE_BINARY_DIR}/generated/kvt_version.h)
add_custom_target(kvt_version_header
  COMMAND ${CMAKE_COMMAND} -D SOURCE=${PROJECT_SOURCE_DIR} -D VERSION=${PROJECT_VERSION}
    -D OUTPUT=${KVT_VERSION_HEADER} -P ${CMAKE_CURRENT_LIST_FILE}
  BYPRODUCTS ${KVT_VERSION_HEADER} COMMENT "Which kvt this is")
add_library(kvt_version INTERFACE)
target_include_directories(kvt_version INTERFACE ${CMAKE_BINARY_DIR}/generated)
add_dependencies(kvt_version kvt_version_header)
