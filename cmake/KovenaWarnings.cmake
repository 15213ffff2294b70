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

# Adds every source of the calling folder to its layer: the files named after LOGIC go to
# kovena_logic (Qt Core and Network only), all others to kovena_screens (adds Widgets).
function(kovena_layer_sources)
  cmake_parse_arguments(L "" "" "LOGIC" ${ARGN})
  file(GLOB all CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  set(logic)
  foreach(name ${L_LOGIC})
    foreach(ext cpp h)
      set(f ${CMAKE_CURRENT_SOURCE_DIR}/${name}.${ext})
      if(EXISTS ${f})
        list(APPEND logic ${f})
        list(REMOVE_ITEM all ${f})
      endif()
    endforeach()
  endforeach()
  if(logic)
    target_sources(kovena_logic PRIVATE ${logic})
  endif()
  if(all)
    target_sources(kovena_screens PRIVATE ${all})
  endif()
endfunction()
