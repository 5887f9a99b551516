# What is installed beside the companions, and the Debian package. Included last: CPack takes what was set before it.
include(GNUInstallDirs)

# The program looks for its tables where ORBELN_DIR says and in ./tab, nowhere else. What users call is a wrapper that
# says where the installed tables are, so that `orbeln -in x.tab` works in any folder.
configure_file(${CMAKE_SOURCE_DIR}/cmake/orbeln.sh.in ${CMAKE_BINARY_DIR}/wrapper/orbeln @ONLY
               FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
install(TARGETS orbeln RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/orbeln)
install(PROGRAMS ${CMAKE_BINARY_DIR}/wrapper/orbeln DESTINATION bin)

file(GLOB ORBELN_MAN_PAGES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/docs/man/*.1)
install(FILES ${ORBELN_MAN_PAGES} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# bash-completion looks a file up by the name of the command, so every command gets a link to the one file.
set(ORBELN_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${CMAKE_SOURCE_DIR}/completions/orbeln.bash DESTINATION ${ORBELN_COMPLETIONS} RENAME orbeln)
foreach(command orbeln-convert orbeln-run orbeln-restraints orbeln-report)
  install(CODE "execute_process(COMMAND \${CMAKE_COMMAND} -E create_symlink orbeln
    \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${ORBELN_COMPLETIONS}/${command}\")")
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orbeln)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "ORBEL-N maintainers <orbeln@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "protein torsion angles from NMR chemical shifts")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Predicts backbone and side-chain torsion angles, secondary structure and order
parameters of a protein from its assigned backbone chemical shifts. Companion
programs convert shift lists and write restraints and a report page.")
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
include(CPack)
