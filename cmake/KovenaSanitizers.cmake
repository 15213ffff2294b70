# Sanitizer builds. KOVENA_SANITIZE picks one:
#   address (or ON) - AddressSanitizer with LeakSanitizer, and UBSan halting on the first error;
#   thread          - ThreadSanitizer.
# The flags go on every target of the tree (library, sandbox, tests), since a sanitizer only
# sees what was compiled with it. Every executable also gets sanitizers/DefaultOptions.cpp, so
# it starts with the project's options and suppression files however it is run: by ctest, by
# a suite's own test discovery, or as a child process of a test. *SAN_OPTIONS in the
# environment still add to them.
set(KOVENA_SANITIZE "OFF" CACHE STRING "Sanitizer build: OFF, address (ASan+UBSan; ON means the same) or thread")
set_property(CACHE KOVENA_SANITIZE PROPERTY STRINGS OFF address thread)

set(KOVENA_SANITIZER "")
if(KOVENA_SANITIZE STREQUAL "thread")
  set(KOVENA_SANITIZER thread)
elseif(KOVENA_SANITIZE STREQUAL "address" OR KOVENA_SANITIZE)
  set(KOVENA_SANITIZER address)
endif()

if(KOVENA_SANITIZER STREQUAL "address")
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(KOVENA_SANITIZER STREQUAL "thread")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
endif()

set(_kovena_sanitizer_defaults ${PROJECT_SOURCE_DIR}/sanitizers/DefaultOptions.cpp)

# Adds the default options to every executable defined so far under `dir`. Call it once, at
# the end of the top-level CMakeLists.txt.
function(kovena_sanitizer_defaults dir)
  if(NOT KOVENA_SANITIZER)
    return()
  endif()
  get_property(targets DIRECTORY ${dir} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
      target_sources(${target} PRIVATE ${_kovena_sanitizer_defaults})
      set_source_files_properties(${_kovena_sanitizer_defaults} TARGET_DIRECTORY ${target}
        PROPERTIES COMPILE_DEFINITIONS "KOVENA_SANITIZER_DIR=\"${PROJECT_SOURCE_DIR}/sanitizers\"")
    endif()
  endforeach()
  get_property(subdirs DIRECTORY ${dir} PROPERTY SUBDIRECTORIES)
  foreach(subdir IN LISTS subdirs)
    kovena_sanitizer_defaults(${subdir})
  endforeach()
endfunction()
