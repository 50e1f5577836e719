# What a host needs of an installed library: headers, library, dictionaries, the program, and a CMake package:
#    find_package(Talvenor REQUIRED)
#    target_link_libraries(host PRIVATE Talvenor::talvenor)
include(CMakePackageConfigHelpers)
set(PACKAGE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/Talvenor)

install(TARGETS talvenor EXPORT Talvenor)
install(DIRECTORY talvenor DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(FILES data/dicom.dic data/uid.dic DESTINATION ${CMAKE_INSTALL_DATADIR}/talvenor)
install(DIRECTORY data/private DESTINATION ${CMAKE_INSTALL_DATADIR}/talvenor)
if(TALVENOR_BUILD_TN)
   # The program finds its library wherever the two are put together.
   set_target_properties(tn PROPERTIES INSTALL_RPATH $ORIGIN/../${CMAKE_INSTALL_LIBDIR})
   install(TARGETS tn)
endif()

install(EXPORT Talvenor FILE TalvenorConfig.cmake NAMESPACE Talvenor:: DESTINATION ${PACKAGE_FOLDER})
write_basic_package_version_file(TalvenorConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/TalvenorConfigVersion.cmake DESTINATION ${PACKAGE_FOLDER})
