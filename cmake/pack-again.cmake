# Run by cpack when the zip is made: makes it again, the same on every machine. CPack's own holds the
# files in the order in which the file system happens to list them, and who built it.
find_program(zip zip REQUIRED)
set(ENV{TZ} UTC) # a zip holds local times
foreach(package ${CPACK_PACKAGE_FILES})
  cmake_path(GET package PARENT_PATH folder)
  file(REMOVE ${package})
  execute_process(
    COMMAND find ${CPACK_PACKAGE_FILE_NAME} -exec touch -d @$ENV{SOURCE_DATE_EPOCH} {} +
    WORKING_DIRECTORY ${folder}
    COMMAND_ERROR_IS_FATAL ANY)
  execute_process(
    COMMAND find ${CPACK_PACKAGE_FILE_NAME} -type f
    COMMAND env LC_ALL=C sort
    COMMAND ${zip} -q -9 -X -@ ${package}
    WORKING_DIRECTORY ${folder}
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
