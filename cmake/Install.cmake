# What `cmake --install` lays out, in the folders of GNUInstallDirs, and the .deb `make package`
# builds from it.
set(CORVANET_HELPER_INSTALL_DIR ${CMAKE_INSTALL_LIBEXECDIR}/corvanet)
# `make package` builds the installed programs itself; the tests need not be built for it.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

install(TARGETS corvanet-cli corvanet-demo-service RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(TARGET corvanet)
  install(TARGETS corvanet RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${PROJECT_SOURCE_DIR}/resources/desktop/corvanet.desktop
          DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES ${PROJECT_SOURCE_DIR}/resources/desktop/corvanet.svg
          DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/man/corvanet.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
# The converter batches find these on PATH (HelperFolder), not the user.
install(TARGETS PxFiles complete RUNTIME DESTINATION ${CORVANET_HELPER_INSTALL_DIR})
# The program carries these compiled in and lays them out in each installation; the copy here is
# for reading and for packagers.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/resources/Docs ${PROJECT_SOURCE_DIR}/resources/SampleData
        DESTINATION ${CMAKE_INSTALL_DATADIR}/corvanet)
install(FILES ${PROJECT_SOURCE_DIR}/resources/Stats.csv DESTINATION ${CMAKE_INSTALL_DATADIR}/corvanet)
install(FILES ${PROJECT_SOURCE_DIR}/docs/man/corvanet-cli.1
              ${PROJECT_SOURCE_DIR}/docs/man/corvanet-demo-service.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${PROJECT_SOURCE_DIR}/resources/completion/corvanet-cli
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/corvanet)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME corvanet)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Corvanet developers <corvanet@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "keeps a library of market-breadth datafiles current")
string(CONCAT CPACK_PACKAGE_DESCRIPTION
       "Corvanet downloads and updates market-breadth datafiles from a subscription data service, "
       "makes single-statistic and MetaStock price files from them, and runs unattended on a "
       "schedule. The package holds the window (corvanet), the command line (corvanet-cli) and a "
       "demo data service (corvanet-demo-service).")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
# The libraries the programs link are found by dpkg-shlibdeps; nothing is listed by hand.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "systemd | cron")
set(CPACK_STRIP_FILES ON)
include(CPack)
