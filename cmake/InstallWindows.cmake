# What the Windows installer and zip hold (`make windows-package`): the programs and the converter
# helpers side by side in the installation's program folder (C:\Tessaly\Rondex\ by default), the
# help pages, Stats.csv and the sample datafiles. The program lays out the rest of the
# installation, two levels up, on its first start; the uninstaller removes only what it installed,
# so the user's datafiles, lists and settings stay.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
install(TARGETS corvanet-cli PxFiles complete RUNTIME DESTINATION .)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/resources/Docs ${PROJECT_SOURCE_DIR}/resources/SampleData
        DESTINATION .)
install(FILES ${PROJECT_SOURCE_DIR}/resources/Stats.csv ${PROJECT_SOURCE_DIR}/README.md
        DESTINATION .)

set(CPACK_GENERATOR NSIS ZIP)
set(CPACK_PACKAGE_NAME Corvanet)
set(CPACK_PACKAGE_VENDOR Corvanet)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "keeps a library of market-breadth datafiles current")
set(CPACK_PACKAGE_FILE_NAME corvanet-${PROJECT_VERSION}-windows-x64)
set(CPACK_PACKAGE_INSTALL_DIRECTORY "Tessaly\\\\Rondex")
set(CPACK_NSIS_INSTALL_ROOT "C:")
set(CPACK_NSIS_PACKAGE_NAME "Corvanet ${PROJECT_VERSION}")
set(CPACK_NSIS_DISPLAY_NAME "Corvanet")
set(CPACK_PACKAGE_INSTALL_REGISTRY_KEY Corvanet)
# The installer is made from cmake/NSIS.template.in (per-user, the uninstaller and the Start-menu
# entry for the command line are written there).
set(CPACK_MODULE_PATH ${PROJECT_SOURCE_DIR}/cmake)
# The zip unpacks into a folder named Rondex, to be put into C:\Tessaly\ (or any folder two levels
# deep); CPackWindowsOptions.cmake names it per generator.
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/CPackWindowsOptions.cmake)
set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
set(CPACK_STRIP_FILES ON)
include(CPack)
