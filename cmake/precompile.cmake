# SPDX-License-Identifier: Apache-2.0
# Headers that most sources include, compiled once: for builds that are made anew more often than they
# are changed. The others, and clang-tidy, which can't read them, show an include that is missing.
option(KVT_PRECOMPILE "Compile common headers once" OFF)

# The targets get the headers that FIRST has: precompile(FIRST TARGET... HEADERS HEADER...). All must
# be compiled with the same options.
function(precompile FIRST)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" HEADERS)
  if(KVT_PRECOMPILE)
    foreach(NAME ${FIRST} ${ARG_UNPARSED_ARGUMENTS})
      set_target_properties(${NAME} PROPERTIES DEFINE_SYMBOL "") # a macro per library, which nobody asks for
      target_compile_options(${NAME} PRIVATE -fpch-preprocess) # a compiler cache asks for it
      if(NAME STREQUAL FIRST)
        target_precompile_headers(${NAME} PRIVATE ${ARG_HEADERS})
      else()
        target_precompile_headers(${NAME} REUSE_FROM ${FIRST})
      endif()
    endforeach()
  endif()
endfunction()
