# Compiles through ccache when it is installed.
find_program(TW_CCACHE ccache)
if(TW_CCACHE)
  foreach(language C CXX)
    if(NOT CMAKE_${language}_COMPILER_LAUNCHER)
      set(CMAKE_${language}_COMPILER_LAUNCHER ${TW_CCACHE})
    endif()
  endforeach()
endif()
