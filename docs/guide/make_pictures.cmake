# Generates the guide's pictures with the preview of this build. Variables: PREVIEW, FILTER, PPDS,
# SHEETS, TARGET and, when cross-compiling, EMULATOR.
# SPDX-License-Identifier: Apache-2.0
file(REMOVE_RECURSE ${TARGET})
file(MAKE_DIRECTORY ${TARGET})

# The preview starts the filter itself, so the filter is wrapped in a script that runs the emulator.
if(EMULATOR)
  set(script ${TARGET}/../../emulated-filter)
  list(JOIN EMULATOR " " command)
  file(WRITE ${script} "#!/bin/sh\nexec ${command} '${FILTER}' \"$@\"\n")
  file(CHMOD ${script} PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
  set(FILTER ${script})
endif()

# picture(NAME DRIVER SHEET RESULT [ARGUMENT]...): keeps the preview's file RESULT as NAME.png.
function(picture name driver sheet result)
  set(work ${TARGET}/work)
  execute_process(
    COMMAND ${EMULATOR} ${PREVIEW} --filter ${FILTER} -p ${PPDS}/korvel-${driver}.ppd --out
            ${work} ${ARGN} ${SHEETS}/${sheet}.ras.gz
    OUTPUT_QUIET ERROR_VARIABLE fault
    RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${name}: ${fault}")
  endif()
  file(RENAME ${work}/${result} ${TARGET}/${name}.png)
  file(REMOVE_RECURSE ${work})
endfunction()

set(label_3x2 label-203 test-label-2x3Rotated-203dpi page-1.png --pages)
set(label_2x2 label-203 test-label-2x2-203dpi page-1.png --pages -o HalftoneType=Ordered)
set(torn_label label-203 test-label-1x4Rotated-203dpi sheet-1.png)
set(stencil stencil-300 test-stencil-Tattoo_A6-300dpi page-1.png --pages)

picture(test-label ${label_3x2} -o HalftoneType=Ordered)
picture(label-torn ${torn_label} -o PostAction=TearOff)
picture(label-cut ${torn_label} -o PostAction=Cut)
picture(label-halftones label-203 test-label-2x2-203dpi halftones.png --halftones)
picture(calibration label-203 calibration-2x3Rotated-203dpi page-1.png --pages -o HalftoneType=None)
picture(halftones label-203 halftones-4x6-203dpi page-1.png --pages -o HalftoneType=None)
picture(stencil ${stencil})
picture(stencil-framed ${stencil} -o AntiWrinkle=3)
picture(brightness-minus ${label_2x2} -o Brightness=-20)
picture(brightness-zero ${label_2x2})
picture(brightness-plus ${label_2x2} -o Brightness=20)
picture(contrast ${label_2x2} -o Contrast=40)
