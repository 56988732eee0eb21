# Hardens what ships, the daemon and the client, the way OpenWrt hardens its packages by default.
#
# An OpenWrt SDK passes its own choices in CMAKE_C_FLAGS, CMAKE_CXX_FLAGS and
# CMAKE_EXE_LINKER_FLAGS. What is found there, in any form, is left alone: a flag from here would
# come later on the command line and win.
#
# tests/binary/hardening_test.sh reads all of it off a finished binary, also a cross-built one.

string(TOUPPER "${CMAKE_BUILD_TYPE}" build_type)
set(given_compile_flags "${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${build_type}}")
set(given_link_flags "${CMAKE_C_FLAGS} ${CMAKE_EXE_LINKER_FLAGS}")

set(hardening_compile "")
set(hardening_link "")

# A position-independent executable, which the kernel loads at a random address. CMake compiles for
# it everywhere (CMAKE_POSITION_INDEPENDENT_CODE), but links with -pie only after this question.
include(CheckPIESupported)
check_pie_supported(OUTPUT_VARIABLE pie_answer LANGUAGES C CXX)
if(NOT CMAKE_C_LINK_PIE_SUPPORTED)
  message(WARNING "No position-independent executables with this compiler: ${pie_answer}")
endif()
# The two libraries of objects end up in executables only. With CMake's -fPIC for libraries the
# compiler has to assume that their functions may be replaced at run time.
set(hardening_pie -fPIE)

# Full RELRO: all symbols are resolved at the start, then the tables are read-only. A relocation in
# the code, which would need writable code, is an error.
if(NOT given_link_flags MATCHES "-z,?(no)?relro")
  list(APPEND hardening_link -Wl,-z,relro)
endif()
if(NOT given_link_flags MATCHES "-z,?(now|lazy)")
  list(APPEND hardening_link -Wl,-z,now)
endif()
list(APPEND hardening_link -Wl,-z,noexecstack -Wl,-z,text)

# The strong form guards every function with an array or with an address taken; OpenWrt's default,
# the regular form, only those with a text buffer of eight bytes or more, and so passes over
# addresses of hardware, rings and requests. The sanitizers check more and better.
if(NOT UTM_SANITIZE AND NOT given_compile_flags MATCHES "-f(no-)?stack-protector")
  list(APPEND hardening_compile -fstack-protector-strong)
endif()

# Bounds checks in copies and formatted prints. They need an optimiser: glibc warns without one.
# glibc has them built in. musl has none; OpenWrt adds the package fortify-headers to the SDK's
# include path, and where that is missing the macro does nothing. -U first, since some
# distributions' compilers define it themselves.
if(NOT UTM_SANITIZE AND NOT given_compile_flags MATCHES "_FORTIFY_SOURCE")
  list(APPEND hardening_compile
    $<$<CONFIG:MinSizeRel,Release,RelWithDebInfo>:-U_FORTIFY_SOURCE>
    $<$<CONFIG:MinSizeRel,Release,RelWithDebInfo>:-D_FORTIFY_SOURCE=2>)
endif()

# No unwind tables in what ships: a tenth of the daemon. Nothing here throws or is cancelled, so only
# a debugger would read them; it has .debug_frame of the unstripped binary when built with -g.
if(NOT UTM_SANITIZE AND NOT given_compile_flags MATCHES "unwind-tables")
  list(APPEND hardening_compile
    $<$<CONFIG:MinSizeRel,Release>:-fno-asynchronous-unwind-tables>
    $<$<CONFIG:MinSizeRel,Release>:-fno-unwind-tables>)
endif()

foreach(target utm_format utm_app utm_ctl utm_appd utm_appctl utm_appctl_monitor)
  target_compile_options(${target} PRIVATE ${hardening_pie} ${hardening_compile})
endforeach()
foreach(target utm_appd utm_appctl utm_appctl_monitor)
  target_link_options(${target} PRIVATE ${hardening_link})
endforeach()
if(NOT QVUTM_NOTIFY_LIBRARY)
  target_compile_options(qvutm_notify PRIVATE ${hardening_compile})
  target_link_options(qvutm_notify PRIVATE ${hardening_link})
endif()
