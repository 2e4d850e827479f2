# Toolchain for z/Architecture, which is big-endian.
set(triple s390x-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR s390x)
include("${CMAKE_CURRENT_LIST_DIR}/emulated_linux.cmake")
