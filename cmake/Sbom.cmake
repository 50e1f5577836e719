# The bill of materials of an installation or of a Debian package (SPDX 2.3 as JSON), in share/sbom: what is in it, with
# checksums, and what it was built with. It is written when everything else is installed, stripped if that is wished.
#
# tn is linked with these; who links something more with it adds a row: name, version, licence, how it is linked.
set(SBOM_ROWS)
if(TALVENOR_BUILD_TN)
   list(APPEND SBOM_ROWS
      "CLI11|${CLI11_VERSION}|BSD-3-Clause|STATIC_LINK"
      "zlib|${ZLIB_VERSION_STRING}|Zlib|DYNAMIC_LINK"
      "libpng|${PNG_VERSION_STRING}|libpng-2.0|DYNAMIC_LINK"
      "sqlite3|${SQLite3_VERSION}|blessing|DYNAMIC_LINK"
      "libjpeg-turbo|${CODECS_libjpeg_VERSION}|IJG AND BSD-3-Clause AND Zlib|DYNAMIC_LINK"
      "openjpeg|${CODECS_libopenjp2_VERSION}|BSD-2-Clause|DYNAMIC_LINK"
      "charls|${CODECS_charls_VERSION}|BSD-3-Clause|DYNAMIC_LINK")
endif()
set(SBOM_RUNTIME "C++ runtime of ${CMAKE_CXX_COMPILER_ID}|${CMAKE_CXX_COMPILER_VERSION}|NOASSERTION|DYNAMIC_LINK")
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
   set(SBOM_RUNTIME "libstdc++|${CMAKE_CXX_COMPILER_VERSION}|GPL-3.0-or-later WITH GCC-exception-3.1|DYNAMIC_LINK")
endif()
configure_file(cmake/WriteSbom.cmake.in WriteSbom.cmake @ONLY)
install(SCRIPT ${CMAKE_CURRENT_BINARY_DIR}/WriteSbom.cmake ALL_COMPONENTS)
