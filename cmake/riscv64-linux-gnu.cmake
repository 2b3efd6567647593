# 64-bit RISC-V.
set(triple riscv64-linux-gnu)
set(processor riscv64)
set(emulator qemu-riscv64)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
