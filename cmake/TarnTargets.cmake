if(TARGET Tarn::tarn)
  return()
endif()

# From lib/cmake/Tarn: the kit may be moved anywhere as a whole.
get_filename_component(_tarn_root ${CMAKE_CURRENT_LIST_DIR}/../../.. ABSOLUTE)
if(MINGW)
  set(_tarn_import_library ${_tarn_root}/lib/libtarn.dll.a)
else()
  set(_tarn_import_library ${_tarn_root}/lib/tarn.lib)
endif()

foreach(_tarn_file ${_tarn_import_library} ${_tarn_root}/bin/tarn.dll ${_tarn_root}/include/tarn.h)
  if(NOT EXISTS ${_tarn_file})
    message(FATAL_ERROR "The kit of tarn.dll is incomplete: there is no ${_tarn_file}")
  endif()
endforeach()

add_library(Tarn::tarn SHARED IMPORTED)
set_target_properties(Tarn::tarn PROPERTIES
  IMPORTED_LOCATION ${_tarn_root}/bin/tarn.dll
  IMPORTED_IMPLIB ${_tarn_import_library}
  INTERFACE_INCLUDE_DIRECTORIES ${_tarn_root}/include)

unset(_tarn_root)
unset(_tarn_import_library)
unset(_tarn_file)
