# Toolchain for WebAssembly: Debian's emscripten, with C++ exceptions of the machine itself.
include(/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake)
set(CMAKE_CXX_FLAGS_INIT "-fwasm-exceptions -msimd128")
set(CMAKE_C_FLAGS_INIT "-msimd128")
# Eigen is headers only and comes from the build machine.
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
