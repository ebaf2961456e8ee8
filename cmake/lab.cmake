# What runs on the phone is built for every platform.
add_subdirectory(lab/phone)

# The lab is built where its packages are; the tool needs none of them.
foreach(PACKAGE CLI11 nlohmann_json tomlplusplus)
  find_package(${PACKAGE} QUIET)
  if(NOT ${PACKAGE}_FOUND)
    list(APPEND LAB_MISSING ${PACKAGE})
  endif()
endforeach()
if(LAB_MISSING)
  list(JOIN LAB_MISSING ", " LAB_MISSING)
  message(STATUS "The lab (kvt-lab) is left out: ${LAB_MISSING} not found")
else()
  add_subdirectory(lab)
endif()
