# Installs the library as the CMake package "Kovena" (KovenaConfig.cmake with its version file)
# and as the pkg-config module "kovena", with the public headers under include/kovena/ in their
# folders. A merchant links one target, Kovena::Kovena. In a static build that target brings the
# static libraries of the three layers (kovena_logic, kovena_screens, kovena_bankpage) with it; a
# shared build (BUILD_SHARED_LIBS=ON) installs the one libkovena.so that holds them all.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(KOVENA_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/Kovena)
set(_kovena_src ${PROJECT_SOURCE_DIR}/src)
# Where src/CMakeLists.txt generates the export header.
set(KOVENA_GENERATED_INCLUDE ${PROJECT_BINARY_DIR}/src/generated)

set_target_properties(kovena_logic PROPERTIES EXPORT_NAME logic)
set_target_properties(kovena_screens PROPERTIES EXPORT_NAME screens)
set_target_properties(kovena_bankpage PROPERTIES EXPORT_NAME bankpage)
set_target_properties(kovena PROPERTIES EXPORT_NAME Kovena)

# Everything the merchant's link needs: the facade, the layers a static facade brings, any other library of this project
# they link (a layer added later goes into the package with them), and the outside packages
# their links name.
set(_kovena_targets)
set(_kovena_pending kovena)
set(_kovena_qt_components Core Network Gui Widgets)
set(_kovena_needs_threads OFF)
while(_kovena_pending)
  list(POP_FRONT _kovena_pending _target)
  if(_target IN_LIST _kovena_targets)
    continue()
  endif()
  list(APPEND _kovena_targets ${_target})
  # What a user of the target links: a static library's private links show here as LINK_ONLY, a
  # shared library's stay inside it.
  get_target_property(_interface_links ${_target} INTERFACE_LINK_LIBRARIES)
  foreach(_link IN LISTS _interface_links)
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

# The public headers are only what a merchant includes (the facade, the callback, the record it
# receives, the status codes, the backend call) and every project header they include in turn,
# found by following their #include "folder/name.h" lines; the generated export header among them.
set(_kovena_pending
  ${_kovena_src}/sdk/KovenaSDK.h
  ${_kovena_src}/sdk/KovenaCallback.h
  ${_kovena_src}/sdk/CheckoutStatusCode.h
  ${_kovena_src}/sdk/KovenaServer.h
  ${_kovena_src}/model/TransactionStatus.h)
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
    elseif(EXISTS ${KOVENA_GENERATED_INCLUDE}/${_name})
      list(APPEND _kovena_public ${KOVENA_GENERATED_INCLUDE}/${_name})
    else()
      message(WARNING "Public header ${_header} includes \"${_name}\", which is not in src/: "
                      "the installed package cannot provide it")
    endif()
  endforeach()
endwhile()
# A change to any of them may change the set: configure again when one changes.
set(_kovena_sources ${_kovena_public})
list(FILTER _kovena_sources EXCLUDE REGEX "^${KOVENA_GENERATED_INCLUDE}/")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${_kovena_sources})
list(REMOVE_DUPLICATES _kovena_public)
foreach(_header IN LISTS _kovena_public)
  if(_header MATCHES "^${KOVENA_GENERATED_INCLUDE}/")
    file(RELATIVE_PATH _relative ${KOVENA_GENERATED_INCLUDE} ${_header})
  else()
    file(RELATIVE_PATH _relative ${_kovena_src} ${_header})
  endif()
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

# pkg-config: the same library for builds without CMake. The file finds its prefix from where it
# lies, so the installed tree can move. A static build names every layer and needs the Qt
# modules the layers use; a shared one only the library and what the public headers include.
if(BUILD_SHARED_LIBS)
  set(KOVENA_PC_LIBS "-lkovena")
  set(KOVENA_PC_REQUIRES "Qt6Core Qt6Network Qt6Gui Qt6Widgets nlohmann_json")
  set(KOVENA_PC_CFLAGS "")
else()
  set(KOVENA_PC_LIBS "-lkovena -lkovena_bankpage -lkovena_screens -lkovena_logic")
  list(TRANSFORM _kovena_qt_components PREPEND "Qt6" OUTPUT_VARIABLE _kovena_pc_qt)
  list(JOIN _kovena_pc_qt " " KOVENA_PC_REQUIRES)
  string(APPEND KOVENA_PC_REQUIRES " nlohmann_json")
  set(KOVENA_PC_CFLAGS " -DKOVENA_STATIC_DEFINE")
endif()
file(RELATIVE_PATH KOVENA_PC_PREFIX_FROM_PCDIR
  ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${CMAKE_CURRENT_LIST_DIR}/kovena.pc.in ${PROJECT_BINARY_DIR}/kovena.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kovena.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
