# Toolchain for 32-bit x86, with the arithmetic of the 64-bit one.
set(triple i686-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR i386)
include("${CMAKE_CURRENT_LIST_DIR}/emulated_linux.cmake")
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse")
