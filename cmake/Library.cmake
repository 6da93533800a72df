# The shared library: the object libraries of all folders, and minizip as a whole.
include(cmake/PublicHeaders.cmake)
include(CMakePackageConfigHelpers)

get_property(zkmb_components GLOBAL PROPERTY ZKMB_COMPONENTS)
add_library(ZkMobileBackup SHARED)
add_library(ZkMobileBackup::ZkMobileBackup ALIAS ZkMobileBackup)
target_sources(ZkMobileBackup PUBLIC
  FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${ZKMB_PUBLIC_HEADERS})
target_compile_features(ZkMobileBackup INTERFACE cxx_std_20)
target_link_libraries(ZkMobileBackup PRIVATE ${zkmb_components})
add_dependencies(ZkMobileBackup zkmb_codecs)
set_target_properties(ZkMobileBackup PROPERTIES
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR}
  LINKER_LANGUAGE CXX
  LINK_LIBRARY_OVERRIDE WHOLE_ARCHIVE,zkmb_minizip_archive
  LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/ZkMobileBackup.map)
target_link_options(ZkMobileBackup PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/ZkMobileBackup.map)
if(NOT ZKMB_SANITIZERS)
  # The run-time part of a sanitizer comes with the program that loads the library.
  target_link_options(ZkMobileBackup PRIVATE -Wl,-z,defs)
endif()

set(zkmb_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/zkmobilebackup)
set(zkmb_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ZkMobileBackup)

install(TARGETS ZkMobileBackup
  EXPORT ZkMobileBackupTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILE_SET HEADERS DESTINATION ${zkmb_include_dir}
  INCLUDES DESTINATION ${zkmb_include_dir})
install(EXPORT ZkMobileBackupTargets NAMESPACE ZkMobileBackup:: DESTINATION ${zkmb_package_dir})

configure_package_config_file(cmake/ZkMobileBackupConfig.cmake.in ${PROJECT_BINARY_DIR}/ZkMobileBackupConfig.cmake
  INSTALL_DESTINATION ${zkmb_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZkMobileBackupConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/ZkMobileBackupConfig.cmake
  ${PROJECT_BINARY_DIR}/ZkMobileBackupConfigVersion.cmake
  DESTINATION ${zkmb_package_dir})

file(RELATIVE_PATH zkmb_prefix_of_pc_file ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/zkmobilebackup.pc.in ${PROJECT_BINARY_DIR}/zkmobilebackup.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zkmobilebackup.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
