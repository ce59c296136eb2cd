# The library: compiled once as position-independent objects, offered as the shared library that hosts load
# and as a static twin whose internals the tests can reach.
file(GLOB_RECURSE tessera_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tessera/*.cpp)

add_library(tessera_objects OBJECT ${tessera_sources})
target_include_directories(tessera_objects PUBLIC ${PROJECT_SOURCE_DIR})
target_compile_definitions(tessera_objects PRIVATE TESSERA_BUILDING)
target_link_libraries(tessera_objects PRIVATE tessera_options)
set_target_properties(tessera_objects PROPERTIES POSITION_INDEPENDENT_CODE ON)
# Loops with square roots become vector instructions only where errno is out of the way; results are the same.
set_source_files_properties(
    ${PROJECT_SOURCE_DIR}/tessera/kernel/internal/EllipseDistances.cpp
    ${PROJECT_SOURCE_DIR}/tessera/kernel/internal/EllipseFoot.cpp
    PROPERTIES COMPILE_OPTIONS -fno-math-errno)

add_library(tessera SHARED)
target_link_libraries(tessera PRIVATE tessera_objects tessera_options)
target_include_directories(tessera PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                          $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_compile_features(tessera PUBLIC cxx_std_20)
set_target_properties(tessera PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
add_library(Tessera::tessera ALIAS tessera)

add_library(tessera_static STATIC EXCLUDE_FROM_ALL)
target_link_libraries(tessera_static PRIVATE tessera_objects tessera_options)
target_include_directories(tessera_static PUBLIC ${PROJECT_SOURCE_DIR})
target_compile_features(tessera_static PUBLIC cxx_std_20)

install(TARGETS tessera EXPORT TesseraTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/tessera
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h"
        PATTERN "internal" EXCLUDE)

include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Tessera)
install(EXPORT TesseraTargets NAMESPACE Tessera:: DESTINATION ${package_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/TesseraConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/TesseraConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TesseraConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TesseraConfig.cmake ${PROJECT_BINARY_DIR}/TesseraConfigVersion.cmake
        DESTINATION ${package_dir})
configure_file(${PROJECT_SOURCE_DIR}/cmake/tessera.pc.in ${PROJECT_BINARY_DIR}/tessera.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tessera.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
