# Cross build for 32-bit Windows with Debian's MinGW-w64 (the POSIX thread
# variant, whose C++ runtime is shared by every module through its DLLs):
#   cmake -S . -B build-win32 -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-i686.cmake
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(MINGW_TRIPLET i686-w64-mingw32)

set(CMAKE_C_COMPILER ${MINGW_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${MINGW_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${MINGW_TRIPLET}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${MINGW_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Test programs run under Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR wine)

# The vector code needs SSE2, which every Windows since 8 requires of its
# processor; callers outside the modules (the system, other compilers) keep
# the stack aligned to 4 bytes only, so functions realign it for SSE spills.
set(CMAKE_C_FLAGS_INIT "-msse2 -mstackrealign")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mstackrealign")
