# Debian packages, made by `./run packages`: the library, what is needed to build against it, the dictionaries, the program.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME talvenor)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
# Who hands packages on puts the own name and address here: their users write to it. The domain of the default is one
# that no mail reaches (RFC 2606).
set(TALVENOR_MAINTAINER "Talvenor contributors <maintainers@talvenor.invalid>" CACHE STRING
   "Maintainer of the Debian packages: NAME <ADDRESS>")
set(CPACK_PACKAGE_CONTACT "${TALVENOR_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${TALVENOR_MAINTAINER}")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL library development dictionaries program)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/talvenor ${CMAKE_BINARY_DIR}/talvenor/data)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(SOVERSION ${PROJECT_VERSION_MAJOR})
# What dpkg needs to know of shared libraries: which package has them, and that ldconfig is to be run.
set(CONTROL ${CMAKE_CURRENT_BINARY_DIR}/debian/control)
file(WRITE ${CONTROL}/shlibs
   "libtalvenor ${SOVERSION} libtalvenor${SOVERSION} (>= ${PROJECT_VERSION})\n"
   "libtalvenor-data ${SOVERSION} libtalvenor${SOVERSION} (>= ${PROJECT_VERSION})\n")
file(WRITE ${CONTROL}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CONTROL}/shlibs ${CONTROL}/triggers)
# describe(COMPONENT NAME SECTION SUMMARY TEXT): and the notes that every Debian package has in its doc folder.
function(describe COMPONENT NAME SECTION SUMMARY TEXT)
   string(TOUPPER ${COMPONENT} UPPER)
   set(CPACK_DEBIAN_${UPPER}_PACKAGE_NAME ${NAME} PARENT_SCOPE)
   set(CPACK_DEBIAN_${UPPER}_PACKAGE_SECTION ${SECTION} PARENT_SCOPE)
   set(CPACK_DEBIAN_${UPPER}_DESCRIPTION "${SUMMARY}\n${TEXT}" PARENT_SCOPE)
   set(DOC ${CMAKE_INSTALL_DATAROOTDIR}/doc/${NAME})
   set(NOTES ${CMAKE_CURRENT_BINARY_DIR}/debian/${NAME})
   file(READ LICENSE LICENCE)
   string(REGEX REPLACE "\n\n" "\n.\n" LICENCE "${LICENCE}")
   string(REGEX REPLACE "\n" "\n " LICENCE "${LICENCE}")
   file(WRITE ${NOTES}/copyright "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n"
      "Upstream-Name: Talvenor\n\nFiles: *\nCopyright: 2026 the Talvenor contributors\nLicense: Expat\n ${LICENCE}\n")
   string(TIMESTAMP DATE "%a, %d %b %Y 00:00:00 +0000" UTC)
   file(WRITE ${NOTES}/changelog "talvenor (${PROJECT_VERSION}) unstable; urgency=medium\n\n"
      "  * See CHANGELOG.md of the source.\n\n -- ${CPACK_PACKAGE_CONTACT}  ${DATE}\n")
   execute_process(COMMAND gzip -9nf ${NOTES}/changelog)
   install(FILES ${NOTES}/copyright ${NOTES}/changelog.gz DESTINATION ${DOC} COMPONENT ${COMPONENT})
endfunction()

describe(library libtalvenor${SOVERSION} libs "DICOM toolkit: shared libraries"
   "Datasets, files, associations and services of DICOM, the standard for medical\nimages, for programs written in C++.\n.\nThis package has what programs need to run.")
describe(development libtalvenor-dev libdevel "DICOM toolkit: development files"
   "Datasets, files, associations and services of DICOM, the standard for medical\nimages, for programs written in C++.\n.\nThis package has headers and what CMake and pkg-config need.")
describe(dictionaries talvenor-dictionaries misc "DICOM toolkit: dictionaries"
   "The attributes and UIDs of the DICOM standard and the private attributes of\nmany vendors, as the Talvenor library reads them.")
describe(program tn science "DICOM toolkit: program for the command line"
   "Shows and converts DICOM files, makes media directories, sends, asks for and\nfetches images, prints, and is a node that keeps what it is sent.")

# The library of the dictionaries calls C++ and Talvenor, and nothing of the C library. CPack writes scripts that call
# ldconfig beside the trigger, and cannot be told not to.
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/debian/overrides
   "libtalvenor${SOVERSION}: library-not-linked-against-libc *libtalvenor-data.so.*\n"
   "libtalvenor${SOVERSION}: maintscript-calls-ldconfig *\n")
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/debian/overrides DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides
   RENAME libtalvenor${SOVERSION} COMPONENT library)

set(CPACK_DEBIAN_DICTIONARIES_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DICTIONARIES_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libtalvenor${SOVERSION} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS talvenor-dictionaries)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS
   "libtalvenor${SOVERSION} (= ${PROJECT_VERSION}), talvenor-dictionaries (= ${PROJECT_VERSION})")
include(CPack)
