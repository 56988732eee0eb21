# The router: 64-bit ARM with musl. For CMake's -DCMAKE_TOOLCHAIN_FILE; scripts/target prepares what
# it needs, with what Debian 12 has.
#
# C is compiled and everything is linked by gcc, with the specs file of Debian's musl. gcc's own C++
# headers do not compile against musl, so C++ is compiled by clang, against the headers of a libc++
# that scripts/target builds. The programs for the router use only what is in these headers; the
# tests link the library too.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

# json-c, GoogleTest, libc++ and the kernel's headers for the target.
get_filename_component(UTM_TARGET_ROOT "${CMAKE_CURRENT_LIST_DIR}/../build/target-root" ABSOLUTE)
set(UTM_MUSL_INCLUDE /usr/include/aarch64-linux-musl)
set(UTM_MUSL_SPECS /usr/lib/aarch64-linux-musl/musl-gcc.specs)

if(NOT DEFINED CMAKE_C_COMPILER) # libc++ is not for gcc
  set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
endif()
# The helpers for atomics that compilers would call look for __getauxval, which musl does not have.
set(CMAKE_C_FLAGS_INIT "-specs=${UTM_MUSL_SPECS} -mno-outline-atomics")

set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-musl)
execute_process(COMMAND clang++ -print-resource-dir
                OUTPUT_VARIABLE UTM_CLANG_RESOURCES OUTPUT_STRIP_TRAILING_WHITESPACE)
string(JOIN " " CMAKE_CXX_FLAGS_INIT
  -mno-outline-atomics -nostdinc -nostdinc++ -D_LIBCPP_HAS_MUSL_LIBC
  -isystem ${UTM_TARGET_ROOT}/include/c++/v1
  -isystem ${UTM_CLANG_RESOURCES}/include
  -isystem ${UTM_MUSL_INCLUDE}
  -isystem ${UTM_TARGET_ROOT}/include/kernel)
# musl's specs replace all that gcc tells the linker, the index of the unwind tables included. Without
# it whatever a test throws ends the program. What ships is linked as C, and throws nothing.
string(JOIN " " CMAKE_CXX_LINK_EXECUTABLE
  <CMAKE_C_COMPILER> -specs=${UTM_MUSL_SPECS} -Wl,--eh-frame-hdr <LINK_FLAGS> <OBJECTS> -o <TARGET> <LINK_LIBRARIES>
  -Wl,--start-group ${UTM_TARGET_ROOT}/lib/libc++.a ${UTM_TARGET_ROOT}/lib/libc++abi.a
  ${UTM_TARGET_ROOT}/lib/libunwind.a -Wl,--end-group)

# What the build itself runs, such as a test program that lists its tests.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static)

set(CMAKE_FIND_ROOT_PATH ${UTM_TARGET_ROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
