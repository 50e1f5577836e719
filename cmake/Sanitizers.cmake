# TALVENOR_SANITIZE instruments everything: library, program, tests.
if(TALVENOR_SANITIZE)
   add_compile_options(-fsanitize=${TALVENOR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
   add_link_options(-fsanitize=${TALVENOR_SANITIZE})
   if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      # Instrumented code hides from g++ 12 that a value is set on every path: the warning is noise here.
      target_compile_options(talvenor_warnings INTERFACE -Wno-maybe-uninitialized)
   endif()
endif()
