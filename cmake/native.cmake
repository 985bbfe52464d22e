# This machine: tarn_portable, the part of the library that makes no platform call.
add_library(tarn_portable STATIC
  ${portable_framework_sources} ${portable_sources} framework/text/CodePageNative.cpp)
target_link_libraries(tarn_portable PRIVATE tarn_options)
