# Kernels: sources that are compiled once for each target of lanes/target.h.
# SPDX-License-Identifier: Apache-2.0

if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
  set(KORVEL_TARGETS portable sse2 avx2)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(KORVEL_TARGETS portable neon)
else()
  set(KORVEL_TARGETS portable)
endif()

# korvel_kernels(LIBRARY SOURCE...): adds the sources to the library, once a target, each copy in
# the target's namespace. -O3 for all: these loops are what it pays for.
function(korvel_kernels library)
  foreach(target IN LISTS KORVEL_TARGETS)
    set(objects ${library}_${target})
    add_library(${objects} OBJECT ${ARGN})
    target_link_libraries(${objects} PRIVATE korvel_options)
    target_include_directories(${objects} PRIVATE ${PROJECT_SOURCE_DIR}/filter)
    target_compile_definitions(${objects} PRIVATE KORVEL_TARGET=${target})
    if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")  # there it takes minutes and shows nothing more
      target_compile_options(${objects} PRIVATE $<$<CONFIG:Release,RelWithDebInfo>:-O3>)
    endif()
    # Following every vector for the debugger takes a third of the compiler's time.
    target_compile_options(${objects} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-var-tracking-assignments>)
    if(target STREQUAL portable)
      target_compile_definitions(${objects} PRIVATE KORVEL_TARGET_IS_PORTABLE=1)
    else()
      set_target_properties(${objects} PROPERTIES CXX_CLANG_TIDY "")  # once is enough
    endif()
    if(target STREQUAL avx2)
      target_compile_definitions(${objects} PRIVATE KORVEL_LANES=32)
      target_compile_options(${objects} PRIVATE -mavx2)
    endif()
    target_sources(${library} PRIVATE $<TARGET_OBJECTS:${objects}>)
  endforeach()
endfunction()
