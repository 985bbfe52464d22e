# tarn_options: how every source of the project is compiled.
add_library(tarn_options INTERFACE)
target_include_directories(tarn_options INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)

if(WIN32)
  target_compile_definitions(tarn_options INTERFACE WINVER=0x0601 _WIN32_WINNT=0x0601)
endif()

if(MSVC)
  target_compile_options(tarn_options INTERFACE /W4 /WX)
  return()
endif()

target_include_directories(tarn_options INTERFACE ${PROJECT_SOURCE_DIR}/framework)
target_compile_options(tarn_options INTERFACE
  -Werror -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-qual
  -Wcast-align -Wformat=2 -Wundef -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi
  -Wimplicit-fallthrough -Wdouble-promotion
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=./build)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(tarn_options INTERFACE
    -Wlogical-op -Wduplicated-cond -Wduplicated-branches)
else()
  # DECLARE_MESSAGE_MAP stands in the first class and in those that override.
  target_compile_options(tarn_options INTERFACE
    -Wno-inconsistent-missing-override -fsized-deallocation)
endif()
