# The spooler's libraries, its folders, and the one place that silences deprecation.
# SPDX-License-Identifier: Apache-2.0
find_program(CUPS_CONFIG cups-config)
if(NOT CUPS_CONFIG)
  message(FATAL_ERROR "cups-config not found: install libcups2-dev and libcupsimage2-dev")
endif()

find_library(CUPS_LIBRARY cups REQUIRED)
find_library(CUPSIMAGE_LIBRARY cupsimage REQUIRED)
find_path(CUPS_INCLUDE_DIR cups/cups.h REQUIRED)

# Printer descriptions are the interface that the spooler offers to filters, deprecated or not.
add_library(korvel_cups INTERFACE)
target_link_libraries(korvel_cups INTERFACE ${CUPS_LIBRARY})
# Named once more, the compiler's own folder would come before that of the C++ library.
if(NOT CUPS_INCLUDE_DIR MATCHES "/usr/include$")
  target_include_directories(korvel_cups SYSTEM INTERFACE ${CUPS_INCLUDE_DIR})
endif()
target_compile_options(korvel_cups INTERFACE -Wno-deprecated-declarations)

add_library(korvel_cups_raster INTERFACE)
target_link_libraries(korvel_cups_raster INTERFACE korvel_cups ${CUPSIMAGE_LIBRARY})

# Where the spooler looks for filters and descriptions; override with -DKORVEL_CUPS_SERVERBIN=...
function(korvel_cups_dir variable what)
  execute_process(
    COMMAND ${CUPS_CONFIG} --${what}
    OUTPUT_VARIABLE answer
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(${variable} ${answer} CACHE PATH "The spooler's ${what} folder")
endfunction()
korvel_cups_dir(KORVEL_CUPS_SERVERBIN serverbin)
korvel_cups_dir(KORVEL_CUPS_DATADIR datadir)

# Where the spooler looks for descriptions; a package gives its own, -DKORVEL_PPD_DIR=...
if(NOT KORVEL_PPD_DIR)
  set(KORVEL_PPD_DIR ${KORVEL_CUPS_DATADIR}/model/korvel)
endif()
