# SPDX-License-Identifier: Apache-2.0
# Compiler options of every target.
add_compile_options(
  -Wall -Wextra -Wshadow -Wformat=2 -Wcast-align -Wnon-virtual-dtor -Wimplicit-fallthrough -Wundef
  -Wvla)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-Wno-restrict) # false alarms about std::string in GCC 12
endif()
# No path of the machine in what is released, so that it is the same wherever it is built. A debugger's
# builds keep their paths, and a compiler cache its hits.
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
endif()
if(KVT_WERROR)
  add_compile_options(-Werror)
endif()
if(KVT_SANITIZE)
  add_compile_options(-fsanitize=${KVT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KVT_SANITIZE})
endif()

find_package(Threads REQUIRED)

# The simulated phone's libraries find one another, and kvt finds them, by RUNPATH: a platform put
# in front with LD_LIBRARY_PATH or LD_PRELOAD wins.
set(CMAKE_BUILD_WITH_INSTALL_RPATH OFF)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
add_link_options(LINKER:--enable-new-dtags)
if(KVT_PLATFORM STREQUAL "device")
  set(CMAKE_SKIP_RPATH ON) # a phone finds its own libraries
endif()
