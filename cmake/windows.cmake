# Windows with GCC or Clang: tarn.dll, and tarn_core, which is the same linked statically.
target_compile_options(tarn_options INTERFACE -fno-ident)
set(system_libraries advapi32 user32 kernel32)
set(sources
  ${portable_framework_sources} ${portable_sources} ${framework_sources} ${library_sources})
# What only a DLL has: its start-up, exception memory and unwinder, its module state.
set(dll_sources
  runtime/DllStart.cpp runtime/ExceptionRuntime.cpp runtime/HandlerTable.cpp runtime/Unwinder.cpp
  framework/DllModule.cpp)

# Where every byte and every nanosecond of VerifyEmail is spent; the rest is compiled for size. See
# internals/performance.md.
set_source_files_properties(
  validate/EmailSyntax.cpp validate/VerifyEmail.cpp
  PROPERTIES COMPILE_OPTIONS "-O2")

# The compiler calls what is defined here only once it has optimised the program. And the unwinder must find
# nothing to clean up in itself.
set_source_files_properties(runtime/HandlerTable.cpp runtime/Unwinder.cpp
  PROPERTIES COMPILE_OPTIONS "-fno-lto;-fno-exceptions")

# For programs that link statically. tarn.dll compiles the same sources in its own way.
add_library(tarn_objects OBJECT ${sources})
target_link_libraries(tarn_objects PRIVATE tarn_options)

# tarn_compile_resource(<source> <object> [<option>...] [COMMAND <command>...])
# Runs in the source folder, with relative names: the resource compiler's preprocessor takes no
# include folder with a space in its path.
function(tarn_compile_resource source object)
  set(depends ${source} ui/resource.h frame/tarn.manifest)
  list(TRANSFORM depends PREPEND ${PROJECT_SOURCE_DIR}/)
  add_custom_command(
    OUTPUT ${object}
    COMMAND ${CMAKE_RC_COMPILER} -O coff -I . -i ${source} -o ${object}
    ${ARGN}
    DEPENDS ${depends}
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    COMMENT "Compiling resource ${source}"
    VERBATIM)
endfunction()

set(dll_resources ${PROJECT_BINARY_DIR}/tarn.res.o ${PROJECT_BINARY_DIR}/WaitDlg.res.o)
tarn_compile_resource(frame/tarn.rc ${PROJECT_BINARY_DIR}/tarn.res.o)
tarn_compile_resource(ui/WaitDlg.rc ${PROJECT_BINARY_DIR}/WaitDlg.res.o)

add_library(tarn SHARED
  ${dll_sources} ${sources} frame/tarn.def ${dll_resources})
add_library(tarn::tarn ALIAS tarn)
set_target_properties(tarn PROPERTIES PREFIX "" IMPORT_PREFIX "lib")
# msvcrt is named here, too: the linker of binutils 2.40 crashes when it first meets abort behind libgcc.
# Clang would then leave it out at the end, where its own libraries look for it.
target_link_libraries(tarn PRIVATE
  tarn_options $<$<CXX_COMPILER_ID:GNU>:msvcrt> ${system_libraries})
# Optimised as one program, from which everything goes that no export needs. The linker does not tell
# the optimiser about the definition file's exports; as undefined symbols they stay.
file(STRINGS frame/tarn.def exports REGEX "^ ")
list(TRANSFORM exports REPLACE "^ +" "-Wl,--undefined=")
option(TARN_LTO "Optimise the library as one program" ON)
if(TARN_LTO)
  set(lto -flto)
endif()
# Nothing asks an object for its type. What is thrown has its type written down all the same.
target_compile_options(tarn PRIVATE ${lto} -fvisibility=hidden -fno-rtti)
target_link_options(tarn PRIVATE
  ${lto} -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=./build
  ${exports}
  -static -static-libgcc -static-libstdc++
  -Wl,--gc-sections,--no-insert-timestamp,--dynamicbase,--high-entropy-va,--nxcompat
  # The default is a hash of the path that the linker is given.
  -Wl,--disable-auto-image-base
  # runtime/DllStart.cpp is the start-up code, and does not repair data imports.
  -nostartfiles -Wl,--disable-auto-import,--disable-runtime-pseudo-reloc
  -Wl,-Map=${PROJECT_BINARY_DIR}/tarn.map)
target_include_directories(tarn INTERFACE ${PROJECT_SOURCE_DIR}/include)
# The symbols go to a file of their own, which the library names for debuggers. -p keeps the current
# time out of the headers.
add_custom_command(TARGET tarn POST_BUILD
  COMMAND ${CMAKE_OBJCOPY} -p --only-keep-debug tarn.dll tarn.dll.debug
  COMMAND ${CMAKE_OBJCOPY} -p --strip-all --add-gnu-debuglink=tarn.dll.debug tarn.dll
  BYPRODUCTS ${PROJECT_BINARY_DIR}/bin/tarn.dll.debug
  WORKING_DIRECTORY $<TARGET_FILE_DIR:tarn>
  VERBATIM)

# tarn_reach: what tools/unreached.py looks at, for ./dev check. Without optimisation, so that no call is
# lost in another function, and with every function that stands in a header, used or not.
add_library(tarn_reach OBJECT EXCLUDE_FROM_ALL ${dll_sources} ${sources})
target_link_libraries(tarn_reach PRIVATE tarn_options)
target_compile_options(tarn_reach PRIVATE
  -O0 -g0 -fno-inline -ffunction-sections -fdata-sections -fkeep-inline-functions -w)
file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/reach.txt CONTENT "$<JOIN:$<TARGET_OBJECTS:tarn_reach>,\n>\n")

# tarn_core: the library for programs of this project that have it inside: the tests, to reach what the
# DLL does not export, and command-line tools.
#
# An archive member is linked for the symbols it defines, and a compiled resource defines none: it
# gets one, which framework/StaticModule.cpp refers to.
set(core_resource ${PROJECT_BINARY_DIR}/core.res.o)
tarn_compile_resource(ui/WaitDlg.rc ${core_resource} -DTARN_CORE
  COMMAND ${CMAKE_OBJCOPY} --add-symbol tarn_core_resources=.rsrc:0,global ${core_resource})

add_library(tarn_core STATIC
  framework/StaticModule.cpp ${core_resource} $<TARGET_OBJECTS:tarn_objects>)
add_library(tarn::core ALIAS tarn_core)
target_link_libraries(tarn_core PRIVATE tarn_options PUBLIC ${system_libraries})
