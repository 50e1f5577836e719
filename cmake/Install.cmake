# What a host needs of an installed library: headers, libraries, dictionaries, and what CMake and pkg-config ask for:
#    find_package(Talvenor REQUIRED)
#    target_link_libraries(host PRIVATE Talvenor::talvenor)
# and the program with its manual and completions. Everything may be moved afterwards as a whole: nothing names the
# prefix, the build tree or the source tree. The components are those of the Debian packages.
include(CMakePackageConfigHelpers)
set(PACKAGE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/Talvenor)
set(PKGCONFIG_FOLDER ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(LIBRARIES talvenor)
if(TARGET talvenor_data)
   list(APPEND LIBRARIES talvenor_data)
endif()
# Programs and libraries find each other wherever they are put together; in /usr the system finds them.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
   if(TARGET talvenor_data)
      set_target_properties(talvenor_data PROPERTIES INSTALL_RPATH $ORIGIN)
   endif()
   if(TALVENOR_BUILD_TN)
      set_target_properties(tn PROPERTIES INSTALL_RPATH $ORIGIN/../${CMAKE_INSTALL_LIBDIR})
   endif()
endif()

install(TARGETS ${LIBRARIES} EXPORT Talvenor
   LIBRARY COMPONENT library NAMELINK_COMPONENT development ARCHIVE COMPONENT development)
install(DIRECTORY talvenor DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development FILES_MATCHING PATTERN "*.h")
install(FILES data/dicom.dic data/uid.dic DESTINATION ${CMAKE_INSTALL_DATADIR}/talvenor COMPONENT dictionaries)
install(DIRECTORY data/private DESTINATION ${CMAKE_INSTALL_DATADIR}/talvenor COMPONENT dictionaries)

install(EXPORT Talvenor FILE TalvenorConfig.cmake NAMESPACE Talvenor:: DESTINATION ${PACKAGE_FOLDER}
   COMPONENT development)
write_basic_package_version_file(TalvenorConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/TalvenorConfigVersion.cmake DESTINATION ${PACKAGE_FOLDER}
   COMPONENT development)

file(RELATIVE_PATH PC_PREFIX /prefix/${PKGCONFIG_FOLDER} /prefix)
string(REGEX REPLACE "/$" "" PC_PREFIX "${PC_PREFIX}")
set(PC_FILES talvenor)
if(TARGET talvenor_data)
   list(APPEND PC_FILES talvenor-data)
endif()
foreach(NAME IN LISTS PC_FILES)
   configure_file(cmake/${NAME}.pc.in ${NAME}.pc @ONLY)
   install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${NAME}.pc DESTINATION ${PKGCONFIG_FOLDER} COMPONENT development)
endforeach()

if(TALVENOR_BUILD_TN)
   install(TARGETS tn RUNTIME COMPONENT program)
endif()

# The manual, from the pages of docs/tn, and the completions, which the program writes itself.
find_package(Python3 COMPONENTS Interpreter QUIET)
if(TALVENOR_BUILD_TN AND Python3_FOUND)
   set(MANUAL ${CMAKE_CURRENT_BINARY_DIR}/man)
   file(GLOB PAGES CONFIGURE_DEPENDS docs/tn/*.md)
   add_custom_command(OUTPUT ${MANUAL}/tn.1.gz DEPENDS ${PAGES} tools/make-man-pages.py VERBATIM
      COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/tools/make-man-pages.py
         ${CMAKE_CURRENT_SOURCE_DIR}/docs/tn ${MANUAL} ${PROJECT_VERSION})
   add_custom_target(manual ALL DEPENDS ${MANUAL}/tn.1.gz)
   install(DIRECTORY ${MANUAL}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program FILES_MATCHING PATTERN "*.1.gz")
endif()
if(TALVENOR_BUILD_TN AND NOT CMAKE_CROSSCOMPILING)
   set(COMPLETIONS ${CMAKE_CURRENT_BINARY_DIR}/completions)
   file(MAKE_DIRECTORY ${COMPLETIONS})
   foreach(PLACE bash:tn:bash-completion/completions zsh:_tn:zsh/vendor-completions fish:tn.fish:fish/vendor_completions.d)
      string(REPLACE ":" ";" PLACE ${PLACE})
      list(GET PLACE 0 SHELL)
      list(GET PLACE 1 NAME)
      list(GET PLACE 2 FOLDER)
      add_custom_command(OUTPUT ${COMPLETIONS}/${NAME} DEPENDS tn VERBATIM
         COMMAND tn completions ${SHELL} > ${COMPLETIONS}/${NAME})
      list(APPEND COMPLETION_FILES ${COMPLETIONS}/${NAME})
      install(FILES ${COMPLETIONS}/${NAME} DESTINATION ${CMAKE_INSTALL_DATADIR}/${FOLDER} COMPONENT program)
   endforeach()
   add_custom_target(completions ALL DEPENDS ${COMPLETION_FILES})
endif()

if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
   include(cmake/Packages.cmake)
endif()
include(cmake/Sbom.cmake) # last: it names what the others install
