# Debian s390x on another machine; KORVEL_SYSROOT is the folder that make_sysroot has filled.
# SPDX-License-Identifier: Apache-2.0
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(KORVEL_TRIPLE s390x-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/foreign.cmake)
