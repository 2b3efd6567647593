# This machine's processor with musl as the C library, from Debian's musl-tools. They have no C++ library. Only its
# headers are needed: this machine's, which check for a glibc version.
set(CMAKE_C_COMPILER musl-gcc)
set(CMAKE_CXX_COMPILER g++)
execute_process(COMMAND g++ -dumpversion OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE)
set(CMAKE_CXX_FLAGS_INIT "-specs=/usr/lib/x86_64-linux-musl/musl-gcc.specs -isystem /usr/include/c++/${version} \
-isystem /usr/include/x86_64-linux-gnu/c++/${version} '-D__GLIBC_PREREQ(major,minor)=0'")
