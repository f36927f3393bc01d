# What `cmake --install` puts under its prefix for hosts that use an installed odlex: the public
# headers (with the generated row classes), one shared library with a versioned SONAME and one
# static archive made of every layer's objects, a CMake package (find_package(odlex CONFIG):
# odlex::odlex, the shared library, and odlex::odlex_static), a pkg-config file (odlex.pc) and
# the tool.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(odlex_layers odlex_support odlex_storage odlex_engine odlex_query odlex_idt odlex_schema
    odlex_transform odlex_lower odlex_directory odlex_rows odlex_signature odlex_classes
    odlex_package)
set(odlex_objects)
foreach(layer IN LISTS odlex_layers)
  list(APPEND odlex_objects $<TARGET_OBJECTS:${layer}>)
endforeach()

# Only linked from the layers' objects: the in-tree tool, tests and examples link the layers.
add_library(odlex_shared SHARED ${odlex_objects})
add_library(odlex_static STATIC ${odlex_objects})
set_target_properties(odlex_shared PROPERTIES OUTPUT_NAME odlex EXPORT_NAME odlex
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set_target_properties(odlex_static PROPERTIES OUTPUT_NAME odlex EXPORT_NAME odlex_static)
target_link_libraries(odlex_shared PRIVATE PkgConfig::PCRE2 OpenSSL::Crypto PkgConfig::GCAB)
target_link_libraries(odlex_static INTERFACE $<INSTALL_INTERFACE:pcre2-16> $<INSTALL_INTERFACE:crypto>
  $<INSTALL_INTERFACE:gcab-1.0> $<INSTALL_INTERFACE:gio-2.0> $<INSTALL_INTERFACE:gobject-2.0>
  $<INSTALL_INTERFACE:glib-2.0>)
foreach(library odlex_shared odlex_static)
  target_include_directories(${library} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(${library} INTERFACE cxx_std_20)
endforeach()

install(TARGETS odlex_shared odlex_static EXPORT odlexTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/odlex DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h" PATTERN "*.inc" PATTERN "*.def")
install(FILES ${ODLEX_GENERATED_DIR}/odlex/msi/MSIRows.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/odlex/msi)

# The message catalog of the change log, beside the library's other shared files; the build tree
# gets a copy at the same place relative to the tool, so the tool finds it in either.
install(FILES share/odlex/messages.txt DESTINATION ${CMAKE_INSTALL_DATADIR}/odlex)
configure_file(share/odlex/messages.txt ${PROJECT_BINARY_DIR}/share/odlex/messages.txt COPYONLY)

set(odlex_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/odlex)
install(EXPORT odlexTargets NAMESPACE odlex:: DESTINATION ${odlex_cmake_dir})
configure_package_config_file(cmake/odlexConfig.cmake.in
  ${PROJECT_BINARY_DIR}/odlexConfig.cmake INSTALL_DESTINATION ${odlex_cmake_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/odlexConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/odlexConfig.cmake ${PROJECT_BINARY_DIR}/odlexConfigVersion.cmake
  DESTINATION ${odlex_cmake_dir})

# The pkg-config file finds the prefix from where it lies, so that an install moved elsewhere
# (or made with --prefix) still describes itself.
file(RELATIVE_PATH odlex_pc_to_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/odlex.pc.in ${PROJECT_BINARY_DIR}/odlex.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/odlex.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
