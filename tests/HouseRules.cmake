# Checks what no compiler checks: cmake -DFOLDERS="platform;foundation;..." -DROOT=... -P HouseRules.cmake
#    A folder of the library includes itself and the folders below it.
#    Only platform includes headers of the operating system.
#    So does a folder of the program, in the order below.
#    talvenor.h has every header that exports something, but for platform's and those that say that they are internal.
set(FAULTS "")
file(READ ${ROOT}/talvenor/talvenor.h UMBRELLA)

set(FOLDERS_ABOVE ${FOLDERS})
foreach(FOLDER IN LISTS FOLDERS)
   list(POP_FRONT FOLDERS_ABOVE)
   file(GLOB FILES RELATIVE ${ROOT} ${ROOT}/talvenor/${FOLDER}/*.h ${ROOT}/talvenor/${FOLDER}/*.cpp)
   foreach(FILE IN LISTS FILES)
      file(READ ${ROOT}/${FILE} TEXT)
      foreach(ABOVE IN LISTS FOLDERS_ABOVE)
         if(TEXT MATCHES "#include \"talvenor/${ABOVE}/[^\"]*\"")
            list(APPEND FAULTS "${FILE}: a folder above: ${CMAKE_MATCH_0}")
         endif()
      endforeach()
      if(NOT FOLDER STREQUAL "platform")
         if(TEXT MATCHES "#include <(unistd|fcntl|poll|pthread|netdb|malloc|dirent|sys/[a-z]+|netinet/[a-z]+|arpa/[a-z]+)[.]h>")
            list(APPEND FAULTS "${FILE}: belongs to platform: ${CMAKE_MATCH_0}")
         endif()
         if(FILE MATCHES "[.]h$" AND TEXT MATCHES "TALVENOR_API" AND
            NOT TEXT MATCHES "[Nn]ot[ \n/]+part[ \n/]+of[ \n/]+the[ \n/]+library's[ \n/]+interface" AND NOT UMBRELLA MATCHES "\"${FILE}\"")
            list(APPEND FAULTS "talvenor/talvenor.h: lacks ${FILE}")
         endif()
      endif()
   endforeach()
endforeach()

set(FOLDERS_ABOVE base codec files network help node archive send query answers print serve)
foreach(FOLDER IN LISTS FOLDERS_ABOVE)
   list(POP_FRONT FOLDERS_ABOVE)
   file(GLOB FILES RELATIVE ${ROOT} ${ROOT}/apps/tn/${FOLDER}/*.h ${ROOT}/apps/tn/${FOLDER}/*.cpp)
   foreach(FILE IN LISTS FILES)
      file(READ ${ROOT}/${FILE} TEXT)
      foreach(ABOVE IN LISTS FOLDERS_ABOVE)
         if(TEXT MATCHES "#include \"apps/tn/${ABOVE}/[^\"]*\"")
            list(APPEND FAULTS "${FILE}: a folder above: ${CMAKE_MATCH_0}")
         endif()
      endforeach()
   endforeach()
endforeach()

if(FAULTS)
   list(JOIN FAULTS "\n" TEXT)
   message(FATAL_ERROR "${TEXT}")
endif()
