# What is installed beside the companions, and the Debian package. Included last: CPack takes what was set before it.
include(GNUInstallDirs)

# The program looks for its tables where ORBELN_DIR says and in ./tab, nowhere else. What users call is a wrapper that
# says where the installed tables are, so that `orbeln -in x.tab` works in any folder.
configure_file(${CMAKE_SOURCE_DIR}/cmake/orbeln.sh.in ${CMAKE_BINARY_DIR}/wrapper/orbeln @ONLY
               FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
install(TARGETS orbeln RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/orbeln)
install(PROGRAMS ${CMAKE_BINARY_DIR}/wrapper/orbeln DESTINATION bin)

# Man pages and the package's changelog, compressed without a time stamp, as Debian wants them.
set(ORBELN_MAINTAINER "ORBEL-N developers <orbeln@localhost>" CACHE STRING "Name and address in the package")
configure_file(${CMAKE_SOURCE_DIR}/cmake/debian/changelog.in ${CMAKE_BINARY_DIR}/debian/changelog @ONLY)
find_program(ORBELN_GZIP gzip REQUIRED)
set(ORBELN_COMPRESSED)
function(orbeln_install_compressed file destination)
  get_filename_component(name ${file} NAME)
  set(packed ${CMAKE_BINARY_DIR}/compressed/${name})
  add_custom_command(OUTPUT ${packed}.gz COMMAND ${CMAKE_COMMAND} -E copy ${file} ${packed}
                     COMMAND ${ORBELN_GZIP} -9nf ${packed} DEPENDS ${file} COMMENT "Compressing ${name}" VERBATIM)
  install(FILES ${packed}.gz DESTINATION ${destination})
  set(ORBELN_COMPRESSED ${ORBELN_COMPRESSED} ${packed}.gz PARENT_SCOPE)
endfunction()
file(GLOB ORBELN_MAN_PAGES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/docs/man/*.1)
foreach(page ${ORBELN_MAN_PAGES})
  orbeln_install_compressed(${page} ${CMAKE_INSTALL_MANDIR}/man1)
endforeach()
orbeln_install_compressed(${CMAKE_BINARY_DIR}/debian/changelog ${CMAKE_INSTALL_DATADIR}/doc/orbeln)
add_custom_target(compressed_pages ALL DEPENDS ${ORBELN_COMPRESSED})
install(FILES ${CMAKE_SOURCE_DIR}/cmake/debian/copyright ${CMAKE_SOURCE_DIR}/data/LICENSES.md
              ${CMAKE_SOURCE_DIR}/CITATION.cff DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/orbeln)
install(FILES ${CMAKE_SOURCE_DIR}/cmake/debian/lintian-overrides
        DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME orbeln)

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
set(CPACK_PACKAGE_CONTACT "${ORBELN_MAINTAINER}")
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
