# Installation and the Debian package: the tool, with the simulated phone's libraries in a folder of
# their own (their names are a phone's), man page and completions.
set(KVT_LIB_DIR ${CMAKE_INSTALL_LIBDIR}/kvt)

function(kvt_install)
  # One RUNPATH for the build tree and for an installation: nothing to pad or to rewrite.
  set_target_properties(kvt PROPERTIES BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH "$ORIGIN/../${KVT_LIB_DIR};$ORIGIN/../lib")
  install(TARGETS kvt RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  if(KVT_PLATFORM STREQUAL "simulated")
    set(PHONE simphone qmi_cci idl qmi_common_so diag cutils log qcrilNrQtiMutex)
    set_target_properties(${PHONE} PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "$ORIGIN")
    install(TARGETS ${PHONE} LIBRARY DESTINATION ${KVT_LIB_DIR})
  endif()
  install(FILES packaging/man/kvt.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES packaging/completions/kvt.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME kvt)
  install(FILES packaging/completions/_kvt
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
  install(FILES README.md CHANGELOG.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
endfunction()
kvt_install()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kvt)
set(CPACK_PACKAGE_VENDOR kvt)
set(CPACK_PACKAGE_CONTACT "kvt developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Modem test tool with a simulated phone")
set(CPACK_PACKAGE_DESCRIPTION
  "kvt reads and writes NV items and EFS files, sends raw QMI and DIAG packets,\ndrives SIM cards and reads modem statistics. This build runs against a simulated\nphone whose state is a directory of plain files.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
include(CPack)
