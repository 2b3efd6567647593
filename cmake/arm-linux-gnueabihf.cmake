# The gateway's processor: 32-bit ARM, hard-float, Thumb-2.
set(triple arm-linux-gnueabihf)
set(processor arm)
set(emulator qemu-arm)
set(CMAKE_C_FLAGS_INIT "-march=armv7-a+fp -mthumb -Wno-psabi")
set(CMAKE_CXX_FLAGS_INIT "-march=armv7-a+fp -mthumb -Wno-psabi")
set(CMAKE_C_FLAGS_MINSIZEREL_INIT "-Os")
set(CMAKE_CXX_FLAGS_MINSIZEREL_INIT "-Os")
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
