# The kit: what "cmake --install" copies, and the same as a zip with "cpack".
include(CMakePackageConfigHelpers)

set(kit_name ${PROJECT_NAME}-${PROJECT_VERSION}-win64)

# Visual C++ wants the short form of an import library, which the GNU tools do not make.
find_program(TARN_LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
set(msvc_library ${PROJECT_BINARY_DIR}/lib/tarn.lib)
add_custom_target(tarn_kit DEPENDS tarn tarntool)
if(TARN_LLVM_DLLTOOL)
  add_custom_command(
    OUTPUT ${msvc_library}
    COMMAND ${TARN_LLVM_DLLTOOL} -m i386:x86-64 -d frame/tarn.def -l ${msvc_library}
    DEPENDS frame/tarn.def
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    COMMENT "Making the import library for Visual C++"
    VERBATIM)
  add_custom_target(tarn_msvc_library ALL DEPENDS ${msvc_library})
  add_dependencies(tarn_kit tarn_msvc_library)
else()
  install(CODE [[message(FATAL_ERROR "The kit needs llvm-dlltool (Debian package llvm); "
                                     "install it and configure again.")]])
endif()

# The product that the sample wizard installs, with a small file for the large one.
set(kit_product ${PROJECT_BINARY_DIR}/kit-product)
if(CMAKE_C_COMPILER_ID STREQUAL "GNU")
  set(product_compiler ${CMAKE_C_COMPILER})
endif()
add_custom_command(
  OUTPUT ${kit_product}/product.nsh
  COMMAND ${CMAKE_COMMAND} -E env MINGW_CC=${product_compiler}
          bash ${PROJECT_SOURCE_DIR}/samples/product/make.sh ${kit_product} 65536
  DEPENDS samples/product/make.sh samples/product/lakeside.c samples/product/files
  COMMENT "Making the sample product"
  VERBATIM)
add_custom_target(tarn_sample_product ALL DEPENDS ${kit_product}/product.nsh)
add_dependencies(tarn_kit tarn_sample_product)

write_basic_package_version_file(${PROJECT_BINARY_DIR}/TarnConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
configure_package_config_file(cmake/TarnConfig.cmake.in ${PROJECT_BINARY_DIR}/TarnConfig.cmake
  INSTALL_DESTINATION lib/cmake/Tarn
  NO_CHECK_REQUIRED_COMPONENTS_MACRO)
configure_file(cmake/tarn.pc.in ${PROJECT_BINARY_DIR}/tarn.pc @ONLY)

# The kit's README lies a folder deeper here than there.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS kit/README.md)
file(READ kit/README.md kit_readme)
string(REPLACE "](../" "](" kit_readme "${kit_readme}")
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/kit/README.md CONTENT "${kit_readme}" @ONLY)

# The umask of whoever builds is no part of the kit.
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

install(TARGETS tarn tarntool RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(SCRIPT cmake/sign.cmake)
install(FILES ${PROJECT_BINARY_DIR}/bin/tarn.dll.debug ${PROJECT_BINARY_DIR}/bin/tarntool.exe.debug
  DESTINATION bin)
install(FILES include/tarn.h DESTINATION include)
install(FILES ${msvc_library} DESTINATION lib)
install(FILES
  ${PROJECT_BINARY_DIR}/TarnConfig.cmake ${PROJECT_BINARY_DIR}/TarnConfigVersion.cmake
  cmake/TarnTargets.cmake
  DESTINATION lib/cmake/Tarn)
install(FILES ${PROJECT_BINARY_DIR}/tarn.pc DESTINATION lib/pkgconfig)
install(FILES nsis/tarn.nsh nsis/tarn-fault.nsh nsis/tarntool.nsh DESTINATION nsis)
install(FILES samples/c/CMakeLists.txt samples/c/setup.c DESTINATION samples/c)
install(FILES samples/cpp/CMakeLists.txt samples/cpp/loader.cpp DESTINATION samples/cpp)
install(FILES samples/nsis/minimal.nsi DESTINATION samples/nsis)
install(FILES samples/wizard/wizard.nsi DESTINATION samples/wizard)
install(FILES samples/inno/lakeside.iss samples/inno/tarntool.iss DESTINATION samples/inno)
install(FILES samples/inno7/tarn.iss DESTINATION samples/inno7)
install(FILES samples/msi/lakeside.wxs samples/msi/lakeside-wix4.wxs samples/msi/actions.sql
  DESTINATION samples/msi)
install(PROGRAMS samples/msi/make.sh DESTINATION samples/msi)
install(FILES samples/go/go.mod samples/go/setup.go samples/go/tarn.go DESTINATION samples/go)
install(FILES samples/rust/setup.rs samples/rust/tarn.rs DESTINATION samples/rust)
install(FILES samples/node/package.json samples/node/setup.js samples/node/tarn.js DESTINATION samples/node)
install(FILES samples/csharp/Tarn.cs DESTINATION samples/csharp)
install(FILES samples/delphi/Tarn.pas DESTINATION samples/delphi)
install(DIRECTORY samples/wizard/art DESTINATION samples/wizard
  FILES_MATCHING PATTERN *.bmp PATTERN *.ico)
install(FILES samples/product/lakeside.c ${kit_product}/product.nsh DESTINATION samples/product)
install(DIRECTORY ${kit_product}/tree DESTINATION samples/product)
install(FILES ${PROJECT_BINARY_DIR}/kit/README.md CHANGELOG.md LICENSE SECURITY.md THIRD-PARTY.md DESTINATION .)
install(DIRECTORY docs DESTINATION .)

# The last, and after signing: it has the files' hashes.
set(kit_linked
  bin/tarn.dll=tarn.map
  bin/tarntool.exe=tarntool.map
  samples/product/tree/bin/lakeside.exe=kit-product/lakeside.map)
install(CODE "set(kit_build [[${PROJECT_BINARY_DIR}]])\nset(kit_version ${PROJECT_VERSION})\nset(kit_linked [[${kit_linked}]])")
install(SCRIPT cmake/sbom.cmake)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME ${kit_name})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR})
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/pack-config.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/pack-again.cmake)
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
