# Toolchain for 64-bit Arm.
set(triple aarch64-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
include("${CMAKE_CURRENT_LIST_DIR}/emulated_linux.cmake")
