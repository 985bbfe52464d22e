# Run by "cmake --install" and cpack when all else is in its place: what the installed files are made of.
# Before: kit_build, kit_version and kit_linked, a list of FILE=MAP (see kit/sbom.py).
include(${CMAKE_CURRENT_LIST_DIR}/source-date.cmake)
find_program(python NAMES python3 HINTS /usr/bin REQUIRED)
set(kit $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX})
message(STATUS "Installing: ${kit}/sbom.cdx.json")
execute_process(
  COMMAND ${python} ${CMAKE_CURRENT_LIST_DIR}/../kit/sbom.py ${kit} tarn ${kit_version} ${kit_linked}
  WORKING_DIRECTORY ${kit_build}
  OUTPUT_FILE ${kit}/sbom.cdx.json
  COMMAND_ERROR_IS_FATAL ANY)
# The umask of whoever builds is no part of the kit.
file(CHMOD ${kit}/sbom.cdx.json PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
