# The shared run-time DLLs of MinGW-w64 (C++ library, GCC support with its
# unwinder, POSIX threads) and zlib's DLL, copied beside the modules: the host,
# the library and the shell share one C++ run time, so that an exception thrown
# in one module is caught in another.
set(KOVO_RUNTIME_DLLS)
# The GCC support DLL is named after its unwinder: dw2 or sjlj, whichever the
# compiler has.
foreach(dll libstdc++-6.dll libgcc_s libwinpthread-1.dll zlib1.dll)
  set(candidates ${dll})
  if(dll STREQUAL "libgcc_s")
    set(candidates libgcc_s_dw2-1.dll libgcc_s_sjlj-1.dll)
  endif()
  set(found "")
  foreach(candidate ${candidates})
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${candidate}
                    OUTPUT_VARIABLE dll_path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${dll_path}" AND EXISTS "${CMAKE_FIND_ROOT_PATH}/lib/${candidate}")
      set(dll_path ${CMAKE_FIND_ROOT_PATH}/lib/${candidate})
    endif()
    if(IS_ABSOLUTE "${dll_path}" AND EXISTS "${dll_path}")
      set(found ${dll_path})
      break()
    endif()
  endforeach()
  if(NOT found)
    message(FATAL_ERROR "run-time DLL ${dll} not found (packages g++-mingw-w64-i686-posix, "
                        "libz-mingw-w64)")
  endif()
  list(APPEND KOVO_RUNTIME_DLLS ${found})
endforeach()
add_custom_target(kovo_runtime_dlls ALL
                  COMMAND ${CMAKE_COMMAND} -E copy_if_different ${KOVO_RUNTIME_DLLS}
                          ${CMAKE_BINARY_DIR})
