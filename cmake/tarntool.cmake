# tarntool.exe: the library for installers that can start a program, but cannot load the DLL. One file,
# with the library linked statically.
configure_file(tarntool/tarntool.rc.in ${PROJECT_BINARY_DIR}/tarntool.rc @ONLY)
set(tarntool_resource ${PROJECT_BINARY_DIR}/tarntool.res.o)
file(RELATIVE_PATH tarntool_rc ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/tarntool.rc)
add_custom_command(
  OUTPUT ${tarntool_resource}
  COMMAND ${CMAKE_RC_COMPILER} -O coff -I . -i ${tarntool_rc} -o ${tarntool_resource}
  DEPENDS ${PROJECT_BINARY_DIR}/tarntool.rc ${PROJECT_SOURCE_DIR}/tarntool/tarntool.manifest
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  COMMENT "Compiling resource tarntool.rc"
  VERBATIM)

# All but the entry point; tests link it, too.
add_library(tarntool_objects OBJECT
  tarntool/CheckCommand.cpp
  tarntool/CommandLine.cpp
  tarntool/Commands.cpp
  tarntool/ConfigCommand.cpp
  tarntool/CopyCommand.cpp
  tarntool/DialogWatch.cpp
  tarntool/DoneCommand.cpp
  tarntool/FirstShow.cpp
  tarntool/HelpCommand.cpp
  tarntool/InnerRoles.cpp
  tarntool/OpenCommand.cpp
  tarntool/Output.cpp
  tarntool/ParentGuard.cpp
  tarntool/ParentWindow.cpp
  tarntool/PrivateCopy.cpp
  tarntool/Request.cpp
  tarntool/RunCommand.cpp
  tarntool/RunOnceCommand.cpp
  tarntool/StartedProgram.cpp
  tarntool/Text.cpp
  tarntool/VersionCommand.cpp
  tarntool/WaitCommand.cpp
  tarntool/WaitKeeper.cpp
  tarntool/WaitName.cpp)
target_link_libraries(tarntool_objects PRIVATE tarn_options)
target_compile_definitions(tarntool_objects PRIVATE TARN_VERSION="${PROJECT_VERSION}")

# A windowed program: no console opens for it, ever.
add_executable(tarntool WIN32
  tarntool/main.cpp runtime/ExceptionRuntime.cpp $<TARGET_OBJECTS:tarntool_objects>
  ${tarntool_resource})
target_link_libraries(tarntool PRIVATE tarn_options tarn_core)
target_link_options(tarntool PRIVATE
  -static -static-libgcc -static-libstdc++
  -Wl,--gc-sections,--no-insert-timestamp,--dynamicbase,--high-entropy-va,--nxcompat
  -Wl,-Map=${PROJECT_BINARY_DIR}/tarntool.map)
add_custom_command(TARGET tarntool POST_BUILD
  COMMAND ${CMAKE_OBJCOPY} -p --only-keep-debug tarntool.exe tarntool.exe.debug
  COMMAND ${CMAKE_OBJCOPY} -p --strip-all --add-gnu-debuglink=tarntool.exe.debug tarntool.exe
  BYPRODUCTS ${PROJECT_BINARY_DIR}/bin/tarntool.exe.debug
  WORKING_DIRECTORY $<TARGET_FILE_DIR:tarntool>
  VERBATIM)
