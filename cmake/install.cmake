# SPDX-License-Identifier: Apache-2.0
# Installation, also the Debian package's: the tool, with the simulated phone's libraries in a folder of
# their own (their names are a phone's), the lab where it is built, pages, completions, documents and
# examples.
set(KVT_LIB_DIR ${CMAKE_INSTALL_LIBDIR}/kvt)

# One RUNPATH for the build tree and for an installation: nothing to pad or to rewrite.
set_target_properties(kvt PROPERTIES BUILD_WITH_INSTALL_RPATH ON
  INSTALL_RPATH "$ORIGIN/../${KVT_LIB_DIR};$ORIGIN/../lib")
install(TARGETS kvt RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(KVT_PLATFORM STREQUAL "simulated")
  set(PHONE simphone qmi_cci idl qmi_common_so diag cutils log qcrilNrQtiMutex)
  set_target_properties(${PHONE} PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "$ORIGIN")
  install(TARGETS ${PHONE} kvt_at_redirect LIBRARY DESTINATION ${KVT_LIB_DIR})
  install(TARGETS kvt-at-terminal RUNTIME DESTINATION ${KVT_LIB_DIR})
endif()
if(TARGET kvt-lab)
  install(TARGETS kvt-lab RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(TARGETS kvt_record kvt_replay LIBRARY DESTINATION ${KVT_LIB_DIR})
  # Where Wireshark looks for plugins of every version; one of another prefix looks in its own.
  install(FILES ${DISSECTOR}
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/wireshark/plugins)
  install(DIRECTORY lab/scenarios DESTINATION ${CMAKE_INSTALL_DATADIR}/kvt)
  install(DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/kvt-replay DESTINATION ${KVT_LIB_DIR})
endif()
if(TARGET kvt-doctor)
  set_target_properties(kvt-doctor PROPERTIES BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH "$ORIGIN/../${KVT_LIB_DIR};$ORIGIN/../lib")
  install(TARGETS kvt-doctor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES packaging/man/kvt-doctor.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
install(FILES packaging/man/kvt.1 packaging/man/kvt-lab.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES packaging/completions/kvt.bash
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME kvt)
install(FILES packaging/completions/_kvt
  DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY lab/schema DESTINATION ${CMAKE_INSTALL_DOCDIR}/lab)
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs
  FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "recipes" EXCLUDE)
install(DIRECTORY docs/recipes/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples USE_SOURCE_PERMISSIONS)
