# What a rendering application builds against: headers, libraries, CMake package, pkg-config file.
include(CMakePackageConfigHelpers)

set(RB_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/RenderingBase")

# An installed program or library finds ours relative to itself, wherever the tree is put.
set_target_properties(KVRHost KVRRbaModel PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(rba PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

install(TARGETS KVRHost KVRRbaModel EXPORT RenderingBaseTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(TARGETS rba RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(DIRECTORY samples/ DESTINATION "${CMAKE_INSTALL_DATADIR}/RenderingBase/samples")

install(EXPORT RenderingBaseTargets NAMESPACE RenderingBase:: DESTINATION "${RB_CMAKE_DIR}")
configure_package_config_file(cmake/RenderingBaseConfig.cmake.in
    "${CMAKE_CURRENT_BINARY_DIR}/RenderingBaseConfig.cmake" INSTALL_DESTINATION "${RB_CMAKE_DIR}")
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/RenderingBaseConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/RenderingBaseConfig.cmake"
              "${CMAKE_CURRENT_BINARY_DIR}/RenderingBaseConfigVersion.cmake"
        DESTINATION "${RB_CMAKE_DIR}")

# The file finds its prefix from its own place, so that a moved tree stays usable.
file(RELATIVE_PATH RB_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/RenderingBase.pc.in "${CMAKE_CURRENT_BINARY_DIR}/RenderingBase.pc" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/RenderingBase.pc"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
