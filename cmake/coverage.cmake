# TARN_COVERAGE: the library counts which of its lines and branches run. Without optimisation, so that
# the counts are those of the source.
add_link_options(--coverage)

function(tarn_count_coverage)
  foreach(target tarn tarn_objects tarn_core)
    target_compile_options(${target} PRIVATE -O0 --coverage -fprofile-update=atomic)
  endforeach()
  target_sources(tarn PRIVATE tools/coverage-dump.cpp)
  target_link_options(tarn PRIVATE -Wl,-e,CountedEntry)
endfunction()
