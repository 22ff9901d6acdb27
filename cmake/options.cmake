# Flags that every target of ours compiles and links with: link korvel_options privately.
# SPDX-License-Identifier: Apache-2.0
add_library(korvel_options INTERFACE)

# A fused multiply-add rounds once where the dots are defined by two roundings.
target_compile_options(korvel_options INTERFACE -ffp-contract=off)
target_include_directories(korvel_options INTERFACE ${PROJECT_SOURCE_DIR})

target_compile_options(
  korvel_options
  INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wformat=2
            $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast;-Wnon-virtual-dtor>)
if(KORVEL_WERROR)
  target_compile_options(korvel_options INTERFACE -Werror)
endif()

# Control-flow protection by what the processor has: CET on amd64, BTI and PAC on arm64.
include(CheckCXXCompilerFlag)
if(KORVEL_HARDEN)
  target_compile_options(korvel_options INTERFACE -fstack-protector-strong
                                                  $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>)
  # Of programs only: from g++ 16 on, a module that is linked with it needs a main function.
  target_link_options(
    korvel_options INTERFACE $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie> -Wl,-z,relro
                             -Wl,-z,now)
  set(CMAKE_REQUIRED_FLAGS -Werror)  # a compiler may accept a flag and say that it has no use for it
  foreach(flag IN ITEMS -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
    string(MAKE_C_IDENTIFIER "KORVEL_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
      target_compile_options(korvel_options INTERFACE ${flag})
    endif()
  endforeach()
  unset(CMAKE_REQUIRED_FLAGS)
  # The linker marks a program only when every object is marked, and the C library's start files may
  # not be. They are compatible with a shadow stack, so this one may be claimed.
  include(CheckLinkerFlag)
  check_linker_flag(CXX -Wl,-z,shstk KORVEL_HAS_SHSTK)
  if(KORVEL_HAS_SHSTK AND KORVEL_HAS_fcf_protection)
    target_link_options(korvel_options INTERFACE -Wl,-z,shstk)
  endif()
endif()

# Headers are included by their path below this folder; the filter has a root of its own, so that
# nothing else reaches its headers without linking it.
set(KORVEL_INCLUDE_ROOT ${PROJECT_SOURCE_DIR})

# korvel_program(NAME SOURCE...): a program that is installed; all of them are built into bin/.
function(korvel_program name)
  add_executable(${name} ${ARGN})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
  target_link_libraries(${name} PRIVATE korvel_options)
endfunction()

# korvel_library(NAME HEADERS ... SOURCES ...): one folder's library. Its headers form a header
# set, so that the target all_verify_interface_header_sets compiles each of them alone.
function(korvel_library name)
  cmake_parse_arguments(arg "" "" "HEADERS;SOURCES" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${KORVEL_INCLUDE_ROOT} FILES ${arg_HEADERS})
  target_link_libraries(${name} PRIVATE korvel_options)
endfunction()
