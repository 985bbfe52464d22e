# The self-test: a zip with tarn.dll as it is in the kit, all test programs that run on Windows, and
# selftest.exe, which runs them. The target tarn_selftest makes what is in it but for the library, which
# cmake/pack-selftest.cmake takes out of the kit.
set(selftest_name ${PROJECT_NAME}-${PROJECT_VERSION}-selftest-win64)
set(selftest_parts ${PROJECT_BINARY_DIR}/selftest/parts)

# tarn_strip_for_selftest(<target> <file>): adds the file, without symbols, to the parts.
function(tarn_strip_for_selftest target file)
  add_custom_command(
    OUTPUT ${selftest_parts}/${file}
    COMMAND ${CMAKE_STRIP} --strip-all -p -o ${selftest_parts}/${file} $<TARGET_FILE:${target}>
    DEPENDS ${target}
    COMMENT "Stripping ${file}"
    VERBATIM)
  set_property(GLOBAL APPEND PROPERTY TARN_SELFTEST_PARTS ${selftest_parts}/${file})
endfunction()

file(MAKE_DIRECTORY ${selftest_parts}/tests)
tarn_strip_for_selftest(tarn_selftest_program selftest.exe)
get_property(programs GLOBAL PROPERTY TARN_TEST_PROGRAMS)
foreach(program ${programs})
  tarn_strip_for_selftest(${program} tests/${program}.exe)
endforeach()
tarn_strip_for_selftest(tarn_jobs tests/jobs.dll) # which a test loads

get_property(parts GLOBAL PROPERTY TARN_SELFTEST_PARTS)
add_custom_target(tarn_selftest ALL DEPENDS ${parts})

list(TRANSFORM parts REPLACE "^${selftest_parts}/" "")
list(JOIN parts "\n" lines)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/selftest/parts.txt CONTENT "${lines}\n" @ONLY)
configure_file(cmake/pack-selftest.cmake.in ${PROJECT_BINARY_DIR}/pack-selftest.cmake @ONLY)
