# What ships becomes machine code when a program is linked, all of it at once and for size: see
# UTM_LINK_TIME. With lld, since GNU's linker cannot read what clang hands over. To be included
# before the first target.

if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  message(FATAL_ERROR "UTM_LINK_TIME needs clang; this is ${CMAKE_CXX_COMPILER_ID}")
endif()

# Archives of what clang hands over need an index, which only LLVM's tools can make.
find_program(UTM_LLVM_AR llvm-ar REQUIRED)
find_program(UTM_LLVM_RANLIB llvm-ranlib REQUIRED)
set(CMAKE_AR ${UTM_LLVM_AR})
set(CMAKE_RANLIB ${UTM_LLVM_RANLIB})

# gcc looks for linkers in folders of its own.
find_program(UTM_LLD ld.lld REQUIRED)
get_filename_component(lld_folder ${UTM_LLD} DIRECTORY)
add_link_options(-B${lld_folder} -fuse-ld=lld)

# utm_link_time(TARGET...): libraries, and the programs that are made of them.
function(utm_link_time)
  foreach(target ${ARGN})
    target_compile_options(${target} PRIVATE $<$<CONFIG:MinSizeRel>:-Oz> -flto)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL EXECUTABLE)
      # Texts share their ends; code that repeats is also looked for in what was taken out of others.
      target_link_options(${target} PRIVATE -Wl,-O2 -Wl,-mllvm,-machine-outliner-reruns=2)
    endif()
  endforeach()
endfunction()
