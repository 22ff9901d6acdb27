# Debian arm64 on another machine; KORVEL_SYSROOT is the folder that make_sysroot has filled.
# SPDX-License-Identifier: Apache-2.0
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(KORVEL_TRIPLE aarch64-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/foreign.cmake)
