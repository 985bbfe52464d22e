# Visual C++ with the vendor's framework in its shared form, ANSI build: tarn.dll alone, without
# framework/.
set(CMAKE_MFC_FLAG 2)
enable_language(RC)
add_library(tarn SHARED ${portable_sources} ${library_sources} 
  frame/tarn.def frame/tarn.rc ui/WaitDlg.rc)
add_library(tarn::tarn ALIAS tarn)
target_compile_definitions(tarn PRIVATE _AFXDLL _USRDLL _WINDLL _MBCS)
target_link_libraries(tarn PRIVATE tarn_options)
target_include_directories(tarn INTERFACE ${PROJECT_SOURCE_DIR}/include)
