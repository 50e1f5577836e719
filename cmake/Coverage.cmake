# In a build with --coverage, counters are written when a program exits, and the dynamic library and each program have
# counters of their own. tn leaves by quick_exit, which writes none: there they get a handler that does. Included when all
# targets are known; no other build has anything of it.
if(CMAKE_CXX_FLAGS MATCHES "--coverage")
   foreach(TARGET talvenor tn)
      if(TARGET ${TARGET})
         target_sources(${TARGET} PRIVATE ${CMAKE_CURRENT_LIST_DIR}/CoverageAtQuickExit.cpp)
      endif()
   endforeach()
endif()
