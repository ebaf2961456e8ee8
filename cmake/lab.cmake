# SPDX-License-Identifier: Apache-2.0
# The recorder and the replayer need no package; the recorder is for phones too.
add_subdirectory(lab/tape/library)

# The lab is built where its packages are; the tool needs none of them.
foreach(PACKAGE CLI11 nlohmann_json tomlplusplus pugixml simdjson)
  find_package(${PACKAGE} QUIET)
  if(NOT ${PACKAGE}_FOUND)
    list(APPEND LAB_MISSING ${PACKAGE})
  endif()
endforeach()
find_library(RE2_LIBRARY re2)
if(NOT RE2_LIBRARY)
  list(APPEND LAB_MISSING re2)
endif()
if(LAB_MISSING)
  list(JOIN LAB_MISSING ", " LAB_MISSING)
  message(STATUS "The lab (kvt-lab) is left out: ${LAB_MISSING} not found")
else()
  add_subdirectory(lab)
endif()
