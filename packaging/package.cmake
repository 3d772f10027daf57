# How a host finds the library: find_package(QVRModel CONFIG) -> QVR::Model, or pkg-config qvr-model.
include(CMakePackageConfigHelpers)
set(QVR_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/QVRModel)
install(EXPORT QVRModelTargets NAMESPACE QVR:: DESTINATION ${QVR_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/packaging/QVRModelConfig.cmake.in
  ${PROJECT_BINARY_DIR}/QVRModelConfig.cmake INSTALL_DESTINATION ${QVR_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QVRModelConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
configure_file(${PROJECT_SOURCE_DIR}/packaging/qvr-model.pc.in ${PROJECT_BINARY_DIR}/qvr-model.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/QVRModelConfig.cmake ${PROJECT_BINARY_DIR}/QVRModelConfigVersion.cmake
  DESTINATION ${QVR_CMAKE_DIR})
install(FILES ${PROJECT_BINARY_DIR}/qvr-model.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
