# Strict settings applied per target, never directory-wide.
function(kovena_strict target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  if(KOVENA_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  target_compile_definitions(${target} PRIVATE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_CONTEXTLESS_CONNECT
    QT_NO_URL_CAST_FROM_STRING QT_USE_QSTRINGBUILDER)
endfunction()

# Tests and tools: warnings on, but string literals may convert implicitly.
function(kovena_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  if(KOVENA_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS)
endfunction()

# Adds the units named (each `name.cpp` and/or `name.h` of the calling folder) to `target`, so
# that every folder's CMakeLists.txt states which layer each of its files belongs to. A name with
# neither file is an error: a stale list must not go unnoticed.
function(kovena_add_sources target)
  foreach(name ${ARGN})
    set(found OFF)
    foreach(ext cpp h)
      set(f ${CMAKE_CURRENT_SOURCE_DIR}/${name}.${ext})
      if(EXISTS ${f})
        target_sources(${target} PRIVATE ${f})
        set(found ON)
      endif()
    endforeach()
    if(NOT found)
      message(FATAL_ERROR "kovena_add_sources: ${CMAKE_CURRENT_SOURCE_DIR} has no ${name}.cpp or ${name}.h")
    endif()
  endforeach()
endfunction()
