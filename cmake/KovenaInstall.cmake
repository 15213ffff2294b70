# Installs the library as the CMake package "Kovena": the static libraries of the three layers
# (kovena_logic, kovena_screens, kovena_bankpage), the facade a merchant links (Kovena::Kovena), the public headers
# under include/kovena/ in their folders, and KovenaConfig.cmake with its version file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(KOVENA_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/Kovena)
set(_kovena_src ${PROJECT_SOURCE_DIR}/src)

set_target_properties(kovena_logic PROPERTIES EXPORT_NAME logic)
set_target_properties(kovena_screens PROPERTIES EXPORT_NAME screens)
set_target_properties(kovena_bankpage PROPERTIES EXPORT_NAME bankpage)
set_target_properties(kovena PROPERTIES EXPORT_NAME Kovena)

# Everything the merchant's link needs: the three targets, any other library of this project
# they link (a layer added later goes into the package with them), and the outside packages
# their links name.
set(_kovena_targets)
set(_kovena_pending kovena kovena_bankpage kovena_screens kovena_logic)
set(_kovena_qt_components Core Network Gui Widgets)
set(_kovena_needs_threads OFF)
while(_kovena_pending)
  list(POP_FRONT _kovena_pending _target)
  if(_target IN_LIST _kovena_targets)
    continue()
  endif()
  list(APPEND _kovena_targets ${_target})
  get_target_property(_links ${_target} LINK_LIBRARIES)
  get_target_property(_interface_links ${_target} INTERFACE_LINK_LIBRARIES)
  foreach(_link IN LISTS _links _interface_links)
    string(REGEX REPLACE "^\\$<LINK_ONLY:(.+)>$" "\\1" _link "${_link}")
    if(_link MATCHES "^Qt6::([A-Za-z]+)$")
      list(APPEND _kovena_qt_components ${CMAKE_MATCH_1})
    elseif(_link STREQUAL "Threads::Threads")
      set(_kovena_needs_threads ON)
    elseif(TARGET ${_link})
      get_target_property(_imported ${_link} IMPORTED)
      get_target_property(_aliased ${_link} ALIASED_TARGET)
      if(_aliased)
        list(APPEND _kovena_pending ${_aliased})
      elseif(NOT _imported)
        list(APPEND _kovena_pending ${_link})
      elseif(NOT _link MATCHES "^nlohmann_json::")
        message(WARNING "The Kovena package does not know how to find ${_link}, which ${_target} links")
      endif()
    endif()
  endforeach()
endwhile()
list(REMOVE_DUPLICATES _kovena_qt_components)
list(JOIN _kovena_qt_components " " KOVENA_QT_COMPONENTS)
set(KOVENA_EXTRA_DEPENDENCIES "")
if(_kovena_needs_threads)
  set(KOVENA_EXTRA_DEPENDENCIES "find_dependency(Threads)")
endif()

install(TARGETS ${_kovena_targets}
  EXPORT KovenaTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kovena)

# The public headers are what a merchant includes (sdk/, model/, api/ApiManager.h) and every project header
# they include in turn, found by following their #include "folder/name.h" lines.
file(GLOB _kovena_pending CONFIGURE_DEPENDS ${_kovena_src}/sdk/*.h ${_kovena_src}/model/*.h)
# ApiManager.h carries the one call a host makes to choose its backend (setServerUrl).
list(APPEND _kovena_pending ${_kovena_src}/api/ApiManager.h)
set(_kovena_public)
while(_kovena_pending)
  list(POP_FRONT _kovena_pending _header)
  if(_header IN_LIST _kovena_public)
    continue()
  endif()
  list(APPEND _kovena_public ${_header})
  file(STRINGS ${_header} _includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"[^\"]+\"")
  foreach(_line IN LISTS _includes)
    string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*\"([^\"]+)\".*" "\\1" _name "${_line}")
    if(EXISTS ${_kovena_src}/${_name})
      list(APPEND _kovena_pending ${_kovena_src}/${_name})
    else()
      message(WARNING "Public header ${_header} includes \"${_name}\", which is not in src/: "
                      "the installed package cannot provide it")
    endif()
  endforeach()
endwhile()
# A change to any of them may change the set: configure again when one changes.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${_kovena_public})
foreach(_header IN LISTS _kovena_public)
  file(RELATIVE_PATH _relative ${_kovena_src} ${_header})
  get_filename_component(_folder ${_relative} DIRECTORY)
  install(FILES ${_header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kovena/${_folder})
endforeach()

configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/KovenaConfig.cmake.in
  ${PROJECT_BINARY_DIR}/KovenaConfig.cmake
  INSTALL_DESTINATION ${KOVENA_INSTALL_CMAKEDIR})
# Before 1.0 a minor version may break the interface.
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/KovenaConfigVersion.cmake
  VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMinorVersion)

install(EXPORT KovenaTargets
  NAMESPACE Kovena::
  FILE KovenaTargets.cmake
  DESTINATION ${KOVENA_INSTALL_CMAKEDIR})
install(FILES
  ${PROJECT_BINARY_DIR}/KovenaConfig.cmake
  ${PROJECT_BINARY_DIR}/KovenaConfigVersion.cmake
  DESTINATION ${KOVENA_INSTALL_CMAKEDIR})
