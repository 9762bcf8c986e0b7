# What `cmake --install` puts in place: the library and its header, a CMake package
# (find_package(vemocore) gives the imported target vemocore::vemocore), a pkg-config file
# (vemocore.pc) and every program built from tools/.
include(CMakePackageConfigHelpers)

set(VEMO_CMAKE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vemocore)

install(TARGETS vemocore EXPORT vemocoreTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT vemocoreTargets NAMESPACE vemocore:: DESTINATION ${VEMO_CMAKE_PACKAGE_DIR})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/vemocoreConfig.cmake.in
  ${CMAKE_BINARY_DIR}/package/vemocoreConfig.cmake INSTALL_DESTINATION ${VEMO_CMAKE_PACKAGE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/vemocoreConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/package/vemocoreConfig.cmake
              ${CMAKE_BINARY_DIR}/package/vemocoreConfigVersion.cmake
        DESTINATION ${VEMO_CMAKE_PACKAGE_DIR})

# The .pc file finds the prefix from its own place, so the installed tree can be moved (and
# installed with --prefix) without rewriting it.
set(pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${pc_dir})
  set(VEMO_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH up /root/${pc_dir} /root)
  string(REGEX REPLACE "/$" "" up ${up})
  set(VEMO_PC_PREFIX "\${pcfiledir}/${up}")
endif()
foreach(dir LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE ${CMAKE_INSTALL_${dir}})
    set(VEMO_PC_${dir} ${CMAKE_INSTALL_${dir}})
  else()
    set(VEMO_PC_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/vemocore.pc.in ${CMAKE_BINARY_DIR}/package/vemocore.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/package/vemocore.pc DESTINATION ${pc_dir})

# Every executable a tools/ folder defines installs into bin; on Linux it finds the library in
# the installed lib folder.
file(RELATIVE_PATH bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
foreach(tool_dir ${VEMO_TOOL_DIRS})
  get_property(targets DIRECTORY ${tool_dir} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target ${targets})
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
      if(NOT WIN32)
        set_target_properties(${target} PROPERTIES INSTALL_RPATH "\$ORIGIN/${bin_to_lib}")
      endif()
      install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    endif()
  endforeach()
endforeach()

# The libretro core goes where the libraries go; a front-end copies or points its cores folder
# there (it is self-contained: the core's code is linked into it).
if(TARGET vemocore_libretro)
  install(TARGETS vemocore_libretro LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/libretro)
endif()
