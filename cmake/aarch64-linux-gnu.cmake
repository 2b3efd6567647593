# 64-bit ARM.
set(triple aarch64-linux-gnu)
set(processor aarch64)
set(emulator qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
