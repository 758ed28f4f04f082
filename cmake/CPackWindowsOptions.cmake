# Read by cpack once per generator: the zip's top folder is the program folder itself, Rondex, so
# that unpacking it into C:\Tessaly\ gives the installer's layout.
if(CPACK_GENERATOR STREQUAL "ZIP")
  set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY OFF)
  set(CPACK_PACKAGING_INSTALL_PREFIX /Rondex)
endif()
