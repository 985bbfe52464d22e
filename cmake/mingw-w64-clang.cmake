# The same programs as mingw-w64.cmake makes, compiled by Clang: with the headers, the libraries and the
# linker that the cross compiler has.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
find_program(CMAKE_C_COMPILER clang REQUIRED)
find_program(CMAKE_CXX_COMPILER clang++ REQUIRED)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
# As cache entries: CMake would put LLVM's there.
foreach(tool AR NM OBJCOPY OBJDUMP RANLIB STRIP)
  string(TOLOWER ${tool} name)
  find_program(CMAKE_${tool} x86_64-w64-mingw32-${name} REQUIRED)
endforeach()
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# Clang does not find by itself where Debian has them, in a folder that is named after the thread model.
find_program(TARN_CROSS_COMPILER NAMES x86_64-w64-mingw32-g++-win32 x86_64-w64-mingw32-g++ REQUIRED)
execute_process(COMMAND ${TARN_CROSS_COMPILER} -print-libgcc-file-name
  OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
cmake_path(GET libgcc PARENT_PATH gcc_folder)
set(headers ${gcc_folder}/include/c++)
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES
    ${headers} ${headers}/x86_64-w64-mingw32 ${headers}/backward)
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-B${gcc_folder} -L${gcc_folder}")
endforeach()
