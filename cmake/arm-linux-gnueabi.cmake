# 32-bit ARM, soft-float: Debian's armel.
set(triple arm-linux-gnueabi)
set(processor arm)
set(emulator qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
