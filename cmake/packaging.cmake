# What `cmake --install` puts where, and the package that `cpack` makes of it.

# Debian's names have no underscores, and its tools look for the licence in a folder of that name.
set(package_name utm-appd)
set(CMAKE_INSTALL_DOCDIR share/doc/${package_name} CACHE PATH "Folder of the documents")
include(GNUInstallDirs)

install(TARGETS utm_appd RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR})
install(TARGETS utm_appctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# utm_appctl looks for it relative to itself, so that the whole tree may be moved.
install(TARGETS utm_appctl_monitor RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR})
file(RELATIVE_PATH client_to_libexec ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBEXECDIR})
target_compile_definitions(utm_appctl PRIVATE
  UTM_APPCTL_TO_MONITOR="${client_to_libexec}/utm_appctl_monitor")
install(FILES docs/utm_appctl.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES docs/utm_appd.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)
install(FILES completion/utm_appctl DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES completion/_utm_appctl DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES completion/utm_appctl.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

# A service for Debian and its relatives, behind a fence. A firmware has its own (package/openwrt).
set(debian_files ${PROJECT_SOURCE_DIR}/package/debian)
install(PROGRAMS ${debian_files}/utm_appd_fenced DESTINATION ${CMAKE_INSTALL_SBINDIR})
install(FILES ${debian_files}/utm-appd.service DESTINATION lib/systemd/system)

# The pages keep their places to each other, so that links among them work.
install(FILES README.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
file(GLOB pages CONFIGURE_DEPENDS docs/*.md docs/*.png docs/*.json)
install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
install(DIRECTORY docs/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs USE_SOURCE_PERMISSIONS)

# The substitute is no library for others: it has a folder of its own, which only the daemon knows,
# relative to itself so that the whole tree may be moved.
if(NOT QVUTM_NOTIFY_LIBRARY)
  set(substitute_dir ${CMAKE_INSTALL_LIBDIR}/utm_appd)
  file(RELATIVE_PATH daemon_to_substitute
    ${CMAKE_INSTALL_FULL_SBINDIR} ${CMAKE_INSTALL_FULL_LIBDIR}/utm_appd)
  set_target_properties(utm_appd PROPERTIES INSTALL_RPATH "$ORIGIN/${daemon_to_substitute}")
  install(TARGETS qvutm_notify LIBRARY DESTINATION ${substitute_dir})
endif()

# For people who try it on a laptop: a package for Debian, and an archive. A firmware builds its own.
file(READ LICENSE license_text)
string(REGEX MATCH "Copyright \\(c\\) [^\n]+" copyright_line "${license_text}")
string(REGEX REPLACE "^Copyright \\(c\\) " "" copyright_line "${copyright_line}")
string(REGEX REPLACE "^.*\n\n(Permission)" "\\1" license_text "${license_text}")
string(REGEX REPLACE "\n+$" "" license_text "${license_text}")
string(REGEX REPLACE "\n\n" "\n.\n" license_text "${license_text}")
string(REGEX REPLACE "\n" "\n " license_text "${license_text}")
file(CONFIGURE OUTPUT copyright @ONLY CONTENT
"Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: utm_appd

Files: *
Copyright: @copyright_line@
License: Expat
 @license_text@
")
install(FILES ${PROJECT_BINARY_DIR}/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME ${package_name})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "the utm_appd authors")
set(CPACK_PACKAGE_CONTACT "the utm_appd authors <utm_appd@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "internet time limits for a family's router")
set(CPACK_PACKAGE_DESCRIPTION
"Tracks and limits each family member's internet time on a home router: daily
allowances per person, limits per application, bonus minutes. The daemon utm_appd counts and decides,
the client utm_appctl configures and asks it.
On a machine without a router's DPI engine the daemon runs only against the
simulated router of its source tree: installed alone it starts and answers, but
counts nothing and blocks nothing. No daemon is started at the installation.
Licence: MIT.")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_RESOURCE_FILE_README ${PROJECT_SOURCE_DIR}/README.md)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
    GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The fence: groupadd, unshare and mount.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "passwd, util-linux, mount")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
  ${debian_files}/postinst ${debian_files}/prerm ${debian_files}/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
include(CPack)
